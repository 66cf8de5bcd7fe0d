// Types and values that stand on the command line as texts.
#ifndef VRN_CORE_TYPED_TEXT_HPP
#define VRN_CORE_TYPED_TEXT_HPP

#include <string>

#include "core/session.hpp"

namespace vrn {

/// Throws Trouble about a text. If the error has a place, the line of the text follows, with a
/// caret under the place.
[[noreturn]] void raiseAbout(const std::string& what, const std::string& text,
                             const ErrorOut& error);

/// Parses the text of a type. `what` names it in messages.
vrnt::UniqueType parseType(const std::string& what, const std::string& text);

}  // namespace vrn

#endif
