#include "colour/black_body.hpp"

#include <array>
#include <cmath>
#include <cstddef>

#include "colour/tables/observer.hpp"

namespace qex::vornath {
namespace {

constexpr float kMetresPerNanometre = 1e-9F;
constexpr float kTwoPlanck = 1.325214e-33F;     // 2 h, in J s
constexpr float kPlanckLight = 1.9864458e-25F;  // h c, in J m
constexpr float kBoltzmann = 1.3806486e-23F;    // in J / K
constexpr double kLightSpeed = 299792448.0;     // in m / s: the nearest float to 299,792,458
constexpr auto kLightSpeedSquared = static_cast<float>(kLightSpeed * kLightSpeed);

// Planck's law at one wavelength. Computes the factors that do not depend on the temperature once.
class PlanckAt {
 public:
  PlanckAt() = default;
  explicit PlanckAt(float wavelength) noexcept {
    const float metres = wavelength * kMetresPerNanometre;
    const auto inverseFifth = static_cast<float>(std::pow(static_cast<double>(metres), -5.0));
    numerator_ = inverseFifth * (kLightSpeedSquared * kTwoPlanck);
    energyPerKelvin_ = metres * kBoltzmann;
  }

  float radiance(float temperature) const noexcept {
    const float occupation = std::exp(kPlanckLight / (energyPerKelvin_ * temperature)) - 1.0F;
    return numerator_ / occupation * kMetresPerNanometre;
  }

 private:
  float numerator_ = 0.0F;
  float energyPerKelvin_ = 0.0F;
};

std::array<PlanckAt, kGridSize> makeGrid() {
  std::array<PlanckAt, kGridSize> grid;
  for (std::size_t i = 0; i < kGridSize; ++i) {
    grid[i] = PlanckAt(kGridFirst + kGridStep * static_cast<float>(i));
  }
  return grid;
}

}  // namespace

float spectralRadiance(float wavelength, float temperature) noexcept {
  if (temperature == 0.0F || wavelength == 0.0F) return 0.0F;
  return PlanckAt(wavelength).radiance(temperature);
}

Rgb blackBodyColour(float temperature) noexcept {
  static const std::array<PlanckAt, kGridSize> grid = makeGrid();
  Xyz sum{0.0F, 0.0F, 0.0F};
  for (std::size_t i = 0; i < kGridSize; ++i) {
    const float radiance = temperature == 0.0F ? 0.0F : grid[i].radiance(temperature);
    sum.x += radiance * kObserver[i].x;
    sum.y += radiance * kObserver[i].y;
    sum.z += radiance * kObserver[i].z;
  }
  Rgb colour = rgbFromXyz(sum);
  // This comparison keeps a NaN.
  for (float* const channel : {&colour.r, &colour.g, &colour.b}) {
    if (*channel < 0.0F) *channel = 0.0F;
  }
  const float scale = 1.0F / luminanceOfRgb(colour);
  return {colour.r * scale, colour.g * scale, colour.b * scale};
}

}  // namespace qex::vornath
