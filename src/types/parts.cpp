#include "parts.hpp"

#include <variant>

#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

std::uint32_t bits(std::int32_t number) { return static_cast<std::uint32_t>(number); }

ArrayDesc requireArray(const Type& type) {
  const auto array = arrayDesc(type.desc());
  if (!array) throw std::bad_variant_access();
  return *array;
}

}  // namespace

Place fieldPlace(const Type& structType, std::size_t field) {
  const auto& structure = std::get<Type::TStruct>(structType.desc());
  if (field >= structure.fields.size()) {
    throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, "Struct field index {} out of range.",
                          field);
  }
  return Parts(structure)[field];
}

Place fieldPlace(const Type& structType, std::string_view label) {
  return fieldPlace(structType, std::get<Type::TStruct>(structType.desc()).fieldIndex(label));
}

Place elementPlace(const Type& arrayType, std::span<const std::int32_t> index) {
  const auto [element, extents] = requireArray(arrayType);
  if (extents.rank() != index.size()) throw std::bad_variant_access();
  std::size_t dimension = index.size() - 1;
  std::uint32_t running = bits(index[dimension]);
  if (dimension != 0) extents.requireKnown();
  while (dimension-- != 0) running = running * bits(extents[dimension]) + bits(index[dimension]);
  // The running index is a 32-bit signed number.
  const std::int64_t signedIndex = static_cast<std::int32_t>(running);
  return {element->get(), static_cast<std::uint64_t>(signedIndex) * (*element)->size()};
}

ArrayElements arrayElements(const Type& arrayType) {
  const auto [element, extents] = requireArray(arrayType);
  return {element->get(), extents.requireKnown().count()};
}

}  // namespace qex::vornath
