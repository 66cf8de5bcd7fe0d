/// The default of a type and the limits of its values, from the type and its annotations.
#ifndef VORNATH_VALUES_BOUNDS_HPP
#define VORNATH_VALUES_BOUNDS_HPP

#include <array>
#include <cstdint>
#include <span>

#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// The indices of a ValueBounds.
enum Bound : std::size_t { kDefault, kMin, kMax, kSoftMin, kSoftMax, kBoundCount };

/// The default and the four limits of one type.
using ValueBounds = std::array<DynamicValue, kBoundCount>;

/// Returns the default and the limits of a type. The innermost parts are filled first, so that the
/// annotations of an outer type override those of its fields and elements. References and functions
/// stay null unless an annotation gives them a value. Throws std::bad_alloc.
ValueBounds makeValueBounds(const TypePtr& type);

/// Returns the default alone, at a fifth of the cost, as a new block. Throws std::bad_alloc.
BlockPtr makeDefaultBlock(const InternedType& type);

inline DynamicValue makeDefaultValue(const TypePtr& type) {
  return DynamicValue(makeDefaultBlock(*type));
}

/// Writes the values of the type's own annotations over the bytes at `offset` of the given bounds,
/// the first ones of a ValueBounds. Ignores an annotation whose value's type is not a subtype of
/// the annotated type. A limit also sets the soft limit if no accepted annotation sets that.
void applyBoundsMetadata(const InternedType& type, std::span<DynamicValue> bounds,
                         std::uint64_t offset);

}  // namespace qex::vornath

#endif
