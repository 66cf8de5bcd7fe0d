/// The light of a black body.
#ifndef VORNATH_COLOUR_BLACK_BODY_HPP
#define VORNATH_COLOUR_BLACK_BODY_HPP

#include "colour/colour_space.hpp"

namespace qex::vornath {

/// Spectral radiance by Planck's law, in watts per steradian, square metre and nanometre, at a
/// wavelength in nm and a temperature in kelvin. 0 if one of them is 0.
float spectralRadiance(float wavelength, float temperature) noexcept;

/// The colour of the light at a temperature in kelvin, scaled to a luminance of 1. NaN at 0 K.
Rgb blackBodyColour(float temperature) noexcept;

}  // namespace qex::vornath

#endif
