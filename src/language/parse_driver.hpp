/// Runs the scanner and the parser on a text: the only code that calls them.
///
/// A run holds parser_mutex, since the scanner's state is global, and never starts with the
/// factory's lock held. No action of the grammar may start a parse.
#ifndef VORNATH_LANGUAGE_PARSE_DRIVER_HPP
#define VORNATH_LANGUAGE_PARSE_DRIVER_HPP

#include <optional>
#include <string>

#include "language/parse_context.hpp"

namespace qex::vornath {

/// Parses a text. Returns 0 and sets `out`, or returns another status and stores the parser's
/// message in the context's error. Throws what the construction of a type or value throws.
int parseTypeText(ParseContext& context, const std::string& text, TypePtr& out);
int parseValueText(ParseContext& context, const std::string& text,
                   std::optional<DynamicValue>& out);

}  // namespace qex::vornath

#endif
