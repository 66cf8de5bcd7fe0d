/// The text of a value, in the language that the parser reads back to an equal value. A function's
/// text is the exception: it doesn't read back.
#ifndef VORNATH_VALUES_VALUE_TEXT_HPP
#define VORNATH_VALUES_VALUE_TEXT_HPP

#include <iosfwd>
#include <string>

#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Prints the value at a view. `exact` prints a scalar float or half as its bits, never the lanes
/// of a vector; `multiline` gives each struct field a line of its own. What a reference leads to is
/// printed with both off. Neither references nor nesting make it recurse.
/// Throws "Enum code out of range: {}", and std::bad_optional_access for an array of open extents.
std::string valueToString(const ConstView& view, bool exact = false, bool multiline = false);

/// The text of the value of a type at an address, all options off.
std::string valueToString(const InternedType& type, const char* data);

/// (embed) Prints the text with all options off.
std::ostream& operator<<(std::ostream& stream, const DynamicValue& value);

}  // namespace qex::vornath

#endif
