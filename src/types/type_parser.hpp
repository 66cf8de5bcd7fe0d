/// What the factory asks of the language layer, above it: the parse of a text that its table of
/// canonical texts doesn't know. Defined by the parse driver.
#ifndef VORNATH_TYPES_TYPE_PARSER_HPP
#define VORNATH_TYPES_TYPE_PARSER_HPP

#include <string>

#include "types/type.hpp"

namespace qex::vornath {

/// Parses a type text. Throws vrnt::Exception with ParseFailed and "Unable to parse type: {}.\n{}",
/// or what the construction of a type throws. The factory's lock must not be held.
TypePtr parseUncachedType(const std::string& text);

}  // namespace qex::vornath

#endif
