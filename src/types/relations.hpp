/// Whether a value of one type may stand where another is expected. Metadata plays no part.
#ifndef VORNATH_TYPES_RELATIONS_HPP
#define VORNATH_TYPES_RELATIONS_HPP

#include <optional>
#include <string>

#include "types/type.hpp"

namespace qex::vornath {

/// The type without metadata at any depth: its twin, or the type itself.
inline const InternedType& stripMetadata(const InternedType& type) { return type.stripped(); }

/// Whether a value of `a` may stand where `b` is expected.
bool isSubType(const InternedType& a, const InternedType& b);

/// Whether each may stand for the other.
inline bool isSameType(const InternedType& a, const InternedType& b) {
  return &a.stripped() == &b.stripped() || (isSubType(a, b) && isSubType(b, a));
}

/// isSubType() of two twins if it is known of each pair of their parts (fields of the same index,
/// elements, targets, and the like) that the first relates to the second.
bool relateButForParts(const InternedType& a, const InternedType& b);

/// isSubType() with the first reason against it in words; nothing means yes.
std::optional<std::string> checkSubType(const InternedType& a, const InternedType& b);

/// Throws vrnt::Exception with `format`, its {} being the reason, unless `a` may stand for `b`.
void requireRelated(const InternedType& a, const InternedType& b, const char* format);

}  // namespace qex::vornath

#endif
