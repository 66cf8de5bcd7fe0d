/// A spectrum as a value of its own: makers, check and reading.
#ifndef VORNATH_EMBED_SPECTRUM_HPP
#define VORNATH_EMBED_SPECTRUM_HPP

#include <span>

#include "colour/spectrum_view.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// A value of the universal spectrum type. A copy shares the array; nobody writes to it.
///
/// All wavelengths are in nm. Failures are vrnt::Exception with InvalidArguments: those of
/// wavelengths.hpp and of the operation.
class Spectrum {
 public:
  static Spectrum fromLuminance(float value);
  static Spectrum fromRgb(float red, float green, float blue);
  /// An amplitude for each interval between adjacent wavelengths.
  static Spectrum fromSamples(std::span<const float> lambdas, std::span<const float> amplitudes);
  /// An amplitude for each step of a grid from lambda0.
  static Spectrum fromUniformSamples(float lambda0, float deltaLambda,
                                     std::span<const float> amplitudes);
  /// One amplitude on one band. Nothing is checked.
  static Spectrum fromBand(float lambda, float deltaLambda, float amplitude);

  /// Shares the value. Throws "Incompatible type for accessor -> {}." for one of an unrelated type.
  explicit Spectrum(DynamicValue value);

  const DynamicValue& value() const noexcept { return value_; }

  /// For all readings. Borrowed: it lives no longer than this. Throws what readSpectrum() does.
  SpectrumView view() const;

  /// Throws what is wrong: for Luminance and Rgb an array type other than `float[1]` and
  /// `float[3]` ("Incompatible type for value -> {}."), for Spectral what validatePairs() says. An
  /// empty spectrum is valid.
  void validate() const;

 private:
  DynamicValue value_;
};

}  // namespace qex::vornath

#endif
