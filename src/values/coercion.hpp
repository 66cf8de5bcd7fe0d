/// Carrying a value over to another type: what both have in common by label and by index is kept,
/// and the rest is the default of the new type.
#ifndef VORNATH_VALUES_COERCION_HPP
#define VORNATH_VALUES_COERCION_HPP

#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// A new value of the target type. It starts as the type's default and takes from the source what
/// fits: fields go by label, elements by index on each dimension up to the smaller extent, enums by
/// the label of their constructor. Any part whose type may stand for that of its counterpart goes
/// over byte for byte, references counted; there is no conversion of numbers, and no reference is
/// followed. What an array type without extents is to take is nothing.
///
/// Lenient: parts that don't convert keep the default. Otherwise the first of them fails, with
/// "Cannot convert {} to {}: Types are unrelated." or "Enum constructor {} not found in type {}.".
/// Both ways a code that its own enum doesn't have fails with "Enum code out of range: {}", and
/// arrays one of which leaves its extents open with std::bad_optional_access. Throws
/// std::bad_alloc.
///
/// The source is only read and referred to. The cost is linear in the two values and the two types;
/// nothing recurses.
DynamicValue coerceValue(const ConstView& source, const TypePtr& targetType, bool lenient);

inline DynamicValue coerceValue(const DynamicValue& source, const TypePtr& targetType,
                                bool lenient) {
  return coerceValue(source.view(), targetType, lenient);
}

}  // namespace qex::vornath

#endif
