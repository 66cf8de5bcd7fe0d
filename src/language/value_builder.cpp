#include "language/value_builder.hpp"

#include <utility>

#include "language/type_builder.hpp"

namespace qex::vornath::build {
namespace {

template <typename Extents>
Draft arrayOf(Drafts values, const Extents& extents, const TypePtr& element) {
  const TypePtr type = arrayType(element, extents, values.size());
  for (const Draft& value : values) requireFitting(*value.type(), *element);
  return Draft::of(*type, std::move(values),
                   [size = element->size()](std::size_t i) { return i * size; });
}

template <typename Extents>
Draft arrayOfFirst(Drafts values, const Extents& extents) {
  const TypePtr element = values.front().type();
  return arrayOf(std::move(values), extents, element);
}

}  // namespace

Draft structure(DraftFields fields) {
  Fields types;
  types.reserve(fields.size());
  for (DraftField& field : fields) types.emplace_back(field.value.type(), std::move(field.label));
  const TypePtr made = type(structure(std::move(types)), {});
  Drafts values;
  values.reserve(fields.size());
  for (DraftField& field : fields) values.push_back(std::move(field.value));
  const auto& offsets = made->getIf<Type::TStruct>()->offsets;
  return Draft::of(*made, std::move(values), [&offsets](std::size_t i) { return offsets[i]; });
}

Draft array(Drafts values) {
  const int count = static_cast<int>(values.size());
  return arrayOfFirst(std::move(values), count);
}

Draft array(Drafts values, const TypePtr& element) {
  const int count = static_cast<int>(values.size());
  return arrayOf(std::move(values), count, element);
}

Draft shapedArray(Drafts values, int count) {
  if (count < 0 || values.size() != static_cast<std::size_t>(count)) refuseUntypedArray();
  return array(std::move(values));
}

Draft shapedArray(Drafts values, const index2& extents) {
  return arrayOfFirst(std::move(values), extents);
}
Draft shapedArray(Drafts values, const index3& extents) {
  return arrayOfFirst(std::move(values), extents);
}
Draft shapedArray(Drafts values, const index4& extents) {
  return arrayOfFirst(std::move(values), extents);
}

Draft shapedArray(Drafts values, int extent, const TypePtr& element) {
  return arrayOf(std::move(values), extent, element);
}
Draft shapedArray(Drafts values, const index2& extents, const TypePtr& element) {
  return arrayOf(std::move(values), extents, element);
}
Draft shapedArray(Drafts values, const index3& extents, const TypePtr& element) {
  return arrayOf(std::move(values), extents, element);
}
Draft shapedArray(Drafts values, const index4& extents, const TypePtr& element) {
  return arrayOf(std::move(values), extents, element);
}

Draft address(std::uint64_t id) { return address(id, nullptr); }

Draft address(std::uint64_t id, const TypePtr& target) {
  return DynamicValue::foreign(type(reference(target), {}), id);
}

Draft reference(Draft referee) { return DynamicValue::reference(std::move(referee).value()); }

Draft enumerator(const std::string& constructor, std::optional<Type::TEnum> enumeration) {
  return DynamicValue::enumerator(type(*std::move(enumeration), {}), constructor);
}

}  // namespace qex::vornath::build
