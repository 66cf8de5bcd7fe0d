/// From spectral pairs to a colour, by the standard observer.
#ifndef VORNATH_COLOUR_SPECTRAL_INTEGRAL_HPP
#define VORNATH_COLOUR_SPECTRAL_INTEGRAL_HPP

#include "colour/colour_space.hpp"
#include "colour/illuminant.hpp"
#include "colour/step_function.hpp"

namespace qex::vornath {

/// The colour of a reflectance under the illuminant, with a Y of 1 for amplitudes of 1. Every pair
/// counts once, whatever the width of its interval: an uneven grid weighs its dense regions more.
/// Without a pair from 400 to 700 nm the result is NaN.
Xyz xyzFromPairs(SpectralPairs pairs, Illuminant illuminant) noexcept;

}  // namespace qex::vornath

#endif
