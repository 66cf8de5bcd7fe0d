// Files that are checked one after another.
#ifndef VRN_CORE_REPORT_HPP
#define VRN_CORE_REPORT_HPP

#include <functional>
#include <string>
#include <vector>

#include "core/session.hpp"

namespace vrn {

/// Returns what to tell about a file that must not be read: the first error of its report.
std::string refusalOf(const std::string& path, const vrtkReport* report);

/// Checks files, and calls `use` for each report, which returns an exit code. A file that cannot be
/// read, and one for which `use` throws Trouble, is told on standard error, and the others follow.
/// With --json, prints the report of one file, or an array with an element for each of several.
/// Returns the greatest exit code.
int forEachReport(Session& session, const std::vector<std::string>& paths,
                  std::uint64_t maxMessages,
                  const std::function<int(const std::string&, const vrtkReport*)>& use);

}  // namespace vrn

#endif
