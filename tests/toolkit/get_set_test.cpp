// Single values by their address.
#include "toolkit/json_support.hpp"

namespace vornath_test {
namespace {

struct Got {
  std::uint32_t status;
  std::string text;  // the JSON, or the words of the error
};

Got get(const vrdmScene_t* scene, const std::string& address) {
  char* json = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status = vrtkSceneGet(scene, address.c_str(), &json, &error);
  const ToolkitError owner(error);
  EXPECT_EQ(json != nullptr, status == VRTK_OK);
  const std::string text = json != nullptr ? json : vrtkErrorMessage(error);
  vrtkStringDestroy(json);
  return {status, text};
}

std::string json(const vrdmScene_t* scene, const std::string& address) {
  const Got got = get(scene, address);
  EXPECT_EQ(got.status, VRTK_OK) << got.text;
  return got.text;
}

std::string refusal(const vrdmScene_t* scene, const std::string& address) {
  const Got got = get(scene, address);
  EXPECT_EQ(got.status, VRTK_ADDRESS_UNKNOWN) << got.text;
  return got.text;
}

// Returns the words of the error, or nothing.
std::string set(vrdmScene_t* scene, const std::string& address, const std::string& text,
                std::uint32_t expected = VRTK_OK, bool limits = false) {
  vrtkSetOptions options = VRTK_SET_OPTIONS_INIT;
  options.enforceLimits = limits ? 1 : 0;
  vrtkError* error = nullptr;
  const std::string before = expected != VRTK_OK ? jsonOf(scene, true) : "";
  const std::uint32_t status = vrtkSceneSet(scene, address.c_str(), text.c_str(), &options, &error);
  const ToolkitError owner(error);
  const std::string words = error != nullptr ? vrtkErrorMessage(error) : "";
  EXPECT_EQ(status, expected) << address << ": " << words;
  if (expected != VRTK_OK) {
    EXPECT_EQ(jsonOf(scene, true), before) << address;
  }
  return words;
}

class Address : public testing::Test {
 protected:
  Address() : scene(sceneOfAllClasses()) {
    vrdmSetInstanceValue(
        scene.get(), VRDM_CLASS_CAMERA, 0,
        parseValue("{ focal = 35.0; v = float3(1.0, 2.0, 3.0); e = ON : enum { OFF; "
                   "ON; }; p = &{ list = [ 1, 2 ]; }; }")
            .get());
  }
  SceneHandle scene;
};

TEST_F(Address, NamesPartsOfTheFullForm) {
  const vrdmScene_t* const s = scene.get();
  EXPECT_EQ(json(s, "").substr(0, 30), jsonOf(s, true).substr(0, 30));
  EXPECT_EQ(json(s, "format"), "\"vornath-scene\"");
  EXPECT_EQ(json(s, "formatVersion"), "1");
  EXPECT_EQ(json(s, "sceneVersion"), "173");
  EXPECT_EQ(json(s, "id").size(), 38U);
  EXPECT_EQ(json(s, "scene/Raytracer/bvh_mode").front(), '"');
  EXPECT_EQ(json(s, "Camera/0/groups/Transformation/matrix/x"), "[1.0, 0.0, 0.0, 0.0]");
  EXPECT_EQ(json(s, "objects/Camera/0/groups/Transformation/matrix/y/1"), "1.0");
  EXPECT_EQ(json(s, "Camera/0/groups/Background"),
            "{\n  \"active\": false,\n  \"red\": 0.0,\n  \"green\": 0.0,\n  \"blue\": 0.0\n}");
  EXPECT_EQ(
      json(s, "Camera/0/groups/Transformation/matrix"),
      "{\n  \"x\": [1.0, 0.0, 0.0, 0.0],\n  \"y\": [0.0, 1.0, 0.0, 0.0],\n  \"z\": [0.0, 0.0, "
      "1.0, 0.0],\n  \"w\": [0.0, 0.0, 0.0, 1.0]\n}");
  EXPECT_EQ(json(s, "Shape/0/slots/material"), "0");
  EXPECT_EQ(json(s, "LightGroup/0/slots/emitters/1"), "{ \"Shape\": 1 }");
  EXPECT_EQ(json(s, "LightGroup/0/slots/emitters/1/Shape"), "1");
  EXPECT_EQ(json(s, "Camera/0/value/data/focal"), "35.0");
  EXPECT_EQ(json(s, "Camera/0/value/data/e"), "\"ON\"");
  EXPECT_EQ(json(s, "Camera/0/value/data/p"), "{\n  \"to\": {\n    \"list\": [1, 2]\n  }\n}");
  EXPECT_EQ(json(s, "Camera/0/value/data/p/to/list/1"), "2");
  EXPECT_EQ(json(s, "Camera/0/value/type").substr(0, 10), "\"{ float f");
  EXPECT_EQ(json(s, "Texture/0/desc/format"), "\"X8\"");
  EXPECT_EQ(json(s, "Texture/0/bytes/size"), "17");
  EXPECT_EQ(json(s, "MaterialProgram/0/text"), "\"program a()\"");
  EXPECT_EQ(json(s, "Camera/1"), "null");
  EXPECT_EQ(json(s, "Light").substr(0, 1), "[");
  EXPECT_NE(jsonOf(s, true).find("\"CameraProgram\""), std::string::npos);
}

TEST_F(Address, ThatNamesNothingIsRefusedWithTheNearestName) {
  const vrdmScene_t* const s = scene.get();
  EXPECT_EQ(refusal(s, "Camra/0"),
            "Camra/0: the scene has nothing called \"Camra\"; did you mean \"Camera\"?");
  EXPECT_EQ(refusal(s, "Camera/2"),
            "Camera/2: there is no Camera \"2\"; expected an index from 0 to 1");
  EXPECT_EQ(refusal(s, "Camera/-1"),
            "Camera/-1: there is no Camera \"-1\"; expected an index from 0 to 1");
  EXPECT_EQ(refusal(s, "Camera/00").substr(0, 11), "Camera/00: ");
  EXPECT_EQ(refusal(s, "Camera/1/groups"),
            "Camera/1/groups: Camera/1 is a free slot, without an object");
  EXPECT_NE(refusal(s, "Camera/0/group").find("did you mean \"groups\"?"), std::string::npos);
  EXPECT_NE(refusal(s, "Camera/0/groups/Genral/x").find("did you mean \"General\"?"),
            std::string::npos);
  EXPECT_EQ(refusal(s, "Camera/0/groups/General/near"),
            "Camera/0/groups/General/near: Camera/0/groups/General has nothing called \"near\"; "
            "expected one of "
            "\"near_distance\", \"shutter_open\", \"shutter_close\", \"time_start\", \"time_end\"");
  EXPECT_NE(
      refusal(s, "Camera/0/groups/Transformation/matrix/x/4").find("expected an index from 0 to 3"),
      std::string::npos);
  EXPECT_NE(refusal(s, "Camera/0/groups/General/near_distance/x").find("near_distance has nothing"),
            std::string::npos);
  EXPECT_NE(refusal(s, "Shape/0/value").find("Shape/0 has nothing"), std::string::npos);
  EXPECT_NE(refusal(s, "Camera/0/").find("\"\""), std::string::npos);
  refusal(s, "id/x");
  refusal(s, std::string(100000, '/'));
  refusal(s, std::string(100000, 'x'));
}

TEST_F(Address, GivesTheBytesOfAssetsAndPrograms) {
  const void* bytes = nullptr;
  std::uint64_t size = 0;
  ASSERT_EQ(vrtkSceneGetBytes(scene.get(), "Texture/0/bytes", &bytes, &size, nullptr), VRTK_OK);
  EXPECT_EQ(std::string(static_cast<const char*>(bytes), size), "bytes of an asset");
  ASSERT_EQ(vrtkSceneGetBytes(scene.get(), "LightProgram/0/text", &bytes, &size, nullptr), VRTK_OK);
  EXPECT_EQ(std::string(static_cast<const char*>(bytes), size), "program a()");
  EXPECT_EQ(vrtkSceneGetBytes(scene.get(), "Camera/0", &bytes, &size, nullptr),
            VRTK_ADDRESS_UNKNOWN);
}

TEST_F(Address, CanBeSet) {
  vrdmScene_t* const s = scene.get();
  const struct {
    const char* address;
    const char* given;
    const char* read;
  } cases[] = {
      {"scene/Raytracer/ray_epsilon", "0.5", "0.5"},
      {"Camera/0/groups/General/near_distance", "1", "1.0"},
      {"Camera/0/groups/Transformation/matrix/x", "[1, 2, 3, 4]", "[1.0, 2.0, 3.0, 4.0]"},
      {"Camera/0/groups/Transformation/matrix/y/1", "\"nan\"", "\"nan\""},
      {"Camera/0/groups/Backplate/mode", "\"FIT_SIZE\"", "\"FIT_SIZE\""},
      {"Camera/0/groups/Backplate/image/wrapmode/u", "\"MIRROR\"", "\"MIRROR\""},
      {"Camera/0/groups/Background/active", "true", "true"},
      {"Camera/0/slots/backplate", "null", "null"},
      {"Camera/0/slots/program", " 1 ", "1"},
      {"LightGroup/0/slots/emitters/1", "{ \"Light\": 1 }", "{ \"Light\": 1 }"},
      {"KeyframeList/0/slots/keyframes", "[1]", "[\n  1\n]"},
      {"Camera/0/value/data/focal", "50", "50.0"},
      {"Camera/0/value/data/v/2", "7", "7.0"},
      {"Camera/0/value/data/e", "\"OFF\"", "\"OFF\""},
      {"Camera/0/value/data/p/to/list", "[3, 4]", "[3, 4]"},
      {"MaterialProgram/0/text", "\"b\"", "\"b\""},
      {"Texture/0/desc/width", "3", "3"},
      {"Texture/0/desc/format", "\"L16\"", "\"L16\""},
      {"id", "\"883ff973-e105-4b5b-982a-4d2cb87d48ca\"",
       "\"883ff973-e105-4b5b-982a-4d2cb87d48ca\""},
      {"Texture/0/id", "\"883ff973-e105-4b5b-982a-4d2cb87d48cb\"",
       "\"883ff973-e105-4b5b-982a-4d2cb87d48cb\""},
      {"Material/0/value", "{ \"type\": \"int\", \"data\": 3 }",
       "{\n  \"type\": \"int\",\n  \"data\": 3\n}"},
  };
  for (const auto& each : cases) {
    set(s, each.address, each.given);
    EXPECT_EQ(json(s, each.address), each.read) << each.address;
  }
  // What was set before is still there.
  EXPECT_EQ(json(s, "Camera/0/groups/Transformation/matrix/x"), "[1.0, 2.0, 3.0, 4.0]");
  EXPECT_EQ(json(s, "Camera/0/value/data/v"), "[1.0, 2.0, 7.0]");
  EXPECT_EQ(*vrdmGetUniqueId(s, VRDM_CLASS_MATERIAL_PROGRAM, 0), vrnt::UniqueId::hash("b"));
}

TEST_F(Address, SetsTheRestOfAStructToItsDefaults) {
  vrdmScene_t* const s = scene.get();
  set(s, "Camera/0/groups/General", R"({ "near_distance": 1, "time_end": 3 })");
  set(s, "Camera/0/groups/General", R"({ "near_distance": 2 })");
  EXPECT_EQ(json(s, "Camera/0/groups/General/time_end"), "1.0");
  set(s, "Camera/0/groups", "{}");
  EXPECT_EQ(json(s, "Camera/0/groups/General/near_distance"), "0.0");
  set(s, "Camera/0/slots", R"({ "program": 1 })");
  EXPECT_EQ(json(s, "Camera/0/slots"),
            "{\n  \"program\": 1,\n  \"backplate\": null,\n  \"keyframes\": null\n}");
  set(s, "scene/Raytracer/ray_epsilon", "3");
  set(s, "scene", "{}");
  EXPECT_EQ(jsonOf(s).find("\"scene\""), std::string::npos);
  set(s, "Camera/0", R"({ "slots": { "program": 0 } })");
  EXPECT_EQ(json(s, "Camera/0/value/type"), "\"{ }\"");
  set(s, "Camera/0", "null");
  EXPECT_FALSE(vrdmValid(s, VRDM_CLASS_CAMERA, 0));
}

TEST_F(Address, RefusesWhatDoesNotFitAndLeavesTheSceneAsItWas) {
  vrdmScene_t* const s = scene.get();
  const std::uint32_t invalid = VRTK_JSON_INVALID;
  EXPECT_EQ(set(s, "Camera/0/groups/Backplate/mode", "\"FIT_SICE\"", invalid),
            "Camera/0/groups/Backplate/mode: line 1, column 1: Invalid enum constructor: "
            "\"FIT_SICE\"; did you mean \"FIT_SIZE\"?");
  EXPECT_EQ(set(s, "Camera/0/groups/General", "{\n  \"near_distance\": \"x\" }", invalid),
            "Camera/0/groups/General: line 2, column 20: found the string \"x\"; expected a number "
            "(float)");
  EXPECT_NE(set(s, "Camera/0/groups",
                R"({ "General": { "near_distance": 2 }, "Background": { "red": null } })", invalid)
                .find("found null"),
            std::string::npos);
  EXPECT_NE(set(s, "Camera/0",
                R"({ "groups": { "General": { "near_distance": 2 } }, "slots": { "program": 9 } })",
                invalid)
                .find("there is no CameraProgram 9"),
            std::string::npos);
  EXPECT_NE(
      set(s, "Camera/0/groups/General/near_distance", "1,", invalid).find("line 1, column 2: "),
      std::string::npos);
  EXPECT_NE(set(s, "Camera/0/groups/General/near_distance", "", invalid).find("empty"),
            std::string::npos);
  EXPECT_NE(set(s, "Camera/0/slots/program", "7", invalid)
                .find("there is no CameraProgram 7; the last one is 1"),
            std::string::npos);
  EXPECT_NE(set(s, "Camera/0/value", "null", invalid).find("not taken away"), std::string::npos);
  EXPECT_NE(set(s, "Camera/0/value/type", "\"int\"", invalid).find("expected a whole number"),
            std::string::npos);
  EXPECT_NE(
      set(s, "Texture/0/desc/width", "1000", invalid).find("asks for 1000 bytes, but there are 17"),
      std::string::npos);
  set(s, "Camera/0/value/data/e", "\"on\"", invalid);
  set(s, "Camera/0/value/data/v", "[1]", invalid);
  set(s, "MaterialProgram/0/text", "1", invalid);
  set(s, "id", "\"x\"", invalid);
  set(s, "Camera/0/value/data/x", "1", VRTK_ADDRESS_UNKNOWN);
  set(s, "Camera/1/groups/General/near_distance", "1", VRTK_ADDRESS_UNKNOWN);
  set(s, "Camera", "[]", VRTK_ADDRESS_UNKNOWN);
  set(s, "", "{}", VRTK_ADDRESS_UNKNOWN);
  set(s, "format", "1", VRTK_ADDRESS_UNKNOWN);
}

TEST_F(Address, RefusesNumbersOutsideTheLimitsIfTheyAreEnforced) {
  vrdmScene_t* const s = scene.get();
  set(s, "Camera/0/groups/Background/red", "3");
  EXPECT_EQ(json(s, "Camera/0/groups/Background/red"), "3.0");
  const std::string words = set(s, "Camera/0/groups/Background/blue", "2", VRTK_JSON_INVALID, true);
  EXPECT_NE(words.find("blue: "), std::string::npos) << words;
  // What was outside before does not count.
  set(s, "Camera/0/groups/Background/blue", "1", VRTK_OK, true);
  set(s, "Camera/0/groups/General/shutter_open", "-0.5", VRTK_JSON_INVALID, true);
  set(s, "Camera/0/groups/General/near_distance", "\"nan\"", VRTK_JSON_INVALID, true);
  set(s, "scene/Raytracer/ray_epsilon", "-1", VRTK_JSON_INVALID, true);
}

TEST_F(Address, KeepsSharedBlocksWhenAPartOfAValueIsSet) {
  const SceneHandle other = build(documentWith(R"("objects": { "Material": [ { "value": {
    "type": "{ int* a; int* b; int c; }",
    "data": { "a": { "shared": "1", "to": 5 }, "b": { "shared": "1" }, "c": 1 } } } ] })"));
  set(other.get(), "Material/0/value/data/c", "2");
  set(other.get(), "Material/0/value/data/b/to", "6");
  EXPECT_EQ(json(other.get(), "Material/0/value/data/b/to"), "6");
  const ValueHandle value(vrdmGetInstanceValue(other.get(), VRDM_CLASS_MATERIAL, 0));
  EXPECT_EQ(referencedBlock(value.get(), 0), referencedBlock(value.get(), 8));
}

TEST_F(Address, GivesBackWhatItGot) {
  const SceneHandle copy = sceneOfAllClasses();
  for (const char* const address :
       {"scene", "Camera/0", "Camera/0/groups", "Camera/0/slots", "Camera/0/value", "Shape/0",
        "LightGroup/0", "Texture/0", "Mesh/0/desc", "LightProgram/0", "Material/0/value/data"}) {
    const std::string before = jsonOf(copy.get(), true);
    set(copy.get(), address, json(copy.get(), address));
    EXPECT_EQ(jsonOf(copy.get(), true), before) << address;
  }
}

}  // namespace
}  // namespace vornath_test
