/// Whether two values are equal, and where they are not.
#ifndef VORNATH_VALUES_EQUALITY_HPP
#define VORNATH_VALUES_EQUALITY_HPP

#include <string>

#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Compares the values at two views; the first mismatch ends it. Floats and halfs are equal when
/// they differ by no more than the tolerance, infinities only to themselves, and a NaN to nothing.
/// References are equal when they are the same word or lead to equal values.
///
/// `reason` may be null; otherwise it receives the mismatch, as ".a[2].b: 1 != 2", or stays as it
/// is where there is nothing to say, as with a null reference against a block. Throws what printing
/// the two sides throws if a reason is wanted. Neither references nor nesting make it recurse,
/// and what is shared is looked at once. It isn't made for cycles of references.
bool valuesEqual(const ConstView& a, const ConstView& b, float tolerance,
                 std::string* reason = nullptr);

}  // namespace qex::vornath

#endif
