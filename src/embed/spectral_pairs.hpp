/// Builds spectral pairs (see colour/step_function.hpp) from an even grid or a single band, and
/// validates pairs. Failures are vrnt::Exception with InvalidArguments.
#ifndef VORNATH_EMBED_SPECTRAL_PAIRS_HPP
#define VORNATH_EMBED_SPECTRAL_PAIRS_HPP

#include <span>
#include <vector>

namespace qex::vornath {

/// Returns the pairs of amplitudes on an even grid, in nm. The wavelengths are computed by repeated
/// addition, so rounding errors accumulate.
/// Errors: throws as requireWavelength() and requireWavelengthStep() do.
std::vector<float> pairsFromUniformSamples(float lambda0, float deltaLambda,
                                           std::span<const float> amplitudes);

/// Returns the pairs of one amplitude on one band. Checks nothing.
std::vector<float> pairsFromBand(float lambda, float deltaLambda, float amplitude);

/// Throws an exception for the first fault in the pairs; returns if there is none.
void validatePairs(std::span<const float> floats);

}  // namespace qex::vornath

#endif
