// A scene that is exported and built again is the same.
#include <cmath>
#include <cstdlib>
#include <limits>

#include "support/depth.hpp"
#include "support/small_stack.hpp"
#include "toolkit/json_support.hpp"

namespace vornath_test {
namespace {

using vrnt::data::Scene;

// Writes random numbers into all fields of a value, but not into its padding.
void randomize(vrntValue_t** value, const vrntType_t* type, std::uint64_t offset,
               std::mt19937& random) {
  vrntValuesError_t* error = nullptr;
  const std::uint32_t kind = vrntTypeDescriptor(type);
  if (kind == VRNT_DESCRIPTOR_STRUCT) {
    for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
      vrntValueView_t field{};
      vrntValueStructField(&field, type, i);
      randomize(value, field.type, offset + field.offset, random);
    }
    return;
  }
  if (kind == VRNT_DESCRIPTOR_ARRAY) {
    std::int32_t shape[4] = {};
    vrntTypeArrayShape(type, shape);
    for (std::int32_t i = 0; i < shape[0]; ++i) {
      vrntValueView_t element{};
      vrntValueArrayElement(&element, type, &i);
      randomize(value, element.type, offset + element.offset, random);
    }
    return;
  }
  const bool isEnum = kind == VRNT_DESCRIPTOR_ENUM;
  const bool isChar = !isEnum && vrntTypeBasetype(type) == VRNT_BASETYPE_CHAR;
  const std::uint32_t lanes = isEnum ? 1 : vrntTypeVectorDimension(type);
  for (std::uint32_t i = 0; i < lanes; ++i) {
    if (random() % 3 == 0) continue;  // keeps its default
    auto word = static_cast<std::uint32_t>(random() % 4 == 0 ? random() % 5 : random());
    if (random() % 8 == 0) word = 0xFFFFFFFFU;
    const std::uint64_t size = isChar ? 1 : 4;
    vrntValueWrite(value, offset + i * size, &word, size, &error);
    ASSERT_EQ(error, nullptr);
  }
}

const char* const kValues[] = {
    "{ }",
    "{ a = 1.5; b = true; c = 65c; d = 2.25h; e = float3(1.0, 2.0, 3.0); }",
    "[ 1, 2, 3 ]",
    "&&&[ { x = 1; }, { x = 2; } ]",
    "{ l = [ &1, &2 ]; e = B : enum { A; B; }; s = { s = { }; }; }",
    "[ [ 1.0, 2.0 ], [ 3.0, 4.0 ], [ 5.0, 6.0 ] ]",
    "17",
};

SceneHandle randomScene(std::mt19937& random) {
  SceneHandle owner(vrdmCreateScene());
  vrdmScene_t* const scene = owner.get();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    const auto count = static_cast<std::uint32_t>(random() % 5);
    for (std::uint32_t i = 0; i < count; ++i) {
      switch (vrdmObjectClass(c)) {
        case VRDM_KIND_PROGRAM:
          vrdmAddProgram(scene, c, random() % 4 == 0 ? "" : "a\t\"text\" \xC3\xA9\n");
          continue;
        case VRDM_KIND_ASSET:
          addBytes(scene, c, c == VRDM_CLASS_MESH ? "" : std::string(1 + random() % 9, 'x'));
          continue;
        default:
          break;
      }
      const auto index = static_cast<std::int32_t>(vrdmCreateInstance(scene, c));
      if (vrdmHasValue(c)) {
        vrdmSetInstanceValue(scene, c, index,
                             parseValue(kValues[random() % std::size(kValues)]).get());
      }
      for (std::uint32_t g = 0; g < vrdmFieldCount(c); ++g) {
        if (random() % 3 == 0) continue;
        const TypeHandle type(vrdmFieldType(c, g));
        vrntValue_t* value = vrdmGetDataValue(scene, c, index, g);
        randomize(&value, type.get(), 0, random);
        vrdmSetDataValue(scene, c, index, g, value);
        vrntValueDestroy(value);
      }
      for (std::uint32_t s = 0; s < vrdmReferenceCount(c); ++s) {
        const bool list = vrdmReferenceType(c, s).kind >= VRDM_REFERENCE_LIST;
        const auto word = [&random]() -> std::uint32_t {
          switch (random() % 6) {
            case 0:
              return 0x80000000U;
            case 1:
              return static_cast<std::uint32_t>(random());
            case 2:
              return UINT32_MAX;
            case 3:
              return ~static_cast<std::uint32_t>(random() % 4);
            default:
              return static_cast<std::uint32_t>(random() % 4);
          }
        };
        if (!list) {
          if (random() % 2 == 0) vrdmSetReference(scene, c, index, s, word());
          continue;
        }
        vrdmSetReference(scene, c, index, s, static_cast<std::uint32_t>(random() % 4));
        const std::int32_t length = vrdmGetReferenceCount(scene, c, index, s);
        std::int32_t* const words = vrdmModifyReferenceList(scene, c, index, s);
        for (std::int32_t w = 0; w < length; ++w) words[w] = static_cast<std::int32_t>(word());
      }
    }
    for (std::uint32_t i = 0; i < count; ++i) {
      if (random() % 4 == 0) vrdmRemove(scene, c, static_cast<std::int32_t>(i));
    }
  }
  for (std::uint32_t g = 0; g < 4; ++g) {
    const TypeHandle type(vrdmFieldType(VRDM_CLASS_SCENE_DATA, g));
    vrntValue_t* value = vrdmGetSceneDataValue(scene, g);
    if (random() % 2 == 0) randomize(&value, type.get(), 0, random);
    vrdmSetSceneDataValue(scene, g, value);
    vrntValueDestroy(value);
  }
  return owner;
}

TEST(JsonRoundTrip, GivesAnEmptySceneBack) {
  const SceneHandle scene(vrdmCreateScene());
  expectRoundTrip(scene.get());
}

TEST(JsonRoundTrip, GivesASceneOfAllClassesBack) {
  const SceneHandle scene = sceneOfAllClasses();
  expectRoundTrip(scene.get());
  EXPECT_TRUE(Scene::equivalent(*scene, *build(jsonOf(scene.get()))));
}

TEST(JsonRoundTrip, GivesRandomScenesBack) {
  std::mt19937 random(7);
  for (int i = 0; i < 60; ++i) {
    const SceneHandle scene = randomScene(random);
    expectRoundTrip(scene.get());
    if (HasFatalFailure() || HasNonfatalFailure()) FAIL() << "scene " << i;
  }
}

TEST(JsonRoundTrip, GivesASceneFromAFileBack) {
  std::mt19937 random(11);
  for (int i = 0; i < 10; ++i) {
    const SceneHandle scene = randomScene(random);
    const std::string bytes = bytesOf(scene.get());
    std::istringstream stream(bytes);
    const Scene read = std::move(Scene::deserialize(stream, vrnt::UniqueId::null())).value();
    EXPECT_EQ(jsonOf(&read), jsonOf(scene.get()));
    EXPECT_EQ(jsonOf(&read, true), jsonOf(scene.get(), true));
  }
}

#ifdef BUILD_SCENE
TEST(JsonRoundTrip, GivesTheCornellBoxBackByFilesToo) {
  const TemporaryFolder folder;
  const std::string path = folder.file("box.vrnscene");
  const std::string command = std::string(BUILD_SCENE) + " " + path + " >" + folder.file("out");
  ASSERT_EQ(std::system(command.c_str()), 0);
  vrdmScene_t* opened = nullptr;
  ASSERT_EQ(vrtkSceneOpen(path.c_str(), nullptr, &opened, nullptr, nullptr), VRTK_OK);
  const SceneHandle scene(opened);
  expectRoundTrip(opened);
  const std::string json = folder.file("box.json");
  ASSERT_EQ(vrtkSceneExportFile(opened, json.c_str(), nullptr, nullptr), VRTK_OK);
  vrdmScene_t* built = nullptr;
  ASSERT_EQ(vrtkSceneBuildFile(json.c_str(), nullptr, &built, nullptr, nullptr), VRTK_OK);
  const SceneHandle owner(built);
  EXPECT_TRUE(Scene::equivalent(*scene, *built));
  EXPECT_TRUE(contentOf(built) == contentOf(opened));
}
#endif

TEST(JsonRoundTrip, KeepsIds) {
  const SceneHandle scene = sceneOfAllClasses();
  const SceneHandle built = build(jsonOf(scene.get()));
  EXPECT_EQ(*vrdmSceneId(built.get()), *vrdmSceneId(scene.get()));
  for (const std::uint32_t c : {VRDM_CLASS_MESH, VRDM_CLASS_TEXTURE, VRDM_CLASS_MATERIAL_GRAPH,
                                VRDM_CLASS_CAMERA_PROGRAM}) {
    EXPECT_EQ(*vrdmGetUniqueId(built.get(), c, 0), *vrdmGetUniqueId(scene.get(), c, 0));
  }
}

TEST(JsonRoundTrip, KeepsFreeSlotsAtTheEndAndTheNextAddition) {
  const SceneHandle scene(vrdmCreateScene());
  for (int i = 0; i < 5; ++i) vrdmCreateInstance(scene.get(), VRDM_CLASS_DECAL);
  for (const int i : {1, 3, 4}) vrdmRemove(scene.get(), VRDM_CLASS_DECAL, i);
  const SceneHandle built = build(jsonOf(scene.get()));
  EXPECT_EQ(vrdmContainerSize(built.get(), VRDM_CLASS_DECAL), 5U);
  for (const std::uint32_t expected : {1U, 3U, 4U, 5U}) {
    EXPECT_EQ(vrdmCreateInstance(built.get(), VRDM_CLASS_DECAL), expected);
  }
}

TEST(JsonRoundTrip, KeepsOddNumbersOfAllKinds) {
  const SceneHandle scene = sceneWith(
      VRDM_CLASS_MATERIAL,
      "{ f = [ 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0 ]; h = [ 1.0h, 2.0h, 3.0h, 4.0h ]; b = [ true, "
      "false ]; i = [ 1, 2 ]; e = A : enum { A; B; }; c = 255c; }");
  vrntValue_t* value = vrdmGetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0);
  vrntValuesError_t* error = nullptr;
  const std::uint32_t floats[] = {0x7FC00000, 0x7FC00001, 0xFFC00000, 0x7F800000,
                                  0xFF800000, 0x80000000, 0x00000001};
  vrntValueWrite(&value, 0, floats, sizeof(floats), &error);
  const std::uint16_t halves[] = {0x7E00, 0x7E01, 0xFC00, 0x0001};
  vrntValueWrite(&value, 28, halves, sizeof(halves), &error);
  const std::uint32_t words[] = {1, 0xFFFFFFFE, 0x80000000, 0x7FFFFFFF, 77};
  vrntValueWrite(&value, 36, words, sizeof(words), &error);
  ASSERT_EQ(error, nullptr);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value);
  vrntValueDestroy(value);
  expectRoundTrip(scene.get());
  const std::string json = jsonOf(scene.get());
  for (const char* const part :
       {R"("f": ["nan", "nan:7fc00001", "nan:ffc00000", "inf", "-inf", -0.0, 1e-45])",
        R"("h": ["nan", "nan:7e01", "-inf", 6e-08])", R"("b": ["bool:00000001", "bool:fffffffe"])",
        R"("i": [-2147483648, 2147483647])", R"("e": 77)", R"("c": 255)"}) {
    EXPECT_NE(json.find(part), std::string::npos) << part << "\n" << json;
  }
}

TEST(JsonRoundTrip, KeepsWhichWordsShareABlock) {
  const SceneHandle scene = sceneWith(VRDM_CLASS_MATERIAL);
  vrntValue_t* value = parseValue("{ a = &1; b = &1; c = &1; d = &&1; }").release();
  const ValueHandle shared = parseValue("{ t = 3; }");
  vrntValuesError_t* error = nullptr;
  const TypeHandle any = parseType("void*");
  vrntValue_t* inner = parseValue("&1").release();
  const vrntValueView_t start{any.get(), 0};
  vrntValueSetReference(&inner, &start, shared.get(), &error);
  for (const std::uint64_t offset : {0, 16}) {
    const vrntValueView_t view{any.get(), offset};
    vrntValueSetReference(&value, &view, shared.get(), &error);
  }
  const vrntValueView_t last{any.get(), 24};
  vrntValueSetReference(&value, &last, inner, &error);
  vrntValueDestroy(inner);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value);
  vrntValueDestroy(value);
  expectRoundTrip(scene.get());
  const SceneHandle built = build(jsonOf(scene.get()));
  const ValueHandle back(vrdmGetInstanceValue(built.get(), VRDM_CLASS_MATERIAL, 0));
  EXPECT_EQ(referencedBlock(back.get(), 0), referencedBlock(back.get(), 16));
  EXPECT_NE(referencedBlock(back.get(), 0), referencedBlock(back.get(), 8));
  EXPECT_EQ(referencedBlock(referencedBlock(back.get(), 24)), referencedBlock(back.get(), 0));
}

TEST(JsonRoundTrip, KeepsForeignAddressesAndFunctions) {
  const SceneHandle scene = sceneWith(VRDM_CLASS_MATERIAL);
  vrntValuesError_t* error = nullptr;
  const TypeHandle type = parseType("{ int* a; void* b; ((int) => int) f; ((int) => int) g; }");
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  const std::uint64_t words[] = {0x1234567 * 2 + 1, UINT64_MAX, 0x11, 0, 0, 0};
  vrntValueWrite(&value, 0, words, sizeof(words), &error);
  ASSERT_EQ(error, nullptr);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value);
  vrntValueDestroy(value);
  expectRoundTrip(scene.get());
  const std::string json = jsonOf(scene.get());
  EXPECT_NE(json.find(R"("a": { "address": "0x1234567" })"), std::string::npos) << json;
}

TEST(JsonRoundTrip, KeepsEnumsWhoseConstructorsHaveFields) {
  const SceneHandle scene =
      sceneWith(VRDM_CLASS_LIGHT, "{ e = Two : enum { One; Two(int json_round_trip_only); }; }");
  expectRoundTrip(scene.get());
  EXPECT_NE(jsonOf(scene.get()).find(R"("e": { "Two": [] })"), std::string::npos)
      << jsonOf(scene.get());
}

TEST(JsonRoundTrip, KeepsReferencesToBlocksOfAnotherType) {
  const SceneHandle scene = sceneWith(VRDM_CLASS_LIGHT);
  vrntValuesError_t* error = nullptr;
  const TypeHandle type = parseType("{ float[]* s; int* i; void* v; }");
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  const TypeHandle any = parseType("void*");
  for (const std::uint64_t offset : {0, 8, 16}) {
    const vrntValueView_t view{any.get(), offset};
    vrntValueSetReference(&value, &view, parseValue("[ 1.0, 2.0 ]").get(), &error);
  }
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_LIGHT, 0, value);
  vrntValueDestroy(value);
  expectRoundTrip(scene.get());
  EXPECT_NE(jsonOf(scene.get()).find(R"("s": { "type": "float[2]", "to": [1.0, 2.0] })"),
            std::string::npos)
      << jsonOf(scene.get());
}

TEST(JsonRoundTrip, KeepsArraysOfSeveralDimensionsAndOfNothing) {
  const SceneHandle scene = sceneWith(VRDM_CLASS_LIGHT);
  vrntValuesError_t* error = nullptr;
  const TypeHandle type = parseType(
      "{ int[2,3] a; float2[2][2] b; { }[3] c; int[0] d; { char x; float3 y; }[2,1,2] e; int[3,0] "
      "f; }");
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  for (std::int32_t i = 0; i < 6; ++i) {
    const std::uint64_t offset = 4 * static_cast<std::uint64_t>(i);
    vrntValueWrite(&value, offset, &i, sizeof(i), &error);
  }
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_LIGHT, 0, value);
  vrntValueDestroy(value);
  expectRoundTrip(scene.get());
  const std::string json = jsonOf(scene.get());
  EXPECT_NE(json.find(R"("a": [[0, 1], [2, 3], [4, 5]])"), std::string::npos) << json;
  EXPECT_NE(json.find(R"("b": [[[0.0, 0.0], [0.0, 0.0]], [[0.0, 0.0], [0.0, 0.0]]])"),
            std::string::npos)
      << json;
}

TEST(JsonRoundTrip, KeepsProgramsThatAreNoUtf8) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmAddProgram(scene.get(), VRDM_CLASS_LIGHT_PROGRAM, "\xFF\xFEtext");
  expectRoundTrip(scene.get());
  EXPECT_NE(jsonOf(scene.get()).find(R"("text": { "base64": "//50ZXh0" })"), std::string::npos);
}

TEST(JsonRoundTrip, KeepsAnObjectWithoutItsValue) {
  const SceneHandle scene = sceneWith(VRDM_CLASS_LIGHT);
  const SceneHandle built = build(jsonOf(scene.get()));
  EXPECT_EQ(vrdmGetInstanceValue(built.get(), VRDM_CLASS_LIGHT, 0), nullptr);
  EXPECT_EQ(jsonOf(built.get()), jsonOf(scene.get()));
}

TEST(JsonRoundTrip, KeepsAllBytesOfAnAssetThatHasMoreThanItsRecordSays) {
  const SceneHandle scene(vrdmCreateScene());
  const vrdmMaterialGraphDesc desc{3, 1, 2};
  AssetStorage* const storage = vrdmAssetStorageCopy("longer", 6);
  vrdmAddAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, &desc, &storage);
  vrdmAssetStorageRelease(storage);
  const SceneHandle built = build(jsonOf(scene.get()));
  EXPECT_TRUE(Scene::equivalent(*scene, *built));
}

TEST(JsonRoundTrip, TakesDeepValuesOnASmallStack) {
  const int depth = kDepth / 4;
  const SceneHandle scene = sceneWith(VRDM_CLASS_LIGHT);
  vrntValuesError_t* error = nullptr;
  const TypeHandle any = parseType("void*");
  vrntValue_t* value = vrntValueCreate(any.get(), &error);
  for (int i = 0; i < depth; ++i) {
    vrntValue_t* outer = vrntValueCreate(any.get(), &error);
    const vrntValueView_t view{any.get(), 0};
    vrntValueSetReference(&outer, &view, value, &error);
    vrntValueDestroy(value);
    value = outer;
  }
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_LIGHT, 0, value);
  vrntValueDestroy(value);
  runOnStack(kSmallStack, [&] {
    const std::string json = jsonOf(scene.get());
    EXPECT_LT(json.size(), static_cast<std::size_t>(depth) * 1000);
    const SceneHandle built = build(json);
    ASSERT_NE(built, nullptr);
    EXPECT_EQ(jsonOf(built.get()), json);
  });
}

TEST(JsonRoundTrip, TakesDeepTypesOnASmallStack) {
  const int depth = kDepth / 10;
  std::string type;
  for (int i = 0; i < depth; ++i) type += "{ ";
  type += "int a; ";
  for (int i = 0; i < depth; ++i) type += i + 1 < depth ? "} s; " : "}";
  const TypeHandle parsed = parseType(type);
  vrntValuesError_t* error = nullptr;
  const SceneHandle scene = sceneWith(VRDM_CLASS_LIGHT);
  const ValueHandle value(vrntValueCreate(parsed.get(), &error));
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_LIGHT, 0, value.get());
  runOnStack(kSmallStack, [&] {
    const std::string json = jsonOf(scene.get());
    const SceneHandle built = build(json);
    ASSERT_NE(built, nullptr);
    EXPECT_EQ(jsonOf(built.get()), json);
  });
}

}  // namespace
}  // namespace vornath_test
