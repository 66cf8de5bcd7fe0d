/// The light that a black body emits.
#ifndef VORNATH_COLOUR_BLACK_BODY_HPP
#define VORNATH_COLOUR_BLACK_BODY_HPP

#include "colour/colour_space.hpp"

namespace qex::vornath {

/// Returns the spectral radiance by Planck's law, in watts per steradian, square metre and
/// nanometre, at a wavelength in nm and a temperature in kelvin. Returns 0 if one of them is 0.
float spectralRadiance(float wavelength, float temperature) noexcept;

/// Returns the colour of the light at a temperature in kelvin, scaled to a luminance of 1. The
/// channels are NaN at 0 K.
Rgb blackBodyColour(float temperature) noexcept;

}  // namespace qex::vornath

#endif
