// Commands that are programs of their own.
#ifndef VRN_CORE_EXTERNAL_HPP
#define VRN_CORE_EXTERNAL_HPP

#include <string>
#include <vector>

namespace vrn {

/// Replaces this process by the program vrn-COMMAND that stands beside vrn, or else by that on
/// PATH. Returns if there is none. Throws Trouble if there is one that cannot be run.
void runExternal(const std::string& command, const std::vector<std::string>& arguments);

}  // namespace vrn

#endif
