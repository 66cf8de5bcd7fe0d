/// Checks of a single wavelength and of a step, in nm. Each throws vrnt::Exception with
/// InvalidArguments for numbers that are not greater than 0. A NaN passes.
#ifndef VORNATH_EMBED_WAVELENGTH_HPP
#define VORNATH_EMBED_WAVELENGTH_HPP

namespace qex::vornath {

/// Throws "Wavelength lambda must be greater than 0.".
void requireWavelength(float lambda);

/// Throws "Wavelength delta lambda must be greater than 0".
void requireWavelengthStep(float deltaLambda);

}  // namespace qex::vornath

#endif
