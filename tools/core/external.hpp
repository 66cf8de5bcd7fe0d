// Commands that are programs of their own.
#ifndef VRN_CORE_EXTERNAL_HPP
#define VRN_CORE_EXTERNAL_HPP

#include <string>
#include <vector>

namespace vrn {

/// A command that comes with the project as a program of its own, since it needs more packages.
struct ExternalProgram {
  const char* command;
  const char* summary;
  const char* folder;   ///< of the program in a build tree
  const char* missing;  ///< what to do where the program is not there
};

/// Returns these programs, in the order in which `vrn --help` lists them.
const std::vector<ExternalProgram>& externalPrograms();

/// Replaces this process by the program vrn-COMMAND: the one that stands beside vrn, or that of the
/// build tree in which vrn is, or that on PATH. Returns if there is none. Throws Trouble if there
/// is one that cannot be run, or none for a command of externalPrograms().
void runExternal(const std::string& command, const std::vector<std::string>& arguments);

}  // namespace vrn

#endif
