/// Parses texts. A text that is of the language is built from a plan (plan_parser.hpp); any other
/// one is given to the generated scanner and parser, which report what is wrong with it.
///
/// Types and values are built under parser_mutex, either way, and never with the factory's lock
/// held: a host that holds parser_mutex holds up every parse. The scanner's state is global, so
/// that it runs under parser_mutex too. No step and no action of the grammar may start a parse.
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

/// Does the same by the generated scanner and parser, whatever the text.
int parseTypeTextByGrammar(ParseContext& context, const std::string& text, TypePtr& out);
int parseValueTextByGrammar(ParseContext& context, const std::string& text,
                            std::optional<DynamicValue>& out);

}  // namespace qex::vornath

#endif
