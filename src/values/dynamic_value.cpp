#include "values/dynamic_value.hpp"

#include <functional>

#include "types/parts.hpp"
#include "types/relations.hpp"
#include "values/assembly.hpp"
#include "values/fixed_types.hpp"
#include "values/write_protocol.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

using vrnt::ErrorCode;
using vrnt::Exception;

BlockPtr copyOf(const InternedType& type, const void* bytes) {
  NewBlock made(type, Fill::Undefined);
  if (bytes != nullptr) {
    std::memcpy(made.data(), bytes, type.size());
  } else {
    RefSlots(type).forEach(
        [&made](std::uint64_t slot) { storeWord(made.data() + slot * kWordSize, 0); });
  }
  return std::move(made).finish();
}

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

void requireFitting(const InternedType& given, const InternedType& required) {
  requireRelated(given, required, "Incompatible type for value -> {}.");
}

void refuseUntypedArray() {
  throw Exception(ErrorCode::InvalidArguments, "Empty array without type is not allowed.");
}

DynamicValue::DynamicValue(TypePtr type, BlockPtr block) noexcept
    : type_(std::move(type)), length_(declaredLength(*type_)), block_(std::move(block)) {}

DynamicValue::DynamicValue(const TypePtr& type)
    : DynamicValue(TypePtr(&type->stripped()), BlockPtr(allocateBlock(*type, Fill::Zero))) {}

DynamicValue::DynamicValue(const TypePtr& type, const void* bytes)
    : DynamicValue(TypePtr(&type->stripped()), copyOf(*type, bytes)) {}

DynamicValue DynamicValue::filled(const TypePtr& type, const Filler& filler) {
  NewBlock made(*type, Fill::Undefined);
  filler(made.type(), made.data());
  return {TypePtr(&type->stripped()), std::move(made).finish()};
}

DynamicValue::DynamicValue(vrntValue_t* block)
    : DynamicValue(TypePtr(&blockType(block)), BlockPtr(block)) {}

DynamicValue::DynamicValue(const ConstView& view) : DynamicValue(TypePtr(view.type), view.data()) {}

DynamicValue DynamicValue::base(Type::TBasetype kind, const void* lanes, std::size_t size) {
  DynamicValue value{TypePtr(&baseType(kind))};
  std::memcpy(blockData(value.block()), lanes, size);
  return value;
}

DynamicValue DynamicValue::array(const std::vector<DynamicValue>& values, const Extents& extents,
                                 const TypePtr& element) {
  return assembled(arrayTypeOf(values, extents, element), values, std::identity());
}

DynamicValue DynamicValue::array(const std::vector<DynamicValue>& values, const Extents& extents) {
  return assembled(arrayTypeOf(values, extents), values, std::identity());
}

DynamicValue DynamicValue::enumerator(const TypePtr& enumType, std::string_view constructor) {
  const std::int32_t code = std::get<Type::TEnum>(enumType->desc()).constructorIndex(constructor);
  return {enumType, &code};
}

DynamicValue DynamicValue::function(const TypePtr& functionType, std::uint64_t first,
                                    std::uint64_t second) {
  std::get<Type::TFun>(functionType->desc());
  const std::uint64_t words[] = {foreignWord(first), foreignWord(second)};
  return {functionType, words};
}

DynamicValue DynamicValue::reference(const DynamicValue& referee, const TypePtr& referenceType) {
  const TypePtr& target = std::get<Type::TRef>(referenceType->desc()).target;
  if (target) requireFitting(referee.typeOf(), *target);
  const std::uint64_t word = wordOfBlock(referee.block());
  return {referenceType, &word};
}

DynamicValue DynamicValue::reference(const DynamicValue& referee) {
  return reference(referee, makeType(Type::TRef{referee.type()}));
}

DynamicValue DynamicValue::foreign(const TypePtr& referenceType, std::uint64_t id) {
  std::get<Type::TRef>(referenceType->desc());
  const std::uint64_t word = foreignWord(id);
  return {referenceType, &word};
}

DynamicValue DynamicValue::structure(const std::vector<Field>& fields) {
  return assembled(structTypeOf(fields), fields, &Field::value);
}

void DynamicValue::setLength(int length) {
  if (length < 0 || length > length_) {
    throw Exception(ErrorCode::InvalidArguments, "Length was {}, expected number in range [0, {}).",
                    length, length_);
  }
  makeExclusive(blockHandle());
  block()->length = static_cast<std::uint32_t>(length);
  notify(nullptr, 0);
}

void DynamicValue::swap(DynamicValue& other) {
  requireFitting(other.typeOf(), typeOf());
  requireFitting(typeOf(), other.typeOf());
  std::swap(block_, other.block_);
}

void DynamicValue::assign(const DynamicValue& other) {
  type_ = other.type_;
  length_ = other.length_;
  block_ = other.block_;
}

void DynamicValue::assign(DynamicValue&& other) noexcept {
  type_ = std::move(other.type_);
  length_ = other.length_;
  block_ = std::move(other.block_);
}

void DynamicValue::assignChecked(const DynamicValue& other) {
  requireFitting(other.typeOf(), typeOf());
  block_ = other.block_;
}

void DynamicValue::assignChecked(DynamicValue&& other) {
  requireFitting(other.typeOf(), typeOf());
  block_ = std::move(other.block_);
}

vrntValue_t* allocateValue(const DynamicValue& value) {
  showToHost(value.block());
  retainBlock(value.block());
  return value.block();
}

}  // namespace qex::vornath
