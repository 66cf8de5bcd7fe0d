/// What the value layer needs of the language layer, above this one: the parse of a value's text.
/// Defined by the parse driver.
#ifndef VORNATH_VALUES_VALUE_PARSER_HPP
#define VORNATH_VALUES_VALUE_PARSER_HPP

#include <string>

#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Parses a value text. Throws vrnt::Exception with ParseFailed and "Unable to parse value:
/// {}.\n{}", or what the construction of a value throws. The caller must not hold the factory's
/// lock.
DynamicValue parseValue(const std::string& text);

}  // namespace qex::vornath

#endif
