// Digests, differences, patches and imports of one scene.
#ifndef VORNATH_FUZZ_COMPARISON_CHECKS_HPP
#define VORNATH_FUZZ_COMPARISON_CHECKS_HPP

#include <optional>
#include <string>

#include "support/json_round_trip.hpp"
#include "support/scenes.hpp"
#include "vornath_toolkit/vrtk.h"

namespace vornath_fuzz {

// The digest of a scene with its ids; empty if memory ran out.
inline std::optional<std::string> digestOf(const Scene& scene) {
  vrtkDigestOptions options = VRTK_DIGEST_OPTIONS_INIT;
  options.includeIds = 1;
  char hex[VRTK_DIGEST_LENGTH] = "";
  const std::uint32_t status = vrtkSceneDigest(&scene, &options, hex, nullptr);
  FUZZ_CHECK(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY);
  if (status != VRTK_OK) return std::nullopt;
  return hex;
}

// How many differences there are; empty if memory ran out.
inline std::optional<std::uint64_t> differences(const Scene& a, const Scene& b) {
  vrtkDiff* diff = nullptr;
  const std::uint32_t status = vrtkSceneDiff(&a, &b, nullptr, &diff, nullptr);
  FUZZ_CHECK(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY);
  if (status != VRTK_OK) return std::nullopt;
  const std::uint64_t found = vrtkDiffFound(diff);
  FUZZ_CHECK(vrtkDiffCount(diff) == found);
  for (std::uint64_t i = 0; i < found; ++i) {
    const vrtkDiffEntry* const entry = vrtkDiffEntryAt(diff, i);
    FUZZ_CHECK(entry->address != nullptr && vrtkDiffKindName(entry->kind) != nullptr);
  }
  char* json = nullptr;
  if (vrtkDiffJson(diff, &json, nullptr) == VRTK_OK) vrtkStringDestroy(json);
  vrtkDiffDestroy(diff);
  return found;
}

// A patch leads from one scene to the other.
inline void checkPatch(const Scene& a, const Scene& b) {
  char* json = nullptr;
  const std::uint32_t status = vrtkSceneDiffPatch(&a, &b, nullptr, &json, nullptr);
  FUZZ_CHECK(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY);
  if (status != VRTK_OK) return;
  const std::string patch = json;
  vrtkStringDestroy(json);
  vrdmScene_t* patched = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t applied =
      vrtkScenePatch(&a, patch.data(), patch.size(), nullptr, &patched, nullptr, &error);
  const std::string message = error != nullptr ? vrtkErrorMessage(error) : "";
  vrtkErrorDestroy(error);
  FUZZ_CHECK_NOTE(applied == VRTK_OK || applied == VRTK_OUT_OF_MEMORY, message + "\n" + patch);
  const vrnt::UniqueScene owner(patched);
  if (!owner) return;
  const auto expected = digestOf(b);
  const auto found = digestOf(*patched);
  FUZZ_CHECK_NOTE(!expected || !found || *expected == *found, patch);
}

inline void checkImport(const Scene& scene) {
  Scene target(vrnt::UniqueId::null());
  vrtkRenumbering* renumbering = nullptr;
  const std::uint32_t status = vrtkSceneImport(&target, &scene, &renumbering, nullptr);
  FUZZ_CHECK(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY);
  if (status != VRTK_OK) return;
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    std::uint64_t count = 0;
    const std::int32_t* const slots = vrtkRenumberingSlots(renumbering, c, &count);
    FUZZ_CHECK(count == vrdmContainerSize(&scene, c));
    for (std::uint64_t i = 0; i < count; ++i) {
      const bool live = vrdmValid(&scene, c, static_cast<std::int32_t>(i));
      FUZZ_CHECK(live == (slots[i] >= 0));
      FUZZ_CHECK(!live || vrdmValid(&target, c, slots[i]));
    }
  }
  vrtkRenumberingDestroy(renumbering);
}

inline void checkComparisons(const Scene& scene) {
  const auto same = differences(scene, scene);
  FUZZ_CHECK(!same || *same == 0);
  const Scene empty(vrnt::UniqueId::null());
  differences(empty, scene);
  differences(scene, empty);
  checkPatch(empty, scene);
  checkPatch(scene, empty);
  checkImport(scene);
  bool equivalent = false;
  vrtkSceneEquivalent(&scene, &empty, &equivalent, nullptr);
  const auto take = [](const void*, std::uint64_t, void*) -> std::uint32_t { return 0; };
  vrtkSceneDump(&scene, take, nullptr, nullptr);
}

}  // namespace vornath_fuzz

#endif
