// The JSON form of a scene, as it is written.
#include <sys/stat.h>

#include <filesystem>

#include "toolkit/json_support.hpp"

namespace vornath_test {
namespace {

// The lines of a text that contain another one.
std::size_t count(const std::string& text, std::string_view part) {
  std::size_t found = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++found;
  }
  return found;
}

SceneHandle exampleScene() {
  SceneHandle scene(vrdmCreateScene());
  scene->id = vrnt::UniqueId::null();
  scene->data.raytracer.ray_epsilon = 1e-05F;
  vrdmAddProgram(scene.get(), VRDM_CLASS_MATERIAL_PROGRAM, "a \"text\"\n");
  vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  vrdmRemove(scene.get(), VRDM_CLASS_CAMERA, 1);
  setField(scene.get(), VRDM_CLASS_CAMERA, 0, 1, 0, 0.1F);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_CAMERA, 0,
                       parseValue("{ focal_length = 35.0; }").get());
  vrdmSetReference(scene.get(), VRDM_CLASS_CAMERA, 0, 2, 4);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_LIGHT_GROUP);
  vrdmSetReference(scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, 2);
  std::int32_t* const words = vrdmModifyReferenceList(scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0);
  words[0] = ~0;
  words[1] = INT32_MIN;
  vrdmCreateInstance(scene.get(), VRDM_CLASS_LIGHT);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_LIGHT, 0, parseValue("{ }").get());
  return scene;
}

TEST(vrtkSceneExportString, WritesTheSparseForm) {
  EXPECT_EQ(jsonOf(exampleScene().get()), R"({
  "format": "vornath-scene",
  "formatVersion": 1,
  "sceneVersion": 173,
  "id": "00000000-0000-0000-0000-000000000000",
  "scene": {
    "Raytracer": {
      "ray_epsilon": 1e-05
    }
  },
  "objects": {
    "MaterialProgram": [
      {
        "text": "a \"text\"\n"
      }
    ],
    "Camera": [
      {
        "groups": {
          "General": {
            "near_distance": 0.1
          }
        },
        "slots": {
          "keyframes": { "word": 4 }
        },
        "value": {
          "type": "{ float focal_length; }",
          "data": {
            "focal_length": 35.0
          }
        }
      },
      null
    ],
    "LightGroup": [
      {
        "slots": {
          "emitters": [
            { "Light": 0 },
            null
          ]
        }
      }
    ],
    "Light": [
      {
        "value": {
          "type": "{ }",
          "data": {}
        }
      }
    ]
  }
}
)");
}

TEST(vrtkSceneExportString, WritesAllFieldsAndSlotsInTheFullForm) {
  const std::string json = jsonOf(exampleScene().get(), true);
  EXPECT_EQ(json.find("  \"scene\": {\n    \"Cut planes\": {"), json.find("  \"scene\""));
  EXPECT_NE(json.find(R"(        "slots": {
          "program": null,
          "backplate": null,
          "keyframes": { "word": 4 }
        })"),
            std::string::npos)
      << json;
  EXPECT_NE(json.find("\"textures\": []"), std::string::npos);
  for (std::uint32_t g = 0; g < vrdmFieldCount(VRDM_CLASS_CAMERA); ++g) {
    EXPECT_NE(
        json.find("          \"" + std::string(vrdmFieldName(VRDM_CLASS_CAMERA, g)) + "\": {"),
        std::string::npos);
  }
}

TEST(vrtkSceneExportString, WritesNothingOfANewObject) {
  const SceneHandle scene(vrdmCreateScene());
  for (const std::uint32_t c : {VRDM_CLASS_SHAPE, VRDM_CLASS_DECAL, VRDM_CLASS_IMAGE_TASK,
                                VRDM_CLASS_BAKE_TASK, VRDM_CLASS_KEYFRAME_LIST}) {
    vrdmCreateInstance(scene.get(), c);
  }
  EXPECT_EQ(count(jsonOf(scene.get()), "\n      {}\n"), 5U) << jsonOf(scene.get());
}

TEST(vrtkSceneExportString, WritesOneFieldALine) {
  const std::string json = jsonOf(sceneOfAllClasses().get(), true);
  std::istringstream lines(json);
  std::string line;
  while (std::getline(lines, line)) {
    if (line.find("\"bytes\"") != std::string::npos || line.find("{ \"") != std::string::npos) {
      continue;
    }
    EXPECT_LE(count(line, "\": "), 1U) << line;
  }
}

TEST(vrtkSceneExport, GivesTheDocumentInPiecesThatItsTakerCanStop) {
  const SceneHandle scene(vrdmCreateScene());
  for (int i = 0; i < 20000; ++i) vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE);
  struct Taken {
    std::string text;
    int pieces = 0;
    int most = 1000;
  } taken;
  const auto take = [](const void* bytes, std::uint64_t size, void* context) -> std::uint32_t {
    auto& to = *static_cast<Taken*>(context);
    if (++to.pieces > to.most) return 1;
    to.text.append(static_cast<const char*>(bytes), size);
    return 0;
  };
  vrtkExportOptions options = VRTK_EXPORT_OPTIONS_INIT;
  options.full = 1;
  ASSERT_EQ(vrtkSceneExport(scene.get(), &options, take, &taken, nullptr), VRTK_OK);
  EXPECT_GT(taken.pieces, 10);
  EXPECT_EQ(taken.text, jsonOf(scene.get(), true));
  Taken stopped;
  stopped.most = 2;
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkSceneExport(scene.get(), &options, take, &stopped, &error), VRTK_WRITE_STOPPED);
  EXPECT_EQ(stopped.pieces, 3);
  EXPECT_EQ(taken.text.rfind(stopped.text, 0), 0U);
  vrtkErrorDestroy(error);
}

TEST(vrtkSceneExport, NamesAssetsByTheirDigest) {
  const SceneHandle scene(vrdmCreateScene());
  addBytes(scene.get(), VRDM_CLASS_TEXTURE, "abc");
  // The digest of "abc" is published with the algorithm.
  const std::string digest = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
  vrtkExportOptions options = VRTK_EXPORT_OPTIONS_INIT;
  char* json = nullptr;
  ASSERT_EQ(vrtkSceneExportString(scene.get(), &options, &json, nullptr, nullptr), VRTK_OK);
  EXPECT_NE(std::string(json).find(R"("bytes": { "size": 3, "sha256": ")" + digest + "\" }"),
            std::string::npos)
      << json;
  vrtkStringDestroy(json);
  options.assetPrefix = "x/";
  ASSERT_EQ(vrtkSceneExportString(scene.get(), &options, &json, nullptr, nullptr), VRTK_OK);
  EXPECT_NE(std::string(json).find(R"("bytes": { "file": "x/)" + digest + R"(.bin", "size": 3)"),
            std::string::npos)
      << json;
  vrtkStringDestroy(json);
  EXPECT_NE(jsonOf(scene.get()).find(R"("bytes": { "base64": "YWJj", "size": 3)"),
            std::string::npos);
}

TEST(vrtkSceneExport, RefusesAValueThatRefersToItself) {
  const SceneHandle scene = sceneWith(VRDM_CLASS_MATERIAL);
  vrntValuesError_t* error = nullptr;
  const TypeHandle any = parseType("void*");
  vrntValue_t* value = vrntValueCreate(any.get(), &error);
  const vrntValueView_t view{any.get(), 0};
  // Behind the library's back.
  const void* const data = vrntValueData(value);
  std::memcpy(vrntValueData(value), &data, sizeof(data));
  vrntValueCopy(value);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value);
  char* json = nullptr;
  vrtkError* failure = nullptr;
  EXPECT_EQ(vrtkSceneExportString(scene.get(), nullptr, &json, nullptr, &failure),
            VRTK_VALUE_CYCLE);
  EXPECT_EQ(json, nullptr);
  EXPECT_EQ(std::string(vrtkErrorMessage(failure)).rfind("Material/0/value: ", 0), 0U);
  vrtkErrorDestroy(failure);
  std::memset(vrntValueData(value), 0, sizeof(data));
  vrntValueDestroy(value);
  vrntValueDestroy(value);
  static_cast<void>(view);
}

TEST(vrtkSceneExportFile, WritesAssetsOnceIntoAFolderBesideTheFile) {
  const TemporaryFolder folder;
  const SceneHandle scene = sceneOfAllClasses();
  addBytes(scene.get(), VRDM_CLASS_TEXTURE, "bytes of an asset");
  const std::string path = folder.file("box.json");
  vrtkError* error = nullptr;
  ASSERT_EQ(vrtkSceneExportFile(scene.get(), path.c_str(), nullptr, &error), VRTK_OK);
  const std::string json = readFile(path);
  EXPECT_EQ(count(json, "\"file\": \"box.assets/"), 4U) << json;
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder.file("box.assets"))) {
    ++files;
    EXPECT_NE(json.find("box.assets/" + entry.path().filename().string()), std::string::npos);
  }
  EXPECT_EQ(files, 2U);
  // A second export writes over it.
  ASSERT_EQ(vrtkSceneExportFile(scene.get(), path.c_str(), nullptr, &error), VRTK_OK);
  EXPECT_EQ(readFile(path), json);
}

TEST(vrtkSceneExportFile, LeavesNothingBehindWhenItFails) {
  const TemporaryFolder folder;
  const SceneHandle scene = sceneOfAllClasses();
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkSceneExportFile(scene.get(), folder.file("no/x.json").c_str(), nullptr, &error),
            VRTK_SAVE_NO_FOLDER);
  vrtkErrorDestroy(error);
  ASSERT_EQ(mkdir(folder.file("x.json").c_str(), 0700), 0);
  EXPECT_EQ(vrtkSceneExportFile(scene.get(), folder.file("x.json").c_str(), nullptr, nullptr),
            VRTK_FILE_IS_FOLDER);
  writeFile(folder.file("y.assets"), "a file");
  writeFile(folder.file("y.json"), "old");
  EXPECT_EQ(vrtkSceneExportFile(scene.get(), folder.file("y.json").c_str(), nullptr, nullptr),
            VRTK_SAVE_NO_FOLDER);
  EXPECT_EQ(readFile(folder.file("y.json")), "old");
  // The value of the second object cannot be written, after assets have been.
  const SceneHandle cyclic = sceneOfAllClasses();
  const TypeHandle any = parseType("void*");
  vrntValuesError_t* failure = nullptr;
  vrntValue_t* value = vrntValueCreate(any.get(), &failure);
  const void* const data = vrntValueData(value);
  std::memcpy(vrntValueData(value), &data, sizeof(data));
  vrdmSetInstanceValue(cyclic.get(), VRDM_CLASS_MATERIAL, 0, value);
  EXPECT_EQ(vrtkSceneExportFile(cyclic.get(), folder.file("z.json").c_str(), nullptr, nullptr),
            VRTK_VALUE_CYCLE);
  std::memset(vrntValueData(value), 0, sizeof(data));
  vrntValueDestroy(value);
  EXPECT_FALSE(std::filesystem::exists(folder.file("z.json")));
  EXPECT_FALSE(std::filesystem::exists(folder.file("z.assets")));
}

}  // namespace
}  // namespace vornath_test
