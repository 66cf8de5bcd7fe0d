#include "values/dynamic_value.hpp"

#include "types/layout.hpp"
#include "types/relations.hpp"
#include "types/type_factory.hpp"
#include "values/fixed_types.hpp"
#include "values/write_protocol.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

using vrnt::ErrorCode;
using vrnt::Exception;

TypePtr makeType(TypeDesc desc) { return Type::get_factory(true)->makeType(std::move(desc)); }

template <typename Extents>
TypePtr arrayTypeOf(const TypePtr& element, const Extents& extents, std::size_t values) {
  TypePtr type = makeType(Type::TArrayND<Extents>(element, extents));
  const std::int32_t count = elementCount(extents);
  if (values > (count < 0 ? 0 : static_cast<std::size_t>(count))) refuseUntypedArray();
  return type;
}

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

}  // namespace

void requireFitting(const InternedType& given, const InternedType& required) {
  requireRelated(given, required, "Incompatible type for value -> {}.");
}

TypePtr arrayType(const TypePtr& element, int extent, std::size_t values) {
  return arrayTypeOf(element, extent, values);
}
TypePtr arrayType(const TypePtr& element, const index2& extents, std::size_t values) {
  return arrayTypeOf(element, extents, values);
}
TypePtr arrayType(const TypePtr& element, const index3& extents, std::size_t values) {
  return arrayTypeOf(element, extents, values);
}
TypePtr arrayType(const TypePtr& element, const index4& extents, std::size_t values) {
  return arrayTypeOf(element, extents, values);
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

template <typename Extents>
DynamicValue DynamicValue::arrayOf(const std::vector<DynamicValue>& values, const Extents& extents,
                                   const TypePtr& element) {
  const TypePtr type = arrayTypeOf(element, extents, values.size());
  NewBlock made(*type, Fill::Zero);
  char* destination = made.data();
  for (const DynamicValue& value : values) {
    requireFitting(value.typeOf(), *element);
    std::memcpy(destination, value.data(), element->size());
    destination += element->size();
  }
  return {TypePtr(&type->stripped()), std::move(made).finish()};
}

DynamicValue DynamicValue::array(const std::vector<DynamicValue>& values, int extent,
                                 const TypePtr& element) {
  return arrayOf(values, extent, element);
}

DynamicValue DynamicValue::array(const std::vector<DynamicValue>& values, const index2& extents,
                                 const TypePtr& element) {
  return arrayOf(values, extents, element);
}

DynamicValue DynamicValue::array(const std::vector<DynamicValue>& values, const index3& extents,
                                 const TypePtr& element) {
  return arrayOf(values, extents, element);
}

DynamicValue DynamicValue::array(const std::vector<DynamicValue>& values, const index4& extents,
                                 const TypePtr& element) {
  return arrayOf(values, extents, element);
}

DynamicValue DynamicValue::array(const std::vector<DynamicValue>& values, const index2& extents) {
  if (values.empty()) refuseUntypedArray();
  return arrayOf(values, extents, values.front().type());
}

DynamicValue DynamicValue::array(const std::vector<DynamicValue>& values, const index3& extents) {
  if (values.empty()) refuseUntypedArray();
  return arrayOf(values, extents, values.front().type());
}

DynamicValue DynamicValue::array(const std::vector<DynamicValue>& values, const index4& extents) {
  if (values.empty()) refuseUntypedArray();
  return arrayOf(values, extents, values.front().type());
}

DynamicValue DynamicValue::array(const std::vector<DynamicValue>& values, int count) {
  if (values.empty() || count < 0 || values.size() != static_cast<std::size_t>(count)) {
    refuseUntypedArray();
  }
  return arrayOf(values, count, values.front().type());
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
  std::vector<Type::Field> fieldTypes;
  fieldTypes.reserve(fields.size());
  for (const Field& field : fields) fieldTypes.emplace_back(field.value.type(), field.label);
  const TypePtr type = makeType(Type::TStruct(std::move(fieldTypes)));

  NewBlock made(*type, Fill::Zero);
  const auto& offsets = type->getIf<Type::TStruct>()->offsets;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const DynamicValue& value = fields[i].value;
    std::memcpy(made.data() + offsets[i], value.data(), value.typeOf().size());
  }
  return {type, std::move(made).finish()};
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
