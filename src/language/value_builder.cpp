#include "language/value_builder.hpp"

#include <utility>

#include "language/type_builder.hpp"
#include "values/aggregate_types.hpp"

namespace qex::vornath::build {

Draft structure(DraftFields fields) {
  const TypePtr type = structTypeOf(fields);
  Drafts values;
  values.reserve(fields.size());
  for (DraftField& field : fields) values.push_back(std::move(field.value));
  return Draft::of(*type, std::move(values));
}

Draft array(Drafts values) {
  const auto count = static_cast<std::int32_t>(values.size());
  return shapedArray(std::move(values), count);
}

Draft array(Drafts values, const TypePtr& element) {
  const auto count = static_cast<std::int32_t>(values.size());
  return shapedArray(std::move(values), count, element);
}

Draft shapedArray(Drafts values, const Extents& extents) {
  const TypePtr type = arrayTypeOf(values, extents);
  return Draft::of(*type, std::move(values));
}

Draft shapedArray(Drafts values, const Extents& extents, const TypePtr& element) {
  const TypePtr type = arrayTypeOf(values, extents, element);
  return Draft::of(*type, std::move(values));
}

Draft foreignPointer(std::uint64_t id) { return foreignPointer(id, nullptr); }

Draft foreignPointer(std::uint64_t id, const TypePtr& target) {
  return DynamicValue::foreign(type(reference(target), {}), id);
}

Draft reference(Draft referee) { return DynamicValue::reference(std::move(referee).value()); }

Draft enumerator(const std::string& constructor, std::optional<Type::TEnum> enumeration) {
  return DynamicValue::enumerator(type(*std::move(enumeration), {}), constructor);
}

}  // namespace qex::vornath::build
