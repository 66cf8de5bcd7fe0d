/// The subtype relation of types: whether a value of one type may replace a value of another.
/// Ignores metadata.
#ifndef VORNATH_TYPES_RELATIONS_HPP
#define VORNATH_TYPES_RELATIONS_HPP

#include <optional>
#include <string>

#include "types/type.hpp"

namespace qex::vornath {

/// Returns the type without metadata at any depth, which may be the type itself.
inline const InternedType& stripMetadata(const InternedType& type) { return type.stripped(); }

/// Returns whether a value of `a` is accepted where `b` is expected.
bool isSubType(const InternedType& a, const InternedType& b);

/// Returns whether each type is a subtype of the other.
inline bool isSameType(const InternedType& a, const InternedType& b) {
  return &a.stripped() == &b.stripped() || (isSubType(a, b) && isSubType(b, a));
}

/// Returns isSubType() of two types without metadata, given that each part of the first (field of
/// the same index, element, target and so on) is a subtype of the corresponding part of the second.
bool isSubTypeGivenParts(const InternedType& a, const InternedType& b);

/// Returns nothing if isSubType() holds, else the first reason why it does not.
std::optional<std::string> checkSubType(const InternedType& a, const InternedType& b);

/// Throws vrnt::Exception with `format`, whose {} is the reason, unless isSubType() holds.
void requireRelated(const InternedType& a, const InternedType& b, const char* format);

}  // namespace qex::vornath

#endif
