#include "spectral_integral.hpp"

#include <algorithm>

#include "tables/illuminants.hpp"
#include "tables/observer.hpp"

namespace qex::vornath {
namespace {

// A place between two samples of the grid.
struct GridPlace {
  std::size_t low, high;
  float fraction;

  float between(float a, float b) const noexcept { return (1.0F - fraction) * a + fraction * b; }
};

// A NaN goes to the grid's beginning.
GridPlace gridPlace(float wavelength) noexcept {
  const float inside =
      wavelength >= kGridFirst ? (wavelength <= kGridLast ? wavelength : kGridLast) : kGridFirst;
  const float position = (inside - kGridFirst) / kGridStep;
  const auto low = static_cast<std::size_t>(position);
  return {low, std::min(low + 1, kGridSize - 1), position - static_cast<float>(low)};
}

}  // namespace

Xyz xyzFromPairs(SpectralPairs pairs, Illuminant illuminant) noexcept {
  const GridRow& power = illuminant == Illuminant::D65 ? kIlluminantD65 : kIlluminantE;
  Xyz sum{0.0F, 0.0F, 0.0F};
  float norm = 0.0F;
  for (std::size_t pair = 0; pair < pairs.size(); ++pair) {
    const float wavelength = pairs.wavelength(pair);
    const float amplitude = pairs.amplitude(pair);
    const GridPlace place = gridPlace(wavelength);
    const float light = place.between(power[place.low], power[place.high]);
    ColourMatch match{0.0F, 0.0F, 0.0F};
    if (wavelength >= kGridFirst && wavelength <= kGridLast) {
      const ColourMatch& low = kObserver[place.low];
      const ColourMatch& high = kObserver[place.high];
      match = {place.between(low.x, high.x), place.between(low.y, high.y),
               place.between(low.z, high.z)};
    }
    // What lies outside adds 0 times its amplitude, which is NaN if that is infinite.
    sum.x += match.x * amplitude * light;
    sum.y += match.y * amplitude * light;
    sum.z += match.z * amplitude * light;
    norm += match.y * light;
  }
  return {sum.x / norm, sum.y / norm, sum.z / norm};
}

}  // namespace qex::vornath
