// Colours agree with the library's own functions.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "renderer/support.hpp"

namespace {

using namespace vrn_render_tests;

std::vector<float> pairsOf(const Spectrum& spectrum) {
  std::vector<float> pairs{0, 0};
  for (int band = 0; band < kBands; ++band) {
    pairs.push_back(bandBegin(band));
    pairs.push_back(spectrum[band]);
  }
  pairs.push_back(705);
  pairs.push_back(0);
  return pairs;
}

Rgb libraryRgb(const Spectrum& spectrum, std::int32_t space) {
  std::vector<float> pairs = pairsOf(spectrum);
  float rgb[3] = {};
  vrntSpectrumRec in{VRNT_ENCODING_SPECTRAL, static_cast<std::int32_t>(pairs.size()), pairs.data()};
  vrntSpectrumRec out{VRNT_ENCODING_RGB, 3, rgb};
  vrntSpectrumConvert(&in, &out, space);
  return {rgb[0], rgb[1], rgb[2]};
}

Spectrum randomSpectrum(std::mt19937& random) {
  std::uniform_real_distribution<float> amplitude(0, 1);
  Spectrum result;
  for (int band = 0; band < kBands; ++band) result[band] = amplitude(random);
  return result;
}

TEST(Colours, OfRadianceAreThoseOfTheLibrary) {
  std::mt19937 random(1);
  for (int i = 0; i < 50; ++i) {
    const Spectrum spectrum = randomSpectrum(random);
    const Rgb expected = libraryRgb(spectrum, VRNT_COLOUR_SPACE_E);
    const Rgb found = Colours::get().toRgb(spectrum);
    EXPECT_NEAR(found.r, expected.r, 1e-5);
    EXPECT_NEAR(found.g, expected.g, 1e-5);
    EXPECT_NEAR(found.b, expected.b, 1e-5);
  }
}

std::vector<float> libraryPairs(std::array<float, 3> rgb) {
  std::vector<float> pairs = pairsOf(Spectrum());
  vrntSpectrumRec in{VRNT_ENCODING_RGB, 3, rgb.data()};
  vrntSpectrumRec out{VRNT_ENCODING_SPECTRAL, static_cast<std::int32_t>(pairs.size()),
                      pairs.data()};
  vrntSpectrumConvert(&in, &out, VRNT_COLOUR_SPACE_D65);
  return pairs;
}

TEST(Colours, OfMaterialsAreThoseOfTheLibrary) {
  for (const std::array<float, 3> rgb :
       {std::array<float, 3>{0.9F, 0.1F, 0.3F}, std::array<float, 3>{0.2F, 0.3F, 0.8F}}) {
    Maker maker;
    maker.material(Record::ofType("{ " + kSpectrumType + " reflectance; }")
                       .set("reflectance", vrnt::host::RgbSpectrum{rgb[0], rgb[1], rgb[2]}));
    const Ready ready(maker.scene.get());
    const std::vector<float> pairs = libraryPairs(rgb);
    // The last band of a conversion is wider by a little.
    for (int band = 0; band + 1 < kBands; ++band) {
      EXPECT_NEAR(ready.description.materials[1].reflectance.value[band],
                  std::clamp(pairs[static_cast<std::size_t>(2 * band + 3)], 0.0F, 1.0F), 1e-6);
    }
  }
}

// Pixels of textures are sums of the spectra of seven colours. The library moves a colour to
// another white before it adds them up, so there is a difference, the largest for saturated
// colours.
TEST(Colours, OfTexturesAreNearThoseOfTheLibrary) {
  std::mt19937 random(2);
  std::uniform_real_distribution<float> channel(0, 1);
  double squares = 0;
  int count = 0;
  for (int i = 0; i < 500; ++i) {
    const std::array<float, 3> rgb{channel(random), channel(random), channel(random)};
    const std::vector<float> pairs = libraryPairs(rgb);
    const Spectrum found = Colours::get().reflectance({rgb[0], rgb[1], rgb[2]});
    for (int band = 0; band < kBands; ++band) {
      const float expected = std::clamp(pairs[static_cast<std::size_t>(2 * band + 3)], 0.0F, 1.0F);
      EXPECT_NEAR(found[band], expected, 0.05);
      squares += static_cast<double>((found[band] - expected) * (found[band] - expected));
      ++count;
    }
  }
  EXPECT_LT(std::sqrt(squares / count), 0.002);
}

TEST(Colours, OfLightWithoutASpectrumComeBackToTheScreen) {
  const Rgb white = Colours::get().toRgb(Colours::get().emission({1, 1, 1}));
  EXPECT_NEAR(white.r, 1, 0.01);
  EXPECT_NEAR(white.g, 1, 0.01);
  EXPECT_NEAR(white.b, 1, 0.01);
  EXPECT_NEAR(Colours::get().luminance(Colours::get().daylight()), 1, 1e-5);
}

TEST(Colours, OfTheBackgroundAreThoseThatWereSet) {
  const auto expectColours = [](const Picture& picture, const std::array<float, 3>& rgb) {
    for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(picture.colour[k], rgb[k], 1e-5) << k;
  };
  for (int bits = 0; bits < 27; ++bits) {
    const std::array<float, 3> rgb{static_cast<float>(bits % 3) / 2,
                                   static_cast<float>(bits / 3 % 3) / 2,
                                   static_cast<float>(bits / 9)};
    Maker maker;
    const Object camera = maker.camera({0, 0, 1});
    maker.scene.setGroup(camera, "Background",
                         maker.scene.group(camera, "Background")
                             .set("active", true)
                             .set("red", rgb[0])
                             .set("green", rgb[1])
                             .set("blue", rgb[2]));
    expectColours(Ready(maker.scene.get()).picture(2, 2, 4), rgb);
    const Object plate = maker.scene.addAsset(
        vrdmTextureDesc{1, 1, 1, VRNT_TEXTURE_FORMAT_RGB32, VRNT_TEXTURE_LAYOUT_2D},
        vrnt::host::copyBytes(reinterpret_cast<const unsigned char*>(rgb.data()), sizeof rgb));
    maker.scene.refer(camera, "backplate", plate);
    maker.scene.setGroup(camera, "Background",
                         maker.scene.group(camera, "Background").set("active", false));
    maker.scene.setGroup(camera, "Backplate",
                         maker.scene.group(camera, "Backplate").set("mode", "FIT_SIZE"));
    expectColours(Ready(maker.scene.get()).picture(2, 2, 4), rgb);
  }
}

// Renders a patch of a reflectance in the light of a lamp from everywhere.
Rgb rendered(const Spectrum& reflectance, const Spectrum& illuminant) {
  Maker maker;
  maker.shape(maker.diffuse(sampled(reflectance)),
              maker.mesh({{{{-9, -9, 0}, {9, -9, 0}, {9, 9, 0}, {-9, 9, 0}}}}));
  maker.light("environment", sampled(illuminant));
  maker.camera({0, 0, 1});
  maker.bounces(1);
  const Picture picture = Ready(maker.scene.get()).picture(8, 8, 64);
  double sum[3] = {};
  for (std::size_t i = 0; i < picture.colour.size(); ++i) {
    if (i % 4 < 3) sum[i % 4] += picture.colour[i] / 64.0;
  }
  return {static_cast<float>(sum[0]), static_cast<float>(sum[1]), static_cast<float>(sum[2])};
}

// Two reflectances of one colour in one light: their difference is made perpendicular to what the
// three channels weigh. In another light they differ by what the same weights say by hand.
TEST(Metamers, AreAlikeInOneLightAndDifferInAnotherAsComputed) {
  Spectrum even(1.0F), warm;
  for (int band = 0; band < kBands; ++band) {
    warm[band] = vrntPlancksLaw(bandBegin(band) + 2.5F, 2856) / vrntPlancksLaw(560, 2856);
  }
  std::array<std::array<double, kBands>, 3> weights{};
  for (int band = 0; band < kBands; ++band) {
    Spectrum one;
    one[band] = 1;
    const Rgb rgb = libraryRgb(one, VRNT_COLOUR_SPACE_E);
    const float channels[3] = {rgb.r, rgb.g, rgb.b};
    for (std::size_t k = 0; k < 3; ++k)
      weights[k][static_cast<std::size_t>(band)] = static_cast<double>(channels[k]);
  }
  std::array<double, kBands> difference{};
  for (std::size_t i = 0; i < kBands; ++i) difference[i] = std::sin(0.55 * static_cast<double>(i));
  auto basis = weights;
  const auto dotOf = [](const auto& a, const auto& b) {
    double sum = 0;
    for (std::size_t i = 0; i < kBands; ++i) sum += a[i] * b[i];
    return sum;
  };
  for (std::size_t k = 0; k < 3; ++k) {
    for (std::size_t before = 0; before < k; ++before) {
      const double share = dotOf(basis[k], basis[before]) / dotOf(basis[before], basis[before]);
      for (std::size_t i = 0; i < kBands; ++i) basis[k][i] -= share * basis[before][i];
    }
    const double share = dotOf(difference, basis[k]) / dotOf(basis[k], basis[k]);
    for (std::size_t i = 0; i < kBands; ++i) difference[i] -= share * basis[k][i];
  }
  Spectrum first(0.5F), second;
  double byHand[3] = {};
  for (int band = 0; band < kBands; ++band) {
    const auto i = static_cast<std::size_t>(band);
    second[band] = 0.5F + 0.3F * static_cast<float>(difference[i]);
    ASSERT_GE(second[band], 0);
    ASSERT_LE(second[band], 1);
    for (std::size_t k = 0; k < 3; ++k) {
      byHand[k] += 0.3 * difference[i] * static_cast<double>(warm[band]) * weights[k][i];
    }
  }

  const Rgb a = rendered(first, even);
  const Rgb b = rendered(second, even);
  EXPECT_NEAR(a.r, b.r, 1e-4);
  EXPECT_NEAR(a.g, b.g, 1e-4);
  EXPECT_NEAR(a.b, b.b, 1e-4);

  const Rgb c = rendered(first, warm);
  const Rgb d = rendered(second, warm);
  const double found[3] = {d.r - c.r, d.g - c.g, d.b - c.b};
  const double size =
      std::sqrt(byHand[0] * byHand[0] + byHand[1] * byHand[1] + byHand[2] * byHand[2]);
  ASSERT_GT(size, 0.005);
  for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(found[k], byHand[k], 0.02 * size);
}

}  // namespace
