// The flat functions of the check and of its report.
#include <memory>

#include "check/file_check.hpp"
#include "check/report.hpp"
#include "check/scene_check.hpp"
#include "foundation/failure.hpp"

using vrtk::guarded;
using vrtk::requireArgument;

std::uint32_t vrtkCheckFile(const char* path, const vrtkLimits* limits, vrtkReport** report,
                            vrtkError** error) {
  return guarded(error, [&] {
    requireArgument(path, "vrtkCheckFile", "path");
    requireArgument(report, "vrtkCheckFile", "report");
    const vrtkLimits chosen = vrtk::limitsOf(limits);
    vrtk::FileSource source(path);
    auto made = std::make_unique<vrtkReport>(chosen);
    made->file = path;
    made->hasFile = true;
    vrtk::checkSource(source, chosen, *made);
    *report = made.release();
  });
}

std::uint32_t vrtkCheckBytes(const void* bytes, std::uint64_t size, const vrtkLimits* limits,
                             vrtkReport** report, vrtkError** error) {
  return guarded(error, [&] {
    if (size != 0) requireArgument(bytes, "vrtkCheckBytes", "bytes");
    requireArgument(report, "vrtkCheckBytes", "report");
    const vrtkLimits chosen = vrtk::limitsOf(limits);
    vrtk::MemorySource source(bytes, size);
    auto made = std::make_unique<vrtkReport>(chosen);
    vrtk::checkSource(source, chosen, *made);
    *report = made.release();
  });
}

std::uint32_t vrtkSceneValidate(const vrdmScene_t* scene, const vrtkLimits* limits,
                                vrtkReport** report, vrtkError** error) {
  return guarded(error, [&] {
    requireArgument(scene, "vrtkSceneValidate", "scene");
    requireArgument(report, "vrtkSceneValidate", "report");
    auto made = std::make_unique<vrtkReport>(vrtk::limitsOf(limits));
    vrtk::checkScene(scene, *made);
    *report = made.release();
  });
}

void vrtkReportDestroy(vrtkReport* report) { delete report; }

bool vrtkReportValid(const vrtkReport* report) { return report->errors() == 0; }
std::uint64_t vrtkReportErrorCount(const vrtkReport* report) { return report->errors(); }
std::uint64_t vrtkReportWarningCount(const vrtkReport* report) { return report->warnings(); }
bool vrtkReportTruncated(const vrtkReport* report) { return report->truncated(); }
std::uint64_t vrtkReportMessageCount(const vrtkReport* report) { return report->messages().size(); }

const vrtkMessage* vrtkReportMessage(const vrtkReport* report, std::uint64_t index) {
  const auto& messages = report->messages();
  return index < messages.size() ? &messages[static_cast<std::size_t>(index)] : nullptr;
}

const vrtkInfo* vrtkReportInfo(const vrtkReport* report) { return &report->info; }

vrtkClassInfo vrtkReportClass(const vrtkReport* report, std::uint32_t objectClass) {
  const auto& classes = report->classes;
  return objectClass < classes.size() ? classes[objectClass] : vrtkClassInfo{0, 0};
}

std::uint32_t vrtkReportJson(const vrtkReport* report, char** json, vrtkError** error) {
  return guarded(error, [&] {
    requireArgument(report, "vrtkReportJson", "report");
    requireArgument(json, "vrtkReportJson", "json");
    *json = vrtk::copyString(report->json());
  });
}
