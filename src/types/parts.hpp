/// The parts of a value that lie one beside the other in its bytes, the fields of a struct and the
/// elements of an array: how many there are, of which type each is and where it lies.
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

/// A part: its type, borrowed from the type around it, and the offset in bytes from the outer
/// value's first byte.
struct Place {
  const InternedType* type;
  std::uint64_t offset;
};

/// All parts of one type, which must outlive them.
class Parts {
 public:
  /// None for a type that is neither a struct nor an array.
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
  /// An array of unknown extents has no elements, nor has one whose number of them ran over to
  /// below 0.
  template <typename D>
  explicit Parts(const Type::TArrayND<D>& array)
      : element_(array.element.get()), count_(Extents(array).elements()) {}

  std::size_t count() const { return count_; }

  /// The part with this index, which is below count().
  Place operator[](std::size_t i) const {
    if (structure_ != nullptr) return {structure_->fields[i].type.get(), structure_->offsets[i]};
    return {element_, i * stride()};
  }

  /// The struct, or null if the parts are elements, which are alike.
  const Type::TStruct* structure() const { return structure_; }
  /// Of elements only.
  const InternedType& element() const { return *element_; }
  /// Bytes from one element to the next.
  std::uint64_t stride() const { return element_->size(); }

 private:
  const Type::TStruct* structure_ = nullptr;
  const InternedType* element_ = nullptr;
  std::size_t count_ = 0;
};

/// Throws "Struct field index {} out of range.", and std::bad_variant_access for another kind.
Place fieldPlace(const InternedType& structType, std::size_t field);
/// (embed) Throws "Field not found in struct: {}.", and std::bad_variant_access for another kind.
Place fieldPlace(const InternedType& structType, std::string_view label);

/// One index for each dimension, the one that runs fastest first. Indices aren't checked against
/// the extents. They are combined in 32 bits, as two's complement does, the product with the
/// element's size is taken in 64. Throws std::bad_variant_access for a type of another kind or
/// rank, and std::bad_optional_access where an extent is needed that the type leaves open.
Place elementPlace(const InternedType& arrayType, std::span<const std::int32_t> index);
/// The same with as many indices as the type's rank, and nothing for a type of another kind.
std::optional<Place> elementPlaceIfArray(const InternedType& type, const std::int32_t* index);

template <DimensionRecord D>
Place elementPlace(const InternedType& arrayType, const D& index) {
  return elementPlace(arrayType, dimensions(index));
}

/// The element type and the number of elements of an array of any rank.
struct ArrayElements {
  const InternedType* element;
  std::int32_t count;  ///< negative only if the product of the extents ran over
};

/// Throws std::bad_optional_access if the extents are open, and std::bad_variant_access for a type
/// that is not an array.
ArrayElements arrayElements(const InternedType& arrayType);

}  // namespace qex::vornath

#endif
