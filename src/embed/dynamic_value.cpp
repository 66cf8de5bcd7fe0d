// The members of DynamicValue that no export reaches.
#include "values/dynamic_value.hpp"

#include <cstring>
#include <functional>
#include <ostream>

#include "types/parts.hpp"
#include "values/aggregate_types.hpp"
#include "values/value_text.hpp"
#include "values/write_protocol.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

// The type with the values of the items for its first parts.
template <typename Items, typename ValueOf>
DynamicValue assembled(const TypePtr& type, const Items& items, ValueOf valueOf) {
  NewBlock made(*type, Fill::Zero);
  const Parts parts = Parts::of(*type);
  for (std::size_t i = 0; i < items.size(); ++i) {
    const auto [part, offset] = parts[i];
    std::memcpy(made.data() + offset, std::invoke(valueOf, items[i]).data(), part->size());
  }
  return DynamicValue(std::move(made).finish().get());
}

}  // namespace

DynamicValue DynamicValue::filled(const TypePtr& type, const Filler& filler) {
  NewBlock made(*type, Fill::Undefined);
  filler(made.type(), made.data());
  return {TypePtr(&type->stripped()), std::move(made).finish()};
}

DynamicValue DynamicValue::array(const std::vector<DynamicValue>& values, const Extents& extents,
                                 const TypePtr& element) {
  return assembled(arrayTypeOf(values, extents, element), values, std::identity());
}

DynamicValue DynamicValue::array(const std::vector<DynamicValue>& values, const Extents& extents) {
  return assembled(arrayTypeOf(values, extents), values, std::identity());
}

DynamicValue DynamicValue::function(const TypePtr& functionType, std::uint64_t first,
                                    std::uint64_t second) {
  std::get<Type::TFun>(functionType->desc());
  const std::uint64_t words[] = {foreignWord(first), foreignWord(second)};
  return {functionType, words};
}

DynamicValue DynamicValue::structure(const std::vector<Field>& fields) {
  return assembled(structTypeOf(fields), fields, &Field::value);
}

void DynamicValue::setLength(int length) {
  if (length < 0 || length > length_) {
    throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments,
                          "Length was {}, expected number in range [0, {}).", length, length_);
  }
  makeExclusive(blockHandle());
  block()->length = static_cast<std::uint32_t>(length);
  notify(nullptr, 0);
}

void DynamicValue::swap(DynamicValue& other) {
  requireAssignable(other.typeOf(), typeOf());
  requireAssignable(typeOf(), other.typeOf());
  std::swap(block_, other.block_);
}

void DynamicValue::assignChecked(const DynamicValue& other) {
  requireAssignable(other.typeOf(), typeOf());
  block_ = other.block_;
}

void DynamicValue::assignChecked(DynamicValue&& other) {
  requireAssignable(other.typeOf(), typeOf());
  block_ = std::move(other.block_);
}

std::ostream& operator<<(std::ostream& stream, const DynamicValue& value) {
  return stream << valueToString(value.view());
}

}  // namespace qex::vornath
