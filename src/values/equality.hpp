/// Compares two values and describes the first mismatch.
#ifndef VORNATH_VALUES_EQUALITY_HPP
#define VORNATH_VALUES_EQUALITY_HPP

#include <string>

#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Returns whether the values at two views are equal; stops at the first mismatch. Floats and halfs
/// are equal if they differ by at most the tolerance, infinities only if identical, and a NaN
/// never. References are equal if they are the same word or refer to equal values.
///
/// `reason` may be null; otherwise it receives the mismatch, as in ".a[2].b: 1 != 2", or keeps its
/// content if there is nothing to say, as for a null reference against a block. Throws what
/// printing the two sides throws if a reason is requested. Neither references nor nesting make it
/// recurse, and shared blocks are compared once. Does not support cycles of references.
bool valuesEqual(const ConstView& a, const ConstView& b, float tolerance,
                 std::string* reason = nullptr);

}  // namespace qex::vornath

#endif
