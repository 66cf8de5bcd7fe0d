#include "core/json_report.hpp"

#include "core/stream.hpp"
#include "core/text.hpp"

namespace vrn {

int tellJsonReport(Session& session, const std::string& name, const vrtkJsonReport* report) {
  if (session.json()) {
    printJson(session, requireString([&](char** text, vrtkError** error) {
                         return vrtkJsonReportJson(report, text, error);
                       }).get());
    return kFound;
  }
  for (std::uint64_t i = 0; i < vrtkJsonReportCount(report); ++i) {
    const vrtkJsonMessage& message = *vrtkJsonReportMessage(report, i);
    std::string text = name + ": ";
    if (message.line != 0) {
      text += "line " + std::to_string(message.line) + ", column " +
              std::to_string(message.column) + ": ";
    }
    if (*message.pointer != '\0') text += std::string(message.pointer) + ": ";
    session.tell(text + message.message);
  }
  if (vrtkJsonReportTruncated(report)) {
    session.tell(name + ": there are more errors; mend these first");
  }
  return kFound;
}

}  // namespace vrn
