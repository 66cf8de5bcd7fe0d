/// Fixed types that the type layer itself uses. Each is created on first use and is permanent.
#ifndef VORNATH_TYPES_FIXED_STRUCT_TYPES_HPP
#define VORNATH_TYPES_FIXED_STRUCT_TYPES_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// Returns the universal spectrum type: `{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]*
/// spectrum; } @name="Spectrum"`. Ownership: the library's.
const InternedType& spectrumType();

/// Returns `float[extent]`. The extents 1, 3 and 166 need no look-up in the factory.
TypePtr floatArrayType(std::int32_t extent);

}  // namespace qex::vornath

#endif
