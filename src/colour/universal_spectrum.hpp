/// The compact spectrum, for data that was reduced to three channels, and the conversion of types
/// that contain it to types with the universal spectrum.
#ifndef VORNATH_COLOUR_UNIVERSAL_SPECTRUM_HPP
#define VORNATH_COLOUR_UNIVERSAL_SPECTRUM_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// Returns the type of the compact spectrum, `{ float3 spectrum; }`. Borrowed.
const InternedType& compactSpectrumType();

/// Returns the type with the universal spectrum in place of each compact spectrum. Replaces fields
/// of structs and elements of one-dimensional arrays, at any depth, but nothing behind a reference
/// and nothing in an array with more dimensions. Every part keeps its metadata; the metadata of a
/// compact spectrum takes precedence over that of the universal spectrum. Returns a type without a
/// compact spectrum unchanged. The time is linear in the number of different parts. No recursion.
TypePtr toUniversalSpectrum(const InternedType& type);

}  // namespace qex::vornath

#endif
