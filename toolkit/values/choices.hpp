// The constructors of enums, with their annotations.
#ifndef VORNATH_TOOLKIT_VALUES_CHOICES_HPP
#define VORNATH_TOOLKIT_VALUES_CHOICES_HPP

#include <string>
#include <vector>

#include "vornath_data/types.h"

namespace vrtk {

struct Choice {
  std::string label;
  std::string name;         ///< the label, if there is no `@name`
  std::string description;  ///< empty if there is no `@desc`
  std::string fields;       ///< as they stand in the type; empty if there are none
};

/// The library tells the labels of an enum, but not the annotations of its constructors: these are
/// read from its text. Throws std::bad_alloc.
std::vector<Choice> choicesOf(const vrntType_t* enumType);

}  // namespace vrtk

#endif
