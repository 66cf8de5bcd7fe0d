#include "spectrum_view.hpp"

#include <algorithm>

#include "reconstruction.hpp"
#include "spectral_integral.hpp"
#include "step_function.hpp"
#include "wavelengths.hpp"

namespace qex::vornath {
namespace {

struct Band {
  float lambda, deltaLambda;
};

}  // namespace

Rgb SpectrumView::storedRgb() const noexcept {
  if (encoding_ == SpectrumEncoding::Luminance) return {floats_[0], floats_[0], floats_[0]};
  return {floats_[0], floats_[1], floats_[2]};
}

// Averages over bands whose beginnings don't decrease.
template <typename BandAt>
void SpectrumView::fill(std::span<float> bands, Illuminant illuminant, BandAt bandAt) const {
  const auto fillBy = [&](auto&& average) {
    for (std::size_t i = 0; i < bands.size(); ++i) {
      const Band band = bandAt(i);
      bands[i] = average(band.lambda, band.deltaLambda);
    }
  };
  if (empty()) {
    std::fill(bands.begin(), bands.end(), 0.0F);
    return;
  }
  switch (encoding_) {
    case SpectrumEncoding::Luminance:
      std::fill(bands.begin(), bands.end(), floats_[0]);
      break;
    case SpectrumEncoding::Rgb:
      fillBy([reconstruction = Reconstruction(storedRgb(), illuminant)](float lambda, float delta) {
        return reconstruction.average(lambda, delta);
      });
      break;
    case SpectrumEncoding::Spectral:
      fillBy([averager = StepFunctionAverager(SpectralPairs(floats_))](
                 float lambda, float delta) mutable { return averager.average(lambda, delta); });
      break;
  }
}

float SpectrumView::bandAverage(float lambda, float deltaLambda, Illuminant illuminant) const {
  if (empty()) return 0.0F;
  requireWavelength(lambda);
  requireWavelengthStep(deltaLambda);
  float average = 0.0F;
  fill({&average, 1}, illuminant, [&](std::size_t) { return Band{lambda, deltaLambda}; });
  return average;
}

std::vector<float> SpectrumView::sampleAt(std::span<const float> lambdas) const {
  requireWavelengths(lambdas);
  std::vector<float> bands(lambdas.size() - 1);
  fill(bands, Illuminant::D65, [&](std::size_t i) {
    return Band{lambdas[i], lambdas[i + 1] - lambdas[i]};
  });
  return bands;
}

std::vector<float> SpectrumView::sampleUniform(float lambda0, float deltaLambda,
                                               std::size_t count) const {
  std::vector<float> bands(count);
  fillUniform(lambda0, deltaLambda, bands);
  return bands;
}

void SpectrumView::fillUniform(float lambda0, float deltaLambda, std::span<float> bands) const {
  if (!empty() && !bands.empty()) {
    // The bands behind the first one begin later.
    requireWavelength(lambda0);
    requireWavelengthStep(deltaLambda);
  }
  fill(bands, Illuminant::D65, [&](std::size_t i) {
    return Band{static_cast<float>(i) * deltaLambda + lambda0, deltaLambda};
  });
}

Xyz SpectrumView::toXyz(Illuminant illuminant) const noexcept {
  if (empty()) return {0.0F, 0.0F, 0.0F};
  if (encoding_ == SpectrumEncoding::Spectral) {
    return xyzFromPairs(SpectralPairs(floats_), illuminant);
  }
  return xyzFromRgb(storedRgb());
}

Rgb SpectrumView::toRgb(Illuminant illuminant) const noexcept {
  if (empty()) return {0.0F, 0.0F, 0.0F};
  if (encoding_ == SpectrumEncoding::Spectral) return rgbFromXyz(toXyz(illuminant));
  return storedRgb();
}

float SpectrumView::toLuminance(Illuminant illuminant) const noexcept {
  return toXyz(illuminant).y;
}

}  // namespace qex::vornath
