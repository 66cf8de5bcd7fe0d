/// Converts spectral pairs to a colour, by the standard observer.
#ifndef VORNATH_COLOUR_SPECTRAL_INTEGRAL_HPP
#define VORNATH_COLOUR_SPECTRAL_INTEGRAL_HPP

#include "colour/colour_space.hpp"
#include "colour/illuminant.hpp"
#include "colour/step_function.hpp"

namespace qex::vornath {

/// Returns the colour of a reflectance under the illuminant; amplitudes of 1 have a Y of 1. Each
/// pair counts once, whatever the width of its interval, so the dense regions of an uneven grid
/// weigh more. Without a pair from 400 to 700 nm the result is NaN.
Xyz xyzFromPairs(SpectralPairs pairs, Illuminant illuminant) noexcept;

}  // namespace qex::vornath

#endif
