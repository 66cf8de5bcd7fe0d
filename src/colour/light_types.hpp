/// The types of a light's strength. The library stores and passes such values, but computes nothing
/// with them.
#ifndef VORNATH_COLOUR_LIGHT_TYPES_HPP
#define VORNATH_COLOUR_LIGHT_TYPES_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// Returns the type of the photometric units: `enum { LUMEN; CANDELA; LUX; NIT; }`. Borrowed.
const InternedType& lightUnitType();

/// Returns the type of a coloured strength: a struct with the fields `color` (the universal
/// spectrum), `value` (a float) and `unit`. Borrowed.
const InternedType& emissionType();

}  // namespace qex::vornath

#endif
