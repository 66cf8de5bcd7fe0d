/// Fixed types that the type layer itself looks at. Each is made once, on first use, and permanent.
#ifndef VORNATH_TYPES_FIXED_STRUCT_TYPES_HPP
#define VORNATH_TYPES_FIXED_STRUCT_TYPES_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// The universal spectrum: `{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }
/// @name="Spectrum"`. Borrowed.
const InternedType& spectrumType();

/// `float[extent]` for the prepared extents 1, 3 and 166 without a look-up; else through the
/// factory.
TypePtr floatArrayType(std::int32_t extent);

}  // namespace qex::vornath

#endif
