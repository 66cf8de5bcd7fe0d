// Each allocation of the functions that read, compare and convert scenes and values fails once.
#include "support/allocations.hpp"
#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

// Calls a function with its Nth allocation failing, for N = 0, 1, 2 and so on, until it does not
// get to the Nth any more. The function returns a status and leaves nothing behind.
template <typename Call>
void failEachAllocation(Call&& call) {
  EXPECT_EQ(call(), VRTK_OK);
  std::uint64_t failures = 0;
  for (std::uint64_t number = 0;; ++number) {
    bool triggered = false;
    std::uint32_t status = VRTK_OK;
    {
      const FailNthAllocation failing(number);
      status = call();
      triggered = failing.triggered();
    }
    if (!triggered) break;
    failures += status == VRTK_OK ? 0 : 1;
    ASSERT_TRUE(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY)
        << number << ": " << vrtkStatusName(status);
    ASSERT_LT(number, 200000U);
  }
  EXPECT_GT(failures, 0U);
}

TEST(vrtkSceneDigest, ReportsEachFailedAllocation) {
  const SceneHandle scene = sceneOfAllClasses();
  failEachAllocation([&] {
    char hex[VRTK_DIGEST_LENGTH] = "";
    return vrtkSceneDigest(scene.get(), nullptr, hex, nullptr);
  });
}

std::vector<std::uint32_t> countsOf(const vrdmScene_t* scene) {
  std::vector<std::uint32_t> found;
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    found.push_back(vrdmCountReferences(scene, c, 0));
    found.push_back(vrdmCountReferences(scene, c, 2));
    found.push_back(scene->versions.classes[c]);
  }
  return found;
}

// The dump shows all slots, counters and contents of the scene.
TEST(vrtkSceneImport, TakesBackWhatItAddedBeforeAFailedAllocation) {
  const SceneHandle source = sceneOfAllClasses();
  vrdmAddProgram(source.get(), VRDM_CLASS_CAMERA_PROGRAM, "another program");
  std::uint64_t failures = 0;
  bool triggered = true;
  for (std::uint64_t number = 0; triggered; ++number) {
    const SceneHandle scene = sceneOfAllClasses();
    vrdmRemove(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, 0);
    const std::string before = dumpOf(*scene);
    const std::vector<std::uint32_t> countsBefore = countsOf(scene.get());
    const std::string leftText = vrdmGetProgramSource(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, 0);
    const vrntUniqueId_t leftId = *vrdmGetUniqueId(scene.get(), VRDM_CLASS_TEXTURE, 1);
    std::uint32_t status = VRTK_OK;
    {
      const FailNthAllocation failing(number);
      status = vrtkSceneImport(scene.get(), source.get(), nullptr, nullptr);
      triggered = failing.triggered();
    }
    if (status == VRTK_OK) {
      EXPECT_EQ(vrdmContainerSize(scene.get(), VRDM_CLASS_CAMERA), 4U);
      continue;
    }
    ++failures;
    ASSERT_EQ(status, VRTK_OUT_OF_MEMORY);
    ASSERT_EQ(dumpOf(*scene), before) << number;
    ASSERT_EQ(countsOf(scene.get()), countsBefore) << number;
    ASSERT_STREQ(vrdmGetProgramSource(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, 0), leftText.c_str());
    ASSERT_EQ(*vrdmGetUniqueId(scene.get(), VRDM_CLASS_TEXTURE, 1), leftId);
    // The next addition takes the slot that it would have taken.
    ASSERT_EQ(vrdmAddProgram(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, "third"), 0U);
    ASSERT_EQ(vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE), 1U);
    ASSERT_EQ(vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE), 2U);
    ASSERT_EQ(vrtkSceneImport(scene.get(), source.get(), nullptr, nullptr), VRTK_OK);
  }
  EXPECT_GT(failures, 20U);
}

TEST(vrtkSceneDiff, ReportsEachFailedAllocation) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = sceneOfAllClasses();
  vrdmSetReference(b.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, 4);
  b->data.raytracer.ray_epsilon = 0.5F;
  const ValueHandle value = parseValue("{ image = { texture_ref = 1; }; list = &[ 1, 2 ]; }");
  vrdmSetInstanceValue(b.get(), VRDM_CLASS_LIGHT, 0, value.get());
  failEachAllocation([&] {
    vrtkDiff* diff = nullptr;
    const std::uint32_t status = vrtkSceneDiff(a.get(), b.get(), nullptr, &diff, nullptr);
    EXPECT_EQ(diff != nullptr, status == VRTK_OK);
    vrtkDiffDestroy(diff);
    return status;
  });
  vrtkDiff* diff = nullptr;
  ASSERT_EQ(vrtkSceneDiff(a.get(), b.get(), nullptr, &diff, nullptr), VRTK_OK);
  failEachAllocation([&] {
    char* json = nullptr;
    const std::uint32_t status = vrtkDiffJson(diff, &json, nullptr);
    vrtkStringDestroy(json);
    return status;
  });
  vrtkDiffDestroy(diff);
}

TEST(vrtkRenumberingJson, ReportsEachFailedAllocation) {
  const SceneHandle source = sceneOfAllClasses();
  const SceneHandle scene = sceneOfAllClasses();
  vrtkRenumbering* renumbering = nullptr;
  ASSERT_EQ(vrtkSceneImport(scene.get(), source.get(), &renumbering, nullptr), VRTK_OK);
  failEachAllocation([&] {
    char* json = nullptr;
    const std::uint32_t status = vrtkRenumberingJson(renumbering, &json, nullptr);
    vrtkStringDestroy(json);
    return status;
  });
  vrtkRenumberingDestroy(renumbering);
}

TEST(vrtkSceneEquivalent, ReportsEachFailedAllocation) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = sceneOfAllClasses();
  failEachAllocation([&] {
    bool equivalent = false;
    return vrtkSceneEquivalent(a.get(), b.get(), &equivalent, nullptr);
  });
}

TEST(vrtkSceneDump, ReportsEachFailedAllocation) {
  const SceneHandle scene = sceneOfAllClasses();
  const auto take = [](const void*, std::uint64_t, void*) -> std::uint32_t { return 0; };
  failEachAllocation([&] { return vrtkSceneDump(scene.get(), take, nullptr, nullptr); });
}

}  // namespace
}  // namespace vornath_test
