/// Splits a value along the annotation `@no_specialize`: a consumer compiles in the one part and
/// may change the other freely. Values carry no metadata, so the annotations come from a separate
/// type.
#ifndef VORNATH_VALUES_SPECIALIZATION_HPP
#define VORNATH_VALUES_SPECIALIZATION_HPP

#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Returns whether the type carries the key "no_specialize".
inline bool isNotSpecialized(const InternedType& type) {
  return type.metadata().count("no_specialize") != 0;
}

/// Returns a new value, as a new block, without the fields whose own type carries the key
/// "no_specialize", at any depth of structs and arrays; does not follow references. Only fields are
/// checked: the key on the type of the whole value or of an element has no effect. The remaining
/// fields keep the value's types; structs and arrays around them are new. A struct all of whose
/// fields carry the key becomes empty.
///
/// The value's type must be a subtype of `annotated`. Throws std::bad_optional_access for an
/// unsized array, std::bad_variant_access for a value of another kind than the type, and
/// std::bad_alloc. The cost is linear in the value and the types. Does not recurse.
///
/// What stays, and its type, is worked out for the first value of two types and kept with them.
BlockPtr buildSpecializedBlock(const InternedType& valueType, const char* value,
                               const InternedType& annotated);

inline DynamicValue buildSpecialization(const ConstView& value, const InternedType& annotated) {
  return DynamicValue(buildSpecializedBlock(*value.type, value.data(), annotated));
}

}  // namespace qex::vornath

#endif
