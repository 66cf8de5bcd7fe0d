// Patches from one scene to another. What a patch does is told by another implementation of RFC
// 6902.
#include <nlohmann/json.hpp>
#include <random>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

using Json = nlohmann::json;

std::string patchOf(const vrdmScene_t* a, const vrdmScene_t* b,
                    const vrtkDiffOptions* options = nullptr) {
  char* json = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status = vrtkSceneDiffPatch(a, b, options, &json, &error);
  const ToolkitError owner(error);
  EXPECT_EQ(status, VRTK_OK) << (error != nullptr ? vrtkErrorMessage(error) : "");
  const std::string text = json != nullptr ? json : "null";
  vrtkStringDestroy(json);
  return text;
}

Json full(const vrdmScene_t* scene) {
  vrtkExportOptions options = VRTK_EXPORT_OPTIONS_INIT;
  options.full = 1;
  options.inlineAssets = 1;
  char* json = nullptr;
  EXPECT_EQ(vrtkSceneExportString(scene, &options, &json, nullptr, nullptr), VRTK_OK);
  Json document = Json::parse(json);
  vrtkStringDestroy(json);
  return document;
}

void expectPatchLeads(const vrdmScene_t* a, const vrdmScene_t* b) {
  const std::string patch = patchOf(a, b);
  const Json expected = full(b);
  const Json patched = full(a).patch(Json::parse(patch));
  EXPECT_EQ(patched, expected) << patch.substr(0, 2000);
}

// Applies the patch to the scene, too.
void expectScenePatchLeads(const vrdmScene_t* a, const vrdmScene_t* b) {
  const std::string patch = patchOf(a, b);
  vrdmScene_t* patched = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status =
      vrtkScenePatch(a, patch.data(), patch.size(), nullptr, &patched, nullptr, &error);
  const ToolkitError owner(error);
  ASSERT_EQ(status, VRTK_OK) << vrtkErrorMessage(error) << "\n" << patch.substr(0, 2000);
  const SceneHandle scene(patched);
  EXPECT_EQ(patchOf(patched, b), "[]\n");
  vrtkDigestOptions options = VRTK_DIGEST_OPTIONS_INIT;
  options.includeIds = 1;
  char digests[2][VRTK_DIGEST_LENGTH] = {};
  EXPECT_EQ(vrtkSceneDigest(patched, &options, digests[0], nullptr), VRTK_OK);
  EXPECT_EQ(vrtkSceneDigest(b, &options, digests[1], nullptr), VRTK_OK);
  EXPECT_STREQ(digests[0], digests[1]);
}

SceneHandle copyOf(const vrdmScene_t* scene) {
  const std::string bytes = bytesOf(scene);
  vrdmScene_t* read = nullptr;
  EXPECT_EQ(vrtkSceneOpenBytes(bytes.data(), bytes.size(), nullptr, &read, nullptr, nullptr),
            VRTK_OK);
  return SceneHandle(read);
}

TEST(vrtkSceneDiffPatch, IsEmptyForTheSameScene) {
  const SceneHandle scene = sceneOfAllClasses();
  EXPECT_EQ(patchOf(scene.get(), scene.get()), "[]\n");
  EXPECT_EQ(patchOf(scene.get(), copyOf(scene.get()).get()), "[]\n");
}

TEST(vrtkSceneDiffPatch, ReplacesWhatDiffersAndNothingElse) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = copyOf(a.get());
  b->data.raytracer.ray_epsilon = 0.5F;
  vrdmSetReference(b.get(), VRDM_CLASS_SHAPE, 0, 0, 1);
  vrdmSetReference(b.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, 4);
  const std::string patch = patchOf(a.get(), b.get());
  EXPECT_EQ(patch,
            "[\n"
            "  { \"op\": \"replace\", \"path\": \"/scene/Raytracer/ray_epsilon\", \"value\": 0.5 "
            "},\n"
            "  { \"op\": \"add\", \"path\": \"/objects/LightGroup/0/slots/emitters/3\", "
            "\"value\": null },\n"
            "  { \"op\": \"replace\", \"path\": \"/objects/Shape/0/slots/material\", \"value\": 1 "
            "}\n]\n");
  expectPatchLeads(a.get(), b.get());
}

TEST(vrtkSceneDiffPatch, LeadsBetweenScenesOfAllClassesAndAnEmptyOne) {
  const SceneHandle empty(vrdmCreateScene());
  const SceneHandle scene = sceneOfAllClasses();
  const SceneHandle other = sceneOfAllClasses();  // with other ids
  expectPatchLeads(empty.get(), scene.get());
  expectPatchLeads(scene.get(), empty.get());
  expectPatchLeads(scene.get(), other.get());
  expectScenePatchLeads(empty.get(), scene.get());
  expectScenePatchLeads(scene.get(), empty.get());
  expectScenePatchLeads(scene.get(), other.get());
}

TEST(vrtkSceneDiffPatch, HasTheBytesOfAssetsThatDiffer) {
  const SceneHandle a(vrdmCreateScene());
  const SceneHandle b(vrdmCreateScene());
  addBytes(a.get(), VRDM_CLASS_TEXTURE, "abc");
  addBytes(b.get(), VRDM_CLASS_TEXTURE, "abd");
  addBytes(b.get(), VRDM_CLASS_TEXTURE, "the second");
  EXPECT_NE(patchOf(a.get(), b.get()).find("\"base64\": \"YWJk\""), std::string::npos);
  expectPatchLeads(a.get(), b.get());
}

TEST(vrtkSceneDiffPatch, LeavesNumbersWithinTheTolerancesAsTheyAre) {
  const SceneHandle a(vrdmCreateScene());
  const SceneHandle b = copyOf(a.get());
  b->data.raytracer.ray_epsilon = a->data.raytracer.ray_epsilon * 1.001F;
  b->data.rasterizer = a->data.rasterizer;
  vrtkDiffOptions options = VRTK_DIFF_OPTIONS_INIT;
  options.relative = 0.01;
  EXPECT_EQ(patchOf(a.get(), b.get(), &options), "[]\n");
  options.relative = 0.0001;
  EXPECT_NE(patchOf(a.get(), b.get(), &options), "[]\n");
  // Without a tolerance, -0 is another number.
  a->data.raytracer.ray_epsilon = 0.0F;
  b->data.raytracer.ray_epsilon = -0.0F;
  EXPECT_NE(patchOf(a.get(), b.get()), "[]\n");
  options.relative = -1;
  char* json = nullptr;
  EXPECT_EQ(vrtkSceneDiffPatch(a.get(), b.get(), &options, &json, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(json, nullptr);
}

TEST(vrtkSceneDiffPatch, LeadsBetweenValuesOfAllKinds) {
  const char* const values[] = {
      "1",
      "{ }",
      "{ a = 1.5; b = [ 1, 2, 3 ]; }",
      "{ a = 1.5; b = [ 1, 2 ]; c = &{ d = &1; }; }",
      "{ a = &{ b = &[ 1.0, 2.0 ]; }; c = $0; }",
      "{ a = NaN; b = -inf; c = float3(1.0, 2.0, 3.0); d = B : enum { A; B; }; e = true; }",
      "[ { x = 1; }, { x = 2; } ]",
      "[ &1.0, &2 : void* ]",
  };
  for (const char* const from : values) {
    for (const char* const to : values) {
      SceneHandle scenes[2];
      for (int i = 0; i < 2; ++i) {
        scenes[i].reset(vrdmCreateScene());
        vrdmCreateInstance(scenes[i].get(), VRDM_CLASS_MATERIAL);
        const ValueHandle value = parseValue(i == 0 ? from : to);
        vrdmSetInstanceValue(scenes[i].get(), VRDM_CLASS_MATERIAL, 0, value.get());
      }
      expectPatchLeads(scenes[0].get(), scenes[1].get());
      expectScenePatchLeads(scenes[0].get(), scenes[1].get());
    }
  }
}

TEST(vrtkSceneDiffPatch, TakesDeepValuesAsTheyStand) {
  const auto make = [](int end) {
    std::string text = std::to_string(end);
    for (int i = 0; i < 1000; ++i) text = "&" + text;
    SceneHandle scene(vrdmCreateScene());
    vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
    const ValueHandle value = parseValue(("{ a = " + text + "; b = 2; }").c_str());
    vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value.get());
    return scene;
  };
  const SceneHandle a = make(1);
  const SceneHandle b = make(2);
  expectPatchLeads(a.get(), b.get());
}

// Single bits of a file are changed at random, so that all kinds of parts differ.
TEST(vrtkSceneDiffPatch, LeadsToWhateverADamagedFileHolds) {
  const SceneHandle scene = sceneOfAllClasses();
  const std::string file = bytesOf(scene.get());
  std::mt19937 random(11);  // NOLINT(cert-msc51-cpp): the same on every run
  int patches = 0;
  for (int i = 0; i < 300; ++i) {
    std::string bytes = file;
    for (int flips = 0; flips < 3; ++flips) {
      bytes[random() % bytes.size()] ^= static_cast<char>(1U << (random() % 8));
    }
    vrdmScene_t* changed = nullptr;
    if (vrtkSceneOpenBytes(bytes.data(), bytes.size(), nullptr, &changed, nullptr, nullptr) !=
        VRTK_OK) {
      continue;
    }
    const SceneHandle owner(changed);
    expectPatchLeads(scene.get(), changed);
    expectPatchLeads(changed, scene.get());
    expectScenePatchLeads(scene.get(), changed);
    expectScenePatchLeads(changed, scene.get());
    ++patches;
  }
  EXPECT_GT(patches, 10);
}

}  // namespace
}  // namespace vornath_test
