/// A spectrum that owns its value.
#ifndef VORNATH_EMBED_SPECTRUM_HPP
#define VORNATH_EMBED_SPECTRUM_HPP

#include <span>

#include "colour/spectrum_view.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// A value of the universal spectrum type. Copies share the array, to which nobody writes.
///
/// All wavelengths are in nm. Failures are vrnt::Exception with InvalidArguments: those of
/// wavelengths.hpp, and those described below.
class Spectrum {
 public:
  static Spectrum fromLuminance(float value);
  static Spectrum fromRgb(float red, float green, float blue);
  /// Creates a spectrum with one amplitude for each interval between adjacent wavelengths.
  static Spectrum fromSamples(std::span<const float> lambdas, std::span<const float> amplitudes);
  /// Creates a spectrum with one amplitude for each step of a grid that begins at `lambda0`.
  static Spectrum fromUniformSamples(float lambda0, float deltaLambda,
                                     std::span<const float> amplitudes);
  /// Creates a spectrum with one amplitude on one band. Checks nothing.
  static Spectrum fromBand(float lambda, float deltaLambda, float amplitude);

  /// Shares the value.
  /// Errors: throws "Incompatible type for accessor -> {}." if its type is unrelated.
  explicit Spectrum(DynamicValue value);

  const DynamicValue& value() const noexcept { return value_; }

  /// Returns a view with which the spectrum is read. Borrowed until this object is destroyed.
  /// Errors: throws as readSpectrum() does.
  SpectrumView view() const;

  /// Throws an exception if the spectrum is invalid. An empty spectrum is valid.
  /// Errors: "Incompatible type for value -> {}." if the array type is not `float[1]` for Luminance
  /// or `float[3]` for Rgb; for Spectral, as validatePairs() throws.
  void validate() const;

 private:
  DynamicValue value_;
};

}  // namespace qex::vornath

#endif
