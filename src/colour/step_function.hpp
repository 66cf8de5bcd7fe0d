/// A sampled distribution as a closed step function: pairs of a wavelength in nm and an amplitude,
/// as interleaved floats. Pair 0 is (0, 0), the wavelengths increase strictly, and the last
/// amplitude is 0. The amplitude of a pair applies from its wavelength up to the next wavelength.
///
/// Failures are vrnt::Exception with InvalidArguments. Functions that read pairs accept arrays that
/// break these rules: they read only within the array, and the result has no meaning.
#ifndef VORNATH_COLOUR_STEP_FUNCTION_HPP
#define VORNATH_COLOUR_STEP_FUNCTION_HPP

#include <cstddef>
#include <span>
#include <vector>

namespace qex::vornath {

/// A view of interleaved floats as pairs. An odd float at the end belongs to no pair.
class SpectralPairs {
 public:
  explicit SpectralPairs(std::span<const float> floats) noexcept
      : floats_(floats.data()), size_(floats.size() / 2) {}

  std::size_t size() const noexcept { return size_; }
  float wavelength(std::size_t pair) const noexcept { return floats_[2 * pair]; }
  float amplitude(std::size_t pair) const noexcept { return floats_[2 * pair + 1]; }

 private:
  const float* floats_;
  std::size_t size_;
};

/// Builds pairs from samples, which are added in ascending order of their wavelengths. Checks
/// nothing.
class PairsBuilder {
 public:
  /// Starts with the pair (0, 0) and reserves room for `samples` pairs.
  explicit PairsBuilder(std::size_t samples);

  void append(float wavelength, float amplitude);
  /// Ends the last interval at `wavelength` and returns the pairs.
  std::vector<float> close(float wavelength) &&;

 private:
  std::vector<float> pairs_;
};

/// Returns pairs with one amplitude for each interval between adjacent wavelengths.
/// Errors: throws as requireWavelengths() does; "amplitudes.size() must be lambdas.size() - 1.".
std::vector<float> pairsFromSamples(std::span<const float> lambdas,
                                    std::span<const float> amplitudes);

/// Computes mean amplitudes of one step function over bands whose beginnings do not decrease. All
/// bands together read the pairs once.
class StepFunctionAverager {
 public:
  explicit StepFunctionAverager(SpectralPairs pairs) noexcept : pairs_(pairs) {}

  /// Returns the mean amplitude from `lambda` to `lambda + deltaLambda` nm; outside the function,
  /// the amplitude is 0. Checks nothing. Returns NaN for NaN.
  float average(float lambda, float deltaLambda) noexcept;

 private:
  SpectralPairs pairs_;
  std::size_t first_ = 0;  // the wavelengths before it are below the beginning of the last band
};

}  // namespace qex::vornath

#endif
