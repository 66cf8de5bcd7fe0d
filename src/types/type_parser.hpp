/// What the factory needs of the language layer, above this one: the parse of a text that its table
/// of canonical texts does not hold. Defined by the parse driver.
#ifndef VORNATH_TYPES_TYPE_PARSER_HPP
#define VORNATH_TYPES_TYPE_PARSER_HPP

#include <string>

#include "types/type.hpp"

namespace qex::vornath {

/// Parses a type text. Throws vrnt::Exception with ParseFailed and "Unable to parse type: {}.\n{}",
/// or what the construction of a type throws. The caller must not hold the factory's lock.
TypePtr parseUncachedType(const std::string& text);

}  // namespace qex::vornath

#endif
