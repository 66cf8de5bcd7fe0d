/// The closed step function that a sampled distribution is: pairs of a wavelength in nm and an
/// amplitude, as interleaved floats. Pair 0 is (0, 0), wavelengths increase strictly, the last
/// amplitude is 0; the amplitude of a pair holds from its wavelength up to the next one.
///
/// Failures are vrnt::Exception with InvalidArguments. The reading functions accept arrays that
/// break these rules: they read within the pairs, and the result has no meaning.
#ifndef VORNATH_COLOUR_STEP_FUNCTION_HPP
#define VORNATH_COLOUR_STEP_FUNCTION_HPP

#include <cstddef>
#include <span>
#include <vector>

namespace qex::vornath {

/// Interleaved floats read as pairs. An odd float at the end belongs to no pair.
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

/// Builds pairs from samples in ascending order of their wavelengths; checks nothing.
class PairsBuilder {
 public:
  /// Starts with the pair (0, 0) and reserves room for `samples` pairs.
  explicit PairsBuilder(std::size_t samples);

  void append(float wavelength, float amplitude);
  /// Ends the last interval at a wavelength and returns the pairs.
  std::vector<float> close(float wavelength) &&;

 private:
  std::vector<float> pairs_;
};

/// The pairs of an amplitude from each wavelength to the next. Throws for bad wavelengths and then
/// "amplitudes.size() must be lambdas.size() - 1.".
std::vector<float> pairsFromSamples(std::span<const float> lambdas,
                                    std::span<const float> amplitudes);

/// Mean amplitudes of one step function over bands whose beginnings don't decrease: a walk over all
/// of them costs the pairs once.
class StepFunctionAverager {
 public:
  explicit StepFunctionAverager(SpectralPairs pairs) noexcept : pairs_(pairs) {}

  /// The mean over `lambda` to `lambda + deltaLambda`, where what lies outside the function counts
  /// as 0. Nothing is checked; a NaN gives NaN.
  float average(float lambda, float deltaLambda) noexcept;

 private:
  SpectralPairs pairs_;
  std::size_t first_ = 0;  // no pair before it reaches the last band's beginning
};

}  // namespace qex::vornath

#endif
