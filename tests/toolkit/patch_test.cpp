// JSON patches on scenes.
#include "toolkit/json_support.hpp"

namespace vornath_test {
namespace {

struct Patched {
  SceneHandle scene;
  JsonReportHandle report;
  std::uint32_t status;
  std::string message;
};

Patched patch(const vrdmScene_t* scene, const std::string& json) {
  vrdmScene_t* made = nullptr;
  vrtkJsonReport* report = nullptr;
  vrtkError* error = nullptr;
  const std::string before = jsonOf(scene, true);
  const std::uint32_t status =
      vrtkScenePatch(scene, json.data(), json.size(), nullptr, &made, &report, &error);
  const ToolkitError owner(error);
  EXPECT_EQ(made != nullptr, status == VRTK_OK);
  EXPECT_EQ(report != nullptr, status == VRTK_JSON_INVALID || status == VRTK_PATCH_FAILED);
  EXPECT_EQ(jsonOf(scene, true), before);
  return {SceneHandle(made), JsonReportHandle(report), status,
          error != nullptr ? vrtkErrorMessage(error) : ""};
}

SceneHandle patchedBy(const vrdmScene_t* scene, const std::string& json) {
  Patched patched = patch(scene, json);
  EXPECT_EQ(patched.status, VRTK_OK) << patched.message;
  return std::move(patched.scene);
}

std::string get(const vrdmScene_t* scene, const char* address) {
  char* json = nullptr;
  EXPECT_EQ(vrtkSceneGet(scene, address, &json, nullptr), VRTK_OK) << address;
  const std::string text = json != nullptr ? json : "";
  vrtkStringDestroy(json);
  return text;
}

TEST(vrtkScenePatch, WithoutOperationsCopiesTheScene) {
  const SceneHandle scene = sceneOfAllClasses();
  const SceneHandle copy = patchedBy(scene.get(), "[]");
  EXPECT_EQ(jsonOf(copy.get(), true), jsonOf(scene.get(), true));
  EXPECT_TRUE(contentOf(copy.get()) == contentOf(scene.get()));
  EXPECT_EQ(*vrdmGetAssetStorage(copy.get(), VRDM_CLASS_TEXTURE, 0, nullptr),
            *vrdmGetAssetStorage(scene.get(), VRDM_CLASS_TEXTURE, 0, nullptr));
  EXPECT_EQ(vrdmCreateInstance(copy.get(), VRDM_CLASS_CAMERA), 1U);
}

TEST(vrtkScenePatch, ReplacesAndTests) {
  const SceneHandle scene = sceneOfAllClasses();
  const SceneHandle patched = patchedBy(scene.get(), R"([
    { "op": "test", "path": "/objects/Camera/0/groups/General/time_end", "value": 1 },
    { "op": "replace", "path": "/objects/Camera/0/groups/General/time_end", "value": 2.5 },
    { "op": "replace", "path": "/objects/Shape/0/slots/material", "value": null },
    { "op": "replace", "path": "/scene/Raytracer/ray_epsilon", "value": 0.25 },
    { "op": "replace", "path": "/objects/Material/0/value/data/both/e", "value": "OFF" },
    { "op": "replace", "path": "/objects/LightProgram/0/text", "value": "new" },
    { "op": "replace", "path": "/objects/Texture/0/desc/width", "value": 16 }
  ])");
  EXPECT_EQ(get(patched.get(), "Camera/0/groups/General/time_end"), "2.5");
  EXPECT_EQ(get(patched.get(), "Shape/0/slots/material"), "null");
  EXPECT_EQ(get(patched.get(), "scene/Raytracer/ray_epsilon"), "0.25");
  EXPECT_EQ(get(patched.get(), "Material/0/value/data/both/e"), "\"OFF\"");
  EXPECT_EQ(get(patched.get(), "LightProgram/0/text"), "\"new\"");
  EXPECT_EQ(get(patched.get(), "Texture/0/desc/width"), "16");
  EXPECT_EQ(get(patched.get(), "Texture/0/bytes/size"), "17");
  EXPECT_EQ(get(patched.get(), "Texture/0/id"), get(scene.get(), "Texture/0/id"));
}

TEST(vrtkScenePatch, AddsRemovesMovesAndCopiesObjects) {
  const SceneHandle scene = sceneOfAllClasses();
  const SceneHandle patched = patchedBy(scene.get(), R"([
    { "op": "add", "path": "/objects/Shape/-", "value": { "groups": { "Target": { "custom_data": 7 } } } },
    { "op": "replace", "path": "/objects/Shape/1", "value": {} },
    { "op": "copy", "from": "/objects/Light/0", "path": "/objects/Light/-" },
    { "op": "move", "from": "/objects/Light/2", "path": "/objects/Light/1" },
    { "op": "remove", "path": "/objects/Decal/1" },
    { "op": "remove", "path": "/objects/BakeTask" },
    { "op": "add", "path": "/objects/LightGroup/0/slots/emitters/1", "value": { "Light": 1 } },
    { "op": "remove", "path": "/objects/KeyframeList/0/slots/keyframes/1" }
  ])");
  EXPECT_EQ(vrdmContainerSize(patched.get(), VRDM_CLASS_SHAPE), 3U);
  EXPECT_EQ(get(patched.get(), "Shape/2/groups/Target/custom_data"), "7");
  EXPECT_TRUE(vrdmValid(patched.get(), VRDM_CLASS_SHAPE, 1));
  EXPECT_EQ(vrdmContainerSize(patched.get(), VRDM_CLASS_LIGHT), 3U);
  EXPECT_EQ(get(patched.get(), "Light/1"), get(scene.get(), "Light/0"));
  EXPECT_EQ(get(patched.get(), "Light/2"), "null");
  EXPECT_EQ(vrdmContainerSize(patched.get(), VRDM_CLASS_DECAL), 1U);
  EXPECT_EQ(vrdmContainerSize(patched.get(), VRDM_CLASS_BAKE_TASK), 0U);
  EXPECT_EQ(get(patched.get(), "LightGroup/0/slots/emitters/1"), "{ \"Light\": 1 }");
  EXPECT_EQ(get(patched.get(), "LightGroup/0/slots/emitters/3"), "{ \"Shape\": 0 }");
  EXPECT_EQ(get(patched.get(), "KeyframeList/0/slots/keyframes"), "[\n  0,\n  0\n]");
}

TEST(vrtkScenePatch, TurnsOneSceneIntoAnother) {
  const SceneHandle scene = sceneOfAllClasses();
  const SceneHandle other = build(documentWith(R"("objects": { "Light": [ {} ] })"));
  const SceneHandle patched = patchedBy(
      scene.get(),
      "[ { \"op\": \"replace\", \"path\": \"\", \"value\": " + jsonOf(other.get()) + " } ]");
  EXPECT_EQ(jsonOf(patched.get(), true), jsonOf(other.get(), true));
}

TEST(vrtkScenePatch, ReportsAPathThatLeadsNowhereAndATestThatFails) {
  const SceneHandle scene = sceneOfAllClasses();
  const auto failed = [&scene](const std::string& operation) {
    const Patched patched = patch(scene.get(), "[\n" + operation + "\n]");
    EXPECT_EQ(patched.status, VRTK_PATCH_FAILED) << patched.message;
    return patched.report ? textOf(patched.report.get()) : "";
  };
  EXPECT_EQ(failed(R"({ "op": "replace", "path": "/objects/Camera/0/groups/Genral", "value": 1 })"),
            "JSON_PATCH 2:28 /0/path: the path leads nowhere: there is no \"Genral\"; did you mean "
            "\"General\"?\n");
  EXPECT_EQ(failed(R"({ "op": "remove", "path": "/objects/Camera/9" })"),
            "JSON_PATCH 2:27 /0/path: the path leads nowhere: there is no element \"9\" among 2\n");
  EXPECT_EQ(
      failed(
          R"({ "op": "test", "path": "/objects/Camera/0/groups/General/time_end", "value": 7 })"),
      "JSON_PATCH 2:79 /0/value: the test fails: the scene has 1.0\n");
  EXPECT_EQ(
      failed(R"({ "op": "move", "from": "/objects", "path": "/objects/Camera" })").substr(0, 15),
      "JSON_PATCH 2:45");
  EXPECT_EQ(failed(R"({ "op": "remove", "path": "" })").substr(0, 10), "JSON_PATCH");
  EXPECT_EQ(failed(R"({ "op": "remove", "path": "x" })").substr(0, 10), "JSON_PATCH");
  EXPECT_EQ(failed(R"({ "op": "add", "path": "/objects/Camera/3", "value": {} })").substr(0, 10),
            "JSON_PATCH");
  EXPECT_EQ(failed(R"({ "op": "add", "path": "/id/x", "value": {} })").substr(0, 10), "JSON_PATCH");
}

TEST(vrtkScenePatch, ReportsWhatIsNoPatch) {
  const SceneHandle scene(vrdmCreateScene());
  const auto problems = [&scene](const std::string& json) {
    const Patched patched = patch(scene.get(), json);
    EXPECT_EQ(patched.status, VRTK_JSON_INVALID) << patched.message;
    return patched.report ? textOf(patched.report.get()) : "";
  };
  EXPECT_EQ(problems("{}"),
            "JSON_WRONG_KIND 1:1 : found an object; a patch is an array of operations\n");
  EXPECT_EQ(problems("[1]"),
            "JSON_WRONG_KIND 1:2 /0: found a number; an operation is an object with \"op\" and "
            "\"path\"\n");
  EXPECT_EQ(problems(R"([{ "op": "ad", "path": "" }])"),
            "JSON_PATCH 1:10 /0/op: there is no operation \"ad\"; did you mean \"add\"?\n");
  EXPECT_EQ(problems(R"([{ "op": "add", "path": "" }])"),
            "JSON_MISSING_KEY 1:2 /0: the operation needs the member \"value\"\n");
  EXPECT_EQ(problems(R"([{ "op": "move", "path": 3 }])"),
            "JSON_MISSING_KEY 1:2 /0: the operation needs the member \"from\"\nJSON_WRONG_KIND "
            "1:26 /0/path: found a number; expected a string\n");
  EXPECT_EQ(problems("[").substr(0, 11), "JSON_SYNTAX");
  EXPECT_EQ(problems("").substr(0, 11), "JSON_SYNTAX");
}

TEST(vrtkScenePatch, ReportsAResultThatIsNoScene) {
  const SceneHandle scene = sceneOfAllClasses();
  const auto problems = [&scene](const std::string& json) {
    const Patched patched = patch(scene.get(), json);
    EXPECT_EQ(patched.status, VRTK_JSON_INVALID) << patched.message;
    return patched.report ? textOf(patched.report.get()) : "";
  };
  EXPECT_EQ(
      problems(
          R"([{ "op": "replace", "path": "/objects/Camera/0/groups/General/time_end", "value": "x" },
                         { "op": "replace", "path": "/objects/Shape/0/slots/material", "value": 2 }])"),
      "JSON_WRONG_KIND 0:0 /objects/Camera/0/groups/General/time_end: found the string \"x\"; "
      "expected a number (float)\n"
      "JSON_OUT_OF_RANGE 0:0 /objects/Shape/0/slots/material: there is no Material 2; the last one "
      "is 1\n");
  EXPECT_EQ(problems(R"([{ "op": "add", "path": "/objects/Kamera", "value": [] }])"),
            "JSON_UNKNOWN_KEY 0:0 /objects/Kamera: there is no class \"Kamera\"; did you mean "
            "\"Camera\"?\n");
  EXPECT_EQ(problems(R"([{ "op": "replace", "path": "/objects", "value": 1 }])").substr(0, 15),
            "JSON_WRONG_KIND");
  EXPECT_EQ(problems(R"([{ "op": "replace", "path": "", "value": [] }])").substr(0, 15),
            "JSON_WRONG_KIND");
  EXPECT_EQ(problems(R"([{ "op": "remove", "path": "/format" }])").substr(0, 16),
            "JSON_MISSING_KEY");
}

TEST(vrtkScenePatch, SurvivesAnyText) {
  std::mt19937 random(5);
  const SceneHandle scene = sceneOfAllClasses();
  const std::string json =
      R"([{ "op": "replace", "path": "/objects/Camera/0/groups/General", "value": { "time_end": 3 } },
    { "op": "copy", "from": "/objects/Light/0", "path": "/objects/Light/1" }, { "op": "remove", "path": "/objects/Mesh" },
    { "op": "move", "from": "/objects/Shape/0", "path": "/objects/Shape/1" }, { "op": "test", "path": "/scene", "value": {} }])";
  for (int i = 0; i < 300; ++i) {
    std::string damaged = json;
    for (auto changes = 1 + random() % 4; changes != 0 && !damaged.empty(); --changes) {
      const std::size_t at = random() % damaged.size();
      if (random() % 2 == 0) {
        damaged[at] = "{}[]\",:0-9/x~\0"[random() % 14];
      } else {
        damaged.erase(at, 1 + random() % 10);
      }
    }
    patch(scene.get(), damaged);
  }
}

TEST(vrtkScenePatch, SurvivesAValueOfEachKindAtEachPlace) {
  const SceneHandle scene = sceneWith(VRDM_CLASS_CAMERA);
  const std::string json =
      R"([ { "op": "replace", "path": "/scene", "value": {} },
    { "op": "add", "path": "/objects/Camera/-", "value": {} },
    { "op": "copy", "from": "/objects/Camera/0", "path": "/objects/Camera/1" },
    { "op": "move", "from": "/objects/Camera/0", "path": "/objects/Camera/1" },
    { "op": "test", "path": "/format", "value": "vornath-scene" },
    { "op": "remove", "path": "/objects/Camera/1" } ])";
  for (const auto& [begin, end] : valuesIn(json)) {
    for (const char* const other : kValuesOfEachKind) {
      const Patched patched = patch(scene.get(), json.substr(0, begin) + other + json.substr(end));
      EXPECT_TRUE(patched.status == VRTK_OK || patched.status == VRTK_JSON_INVALID ||
                  patched.status == VRTK_PATCH_FAILED)
          << json.substr(begin, end - begin) << other << patched.message;
    }
  }
}

}  // namespace
}  // namespace vornath_test
