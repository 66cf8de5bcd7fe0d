/// What an accessor throws that is given a type of a kind that it doesn't accept.
#ifndef VORNATH_TYPES_WRONG_KIND_HPP
#define VORNATH_TYPES_WRONG_KIND_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// Throws a VornathValuesAssertionFailure whose words are "FUNCTION: takes WHAT, was given KIND"
/// and the type's text. Of a type with a long text the kind alone is told, so that nothing is
/// allocated.
[[noreturn]] void raiseWrongKind(const char* function, const char* takes,
                                 const InternedType& given);

}  // namespace qex::vornath

#endif
