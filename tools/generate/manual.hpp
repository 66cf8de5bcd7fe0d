// Manual pages, in the language of troff's man macros.
#ifndef VRN_GENERATE_MANUAL_HPP
#define VRN_GENERATE_MANUAL_HPP

#include <string>

#include "command.hpp"

namespace vrn {

/// Returns the page vrn(1).
std::string overviewPage();

/// Returns the page of a command, as vrn-check(1).
std::string manualPage(const Command& command);

}  // namespace vrn

#endif
