/// The light under which a colour is meant.
#ifndef VORNATH_COLOUR_ILLUMINANT_HPP
#define VORNATH_COLOUR_ILLUMINANT_HPP

#include <cstdint>

namespace qex::vornath {

/// Numbered as in the CIE's tables: E, C, D50, D55, D65, D75, the fluorescent series. Only these
/// two can be asked for.
enum class Illuminant : std::int32_t { E = 0, D65 = 4 };

}  // namespace qex::vornath

#endif
