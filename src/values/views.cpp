#include "values/views.hpp"

#include "types/layout.hpp"
#include "types/relations.hpp"
#include "values/dynamic_value.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

template <typename D>
const Type::TArrayND<D>& arrayOfRank(const InternedType& type) {
  return std::get<Type::TArrayND<D>>(type.desc());
}

std::uint32_t bits(std::int32_t number) { return static_cast<std::uint32_t>(number); }

// The running index is a 32-bit signed number.
template <typename D>
Place elementAt(const Type::TArrayND<D>& array, std::uint32_t index) {
  const std::int64_t running = static_cast<std::int32_t>(index);
  return {array.element.get(), static_cast<std::uint64_t>(running) * array.element->size()};
}

template <typename D>
bool readElements(const InternedType& type, ArrayElements& elements) {
  const auto* array = type.getIf<Type::TArrayND<D>>();
  if (array == nullptr) return false;
  elements = {array->element.get(), elementCount(array->shape.value())};
  return true;
}

}  // namespace

Place fieldPlace(const InternedType& structType, std::size_t field) {
  const auto& structure = std::get<Type::TStruct>(structType.desc());
  if (field >= structure.fields.size()) {
    throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, "Struct field index {} out of range.",
                          field);
  }
  return {structure.fields[field].type.get(), structure.offsets[field]};
}

Place fieldPlace(const InternedType& structType, std::string_view label) {
  return fieldPlace(structType, std::get<Type::TStruct>(structType.desc()).fieldIndex(label));
}

Place elementPlace(const InternedType& arrayType, std::int32_t index) {
  return elementAt(arrayOfRank<int>(arrayType), bits(index));
}

Place elementPlace(const InternedType& arrayType, const index2& index) {
  const auto& array = arrayOfRank<index2>(arrayType);
  const index2& extents = array.shape.value();
  return elementAt(array, bits(index.y) * bits(extents.x) + bits(index.x));
}

Place elementPlace(const InternedType& arrayType, const index3& index) {
  const auto& array = arrayOfRank<index3>(arrayType);
  const index3& extents = array.shape.value();
  return elementAt(
      array, (bits(index.z) * bits(extents.y) + bits(index.y)) * bits(extents.x) + bits(index.x));
}

Place elementPlace(const InternedType& arrayType, const index4& index) {
  const auto& array = arrayOfRank<index4>(arrayType);
  const index4& extents = array.shape.value();
  return elementAt(
      array, ((bits(index.w) * bits(extents.z) + bits(index.z)) * bits(extents.y) + bits(index.y)) *
                     bits(extents.x) +
                 bits(index.x));
}

ArrayElements arrayElements(const InternedType& arrayType) {
  ArrayElements elements{};
  if (!readElements<int>(arrayType, elements) && !readElements<index2>(arrayType, elements) &&
      !readElements<index3>(arrayType, elements)) {
    const auto& array = arrayOfRank<index4>(arrayType);
    elements = {array.element.get(), elementCount(array.shape.value())};
  }
  return elements;
}

const char* ConstView::data() const { return owner->data() + offset; }

void requireAccessible(const InternedType& given, const InternedType& required) {
  requireRelated(given, required, "Incompatible type for accessor -> {}.");
}

}  // namespace qex::vornath
