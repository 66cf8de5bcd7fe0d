// Differences between scenes.
#include <limits>
#include <random>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

struct DiffDeleter {
  void operator()(vrtkDiff* diff) const { vrtkDiffDestroy(diff); }
};
using DiffHandle = std::unique_ptr<vrtkDiff, DiffDeleter>;

DiffHandle diffOf(const vrdmScene_t* a, const vrdmScene_t* b,
                  const vrtkDiffOptions* options = nullptr) {
  vrtkDiff* diff = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status = vrtkSceneDiff(a, b, options, &diff, &error);
  const ToolkitError owner(error);
  EXPECT_EQ(status, VRTK_OK) << (error != nullptr ? vrtkErrorMessage(error) : "");
  return DiffHandle(diff);
}

// The differences, one a line: the kind, the address, and the texts of both sides.
std::string textOf(const DiffHandle& diff) {
  std::string text;
  for (std::uint64_t i = 0; i < vrtkDiffCount(diff.get()); ++i) {
    const vrtkDiffEntry* const entry = vrtkDiffEntryAt(diff.get(), i);
    text += std::string(vrtkDiffKindName(entry->kind)) + " " + entry->address + ": " +
            (entry->oldText != nullptr ? entry->oldText : "-") + " -> " +
            (entry->newText != nullptr ? entry->newText : "-") + "\n";
  }
  return text;
}

std::string textOf(const vrdmScene_t* a, const vrdmScene_t* b,
                   const vrtkDiffOptions* options = nullptr) {
  return textOf(diffOf(a, b, options));
}

void setField(vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index,
              std::uint32_t group, std::uint32_t field, const void* bytes, std::uint64_t size) {
  vrntValue_t* value = vrdmGetDataValue(scene, objectClass, index, group);
  vrntValueView_t view{};
  vrntValueStructField(&view, vrntValueType(value), field);
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(&value, view.offset, bytes, size, &error);
  ASSERT_EQ(error, nullptr);
  ASSERT_TRUE(vrdmSetDataValue(scene, objectClass, index, group, value));
  vrntValueDestroy(value);
}

constexpr std::uint32_t kGeneral = 1;  // the group of a camera with near_distance first

std::string valueDiff(const char* a, const char* b) {
  SceneHandle scenes[2];
  for (int i = 0; i < 2; ++i) {
    scenes[i].reset(vrdmCreateScene());
    vrdmCreateInstance(scenes[i].get(), VRDM_CLASS_MATERIAL);
    const ValueHandle value = parseValue(i == 0 ? a : b);
    vrdmSetInstanceValue(scenes[i].get(), VRDM_CLASS_MATERIAL, 0, value.get());
  }
  return textOf(scenes[0].get(), scenes[1].get());
}

TEST(vrtkSceneDiff, FindsNothingInTheSameContent) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = sceneOfAllClasses();
  EXPECT_EQ(textOf(a.get(), b.get()), "");
  EXPECT_EQ(textOf(a.get(), a.get()), "");
  EXPECT_EQ(vrtkDiffFound(diffOf(a.get(), b.get()).get()), 0U);
}

TEST(vrtkSceneDiff, TellsFieldsByTheirAddressesWithOldAndNewValues) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = sceneOfAllClasses();
  const float distance = 0.1F;
  setField(b.get(), VRDM_CLASS_CAMERA, 0, kGeneral, 0, &distance, 4);
  EXPECT_EQ(textOf(a.get(), b.get()),
            "changed Camera/0/groups/General/near_distance: 0.0 -> 0.1\n");
  // A vector is one difference, and so is an enum.
  const float row[4] = {1, 0, 2, 3};
  setField(b.get(), VRDM_CLASS_CAMERA, 0, 0, 0, row, sizeof(row));
  const std::int32_t mode = 1;
  setField(b.get(), VRDM_CLASS_CAMERA, 0, 3, 0, &mode, 4);
  EXPECT_EQ(textOf(a.get(), b.get()),
            "changed Camera/0/groups/Transformation/matrix/x: [1.0, 0.0, 0.0, 0.0] -> "
            "[1.0, 0.0, 2.0, 3.0]\n"
            "changed Camera/0/groups/General/near_distance: 0.0 -> 0.1\n"
            "changed Camera/0/groups/Backplate/mode: \"DISABLED\" -> \"FIT_SIZE\"\n");
  b->data.raytracer.ray_epsilon = 0.5F;
  EXPECT_NE(textOf(a.get(), b.get()).find("changed scene/Raytracer/ray_epsilon: "),
            std::string::npos);
}

TEST(vrtkSceneDiff, IgnoresPadding) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = sceneOfAllClasses();
  // The last four bytes of image.border_spectrum, a float3, are padding.
  b->container<vrnt::data::CameraDesc>().at(0).desc.groups.backplate.image.border_spectrum.padding =
      7;
  EXPECT_EQ(textOf(a.get(), b.get()), "");
}

TEST(vrtkSceneDiff, TakesFloatsForEqualWithinTheTolerances) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = sceneOfAllClasses();
  const auto differences = [&](float left, float right, double relative, double absolute) {
    setField(a.get(), VRDM_CLASS_CAMERA, 0, kGeneral, 0, &left, 4);
    setField(b.get(), VRDM_CLASS_CAMERA, 0, kGeneral, 0, &right, 4);
    vrtkDiffOptions options = VRTK_DIFF_OPTIONS_INIT;
    options.relative = relative;
    options.absolute = absolute;
    return vrtkDiffFound(diffOf(a.get(), b.get(), &options).get());
  };
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(differences(100, 101, 0, 0), 1U);
  EXPECT_EQ(differences(100, 101, 0.01, 0), 0U);  // 1 <= 0.01 * 101
  EXPECT_EQ(differences(100, 101, 0.0098, 0), 1U);
  EXPECT_EQ(differences(100, 101, 0, 1), 0U);
  EXPECT_EQ(differences(100, 101, 0, 0.99), 1U);
  EXPECT_EQ(differences(0, -0.0F, 0, 0), 0U);
  EXPECT_EQ(differences(kNan, kNan, 0, 0), 0U);
  EXPECT_EQ(differences(kNan, 1, 1, 1e30), 1U);
  EXPECT_EQ(differences(kInfinity, kInfinity, 0, 0), 0U);
  EXPECT_EQ(differences(kInfinity, 1, 1, 1e30), 1U);
  EXPECT_EQ(differences(kInfinity, -kInfinity, 1, 1e30), 1U);
  EXPECT_EQ(differences(3e38F, -3e38F, 2, 0), 0U);
}

TEST(vrtkSceneDiff, RefusesTolerancesThatAreNone) {
  const SceneHandle a = sceneOfAllClasses();
  vrtkDiff* diff = nullptr;
  for (const double wrong :
       {-1.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    vrtkDiffOptions options = VRTK_DIFF_OPTIONS_INIT;
    options.relative = wrong;
    EXPECT_EQ(vrtkSceneDiff(a.get(), a.get(), &options, &diff, nullptr), VRTK_INVALID_ARGUMENT);
    options = VRTK_DIFF_OPTIONS_INIT;
    options.absolute = wrong;
    EXPECT_EQ(vrtkSceneDiff(a.get(), a.get(), &options, &diff, nullptr), VRTK_INVALID_ARGUMENT);
  }
  EXPECT_EQ(vrtkSceneDiff(nullptr, a.get(), nullptr, &diff, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(vrtkSceneDiff(a.get(), a.get(), nullptr, nullptr, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(diff, nullptr);
}

TEST(vrtkSceneDiff, TellsObjectsOfOneSceneOnlyAndFreeSlotsAtTheEnd) {
  const SceneHandle a(vrdmCreateScene());
  const SceneHandle b(vrdmCreateScene());
  for (int i = 0; i < 3; ++i) vrdmCreateInstance(a.get(), VRDM_CLASS_SHAPE);
  for (int i = 0; i < 5; ++i) vrdmCreateInstance(b.get(), VRDM_CLASS_SHAPE);
  vrdmRemove(b.get(), VRDM_CLASS_SHAPE, 1);
  EXPECT_EQ(textOf(a.get(), b.get()),
            "removed Shape/1: - -> -\nadded Shape/3: - -> -\nadded Shape/4: - -> -\n");
  vrdmRemove(b.get(), VRDM_CLASS_SHAPE, 4);
  EXPECT_EQ(textOf(a.get(), b.get()),
            "removed Shape/1: - -> -\nadded Shape/3: - -> -\nchanged Shape: 3 -> 5\n");
}

TEST(vrtkSceneDiff, TellsReferencesByNameAndElement) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = sceneOfAllClasses();
  vrdmSetReference(b.get(), VRDM_CLASS_SHAPE, 0, 0, 1);
  vrdmSetReference(b.get(), VRDM_CLASS_SHAPE, 0, 1, static_cast<std::uint32_t>(-1));
  vrdmSetReference(b.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, 4);
  vrdmModifyReferenceList(b.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0)[1] = ~0;
  EXPECT_EQ(textOf(a.get(), b.get()),
            "changed LightGroup/0/slots/emitters/1: { \"Shape\": 1 } -> { \"Light\": 0 }\n"
            "added LightGroup/0/slots/emitters/3: - -> null\n"
            "changed Shape/0/slots/material: 0 -> 1\n"
            "changed Shape/0/slots/mesh: 0 -> null\n");
}

TEST(vrtkSceneDiff, TellsProgramsAndAssets) {
  const SceneHandle a(vrdmCreateScene());
  const SceneHandle b(vrdmCreateScene());
  vrdmAddProgram(a.get(), VRDM_CLASS_LIGHT_PROGRAM, "one");
  vrdmAddProgram(b.get(), VRDM_CLASS_LIGHT_PROGRAM, "two\n");
  addBytes(a.get(), VRDM_CLASS_TEXTURE, "");
  addBytes(b.get(), VRDM_CLASS_TEXTURE, "abc");
  EXPECT_EQ(textOf(a.get(), b.get()),
            "changed LightProgram/0/text: \"one\" -> \"two\\u000a\"\n"
            "changed Texture/0/desc/width: 0 -> 3\n"
            "changed Texture/0/bytes: "
            "\"sha256:e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855\" -> "
            "\"sha256:ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad\"\n");
}

TEST(vrtkSceneDiff, TellsIdsOnlyIfTheyAreAskedFor) {
  const SceneHandle a(vrdmCreateScene());
  const SceneHandle b(vrdmCreateScene());
  addBytes(a.get(), VRDM_CLASS_TEXTURE, "abc");
  addBytes(b.get(), VRDM_CLASS_TEXTURE, "abc");
  EXPECT_EQ(textOf(a.get(), b.get()), "");
  vrtkDiffOptions options = VRTK_DIFF_OPTIONS_INIT;
  options.includeIds = 1;
  const std::string text = textOf(a.get(), b.get(), &options);
  EXPECT_EQ(text.rfind("changed id: \"", 0), 0U) << text;
  EXPECT_NE(text.find("changed Texture/0/id: \""), std::string::npos) << text;
}

TEST(vrtkSceneDiff, TellsPartsOfValues) {
  EXPECT_EQ(valueDiff("{ a = 1; b = [ 1.5, 2.5 ]; }", "{ a = 2; b = [ 1.5, 3.5 ]; }"),
            "changed Material/0/value/data/a: 1 -> 2\n"
            "changed Material/0/value/data/b/1: 2.5 -> 3.5\n");
  EXPECT_EQ(valueDiff("{ a = &{ x = 1; }; }", "{ a = &{ x = 2; }; }"),
            "changed Material/0/value/data/a/to/x: 1 -> 2\n");
  EXPECT_EQ(valueDiff("[ 1, 2 | 2, 1 ]", "[ 1, 3 | 2, 1 ]"),
            "changed Material/0/value/data/0/1: 2 -> 3\n");
  EXPECT_EQ(valueDiff("1.0", "-1.0"), "changed Material/0/value/data: 1.0 -> -1.0\n");
  EXPECT_EQ(valueDiff("{ h = 1.0h; c = 1c; }", "{ h = 1.5h; c = 2c; }"),
            "changed Material/0/value/data/h: 1.0 -> 1.5\n"
            "changed Material/0/value/data/c: 1 -> 2\n");
}

TEST(vrtkSceneDiff, ComparesValuesOfTwoTypesByTheLabelsOfTheirFields) {
  EXPECT_EQ(valueDiff("{ a = 1; b = 2.0; c = { x = 1; y = 2; }; }",
                      "{ c = { y = 3; x = 1; }; b = 2; d = true; }"),
            "changed Material/0/value/type: \"{ int a; float b; { int x; int y; } c; }\" -> "
            "\"{ { int y; int x; } c; int b; bool d; }\"\n"
            "removed Material/0/value/data/a: 1 -> -\n"
            "added Material/0/value/data/d: - -> true\n"
            "changed Material/0/value/data/b: 2.0 -> 2\n"
            "changed Material/0/value/data/c/y: 2 -> 3\n");
  EXPECT_EQ(valueDiff("[ 1, 2, 3 ]", "[ 1, 4 ]"),
            "changed Material/0/value/type: \"int[3]\" -> \"int[2]\"\n"
            "changed Material/0/value/data/1: 2 -> 4\n"
            "removed Material/0/value/data/2: 3 -> -\n");
  EXPECT_EQ(valueDiff("A : enum { A; B; }", "A : enum { B; A; }"),
            "changed Material/0/value/type: \"enum { A; B; }\" -> \"enum { B; A; }\"\n");
  EXPECT_EQ(valueDiff("{ p = &1; }", "{ p = &1.5; }"),
            "changed Material/0/value/type: \"{ int* p; }\" -> \"{ float* p; }\"\n"
            "changed Material/0/value/data/p/type: \"int\" -> \"float\"\n"
            "changed Material/0/value/data/p/to: 1 -> 1.5\n");
}

TEST(vrtkSceneDiff, ShowsWhatANullReferenceBecame) {
  EXPECT_EQ(valueDiff("{ p = &1; q = $0; }", "{ p = &1; q = $( 18 : void* ); }"),
            "changed Material/0/value/type: \"{ int* p; void* q; }\" -> \"{ int* p; void** q; }\"\n"
            "changed Material/0/value/data/q: null -> { \"address\": \"0x12\" }\n");
  const std::string text = valueDiff("[ $0, $0 ]", "[ &1, &2.0 : void* ]");
  EXPECT_NE(text.find("Material/0/value/data/1: null -> { \"type\": \"float\", \"to\": 2.0 }"),
            std::string::npos)
      << text;
}

TEST(vrtkSceneDiff, TellsAValueThatOneSceneLacks) {
  const SceneHandle a(vrdmCreateScene());
  const SceneHandle b = sceneOfAllClasses();
  vrdmCreateInstance(a.get(), VRDM_CLASS_LIGHT);
  EXPECT_NE(textOf(a.get(), b.get()).find("added Light/0/value: - -> -\n"), std::string::npos);
  EXPECT_NE(textOf(b.get(), a.get()).find("removed Light/0/value: - -> -\n"), std::string::npos);
}

// A chain in which each block refers to the next one twice has 2^n paths.
SceneHandle sceneWithChain(int blocks, int end) {
  ValueHandle value = parseValue(std::to_string(end).c_str());
  for (int i = 0; i < blocks; ++i) {
    ValueHandle next = parseValue("{ p = $( 0 : void* ); q = $( 0 : void* ); }");
    for (std::uint32_t f = 0; f < 2; ++f) {
      vrntValueView_t field{};
      vrntValueStructField(&field, vrntValueType(next.get()), f);
      vrntValuesError_t* error = nullptr;
      vrntValue_t* handle = next.release();
      vrntValueSetReference(&handle, &field, value.get(), &error);
      next.reset(handle);
    }
    value = std::move(next);
  }
  SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value.get());
  return scene;
}

TEST(vrtkSceneDiff, ComparesABlockOnceHoweverManyReferencesLeadToIt) {
  const SceneHandle a = sceneWithChain(20000, 1);
  const SceneHandle b = sceneWithChain(20000, 2);
  const DiffHandle diff = diffOf(a.get(), b.get());
  EXPECT_EQ(vrtkDiffCount(diff.get()), 1U);
  EXPECT_LT(std::string_view(vrtkDiffEntryAt(diff.get(), 0)->address).size(), 5000U);
  EXPECT_EQ(textOf(sceneWithChain(2, 1).get(), sceneWithChain(2, 2).get()),
            "changed Material/0/value/data/p/to/p/to: 1 -> 2\n");
}

TEST(vrtkSceneDiff, EndsForReferencesThatFormACycle) {
  ValueHandle values[2];
  SceneHandle scenes[2];
  for (int i = 0; i < 2; ++i) {
    values[i] =
        parseValue(i == 0 ? "{ p = $( 0 : void* ); a = 1; }" : "{ p = $( 0 : void* ); a = 2; }");
    scenes[i].reset(vrdmCreateScene());
    vrdmCreateInstance(scenes[i].get(), VRDM_CLASS_MATERIAL);
    vrdmSetInstanceValue(scenes[i].get(), VRDM_CLASS_MATERIAL, 0, values[i].get());
    // No call makes a cycle: write the word itself.
    *static_cast<void**>(vrntValueData(values[i].get())) = vrntValueData(values[i].get());
  }
  const std::string text = textOf(scenes[0].get(), scenes[1].get());
  EXPECT_EQ(text.rfind("changed Material/0/value/data/a: 1 -> 2\n", 0), 0U) << text;
  for (const ValueHandle& value : values)
    *static_cast<void**>(vrntValueData(value.get())) = nullptr;
}

TEST(vrtkSceneDiff, CountsMoreThanItKeeps) {
  const SceneHandle a(vrdmCreateScene());
  const SceneHandle b(vrdmCreateScene());
  for (int i = 0; i < 100; ++i) vrdmCreateInstance(b.get(), VRDM_CLASS_SHAPE);
  vrtkDiffOptions options = VRTK_DIFF_OPTIONS_INIT;
  options.maxEntries = 3;
  const DiffHandle diff = diffOf(a.get(), b.get(), &options);
  EXPECT_EQ(vrtkDiffCount(diff.get()), 3U);
  EXPECT_EQ(vrtkDiffFound(diff.get()), 100U);
  EXPECT_EQ(vrtkDiffEntryAt(diff.get(), 3), nullptr);
  EXPECT_STREQ(vrtkDiffEntryAt(diff.get(), 2)->address, "Shape/2");
  char* json = nullptr;
  ASSERT_EQ(vrtkDiffJson(diff.get(), &json, nullptr), VRTK_OK);
  EXPECT_STREQ(json,
               "{\n  \"equal\": false,\n  \"differences\": 100,\n  \"truncated\": true,\n"
               "  \"entries\": [\n"
               "    { \"address\": \"Shape/0\", \"kind\": \"added\" },\n"
               "    { \"address\": \"Shape/1\", \"kind\": \"added\" },\n"
               "    { \"address\": \"Shape/2\", \"kind\": \"added\" }\n  ]\n}\n");
  vrtkStringDestroy(json);
}

TEST(vrtkDiffJson, HasNoEntriesForEqualScenes) {
  const SceneHandle a(vrdmCreateScene());
  char* json = nullptr;
  ASSERT_EQ(vrtkDiffJson(diffOf(a.get(), a.get()).get(), &json, nullptr), VRTK_OK);
  EXPECT_STREQ(json,
               "{\n  \"equal\": true,\n  \"differences\": 0,\n  \"truncated\": false,\n"
               "  \"entries\": []\n}\n");
  vrtkStringDestroy(json);
}

TEST(vrtkDiffKindName, HasANameForEachKind) {
  EXPECT_STREQ(vrtkDiffKindName(VRTK_DIFF_CHANGED), "changed");
  EXPECT_STREQ(vrtkDiffKindName(VRTK_DIFF_REMOVED), "removed");
  EXPECT_STREQ(vrtkDiffKindName(VRTK_DIFF_ADDED), "added");
  EXPECT_EQ(vrtkDiffKindName(3), nullptr);
}

// Single bytes of a file are changed at random. What the check passes is then compared with the
// original by the library, by its digest and by its differences.
TEST(vrtkSceneDiff, AgreesWithTheDigestAndTheLibraryOnDamagedFiles) {
  const SceneHandle scene = sceneOfAllClasses();
  const std::string file = bytesOf(scene.get());
  const auto digestOf = [](const vrdmScene_t* of) {
    char hex[VRTK_DIGEST_LENGTH] = "";
    EXPECT_EQ(vrtkSceneDigest(of, nullptr, hex, nullptr), VRTK_OK);
    return std::string(hex);
  };
  const std::string digest = digestOf(scene.get());
  std::mt19937 random(7);  // NOLINT(cert-msc51-cpp): the same on every run
  int read = 0;
  int same = 0;
  for (int i = 0; i < 5000; ++i) {
    std::string bytes = file;
    const auto bit = static_cast<std::uint32_t>(random() % 8);
    bytes[random() % bytes.size()] ^= static_cast<char>(1U << bit);
    vrdmScene_t* changed = nullptr;
    if (vrtkSceneOpenBytes(bytes.data(), bytes.size(), nullptr, &changed, nullptr, nullptr) !=
        VRTK_OK) {
      continue;
    }
    const SceneHandle owner(changed);
    ++read;
    const DiffHandle diff = diffOf(scene.get(), changed);
    const bool isSame = digestOf(changed) == digest;
    same += isSame ? 1 : 0;
    bool equivalent = false;
    const std::uint32_t status = vrtkSceneEquivalent(scene.get(), changed, &equivalent, nullptr);
    if (isSame) {
      EXPECT_EQ(textOf(diff), "");
      EXPECT_TRUE(status == VRTK_OK && equivalent);
    } else if (vrtkDiffFound(diff.get()) == 0) {
      // -0 is equal to 0, and a digest tells them apart.
      EXPECT_EQ(bit, 7U);
    }
  }
  EXPECT_GT(read, 500);
  EXPECT_GT(same, 5);  // ids and padding
}

}  // namespace
}  // namespace vornath_test
