/// The standard observer's colour matching functions.
#ifndef VORNATH_COLOUR_TABLES_OBSERVER_HPP
#define VORNATH_COLOUR_TABLES_OBSERVER_HPP

#include <array>

#include "colour/tables/grid.hpp"

namespace qex::vornath {

/// x-bar, y-bar and z-bar at one wavelength.
struct ColourMatch {
  float x, y, z;
};

extern const std::array<ColourMatch, kGridSize> kObserver;

}  // namespace qex::vornath

#endif
