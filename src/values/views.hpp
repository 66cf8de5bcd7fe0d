/// Views: a place within a value, given by a type and a byte offset. Plain records, without
/// allocation and without a count; a view lives no longer than the handle that it names.
#ifndef VORNATH_VALUES_VIEWS_HPP
#define VORNATH_VALUES_VIEWS_HPP

#include <cstdint>
#include <string_view>
#include <type_traits>

#include "types/type.hpp"

namespace qex::vornath {

/// A sub-type, borrowed from the type around it, and the offset from the outer one's first byte.
struct Place {
  const InternedType* type;
  std::uint64_t offset;
};

/// Throws "Struct field index {} out of range.", and std::bad_variant_access for another kind.
Place fieldPlace(const InternedType& structType, std::size_t field);
/// Throws "Field not found in struct: {}.", and std::bad_variant_access for another kind.
Place fieldPlace(const InternedType& structType, std::string_view label);

/// Indices aren't checked against the extents; x runs fastest. Indices are combined in 32 bits, as
/// two's complement does, the product with the element's size is taken in 64. Throws
/// std::bad_variant_access for another kind, and std::bad_optional_access where an extent is needed
/// that the type leaves open.
Place elementPlace(const InternedType& arrayType, std::int32_t index);
Place elementPlace(const InternedType& arrayType, const index2& index);
Place elementPlace(const InternedType& arrayType, const index3& index);
Place elementPlace(const InternedType& arrayType, const index4& index);

/// The element type and the number of elements of an array of any rank.
struct ArrayElements {
  const InternedType* element;
  std::int32_t count;  ///< negative only if the product of the extents ran over
};

/// Throws std::bad_optional_access if the extents are open, and std::bad_variant_access for a type
/// that is not an array.
ArrayElements arrayElements(const InternedType& arrayType);

/// For reading.
struct ConstView {
  const InternedType* type;
  std::uint64_t offset;
  const DynamicValue* owner;

  /// The first byte of the place.
  const char* data() const;

  ConstView field(std::size_t index) const { return at(fieldPlace(*type, index)); }
  ConstView field(std::string_view label) const { return at(fieldPlace(*type, label)); }
  ConstView element(std::int32_t index) const { return at(elementPlace(*type, index)); }
  ConstView element(const index2& index) const { return at(elementPlace(*type, index)); }
  ConstView element(const index3& index) const { return at(elementPlace(*type, index)); }
  ConstView element(const index4& index) const { return at(elementPlace(*type, index)); }

 private:
  ConstView at(const Place& place) const { return {place.type, offset + place.offset, owner}; }
};

/// For writing. Its beginning reads as a ConstView.
struct View : ConstView {
  DynamicValue* mutableOwner;

  View field(std::size_t index) const { return at(fieldPlace(*type, index)); }
  View field(std::string_view label) const { return at(fieldPlace(*type, label)); }
  View element(std::int32_t index) const { return at(elementPlace(*type, index)); }
  View element(const index2& index) const { return at(elementPlace(*type, index)); }
  View element(const index3& index) const { return at(elementPlace(*type, index)); }
  View element(const index4& index) const { return at(elementPlace(*type, index)); }

 private:
  View at(const Place& place) const {
    return {{place.type, offset + place.offset, owner}, mutableOwner};
  }
};

/// Throws "Incompatible type for accessor -> {}." with the reason unless `given` may stand where
/// `required` is expected.
void requireAccessible(const InternedType& given, const InternedType& required);

}  // namespace qex::vornath

#endif
