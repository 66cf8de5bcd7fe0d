#include "value_builder.hpp"

#include <utility>

#include "type_builder.hpp"

namespace qex::vornath::build {

DynamicValue structure(const ValueFields& fields) { return DynamicValue::structure(fields); }

DynamicValue array(const Values& values) {
  return DynamicValue::array(values, static_cast<int>(values.size()));
}

DynamicValue array(const Values& values, const TypePtr& element) {
  return DynamicValue::array(values, static_cast<int>(values.size()), element);
}

DynamicValue address(std::uint64_t id) { return address(id, nullptr); }

DynamicValue address(std::uint64_t id, const TypePtr& target) {
  return DynamicValue::foreign(type(reference(target), {}), id);
}

DynamicValue reference(const DynamicValue& referee) { return DynamicValue::reference(referee); }

DynamicValue enumerator(const std::string& constructor, std::optional<Type::TEnum> enumeration) {
  return DynamicValue::enumerator(type(*std::move(enumeration), {}), constructor);
}

}  // namespace qex::vornath::build
