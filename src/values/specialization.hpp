/// Splitting a value along the mark `@no_specialize`: what a consumer bakes in, as against what may
/// change freely. Values carry no metadata, so that the marks are read from an annotated type.
#ifndef VORNATH_VALUES_SPECIALIZATION_HPP
#define VORNATH_VALUES_SPECIALIZATION_HPP

#include "values/dynamic_value.hpp"

namespace qex::vornath {

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

/// Whether two values, both relating to the type, differ in a part that specialization keeps; NaN
/// differs from itself, as in valuesEqual(). Unlike above, the key on the type of the whole means
/// that they don't. Arrays of different extents differ. Throws as buildSpecialization() does.
bool specializationDiffers(const ConstView& a, const ConstView& b, const InternedType& annotated);

/// What the type `full` has beyond `specialized`: the fields that are missing there, with their
/// types as they are, and those of which a part is missing, with that part. Nothing missing gives
/// the empty struct type. Throws "Incompatible type for specialization: {}" with the reason if
/// `specialized` has what `full` doesn't have.
TypePtr specializationRemainder(const InternedType& full, const InternedType& specialized);

}  // namespace qex::vornath

#endif
