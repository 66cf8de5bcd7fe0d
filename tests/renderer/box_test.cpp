// The measured box: against a second integrator, and as independent samples improve it.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "renderer/slow_box.hpp"
#include "renderer/support.hpp"

#ifdef BUILD_SCENE

namespace {

using namespace vrn_render_tests;

class MeasuredBox : public testing::Test {
 protected:
  void SetUp() override {
    const std::string name = std::string("renderer_") +
                             testing::UnitTest::GetInstance()->current_test_info()->name() +
                             ".vrnscene";
    path_ = (std::filesystem::temp_directory_path() / name).string();
    ASSERT_EQ(std::system((std::string(BUILD_SCENE) + " " + path_ + " > /dev/null").c_str()), 0);
    scene_ = std::make_unique<vrnt::host::Scene>(vrnt::host::Scene::read(path_));
  }
  void TearDown() override { std::filesystem::remove(path_); }

  std::string path_;
  std::unique_ptr<vrnt::host::Scene> scene_;
};

TEST_F(MeasuredBox, IsUnderstoodAsAWhole) {
  const Ready ready(scene_->get());
  EXPECT_TRUE(ready.notices.messages().empty()) << ready.notices.messages().front();
  EXPECT_EQ(ready.description.shapes.size(), 8U);
  EXPECT_EQ(ready.description.lights.size(), 1U);
}

// The mean spectral radiance of each wall and block, as the camera sees them.
TEST_F(MeasuredBox, HasTheRadianceThatASecondIntegratorFinds) {
  constexpr int kSide = 32;
  constexpr int kSlowSamples = 2400;
  constexpr int kBounces = 6;  // for both
  Ready ready(scene_->get());
  ready.description.task.maxBounces = kBounces;
  // With one sample at a time, each belongs to one object.
  struct Sums {
    double count = 0;
    std::array<double, kBands> bands{};
  };
  std::map<std::string, Sums> fast;
  const PathTracer tracer(ready.description, ready.description.camera.filmHeight);
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      for (std::uint32_t sample = 0; sample < 64; ++sample) {
        const Sampler sampler(5, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
                              sample);
        const Vec2 u = sampler.two(Choice::Pixel);
        const Seen seen = tracer.trace(
            {(static_cast<float>(x) + u.x) / kSide, 1 - (static_cast<float>(y) + u.y) / kSide},
            sampler);
        if (!seen.isHit) continue;
        Sums& sums = fast[ready.description.shapes[seen.object - 1].tag];
        sums.count += 1;
        for (int band = 0; band < kBands; ++band) {
          sums.bands[static_cast<std::size_t>(band)] += static_cast<double>(seen.radiance[band]);
        }
      }
    }
  }
  const std::vector<SlowObject> slow = renderSlowBox(kSide, kSide, kSlowSamples, kBounces, 3);
  ASSERT_EQ(slow.size(), 8U);
  for (const SlowObject& object : slow) {
    const Sums& found = fast.at(object.name);
    ASSERT_GT(object.count, 1000);
    const double mean = object.brightness / object.count;
    const double error =
        std::sqrt((object.squares / object.count - mean * mean) / object.count) / mean;
    ASSERT_LT(error, 0.04) << object.name << ": the second integrator is too coarse";
    // What the camera sees of an object is counted within its own error.
    EXPECT_NEAR(found.count / (kSide * kSide * 64.0),
                object.count / (1.0 * kSide * kSide * kSlowSamples), 0.002)
        << object.name;
    double total = 0;
    for (std::size_t band = 0; band < kBands; ++band) {
      const double expected = object.sum[band] / object.count;
      const double radiance = found.bands[band] / found.count;
      total += radiance / kBands;
      // A band of a dark wall has more noise than the mean of all bands.
      EXPECT_NEAR(radiance, expected, (4 * error + 0.02) * expected + 0.002 * mean)
          << object.name << " at " << 400 + 5 * band << " nm";
    }
    EXPECT_NEAR(total / mean, 1, 3.5 * error + 0.005) << object.name;
  }
}

// Without bias, the error of the mean of pictures with seeds of their own falls with the root of
// their number.
TEST_F(MeasuredBox, GetsBetterWithTheRootOfTheSamples) {
  constexpr int kSide = 16;
  Ready ready(scene_->get());
  const Picture reference = ready.picture(kSide, kSide, 4096, 999);
  // The same pictures in groups of 1 to 16, so that rare bright paths weigh on all alike.
  constexpr std::uint32_t kSeeds = 256;
  std::vector<Picture> pictures;
  for (std::uint32_t seed = 1; seed <= kSeeds; ++seed) {
    pictures.push_back(ready.picture(kSide, kSide, 1, seed));
  }
  std::vector<double> logSamples, logErrors;
  for (const std::size_t size : {1U, 2U, 4U, 8U, 16U}) {
    double squares = 0;
    for (std::size_t group = 0; group < kSeeds; group += size) {
      for (std::size_t i = 0; i < reference.colour.size(); ++i) {
        if (i % 4 == 3) continue;
        double sum = 0;
        for (std::size_t k = 0; k < size; ++k) {
          sum += static_cast<double>(pictures[group + k].colour[i]);
        }
        const double error =
            sum / static_cast<double>(size) - static_cast<double>(reference.colour[i]);
        squares += error * error;
      }
    }
    logSamples.push_back(std::log(static_cast<double>(size)));
    logErrors.push_back(0.5 * std::log(squares * static_cast<double>(size) / kSeeds));
  }
  double meanX = 0, meanY = 0, product = 0, square = 0;
  const auto count = static_cast<double>(logSamples.size());
  for (std::size_t i = 0; i < logSamples.size(); ++i) {
    meanX += logSamples[i] / count;
    meanY += logErrors[i] / count;
  }
  for (std::size_t i = 0; i < logSamples.size(); ++i) {
    product += (logSamples[i] - meanX) * (logErrors[i] - meanY);
    square += (logSamples[i] - meanX) * (logSamples[i] - meanX);
  }
  EXPECT_NEAR(product / square, -0.5, 0.05);
}

}  // namespace

#endif
