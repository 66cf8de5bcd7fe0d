// The name that a misspelt one was meant to be.
#ifndef VORNATH_TOOLKIT_FOUNDATION_NEAREST_NAME_HPP
#define VORNATH_TOOLKIT_FOUNDATION_NEAREST_NAME_HPP

#include <string_view>
#include <vector>

namespace vrtk {

/// Returns the name that takes the fewest changes: letters to insert, remove, replace, or swap with
/// their neighbour. Of equally near names, it is the one with the fewest letters of the other case,
/// and then the first. Returns an empty text if more than a third of the letters are to change, and
/// more than one, or if `wanted` is longer than any name that people type.
std::string_view nearestName(const std::vector<std::string_view>& names, std::string_view wanted);

}  // namespace vrtk

#endif
