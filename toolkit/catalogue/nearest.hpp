// The name that a misspelt one was meant to be.
#ifndef VORNATH_TOOLKIT_CATALOGUE_NEAREST_HPP
#define VORNATH_TOOLKIT_CATALOGUE_NEAREST_HPP

#include <string>
#include <string_view>
#include <vector>

namespace vrtk {

/// Returns the name with the fewest letters to change, if they are few; else an empty text. Takes
/// no notice of upper and lower case.
std::string nearestName(const std::vector<std::string>& names, std::string_view wanted);

}  // namespace vrtk

#endif
