/// Splitting a value along the mark `@no_specialize`: what a consumer bakes in, as against what may
/// change freely. Values carry no metadata, so that the marks are read from an annotated type.
#ifndef VORNATH_VALUES_SPECIALIZATION_HPP
#define VORNATH_VALUES_SPECIALIZATION_HPP

#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Returns whether the type carries the key "no_specialize".
inline bool isNotSpecialized(const InternedType& type) {
  return type.metadata().count("no_specialize") != 0;
}

/// A new value without the fields whose own type carries the key "no_specialize", at any depth of
/// structs and arrays; references aren't followed. Only fields are looked at: the key on the type
/// of the whole value or of an element means nothing here. What is kept has the types of the value,
/// structs and arrays being made anew around it; all of a struct's fields marked make it an empty
/// one.
///
/// The value relates to the type. Throws std::bad_optional_access for an array value whose type
/// leaves its extents open, std::bad_variant_access for a value of another form than the type, and
/// std::bad_alloc. The cost is linear in the value and the types; nothing recurses.
DynamicValue buildSpecialization(const ConstView& value, const InternedType& annotated);

}  // namespace qex::vornath

#endif
