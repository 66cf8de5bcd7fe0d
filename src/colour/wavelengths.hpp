/// Checks of the wavelengths, in nm, that an operation is asked for. Each throws vrnt::Exception
/// with InvalidArguments. The tests of single values refuse zero and below only: a NaN passes.
#ifndef VORNATH_COLOUR_WAVELENGTHS_HPP
#define VORNATH_COLOUR_WAVELENGTHS_HPP

#include <span>

namespace qex::vornath {

/// "Wavelength lambda must be greater than 0."
void requireWavelength(float lambda);

/// "Wavelength delta lambda must be greater than 0"
void requireWavelengthStep(float deltaLambda);

/// At least two, the first above 0, each above the one before.
void requireWavelengths(std::span<const float> lambdas);

}  // namespace qex::vornath

#endif
