// Files that are refused, each for its own reason, and files that are cut or changed anywhere.
#include <gtest/gtest.h>

#include <random>

#include "converter/support.hpp"

namespace {

using namespace vrn_convert_tests;

std::string replaced(std::string text, const std::string& what, const std::string& by) {
  const std::size_t at = text.find(what);
  EXPECT_NE(at, std::string::npos) << what;
  return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

TEST(Refusals, SayWhatIsWrongInALine) {
  const std::string good = triangleGltf(kOneNode);
  ASSERT_EQ(refusal(good), "");
  const struct {
    std::string what, by, words;
  } cases[] = {
      {"\"mesh\": 0", "\"mesh\": 5", "there is no mesh 5"},
      {"\"POSITION\": 0", "\"POSITION\": 9", "there is no accessor 9"},
      {"\"indices\": 2", "\"indices\": 0", "type"},
      {"\"count\": 3, \"type\": \"VEC3\"", "\"count\": 4, \"type\": \"VEC3\"",
       "ends behind its buffer view"},
      {"\"type\": \"VEC3\"", "\"type\": \"VEC2\"", "another type"},
      {"\"nodes\": [ { \"mesh\": 0", "\"nodes\": [ { \"children\": [ 0 ], \"mesh\": 0", ""},
      {"\"nodes\": [ {", "\"scenes\": [ { \"nodes\": [ 0, 0 ] } ], \"nodes\": [ {",
       "is in the tree twice"},
      {"\"nodes\": [ {", "\"scenes\": [ { \"nodes\": [ 7 ] } ], \"nodes\": [ {",
       "there is no node 7"},
      {"\"asset\"", "\"extensionsRequired\": [ \"EXT_unheard_of\" ], \"asset\"",
       "it requires the extension EXT_unheard_of"},
      {"\"byteLength\": 78", "\"byteLength\": 80", "it is no valid glTF"},
      {"{ \"asset\"", "{ \"asset", "it is no valid glTF"},
  };
  for (const auto& each : cases) {
    if (each.words.empty()) continue;
    const std::string reason = refusal(replaced(good, each.what, each.by));
    EXPECT_NE(reason.find(each.words), std::string::npos) << each.by << ": " << reason;
    EXPECT_EQ(reason.find('\n'), std::string::npos);
  }
}

TEST(Refusals, AnIndexWithoutAVertexIsRefused) {
  Buffer buffer;
  const int positions = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0});
  const int indices = buffer.add<std::uint16_t>({0, 1, 3});
  const std::string text =
      gltf(buffer.json() + ", \"accessors\": [ " + accessor(positions, 5126, 3, "VEC3") + ", " +
           accessor(indices, 5123, 3, "SCALAR") +
           " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { \"POSITION\": 0 }, "
           "\"indices\": 1 } ] } ], " +
           kOneNode);
  EXPECT_EQ(refusal(text), "mesh 0, primitive 0: the index 3 has no vertex; there are 3");
}

TEST(Refusals, NodesInACircleAreNotFollowed) {
  // The nodes 0 and 1 are the children of each other, so the file has no root.
  const Converted made = convertGltf(
      triangleGltf("\"nodes\": [ { \"mesh\": 0, \"children\": [ 1 ] }, { \"children\": [ 0 ] } ]"));
  EXPECT_EQ(made.count(VRDM_CLASS_SHAPE), 0U);
  const std::string circle = triangleGltf(
      "\"nodes\": [ { \"mesh\": 0, \"children\": [ 1 ] }, { \"children\": [ 0 ] } ], \"scenes\": [ "
      "{ \"nodes\": [ 0 ] } ]");
  EXPECT_NE(refusal(circle).find("is in the tree twice"), std::string::npos);
}

TEST(Refusals, ATreeOfAnyDepthTakesNoStack) {
  constexpr int kDepth = 100000;
  std::string nodes = "\"nodes\": [ { \"mesh\": 0 }";
  for (int i = 1; i < kDepth; ++i) {
    nodes += ", { \"children\": [ " + std::to_string(i - 1) + " ], \"translation\": [ 0, 0, 1 ] }";
  }
  const Converted made = convertGltf(triangleGltf(nodes + " ]"));
  ASSERT_EQ(made.count(VRDM_CLASS_SHAPE), 1U);
  EXPECT_EQ(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 0, "w")[2], kDepth - 1);
}

// A file with most of what the reader knows.
std::string richFile() {
  return triangleGltf(
      "\"nodes\": [ { \"mesh\": 0, \"children\": [ 1 ] }, { \"camera\": 0, \"extensions\": { "
      "\"KHR_lights_punctual\": { \"light\": 0 } } } ], \"cameras\": [ { \"type\": "
      "\"perspective\", \"perspective\": { \"yfov\": 1, \"znear\": 0.1 } } ], \"extensions\": { "
      "\"KHR_lights_punctual\": { \"lights\": [ { \"type\": \"spot\", \"spot\": {} } ] } }, "
      "\"materials\": [ { \"pbrMetallicRoughness\": { \"baseColorTexture\": { \"index\": 0 } } } "
      "], "
      "\"textures\": [ { \"source\": 0, \"sampler\": 0 } ], \"samplers\": [ {} ], \"images\": [ { "
      "\"bufferView\": 0, \"mimeType\": \"image/png\" } ]",
      ", \"material\": 0");
}

TEST(Refusals, AFileCutAnywhereIsRefusedOrRead) {
  const std::string file = richFile();
  ASSERT_EQ(refusal(file), "");
  for (std::size_t size = 0; size < file.size(); size += 3) {
    EXPECT_NE(refusal(file.substr(0, size)), "") << size;
  }
}

TEST(Refusals, AFileWithChangedBytesIsRefusedOrBecomesASceneWithoutErrors) {
  const std::string file = richFile();
  std::mt19937 random(7);
  for (int round = 0; round < 1500; ++round) {
    std::string changed = file;
    for (int i = 0; i <= round % 3; ++i) {
      const std::size_t at = random() % changed.size();
      const char digits[] = "0123456789-{}[],\"e. ";
      changed[at] = digits[random() % (sizeof digits - 1)];
    }
    try {
      const Converted made = convertGltf(changed);
      vrtkReport* report = nullptr;
      ASSERT_EQ(vrtkSceneValidate(made.scene.get(), nullptr, &report, nullptr), VRTK_OK);
      EXPECT_TRUE(vrtkReportValid(report)) << changed;
      vrtkReportDestroy(report);
    } catch (const vrn_convert::Refused& refused) {
      EXPECT_STRNE(refused.what(), "");
    }
  }
}

}  // namespace
