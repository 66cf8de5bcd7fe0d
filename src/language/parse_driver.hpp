/// Runs the scanner and the parser over a text: the only code that knows them.
///
/// parser_mutex is held for the whole of a run, since the scanner's state is global, and never with
/// the factory's lock held. No action of the grammar may start a parse.
#ifndef VORNATH_LANGUAGE_PARSE_DRIVER_HPP
#define VORNATH_LANGUAGE_PARSE_DRIVER_HPP

#include <optional>
#include <string>

#include "language/parse_context.hpp"

namespace qex::vornath {

/// Returns 0 and sets `out`, or another status with the parser's words in the context's error. What
/// the construction of a type or value throws passes through.
int parseTypeText(ParseContext& context, const std::string& text, TypePtr& out);
int parseValueText(ParseContext& context, const std::string& text,
                   std::optional<DynamicValue>& out);

}  // namespace qex::vornath

#endif
