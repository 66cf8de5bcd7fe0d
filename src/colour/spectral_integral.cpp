#include "colour/spectral_integral.hpp"

#include <array>
#include <cstdint>

#include "colour/tables/illuminants.hpp"
#include "colour/tables/observer.hpp"

namespace qex::vornath {
namespace {

// Four floats with the same operations; each has the result of a single float.
using Lanes [[gnu::vector_size(16)]] = float;

// The norm needs y; X, Y and Z need x, y and z. All need the illuminant's power.
struct Sample {
  Lanes match, power;
};

// The last sample is stored twice, so that interpolation after it needs no special case.
using Tables = std::array<Sample, kGridSize + 1>;

Tables makeTables(const GridRow& power) {
  Tables tables{};
  for (std::size_t i = 0; i <= kGridSize; ++i) {
    const std::size_t at = i < kGridSize ? i : kGridSize - 1;
    const ColourMatch& match = kObserver[at];
    tables[i].match = Lanes{match.y, match.x, match.y, match.z};
    tables[i].power = Lanes{power[at], power[at], power[at], power[at]};
  }
  return tables;
}

const Tables& tablesOf(Illuminant illuminant) {
  static const Tables underE = makeTables(kIlluminantE);
  static const Tables underD65 = makeTables(kIlluminantD65);
  return illuminant == Illuminant::D65 ? underD65 : underE;
}

}  // namespace

Xyz xyzFromPairs(SpectralPairs pairs, Illuminant illuminant) noexcept {
  const Tables& tables = tablesOf(illuminant);
  Lanes sum{};  // the norm, X, Y and Z
  for (std::size_t pair = 0; pair < pairs.size(); ++pair) {
    const float wavelength = pairs.wavelength(pair);
    const float amplitude = pairs.amplitude(pair);
    Lanes match{};
    Lanes light;
    if (wavelength >= kGridFirst && wavelength <= kGridLast) [[likely]] {
      const float position = (wavelength - kGridFirst) / kGridStep;
      const auto low = static_cast<std::int32_t>(position);
      const float fraction = position - static_cast<float>(low);
      const float rest = 1.0F - fraction;
      const Sample* const samples = &tables[static_cast<std::size_t>(low)];
      match = rest * samples[0].match + fraction * samples[1].match;
      light = rest * samples[0].power + fraction * samples[1].power;
    } else {
      // The light at the nearer end of the grid. A NaN counts as the beginning.
      light = tables[wavelength > kGridLast ? kGridSize - 1 : 0].power;
    }
    // A pair outside the grid adds 0 times its amplitude, which is NaN if the amplitude is
    // infinite.
    Lanes weight{amplitude, amplitude, amplitude, amplitude};
    weight[0] = 1.0F;
    sum += match * weight * light;
  }
  return {sum[1] / sum[0], sum[2] / sum[0], sum[3] / sum[0]};
}

}  // namespace qex::vornath
