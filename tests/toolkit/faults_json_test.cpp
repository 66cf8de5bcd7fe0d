// Each allocation of the functions for JSON fails once: they report it and leave their arguments as
// they were, and the next call succeeds.
#include "support/allocations.hpp"
#include "toolkit/failed_allocations.hpp"
#include "toolkit/json_support.hpp"

namespace vornath_test {
namespace {

TEST(vrtkSceneExportString, ReportsEachFailedAllocation) {
  const SceneHandle scene = sceneOfAllClasses();
  const std::string expected = jsonOf(scene.get(), true);
  vrtkExportOptions options = VRTK_EXPORT_OPTIONS_INIT;
  options.full = 1;
  options.inlineAssets = 1;
  failEachAllocation([&] {
    char* json = nullptr;
    const std::uint32_t status =
        vrtkSceneExportString(scene.get(), &options, &json, nullptr, nullptr);
    EXPECT_EQ(json != nullptr, status == VRTK_OK);
    EXPECT_TRUE(json == nullptr || json == expected);
    vrtkStringDestroy(json);
    return status;
  });
}

TEST(vrtkSceneExportFile, ReportsEachFailedAllocationAndLeavesNothing) {
  const TemporaryFolder folder;
  // A small one, since each file is written to the device.
  const SceneHandle scene(vrdmCreateScene());
  addBytes(scene.get(), VRDM_CLASS_TEXTURE, "bytes");
  const std::string path = folder.file("x.json");
  failEachAllocation(
      [&] { return vrtkSceneExportFile(scene.get(), path.c_str(), nullptr, nullptr); },
      [&](std::uint32_t status) {
        EXPECT_EQ(std::filesystem::is_empty(folder.path()), status != VRTK_OK);
        std::filesystem::remove_all(folder.file("x.json"));
        std::filesystem::remove_all(folder.file("x.assets"));
      });
}

TEST(vrtkSceneBuild, ReportsEachFailedAllocation) {
  const std::string json = jsonOf(sceneOfAllClasses().get());
  failEachAllocation([&] {
    vrdmScene_t* scene = nullptr;
    vrtkJsonReport* report = nullptr;
    const std::uint32_t status =
        vrtkSceneBuild(json.data(), json.size(), nullptr, &scene, &report, nullptr);
    EXPECT_EQ(scene != nullptr, status == VRTK_OK);
    EXPECT_EQ(report, nullptr);
    vrdmDestroyScene(scene);
    return status;
  });
}

TEST(vrtkJsonReport, IsCompleteOrNotThereWhenAnAllocationFails) {
  const std::string json = documentWith(
      R"("objcts": 1, "objects": { "Camera": [ { "slots": { "progam": 1, "program": 3 } } ] })");
  const std::string expected = textOf(tryBuild(json).report.get());
  vrtkJsonReport* report = nullptr;
  char* text = nullptr;
  failEachAllocation(
      [&] {
        vrdmScene_t* scene = nullptr;
        std::uint32_t status =
            vrtkSceneBuild(json.data(), json.size(), nullptr, &scene, &report, nullptr);
        if (status == VRTK_JSON_INVALID) status = vrtkJsonReportJson(report, &text, nullptr);
        return status;
      },
      [&](std::uint32_t status) {
        const JsonReportHandle owner(report);
        EXPECT_EQ(text != nullptr, status == VRTK_OK);
        if (report != nullptr) {
          EXPECT_EQ(textOf(report), expected);
        }
        vrtkStringDestroy(text);
        text = nullptr;
        report = nullptr;
      });
}

TEST(vrtkSceneGet, ReportsEachFailedAllocation) {
  const SceneHandle scene = sceneOfAllClasses();
  failEachAllocation([&] {
    char* json = nullptr;
    const std::uint32_t status =
        vrtkSceneGet(scene.get(), "Material/0/value/data/both/p", &json, nullptr);
    EXPECT_EQ(json != nullptr, status == VRTK_OK);
    vrtkStringDestroy(json);
    return status;
  });
}

TEST(vrtkSceneSet, ReportsEachFailedAllocationAndLeavesTheScene) {
  const std::pair<const char*, const char*> cases[] = {
      {"Camera/0/groups/General/near_distance", "2"},
      {"Camera/0/value/data/list", "{ \"to\": [4, 5, 6] }"},
      {"Light/0",
       R"({ "groups": { "General": { "matte": true } }, "slots": { "textures": [ 1 ] } })"},
      {"Texture/0/desc/width", "5"},
      {"LightProgram/0/text", "\"other\""},
      {"scene", "{ \"Raytracer\": { \"ray_epsilon\": 3 } }"}};
  for (const auto& [address, json] : cases) {
    const std::string original = bytesOf(sceneOfAllClasses().get());
    std::uint64_t failures = 0;
    for (std::uint64_t number = 0;; ++number) {
      std::istringstream stream(original);
      vrnt::data::Scene scene =
          std::move(vrnt::data::Scene::deserialize(stream, vrnt::UniqueId::null())).value();
      const std::string before = jsonOf(&scene, true);
      std::uint32_t status = VRTK_OK;
      bool triggered = false;
      {
        const FailNthAllocation failing(number);
        status = vrtkSceneSet(&scene, address, json, nullptr, nullptr);
        triggered = failing.triggered();
      }
      if (!triggered) {
        EXPECT_EQ(status, VRTK_OK) << address;
        EXPECT_NE(jsonOf(&scene, true), before) << address;
        break;
      }
      failures += status == VRTK_OK ? 0 : 1;
      ASSERT_TRUE(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY) << address << " " << number;
      if (status != VRTK_OK) {
        ASSERT_EQ(jsonOf(&scene, true), before) << address << " " << number;
      }
    }
    EXPECT_GT(failures, 0U);
  }
}

TEST(vrtkScenePatch, ReportsEachFailedAllocation) {
  const SceneHandle scene = sceneOfAllClasses();
  const std::string json = R"([
    { "op": "replace", "path": "/objects/Camera/0/groups/General/time_end", "value": 2 },
    { "op": "copy", "from": "/objects/Light/0", "path": "/objects/Light/-" }])";
  failEachAllocation([&] {
    vrdmScene_t* made = nullptr;
    vrtkJsonReport* report = nullptr;
    const std::uint32_t status =
        vrtkScenePatch(scene.get(), json.data(), json.size(), nullptr, &made, &report, nullptr);
    EXPECT_EQ(made != nullptr, status == VRTK_OK);
    EXPECT_EQ(report, nullptr);
    vrdmDestroyScene(made);
    return status;
  });
}

}  // namespace
}  // namespace vornath_test
