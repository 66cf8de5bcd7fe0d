/// Spectral pairs (see colour/step_function.hpp) from an even grid or a single band, and their
/// check. Failures are vrnt::Exception with InvalidArguments.
#ifndef VORNATH_EMBED_SPECTRAL_PAIRS_HPP
#define VORNATH_EMBED_SPECTRAL_PAIRS_HPP

#include <span>
#include <vector>

namespace qex::vornath {

/// Returns the pairs of amplitudes on an even grid, in nm. Wavelengths are reached by repeated
/// addition, so that rounding accumulates. Throws what requireWavelength() and
/// requireWavelengthStep() do.
std::vector<float> pairsFromUniformSamples(float lambda0, float deltaLambda,
                                           std::span<const float> amplitudes);

/// Returns the pairs of one amplitude on one band. Checks nothing.
std::vector<float> pairsFromBand(float lambda, float deltaLambda, float amplitude);

/// Throws what is wrong with the pairs, the first fault first.
void validatePairs(std::span<const float> floats);

}  // namespace qex::vornath

#endif
