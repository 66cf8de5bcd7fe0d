// The import of one scene into another, rule by rule.
#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "../support/small_stack.hpp"
#include "deep_types.hpp"
#include "scenes.hpp"
#include "vornath_data/parameters.h"

namespace {

using namespace vornath_test;
using vrnt::UniqueId;
using vrnt::data::RefMap;
using vrnt::data::Scene;

using Pairs = std::vector<std::pair<std::int32_t, std::int32_t>>;
using Words = std::vector<std::int32_t>;
using Maps = vrnt::data::detail::TupleOfClass<RefMap>;

// The pairs of each class, by number.
std::vector<Pairs> pairsOf(const Maps& maps) {
  std::vector<Pairs> pairs;
  vrnt::data::forEachClass(
      [&](auto tag) { pairs.push_back(maps.get<typename decltype(tag)::Desc>().pairs()); });
  return pairs;
}

std::vector<Pairs> import(const SceneHandle& source, const SceneHandle& target) {
  return pairsOf(target->import(*source));
}

void add(const SceneHandle& scene, std::uint32_t objectClass, int count) {
  for (int i = 0; i < count; ++i) {
    const std::uint32_t index = addObject(scene.get(), objectClass);
    if (vrdmHasValue(objectClass)) {
      const ValueHandle value = parseValue("{ a = 1; }");
      vrdmSetInstanceValue(scene.get(), objectClass, static_cast<std::int32_t>(index), value.get());
    }
  }
}

Words liveness(const SceneHandle& scene, std::uint32_t objectClass) {
  Words live;
  const auto count = static_cast<std::int32_t>(vrdmContainerSize(scene.get(), objectClass));
  for (std::int32_t i = 0; i < count; ++i) {
    live.push_back(vrdmValid(scene.get(), objectClass, i) ? 1 : 0);
  }
  return live;
}

std::string fileOf(const SceneHandle& scene) {
  std::ostringstream stream;
  Scene::serialize(*scene, stream);
  return stream.str();
}

const AssetStorage* blockOf(const SceneHandle& scene, std::uint32_t objectClass,
                            std::int32_t index) {
  return *vrdmGetAssetStorage(scene.get(), objectClass, index, nullptr);
}

void setValue(const SceneHandle& scene, std::uint32_t objectClass, std::int32_t index,
              const ValueHandle& value) {
  ASSERT_TRUE(vrdmSetInstanceValue(scene.get(), objectClass, index, value.get()));
}

ValueHandle valueOf(const SceneHandle& scene, std::uint32_t objectClass, std::int32_t index) {
  return ValueHandle(vrdmGetInstanceValue(scene.get(), objectClass, index));
}

// --- The maps ---

TEST(RefMapLookup, GivesTheTargetOfTheFirstPairOrMinusOne) {
  RefMap<int> map;
  EXPECT_EQ(map.lookup(0), -1);
  EXPECT_EQ(map.lookup(-1), -1);
  map.add(0, 5);
  map.add(1, 4);
  map.add(3, 9);
  map.add(3, 7);
  map.add(8, 0);
  EXPECT_EQ(map.pairs(), (Pairs{{0, 5}, {1, 4}, {3, 9}, {3, 7}, {8, 0}}));
  EXPECT_EQ(map.lookup(0), 5);
  EXPECT_EQ(map.lookup(1), 4);
  EXPECT_EQ(map.lookup(2), -1);
  EXPECT_EQ(map.lookup(3), 9);
  EXPECT_EQ(map.lookup(4), -1);
  EXPECT_EQ(map.lookup(8), 0);
  EXPECT_EQ(map.lookup(9), -1);
  EXPECT_EQ(map.lookup(-1), -1);
  EXPECT_EQ(map.lookup(INT32_MAX), -1);
  EXPECT_EQ(map.lookup(INT32_MIN), -1);
}

TEST(RefMapLookup, TakesPairsInAnyOrderAndKeepsThemAscending) {
  RefMap<int> map;
  for (const auto& [source, target] : Pairs{{1, 10}, {1, 11}, {0, 12}, {3, 13}, {0, 14}, {2, 15}}) {
    map.add(source, target);
  }
  EXPECT_EQ(map.pairs(), (Pairs{{0, 12}, {0, 14}, {1, 10}, {1, 11}, {2, 15}, {3, 13}}));
  EXPECT_EQ(map.lookup(0), 12);
  EXPECT_EQ(map.lookup(1), 10);
  EXPECT_EQ(map.lookup(2), 15);
  EXPECT_EQ(map.lookup(3), 13);
}

// --- The whole ---

TEST(SceneImport, OfAnEmptySceneChangesNothing) {
  const SceneHandle target = newScene();
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) add(target, i, 2);
  const Counters before(target.get());
  const std::string file = fileOf(target);
  const SceneHandle source = newScene();
  EXPECT_EQ(import(source, target), std::vector<Pairs>(vrnt::data::kClassCount));
  EXPECT_EQ(Counters(target.get()), before);
  EXPECT_EQ(fileOf(target), file);
  EXPECT_EQ(import(source, newScene()), std::vector<Pairs>(vrnt::data::kClassCount));
}

TEST(SceneImport, LeavesIdAndSettingsOfTheTarget) {
  const SceneHandle source = newScene();
  source->data.rasterizer.voxel_grid_resolution = 7;
  add(source, VRDM_CLASS_SHAPE, 1);
  const SceneHandle target = newScene();
  target->data.general.infinite_ground = -1;
  const UniqueId id = target->id;
  const auto groups = target->versions.groups;
  import(source, target);
  EXPECT_EQ(target->id, id);
  EXPECT_EQ(target->data.rasterizer.voxel_grid_resolution, 128);
  EXPECT_EQ(target->data.general.infinite_ground, -1);
  EXPECT_EQ(target->versions.groups, groups);
}

TEST(SceneImport, LeavesTheSourceAsItIs) {
  const SceneHandle source = newScene();
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) add(source, i, 3);
  const ValueHandle value = parseValue("{ t = { texture_ref = 2; }; }");
  setValue(source, VRDM_CLASS_LIGHT, 1, value);
  setList(source.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, {0, -1, 2, kNoTarget});
  const std::string file = fileOf(source);
  const Counters before(source.get());
  const SceneHandle target = newScene();
  add(target, VRDM_CLASS_TEXTURE, 2);
  import(source, target);
  EXPECT_EQ(fileOf(source), file);
  EXPECT_EQ(Counters(source.get()), before);
}

TEST(SceneImport, CountsEachObjectThatItAdds) {
  const SceneHandle source = newScene();
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) add(source, i, 3);
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) vrdmRemove(source.get(), i, 1);
  const SceneHandle target = newScene();
  vrdmAddProgram(target.get(), VRDM_CLASS_LIGHT_PROGRAM, "a program");
  Counters expected(target.get());
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    std::uint32_t times = 2;
    // Equal texts are one program; the third class has it already. A light group counts again when
    // its emitters arrive.
    if (i < 3) times = i == VRDM_CLASS_LIGHT_PROGRAM ? 0 : 1;
    if (i == VRDM_CLASS_LIGHT_GROUP) times = 4;
    expected = afterClassChange(expected, i, times);
  }
  import(source, target);
  EXPECT_EQ(Counters(target.get()), expected);
}

TEST(SceneImport, RaisesAllCountersOfEachObject) {
  const SceneHandle source = newScene();
  for (const std::uint32_t i : kInstances) add(source, i, 1);
  const SceneHandle target = newScene();
  import(source, target);
  vrnt::data::forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    using vrnt::data::ClassInfo;
    if constexpr (ClassInfo<Desc>::kKind == vrnt::data::ObjectKind::Instance) {
      const auto& object = target->container<Desc>().at(0);
      const std::uint32_t once =
          ClassInfo<Desc>::kClass == vrnt::data::ObjectClass::LightGroup ? 2 : 1;
      EXPECT_EQ(object.version, once) << ClassInfo<Desc>::kName;
      if constexpr (vrnt::data::kSlotCount<Desc> != 0) {
        EXPECT_EQ(object.referencesVersion, once) << ClassInfo<Desc>::kName;
      }
      if constexpr (vrnt::data::kGroupCount<Desc> != 0) {
        for (const std::uint32_t version : object.groupVersions) EXPECT_EQ(version, 1U);
      }
    }
  });
}

TEST(SceneImport, OfASceneIntoItselfDoublesWhatItHeld) {
  const SceneHandle scene = newScene();
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) add(scene, i, 3);
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) vrdmRemove(scene.get(), i, 1);
  const ValueHandle value = parseValue("{ t = { texture_ref = 2; }; }");
  setValue(scene, VRDM_CLASS_MATERIAL, 2, value);
  vrdmSetReference(scene.get(), VRDM_CLASS_SHAPE, 0, 0, 2);
  setList(scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, {2, ~0});
  const auto pairs = import(scene, scene);
  for (const std::uint32_t i : kPrograms) EXPECT_EQ(pairs[i], (Pairs{{0, 0}, {2, 0}}));
  // The first asset goes to the gap, and is not taken for one of the source afterwards.
  for (const std::uint32_t i : kAssets) {
    EXPECT_EQ(pairs[i], (Pairs{{0, 1}, {2, 3}}));
    EXPECT_EQ(liveness(scene, i), (Words{1, 1, 1, 1}));
  }
  for (const std::uint32_t i : kInstances) {
    EXPECT_EQ(pairs[i], (Pairs{{0, 3}, {2, 4}}));
    EXPECT_EQ(liveness(scene, i), (Words{1, 0, 1, 1, 1, 0}));
  }
  EXPECT_EQ(textOf(valueOf(scene, VRDM_CLASS_MATERIAL, 2)), "{ t = { texture_ref = 2; }; }");
  EXPECT_EQ(textOf(valueOf(scene, VRDM_CLASS_MATERIAL, 4)), "{ t = { texture_ref = 3; }; }");
  EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_SHAPE, 3, 0), 4);
  EXPECT_EQ(listOf(scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0), (Words{2, ~0}));
  EXPECT_EQ(listOf(scene.get(), VRDM_CLASS_LIGHT_GROUP, 3, 0), (Words{4, ~3}));
}

// --- Programs ---

TEST(SceneImport, TakesAProgramThatTheTargetHasForTheFirstOfItsId) {
  for (const std::uint32_t objectClass : kPrograms) {
    const SceneHandle source = newScene();
    for (const char* text : {"b", "a", "removed", "c", "b", "c"}) {
      vrdmAddProgram(source.get(), objectClass, text);
    }
    vrdmRemove(source.get(), objectClass, 2);
    const SceneHandle target = newScene();
    for (const char* text : {"b", "x", "b", "y", "b"}) {
      vrdmAddProgram(target.get(), objectClass, text);
    }
    vrdmRemove(target.get(), objectClass, 0);
    vrdmRemove(target.get(), objectClass, 3);
    // "b" is at 2 and 4. "a" and "c" fill the gaps, and the second "c" finds the first.
    EXPECT_EQ(import(source, target)[objectClass], (Pairs{{0, 2}, {1, 0}, {3, 3}, {4, 2}, {5, 3}}));
    EXPECT_EQ(liveness(target, objectClass), (Words{1, 1, 1, 1, 1}));
    EXPECT_STREQ(vrdmGetProgramSource(target.get(), objectClass, 0), "a");
    EXPECT_STREQ(vrdmGetProgramSource(target.get(), objectClass, 3), "c");
    EXPECT_EQ(*vrdmGetUniqueId(target.get(), objectClass, 0), UniqueId::hash("a"));
  }
}

TEST(SceneImport, KeepsProgramsOfOneTextInTheirOwnClasses) {
  const SceneHandle source = newScene();
  vrdmAddProgram(source.get(), VRDM_CLASS_CAMERA_PROGRAM, "a");
  const SceneHandle target = newScene();
  vrdmAddProgram(target.get(), VRDM_CLASS_LIGHT_PROGRAM, "x");
  vrdmAddProgram(target.get(), VRDM_CLASS_LIGHT_PROGRAM, "a");
  EXPECT_EQ(import(source, target)[VRDM_CLASS_CAMERA_PROGRAM], (Pairs{{0, 0}}));
  EXPECT_EQ(vrdmContainerSize(target.get(), VRDM_CLASS_CAMERA_PROGRAM), 1U);
}

TEST(SceneImport, TakesAnEmptyProgram) {
  const SceneHandle source = newScene();
  vrdmAddProgram(source.get(), VRDM_CLASS_CAMERA_PROGRAM, "");
  const SceneHandle target = newScene();
  EXPECT_EQ(import(source, target)[VRDM_CLASS_CAMERA_PROGRAM], (Pairs{{0, 0}}));
  EXPECT_STREQ(vrdmGetProgramSource(target.get(), VRDM_CLASS_CAMERA_PROGRAM, 0), "");
  EXPECT_TRUE(vrdmValid(target.get(), VRDM_CLASS_CAMERA_PROGRAM, 0));
}

// As a file can bring it in.
void setProgramText(const SceneHandle& scene, std::int32_t index, const std::string& text) {
  auto& program = scene->container<vrnt::data::CameraSource>().at(index);
  std::free(program.text);
  program.text = static_cast<char*>(std::calloc(text.size() + 1, 1));
  ASSERT_NE(program.text, nullptr);
  text.copy(program.text, text.size());
  program.length = text.size();
  program.id = UniqueId::hash(text.data(), text.size());
}

TEST(SceneImport, CutsAProgramAtItsFirstNulAndComputesItsIdAnew) {
  const std::string text("a\0b", 3);
  const SceneHandle source = newScene();
  for (const char* placeholder : {"", "a", "a"}) {
    vrdmAddProgram(source.get(), VRDM_CLASS_CAMERA_PROGRAM, placeholder);
  }
  setProgramText(source, 0, text);
  const SceneHandle target = newScene();
  vrdmAddProgram(target.get(), VRDM_CLASS_CAMERA_PROGRAM, "x");
  vrdmAddProgram(target.get(), VRDM_CLASS_CAMERA_PROGRAM, "a");
  vrdmRemove(target.get(), VRDM_CLASS_CAMERA_PROGRAM, 0);
  // It isn't "a" when it is looked for, and is "a" when it stands in the gap, the first of them.
  EXPECT_EQ(import(source, target)[VRDM_CLASS_CAMERA_PROGRAM], (Pairs{{0, 0}, {1, 0}, {2, 0}}));
  EXPECT_EQ(*vrdmGetUniqueId(target.get(), VRDM_CLASS_CAMERA_PROGRAM, 0), UniqueId::hash("a"));
  EXPECT_EQ(vrdmContainerSize(target.get(), VRDM_CLASS_CAMERA_PROGRAM), 2U);
}

// --- Assets ---

TEST(SceneImport, AddsAssetsTwiceOnTheSecondImport) {
  const SceneHandle source = newScene();
  addGraph(source.get(), "bytes");
  const SceneHandle target = newScene();
  EXPECT_EQ(import(source, target)[VRDM_CLASS_MATERIAL_GRAPH], (Pairs{{0, 0}}));
  EXPECT_EQ(import(source, target)[VRDM_CLASS_MATERIAL_GRAPH], (Pairs{{0, 1}}));
  const AssetStorage* const block = blockOf(source, VRDM_CLASS_MATERIAL_GRAPH, 0);
  EXPECT_EQ(block->references, 3U);
  for (const std::int32_t i : {0, 1}) {
    EXPECT_EQ(blockOf(target, VRDM_CLASS_MATERIAL_GRAPH, i), block);
    EXPECT_EQ(*vrdmGetUniqueId(target.get(), VRDM_CLASS_MATERIAL_GRAPH, i),
              *vrdmGetUniqueId(source.get(), VRDM_CLASS_MATERIAL_GRAPH, 0));
  }
}

TEST(SceneImport, FillsGapsWithAssetsFirst) {
  for (const std::uint32_t objectClass : kAssets) {
    const SceneHandle source = newScene();
    add(source, objectClass, 5);
    vrdmRemove(source.get(), objectClass, 1);
    const SceneHandle target = newScene();
    add(target, objectClass, 4);
    vrdmRemove(target.get(), objectClass, 2);
    vrdmRemove(target.get(), objectClass, 0);
    EXPECT_EQ(import(source, target)[objectClass], (Pairs{{0, 0}, {2, 2}, {3, 4}, {4, 5}}));
    EXPECT_EQ(liveness(target, objectClass), (Words{1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(addObject(target.get(), objectClass), 6U);
  }
}

TEST(SceneImport, CopiesTheDescriptorsOfAssets) {
  const SceneHandle source = newScene();
  const std::array<std::int32_t, 4> mesh = {0, 1, 0, 0};
  const std::array<std::int32_t, 5> texture = {1, 1, 1, 2, 0};
  const std::array<std::uint64_t, 3> graph = {2, 7, 9};
  const StorageHandle storage = newStorage(std::string(44, 'm'));
  AssetStorage* handle = storage.get();
  vrdmAddAsset(source.get(), VRDM_CLASS_MESH, mesh.data(), &handle);
  vrdmAddAsset(source.get(), VRDM_CLASS_TEXTURE, texture.data(), &handle);
  vrdmAddAsset(source.get(), VRDM_CLASS_MATERIAL_GRAPH, graph.data(), &handle);
  const SceneHandle target = newScene();
  import(source, target);
  std::array<std::int32_t, 4> meshCopy{};
  std::array<std::int32_t, 5> textureCopy{};
  std::array<std::uint64_t, 3> graphCopy{};
  vrdmGetAssetStorage(target.get(), VRDM_CLASS_MESH, 0, meshCopy.data());
  vrdmGetAssetStorage(target.get(), VRDM_CLASS_TEXTURE, 0, textureCopy.data());
  vrdmGetAssetStorage(target.get(), VRDM_CLASS_MATERIAL_GRAPH, 0, graphCopy.data());
  EXPECT_EQ(meshCopy, mesh);
  EXPECT_EQ(textureCopy, texture);
  EXPECT_EQ(graphCopy, graph);
}

// --- Where instances go ---

TEST(SceneImport, PutsInstancesBehindTheLastSlotAndFreeSlotsToTheEnd) {
  for (const std::uint32_t objectClass : kInstances) {
    const SceneHandle source = newScene();
    add(source, objectClass, 4);
    vrdmRemove(source.get(), objectClass, 2);
    const SceneHandle target = newScene();
    add(target, objectClass, 2);
    EXPECT_EQ(import(source, target)[objectClass], (Pairs{{0, 2}, {1, 3}, {3, 4}}));
    EXPECT_EQ(liveness(target, objectClass), (Words{1, 1, 1, 1, 1, 0}));
    // The next addition takes the free slot.
    EXPECT_EQ(addObject(target.get(), objectClass), 5U);
    EXPECT_EQ(addObject(target.get(), objectClass), 6U);
  }
}

TEST(SceneImport, LeavesTheGapsOfTheTarget) {
  for (const std::uint32_t objectClass : kInstances) {
    const SceneHandle source = newScene();
    add(source, objectClass, 2);
    vrdmRemove(source.get(), objectClass, 0);
    const SceneHandle target = newScene();
    add(target, objectClass, 3);
    vrdmRemove(target.get(), objectClass, 1);
    EXPECT_EQ(import(source, target)[objectClass], (Pairs{{1, 3}}));
    EXPECT_EQ(liveness(target, objectClass), (Words{1, 0, 1, 1, 0}));
    EXPECT_EQ(addObject(target.get(), objectClass), 1U);
    EXPECT_EQ(addObject(target.get(), objectClass), 4U);
    EXPECT_EQ(addObject(target.get(), objectClass), 5U);
  }
}

TEST(SceneImport, GrowsByFreeSlotsAlone) {
  for (const std::uint32_t objectClass : kInstances) {
    const SceneHandle source = newScene();
    add(source, objectClass, 2);
    vrdmRemove(source.get(), objectClass, 0);
    vrdmRemove(source.get(), objectClass, 1);
    const SceneHandle target = newScene();
    add(target, objectClass, 1);
    const Counters before(target.get());
    EXPECT_EQ(import(source, target)[objectClass], Pairs{});
    EXPECT_EQ(liveness(target, objectClass), (Words{1, 0, 0}));
    EXPECT_EQ(Counters(target.get()), before);
    EXPECT_EQ(addObject(target.get(), objectClass), 1U);
  }
  for (const std::uint32_t objectClass : kAssets) {
    const SceneHandle source = newScene();
    add(source, objectClass, 1);
    vrdmRemove(source.get(), objectClass, 0);
    const SceneHandle target = newScene();
    import(source, target);
    EXPECT_EQ(vrdmContainerSize(target.get(), objectClass), 0U);
  }
}

TEST(SceneImport, CopiesAllGroups) {
  const SceneHandle source = newScene();
  for (const std::uint32_t objectClass : kInstances) {
    add(source, objectClass, 2);
    for (std::uint32_t group = 0; group < vrdmFieldCount(objectClass); ++group) {
      std::string bytes = groupBytes(source.get(), objectClass, 1, group);
      for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i + group + 1);
      const ValueHandle value = groupValue(objectClass, group, bytes);
      ASSERT_TRUE(vrdmSetDataValue(source.get(), objectClass, 1, group, value.get()));
    }
  }
  const SceneHandle target = newScene();
  for (const std::uint32_t objectClass : kInstances) add(target, objectClass, 1);
  import(source, target);
  for (const std::uint32_t objectClass : kInstances) {
    for (std::uint32_t group = 0; group < vrdmFieldCount(objectClass); ++group) {
      for (const std::int32_t i : {0, 1}) {
        EXPECT_EQ(groupBytes(target.get(), objectClass, i + 1, group),
                  groupBytes(source.get(), objectClass, i, group));
      }
    }
  }
}

// --- References ---

// A scene with as many objects of each class as `countOf(class)` says; no two programs are equal.
template <typename CountOf>
SceneHandle sceneOf(const std::string& name, CountOf&& countOf) {
  SceneHandle scene = newScene();
  for (const std::uint32_t i : kPrograms) {
    for (int k = 0; k < countOf(i); ++k) {
      vrdmAddProgram(scene.get(), i, (name + std::to_string(k)).c_str());
    }
  }
  for (const std::uint32_t i : kAssets) add(scene, i, countOf(i));
  for (const std::uint32_t i : kInstances) add(scene, i, countOf(i));
  return scene;
}

TEST(SceneImport, TranslatesSingleSlotsAndListsByTheClassThatTheyReferTo) {
  const Words words = {2, 3, 0, -1, -7, INT32_MAX, kNoTarget};
  int count = 0;
  for (const std::uint32_t objectClass : kInstances) {
    for (std::uint32_t slot = 0; slot < vrdmReferenceCount(objectClass); ++slot) {
      const vrdmReferenceInfo info = vrdmReferenceType(objectClass, slot);
      if (info.kind > VRDM_REFERENCE_LIST) continue;
      ++count;
      // Objects of each class move by another distance.
      const SceneHandle source = sceneOf("source", [](std::uint32_t) { return 3; });
      const SceneHandle target = sceneOf("target", [](std::uint32_t i) { return 10 + int(i); });
      const auto base = static_cast<std::int32_t>(10 + info.targetClass);
      const Words expected = {base + 2, -1, base, -1, -1, -1, -1};
      if (info.kind == VRDM_REFERENCE_LIST) {
        setList(source.get(), objectClass, 1, slot, words);
        const std::int32_t at = import(source, target)[objectClass].at(1).second;
        EXPECT_EQ(listOf(target.get(), objectClass, at, slot), expected) << info.name;
        continue;
      }
      const std::int32_t first = static_cast<std::int32_t>(10 + objectClass);
      for (std::size_t i = 3; i < words.size(); ++i) addInstance(source.get(), objectClass);
      for (std::size_t i = 0; i < words.size(); ++i) {
        vrdmSetReference(source.get(), objectClass, static_cast<std::int32_t>(i), slot,
                         static_cast<std::uint32_t>(words[i]));
      }
      import(source, target);
      Words found;
      for (std::size_t i = 0; i < words.size(); ++i) {
        found.push_back(vrdmGetReference(target.get(), objectClass,
                                         first + static_cast<std::int32_t>(i), slot));
      }
      EXPECT_EQ(found, expected) << info.name;
    }
  }
  EXPECT_EQ(count, 24);
}

TEST(SceneImport, LosesAReferenceToAFreeSlot) {
  const SceneHandle source = newScene();
  add(source, VRDM_CLASS_MATERIAL, 2);
  add(source, VRDM_CLASS_SHAPE, 3);
  vrdmSetReference(source.get(), VRDM_CLASS_SHAPE, 0, 0, 0);
  vrdmSetReference(source.get(), VRDM_CLASS_SHAPE, 1, 0, 1);
  vrdmSetReference(source.get(), VRDM_CLASS_SHAPE, 2, 0, 2);
  vrdmRemove(source.get(), VRDM_CLASS_MATERIAL, 0);
  const SceneHandle target = newScene();
  import(source, target);
  EXPECT_EQ(vrdmGetReference(target.get(), VRDM_CLASS_SHAPE, 0, 0), -1);
  EXPECT_EQ(vrdmGetReference(target.get(), VRDM_CLASS_SHAPE, 1, 0), 0);
  EXPECT_EQ(vrdmGetReference(target.get(), VRDM_CLASS_SHAPE, 2, 0), -1);
}

TEST(SceneImport, KeepsTheFormOfEmittersAndTranslatesThem) {
  const SceneHandle source = newScene();
  add(source, VRDM_CLASS_LIGHT, 3);
  add(source, VRDM_CLASS_SHAPE, 3);
  add(source, VRDM_CLASS_LIGHT_GROUP, 3);
  vrdmRemove(source.get(), VRDM_CLASS_LIGHT_GROUP, 0);
  setList(source.get(), VRDM_CLASS_LIGHT_GROUP, 1, 0, {2, ~1, 0, ~0, 2});
  vrdmSetReference(source.get(), VRDM_CLASS_SHAPE, 0, 2, 2);
  const SceneHandle target = newScene();
  add(target, VRDM_CLASS_LIGHT, 4);
  add(target, VRDM_CLASS_SHAPE, 7);
  EXPECT_EQ(import(source, target)[VRDM_CLASS_LIGHT_GROUP], (Pairs{{1, 0}, {2, 1}}));
  EXPECT_EQ(listOf(target.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0), (Words{9, ~5, 7, ~4, 9}));
  EXPECT_EQ(listOf(target.get(), VRDM_CLASS_LIGHT_GROUP, 1, 0), Words{});
  EXPECT_EQ(vrdmGetReference(target.get(), VRDM_CLASS_SHAPE, 7, 2), 1);
}

TEST(SceneImport, KeepsTheSideOfDecals) {
  const SceneHandle source = newScene();
  add(source, VRDM_CLASS_DECAL, 3);
  add(source, VRDM_CLASS_DECAL_LIST, 1);
  setList(source.get(), VRDM_CLASS_DECAL_LIST, 0, 0, {2, ~2, 0, ~1});
  const SceneHandle target = newScene();
  add(target, VRDM_CLASS_DECAL, 4);
  import(source, target);
  EXPECT_EQ(listOf(target.get(), VRDM_CLASS_DECAL_LIST, 0, 0), (Words{6, ~6, 4, ~5}));
}

TEST(SceneImport, TurnsACodedWordForNoTargetIntoZero) {
  const SceneHandle source = newScene();
  add(source, VRDM_CLASS_LIGHT, 1);
  add(source, VRDM_CLASS_LIGHT_GROUP, 1);
  add(source, VRDM_CLASS_DECAL_LIST, 1);
  setList(source.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, {kNoTarget, ~1, ~0});
  setList(source.get(), VRDM_CLASS_DECAL_LIST, 0, 0, {kNoTarget, ~0});
  const SceneHandle target = newScene();
  import(source, target);
  EXPECT_EQ(listOf(target.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0), (Words{0, 0, ~0}));
  EXPECT_EQ(listOf(target.get(), VRDM_CLASS_DECAL_LIST, 0, 0), (Words{0, 0}));
}

TEST(SceneImport, TurnsACodedNumberWithoutObjectIntoMinusOne) {
  const SceneHandle source = newScene();
  add(source, VRDM_CLASS_SHAPE, 2);
  vrdmRemove(source.get(), VRDM_CLASS_SHAPE, 0);
  add(source, VRDM_CLASS_LIGHT_GROUP, 1);
  add(source, VRDM_CLASS_DECAL_LIST, 1);
  setList(source.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, {0, 1, 2, INT32_MAX});
  setList(source.get(), VRDM_CLASS_DECAL_LIST, 0, 0, {0});
  const SceneHandle target = newScene();
  import(source, target);
  EXPECT_EQ(listOf(target.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0), (Words{-1, 0, -1, -1}));
  EXPECT_EQ(listOf(target.get(), VRDM_CLASS_DECAL_LIST, 0, 0), (Words{-1}));
}

// --- Values ---

// A scene with an object of the class that has this value, and that many textures of which the
// first is removed; and what an import makes of the value where six textures are already.
struct Imported {
  Imported(std::uint32_t objectClass, ValueHandle given, int textures = 5)
      : original(std::move(given)) {
    add(source, VRDM_CLASS_TEXTURE, textures);
    vrdmRemove(source.get(), VRDM_CLASS_TEXTURE, 0);
    add(source, objectClass, 1);
    setValue(source, objectClass, 0, original);
    add(target, VRDM_CLASS_TEXTURE, 6);
    import(source, target);
    value = valueOf(target, objectClass, 0);
  }

  SceneHandle source = newScene();
  SceneHandle target = newScene();
  ValueHandle original;
  ValueHandle value;
};

TEST(SceneImport, RenumbersTheTexturesThatAValueNamesInACopy) {
  for (const std::uint32_t objectClass : kWithValue) {
    const std::string text =
        "{ a = { texture_ref = 3; }; b = 1; c = { d = { texture_ref = 1; }; }; }";
    const Imported result(objectClass, parseValue(text));
    EXPECT_EQ(textOf(result.value),
              "{ a = { texture_ref = 8; }; b = 1; c = { d = { texture_ref = 6; }; }; }");
    EXPECT_EQ(textOf(result.original), text);
    EXPECT_EQ(textOf(valueOf(result.source, objectClass, 0)), text);
    EXPECT_NE(result.value.get(), result.original.get());
  }
}

TEST(SceneImport, RenumbersATextureThatIsTheWholeValue) {
  const Imported result(VRDM_CLASS_MATERIAL, parseValue("{ texture_ref = 4; }"));
  EXPECT_EQ(textOf(result.value), "{ texture_ref = 9; }");
}

TEST(SceneImport, GivesATextureWithoutPairMinusOneAndLeavesNegativeOnes) {
  const Imported result(
      VRDM_CLASS_LIGHT,
      parseValue("{ removed = { texture_ref = 0; }; past = { texture_ref = 5; }; "
                 "last = { texture_ref = 2147483647; }; "
                 "none = { texture_ref = -1; }; less = { texture_ref = -9; }; }"));
  EXPECT_EQ(textOf(result.value),
            "{ removed = { texture_ref = -1; }; past = { texture_ref = -1; }; "
            "last = { texture_ref = -1; }; none = { texture_ref = -1; }; "
            "less = { texture_ref = -9; }; }");
}

// The default value of a type, with an int written at an offset.
ValueHandle defaultWith(const TypeHandle& type, std::uint64_t offset, std::int32_t number) {
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueCreateDefault(type.get(), &error);
  vrntValueWrite(&value, offset, &number, sizeof(number), &error);
  EXPECT_EQ(error, nullptr);
  return ValueHandle(value);
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
  EXPECT_NE(text.find(what), std::string::npos) << text;
  if (text.find(what) != std::string::npos) text.replace(text.find(what), what.size(), by);
  return text;
}

TEST(SceneImport, RenumbersTheTexturesOfSamplers) {
  for (std::uint32_t number = 0; number < 4; ++number) {
    const TypeHandle sampler(vrntTypeSampler(number));
    const Imported alone(VRDM_CLASS_MATERIAL, defaultWith(sampler, 0, 3));
    EXPECT_EQ(textOf(alone.value),
              replaced(textOf(alone.original), "_texture = 3;", "_texture = 8;"));
    const TypeHandle type =
        parseType(std::string("{ { ") + vrntTypeString(sampler.get()) + " s; } a; }");
    const Imported within(VRDM_CLASS_MATERIAL, defaultWith(type, 0, 4));
    EXPECT_EQ(textOf(within.value),
              replaced(textOf(within.original), "_texture = 4;", "_texture = 9;"));
  }
}

// Other annotations make no other sampler; other types do, though one may stand for the other.
TEST(SceneImport, KnowsASamplerByItsTypeButForMetadata) {
  const std::string texture = "{ int spectrum_texture; } spectrum_texture; ";
  const std::string wrap = "enum { CLAMP; BORDER; REPEAT; MIRROR; }";
  const std::string rest = "{ " + wrap + " u; " + wrap + " v; } wrapmode; ";
  const std::string colour = "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; ";
  const TypeHandle marked =
      parseType("{ { int @name=\"T\" spectrum_texture; } @a spectrum_texture; " + rest + colour +
                "float[]* spectrum; } @b border_spectrum; float border_alpha; } @name=\"S\"");
  EXPECT_EQ(readAt<std::int32_t>(Imported(VRDM_CLASS_LIGHT, defaultWith(marked, 0, 3)).value), 8);
  const TypeHandle narrower =
      parseType("{ " + texture + rest + colour +
                "float[3]* spectrum; } border_spectrum; float border_alpha; }");
  EXPECT_EQ(readAt<std::int32_t>(Imported(VRDM_CLASS_LIGHT, defaultWith(narrower, 0, 3)).value), 3);
}

TEST(SceneImport, RenumbersTheTexturesOfMaterialParameters) {
  for (std::uint32_t number = 0; number < 6; ++number) {
    const TypeHandle type(vrntTypeMaterialParam(number));
    vrntValuesError_t* error = nullptr;
    Imported result(VRDM_CLASS_MATERIAL, ValueHandle(vrntValueCreate(type.get(), &error)));
    // All numbers are zero, that of a texture which is gone.
    const std::string text = textOf(result.value);
    EXPECT_EQ(text.find("_texture = 0;"), std::string::npos) << text;
    EXPECT_EQ(text.find("texture_ref = 0;"), std::string::npos) << text;
    EXPECT_TRUE(text.find("_texture = -1;") != std::string::npos ||
                text.find("texture_ref = -1;") != std::string::npos)
        << text;
  }
}

TEST(SceneImport, LeavesTexturesOutsideReferencesAndSamplersAloneAndTheValueShared) {
  for (const std::string& text : std::vector<std::string>{
           "3", "{ a = 1; }", "{ t = { index = 1; }; }",
           // A texture of a sampler by itself, or in a struct that isn't quite a sampler.
           "{ t = { spectrum_texture = 1; }; }", "{ float_texture = { float_texture = 1; }; }",
           "{ float_sphere_texture = { float_sphere_texture = 1; }; }",
           "{ spectrum_sphere_texture = { spectrum_texture = 1; }; }",
           "{ texture_ref = 1; more = 2; }", "{ texture_ref = 1.0; }",
           // Arrays and references aren't entered.
           "[ { texture_ref = 1; } ]", "{ a = [ { texture_ref = 1; } ]; }",
           "{ a = &{ texture_ref = 1; }; }",
           // Nothing but numbers that stay.
           "{ a = { texture_ref = -1; }; b = { texture_ref = -5; }; }",
           "{ spectrum_sphere_texture = { spectrum_sphere_texture = -1; }; }"}) {
    const Imported result(VRDM_CLASS_MATERIAL, parseValue(text));
    EXPECT_EQ(textOf(result.value), text);
    EXPECT_EQ(vrntValueBinary(result.value.get()), vrntValueBinary(result.original.get())) << text;
  }
}

TEST(SceneImport, KeepsWhatAChangedValueRefersTo) {
  const Imported result(VRDM_CLASS_MATERIAL,
                        parseValue("{ r = &[ 1.0, 2.0 ]; t = { texture_ref = 2; }; r2 = &3; }"));
  EXPECT_EQ(textOf(result.value), "{ r = &[ 1.0, 2.0 ]; t = { texture_ref = 7; }; r2 = &3; }");
  EXPECT_EQ(textOf(result.original), "{ r = &[ 1.0, 2.0 ]; t = { texture_ref = 2; }; r2 = &3; }");
}

TEST(SceneImport, GoesAsDeepAsTheValueOnASmallStack) {
  vrnt::Value value = zerosWithin(kDeep, "{ int texture_ref; }");
  const SceneHandle source = newScene();
  add(source, VRDM_CLASS_TEXTURE, 1);
  setValue(source, VRDM_CLASS_CAMERA, addInstance(source.get(), VRDM_CLASS_CAMERA),
           ValueHandle(value.release()));
  const SceneHandle target = newScene();
  add(target, VRDM_CLASS_TEXTURE, 7);
  runOnStack(kSmallStack, [&] { target->import(*source); });
  EXPECT_EQ(readAt<std::int32_t>(valueOf(target, VRDM_CLASS_CAMERA, 0)), 7);
  EXPECT_EQ(readAt<std::int32_t>(valueOf(source, VRDM_CLASS_CAMERA, 0)), 0);
}

TEST(SceneImport, TakesAnObjectWithoutValueAsOneWithout) {
  const SceneHandle source = newScene();
  for (const std::uint32_t objectClass : kWithValue) addInstance(source.get(), objectClass);
  const SceneHandle target = newScene();
  import(source, target);
  for (const std::uint32_t objectClass : kWithValue) {
    EXPECT_TRUE(vrdmValid(target.get(), objectClass, 0));
    EXPECT_EQ(valueOf(target, objectClass, 0), nullptr);
  }
}

// --- Growth ---

// Each object of a large scene refers to its own, and all programs differ. Were it quadratic, it
// would take minutes.
TEST(SceneImport, GrowsLinearly) {
  constexpr int kCount = 100'000;
  const SceneHandle source = newScene();
  const StorageHandle storage = newStorage("");
  AssetStorage* handle = storage.get();
  const std::array<std::uint64_t, 3> desc = {};
  for (int i = 0; i < kCount; ++i) {
    vrdmAddProgram(source.get(), VRDM_CLASS_LIGHT_PROGRAM, std::to_string(i).c_str());
    vrdmAddAsset(source.get(), VRDM_CLASS_MESH, desc.data(), &handle);
    addInstance(source.get(), VRDM_CLASS_SHAPE);
    vrdmSetReference(source.get(), VRDM_CLASS_SHAPE, i, 1,
                     static_cast<std::uint32_t>(kCount - 1 - i));
  }
  // A gap in front keeps each pair from standing at its own number.
  vrdmRemove(source.get(), VRDM_CLASS_MESH, 0);
  const SceneHandle target = newScene();
  import(source, target);
  import(source, target);
  EXPECT_EQ(vrdmContainerSize(target.get(), VRDM_CLASS_LIGHT_PROGRAM),
            static_cast<std::uint32_t>(kCount));
  EXPECT_EQ(vrdmGetReference(target.get(), VRDM_CLASS_SHAPE, 0, 1), kCount - 2);
  EXPECT_EQ(vrdmGetReference(target.get(), VRDM_CLASS_SHAPE, kCount - 1, 1), -1);
  EXPECT_EQ(vrdmGetReference(target.get(), VRDM_CLASS_SHAPE, kCount, 1), 2 * kCount - 3);
}

TEST(SceneImport, OfManySmallScenesGrowsLinearly) {
  const SceneHandle source = newScene();
  addInstance(source.get(), VRDM_CLASS_SHAPE);
  const SceneHandle target = newScene();
  constexpr std::uint32_t kCount = 20'000;
  for (std::uint32_t i = 0; i < kCount; ++i) target->import(*source);
  EXPECT_EQ(vrdmContainerSize(target.get(), VRDM_CLASS_SHAPE), kCount);
  EXPECT_TRUE(vrdmValid(target.get(), VRDM_CLASS_SHAPE, kCount - 1));
}

}  // namespace
