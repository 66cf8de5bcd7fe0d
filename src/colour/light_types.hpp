/// The types in which a light declares its strength. The library stores and passes such values; it
/// does no photometric arithmetic.
#ifndef VORNATH_COLOUR_LIGHT_TYPES_HPP
#define VORNATH_COLOUR_LIGHT_TYPES_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// The photometric units: `enum { LUMEN; CANDELA; LUX; NIT; }`. Borrowed.
const InternedType& lightUnitType();

/// A coloured strength: the fields `color` (the universal spectrum), `value` (a float) and `unit`.
/// Borrowed.
const InternedType& emissionType();

}  // namespace qex::vornath

#endif
