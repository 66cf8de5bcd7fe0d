/// Converts a value to another type: keeps what both types share by label and index, and takes the
/// rest from the default of the new type.
#ifndef VORNATH_VALUES_COERCION_HPP
#define VORNATH_VALUES_COERCION_HPP

#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Returns a new value of the target type, as a new block. It starts as the type's default and
/// copies from the source fields by label, elements by index on each dimension up to the smaller
/// extent, and enums by the label of their constructor. A part whose type is a subtype of that of
/// its counterpart is copied byte for byte, with its references. Numbers are not converted and
/// references are not followed. An unsized target array takes no elements.
///
/// With `lenient`, parts that do not convert keep the default. Without it, the first of them throws
/// "Cannot convert {} to {}: Types are unrelated." or "Enum constructor {} not found in type {}.".
/// In both cases a code that its own enum lacks throws "Enum code out of range: {}", and two arrays
/// of which one is unsized throw std::bad_optional_access. Throws std::bad_alloc.
///
/// The source is only read and referred to. The cost is linear in the two values and the two types.
/// Does not recurse.
///
/// How to convert is worked out for the first value of two types and kept with them.
BlockPtr coerceToBlock(const InternedType& sourceType, const char* source,
                       const InternedType& targetType, bool lenient);

inline DynamicValue coerceValue(const ConstView& source, const TypePtr& targetType, bool lenient) {
  return DynamicValue(coerceToBlock(*source.type, source.data(), *targetType, lenient));
}

inline DynamicValue coerceValue(const DynamicValue& source, const TypePtr& targetType,
                                bool lenient) {
  return coerceValue(source.view(), targetType, lenient);
}

}  // namespace qex::vornath

#endif
