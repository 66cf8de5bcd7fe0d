/// The types of arrays and structs that are built from their parts, and the checks of these parts.
/// A part is anything with a type(): a value, or one that is being parsed. A list of parts has
/// their number as its size(); to visit one of neighbours of the same type is enough. Parts says
/// where each part lies.
#ifndef VORNATH_VALUES_AGGREGATE_TYPES_HPP
#define VORNATH_VALUES_AGGREGATE_TYPES_HPP

#include <utility>
#include <vector>

#include "types/extents.hpp"
#include "types/make_type.hpp"
#include "types/type.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Throws "Empty array without type is not allowed.".
[[noreturn]] void throwUntypedArray();

/// Returns the array type of the element type. Throws, in this order, what makeArrayDesc() throws
/// ("concrete type required", "negative array length"), "Empty array without type is not allowed."
/// if there are more values than the extents hold, and "Incompatible type for value -> {}." for a
/// value whose type is not a subtype of the element type. Accepts fewer values.
template <typename Values>
TypePtr arrayTypeOf(const Values& values, const Extents& extents, const TypePtr& element) {
  TypePtr type = makeType(makeArrayDesc(element, extents));
  if (values.size() > extents.elements()) throwUntypedArray();
  for (const auto& value : values) requireAssignable(*value.type(), *element);
  return type;
}

/// Does the same with the type of the first value as the element type. Throws "Empty array without
/// type is not allowed." if there are no values, and also, in one dimension, if the extent is not
/// their number: this case has no message of its own.
template <typename Values>
TypePtr arrayTypeOf(const Values& values, const Extents& extents) {
  if (values.empty()) throwUntypedArray();
  if (extents.rank() == 1 && (extents[0] < 0 || values.size() != extents.elements())) {
    throwUntypedArray();
  }
  return arrayTypeOf(values, extents, TypePtr(values.front().type()));
}

/// Returns the struct type of the labels and of the values' types. Throws what Type::TStruct
/// throws.
template <typename Field>
TypePtr structTypeOf(const std::vector<Field>& fields) {
  std::vector<Type::Field> types;
  types.reserve(fields.size());
  for (const Field& field : fields) types.emplace_back(field.value.type(), field.label);
  return makeType(Type::TStruct(std::move(types)));
}

}  // namespace qex::vornath

#endif
