// Scenes from JSON: any text is built or refused with a message that has a place in it, and what is
// built is the same after it was written as JSON and built again.
#include "support/json_round_trip.hpp"

namespace vornath_fuzz {
namespace {

constexpr std::uint64_t kMemory = std::uint64_t{8} << 20;

void checkReport(std::string_view json, const vrtkJsonReport* report) {
  FUZZ_CHECK(vrtkJsonReportCount(report) != 0 && vrtkJsonReportCount(report) <= 20);
  std::uint64_t last = 0;
  for (std::uint64_t i = 0; i < vrtkJsonReportCount(report); ++i) {
    const vrtkJsonMessage* const message = vrtkJsonReportMessage(report, i);
    FUZZ_CHECK(message->offset >= last && message->offset <= json.size());
    FUZZ_CHECK(message->line >= 1 && message->column >= 1 && message->message[0] != '\0');
    last = message->offset;
  }
  char* text = nullptr;
  if (vrtkJsonReportJson(report, &text, nullptr) == VRTK_OK) vrtkStringDestroy(text);
}

// The text as a patch and as a value to set: refused, or done.
void useOtherwise(std::string_view json) {
  Scene scene(vrnt::UniqueId::null());
  vrdmCreateInstance(&scene, VRDM_CLASS_CAMERA);
  vrdmScene_t* patched = nullptr;
  vrtkJsonReport* report = nullptr;
  const std::uint32_t status =
      vrtkScenePatch(&scene, json.data(), json.size(), nullptr, &patched, &report, nullptr);
  FUZZ_CHECK(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY || status == VRTK_JSON_INVALID ||
             status == VRTK_PATCH_FAILED || status == VRTK_LIBRARY_ERROR);
  vrtkJsonReportDestroy(report);
  const vrnt::UniqueScene owner(patched);
  const std::string text(json);
  for (const char* const address :
       {"Camera/0/groups/General", "Camera/0/slots", "Camera/0/value"}) {
    vrtkSceneSet(&scene, address, text.c_str(), nullptr, nullptr);
  }
  char* got = nullptr;
  if (vrtkSceneGet(&scene, text.c_str(), &got, nullptr) == VRTK_OK) vrtkStringDestroy(got);
}

}  // namespace

void runInput(std::string_view bytes) {
  vrtkBuildOptions options = VRTK_BUILD_OPTIONS_INIT;
  options.maxMemory = kMemory;
  vrdmScene_t* scene = nullptr;
  vrtkJsonReport* report = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status =
      vrtkSceneBuild(bytes.data(), bytes.size(), &options, &scene, &report, &error);
  const std::string message = error != nullptr ? vrtkErrorMessage(error) : "";
  vrtkErrorDestroy(error);
  FUZZ_CHECK_NOTE(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY || status == VRTK_JSON_INVALID,
                  message);
  FUZZ_CHECK((status == VRTK_OK) == (scene != nullptr));
  FUZZ_CHECK((status == VRTK_JSON_INVALID) == (report != nullptr));
  const vrnt::UniqueScene owner(scene);
  if (report != nullptr) {
    checkReport(bytes, report);
    vrtkJsonReportDestroy(report);
  }
  if (scene != nullptr && weightOf(*scene) <= kLightScene) checkJsonRoundTrip(*scene);
  useOtherwise(bytes);
}

}  // namespace vornath_fuzz
