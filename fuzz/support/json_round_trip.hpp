// A scene as JSON and back.
#ifndef VORNATH_FUZZ_JSON_ROUND_TRIP_HPP
#define VORNATH_FUZZ_JSON_ROUND_TRIP_HPP

#include <optional>
#include <string>

#include "support/scenes.hpp"
#include "vornath_toolkit/vrtk.h"

namespace vornath_fuzz {

// The document of a scene with the bytes of its assets; empty if memory ran out, or if a value
// refers to itself.
inline std::optional<std::string> jsonOf(const Scene& scene, bool full) {
  vrtkExportOptions options = VRTK_EXPORT_OPTIONS_INIT;
  options.full = full ? 1 : 0;
  options.inlineAssets = 1;
  char* json = nullptr;
  std::uint64_t size = 0;
  const std::uint32_t status = vrtkSceneExportString(&scene, &options, &json, &size, nullptr);
  FUZZ_CHECK(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY || status == VRTK_VALUE_CYCLE);
  if (status != VRTK_OK) return std::nullopt;
  std::string text(json, size);
  vrtkStringDestroy(json);
  return text;
}

// Builds a scene from JSON that is right; null if memory ran out.
inline vrnt::UniqueScene built(const std::string& json) {
  vrtkBuildOptions options = VRTK_BUILD_OPTIONS_INIT;
  options.maxMemory = UINT64_MAX;
  vrdmScene_t* scene = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status =
      vrtkSceneBuild(json.data(), json.size(), &options, &scene, nullptr, &error);
  const std::string message = error != nullptr ? vrtkErrorMessage(error) : "";
  vrtkErrorDestroy(error);
  FUZZ_CHECK_NOTE(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY, message + "\n" + json);
  return vrnt::UniqueScene(scene);
}

// Both forms of a scene give a scene with the same forms, which is equivalent.
inline void checkJsonRoundTrip(const Scene& scene) {
  for (const bool full : {false, true}) {
    const auto json = jsonOf(scene, full);
    if (!json) continue;
    const vrnt::UniqueScene back = built(*json);
    if (!back) continue;
    for (const bool again : {false, true}) {
      const auto first = jsonOf(scene, again);
      const auto second = jsonOf(*back, again);
      FUZZ_CHECK_NOTE(!first || !second || *first == *second, *json);
    }
    // What is not equivalent to itself, such as a NaN, needs not be here either.
    if (!isComplete(modelOf(scene)) || equivalent(scene, scene) != true) continue;
    const auto same = equivalent(scene, *back);
    FUZZ_CHECK_NOTE(!same || *same, *json);
  }
}

}  // namespace vornath_fuzz

#endif
