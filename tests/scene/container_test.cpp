// The container's rules: which slot an addition takes, what stays in a freed one, what counts as a
// reference, and which counters rise.
#include <memory>
#include <new>
#include <type_traits>

#include "scenes.hpp"

namespace {

using namespace vornath_test;
using vrnt::data::CameraDesc;
using vrnt::data::Container;
using vrnt::data::Scene;
using vrnt::data::ShapeDesc;
using vrnt::data::SlotVector;

// Counts the objects of its kind that are alive, and isn't plain bytes.
struct Counted {
  static inline int alive = 0;

  std::unique_ptr<int> number;

  Counted() noexcept { ++alive; }
  Counted(Counted&& other) noexcept : number(std::move(other.number)) { ++alive; }
  Counted& operator=(Counted&&) noexcept = default;
  ~Counted() { --alive; }
};

TEST(SlotVector, KeepsElementsThatOwnWhenItGrows) {
  {
    SlotVector<Counted> vector;
    EXPECT_TRUE(vector.empty());
    for (int i = 0; i < 1000; ++i) vector.append().number = std::make_unique<int>(i);
    EXPECT_EQ(vector.size(), 1000U);
    EXPECT_EQ(Counted::alive, 1000);
    for (std::size_t i = 0; i < 1000; ++i) EXPECT_EQ(*vector[i].number, static_cast<int>(i));
    vector.grow(1500);
    EXPECT_EQ(vector.size(), 1500U);
    EXPECT_EQ(Counted::alive, 1500);
    EXPECT_EQ(vector[1499].number, nullptr);
    vector.grow(10);
    EXPECT_EQ(vector.size(), 1500U);
  }
  EXPECT_EQ(Counted::alive, 0);
}

TEST(SlotVector, KeepsElementsOfPlainBytesWhenItGrows) {
  struct Plain {
    std::uint32_t words[100] = {7};
  };
  static_assert(std::is_trivially_copyable_v<Plain>);
  SlotVector<Plain> vector;
  // Past the size from which memory comes in pages of its own.
  for (std::uint32_t i = 0; i < 20000; ++i) {
    Plain& added = vector.append();
    ASSERT_EQ(added.words[0], 7U);
    added.words[99] = i;
  }
  for (std::uint32_t i = 0; i < 20000; ++i) ASSERT_EQ(vector[i].words[99], i);
}

TEST(SlotVector, GivesItsElementsAwayWhenItIsMoved) {
  SlotVector<Counted> source;
  source.append().number = std::make_unique<int>(1);
  SlotVector<Counted> moved(std::move(source));
  EXPECT_EQ(source.size(), 0U);
  EXPECT_EQ(moved.size(), 1U);
  SlotVector<Counted> assigned;
  assigned.append();
  assigned.append();
  assigned = std::move(moved);
  EXPECT_EQ(assigned.size(), 1U);
  EXPECT_EQ(*assigned[0].number, 1);
  EXPECT_EQ(Counted::alive, 1);
}

TEST(SlotVector, KeepsWhatItHasIfThereIsNoMemory) {
  // A compiler that saw these numbers would warn of what is tested here.
  const volatile std::size_t most = SIZE_MAX;
  SlotVector<Counted> vector;
  vector.append().number = std::make_unique<int>(1);
  EXPECT_THROW(vector.reserve(most), std::bad_alloc);
  EXPECT_THROW(vector.reserve(most / 4 / sizeof(Counted)), std::bad_alloc);
  EXPECT_THROW(vector.grow(most), std::bad_alloc);
  EXPECT_EQ(vector.size(), 1U);
  EXPECT_EQ(*vector[0].number, 1);
  SlotVector<int> plain;
  plain.append() = 5;
  EXPECT_THROW(plain.reserve(most / 4 / sizeof(int)), std::bad_alloc);
  EXPECT_EQ(plain[0], 5);
}

struct Element {
  bool used = false;
  bool live() const { return used; }
};

std::uint32_t add(Container<Element>& container) {
  const std::uint32_t index = container.allocate();
  EXPECT_FALSE(container.slots[index].used);
  container.slots[index].used = true;
  return index;
}

void remove(Container<Element>& container, std::int32_t index) {
  container.at(index).used = false;
  container.freed(index);
}

TEST(Container, GivesSlotsInOrderWhileThereAreNoGaps) {
  Container<Element> container;
  for (std::uint32_t i = 0; i < 100; ++i) {
    EXPECT_EQ(add(container), i);
    EXPECT_EQ(container.firstFree, i + 1);
    EXPECT_EQ(container.size(), i + 1);
  }
}

TEST(Container, GivesTheLowestGapFirst) {
  Container<Element> container;
  for (int i = 0; i < 6; ++i) add(container);
  remove(container, 4);
  EXPECT_EQ(container.firstFree, 4U);
  remove(container, 1);
  EXPECT_EQ(container.firstFree, 1U);
  remove(container, 2);
  EXPECT_EQ(container.firstFree, 1U);
  EXPECT_EQ(add(container), 1U);
  EXPECT_EQ(container.firstFree, 2U);
  EXPECT_EQ(add(container), 2U);
  EXPECT_EQ(container.firstFree, 4U);
  EXPECT_EQ(add(container), 4U);
  EXPECT_EQ(container.firstFree, 6U);
  EXPECT_EQ(add(container), 6U);
  EXPECT_EQ(container.size(), 7U);
}

TEST(Container, GrowsByFreeSlotsAndNeverShrinks) {
  Container<Element> container;
  add(container);
  container.grow(4);
  EXPECT_EQ(container.size(), 4U);
  EXPECT_EQ(container.firstFree, 1U);
  container.grow(2);
  EXPECT_EQ(container.size(), 4U);
  EXPECT_EQ(add(container), 1U);
}

TEST(Container, MovesItsFirstFreeSlotOnlyIfThatOneWasOccupied) {
  Container<Element> container;
  container.grow(4);
  container.slots[2].used = true;
  container.occupied(2);
  EXPECT_EQ(container.firstFree, 0U);
  container.slots[0].used = true;
  container.occupied(0);
  EXPECT_EQ(container.firstFree, 1U);
  container.slots[1].used = true;
  container.occupied(1);
  EXPECT_EQ(container.firstFree, 3U);
}

TEST(Container, KnowsNoObjectOutsideItsSlots) {
  Container<Element> container;
  EXPECT_FALSE(container.valid(0));
  add(container);
  EXPECT_TRUE(container.valid(0));
  EXPECT_FALSE(container.valid(1));
  EXPECT_FALSE(container.valid(-1));
  EXPECT_FALSE(container.valid(INT32_MIN));
  EXPECT_FALSE(container.valid(INT32_MAX));
}

TEST(Scene, IsNewWithEmptyContainersAndCountersOfZero) {
  const SceneHandle scene = newScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    EXPECT_EQ(vrdmContainerSize(scene.get(), c), 0U);
    EXPECT_FALSE(vrdmValid(scene.get(), c, 0));
    EXPECT_EQ(scene->versions.classes[c], 0U);
  }
  EXPECT_EQ(scene->versions.version, 0U);
  for (const std::uint32_t group : scene->versions.groups) EXPECT_EQ(group, 0U);
}

TEST(Scene, HasTwentyThreeCounters) {
  EXPECT_EQ(sizeof(vrnt::data::SceneVersions), 23 * sizeof(std::uint32_t));
}

TEST(Scene, BeginsWithItsId) {
  const SceneHandle scene = newScene();
  EXPECT_EQ(static_cast<const void*>(vrdmSceneId(scene.get())),
            static_cast<const void*>(scene.get()));
}

TEST(Scene, StartsFromTheDefaultSettings) {
  const SceneHandle scene = newScene();
  const auto bytes = [&scene](std::uint32_t group) {
    const ValueHandle value(vrdmGetSceneDataValue(scene.get(), group));
    return std::string(static_cast<const char*>(vrntValueData(value.get())),
                       vrntTypeSize(vrntValueType(value.get())));
  };
  const std::string planes = bytes(0);
  ASSERT_EQ(planes.size(), 288U);
  for (std::size_t plane = 0; plane < 6; ++plane) {
    for (std::size_t lane = 0; lane < 3; ++lane) {
      EXPECT_EQ(readBytes<float>(planes, plane * 48 + lane * 4), 0.0F);
      EXPECT_EQ(readBytes<float>(planes, plane * 48 + 16 + lane * 4), lane == 2 ? 1.0F : 0.0F);
    }
    EXPECT_EQ(readBytes<std::uint32_t>(planes, plane * 48 + 32), 0U);
  }
  const std::string rasterizer = bytes(1);
  ASSERT_EQ(rasterizer.size(), 8U);
  EXPECT_EQ(readBytes<std::int32_t>(rasterizer, 0), 128);
  EXPECT_EQ(readBytes<std::uint32_t>(rasterizer, 4), 0U);
  const std::string raytracer = bytes(2);
  ASSERT_EQ(raytracer.size(), 8U);
  EXPECT_EQ(readBytes<std::uint32_t>(raytracer, 0), 0x38D1B717U);
  EXPECT_EQ(readBytes<std::int32_t>(raytracer, 4), 2);
  const std::string general = bytes(3);
  ASSERT_EQ(general.size(), 12U);
  EXPECT_EQ(readBytes<std::uint32_t>(general, 0), 0U);
  EXPECT_EQ(readBytes<float>(general, 4), 0.0F);
  EXPECT_EQ(readBytes<std::int32_t>(general, 8), 0);
}

TEST(Scene, HasARandomIdUnlessOneIsGiven) {
  const SceneHandle first = newScene();
  const SceneHandle second = newScene();
  EXPECT_NE(idText(vrdmSceneId(first.get())), idText(vrdmSceneId(second.get())));
  EXPECT_FALSE(vrdmSceneId(first.get())->isNull());
  const vrnt::UniqueId id = vrnt::UniqueId::hash("mine");
  const Scene named(id);
  EXPECT_EQ(idText(vrdmSceneId(&named)), idText(&id));
}

TEST(Scene, MovesWithAllThatItHolds) {
  Scene source;
  vrdmAddProgram(&source, VRDM_CLASS_LIGHT_PROGRAM, "lamp");
  addGraph(&source, "graph");
  const std::int32_t shape = addInstance(&source, VRDM_CLASS_SHAPE);
  vrdmSetReference(&source, VRDM_CLASS_SHAPE, shape, 0, 7);
  const std::string id = idText(vrdmSceneId(&source));
  const Counters counters(&source);

  Scene moved(std::move(source));
  EXPECT_EQ(idText(vrdmSceneId(&moved)), id);
  EXPECT_EQ(Counters(&moved), counters);
  EXPECT_STREQ(vrdmGetProgramSource(&moved, VRDM_CLASS_LIGHT_PROGRAM, 0), "lamp");
  EXPECT_EQ(vrdmGetReference(&moved, VRDM_CLASS_SHAPE, shape, 0), 7);

  Scene assigned;
  addInstance(&assigned, VRDM_CLASS_CAMERA);
  assigned = std::move(moved);
  EXPECT_EQ(idText(vrdmSceneId(&assigned)), id);
  EXPECT_EQ(vrdmContainerSize(&assigned, VRDM_CLASS_CAMERA), 0U);
  EXPECT_TRUE(vrdmValid(&assigned, VRDM_CLASS_MATERIAL_GRAPH, 0));
  EXPECT_EQ(vrdmCreateInstance(&assigned, VRDM_CLASS_SHAPE), 1U);
}

TEST(Scene, LeavesNothingBehindWhenItIsMoved) {
  Scene source;
  vrdmCreateInstance(&source, VRDM_CLASS_SHAPE);
  const Scene moved(std::move(source));
  // A moved-from scene may be used again, from slot 0 on.
  EXPECT_EQ(vrdmContainerSize(&source, VRDM_CLASS_SHAPE), 0U);
  EXPECT_EQ(vrdmCreateInstance(&source, VRDM_CLASS_SHAPE), 0U);
}

TEST(Slots, AreUsedAgainAfterARemovalInEveryClass) {
  const SceneHandle scene = newScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    EXPECT_EQ(addObject(scene.get(), c), 0U) << c;
    EXPECT_TRUE(vrdmValid(scene.get(), c, 0)) << c;
    EXPECT_TRUE(vrdmRemove(scene.get(), c, 0)) << c;
    EXPECT_FALSE(vrdmValid(scene.get(), c, 0)) << c;
    EXPECT_EQ(vrdmContainerSize(scene.get(), c), 1U) << c;
    EXPECT_EQ(addObject(scene.get(), c), 0U) << c;
    EXPECT_TRUE(vrdmValid(scene.get(), c, 0)) << c;
    EXPECT_EQ(vrdmContainerSize(scene.get(), c), 1U) << c;
  }
}

TEST(Slots, AreFilledFromTheLowestGapInEveryClass) {
  const SceneHandle scene = newScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    for (std::uint32_t i = 0; i < 4; ++i) EXPECT_EQ(addObject(scene.get(), c), i);
    vrdmRemove(scene.get(), c, 2);
    vrdmRemove(scene.get(), c, 0);
    EXPECT_EQ(addObject(scene.get(), c), 0U) << c;
    EXPECT_EQ(addObject(scene.get(), c), 2U) << c;
    EXPECT_EQ(addObject(scene.get(), c), 4U) << c;
    EXPECT_EQ(vrdmContainerSize(scene.get(), c), 5U) << c;
  }
}

TEST(Slots, MayBeRemovedTwice) {
  const SceneHandle scene = newScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    addObject(scene.get(), c);
    addObject(scene.get(), c);
    const Counters before(scene.get());
    EXPECT_TRUE(vrdmRemove(scene.get(), c, 0));
    EXPECT_TRUE(vrdmRemove(scene.get(), c, 0));
    EXPECT_EQ(Counters(scene.get()), afterClassChange(before, c, 2));
    EXPECT_FALSE(vrdmValid(scene.get(), c, 0));
    EXPECT_TRUE(vrdmValid(scene.get(), c, 1));
    EXPECT_EQ(addObject(scene.get(), c), 0U);
    EXPECT_EQ(addObject(scene.get(), c), 2U);
  }
}

TEST(References, KeepTheNumberOfARemovedObject) {
  const SceneHandle scene = newScene();
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  const std::int32_t material = addInstance(scene.get(), VRDM_CLASS_MATERIAL);
  const std::int32_t shape = addInstance(scene.get(), VRDM_CLASS_SHAPE);
  vrdmSetReference(scene.get(), VRDM_CLASS_SHAPE, shape, 0, static_cast<std::uint32_t>(material));
  vrdmRemove(scene.get(), VRDM_CLASS_MATERIAL, material);
  EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_SHAPE, shape, 0), material);
  EXPECT_FALSE(vrdmValid(scene.get(), VRDM_CLASS_MATERIAL, material));
  EXPECT_EQ(addInstance(scene.get(), VRDM_CLASS_MATERIAL), material);
  EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_SHAPE, shape, 0), material);
  EXPECT_TRUE(vrdmValid(scene.get(), VRDM_CLASS_MATERIAL, material));
}

TEST(Instances, StartWithUnsetSlotsAndEmptyLists) {
  const SceneHandle scene = newScene();
  for (const std::uint32_t c : kInstances) {
    const std::int32_t index = addInstance(scene.get(), c);
    for (std::uint32_t slot = 0; slot < vrdmReferenceCount(c); ++slot) {
      const std::uint32_t kind = vrdmReferenceType(c, slot).kind;
      const bool single = kind == VRDM_REFERENCE_REQUIRED || kind == VRDM_REFERENCE_OPTIONAL;
      EXPECT_EQ(vrdmGetReference(scene.get(), c, index, slot), single ? -1 : 0) << c << " " << slot;
      EXPECT_EQ(vrdmGetReferenceList(scene.get(), c, index, slot), nullptr);
    }
  }
}

// The texture references within groups: class, group, and offset in bytes.
struct TextureReference {
  std::uint32_t owner, group, offset;
};
const TextureReference kTextureReferences[] = {
    {VRDM_CLASS_CAMERA, 3, 16}, {VRDM_CLASS_SHAPE, 10, 4}, {VRDM_CLASS_SHAPE, 10, 12}};

TEST(Instances, StartWithDefaultGroups) {
  const SceneHandle scene = newScene();
  for (const std::uint32_t c : kInstances) {
    const std::int32_t index = addInstance(scene.get(), c);
    for (std::uint32_t group = 0; group < vrdmFieldCount(c); ++group) {
      const TypeHandle type(vrdmFieldType(c, group));
      vrntValuesError_t* error = nullptr;
      const ValueHandle parsed(vrntValueCreateDefault(type.get(), &error));
      ValueHandle value(vrdmGetDataValue(scene.get(), c, index, group));
      ASSERT_NE(parsed, nullptr);
      ASSERT_NE(value, nullptr);
      // A texture reference starts at none, which its schema doesn't say.
      vrntValue_t* compared = value.release();
      for (const auto& [owner, place, offset] : kTextureReferences) {
        if (c != owner || group != place) continue;
        std::int32_t word = 0;
        std::memcpy(&word, static_cast<const char*>(vrntValueData(compared)) + offset, 4);
        EXPECT_EQ(word, -1);
        word = 0;
        vrntValueWrite(&compared, offset, &word, 4, &error);
      }
      value.reset(compared);
      const vrntValueView_t a{vrntValueType(value.get()), 0};
      const vrntValueView_t b{vrntValueType(parsed.get()), 0};
      char* reason = nullptr;
      EXPECT_EQ(vrntValueEqual(value.get(), &a, parsed.get(), &b, 0.0F, &reason), 1)
          << vrdmObjectName(c) << " " << vrdmFieldName(c, group) << ": " << (reason ? reason : "");
      if (reason) vrntDestroyString(reason);
    }
  }
}

TEST(Instances, StartAfreshInAReusedSlotButKeepTheFormerValue) {
  const SceneHandle scene = newScene();
  const std::int32_t camera = addInstance(scene.get(), VRDM_CLASS_CAMERA);
  const std::string general = groupBytes(scene.get(), VRDM_CLASS_CAMERA, camera, 1);
  std::string changed = general;
  changed[0] = 1;
  const ValueHandle record = groupValue(VRDM_CLASS_CAMERA, 1, changed);
  EXPECT_TRUE(vrdmSetDataValue(scene.get(), VRDM_CLASS_CAMERA, camera, 1, record.get()));
  EXPECT_EQ(groupBytes(scene.get(), VRDM_CLASS_CAMERA, camera, 1), changed);
  for (std::uint32_t slot = 0; slot < 3; ++slot) {
    vrdmSetReference(scene.get(), VRDM_CLASS_CAMERA, camera, slot, 5);
  }
  const ValueHandle value = parseValue("{ a = 1; }");
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_CAMERA, camera, value.get());
  vrdmRemove(scene.get(), VRDM_CLASS_CAMERA, camera);

  EXPECT_EQ(addInstance(scene.get(), VRDM_CLASS_CAMERA), camera);
  for (std::uint32_t slot = 0; slot < 3; ++slot) {
    EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_CAMERA, camera, slot), -1);
  }
  EXPECT_EQ(groupBytes(scene.get(), VRDM_CLASS_CAMERA, camera, 1), general);
  const ValueHandle kept(vrdmGetInstanceValue(scene.get(), VRDM_CLASS_CAMERA, camera));
  EXPECT_EQ(kept, value);
}

TEST(Instances, StartWithEmptyListsInAReusedSlot) {
  const SceneHandle scene = newScene();
  const std::int32_t list = addInstance(scene.get(), VRDM_CLASS_KEYFRAME_LIST);
  setList(scene.get(), VRDM_CLASS_KEYFRAME_LIST, list, 0, {1, 2, 3});
  vrdmRemove(scene.get(), VRDM_CLASS_KEYFRAME_LIST, list);
  EXPECT_EQ(listOf(scene.get(), VRDM_CLASS_KEYFRAME_LIST, list, 0),
            (std::vector<std::int32_t>{1, 2, 3}));
  EXPECT_EQ(addInstance(scene.get(), VRDM_CLASS_KEYFRAME_LIST), list);
  EXPECT_EQ(vrdmGetReferenceCount(scene.get(), VRDM_CLASS_KEYFRAME_LIST, list, 0), 0);
}

TEST(Instances, ContinueTheCountsOfAReusedSlot) {
  const SceneHandle scene = newScene();
  vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  const auto& camera = scene->container<CameraDesc>().slots[0];
  EXPECT_EQ(camera.version, 1U);
  EXPECT_EQ(camera.referencesVersion, 1U);
  for (const std::uint32_t group : camera.groupVersions) EXPECT_EQ(group, 1U);
  vrdmRemove(scene.get(), VRDM_CLASS_CAMERA, 0);
  EXPECT_EQ(camera.version, 1U);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  EXPECT_EQ(camera.version, 2U);
  EXPECT_EQ(camera.referencesVersion, 2U);
  for (const std::uint32_t group : camera.groupVersions) EXPECT_EQ(group, 2U);
}

TEST(Instances, ShareTheValueThatTheyAreGiven) {
  const SceneHandle scene = newScene();
  const ValueHandle value = parseValue("{ a = 1; }");
  EXPECT_EQ(value->refCount, 1U);
  for (const std::uint32_t c : kWithValue) {
    const std::int32_t index = addInstance(scene.get(), c);
    vrdmSetInstanceValue(scene.get(), c, index, value.get());
    EXPECT_EQ(value->refCount, 2U);
    const ValueHandle other = parseValue("{ b = 2; }");
    vrdmSetInstanceValue(scene.get(), c, index, other.get());
    EXPECT_EQ(value->refCount, 1U);
    EXPECT_EQ(other->refCount, 2U);
    // Also over itself.
    vrdmSetInstanceValue(scene.get(), c, index, other.get());
    EXPECT_EQ(other->refCount, 2U);
  }
}

TEST(Instances, KeepWhatTheyHoldWhenTheirClassGrows) {
  const SceneHandle scene = newScene();
  const ValueHandle value = parseValue("{ a = 1; }");
  for (std::int32_t i = 0; i < 300; ++i) {
    addInstance(scene.get(), VRDM_CLASS_LIGHT);
    setList(scene.get(), VRDM_CLASS_LIGHT, i, 2, {i, i + 1});
    vrdmSetReference(scene.get(), VRDM_CLASS_LIGHT, i, 1, static_cast<std::uint32_t>(i));
    vrdmSetInstanceValue(scene.get(), VRDM_CLASS_LIGHT, i, value.get());
  }
  EXPECT_EQ(value->refCount, 301U);
  for (std::int32_t i = 0; i < 300; ++i) {
    EXPECT_EQ(listOf(scene.get(), VRDM_CLASS_LIGHT, i, 2), (std::vector<std::int32_t>{i, i + 1}));
    EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_LIGHT, i, 1), i);
    const ValueHandle kept(vrdmGetInstanceValue(scene.get(), VRDM_CLASS_LIGHT, i));
    EXPECT_EQ(kept, value);
  }
}

TEST(Programs, KeepTheirTextAfterRemoval) {
  const SceneHandle scene = newScene();
  for (const std::uint32_t c : kPrograms) {
    vrdmAddProgram(scene.get(), c, "one");
    vrdmRemove(scene.get(), c, 0);
    EXPECT_TRUE(vrdmGetUniqueId(scene.get(), c, 0)->isNull());
    EXPECT_STREQ(vrdmGetProgramSource(scene.get(), c, 0), "one");
    EXPECT_EQ(vrdmAddProgram(scene.get(), c, "two"), 0U);
    EXPECT_STREQ(vrdmGetProgramSource(scene.get(), c, 0), "two");
  }
}

TEST(Programs, OfEqualTextHaveEqualIdsInTheirOwnSlots) {
  const SceneHandle scene = newScene();
  EXPECT_EQ(vrdmAddProgram(scene.get(), VRDM_CLASS_LIGHT_PROGRAM, "abc"), 0U);
  EXPECT_EQ(vrdmAddProgram(scene.get(), VRDM_CLASS_LIGHT_PROGRAM, "abc"), 1U);
  EXPECT_EQ(vrdmAddProgram(scene.get(), VRDM_CLASS_LIGHT_PROGRAM, "abd"), 2U);
  const auto id = [&scene](std::int32_t index) {
    return *vrdmGetUniqueId(scene.get(), VRDM_CLASS_LIGHT_PROGRAM, index);
  };
  EXPECT_TRUE(id(0) == id(1));
  EXPECT_FALSE(id(0) == id(2));
  // The published digest of these three bytes.
  EXPECT_TRUE(id(0) == *vrnt::UniqueId::parse("8275618601ff911fb1d3bbaae5a9276d"));
}

TEST(Programs, AreCopiesOfTheirText) {
  const SceneHandle scene = newScene();
  std::string text = "before";
  vrdmAddProgram(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, text.c_str());
  text = "after";
  EXPECT_STREQ(vrdmGetProgramSource(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, 0), "before");
}

TEST(Assets, AreFreeInOneSceneAndLiveInAnotherThatSharesTheirBytes) {
  const SceneHandle first = newScene();
  const SceneHandle second = newScene();
  const std::array<std::uint64_t, 3> desc = {5, 0, 0};
  StorageHandle storage = newStorage("bytes");
  AssetStorage* handle = storage.get();
  vrdmAddAsset(first.get(), VRDM_CLASS_MATERIAL_GRAPH, desc.data(), &handle);
  vrdmAddAsset(second.get(), VRDM_CLASS_MATERIAL_GRAPH, desc.data(), &handle);
  EXPECT_EQ(storage->references, 3U);
  storage.reset();
  EXPECT_EQ(handle->references, 2U);
  vrdmRemove(first.get(), VRDM_CLASS_MATERIAL_GRAPH, 0);
  EXPECT_EQ(handle->references, 1U);
  EXPECT_FALSE(vrdmValid(first.get(), VRDM_CLASS_MATERIAL_GRAPH, 0));
  EXPECT_TRUE(vrdmValid(second.get(), VRDM_CLASS_MATERIAL_GRAPH, 0));
  AssetStorage* const kept =
      *vrdmGetAssetStorage(second.get(), VRDM_CLASS_MATERIAL_GRAPH, 0, nullptr);
  EXPECT_EQ(std::string(static_cast<const char*>(kept->data), kept->size), "bytes");
}

TEST(Assets, KeepIdAndDescAfterRemoval) {
  const SceneHandle scene = newScene();
  addGraph(scene.get(), "bytes");
  const std::string id = idText(vrdmGetUniqueId(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0));
  vrdmRemove(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0);
  EXPECT_EQ(idText(vrdmGetUniqueId(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0)), id);
  std::array<std::uint64_t, 3> desc = {};
  AssetStorage** const place =
      vrdmGetAssetStorage(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0, desc.data());
  EXPECT_EQ(desc[0], 5U);
  EXPECT_EQ(*place, nullptr);
}

TEST(Assets, OfEqualBytesHaveIdsOfTheirOwn) {
  const SceneHandle scene = newScene();
  addGraph(scene.get(), "bytes");
  addGraph(scene.get(), "bytes");
  EXPECT_NE(idText(vrdmGetUniqueId(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0)),
            idText(vrdmGetUniqueId(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 1)));
}

TEST(Assets, WithoutDataAreFree) {
  const SceneHandle scene = newScene();
  const std::array<std::uint64_t, 3> desc = {};
  AssetStorage* empty = vrdmAssetStorageWrap(nullptr, 0, nullptr);
  EXPECT_EQ(vrdmAddAsset(scene.get(), VRDM_CLASS_MESH, desc.data(), &empty), 0U);
  EXPECT_FALSE(vrdmValid(scene.get(), VRDM_CLASS_MESH, 0));
  vrdmAssetStorageRelease(empty);
  AssetStorage* none = nullptr;
  EXPECT_EQ(vrdmAddAsset(scene.get(), VRDM_CLASS_MESH, desc.data(), &none), 1U);
  EXPECT_FALSE(vrdmValid(scene.get(), VRDM_CLASS_MESH, 1));
}

// What a host's release function was called on, in order.
std::vector<void*> releasedPlaces;
void noteRelease(void* place) { releasedPlaces.push_back(place); }

TEST(Scene, EndsItsContainersFromTheLastClassToTheFirst) {
  releasedPlaces.clear();
  std::array<AssetStorage, 3> blocks;
  char byte = 0;
  SceneHandle scene = newScene();
  for (const std::uint32_t c : kAssets) {
    AssetStorage& block = blocks[c - VRDM_CLASS_MESH];
    block = AssetStorage{0, 1, 0, &byte, noteRelease};
    AssetStorage* handle = &block;
    const std::array<std::uint64_t, 3> desc = {};
    vrdmAddAsset(scene.get(), c, desc.data(), &handle);
    vrdmAssetStorageRelease(handle);
  }
  EXPECT_TRUE(releasedPlaces.empty());
  scene.reset();
  EXPECT_EQ(releasedPlaces, (std::vector<void*>{&blocks[2], &blocks[1], &blocks[0]}));
}

struct CountedSlot {
  std::uint32_t target;
  std::uint32_t owner;
  std::uint32_t slot;
  bool list;
  bool countsNone;  // a search for -1 finds what is unset
};

const CountedSlot kCountedSlots[] = {
    {VRDM_CLASS_CAMERA_PROGRAM, VRDM_CLASS_CAMERA, 0, false, true},
    {VRDM_CLASS_MATERIAL_PROGRAM, VRDM_CLASS_MATERIAL, 0, false, false},
    {VRDM_CLASS_LIGHT_PROGRAM, VRDM_CLASS_LIGHT, 0, false, true},
    {VRDM_CLASS_MESH, VRDM_CLASS_SHAPE, 1, false, false},
    {VRDM_CLASS_TEXTURE, VRDM_CLASS_CAMERA, 1, false, false},
    {VRDM_CLASS_TEXTURE, VRDM_CLASS_LIGHT, 2, true, true},
    {VRDM_CLASS_TEXTURE, VRDM_CLASS_MATERIAL, 2, true, true},
    {VRDM_CLASS_TEXTURE, VRDM_CLASS_SHAPE, 5, false, false},
    {VRDM_CLASS_TEXTURE, VRDM_CLASS_SHAPE, 6, false, false},
    {VRDM_CLASS_MATERIAL_GRAPH, VRDM_CLASS_MATERIAL, 1, false, false},
    {VRDM_CLASS_KEYFRAME, VRDM_CLASS_KEYFRAME_LIST, 0, true, true},
    {VRDM_CLASS_KEYFRAME_LIST, VRDM_CLASS_CAMERA, 2, false, false},
    {VRDM_CLASS_KEYFRAME_LIST, VRDM_CLASS_SHAPE, 8, false, false},
    {VRDM_CLASS_CAMERA, VRDM_CLASS_IMAGE_TASK, 0, false, true},
    {VRDM_CLASS_TRANSFORMATION_GROUP, VRDM_CLASS_LIGHT, 1, false, false},
    {VRDM_CLASS_TRANSFORMATION_GROUP, VRDM_CLASS_DECAL, 2, false, false},
    {VRDM_CLASS_TRANSFORMATION_GROUP, VRDM_CLASS_SHAPE, 3, false, false},
    {VRDM_CLASS_LIGHT_GROUP, VRDM_CLASS_SHAPE, 2, false, false},
    {VRDM_CLASS_MATERIAL, VRDM_CLASS_DECAL, 0, false, true},
    {VRDM_CLASS_MATERIAL, VRDM_CLASS_DECAL, 1, false, true},
    {VRDM_CLASS_MATERIAL, VRDM_CLASS_SHAPE, 0, false, true},
    {VRDM_CLASS_MATERIAL, VRDM_CLASS_SHAPE, 7, false, false},
    {VRDM_CLASS_DECAL_LIST, VRDM_CLASS_SHAPE, 4, false, false},
    {VRDM_CLASS_SHAPE, VRDM_CLASS_BAKE_TASK, 0, true, true},
};

TEST(vrdmCountReferences, CountsEachSlotThatRefersToTheClass) {
  for (const CountedSlot& counted : kCountedSlots) {
    SCOPED_TRACE(testing::Message() << vrdmObjectName(counted.owner) << " " << counted.slot);
    const SceneHandle scene = newScene();
    for (int i = 0; i < 3; ++i) vrdmCreateInstance(scene.get(), counted.owner);
    const auto refer = [&](std::int32_t owner, std::vector<std::int32_t> words) {
      if (counted.list) {
        setList(scene.get(), counted.owner, owner, counted.slot, words);
      } else {
        vrdmSetReference(scene.get(), counted.owner, owner, counted.slot,
                         static_cast<std::uint32_t>(words[0]));
      }
    };
    EXPECT_EQ(vrdmCountReferences(scene.get(), counted.target, 3), 0U);
    refer(0, {3});
    EXPECT_EQ(vrdmCountReferences(scene.get(), counted.target, 3), 1U);
    refer(2, {3});
    EXPECT_EQ(vrdmCountReferences(scene.get(), counted.target, 3), 2U);
    EXPECT_EQ(vrdmCountReferences(scene.get(), counted.target, 4), 0U);
    refer(1, {4});
    EXPECT_EQ(vrdmCountReferences(scene.get(), counted.target, 4), 1U);
    if (counted.list) {
      refer(1, {3, 4, 3});
      EXPECT_EQ(vrdmCountReferences(scene.get(), counted.target, 3), 4U);
      EXPECT_EQ(vrdmCountReferences(scene.get(), counted.target, 4), 1U);
    }
    vrdmRemove(scene.get(), counted.owner, 0);
    vrdmRemove(scene.get(), counted.owner, 1);
    EXPECT_EQ(vrdmCountReferences(scene.get(), counted.target, 3), 1U);
    EXPECT_EQ(vrdmCountReferences(scene.get(), counted.target, 4), 0U);
  }
}

TEST(vrdmCountReferences, LooksIntoNoOtherSlot) {
  // Every slot of every class that isn't in the table refers to 3, and no count sees it.
  const SceneHandle scene = newScene();
  for (const std::uint32_t owner : kInstances) {
    const std::int32_t index = addInstance(scene.get(), owner);
    for (std::uint32_t slot = 0; slot < vrdmReferenceCount(owner); ++slot) {
      bool counted = false;
      for (const CountedSlot& known : kCountedSlots) {
        counted = counted || (known.owner == owner && known.slot == slot);
      }
      if (counted) continue;
      setList(scene.get(), owner, index, slot, {3, ~3});
    }
  }
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    EXPECT_EQ(vrdmCountReferences(scene.get(), c, 3), 0U) << c;
    EXPECT_EQ(vrdmCountReferences(scene.get(), c, ~3), 0U) << c;
  }
}

TEST(vrdmCountReferences, FindsUnsetRequiredSlotsButNoUnsetOptionalOnes) {
  for (const CountedSlot& counted : kCountedSlots) {
    if (counted.list) continue;
    SCOPED_TRACE(testing::Message() << vrdmObjectName(counted.owner) << " " << counted.slot);
    const SceneHandle scene = newScene();
    vrdmCreateInstance(scene.get(), counted.owner);
    std::uint32_t expected = 0;
    for (const CountedSlot& other : kCountedSlots) {
      if (other.owner == counted.owner && other.target == counted.target && !other.list &&
          other.countsNone) {
        ++expected;
      }
    }
    EXPECT_EQ(vrdmCountReferences(scene.get(), counted.target, -1), expected);
  }
}

TEST(vrdmCountReferences, DoesNotCountTheLightsOfALightGroup) {
  const SceneHandle scene = newScene();
  vrdmCreateInstance(scene.get(), VRDM_CLASS_LIGHT);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE);
  const std::int32_t group = addInstance(scene.get(), VRDM_CLASS_LIGHT_GROUP);
  setList(scene.get(), VRDM_CLASS_LIGHT_GROUP, group, 0, {~0, 0});
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_LIGHT, 0), 0U);
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_SHAPE, 0), 0U);
}

TEST(References, LengthenListsByNoTarget) {
  const SceneHandle scene = newScene();
  for (const std::uint32_t c : kInstances) {
    const std::int32_t index = addInstance(scene.get(), c);
    for (std::uint32_t slot = 0; slot < vrdmReferenceCount(c); ++slot) {
      const std::uint32_t kind = vrdmReferenceType(c, slot).kind;
      if (kind == VRDM_REFERENCE_REQUIRED || kind == VRDM_REFERENCE_OPTIONAL) continue;
      const std::int32_t filler = kind == VRDM_REFERENCE_LIST ? -1 : kNoTarget;
      SCOPED_TRACE(testing::Message() << vrdmObjectName(c) << " " << slot);
      setList(scene.get(), c, index, slot, {4, 5});
      EXPECT_TRUE(vrdmSetReferenceCount(scene.get(), c, index, slot, 4));
      EXPECT_EQ(listOf(scene.get(), c, index, slot),
                (std::vector<std::int32_t>{4, 5, filler, filler}));
      EXPECT_TRUE(vrdmSetReference(scene.get(), c, index, slot, 1));
      EXPECT_EQ(listOf(scene.get(), c, index, slot), (std::vector<std::int32_t>{4}));
      EXPECT_TRUE(vrdmSetReference(scene.get(), c, index, slot, 0));
      EXPECT_EQ(vrdmGetReferenceList(scene.get(), c, index, slot), nullptr);
    }
  }
}

TEST(Counters, RiseOnAdditionAndRemovalOfTheirClassAlone) {
  const SceneHandle scene = newScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    Counters before(scene.get());
    addObject(scene.get(), c);
    EXPECT_EQ(Counters(scene.get()), afterClassChange(before, c)) << c;
    before = Counters(scene.get());
    vrdmRemove(scene.get(), c, 0);
    EXPECT_EQ(Counters(scene.get()), afterClassChange(before, c)) << c;
  }
}

TEST(Counters, OfTheClassRiseWhenAGroupIsRefusedThoseOfTheObjectDoNot) {
  const SceneHandle scene = newScene();
  vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  const auto& camera = scene->container<CameraDesc>().slots[0];
  const ValueHandle wrong = parseValue("{ a = 1; }");
  const Counters before(scene.get());
  EXPECT_FALSE(vrdmSetDataValue(scene.get(), VRDM_CLASS_CAMERA, 0, 1, wrong.get()));
  EXPECT_EQ(Counters(scene.get()), afterClassChange(before, VRDM_CLASS_CAMERA));
  EXPECT_EQ(camera.version, 1U);
  EXPECT_EQ(camera.groupVersions[1], 1U);
}

TEST(Counters, OfAGroupRiseWhenItIsWritten) {
  const SceneHandle scene = newScene();
  vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE);
  const auto& shape = scene->container<ShapeDesc>().slots[0];
  for (std::uint32_t group = 0; group < 14; ++group) {
    const ValueHandle value(vrdmGetDataValue(scene.get(), VRDM_CLASS_SHAPE, 0, group));
    const Counters before(scene.get());
    EXPECT_TRUE(vrdmSetDataValue(scene.get(), VRDM_CLASS_SHAPE, 0, group, value.get()));
    EXPECT_EQ(Counters(scene.get()), afterClassChange(before, VRDM_CLASS_SHAPE));
    EXPECT_EQ(shape.version, group + 2);
    for (std::uint32_t other = 0; other < 14; ++other) {
      EXPECT_EQ(shape.groupVersions[other], other <= group ? 2U : 1U);
    }
  }
  EXPECT_EQ(shape.referencesVersion, 1U);
}

TEST(Counters, OfASceneGroupRiseOnlyWhenItIsStored) {
  const SceneHandle scene = newScene();
  const ValueHandle wrong = parseValue("{ a = 1; }");
  for (std::uint32_t group = 0; group < 4; ++group) {
    Counters before(scene.get());
    EXPECT_FALSE(vrdmSetSceneDataValue(scene.get(), group, wrong.get()));
    EXPECT_EQ(Counters(scene.get()), before);
    const ValueHandle value(vrdmGetSceneDataValue(scene.get(), group));
    EXPECT_TRUE(vrdmSetSceneDataValue(scene.get(), group, value.get()));
    ++before.versions.version;
    ++before.versions.groups[group];
    EXPECT_EQ(Counters(scene.get()), before);
  }
}

TEST(Counters, RiseWhenAValueIsSet) {
  const SceneHandle scene = newScene();
  vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  const auto& camera = scene->container<CameraDesc>().slots[0];
  const ValueHandle value = parseValue("{ a = 1; }");
  const Counters before(scene.get());
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_CAMERA, 0, value.get());
  EXPECT_EQ(Counters(scene.get()), afterClassChange(before, VRDM_CLASS_CAMERA));
  EXPECT_EQ(camera.version, 2U);
  EXPECT_EQ(camera.referencesVersion, 1U);
}

TEST(Counters, RiseWhenASlotIsSet) {
  const SceneHandle scene = newScene();
  vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE);
  const auto& shape = scene->container<ShapeDesc>().slots[0];
  Counters before(scene.get());
  vrdmSetReference(scene.get(), VRDM_CLASS_SHAPE, 0, 8, 1);
  EXPECT_EQ(Counters(scene.get()), afterClassChange(before, VRDM_CLASS_SHAPE));
  EXPECT_EQ(shape.version, 2U);
  EXPECT_EQ(shape.referencesVersion, 2U);
  // A slot that isn't there is noticed only after the class has counted.
  before = Counters(scene.get());
  EXPECT_FALSE(vrdmSetReference(scene.get(), VRDM_CLASS_SHAPE, 0, 9, 1));
  EXPECT_EQ(Counters(scene.get()), afterClassChange(before, VRDM_CLASS_SHAPE));
  EXPECT_EQ(shape.version, 2U);
  EXPECT_EQ(shape.referencesVersion, 2U);
}

TEST(Counters, RiseWhenAListIsHandedOutForWriting) {
  const SceneHandle scene = newScene();
  vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  const auto& camera = scene->container<CameraDesc>().slots[0];
  Counters before(scene.get());
  EXPECT_EQ(vrdmModifyReferenceList(scene.get(), VRDM_CLASS_CAMERA, 0, 0), nullptr);
  EXPECT_EQ(Counters(scene.get()), afterClassChange(before, VRDM_CLASS_CAMERA));
  EXPECT_EQ(camera.version, 2U);
  EXPECT_EQ(camera.referencesVersion, 2U);
  before = Counters(scene.get());
  EXPECT_EQ(vrdmModifyReferenceList(scene.get(), VRDM_CLASS_CAMERA, 0, 3), nullptr);
  EXPECT_EQ(Counters(scene.get()), afterClassChange(before, VRDM_CLASS_CAMERA));
  EXPECT_EQ(camera.version, 2U);
  EXPECT_EQ(camera.referencesVersion, 2U);
}

TEST(Counters, StayWhenTheSceneIsRead) {
  const SceneHandle scene = newScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) addObject(scene.get(), c);
  const ValueHandle value = parseValue("{ a = 1; }");
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_CAMERA, 0, value.get());
  const Counters before(scene.get());
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    std::array<std::uint64_t, 3> desc = {};
    vrdmValid(scene.get(), c, 0);
    vrdmContainerSize(scene.get(), c);
    vrdmGetUniqueId(scene.get(), c, 0);
    vrdmCountReferences(scene.get(), c, 0);
    vrdmGetProgramSource(scene.get(), c, 0);
    vrdmGetAssetStorage(scene.get(), c, 0, desc.data());
    const ValueHandle group(vrdmGetDataValue(scene.get(), c, 0, 0));
    vrdmGetReference(scene.get(), c, 0, 0);
    vrdmGetReferenceCount(scene.get(), c, 0, 0);
    vrdmGetReferenceList(scene.get(), c, 0, 0);
  }
  const ValueHandle read(vrdmGetInstanceValue(scene.get(), VRDM_CLASS_CAMERA, 0));
  EXPECT_EQ(Counters(scene.get()), before);
}

TEST(Counters, WrapSilently) {
  const SceneHandle scene = newScene();
  scene->versions.version = UINT32_MAX;
  scene->versions.classes[VRDM_CLASS_SHAPE] = UINT32_MAX;
  vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE);
  EXPECT_EQ(scene->versions.version, 0U);
  EXPECT_EQ(scene->versions.classes[VRDM_CLASS_SHAPE], 0U);
}

TEST(Container, AddsManyObjectsInTimeThatGrowsWithTheirNumber) {
  // Quadratic growth would take hours for this many.
  const SceneHandle scene = newScene();
  for (std::uint32_t i = 0; i < 200000; ++i) {
    ASSERT_EQ(vrdmCreateInstance(scene.get(), VRDM_CLASS_LIGHT_GROUP), i);
  }
}

}  // namespace
