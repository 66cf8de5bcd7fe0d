// Messages about JSON documents.
#ifndef VRN_CORE_JSON_REPORT_HPP
#define VRN_CORE_JSON_REPORT_HPP

#include <memory>
#include <string>

#include "core/session.hpp"

namespace vrn {

struct JsonReportDeleter {
  void operator()(vrtkJsonReport* report) const noexcept { vrtkJsonReportDestroy(report); }
};
using JsonReport = std::unique_ptr<vrtkJsonReport, JsonReportDeleter>;

/// Tells what a function of the toolkit found in a document, one line a message, or with --json as
/// a document on standard output. `name` is that of the document. Returns the exit code.
int tellJsonReport(Session& session, const std::string& name, const vrtkJsonReport* report);

}  // namespace vrn

#endif
