// Columns, groups and references to storage blocks while allocations fail: what needs no memory
// succeeds, and what is refused leaves the scene as it was.
#include <cstring>

#include "support/allocations.hpp"
#include "toolkit/failed_allocations.hpp"
#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

// The field near_distance at the start of the group "General" of a Camera.
constexpr std::uint32_t kGeneral = 1;

SceneHandle twoCameras() {
  SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  return scene;
}

float nearDistance(const SceneHandle& scene, std::int32_t slot) {
  const ValueHandle value(vrdmGetDataValue(scene.get(), VRDM_CLASS_CAMERA, slot, kGeneral));
  float number = -1.0F;
  std::memcpy(&number, vrntValueData(value.get()), sizeof number);
  return number;
}

TEST(vrtkSceneLiveSlots, NeedsNoMemory) {
  const SceneHandle scene = twoCameras();
  std::int32_t slots[2] = {-7, -7};
  std::uint64_t count = 0;
  std::uint32_t status = VRTK_INTERNAL_ERROR;
  {
    const FailingAllocations failing;
    status = vrtkSceneLiveSlots(scene.get(), VRDM_CLASS_CAMERA, slots, 2, &count, nullptr);
  }
  EXPECT_EQ(status, VRTK_OK);
  EXPECT_EQ(count, 2U);
  EXPECT_EQ(slots[1], 1);
}

TEST(vrtkSceneLiveSlots, ReportsEachFailedAllocationOfARefusal) {
  const SceneHandle scene = twoCameras();
  std::uint64_t count = 5;
  bool triggered = true;
  std::uint64_t failures = 0;
  for (std::uint64_t number = 0; triggered; ++number) {
    vrtkError* error = nullptr;
    std::uint32_t status = VRTK_OK;
    {
      const FailNthAllocation failing(number);
      status = vrtkSceneLiveSlots(scene.get(), 18, nullptr, 0, &count, &error);
      triggered = failing.triggered();
    }
    const ToolkitError owner(error);
    failures += status == VRTK_OUT_OF_MEMORY ? 1 : 0;
    ASSERT_TRUE(status == VRTK_INVALID_ARGUMENT || status == VRTK_OUT_OF_MEMORY) << number;
    EXPECT_EQ(count, 5U);
  }
  EXPECT_GT(failures, 0U);
}

TEST(vrtkSceneColumnGet, NeedsNoMemory) {
  const SceneHandle scene = twoCameras();
  const std::int32_t slots[] = {1, 0};
  float read[2] = {7.0F, 7.0F};
  std::uint32_t status = VRTK_INTERNAL_ERROR;
  {
    const FailingAllocations failing;
    status = vrtkSceneColumnGet(scene.get(), VRDM_CLASS_CAMERA, kGeneral, 0, 4, slots, 2, read, 0,
                                nullptr);
  }
  EXPECT_EQ(status, VRTK_OK);
  EXPECT_EQ(read[0], 0.0F);
  EXPECT_EQ(read[1], 0.0F);
}

TEST(vrtkSceneColumnSet, NeedsNoMemory) {
  const SceneHandle scene = twoCameras();
  const std::int32_t slots[] = {1, 0};
  const float written[] = {0.25F, 0.5F};
  std::uint32_t status = VRTK_INTERNAL_ERROR;
  {
    const FailingAllocations failing;
    status = vrtkSceneColumnSet(scene.get(), VRDM_CLASS_CAMERA, kGeneral, 0, 4, slots, 2, written,
                                0, nullptr);
  }
  EXPECT_EQ(status, VRTK_OK);
  EXPECT_EQ(nearDistance(scene, 0), 0.5F);
  EXPECT_EQ(nearDistance(scene, 1), 0.25F);
}

TEST(vrtkSceneColumnSet, ReportsEachFailedAllocationOfARefusalAndWritesNothing) {
  const SceneHandle scene = twoCameras();
  const std::int32_t slots[] = {0, 2};
  const float written[] = {0.25F, 0.5F};
  bool triggered = true;
  std::uint64_t failures = 0;
  for (std::uint64_t number = 0; triggered; ++number) {
    vrtkError* error = nullptr;
    std::uint32_t status = VRTK_OK;
    {
      const FailNthAllocation failing(number);
      status = vrtkSceneColumnSet(scene.get(), VRDM_CLASS_CAMERA, kGeneral, 0, 4, slots, 2, written,
                                  0, &error);
      triggered = failing.triggered();
    }
    const ToolkitError owner(error);
    failures += status == VRTK_OUT_OF_MEMORY ? 1 : 0;
    ASSERT_TRUE(status == VRTK_INVALID_ARGUMENT || status == VRTK_OUT_OF_MEMORY) << number;
    EXPECT_EQ(nearDistance(scene, 0), 0.0F);
  }
  EXPECT_GT(failures, 0U);
}

TEST(vrtkSceneGroupSet, ReportsEachFailedAllocationAndWritesNothing) {
  const SceneHandle scene = twoCameras();
  float number = 0.25F;
  vrntValue_t* changed = vrdmGetDataValue(scene.get(), VRDM_CLASS_CAMERA, 0, kGeneral);
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(&changed, 0, &number, sizeof number, &error);
  ASSERT_EQ(error, nullptr);
  const ValueHandle value(changed);
  const vrtkGroupPlace place{scene.get(), value.get(), VRDM_CLASS_CAMERA, 1, kGeneral};
  vrtkGroupPlace wrong = place;
  wrong.index = 2;
  bool triggered = true;
  for (std::uint64_t nth = 0; triggered; ++nth) {
    std::uint32_t status = VRTK_OK;
    {
      const FailNthAllocation failing(nth);
      status = vrtkSceneGroupSet(&wrong);
      triggered = failing.triggered();
    }
    ASSERT_TRUE(status == VRTK_INVALID_ARGUMENT || status == VRTK_OUT_OF_MEMORY) << nth;
    EXPECT_EQ(nearDistance(scene, 1), 0.0F);
  }
  std::uint32_t status = VRTK_INTERNAL_ERROR;
  {
    const FailingAllocations failing;
    status = vrtkSceneGroupSet(&place);
  }
  EXPECT_EQ(status, VRTK_OK) << "a group whose type is known is written without memory";
  EXPECT_EQ(nearDistance(scene, 1), 0.25F);
}

TEST(vrtkStorageRelease, NeedsNoMemory) {
  AssetStorage* const storage = vrdmAssetStorageWrap(
      std::malloc(8), 8, [](void* block) { std::free(block); });  // NOLINT(*-no-malloc)
  ASSERT_NE(storage, nullptr);
  {
    const FailingAllocations failing;
    EXPECT_EQ(vrtkStorageRetain(storage), storage);
    vrtkStorageRelease(storage);
  }
  EXPECT_EQ(storage->references, 1U);
  vrtkStorageRelease(storage);
}

}  // namespace
}  // namespace vornath_test
