/// The parts of a value, the fields of a struct or the elements of an array: their number, types
/// and offsets.
#ifndef VORNATH_TYPES_PARTS_HPP
#define VORNATH_TYPES_PARTS_HPP

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>
#include <variant>

#include "types/extents.hpp"
#include "types/type.hpp"

namespace qex::vornath {

/// A part of a value: its type, kept alive by the outer type, and its offset in bytes from the
/// start of the outer value.
struct Part {
  const InternedType* type;
  std::uint64_t offset;
};

/// The parts of one type, which must outlive them.
class Parts {
 public:
  /// Returns no parts for a type that is neither a struct nor an array.
  static Parts of(const TypeDesc& desc) {
    return std::visit(
        [](const auto& alternative) {
          if constexpr (std::is_constructible_v<Parts, decltype(alternative)>) {
            return Parts(alternative);
          } else {
            return Parts();
          }
        },
        desc);
  }
  static Parts of(const InternedType& type) { return of(type.desc()); }

  Parts() = default;

  explicit Parts(const Type::TStruct& structure)
      : structure_(&structure), count_(structure.fields.size()) {}
  /// An unsized array has no parts, nor has an array whose count() is negative.
  template <typename D>
  explicit Parts(const Type::TArrayND<D>& array)
      : element_(array.element.get()), count_(Extents(array).elements()) {}

  std::size_t count() const { return count_; }

  /// Returns the part with this index, which must be below count().
  Part operator[](std::size_t i) const {
    if (structure_ != nullptr) return {structure_->fields[i].type.get(), structure_->offsets[i]};
    return {element_, i * stride()};
  }

  /// Returns the struct, or null if the parts are elements, which all have one type.
  const Type::TStruct* structure() const { return structure_; }
  /// Returns the type of the elements. The parts must be elements.
  const InternedType& element() const { return *element_; }
  /// Returns the bytes from one element to the next. The parts must be elements.
  std::uint64_t stride() const {
    // An array type always has an element type, which the analyzer cannot see.
    return element_->size();  // NOLINT(clang-analyzer-core.CallAndMessage)
  }

 private:
  const Type::TStruct* structure_ = nullptr;
  const InternedType* element_ = nullptr;
  std::size_t count_ = 0;
};

/// Returns the field with this index. Throws "Struct field index {} out of range.", and
/// std::bad_variant_access for a type that is not a struct.
Part fieldPart(const InternedType& structType, std::size_t field);
/// (embed) Returns the field with this label. Throws "Field not found in struct: {}.", and
/// std::bad_variant_access for a type that is not a struct.
Part fieldPart(const InternedType& structType, std::string_view label);

/// Returns the element at an index, which has one number for each dimension, the fastest dimension
/// first. Does not check the index against the extents. The running index is computed in 32 bits in
/// two's complement, its product with the element's size in 64. Throws std::bad_variant_access for
/// a type of another kind or rank, and std::bad_optional_access for an unsized array of rank 2 to
/// 4.
Part elementPart(const InternedType& arrayType, std::span<const std::int32_t> index);
/// Does the same for an index of the type's own rank. Returns nothing if the type is not an array.
std::optional<Part> elementPartIfArray(const InternedType& type, const std::int32_t* index);

template <DimensionRecord D>
Part elementPart(const InternedType& arrayType, const D& index) {
  return elementPart(arrayType, dimensions(index));
}

/// The element type and the number of elements of an array of any rank.
struct ArrayElements {
  const InternedType* element;
  std::int32_t count;  ///< negative only if the product of the extents ran over
};

/// Returns the elements of an array type. Throws std::bad_optional_access for an unsized array, and
/// std::bad_variant_access for a type that is not an array.
ArrayElements arrayElements(const InternedType& arrayType);

}  // namespace qex::vornath

#endif
