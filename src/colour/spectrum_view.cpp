#include "colour/spectrum_view.hpp"

#include "colour/band_averages.hpp"
#include "colour/spectral_integral.hpp"
#include "colour/step_function.hpp"
#include "colour/wavelengths.hpp"

namespace qex::vornath {
Rgb SpectrumView::storedRgb() const noexcept {
  if (encoding_ == SpectrumEncoding::Luminance) return {floats_[0], floats_[0], floats_[0]};
  return {floats_[0], floats_[1], floats_[2]};
}

std::vector<float> SpectrumView::sampleAt(std::span<const float> lambdas) const {
  requireWavelengths(lambdas);
  std::vector<float> bands(lambdas.size() - 1);
  fillBands(*this, bands, Illuminant::D65, [&](std::size_t i) {
    return Band{lambdas[i], lambdas[i + 1] - lambdas[i]};
  });
  return bands;
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
