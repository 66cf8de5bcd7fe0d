// Ways to sample spectra that no flat function offers.
#include "colour/band_averages.hpp"
#include "colour/spectrum_view.hpp"
#include "embed/wavelength.hpp"

namespace qex::vornath {

float SpectrumView::bandAverage(float lambda, float deltaLambda, Illuminant illuminant) const {
  if (empty()) return 0.0F;
  requireWavelength(lambda);
  requireWavelengthStep(deltaLambda);
  float average = 0.0F;
  fillBands(*this, {&average, 1}, illuminant, [&](std::size_t) {
    return Band{lambda, deltaLambda};
  });
  return average;
}

std::vector<float> SpectrumView::sampleUniform(float lambda0, float deltaLambda,
                                               std::size_t count) const {
  std::vector<float> bands(count);
  fillUniform(lambda0, deltaLambda, bands);
  return bands;
}

void SpectrumView::fillUniform(float lambda0, float deltaLambda, std::span<float> bands) const {
  if (!empty() && !bands.empty()) {
    // Checking the first band suffices: the others begin later.
    requireWavelength(lambda0);
    requireWavelengthStep(deltaLambda);
  }
  fillBands(*this, bands, Illuminant::D65, [&](std::size_t i) {
    return Band{static_cast<float>(i) * deltaLambda + lambda0, deltaLambda};
  });
}

}  // namespace qex::vornath
