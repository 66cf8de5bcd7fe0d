/// The default of a type and the limits of its values, as the type and its annotations give them.
#ifndef VORNATH_VALUES_BOUNDS_HPP
#define VORNATH_VALUES_BOUNDS_HPP

#include <array>
#include <cstdint>
#include <span>

#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// The positions in a ValueBounds.
enum Bound : std::size_t { kDefault, kMin, kMax, kSoftMin, kSoftMax, kBoundCount };

/// Five values of one type.
using ValueBounds = std::array<DynamicValue, kBoundCount>;

/// All five. The innermost parts are filled first, so that what an outer type's annotations say
/// overrides what those of its fields and elements say. References and functions stay null unless
/// an annotation gives them a value. Throws std::bad_alloc.
ValueBounds makeValueBounds(const TypePtr& type);

/// The first of them alone, for a fifth of the work.
DynamicValue makeDefaultValue(const TypePtr& type);

/// Puts what the type's own annotations say over the bytes at `offset` of the given bounds, which
/// are the first ones of a ValueBounds. An annotation counts only if its value's type may stand for
/// the annotated one. A limit stands for the soft limit as well if no annotation that counts gives
/// that.
void applyBoundsMetadata(const InternedType& type, std::span<DynamicValue> bounds,
                         std::uint64_t offset);

}  // namespace qex::vornath

#endif
