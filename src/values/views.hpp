/// Views: a place within a value, given by a type and a byte offset. Plain records, without
/// allocation and without a count; a view lives no longer than the handle that it names.
#ifndef VORNATH_VALUES_VIEWS_HPP
#define VORNATH_VALUES_VIEWS_HPP

#include <cstdint>
#include <string_view>
#include <type_traits>

#include "types/parts.hpp"
#include "types/type.hpp"

namespace qex::vornath {

/// For reading. The fields and elements are those of fieldPlace() and elementPlace().
struct ConstView {
  const InternedType* type;
  std::uint64_t offset;
  const DynamicValue* owner;

  /// The first byte of the place.
  const char* data() const;

  ConstView field(std::size_t index) const { return at(fieldPlace(*type, index)); }
  ConstView field(std::string_view label) const { return at(fieldPlace(*type, label)); }
  template <DimensionRecord D>
  ConstView element(const D& index) const {
    return at(elementPlace(*type, index));
  }

 private:
  ConstView at(const Place& place) const { return {place.type, offset + place.offset, owner}; }
};

/// For writing. Its beginning reads as a ConstView.
struct View : ConstView {
  DynamicValue* mutableOwner;

  View field(std::size_t index) const { return at(fieldPlace(*type, index)); }
  View field(std::string_view label) const { return at(fieldPlace(*type, label)); }
  template <DimensionRecord D>
  View element(const D& index) const {
    return at(elementPlace(*type, index));
  }

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
