/// The check of the wavelengths, in nm, that an operation is asked for.
#ifndef VORNATH_COLOUR_WAVELENGTHS_HPP
#define VORNATH_COLOUR_WAVELENGTHS_HPP

#include <span>

namespace qex::vornath {

/// Requires at least two wavelengths, the first above 0, each above the one before. Throws
/// vrnt::Exception with InvalidArguments otherwise.
void requireWavelengths(std::span<const float> lambdas);

}  // namespace qex::vornath

#endif
