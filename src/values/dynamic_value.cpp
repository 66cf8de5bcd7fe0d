#include "values/dynamic_value.hpp"

#include "types/make_type.hpp"
#include "types/relations.hpp"
#include "values/fixed_types.hpp"
#include "values/write_protocol.hpp"

namespace qex::vornath {
BlockPtr copyToBlock(const InternedType& type, const void* bytes) {
  NewBlock made(type, Fill::Undefined);
  if (bytes != nullptr) {
    std::memcpy(made.data(), bytes, type.size());
  } else {
    RefSlots(type).forEach(
        [&made](std::uint64_t slot) { storeWord(made.data() + slot * kWordSize, 0); });
  }
  return std::move(made).finish();
}

void requireAssignable(const InternedType& given, const InternedType& required) {
  requireRelated(given, required, "Incompatible type for value -> {}.");
}

DynamicValue::DynamicValue(TypePtr type, BlockPtr block) noexcept
    : type_(std::move(type)), length_(declaredLength(*type_)), block_(std::move(block)) {}

DynamicValue::DynamicValue(const TypePtr& type)
    : DynamicValue(TypePtr(&type->stripped()), BlockPtr::first(allocateBlock(*type, Fill::Zero))) {}

DynamicValue::DynamicValue(const TypePtr& type, const void* bytes)
    : DynamicValue(TypePtr(&type->stripped()), copyToBlock(*type, bytes)) {}

DynamicValue::DynamicValue(vrntValue_t* block)
    : DynamicValue(TypePtr(&blockType(block)), BlockPtr(block)) {}

DynamicValue::DynamicValue(BlockPtr block) noexcept
    : type_(&blockType(block.get())), length_(declaredLength(*type_)), block_(std::move(block)) {}

DynamicValue::DynamicValue(const ConstView& view) : DynamicValue(TypePtr(view.type), view.data()) {}

DynamicValue DynamicValue::base(Type::TBasetype kind, const void* lanes, std::size_t size) {
  DynamicValue value{TypePtr(&baseType(kind))};
  std::memcpy(blockData(value.block()), lanes, size);
  return value;
}

DynamicValue DynamicValue::enumerator(const TypePtr& enumType, std::string_view constructor) {
  const std::int32_t code = std::get<Type::TEnum>(enumType->desc()).constructorIndex(constructor);
  return {enumType, &code};
}

DynamicValue DynamicValue::reference(const DynamicValue& referee, const TypePtr& referenceType) {
  const TypePtr& target = std::get<Type::TRef>(referenceType->desc()).target;
  if (target) requireAssignable(referee.typeOf(), *target);
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

vrntValue_t* allocateValue(const DynamicValue& value) {
  exposeToHost(value.block());
  retainBlock(value.block());
  return value.block();
}

}  // namespace qex::vornath
