// The flat functions over a scene: what each answers for each class, allowed or not.
#include "scenes.hpp"

namespace {

using namespace vornath_test;

// One object of each class in slot 0.
SceneHandle fullScene() {
  SceneHandle scene = newScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    EXPECT_EQ(addObject(scene.get(), c), 0U);
  }
  return scene;
}

bool contains(const auto& classes, std::uint32_t objectClass) {
  for (const std::uint32_t c : classes) {
    if (c == objectClass) return true;
  }
  return false;
}

TEST(vrdmCreateScene, MakesScenesOfDifferentIds) {
  const SceneHandle a = newScene();
  const SceneHandle b = newScene();
  EXPECT_EQ(vrdmSceneId(a.get())->begin()[6] >> 4, 4);
  EXPECT_FALSE(*vrdmSceneId(a.get()) == *vrdmSceneId(b.get()));
}

TEST(vrdmDestroyScene, TakesNull) { vrdmDestroyScene(nullptr); }

TEST(vrdmDestroyScene, DropsTheReferencesOnValuesAndBytes) {
  SceneHandle scene = fullScene();
  const ValueHandle value = parseValue("{ a = 1; }");
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_LIGHT, 0, value.get());
  const StorageHandle storage = newStorage("12345678");
  const std::array<std::uint64_t, 3> desc = {8, 0, 0};
  AssetStorage* handle = storage.get();
  vrdmAddAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, desc.data(), &handle);
  EXPECT_EQ(value->refCount, 2U);
  EXPECT_EQ(storage->references, 2U);
  scene.reset();
  EXPECT_EQ(value->refCount, 1U);
  EXPECT_EQ(storage->references, 1U);
}

TEST(vrdmSceneId, StaysTheSame) {
  const SceneHandle scene = newScene();
  const std::string id = idText(vrdmSceneId(scene.get()));
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) addObject(scene.get(), c);
  EXPECT_EQ(idText(vrdmSceneId(scene.get())), id);
}

TEST(vrdmGetSceneDataValue, GivesAValueOfTheGroupsType) {
  const SceneHandle scene = newScene();
  for (std::uint32_t group = 0; group < 4; ++group) {
    const ValueHandle value(vrdmGetSceneDataValue(scene.get(), group));
    const TypeHandle type(vrdmFieldType(VRDM_CLASS_SCENE_DATA, group));
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(vrntTypeIsEqual(vrntValueType(value.get()), type.get()), 1);
    EXPECT_EQ(vrntMetadataSize(vrntValueType(value.get())), 0U);
    EXPECT_EQ(value->refCount, 1U);
  }
}

TEST(vrdmGetSceneDataValue, IsNullForAnotherGroup) {
  const SceneHandle scene = newScene();
  EXPECT_EQ(vrdmGetSceneDataValue(scene.get(), 4), nullptr);
  EXPECT_EQ(vrdmGetSceneDataValue(scene.get(), 0xFFFFFFFFU), nullptr);
}

TEST(vrdmGetSceneDataValue, GivesACopy) {
  const SceneHandle scene = newScene();
  vrntValue_t* value = vrdmGetSceneDataValue(scene.get(), 3);
  const std::int32_t limit = 99;
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(&value, 8, &limit, 4, &error);
  const ValueHandle changed(value);
  const ValueHandle again(vrdmGetSceneDataValue(scene.get(), 3));
  EXPECT_EQ(readAt<std::int32_t>(changed, 8), 99);
  EXPECT_EQ(readAt<std::int32_t>(again, 8), 0);
}

TEST(vrdmSetSceneDataValue, StoresAValueOfTheGroupsType) {
  const SceneHandle scene = newScene();
  std::string bytes(12, '\0');
  bytes[8] = 7;
  const ValueHandle value = groupValue(VRDM_CLASS_SCENE_DATA, 3, bytes);
  EXPECT_TRUE(vrdmSetSceneDataValue(scene.get(), 3, value.get()));
  EXPECT_EQ(value->refCount, 1U);
  const ValueHandle stored(vrdmGetSceneDataValue(scene.get(), 3));
  EXPECT_EQ(readAt<std::int32_t>(stored, 8), 7);
  // Its neighbour in memory is as it was.
  const ValueHandle neighbour(vrdmGetSceneDataValue(scene.get(), 2));
  EXPECT_EQ(readAt<std::uint32_t>(neighbour, 0), 0x38D1B717U);
  EXPECT_EQ(readAt<std::int32_t>(neighbour, 4), 2);
}

TEST(vrdmSetSceneDataValue, RefusesAnotherTypeAndAnotherGroup) {
  const SceneHandle scene = newScene();
  const ValueHandle rasterizer(vrdmGetSceneDataValue(scene.get(), 1));
  for (const std::uint32_t group : {0U, 2U, 3U, 4U, 0xFFFFFFFFU}) {
    EXPECT_FALSE(vrdmSetSceneDataValue(scene.get(), group, rasterizer.get())) << group;
  }
}

TEST(vrdmContainerSize, CountsFreeSlotsToo) {
  const SceneHandle scene = newScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    for (int i = 0; i < 3; ++i) addObject(scene.get(), c);
    vrdmRemove(scene.get(), c, 2);
    vrdmRemove(scene.get(), c, 0);
    EXPECT_EQ(vrdmContainerSize(scene.get(), c), 3U);
  }
}

TEST(vrdmContainerSize, IsZeroPastTheLastClass) {
  const SceneHandle scene = fullScene();
  for (const std::uint32_t c : kNoClasses) EXPECT_EQ(vrdmContainerSize(scene.get(), c), 0U);
}

TEST(vrdmValid, ChecksTheIndex) {
  const SceneHandle scene = fullScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    EXPECT_TRUE(vrdmValid(scene.get(), c, 0));
    EXPECT_FALSE(vrdmValid(scene.get(), c, 1));
    EXPECT_FALSE(vrdmValid(scene.get(), c, -1));
    EXPECT_FALSE(vrdmValid(scene.get(), c, INT32_MAX));
    EXPECT_FALSE(vrdmValid(scene.get(), c, INT32_MIN));
  }
}

TEST(vrdmValid, IsFalsePastTheLastClass) {
  const SceneHandle scene = fullScene();
  for (const std::uint32_t c : kNoClasses) EXPECT_FALSE(vrdmValid(scene.get(), c, 0));
}

TEST(vrdmGetUniqueId, IsThatOfAProgramOrAsset) {
  const SceneHandle scene = fullScene();
  for (std::uint32_t c = 0; c < 6; ++c) {
    const vrnt::UniqueId* id = vrdmGetUniqueId(scene.get(), c, 0);
    ASSERT_NE(id, nullptr);
    EXPECT_FALSE(id->isNull());
  }
  const vrnt::UniqueId hash = vrnt::UniqueId::hash("a program");
  for (const std::uint32_t c : kPrograms) {
    EXPECT_TRUE(*vrdmGetUniqueId(scene.get(), c, 0) == hash);
  }
}

TEST(vrdmGetUniqueId, IsNullForInstancesAndPastTheLastClass) {
  const SceneHandle scene = fullScene();
  for (const std::uint32_t c : kInstances) EXPECT_EQ(vrdmGetUniqueId(scene.get(), c, 0), nullptr);
  for (const std::uint32_t c : kNoClasses) EXPECT_EQ(vrdmGetUniqueId(scene.get(), c, 0), nullptr);
}

TEST(vrdmRemove, AnswersTrueForClassesAlone) {
  const SceneHandle scene = fullScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    EXPECT_TRUE(vrdmRemove(scene.get(), c, 0));
  }
  const Counters before(scene.get());
  for (const std::uint32_t c : kNoClasses) EXPECT_FALSE(vrdmRemove(scene.get(), c, 0));
  EXPECT_EQ(Counters(scene.get()), before);
}

TEST(vrdmCountReferences, IsZeroPastTheLastClass) {
  const SceneHandle scene = fullScene();
  for (const std::uint32_t c : kNoClasses) EXPECT_EQ(vrdmCountReferences(scene.get(), c, -1), 0U);
}

TEST(vrdmAddProgram, IsForProgramsAlone) {
  const SceneHandle scene = newScene();
  for (const std::uint32_t c : kPrograms) EXPECT_EQ(vrdmAddProgram(scene.get(), c, "p"), 0U);
  const Counters before(scene.get());
  for (const std::uint32_t c : kAssets) {
    EXPECT_EQ(vrdmAddProgram(scene.get(), c, "p"), kNothingAdded);
  }
  for (const std::uint32_t c : kInstances) {
    EXPECT_EQ(vrdmAddProgram(scene.get(), c, "p"), kNothingAdded);
  }
  for (const std::uint32_t c : kNoClasses) EXPECT_EQ(vrdmAddProgram(scene.get(), c, "p"), 0U);
  EXPECT_EQ(Counters(scene.get()), before);
  for (std::uint32_t c = 3; c < vrdmObjectTypeCount(); ++c) {
    EXPECT_EQ(vrdmContainerSize(scene.get(), c), 0U);
  }
}

TEST(vrdmGetProgramSource, GivesTheText) {
  const SceneHandle scene = newScene();
  for (const std::uint32_t c : kPrograms) {
    vrdmAddProgram(scene.get(), c, "first\nline");
    vrdmAddProgram(scene.get(), c, "");
    EXPECT_STREQ(vrdmGetProgramSource(scene.get(), c, 0), "first\nline");
    EXPECT_STREQ(vrdmGetProgramSource(scene.get(), c, 1), "");
  }
}

TEST(vrdmGetProgramSource, IsNullForOtherClasses) {
  const SceneHandle scene = fullScene();
  for (std::uint32_t c = 3; c < vrdmObjectTypeCount(); ++c) {
    EXPECT_EQ(vrdmGetProgramSource(scene.get(), c, 0), nullptr);
  }
  for (const std::uint32_t c : kNoClasses) {
    EXPECT_EQ(vrdmGetProgramSource(scene.get(), c, 0), nullptr);
  }
}

TEST(vrdmAddAsset, SharesTheBytes) {
  const SceneHandle scene = newScene();
  const StorageHandle storage = newStorage("bytes");
  const std::array<std::uint64_t, 3> desc = {5, 1, 2};
  AssetStorage* handle = storage.get();
  EXPECT_EQ(vrdmAddAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, desc.data(), &handle), 0U);
  EXPECT_EQ(handle, storage.get());
  EXPECT_EQ(storage->references, 2U);
  std::array<std::uint64_t, 3> read = {};
  EXPECT_EQ(*vrdmGetAssetStorage(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0, read.data()),
            storage.get());
  EXPECT_EQ(read, desc);
}

TEST(vrdmAddAsset, IsForAssetsAlone) {
  const SceneHandle scene = newScene();
  const StorageHandle storage = newStorage("bytes");
  const std::array<std::uint64_t, 3> desc = {};
  AssetStorage* handle = storage.get();
  const Counters before(scene.get());
  for (const std::uint32_t c : kPrograms) {
    EXPECT_EQ(vrdmAddAsset(scene.get(), c, desc.data(), &handle), kNothingAdded);
  }
  for (const std::uint32_t c : kInstances) {
    EXPECT_EQ(vrdmAddAsset(scene.get(), c, desc.data(), &handle), kNothingAdded);
  }
  for (const std::uint32_t c : kNoClasses) {
    EXPECT_EQ(vrdmAddAsset(scene.get(), c, desc.data(), &handle), 0U);
  }
  EXPECT_EQ(Counters(scene.get()), before);
  EXPECT_EQ(storage->references, 1U);
}

TEST(vrdmGetAssetStorage, CopiesAsManyBytesAsTheDescriptorHas) {
  const SceneHandle scene = newScene();
  const StorageHandle storage = newStorage("bytes");
  AssetStorage* handle = storage.get();
  std::array<unsigned char, 24> desc;
  for (std::size_t i = 0; i < desc.size(); ++i) desc[i] = static_cast<unsigned char>(i + 1);
  const std::array<std::size_t, 3> sizes = {16, 20, 24};
  for (const std::uint32_t c : kAssets) {
    vrdmAddAsset(scene.get(), c, desc.data(), &handle);
    std::array<unsigned char, 32> read;
    read.fill(0xEE);
    AssetStorage** const place = vrdmGetAssetStorage(scene.get(), c, 0, read.data());
    ASSERT_NE(place, nullptr);
    EXPECT_EQ(*place, storage.get());
    const std::size_t size = sizes[c - VRDM_CLASS_MESH];
    for (std::size_t i = 0; i < read.size(); ++i) {
      EXPECT_EQ(read[i], i < size ? desc[i] : 0xEE) << i;
    }
  }
}

TEST(vrdmGetAssetStorage, IsNullForOtherClassesAndLeavesTheDescriptorAlone) {
  const SceneHandle scene = fullScene();
  std::array<std::uint64_t, 3> desc = {1, 2, 3};
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    if (contains(kAssets, c)) continue;
    EXPECT_EQ(vrdmGetAssetStorage(scene.get(), c, 0, desc.data()), nullptr);
  }
  for (const std::uint32_t c : kNoClasses) {
    EXPECT_EQ(vrdmGetAssetStorage(scene.get(), c, 0, desc.data()), nullptr);
  }
  EXPECT_EQ(desc, (std::array<std::uint64_t, 3>{1, 2, 3}));
}

TEST(vrdmUpdateAsset, ReplacesAMeshAsLargeAsItsCountsSay) {
  const SceneHandle scene = newScene();
  addObject(scene.get(), VRDM_CLASS_MESH);
  const std::string id = idText(vrdmGetUniqueId(scene.get(), VRDM_CLASS_MESH, 0));
  // One triangle, three vertices, no texture coordinate set (counted as one), both flags.
  const std::array<std::int32_t, 4> desc = {1, 3, 0, 3};
  const std::string bytes(152, 'm');
  const Counters before(scene.get());
  EXPECT_TRUE(vrdmUpdateAsset(scene.get(), VRDM_CLASS_MESH, 0, desc.data(), bytes.data()));
  EXPECT_EQ(Counters(scene.get()), afterClassChange(before, VRDM_CLASS_MESH));
  std::array<std::int32_t, 4> read = {};
  const AssetStorage* storage = *vrdmGetAssetStorage(scene.get(), VRDM_CLASS_MESH, 0, read.data());
  EXPECT_EQ(read, desc);
  EXPECT_EQ(storage->size, 152U);
  EXPECT_EQ(storage->references, 1U);
  EXPECT_EQ(storage->external, 0U);
  EXPECT_EQ(storage->data, storage + 1);
  EXPECT_EQ(std::string(static_cast<const char*>(storage->data), storage->size), bytes);
  EXPECT_EQ(idText(vrdmGetUniqueId(scene.get(), VRDM_CLASS_MESH, 0)), id);
}

TEST(vrdmUpdateAsset, ReplacesATextureAndKeepsItsId) {
  const SceneHandle scene = newScene();
  addObject(scene.get(), VRDM_CLASS_TEXTURE);
  const std::string id = idText(vrdmGetUniqueId(scene.get(), VRDM_CLASS_TEXTURE, 0));
  // 3 by 2 pixels of "SRGB8", flat.
  const std::array<std::int32_t, 5> desc = {3, 2, 1, 2, 0};
  const std::string bytes = "123456789012345678";
  EXPECT_TRUE(vrdmUpdateAsset(scene.get(), VRDM_CLASS_TEXTURE, 0, desc.data(), bytes.data()));
  const AssetStorage* storage = *vrdmGetAssetStorage(scene.get(), VRDM_CLASS_TEXTURE, 0, nullptr);
  EXPECT_EQ(std::string(static_cast<const char*>(storage->data), storage->size), bytes);
  EXPECT_EQ(idText(vrdmGetUniqueId(scene.get(), VRDM_CLASS_TEXTURE, 0)), id);
}

TEST(vrdmUpdateAsset, LeavesTheFormerBytesToTheirOtherHolders) {
  const SceneHandle scene = newScene();
  const StorageHandle storage = newStorage("bytes");
  std::array<std::uint64_t, 3> desc = {5, 0, 0};
  AssetStorage* handle = storage.get();
  vrdmAddAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, desc.data(), &handle);
  desc[0] = 3;
  vrdmUpdateAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0, desc.data(), "new");
  EXPECT_EQ(storage->references, 1U);
  EXPECT_EQ(std::string(static_cast<const char*>(storage->data), storage->size), "bytes");
}

TEST(vrdmUpdateAsset, BringsAFreeSlotToLifeWithoutTheNextAdditionNoticing) {
  const SceneHandle scene = newScene();
  addGraph(scene.get(), "a");
  addGraph(scene.get(), "b");
  vrdmRemove(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0);
  const std::array<std::uint64_t, 3> desc = {1, 0, 0};
  vrdmUpdateAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0, desc.data(), "c");
  EXPECT_TRUE(vrdmValid(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0));
  EXPECT_EQ(addGraph(scene.get(), "d"), 0U);
}

TEST(vrdmUpdateAsset, IsForAssetsAlone) {
  const SceneHandle scene = fullScene();
  const std::array<std::uint64_t, 3> desc = {};
  const Counters before(scene.get());
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    if (contains(kAssets, c)) continue;
    EXPECT_FALSE(vrdmUpdateAsset(scene.get(), c, 0, desc.data(), "")) << c;
  }
  for (const std::uint32_t c : kNoClasses) {
    EXPECT_FALSE(vrdmUpdateAsset(scene.get(), c, 0, desc.data(), ""));
  }
  EXPECT_EQ(Counters(scene.get()), before);
}

TEST(vrdmUpdateAsset, LeavesTheAssetAsItWasIfThereIsNoMemory) {
  const SceneHandle scene = newScene();
  addGraph(scene.get(), "bytes");
  const Counters before(scene.get());
  // Larger than any allocation, even before the block's own fields are added.
  for (const std::uint64_t size : {UINT64_MAX, UINT64_MAX - 31, UINT64_MAX - 32}) {
    const std::array<std::uint64_t, 3> desc = {size, 0, 0};
    EXPECT_THROW(vrdmUpdateAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0, desc.data(), "x"),
                 std::bad_alloc);
  }
  EXPECT_EQ(Counters(scene.get()), before);
  std::array<std::uint64_t, 3> desc = {};
  const AssetStorage* storage =
      *vrdmGetAssetStorage(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0, desc.data());
  EXPECT_EQ(desc[0], 5U);
  EXPECT_EQ(std::string(static_cast<const char*>(storage->data), storage->size), "bytes");
}

TEST(vrdmUpdateAsset, TakesLargeContents) {
  const SceneHandle scene = newScene();
  addGraph(scene.get(), "");
  std::string bytes(std::size_t{9} << 20, 'x');
  for (std::size_t i = 0; i < bytes.size(); i += 4096) bytes[i] = static_cast<char>(i >> 12);
  const std::array<std::uint64_t, 3> desc = {bytes.size(), 0, 0};
  EXPECT_TRUE(
      vrdmUpdateAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0, desc.data(), bytes.data()));
  const AssetStorage* storage =
      *vrdmGetAssetStorage(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0, nullptr);
  ASSERT_EQ(storage->size, bytes.size());
  EXPECT_EQ(std::memcmp(storage->data, bytes.data(), bytes.size()), 0);
}

TEST(vrdmCreateInstance, IsForInstancesAlone) {
  const SceneHandle scene = newScene();
  const Counters before(scene.get());
  for (const std::uint32_t c : kPrograms) {
    EXPECT_EQ(vrdmCreateInstance(scene.get(), c), kNothingAdded);
  }
  for (const std::uint32_t c : kAssets) {
    EXPECT_EQ(vrdmCreateInstance(scene.get(), c), kNothingAdded);
  }
  for (const std::uint32_t c : kNoClasses) EXPECT_EQ(vrdmCreateInstance(scene.get(), c), 0U);
  EXPECT_EQ(Counters(scene.get()), before);
  for (const std::uint32_t c : kInstances) {
    EXPECT_EQ(vrdmCreateInstance(scene.get(), c), 0U);
    EXPECT_EQ(vrdmCreateInstance(scene.get(), c), 1U);
  }
}

TEST(vrdmGetDataValue, GivesAValueOfTheGroupsType) {
  const SceneHandle scene = fullScene();
  for (const std::uint32_t c : kInstances) {
    for (std::uint32_t group = 0; group < vrdmFieldCount(c); ++group) {
      const ValueHandle value(vrdmGetDataValue(scene.get(), c, 0, group));
      const TypeHandle type(vrdmFieldType(c, group));
      ASSERT_NE(value, nullptr);
      EXPECT_EQ(vrntTypeIsEqual(vrntValueType(value.get()), type.get()), 1);
      EXPECT_EQ(vrntMetadataSize(vrntValueType(value.get())), 0U);
    }
  }
}

TEST(vrdmGetDataValue, IsNullWhereThereIsNoGroup) {
  const SceneHandle scene = fullScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    EXPECT_EQ(vrdmGetDataValue(scene.get(), c, 0, vrdmFieldCount(c)), nullptr);
    EXPECT_EQ(vrdmGetDataValue(scene.get(), c, 0, 0xFFFFFFFFU), nullptr);
  }
  for (const std::uint32_t c : kNoClasses) {
    EXPECT_EQ(vrdmGetDataValue(scene.get(), c, 0, 0), nullptr);
  }
}

TEST(vrdmSetDataValue, WritesTheGroupAndNoOther) {
  const SceneHandle scene = fullScene();
  for (const std::uint32_t c : kInstances) {
    const std::uint32_t groups = vrdmFieldCount(c);
    for (std::uint32_t group = 0; group < groups; ++group) {
      SCOPED_TRACE(testing::Message() << vrdmObjectName(c) << " " << group);
      std::vector<std::string> before;
      for (std::uint32_t i = 0; i < groups; ++i) {
        before.push_back(groupBytes(scene.get(), c, 0, i));
      }
      std::string bytes = before[group];
      for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i + group + 1);
      }
      const ValueHandle value = groupValue(c, group, bytes);
      EXPECT_TRUE(vrdmSetDataValue(scene.get(), c, 0, group, value.get()));
      EXPECT_EQ(value->refCount, 1U);
      for (std::uint32_t i = 0; i < groups; ++i) {
        EXPECT_EQ(groupBytes(scene.get(), c, 0, i), i == group ? bytes : before[i]) << i;
      }
    }
  }
}

TEST(vrdmSetDataValue, RefusesAValueOfAnotherType) {
  const SceneHandle scene = fullScene();
  const ValueHandle keyframe(vrdmGetDataValue(scene.get(), VRDM_CLASS_KEYFRAME, 0, 0));
  const std::string before = groupBytes(scene.get(), VRDM_CLASS_CAMERA, 0, 0);
  EXPECT_FALSE(vrdmSetDataValue(scene.get(), VRDM_CLASS_CAMERA, 0, 0, keyframe.get()));
  EXPECT_EQ(groupBytes(scene.get(), VRDM_CLASS_CAMERA, 0, 0), before);
}

TEST(vrdmSetDataValue, TakesAValueOfAnotherClassWhoseGroupHasTheSameType) {
  const SceneHandle scene = fullScene();
  std::string bytes = groupBytes(scene.get(), VRDM_CLASS_TRANSFORMATION_GROUP, 0, 0);
  bytes[60] = 9;
  const ValueHandle value = groupValue(VRDM_CLASS_TRANSFORMATION_GROUP, 0, bytes);
  EXPECT_TRUE(vrdmSetDataValue(scene.get(), VRDM_CLASS_CAMERA, 0, 0, value.get()));
  EXPECT_EQ(groupBytes(scene.get(), VRDM_CLASS_CAMERA, 0, 0), bytes);
}

TEST(vrdmSetDataValue, IsFalseWhereThereIsNoGroup) {
  const SceneHandle scene = fullScene();
  const ValueHandle value = parseValue("{ a = 1; }");
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    EXPECT_FALSE(vrdmSetDataValue(scene.get(), c, 0, vrdmFieldCount(c), value.get())) << c;
  }
  for (const std::uint32_t c : kNoClasses) {
    EXPECT_FALSE(vrdmSetDataValue(scene.get(), c, 0, 0, value.get()));
  }
}

TEST(vrdmSetDataValue, DoesNothingToProgramsAndAssets) {
  const SceneHandle scene = fullScene();
  const ValueHandle value = parseValue("{ a = 1; }");
  const Counters before(scene.get());
  for (std::uint32_t c = 0; c < 6; ++c) vrdmSetDataValue(scene.get(), c, 0, 0, value.get());
  for (const std::uint32_t c : kNoClasses) vrdmSetDataValue(scene.get(), c, 0, 0, value.get());
  EXPECT_EQ(Counters(scene.get()), before);
}

TEST(vrdmGetInstanceValue, GivesTheValueThatWasSet) {
  const SceneHandle scene = fullScene();
  const ValueHandle value = parseValue("{ a = 1; }");
  for (const std::uint32_t c : kWithValue) {
    EXPECT_TRUE(vrdmSetInstanceValue(scene.get(), c, 0, value.get()));
    const std::uint32_t references = value->refCount;
    const ValueHandle read(vrdmGetInstanceValue(scene.get(), c, 0));
    EXPECT_EQ(read, value);
    EXPECT_EQ(value->refCount, references + 1);
  }
}

TEST(vrdmGetInstanceValue, IsNullForAnObjectThatWasNeverGivenOne) {
  const SceneHandle scene = fullScene();
  for (const std::uint32_t c : kWithValue) {
    EXPECT_EQ(vrdmGetInstanceValue(scene.get(), c, 0), nullptr);
  }
}

TEST(vrdmGetInstanceValue, IsNullForOtherClasses) {
  const SceneHandle scene = fullScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    if (vrdmHasValue(c)) continue;
    EXPECT_EQ(vrdmGetInstanceValue(scene.get(), c, 0), nullptr);
  }
  for (const std::uint32_t c : kNoClasses) {
    EXPECT_EQ(vrdmGetInstanceValue(scene.get(), c, 0), nullptr);
  }
}

TEST(vrdmSetInstanceValue, AnswersByKindOfClass) {
  const SceneHandle scene = fullScene();
  const ValueHandle value = parseValue("{ a = 1; }");
  Counters expected(scene.get());
  for (const std::uint32_t c : kInstances) {
    EXPECT_TRUE(vrdmSetInstanceValue(scene.get(), c, 0, value.get())) << c;
    if (vrdmHasValue(c)) expected = afterClassChange(expected, c);
    EXPECT_EQ(Counters(scene.get()), expected) << c;
  }
  for (const std::uint32_t c : kAssets) {
    EXPECT_FALSE(vrdmSetInstanceValue(scene.get(), c, 0, value.get())) << c;
  }
  for (const std::uint32_t c : kPrograms) vrdmSetInstanceValue(scene.get(), c, 0, value.get());
  for (const std::uint32_t c : kNoClasses) {
    EXPECT_FALSE(vrdmSetInstanceValue(scene.get(), c, 0, value.get())) << c;
  }
  EXPECT_EQ(Counters(scene.get()), expected);
  EXPECT_EQ(value->refCount, 4U);
}

TEST(vrdmGetReference, GivesTheWordOfASingleSlot) {
  const SceneHandle scene = fullScene();
  for (std::uint32_t slot = 0; slot < 9; ++slot) {
    EXPECT_TRUE(vrdmSetReference(scene.get(), VRDM_CLASS_SHAPE, 0, slot, slot + 10));
  }
  for (std::uint32_t slot = 0; slot < 9; ++slot) {
    EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_SHAPE, 0, slot),
              static_cast<std::int32_t>(slot + 10));
    EXPECT_EQ(vrdmGetReferenceCount(scene.get(), VRDM_CLASS_SHAPE, 0, slot),
              static_cast<std::int32_t>(slot + 10));
  }
}

TEST(vrdmGetReference, GivesTheLengthOfAList) {
  const SceneHandle scene = fullScene();
  setList(scene.get(), VRDM_CLASS_LIGHT, 0, 2, {7, 8, 9});
  EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_LIGHT, 0, 2), 3);
  EXPECT_EQ(vrdmGetReferenceCount(scene.get(), VRDM_CLASS_LIGHT, 0, 2), 3);
}

TEST(vrdmGetReference, AnswersByKindOfClassWhereThereIsNoSlot) {
  const SceneHandle scene = fullScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    const std::int32_t expected = c <= VRDM_CLASS_MATERIAL_GRAPH ? -1 : 0;
    for (const std::uint32_t slot : {vrdmReferenceCount(c), 0xFFFFFFFFU}) {
      EXPECT_EQ(vrdmGetReference(scene.get(), c, 0, slot), expected) << c;
      EXPECT_EQ(vrdmGetReferenceCount(scene.get(), c, 0, slot), expected) << c;
    }
  }
  for (const std::uint32_t c : kNoClasses) {
    EXPECT_EQ(vrdmGetReference(scene.get(), c, 0, 0), 0);
    EXPECT_EQ(vrdmGetReferenceCount(scene.get(), c, 0, 0), 0);
  }
}

TEST(vrdmSetReference, StoresAnyWordAsItStands) {
  const SceneHandle scene = fullScene();
  for (const std::uint32_t word : {0U, 5U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFEU, 0xFFFFFFFFU}) {
    EXPECT_TRUE(vrdmSetReference(scene.get(), VRDM_CLASS_DECAL, 0, 2, word));
    EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_DECAL, 0, 2),
              static_cast<std::int32_t>(word));
    EXPECT_TRUE(vrdmSetReferenceCount(scene.get(), VRDM_CLASS_DECAL, 0, 1, word));
    EXPECT_EQ(vrdmGetReferenceCount(scene.get(), VRDM_CLASS_DECAL, 0, 1),
              static_cast<std::int32_t>(word));
  }
}

TEST(vrdmSetReference, SetsTheLengthOfAList) {
  const SceneHandle scene = fullScene();
  EXPECT_TRUE(vrdmSetReference(scene.get(), VRDM_CLASS_KEYFRAME_LIST, 0, 0, 5));
  EXPECT_EQ(listOf(scene.get(), VRDM_CLASS_KEYFRAME_LIST, 0, 0),
            (std::vector<std::int32_t>(5, -1)));
}

TEST(vrdmSetReference, IsFalseWhereThereIsNoSlot) {
  const SceneHandle scene = fullScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    Counters expected(scene.get());
    const std::uint32_t slot = vrdmReferenceCount(c);
    EXPECT_FALSE(vrdmSetReference(scene.get(), c, 0, slot, 1)) << c;
    EXPECT_FALSE(vrdmSetReferenceCount(scene.get(), c, 0, slot, 1)) << c;
    if (contains(kInstances, c)) expected = afterClassChange(expected, c, 2);
    EXPECT_EQ(Counters(scene.get()), expected) << c;
  }
  const Counters before(scene.get());
  for (const std::uint32_t c : kNoClasses) {
    EXPECT_FALSE(vrdmSetReference(scene.get(), c, 0, 0, 1));
    EXPECT_FALSE(vrdmSetReferenceCount(scene.get(), c, 0, 0, 1));
  }
  EXPECT_EQ(Counters(scene.get()), before);
}

TEST(vrdmGetReferenceList, GivesTheElements) {
  const SceneHandle scene = fullScene();
  setList(scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, {0, -1, kNoTarget});
  EXPECT_EQ(listOf(scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0),
            (std::vector<std::int32_t>{0, -1, kNoTarget}));
}

TEST(vrdmGetReferenceList, IsNullWithoutElements) {
  const SceneHandle scene = fullScene();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    for (std::uint32_t slot = 0; slot <= vrdmReferenceCount(c); ++slot) {
      EXPECT_EQ(vrdmGetReferenceList(scene.get(), c, 0, slot), nullptr) << c << " " << slot;
    }
  }
  for (const std::uint32_t c : kNoClasses) {
    EXPECT_EQ(vrdmGetReferenceList(scene.get(), c, 0, 0), nullptr);
  }
  // Also if there were some before.
  setList(scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, {1, 2});
  vrdmSetReferenceCount(scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, 0);
  EXPECT_EQ(vrdmGetReferenceList(scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0), nullptr);
}

TEST(vrdmModifyReferenceList, GivesTheElementsForWriting) {
  const SceneHandle scene = fullScene();
  vrdmSetReferenceCount(scene.get(), VRDM_CLASS_BAKE_TASK, 0, 0, 2);
  std::int32_t* words = vrdmModifyReferenceList(scene.get(), VRDM_CLASS_BAKE_TASK, 0, 0);
  ASSERT_NE(words, nullptr);
  words[0] = 3;
  words[1] = 4;
  EXPECT_EQ(listOf(scene.get(), VRDM_CLASS_BAKE_TASK, 0, 0), (std::vector<std::int32_t>{3, 4}));
  EXPECT_EQ(words, vrdmGetReferenceList(scene.get(), VRDM_CLASS_BAKE_TASK, 0, 0));
}

TEST(vrdmModifyReferenceList, IsNullForSingleSlotsAndCountsAllTheSame) {
  const SceneHandle scene = fullScene();
  for (const std::uint32_t c : kInstances) {
    for (std::uint32_t slot = 0; slot <= vrdmReferenceCount(c); ++slot) {
      const Counters before(scene.get());
      EXPECT_EQ(vrdmModifyReferenceList(scene.get(), c, 0, slot), nullptr) << c << " " << slot;
      EXPECT_EQ(Counters(scene.get()), afterClassChange(before, c)) << c << " " << slot;
    }
  }
}

TEST(vrdmModifyReferenceList, DoesNothingForOtherClasses) {
  const SceneHandle scene = fullScene();
  const Counters before(scene.get());
  for (std::uint32_t c = 0; c < 6; ++c) vrdmModifyReferenceList(scene.get(), c, 0, 0);
  EXPECT_EQ(vrdmModifyReferenceList(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 0, 0), nullptr);
  for (const std::uint32_t c : kNoClasses) {
    EXPECT_EQ(vrdmModifyReferenceList(scene.get(), c, 0, 0), nullptr);
  }
  EXPECT_EQ(Counters(scene.get()), before);
}

}  // namespace
