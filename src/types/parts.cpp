#include "types/parts.hpp"

#include <variant>

#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

std::uint32_t bits(std::int32_t number) { return static_cast<std::uint32_t>(number); }

// The running index is a 32-bit signed number.
template <typename D>
Part elementOf(const Type::TArrayND<D>& array, const std::int32_t* index) {
  std::size_t dimension = Type::TArrayND<D>::kRank - 1;
  std::uint32_t running = bits(index[dimension]);
  if (dimension != 0) {
    const auto extents = dimensions(array.shape.value());
    while (dimension-- != 0) running = running * bits(extents[dimension]) + bits(index[dimension]);
  }
  const std::int64_t signedIndex = static_cast<std::int32_t>(running);
  return {array.element.get(), static_cast<std::uint64_t>(signedIndex) * array.element->size()};
}

}  // namespace

Part fieldPart(const InternedType& structType, std::size_t field) {
  const auto& structure = std::get<Type::TStruct>(structType.desc());
  if (field >= structure.fields.size()) {
    throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, "Struct field index {} out of range.",
                          field);
  }
  return Parts(structure)[field];
}

std::optional<Part> elementPartIfArray(const InternedType& type, const std::int32_t* index) {
  return std::visit(
      [index](const auto& desc) -> std::optional<Part> {
        if constexpr (requires { desc.shape; }) {
          return elementOf(desc, index);
        } else {
          return std::nullopt;
        }
      },
      type.desc());
}

Part elementPart(const InternedType& arrayType, std::span<const std::int32_t> index) {
  return std::visit(
      [index](const auto& desc) -> Part {
        if constexpr (requires { desc.shape; }) {
          if (index.size() == desc.kRank) return elementOf(desc, index.data());
        }
        throw std::bad_variant_access();
      },
      arrayType.desc());
}

ArrayElements arrayElements(const InternedType& arrayType) {
  const auto array = arrayDesc(arrayType.desc());
  if (!array) throw std::bad_variant_access();
  return {array->element->get(), array->extents.requireKnown().count()};
}

}  // namespace qex::vornath
