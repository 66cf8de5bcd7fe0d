/// Views: a part of a value, as a type and a byte offset. Plain structs that allocate nothing and
/// count nothing; the handle that a view points to must outlive it.
#ifndef VORNATH_VALUES_VIEWS_HPP
#define VORNATH_VALUES_VIEWS_HPP

#include <cstdint>
#include <string_view>
#include <type_traits>

#include "types/parts.hpp"
#include "types/type.hpp"

namespace qex::vornath {

/// A view for reading. field() and element() throw what fieldPart() and elementPart() throw.
struct ConstView {
  const InternedType* type;
  std::uint64_t offset;
  const DynamicValue* owner;

  /// Returns the address of the first byte.
  const char* data() const;

  ConstView field(std::size_t index) const { return at(fieldPart(*type, index)); }
  ConstView field(std::string_view label) const { return at(fieldPart(*type, label)); }
  template <DimensionRecord D>
  ConstView element(const D& index) const {
    return at(elementPart(*type, index));
  }

 private:
  ConstView at(const Part& place) const { return {place.type, offset + place.offset, owner}; }
};

/// A view for writing, which is also a ConstView.
struct View : ConstView {
  DynamicValue* mutableOwner;

  View field(std::size_t index) const { return at(fieldPart(*type, index)); }
  View field(std::string_view label) const { return at(fieldPart(*type, label)); }
  template <DimensionRecord D>
  View element(const D& index) const {
    return at(elementPart(*type, index));
  }

 private:
  View at(const Part& place) const {
    return {{place.type, offset + place.offset, owner}, mutableOwner};
  }
};

/// Throws "Incompatible type for accessor -> {}." with the reason unless `given` is a subtype of
/// `required`.
void requireAccessible(const InternedType& given, const InternedType& required);

}  // namespace qex::vornath

#endif
