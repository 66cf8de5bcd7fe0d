/// Arrays and structs from the values of their parts: the type that they get, and what is refused.
/// The parts are whatever has a type(): values, or drafts of values that are being read. Where each
/// part comes to lie, Parts tells.
#ifndef VORNATH_VALUES_ASSEMBLY_HPP
#define VORNATH_VALUES_ASSEMBLY_HPP

#include <utility>
#include <vector>

#include "types/extents.hpp"
#include "types/make_type.hpp"
#include "types/type.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Throws "Empty array without type is not allowed.".
[[noreturn]] void refuseUntypedArray();

/// An array type of the element type. Throws, in this order, what making the array type throws
/// ("concrete type required", "negative array length"), "Empty array without type is not allowed."
/// for more values than the extents hold, and "Incompatible type for value -> {}." for one that
/// doesn't relate to the element type. Fewer values are fine.
template <typename Value>
TypePtr arrayTypeOf(const std::vector<Value>& values, const Extents& extents,
                    const TypePtr& element) {
  TypePtr type = makeType(makeArrayDesc(element, extents));
  if (values.size() > extents.elements()) refuseUntypedArray();
  for (const Value& value : values) requireFitting(*value.type(), *element);
  return type;
}

/// The same of the first value's type. No values are refused, and in one dimension an extent other
/// than their number, with the same words as this form has none of its own: "Empty array without
/// type is not allowed.".
template <typename Value>
TypePtr arrayTypeOf(const std::vector<Value>& values, const Extents& extents) {
  if (values.empty()) refuseUntypedArray();
  if (extents.rank() == 1 && (extents[0] < 0 || values.size() != extents.elements())) {
    refuseUntypedArray();
  }
  return arrayTypeOf(values, extents, values.front().type());
}

/// A struct type of the labels and the values' types. Throws what the struct type throws.
template <typename Field>
TypePtr structTypeOf(const std::vector<Field>& fields) {
  std::vector<Type::Field> types;
  types.reserve(fields.size());
  for (const Field& field : fields) types.emplace_back(field.value.type(), field.label);
  return makeType(Type::TStruct(std::move(types)));
}

}  // namespace qex::vornath

#endif
