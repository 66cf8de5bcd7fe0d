/// The one wavelength grid of the tables and conversions: sample i stands at 400 + 5 i nm.
#ifndef VORNATH_COLOUR_TABLES_GRID_HPP
#define VORNATH_COLOUR_TABLES_GRID_HPP

#include <array>
#include <cstddef>

namespace qex::vornath {

inline constexpr std::size_t kGridSize = 61;
inline constexpr float kGridFirst = 400.0F;  // nm
inline constexpr float kGridLast = 700.0F;   // nm
inline constexpr float kGridStep = 5.0F;     // nm

/// One number for each sample of the grid.
using GridRow = std::array<float, kGridSize>;

}  // namespace qex::vornath

#endif
