// Columns: one part of one group of many objects.
#include <cstring>
#include <utility>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

// "General" of a Camera, with the fields near_distance at 0 and shutter_open at 4.
constexpr std::uint32_t kGeneral = 1;
constexpr std::uint64_t kNearDistance = 0;
constexpr std::uint64_t kShutterOpen = 4;
constexpr std::uint64_t kGeneralSize = 20;

SceneHandle camerasWithAGap() {
  SceneHandle scene(vrdmCreateScene());
  for (int i = 0; i < 4; ++i) vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  vrdmRemove(scene.get(), VRDM_CLASS_CAMERA, 1);
  return scene;
}

std::uint32_t get(const SceneHandle& scene, std::uint64_t offset, std::uint64_t size,
                  const std::vector<std::int32_t>& slots, void* bytes, std::uint64_t stride = 0,
                  vrtkError** error = nullptr) {
  return vrtkSceneColumnGet(scene.get(), VRDM_CLASS_CAMERA, kGeneral, offset, size, slots.data(),
                            slots.size(), bytes, stride, error);
}

std::uint32_t set(const SceneHandle& scene, std::uint64_t offset, std::uint64_t size,
                  const std::vector<std::int32_t>& slots, const void* bytes,
                  std::uint64_t stride = 0) {
  return vrtkSceneColumnSet(scene.get(), VRDM_CLASS_CAMERA, kGeneral, offset, size, slots.data(),
                            slots.size(), bytes, stride, nullptr);
}

float fieldOf(const SceneHandle& scene, std::int32_t slot, std::uint64_t offset) {
  vrntValue_t* const value = vrdmGetDataValue(scene.get(), VRDM_CLASS_CAMERA, slot, kGeneral);
  float number;
  std::memcpy(&number, static_cast<const char*>(vrntValueData(value)) + offset, sizeof number);
  vrntValueDestroy(value);
  return number;
}

TEST(vrtkSceneLiveSlots, ListsTheLiveObjectsInOrder) {
  const SceneHandle scene = camerasWithAGap();
  std::vector<std::int32_t> slots(4, -7);
  std::uint64_t count = 0;
  ASSERT_EQ(vrtkSceneLiveSlots(scene.get(), VRDM_CLASS_CAMERA, slots.data(), 4, &count, nullptr),
            VRTK_OK);
  EXPECT_EQ(count, 3U);
  EXPECT_EQ(slots, (std::vector<std::int32_t>{0, 2, 3, -7}));
}

TEST(vrtkSceneLiveSlots, CountsMoreObjectsThanThereIsRoomFor) {
  const SceneHandle scene = camerasWithAGap();
  std::int32_t slot = -7;
  std::uint64_t count = 0;
  ASSERT_EQ(vrtkSceneLiveSlots(scene.get(), VRDM_CLASS_CAMERA, nullptr, 0, &count, nullptr),
            VRTK_OK);
  EXPECT_EQ(count, 3U);
  ASSERT_EQ(vrtkSceneLiveSlots(scene.get(), VRDM_CLASS_CAMERA, &slot, 1, &count, nullptr), VRTK_OK);
  EXPECT_EQ(slot, 0);
  EXPECT_EQ(count, 3U);
}

TEST(vrtkSceneLiveSlots, RefusesANumberThatIsNoClass) {
  const SceneHandle scene = camerasWithAGap();
  std::uint64_t count = 5;
  EXPECT_EQ(vrtkSceneLiveSlots(scene.get(), 18, nullptr, 0, &count, nullptr),
            VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(count, 5U);
}

TEST(vrtkSceneColumnSet, WritesOnePartAndLeavesTheOthers) {
  const SceneHandle scene = camerasWithAGap();
  const float opens[] = {0.25F, 0.5F};
  ASSERT_EQ(set(scene, kShutterOpen, 4, {3, 0}, opens), VRTK_OK);
  EXPECT_EQ(fieldOf(scene, 3, kShutterOpen), 0.25F);
  EXPECT_EQ(fieldOf(scene, 0, kShutterOpen), 0.5F);
  EXPECT_EQ(fieldOf(scene, 2, kShutterOpen), 0.0F);
  EXPECT_EQ(fieldOf(scene, 0, kNearDistance), 0.0F);
  EXPECT_EQ(fieldOf(scene, 0, 16), 1.0F) << "time_end keeps its default";
}

TEST(vrtkSceneColumnGet, ReadsWhatWasWritten) {
  const SceneHandle scene = camerasWithAGap();
  const float written[] = {1.0F, 2.0F, 3.0F};
  ASSERT_EQ(set(scene, kNearDistance, 4, {0, 2, 3}, written), VRTK_OK);
  float read[3] = {};
  ASSERT_EQ(get(scene, kNearDistance, 4, {3, 2, 0}, read), VRTK_OK);
  EXPECT_EQ(read[0], 3.0F);
  EXPECT_EQ(read[1], 2.0F);
  EXPECT_EQ(read[2], 1.0F);
}

TEST(vrtkSceneColumnGet, LeavesTheBytesBetweenTheParts) {
  const SceneHandle scene = camerasWithAGap();
  std::vector<char> bytes(2 * 8, 'x');
  ASSERT_EQ(get(scene, kNearDistance, 4, {0, 2}, bytes.data(), 8), VRTK_OK);
  EXPECT_EQ(std::string(bytes.data() + 4, 4), "xxxx");
  EXPECT_EQ(std::string(bytes.data() + 8, 4), std::string(4, '\0'));
}

TEST(vrtkSceneColumnSet, WritesAWholeGroup) {
  const SceneHandle scene = camerasWithAGap();
  float whole[5] = {1.0F, 0.125F, 0.25F, 0.5F, 0.75F};
  ASSERT_EQ(set(scene, 0, kGeneralSize, {2}, whole), VRTK_OK);
  float read[5] = {};
  ASSERT_EQ(get(scene, 0, kGeneralSize, {2}, read), VRTK_OK);
  EXPECT_EQ(std::memcmp(whole, read, sizeof whole), 0);
}

TEST(vrtkSceneColumnSet, CountsTheChangesOfEachObjectGroupClassAndScene) {
  const SceneHandle one = camerasWithAGap();
  const SceneHandle other = camerasWithAGap();
  const float written[] = {0.25F, 0.5F};
  ASSERT_EQ(set(one, kShutterOpen, 4, {0, 3}, written), VRTK_OK);
  for (int i = 0; i < 2; ++i) {
    const std::int32_t slot = i == 0 ? 0 : 3;
    vrntValue_t* value = vrdmGetDataValue(other.get(), VRDM_CLASS_CAMERA, slot, kGeneral);
    vrntValuesError_t* error = nullptr;
    vrntValueWrite(&value, kShutterOpen, &written[i], 4, &error);
    ASSERT_EQ(error, nullptr);
    vrdmSetDataValue(other.get(), VRDM_CLASS_CAMERA, slot, kGeneral, value);
    vrntValueDestroy(value);
  }
  using vrnt::data::CameraDesc;
  const auto& a = std::as_const(*one).container<CameraDesc>();
  const auto& b = std::as_const(*other).container<CameraDesc>();
  for (const std::int32_t slot : {0, 2, 3}) {
    EXPECT_EQ(a.at(slot).version, b.at(slot).version) << slot;
    EXPECT_EQ(a.at(slot).groupVersions, b.at(slot).groupVersions) << slot;
  }
  EXPECT_EQ(one->versions.version, other->versions.version);
  EXPECT_EQ(one->versions.classes, other->versions.classes);
  for (const std::int32_t slot : {0, 2, 3}) {
    EXPECT_EQ(fieldOf(one, slot, kShutterOpen), fieldOf(other, slot, kShutterOpen)) << slot;
  }
}

TEST(vrtkSceneColumnSet, TakesTheLastPartOfASlotThatOccursTwice) {
  const SceneHandle scene = camerasWithAGap();
  const float written[] = {1.0F, 2.0F};
  ASSERT_EQ(set(scene, kShutterOpen, 4, {0, 0}, written), VRTK_OK);
  EXPECT_EQ(fieldOf(scene, 0, kShutterOpen), 2.0F);
}

TEST(vrtkSceneColumnSet, RefusesASlotWithoutALiveObjectAndWritesNothing) {
  const SceneHandle scene = camerasWithAGap();
  const float written[] = {1.0F, 2.0F};
  for (const std::int32_t slot : {1, 4, -1}) {
    EXPECT_EQ(set(scene, kNearDistance, 4, {0, slot}, written), VRTK_INVALID_ARGUMENT) << slot;
    EXPECT_EQ(fieldOf(scene, 0, kNearDistance), 0.0F);
  }
}

TEST(vrtkSceneColumnGet, RefusesAPartThatIsNotInsideOfTheGroup) {
  const SceneHandle scene = camerasWithAGap();
  float read[8] = {7.0F};
  EXPECT_EQ(get(scene, 18, 4, {0}, read), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(get(scene, 24, 0, {0}, read), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(get(scene, UINT64_MAX, 2, {0}, read), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(get(scene, 0, 4, {0, 2}, read, 3), VRTK_INVALID_ARGUMENT) << "a stride of 3";
  EXPECT_EQ(read[0], 7.0F);
}

TEST(vrtkSceneColumnGet, NamesTheSlotThatHasNoObject) {
  const SceneHandle scene = camerasWithAGap();
  float read[1];
  vrtkError* error = nullptr;
  ASSERT_EQ(get(scene, 0, 4, {1}, read, 0, &error), VRTK_INVALID_ARGUMENT);
  const ToolkitError owner(error);
  EXPECT_STREQ(vrtkErrorMessage(error), "vrtkSceneColumnGet: there is no live Camera in slot 1");
}

TEST(vrtkSceneColumnGet, RefusesAClassWithoutTheGroup) {
  const SceneHandle scene = camerasWithAGap();
  float read[1];
  const std::int32_t slot = 0;
  for (const std::uint32_t objectClass : {std::uint32_t{VRDM_CLASS_MESH}, 18U, UINT32_MAX}) {
    EXPECT_EQ(vrtkSceneColumnGet(scene.get(), objectClass, 0, 0, 4, &slot, 1, read, 0, nullptr),
              VRTK_INVALID_ARGUMENT);
  }
}

TEST(vrtkSceneColumnGet, ReadsNothingForNoObjects) {
  const SceneHandle scene = camerasWithAGap();
  EXPECT_EQ(vrtkSceneColumnGet(scene.get(), VRDM_CLASS_CAMERA, kGeneral, 0, 4, nullptr, 0, nullptr,
                               0, nullptr),
            VRTK_OK);
  EXPECT_EQ(vrtkSceneColumnSet(scene.get(), VRDM_CLASS_CAMERA, kGeneral, 0, 4, nullptr, 0, nullptr,
                               0, nullptr),
            VRTK_OK);
}

// A value of the group "General" of a Camera with another near_distance.
ValueHandle generalWith(const SceneHandle& scene, float nearDistance) {
  vrntValue_t* value = vrdmGetDataValue(scene.get(), VRDM_CLASS_CAMERA, 0, kGeneral);
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(&value, kNearDistance, &nearDistance, sizeof nearDistance, &error);
  EXPECT_EQ(error, nullptr);
  return ValueHandle(value);
}

TEST(vrtkSceneGroupSet, WritesAGroupAndCountsTheChangeAsTheLibraryDoes) {
  const SceneHandle one = camerasWithAGap();
  const SceneHandle other = camerasWithAGap();
  const ValueHandle value = generalWith(one, 0.25F);
  const vrtkGroupPlace place{one.get(), value.get(), VRDM_CLASS_CAMERA, 2, kGeneral};
  EXPECT_EQ(vrtkSceneGroupSet(&place), VRTK_OK);
  ASSERT_TRUE(vrdmSetDataValue(other.get(), VRDM_CLASS_CAMERA, 2, kGeneral, value.get()));
  EXPECT_EQ(fieldOf(one, 2, kNearDistance), 0.25F);
  EXPECT_EQ(fieldOf(one, 0, kNearDistance), 0.0F);
  using vrnt::data::CameraDesc;
  const auto& a = std::as_const(*one).container<CameraDesc>().at(2);
  const auto& b = std::as_const(*other).container<CameraDesc>().at(2);
  EXPECT_EQ(a.version, b.version);
  EXPECT_EQ(a.groupVersions, b.groupVersions);
  EXPECT_EQ(one->versions.version, other->versions.version);
  EXPECT_EQ(one->versions.classes, other->versions.classes);
}

TEST(vrtkSceneGroupSet, WritesAGroupOfTheWholeScene) {
  const SceneHandle scene(vrdmCreateScene());
  vrntValue_t* raytracer = vrdmGetSceneDataValue(scene.get(), 2);
  const float epsilon = 0.5F;
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(&raytracer, 0, &epsilon, sizeof epsilon, &error);
  ASSERT_EQ(error, nullptr);
  const ValueHandle value(raytracer);
  const vrtkGroupPlace place{scene.get(), value.get(), VRDM_CLASS_SCENE_DATA, -1, 2};
  EXPECT_EQ(vrtkSceneGroupSet(&place), VRTK_OK);
  const ValueHandle found(vrdmGetSceneDataValue(scene.get(), 2));
  EXPECT_EQ(std::memcmp(vrntValueData(found.get()), &epsilon, sizeof epsilon), 0);
}

TEST(vrtkSceneGroupSet, RefusesWhatIsNoPlaceAndAValueOfAnotherType) {
  const SceneHandle scene = camerasWithAGap();
  const ValueHandle value = generalWith(scene, 0.25F);
  const ValueHandle wrong(vrdmGetSceneDataValue(scene.get(), 2));
  const vrtkGroupPlace right{scene.get(), value.get(), VRDM_CLASS_CAMERA, 0, kGeneral};
  std::vector<vrtkGroupPlace> places(9, right);
  places[0].scene = nullptr;
  places[1].value = nullptr;
  places[2].objectClass = 18;
  places[3].objectClass = VRDM_CLASS_MESH;
  places[4].objectClass = VRDM_CLASS_SCENE_DATA;
  places[5].index = 1;
  places[6].index = -1;
  places[7].group = 99;
  places[8].value = wrong.get();
  for (std::size_t i = 0; i < places.size(); ++i) {
    EXPECT_EQ(vrtkSceneGroupSet(&places[i]), VRTK_INVALID_ARGUMENT) << i;
  }
  EXPECT_EQ(vrtkSceneGroupSet(nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(fieldOf(scene, 0, kNearDistance), 0.0F);
}

}  // namespace
}  // namespace vornath_test
