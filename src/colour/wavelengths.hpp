/// Checks the wavelengths, in nm, that are passed to an operation.
#ifndef VORNATH_COLOUR_WAVELENGTHS_HPP
#define VORNATH_COLOUR_WAVELENGTHS_HPP

#include <span>

namespace qex::vornath {

/// Checks that there are at least two wavelengths, that the first is greater than 0, and that each
/// is greater than the one before.
/// Errors: throws vrnt::Exception with InvalidArguments.
void requireWavelengths(std::span<const float> lambdas);

}  // namespace qex::vornath

#endif
