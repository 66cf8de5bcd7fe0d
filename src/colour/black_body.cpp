#include "black_body.hpp"

#include <cmath>
#include <cstddef>

#include "tables/observer.hpp"

namespace qex::vornath {

float spectralRadiance(float wavelength, float temperature) noexcept {
  if (temperature == 0.0F || wavelength == 0.0F) return 0.0F;
  constexpr float kMetresPerNanometre = 1e-9F;
  constexpr float kTwoPlanck = 1.325214e-33F;     // 2 h, in J s
  constexpr float kPlanckLight = 1.9864458e-25F;  // h c, in J m
  constexpr float kBoltzmann = 1.3806486e-23F;    // in J / K
  constexpr double kLightSpeed = 299792448.0;     // m / s: the nearest float to 299,792,458
  constexpr auto kLightSpeedSquared = static_cast<float>(kLightSpeed * kLightSpeed);

  const float metres = wavelength * kMetresPerNanometre;
  const auto inverseFifth = static_cast<float>(std::pow(static_cast<double>(metres), -5.0));
  const float occupation = std::exp(kPlanckLight / (metres * kBoltzmann * temperature)) - 1.0F;
  return inverseFifth * (kLightSpeedSquared * kTwoPlanck) / occupation * kMetresPerNanometre;
}

Rgb blackBodyColour(float temperature) noexcept {
  Xyz sum{0.0F, 0.0F, 0.0F};
  for (std::size_t i = 0; i < kGridSize; ++i) {
    const float wavelength = kGridFirst + kGridStep * static_cast<float>(i);
    const float radiance = spectralRadiance(wavelength, temperature);
    sum.x += radiance * kObserver[i].x;
    sum.y += radiance * kObserver[i].y;
    sum.z += radiance * kObserver[i].z;
  }
  Rgb colour = rgbFromXyz(sum);
  // Written so that a NaN stays one.
  for (float* const channel : {&colour.r, &colour.g, &colour.b}) {
    if (*channel < 0.0F) *channel = 0.0F;
  }
  const float scale = 1.0F / luminanceOfRgb(colour);
  return {colour.r * scale, colour.g * scale, colour.b * scale};
}

}  // namespace qex::vornath
