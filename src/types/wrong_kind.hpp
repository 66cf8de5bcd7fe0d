/// Reports that a flat function was given a type of the wrong kind.
#ifndef VORNATH_TYPES_WRONG_KIND_HPP
#define VORNATH_TYPES_WRONG_KIND_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// Throws a VornathValuesAssertionFailure whose message is "FUNCTION: takes WHAT, was given KIND"
/// and the type's text. The message omits a long text, so that nothing is allocated.
[[noreturn]] void raiseWrongKind(const char* function, const char* takes,
                                 const InternedType& given);

}  // namespace qex::vornath

#endif
