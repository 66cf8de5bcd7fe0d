/// The illuminants of a colour.
#ifndef VORNATH_COLOUR_ILLUMINANT_HPP
#define VORNATH_COLOUR_ILLUMINANT_HPP

#include <cstdint>

namespace qex::vornath {

/// The codes follow the order of the CIE's tables: E, C, D50, D55, D65, D75, the fluorescent
/// series. Only these two are supported.
enum class Illuminant : std::int32_t { E = 0, D65 = 4 };

}  // namespace qex::vornath

#endif
