#include "embed/spectrum.hpp"

#include <array>
#include <utility>

#include "colour/spectrum_reading.hpp"
#include "colour/step_function.hpp"
#include "embed/spectral_pairs.hpp"
#include "embed/spectrum_value.hpp"
#include "types/fixed_struct_types.hpp"

namespace qex::vornath {
namespace {

Spectrum spectral(const std::vector<float>& pairs) {
  return Spectrum(makeSpectrumValue(SpectrumEncoding::Spectral, pairs));
}

}  // namespace

Spectrum::Spectrum(DynamicValue value) : value_(std::move(value)) {
  requireAccessible(value_.typeOf(), spectrumType());
}

Spectrum Spectrum::fromLuminance(float value) {
  return Spectrum(makeSpectrumValue(SpectrumEncoding::Luminance, {&value, 1}));
}

Spectrum Spectrum::fromRgb(float red, float green, float blue) {
  return Spectrum(makeSpectrumValue(SpectrumEncoding::Rgb, std::array<float, 3>{red, green, blue}));
}

Spectrum Spectrum::fromSamples(std::span<const float> lambdas, std::span<const float> amplitudes) {
  return spectral(pairsFromSamples(lambdas, amplitudes));
}

Spectrum Spectrum::fromUniformSamples(float lambda0, float deltaLambda,
                                      std::span<const float> amplitudes) {
  return spectral(pairsFromUniformSamples(lambda0, deltaLambda, amplitudes));
}

Spectrum Spectrum::fromBand(float lambda, float deltaLambda, float amplitude) {
  return spectral(pairsFromBand(lambda, deltaLambda, amplitude));
}

SpectrumView Spectrum::view() const { return readSpectrum(value_.typeOf(), value_.data()); }

void Spectrum::validate() const {
  const StoredSpectrum stored = storedSpectrum(value_.typeOf(), value_.data());
  if (stored.array == nullptr) return;
  const std::span<const float> floats = floatsOf(stored);
  if (floats.empty()) return;
  switch (stored.encoding) {
    case SpectrumEncoding::Luminance:
      requireAssignable(blockType(stored.array), *floatArrayType(1));
      break;
    case SpectrumEncoding::Rgb:
      requireAssignable(blockType(stored.array), *floatArrayType(3));
      break;
    case SpectrumEncoding::Spectral:
      validatePairs(floats);
      break;
  }
}

}  // namespace qex::vornath
