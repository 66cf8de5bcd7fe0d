/// The text of a value. The parser reads it back to an equal value, except for the text of a
/// function, which does not parse.
#ifndef VORNATH_VALUES_VALUE_TEXT_HPP
#define VORNATH_VALUES_VALUE_TEXT_HPP

#include <iosfwd>
#include <string>

#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Returns the text of the value at a view. `exact` prints a scalar float or half as its bits, but
/// not the lanes of a vector; `multiline` prints each struct field on a line of its own. The target
/// of a reference is printed without options. Does not recurse. Throws "Enum code out of range:
/// {}", and std::bad_optional_access for an unsized array.
std::string valueToString(const ConstView& view, bool exact = false, bool multiline = false);

/// Returns the text of the value of a type at an address, without options.
std::string valueToString(const InternedType& type, const char* data);

/// As valueToString(), for a value of a type at an address. Returns a new string that std::free()
/// frees.
char* newValueText(const InternedType& type, const char* data, bool exact, bool multiline);

/// (embed) Prints the text without options.
std::ostream& operator<<(std::ostream& stream, const DynamicValue& value);

}  // namespace qex::vornath

#endif
