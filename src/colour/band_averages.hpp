/// Mean amplitudes of a spectrum over a sequence of bands.
#ifndef VORNATH_COLOUR_BAND_AVERAGES_HPP
#define VORNATH_COLOUR_BAND_AVERAGES_HPP

#include <algorithm>
#include <span>

#include "colour/reconstruction.hpp"
#include "colour/spectrum_view.hpp"
#include "colour/step_function.hpp"

namespace qex::vornath {

/// The band from `lambda` to `lambda + deltaLambda`, in nm.
struct Band {
  float lambda, deltaLambda;
};

/// Fills `bands` with mean amplitudes of a spectrum. `bandAt(i)` returns the Band with index i. The
/// beginnings of the bands must not decrease.
template <typename BandAt>
void fillBands(const SpectrumView& spectrum, std::span<float> bands, Illuminant illuminant,
               BandAt bandAt) {
  const auto fillBy = [&](auto&& average) {
    for (std::size_t i = 0; i < bands.size(); ++i) {
      const Band band = bandAt(i);
      bands[i] = average(band.lambda, band.deltaLambda);
    }
  };
  if (spectrum.empty()) {
    std::fill(bands.begin(), bands.end(), 0.0F);
    return;
  }
  switch (spectrum.encoding()) {
    case SpectrumEncoding::Luminance:
      std::fill(bands.begin(), bands.end(), spectrum.floats()[0]);
      break;
    case SpectrumEncoding::Rgb:
      fillBy([reconstruction = Reconstruction(spectrum.storedRgb(), illuminant)](
                 float lambda, float delta) { return reconstruction.average(lambda, delta); });
      break;
    case SpectrumEncoding::Spectral:
      fillBy([averager = StepFunctionAverager(SpectralPairs(spectrum.floats()))](
                 float lambda, float delta) mutable { return averager.average(lambda, delta); });
      break;
  }
}

}  // namespace qex::vornath

#endif
