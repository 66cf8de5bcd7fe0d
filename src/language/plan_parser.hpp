/// Parses a text into the plan that builds it: the way of every text that is of the language,
/// without the generated scanner and parser and without a lock.
#ifndef VORNATH_LANGUAGE_PLAN_PARSER_HPP
#define VORNATH_LANGUAGE_PLAN_PARSER_HPP

#include <string>

#include "language/build_plan.hpp"
#include "language/scanner.hpp"

namespace qex::vornath {

/// Returns whether the text is of the language, and fills the plan, which is empty before. Where it
/// returns false, the generated parser finds out what is wrong: it alone reports errors. Does not
/// recurse, builds nothing, and has no shared state. Throws std::bad_alloc.
bool planBuild(BuildPlan& plan, const std::string& text, Scan::Language language);

}  // namespace qex::vornath

#endif
