/// The compact spectrum, which stands in data that has been reduced to three channels, and the way
/// from types with it to types with the universal one.
#ifndef VORNATH_COLOUR_UNIVERSAL_SPECTRUM_HPP
#define VORNATH_COLOUR_UNIVERSAL_SPECTRUM_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// `{ float3 spectrum; }`. Borrowed.
const InternedType& compactSpectrumType();

/// The type with the universal spectrum in place of each compact one that lies in its bytes: fields
/// of structs and elements of one-dimensional arrays, at any depth, but nothing behind a reference
/// or in an array of more dimensions. Every part keeps its metadata; that of a compact spectrum
/// goes before the universal type's own. A type without a compact spectrum is returned as it is.
/// Linear in the number of different parts; no depth of a type exhausts the stack.
TypePtr toUniversalSpectrum(const InternedType& type);

}  // namespace qex::vornath

#endif
