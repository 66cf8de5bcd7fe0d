// Scenes from JSON documents: what may be left out, and what is said of a wrong document.
#include <algorithm>
#include <cmath>

#include "support/depth.hpp"
#include "support/small_stack.hpp"
#include "toolkit/json_support.hpp"

namespace vornath_test {
namespace {

using vrnt::data::Scene;

// Finds where the value or the key of a pointer stands in a document that has no escapes; of a key
// that is there twice, the last one.
class PlaceOf {
 public:
  PlaceOf(const std::string& json, const std::string& pointer, bool isKey)
      : json_(json), pointer_(pointer), isKey_(isKey) {
    value("");
    line = 1 + std::count(json.begin(), json.begin() + static_cast<std::ptrdiff_t>(found_), '\n');
    const std::size_t start = json.rfind('\n', found_ == 0 ? 0 : found_ - 1);
    column = static_cast<std::int64_t>(found_ - (start == std::string::npos ? 0 : start + 1)) + 1;
  }
  std::int64_t line = 0;
  std::int64_t column = 0;

 private:
  void skip() {
    while (at_ < json_.size() && std::string_view(" \n,:").find(json_[at_]) != std::string::npos) {
      ++at_;
    }
  }
  std::string text() {
    const std::size_t end = json_.find('"', at_ + 1);
    const std::string found = json_.substr(at_ + 1, end - at_ - 1);
    at_ = end + 1;
    return found;
  }
  void value(const std::string& path) {
    skip();
    if (path == pointer_ && !isKey_) found_ = at_;
    const char first = json_[at_];
    if (first == '"') {
      text();
    } else if (first == '{' || first == '[') {
      ++at_;
      for (int i = 0;; ++i) {
        skip();
        if (json_[at_] == '}' || json_[at_] == ']') break;
        std::string inner = path + "/" + std::to_string(i);
        if (first == '{') {
          const std::size_t key = at_;
          inner = path + "/" + text();
          if (inner == pointer_ && isKey_) found_ = key;
        }
        value(inner);
      }
      ++at_;
    } else {
      at_ = std::min(json_.find_first_of(" \n,]}", at_), json_.size());
    }
  }

  const std::string& json_;
  const std::string& pointer_;
  bool isKey_;
  std::size_t at_ = 0;
  std::size_t found_ = std::string::npos;
};

// Expects a document to have these errors, in order: "CODE POINTER: a part of the words". The line
// and the column are those of the pointer, unless they stand before it.
void expectProblems(const std::string& json, const std::vector<std::string>& expected) {
  const Built built = tryBuild(json);
  ASSERT_EQ(built.status, VRTK_JSON_INVALID) << json;
  const vrtkJsonReport* const report = built.report.get();
  ASSERT_EQ(vrtkJsonReportCount(report), expected.size()) << textOf(report);
  for (std::uint64_t i = 0; i < expected.size(); ++i) {
    const vrtkJsonMessage* const message = vrtkJsonReportMessage(report, i);
    const std::string code = expected[i].substr(0, expected[i].find(' '));
    std::string rest = expected[i].substr(code.size() + 1);
    std::string place;
    if (rest[0] >= '0' && rest[0] <= '9') {
      place = rest.substr(0, rest.find(' '));
      rest.erase(0, place.size() + 1);
    }
    const std::string pointer = rest.substr(0, rest.find(": "));
    if (place.empty()) {
      const bool isKey = code == "JSON_UNKNOWN_KEY" || code == "JSON_DUPLICATE_KEY";
      const PlaceOf found(json, pointer, isKey);
      place = std::to_string(found.line) + ":" + std::to_string(found.column);
    }
    EXPECT_EQ(message->code, code);
    EXPECT_EQ(message->pointer, pointer);
    EXPECT_EQ(std::to_string(message->line) + ":" + std::to_string(message->column), place)
        << textOf(report) << json;
    EXPECT_NE(std::string(message->message).find(rest.substr(pointer.size() + 2)),
              std::string::npos)
        << message->message << "\n"
        << rest;
  }
  EXPECT_NE(built.message.find(vrtkJsonReportMessage(report, 0)->message), std::string::npos)
      << built.message;
}

std::string camera(const std::string& members) {
  return documentWith("\"objects\": { \"Camera\": [ { " + members + " } ] }");
}

std::string material(const std::string& type, const std::string& data) {
  return documentWith("\"objects\": { \"Material\": [ { \"value\": { \"type\": \"" + type +
                      "\", \"data\": " + data + " } } ] }");
}

const vrntValue_t* valueOf(const vrdmScene_t* scene) {
  static ValueHandle value;
  value.reset(vrdmGetInstanceValue(scene, VRDM_CLASS_MATERIAL, 0));
  return value.get();
}

std::string printed(const vrntValue_t* value) {
  const vrntValueView_t view{vrntValueType(value), 0};
  vrntValuesError_t* error = nullptr;
  const StringHandle text(vrntValueString(value, &view, 0, &error));
  EXPECT_EQ(error, nullptr);
  return text ? text.get() : "";
}

TEST(vrtkSceneBuild, TakesADocumentThatSaysNothing) {
  const SceneHandle scene = build(documentWith(""));
  const SceneHandle fresh(vrdmCreateScene());
  EXPECT_TRUE(Scene::equivalent(*scene, *fresh));
  EXPECT_FALSE(vrdmSceneId(scene.get())->isNull());
}

TEST(vrtkSceneBuild, GivesObjectsOfWhichNothingIsSaidWhatNewOnesHave) {
  std::string members;
  const SceneHandle fresh(vrdmCreateScene());
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    if (vrdmObjectClass(c) != VRDM_KIND_INSTANCE) continue;
    members += std::string(members.empty() ? "" : ", ") + "\"" + vrdmObjectName(c) + "\": [ {} ]";
    vrdmCreateInstance(fresh.get(), c);
    if (vrdmHasValue(c)) vrdmSetInstanceValue(fresh.get(), c, 0, parseValue("{ }").get());
  }
  const SceneHandle scene = build(documentWith("\"objects\": { " + members + " }"));
  EXPECT_TRUE(Scene::equivalent(*scene, *fresh));
  EXPECT_TRUE(contentOf(scene.get()).substr(100) == contentOf(fresh.get()).substr(100));
  vrtkError* error = nullptr;
  void* bytes = nullptr;
  std::uint64_t size = 0;
  EXPECT_EQ(vrtkSceneSaveBytes(scene.get(), &bytes, &size, &error), VRTK_OK);
  vrtkBytesDestroy(bytes);
}

TEST(vrtkSceneBuild, TakesAHandwrittenScene) {
  const SceneHandle scene = build(R"({
    "objects": {
      "Camera": [ { "slots": { "program": 0 }, "value":
        { "data": { "focal_length": 35 }, "type": "{ float @default=50.0 focal_length; float @default=2.8 stop; }" },
        "groups": { "General": { "near_distance": 1e-1 } } } ],
      "CameraProgram": [ { "text": "camera" } ],
      "LightGroup": [ { "slots": { "emitters": [ { "Light": 0 }, { "Shape": 1 }, null, { "word": 77 } ] } } ],
      "DecalList": [ { "slots": { "decals": [ { "front": 0 }, { "back": 0 }, null ] } } ],
      "Decal": [ {} ], "Light": [ {} ], "Shape": [ null, { "slots": { "lightGroup": 0 } }, null ]
    },
    "formatVersion": 1, "format": "vornath-scene",
    "scene": { "Raytracer": { "ray_epsilon": 1e-05 } }
  })");
  ASSERT_NE(scene, nullptr);
  EXPECT_EQ(scene->container<vrnt::data::CameraDesc>().at(0).desc.groups.general.near_distance,
            0.1F);
  EXPECT_EQ(scene->data.raytracer.ray_epsilon, 1e-05F);
  EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_CAMERA, 0, 0), 0);
  EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_CAMERA, 0, 1), -1);
  const std::int32_t* list = vrdmGetReferenceList(scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0);
  EXPECT_EQ(std::vector<std::int32_t>(list, list + 4),
            (std::vector<std::int32_t>{~0, 1, INT32_MIN, 77}));
  list = vrdmGetReferenceList(scene.get(), VRDM_CLASS_DECAL_LIST, 0, 0);
  EXPECT_EQ(std::vector<std::int32_t>(list, list + 3),
            (std::vector<std::int32_t>{~0, 0, INT32_MIN}));
  EXPECT_EQ(vrdmContainerSize(scene.get(), VRDM_CLASS_SHAPE), 3U);
  EXPECT_FALSE(vrdmValid(scene.get(), VRDM_CLASS_SHAPE, 0));
  EXPECT_FALSE(vrdmValid(scene.get(), VRDM_CLASS_SHAPE, 2));
  const ValueHandle value(vrdmGetInstanceValue(scene.get(), VRDM_CLASS_CAMERA, 0));
  EXPECT_EQ(printed(value.get()), "{ focal_length = 35.0; stop = 2.8; }");
}

TEST(vrtkSceneBuild, FillsInTheDefaultsOfAValuesType) {
  const SceneHandle scene =
      build(material("{ { float @default=1.5 x; int y; } a; { int encoding; float[]* spectrum; } "
                     "s; float @default=2.0 z; }",
                     R"({ "a": { "y": 3 } })"));
  EXPECT_EQ(printed(valueOf(scene.get())).substr(0, 25), "{ a = { x = 1.5; y = 3; }");
  const SceneHandle other = build(documentWith(
      R"("objects": { "Material": [ { "value": { "type": "{ float @default=1.5 x; }" } } ] })"));
  EXPECT_EQ(printed(valueOf(other.get())), "{ x = 1.5; }");
}

TEST(vrtkSceneBuild, TakesTheExtentOfAnArrayFromTheDocument) {
  const SceneHandle scene = build(material("{ float[]* a; float[]* b; }",
                                           R"({ "a": { "to": [1, 2, 3] }, "b": { "to": [] } })"));
  const vrntValue_t* const block = referencedBlock(valueOf(scene.get()), 0);
  EXPECT_STREQ(vrntTypeString(vrntValueType(block)), "float[3]");
}

TEST(vrtkSceneBuild, TakesASharedBlockThatStandsFurtherDown) {
  const SceneHandle scene = build(material(
      "{ int* a; int* b; void* c; }",
      R"({ "c": { "shared": "x" }, "b": { "shared": "x" }, "a": { "shared": "x", "type": "int", "to": 5 } })"));
  const vrntValue_t* const value = valueOf(scene.get());
  EXPECT_EQ(referencedBlock(value, 0), referencedBlock(value, 8));
  EXPECT_EQ(referencedBlock(value, 0), referencedBlock(value, 16));
}

TEST(vrtkSceneBuild, TakesMembersInAnyOrder) {
  const SceneHandle scene = sceneOfAllClasses();
  const SceneHandle built = build(camera(
      R"("groups": { "Background": { "blue": 1, "active": true, "red": 0.5 }, "General": { "time_end": 2, "near_distance": 1 } })"));
  const auto& groups = built->container<vrnt::data::CameraDesc>().at(0).desc.groups;
  EXPECT_EQ(groups.background.blue, 1.0F);
  EXPECT_EQ(groups.background.red, 0.5F);
  EXPECT_EQ(groups.general.time_end, 2.0F);
}

TEST(vrtkSceneBuild, ReportsSyntaxErrorsWithTheirPlaces) {
  expectProblems("", {"JSON_SYNTAX 1:1 : the document is empty"});
  expectProblems("{\n  \"format\": \"vornath-scene\",\n  \"x\" 3 }",
                 {"JSON_UNKNOWN_KEY 3:3 /x: no member \"x\"",
                  "JSON_SYNTAX 3:7 /x: found '3'; expected a colon"});
  expectProblems(
      "{ \"format\": \"vornath-scene\", \"formatVersion\": 1, \"objects\": { \"Camera\": [ {} {} ] "
      "} }",
      {"JSON_SYNTAX 1:78 /objects/Camera/0: found '{'; expected a comma or ']'"});
  expectProblems(documentWith("") + " x", {"JSON_SYNTAX 1:51 : expected the end of the document"});
  expectProblems(documentWith("") + std::string(1, '\0'),
                 {"JSON_SYNTAX 1:50 : expected the end of the document"});
  expectProblems("{ \"\xFF\": 1 }", {"JSON_SYNTAX 1:4 : expected UTF-8"});
}

// A short key with an escape is a copy, which moves with the levels of the document.
TEST(vrtkSceneBuild, NamesKeysWithEscapesAtAnyDepth) {
  std::string json = "{ \"\\u0041/B\": ";
  std::string pointer = "/A~1B";
  for (int depth = 0; depth < 40; ++depth) {
    json += "{ \"\\u0043\": ";
    pointer += "/C";
  }
  json += "x";
  const Built built = tryBuild(json);
  ASSERT_EQ(built.status, VRTK_JSON_INVALID);
  const std::uint64_t count = vrtkJsonReportCount(built.report.get());
  ASSERT_GE(count, 1U);
  const vrtkJsonMessage* const message = vrtkJsonReportMessage(built.report.get(), count - 1);
  EXPECT_STREQ(message->code, "JSON_SYNTAX");
  EXPECT_EQ(message->pointer, pointer);
}

TEST(vrtkSceneBuild, CountsColumnsInCharacters) {
  expectProblems(
      "{ \"\xC3\xA9\xC3\xA9\": 1, \"format\": 2 }",
      {"JSON_UNKNOWN_KEY 1:3 /\xC3\xA9\xC3\xA9: no member", "JSON_VERSION 1:22 /format: no scene"});
}

TEST(vrtkSceneBuild, ReportsADocumentThatIsNoScene) {
  expectProblems("{}", {"JSON_MISSING_KEY 1:1 : \"format\""});
  expectProblems("[]", {"JSON_WRONG_KIND 1:1 : a scene is an object"});
  expectProblems("7", {"JSON_WRONG_KIND 1:1 : a scene is an object"});
  expectProblems(R"({ "format": "other" })", {"JSON_VERSION 1:13 /format: vornath-scene"});
  expectProblems(R"({ "format": "vornath-scene", "formatVersion": 2 })",
                 {"JSON_VERSION 1:47 /formatVersion: expected 1"});
  expectProblems(R"({ "format": "vornath-scene" })",
                 {"JSON_MISSING_KEY 1:1 : \"formatVersion\": 1"});
  expectProblems(documentWith("\"sceneVersion\": 172"), {"JSON_VERSION /sceneVersion: 173"});
  expectProblems(documentWith("\"id\": \"no id\""), {"JSON_WRONG_KIND /id: expected an id"});
  expectProblems(documentWith("\"objects\": []"), {"JSON_WRONG_KIND /objects: found an array"});
  expectProblems(documentWith("\"objects\": { \"Camera\": {} }"),
                 {"JSON_WRONG_KIND /objects/Camera: expected an array"});
}

TEST(vrtkSceneBuild, SuggestsTheNearestName) {
  expectProblems(documentWith("\"object\": {}"),
                 {"JSON_UNKNOWN_KEY /object: did you mean \"objects\"?"});
  expectProblems(documentWith("\"objects\": { \"camera\": [] }"),
                 {"JSON_UNKNOWN_KEY /objects/camera: did you mean \"Camera\"?"});
  expectProblems(camera(R"("group": {})"),
                 {"JSON_UNKNOWN_KEY /objects/Camera/0/group: did you mean \"groups\"?"});
  expectProblems(camera(R"("groups": { "Genral": {} })"),
                 {"JSON_UNKNOWN_KEY /objects/Camera/0/groups/Genral: did you mean \"General\"?"});
  expectProblems(camera(R"("groups": { "General": { "shuter_open": 1 } })"),
                 {"JSON_UNKNOWN_KEY /objects/Camera/0/groups/General/shuter_open: did you "
                  "mean \"shutter_open\"?"});
  expectProblems(camera(R"("slots": { "programm": 0 })"),
                 {"JSON_UNKNOWN_KEY /objects/Camera/0/slots/programm: did you mean \"program\"?"});
  expectProblems(camera(R"("groups": { "Backplate": { "mode": "FIT_SICE" } })"),
                 {"JSON_UNKNOWN_LABEL /objects/Camera/0/groups/Backplate/mode: Invalid enum "
                  "constructor: \"FIT_SICE\"; did you mean \"FIT_SIZE\"?"});
  expectProblems(documentWith(R"("scene": { "Raytracer": { "ray_epsilom": 1 } })"),
                 {"JSON_UNKNOWN_KEY /scene/Raytracer/ray_epsilom: did you mean \"ray_epsilon\"?"});
}

TEST(vrtkSceneBuild, ReportsNumbersAndArraysThatDoNotFit) {
  const auto general = [](const std::string& field) {
    return camera("\"groups\": { \"General\": { \"near_distance\": " + field + " } }");
  };
  const std::string at = " /objects/Camera/0/groups/General/near_distance: ";
  expectProblems(general("\"x\""),
                 {"JSON_WRONG_KIND" + at + "found the string \"x\"; expected a number (float)"});
  expectProblems(general("true"), {"JSON_WRONG_KIND" + at + "found true"});
  expectProblems(general("null"), {"JSON_WRONG_KIND" + at + "found null"});
  expectProblems(general("[1]"), {"JSON_WRONG_KIND" + at + "found an array"});
  expectProblems(general("{}"), {"JSON_WRONG_KIND" + at + "found an object"});
  expectProblems(general("1e39"), {"JSON_OUT_OF_RANGE" + at + "1e39 is out of the range of float"});
  expectProblems(general("\"nan:00000001\""), {"JSON_WRONG_KIND" + at + "nan:00000001"});
  EXPECT_EQ(tryBuild(general("1e-300")).status, VRTK_OK);
  EXPECT_EQ(tryBuild(general("-0")).status, VRTK_OK);
  expectProblems(material("int", "1.5"), {"JSON_WRONG_KIND /objects/Material/0/value/data: "
                                          "found the number 1.5; expected a whole number (int)"});
  expectProblems(material("int", "2147483648"),
                 {"JSON_OUT_OF_RANGE /objects/Material/0/value/data: out of the range of int"});
  expectProblems(material("char", "256"),
                 {"JSON_OUT_OF_RANGE /objects/Material/0/value/data: out of the range of char"});
  expectProblems(material("half", "65520"),
                 {"JSON_OUT_OF_RANGE /objects/Material/0/value/data: out of the range of half"});
  expectProblems(material("bool", "1"),
                 {"JSON_WRONG_KIND /objects/Material/0/value/data: expected true or false"});
  expectProblems(
      material("float3", "[1, 2]"),
      {"JSON_OUT_OF_RANGE /objects/Material/0/value/data: found 2 elements; expected 3"});
  expectProblems(
      material("float3", "1"),
      {"JSON_WRONG_KIND /objects/Material/0/value/data: an array of 3 elements (float3)"});
  expectProblems(
      material("int[2]", "[1, 2, 3]"),
      {"JSON_OUT_OF_RANGE /objects/Material/0/value/data: found 3 elements; expected 2"});
  expectProblems(material("int[2]", "[1, true]"),
                 {"JSON_WRONG_KIND /objects/Material/0/value/data/1: found true"});
  expectProblems(material("{ int a; }", "3"),
                 {"JSON_WRONG_KIND /objects/Material/0/value/data: expected an object"});
}

TEST(vrtkSceneBuild, ReportsReferencesThatDoNotFit) {
  expectProblems(camera(R"("slots": { "program": 3 })"),
                 {"JSON_OUT_OF_RANGE /objects/Camera/0/slots/program: there is no "
                  "CameraProgram 3: the scene has none"});
  expectProblems(camera(R"("slots": { "program": -1 })"),
                 {"JSON_OUT_OF_RANGE /objects/Camera/0/slots/program: -1 is no index"});
  expectProblems(camera(R"("slots": { "program": "0" })"),
                 {"JSON_WRONG_KIND /objects/Camera/0/slots/program: found a string"});
  expectProblems(
      documentWith(
          R"("objects": { "LightGroup": [ { "slots": { "emitters": [ 0, { "Ligth": 0 }, { "Light": 4 } ] } } ], "Light": [ {} ] })"),
      {"JSON_WRONG_KIND /objects/LightGroup/0/slots/emitters/0: { \"Light\": 0 }",
       "JSON_UNKNOWN_KEY /objects/LightGroup/0/slots/emitters/1/Ligth: did you mean \"Light\"?",
       "JSON_OUT_OF_RANGE /objects/LightGroup/0/slots/emitters/2/Light: there is no Light 4; "
       "the last one is 0"});
  expectProblems(
      documentWith(R"("objects": { "KeyframeList": [ { "slots": { "keyframes": 1 } } ] })"),
      {"JSON_WRONG_KIND /objects/KeyframeList/0/slots/keyframes: expected an array"});
  // A free slot is in the range.
  EXPECT_EQ(
      tryBuild(
          documentWith(
              R"("objects": { "CameraProgram": [ null ], "Camera": [ { "slots": { "program": 0 } } ] })"))
          .status,
      VRTK_OK);
}

TEST(vrtkSceneBuild, ReportsWrongValues) {
  expectProblems(material("{ int a; ", "{}"),
                 {"JSON_TYPE /objects/Material/0/value/type: Unable to parse type"});
  expectProblems(material("float[]", "[1]"),
                 {"JSON_TYPE /objects/Material/0/value/data: all its extents"});
  expectProblems(camera(R"("value": { "data": 1 })"),
                 {"JSON_MISSING_KEY /objects/Camera/0/value: a value needs a \"type\""});
  expectProblems(camera(R"("value": { "type": "int", "dat": 1 })"),
                 {"JSON_UNKNOWN_KEY /objects/Camera/0/value/dat: did you mean \"data\"?"});
  expectProblems(camera(R"("value": 3)"),
                 {"JSON_WRONG_KIND /objects/Camera/0/value: found a number"});
  expectProblems(material("{ void* a; }", R"({ "a": { "to": 1 } })"),
                 {"JSON_MISSING_KEY /objects/Material/0/value/data/a: needs a \"type\""});
  expectProblems(material("{ int* a; }", R"({ "a": 1 })"),
                 {"JSON_WRONG_KIND /objects/Material/0/value/data/a: found a number"});
  expectProblems(material("{ int* a; }", R"({ "a": { "address": "0xffffffffffffffff" } })"),
                 {"JSON_WRONG_KIND /objects/Material/0/value/data/a/address: 63 bits"});
  expectProblems(material("{ int* a; }", R"({ "a": {} })"),
                 {"JSON_MISSING_KEY /objects/Material/0/value/data/a: expected a member \"to\""});
  expectProblems(material("{ int* a; }", R"({ "a": { "shared": "x" } })"),
                 {"JSON_SHARED /objects/Material/0/value/data/a: no shared block \"x\""});
  expectProblems(
      material("{ void* a; }",
               R"({ "a": { "shared": "x", "type": "void*", "to": { "shared": "x" } } })"),
      {"JSON_SHARED /objects/Material/0/value/data/a/to: contains itself"});
  expectProblems(
      material("{ int* a; int* b; }",
               R"({ "a": { "shared": "x", "to": 1 }, "b": { "shared": "x", "to": 2 } })"),
      {"JSON_SHARED /objects/Material/0/value/data/b/shared: two shared blocks \"x\""});
}

TEST(vrtkSceneBuild, ReportsMembersThatAreThereTwice) {
  expectProblems(documentWith(R"("id": "883ff973-e105-4b5b-982a-4d2cb87d48ca", "id": 1)"),
                 {"JSON_DUPLICATE_KEY /id: twice"});
  expectProblems(documentWith(R"("objects": { "Light": [], "Light": [ {} ] })"),
                 {"JSON_DUPLICATE_KEY /objects/Light: twice"});
  expectProblems(camera(R"("slots": {}, "slots": {})"),
                 {"JSON_DUPLICATE_KEY /objects/Camera/0/slots: twice"});
  expectProblems(camera(R"("groups": { "General": {}, "General": {} })"),
                 {"JSON_DUPLICATE_KEY /objects/Camera/0/groups/General: twice"});
  expectProblems(camera(R"("slots": { "program": null, "program": null })"),
                 {"JSON_DUPLICATE_KEY /objects/Camera/0/slots/program: twice"});
  expectProblems(material("{ int a; int b; }", R"({ "a": 1, "b": 2, "a": 3 })"),
                 {"JSON_DUPLICATE_KEY /objects/Material/0/value/data/a: twice"});
}

TEST(vrtkSceneBuild, ReportsWrongProgramsAndAssets) {
  const auto objects = [](const std::string& text) {
    return documentWith("\"objects\": { " + text + " }");
  };
  expectProblems(objects(R"("LightProgram": [ {} ])"),
                 {"JSON_MISSING_KEY /objects/LightProgram/0: a program needs a \"text\""});
  expectProblems(objects(R"("LightProgram": [ { "text": 1 } ])"),
                 {"JSON_WRONG_KIND /objects/LightProgram/0/text: found a number"});
  expectProblems(objects(R"("LightProgram": [ { "text": "a\u0000b" } ])"),
                 {"JSON_OUT_OF_RANGE /objects/LightProgram/0/text: NUL"});
  expectProblems(objects(R"("Mesh": [ {} ])"),
                 {"JSON_MISSING_KEY /objects/Mesh/0: needs its record in \"desc\""});
  expectProblems(objects(R"("Mesh": [ { "desc": { "triangels": 1 } } ])"),
                 {"JSON_UNKNOWN_KEY /objects/Mesh/0/desc/triangels: did you mean \"triangles\"?"});
  expectProblems(objects(R"("Mesh": [ { "desc": { "triangles": -1 } } ])"),
                 {"JSON_OUT_OF_RANGE /objects/Mesh/0/desc/triangles: negative"});
  expectProblems(objects(R"("Mesh": [ { "desc": { "triangles": 1 } } ])"),
                 {"JSON_ASSET /objects/Mesh/0: asks for 12 bytes, but there are 0"});
  expectProblems(objects(R"("Mesh": [ { "desc": {}, "bytes": { "size": 0 } } ])"),
                 {"JSON_ASSET /objects/Mesh/0/bytes: does not have the bytes"});
  expectProblems(objects(R"("Mesh": [ { "desc": {}, "bytes": { "base64": "AA=" } } ])"),
                 {"JSON_WRONG_KIND /objects/Mesh/0/bytes/base64: base64"});
  expectProblems(objects(R"("Mesh": [ { "desc": {}, "bytes": { "base64": "AA==", "size": 2 } } ])"),
                 {"JSON_ASSET /objects/Mesh/0/bytes/size: there are 1 bytes, not 2"});
  expectProblems(
      objects(R"("Mesh": [ { "desc": {}, "bytes": { "base64": "AA==", "sha256": "00" } } ])"),
      {"JSON_WRONG_KIND /objects/Mesh/0/bytes/sha256: 64 hexadecimal digits"});
  for (const char* const digest : {"7", "null", "[ 1 ]", "[ 1, 2 ]", "{ \"x\": 1 }"}) {
    expectProblems(objects(R"("Mesh": [ { "desc": {}, "bytes": { "base64": "AA==", "sha256": )" +
                           std::string(digest) + " } } ]"),
                   {"JSON_WRONG_KIND /objects/Mesh/0/bytes/sha256: 64 hexadecimal digits"});
  }
  expectProblems(objects(R"("Mesh": [ { "desc": {}, "bytes": { "base64": "AA==", "sha256": ")" +
                         std::string(64, '0') + R"(" } } ])"),
                 {"JSON_ASSET /objects/Mesh/0/bytes/sha256: another digest"});
  expectProblems(objects(R"("Mesh": [ { "desc": {}, "bytes": { "file": "a.bin" } } ])"),
                 {"JSON_ASSET /objects/Mesh/0/bytes/file: there is no folder"});
  expectProblems(objects(R"("Mesh": [ { "desc": {}, "bytes": { "file": "x/../../a.bin" } } ])"),
                 {"JSON_ASSET /objects/Mesh/0/bytes/file: leads out of the folder"});
  expectProblems(
      objects(
          R"("Texture": [ { "desc": { "width": 1, "height": 1, "depth": 1, "format": "SRGB9", "layout": "2D" }, "bytes": { "base64": "AAAA" } } ])"),
      {"JSON_UNKNOWN_LABEL /objects/Texture/0/desc/format: there is no format \"SRGB9\""});
  expectProblems(objects(R"("Mesh": [ { "id": "x", "desc": {} } ])"),
                 {"JSON_WRONG_KIND /objects/Mesh/0/id: expected an id"});
}

TEST(vrtkSceneBuild, ReportsUpToTwentyErrorsAtOnce) {
  std::string fields;
  for (int i = 0; i < 30; ++i) fields += (i == 0 ? "\"x" : ", \"x") + std::to_string(i) + "\": 1";
  const Built built = tryBuild(camera("\"groups\": { \"General\": { " + fields + " } }"));
  EXPECT_EQ(vrtkJsonReportCount(built.report.get()), 20U);
  EXPECT_TRUE(vrtkJsonReportTruncated(built.report.get()));
  EXPECT_NE(built.message.find("19 more"), std::string::npos) << built.message;
  vrtkBuildOptions options = VRTK_BUILD_OPTIONS_INIT;
  options.maxMessages = 1;
  EXPECT_EQ(vrtkJsonReportCount(
                tryBuild(camera("\"groups\": { \"General\": { " + fields + " } }"), &options)
                    .report.get()),
            1U);
}

TEST(vrtkSceneBuild, RefusesASceneThatTakesTooMuchMemory) {
  vrtkBuildOptions options = VRTK_BUILD_OPTIONS_INIT;
  options.maxMemory = 100000;
  const Built built = tryBuild(material("{ float[1000000] a; }", "{}"), &options);
  EXPECT_EQ(textOf(built.report.get()).substr(0, 14), "JSON_TOO_LARGE");
  const Built large = tryBuild(material("{ float[2000000000] a; }", "{}"));
  EXPECT_EQ(textOf(large.report.get()).substr(0, 14), "JSON_TOO_LARGE");
  std::string slots;
  for (int i = 0; i < 1000; ++i) slots += i == 0 ? "null" : ", null";
  EXPECT_EQ(tryBuild(documentWith("\"objects\": { \"Shape\": [" + slots + "] }"), &options).status,
            VRTK_JSON_INVALID);
}

TEST(vrtkSceneBuild, TakesNeitherNullNorAForeignSize) {
  vrtkError* error = nullptr;
  vrdmScene_t* scene = nullptr;
  EXPECT_EQ(vrtkSceneBuild(nullptr, 3, nullptr, &scene, nullptr, &error), VRTK_INVALID_ARGUMENT);
  EXPECT_STREQ(vrtkErrorMessage(error), "vrtkSceneBuild: the argument 'json' must not be null");
  vrtkErrorDestroy(error);
  EXPECT_EQ(vrtkSceneBuild("", 0, nullptr, nullptr, nullptr, nullptr), VRTK_INVALID_ARGUMENT);
}

TEST(vrtkSceneBuild, SurvivesAnyText) {
  std::mt19937 random(3);
  const std::string json = jsonOf(sceneOfAllClasses().get(), true);
  for (int i = 0; i < 400; ++i) {
    std::string damaged = json;
    if (i % 4 == 0) {
      damaged.resize(random() % 200);
      for (char& c : damaged) c = static_cast<char>(random());
    } else {
      for (auto changes = 1 + random() % 3; changes != 0; --changes) {
        const std::size_t at = random() % damaged.size();
        switch (random() % 4) {
          case 0:
            damaged[at] = "{}[]\",:0-9ex\\\0\x80"[random() % 16];
            break;
          case 1:
            damaged.erase(at, 1 + random() % 40);
            break;
          case 2:
            damaged.insert(at, damaged.substr(random() % damaged.size(), random() % 40));
            break;
          default:
            damaged.resize(at);
        }
        if (damaged.empty()) break;
      }
    }
    const Built built = tryBuild(damaged);
    ASSERT_TRUE(built.status == VRTK_OK || built.status == VRTK_JSON_INVALID) << built.message;
    if (built.scene) {
      EXPECT_EQ(jsonOf(build(jsonOf(built.scene.get())).get()), jsonOf(built.scene.get()));
    }
  }
}

TEST(vrtkSceneBuild, SurvivesAValueOfEachKindAtEachPlace) {
  const std::string json = jsonOf(sceneOfAllClasses().get());
  const auto values = valuesIn(json);
  EXPECT_GT(values.size(), 200U);
  for (const auto& [begin, end] : values) {
    for (const char* const other : kValuesOfEachKind) {
      const Built built = tryBuild(json.substr(0, begin) + other + json.substr(end));
      ASSERT_TRUE(built.status == VRTK_OK || built.status == VRTK_JSON_INVALID)
          << json.substr(begin, end - begin) << other << built.message;
    }
  }
}

TEST(vrtkSceneBuild, TakesDeepNestsOnASmallStack) {
  const std::size_t depth = kDepth;
  runOnStack(kSmallStack, [depth] {
    for (const char* const member : {"\"scene\": ", "\"x\": ", "\"objects\": { \"Camera\": "}) {
      const std::string json =
          "{ \"format\": \"vornath-scene\", " + std::string(member) + std::string(depth, '[');
      EXPECT_EQ(tryBuild(json).status, VRTK_JSON_INVALID);
      EXPECT_EQ(tryBuild(json + std::string(depth, ']') + " }").status, VRTK_JSON_INVALID);
    }
    std::string objects = material("{ int a; }", "");
    std::string data;
    for (std::size_t i = 0; i < depth; ++i) data += "{ \"a\": ";
    EXPECT_EQ(tryBuild(material("{ int a; }", data + "1" + std::string(depth, '}'))).status,
              VRTK_JSON_INVALID);
  });
}

TEST(vrtkSceneBuildFile, ReadsFilesOfAssetsBesideTheDocument) {
  const TemporaryFolder folder;
  const SceneHandle scene = sceneOfAllClasses();
  const std::string path = folder.file("box.json");
  vrtkError* error = nullptr;
  ASSERT_EQ(vrtkSceneExportFile(scene.get(), path.c_str(), nullptr, &error), VRTK_OK);
  vrdmScene_t* built = nullptr;
  ASSERT_EQ(vrtkSceneBuildFile(path.c_str(), nullptr, &built, nullptr, &error), VRTK_OK)
      << vrtkErrorMessage(error);
  const SceneHandle owner(built);
  EXPECT_TRUE(contentOf(built) == contentOf(scene.get()));
}

TEST(vrtkSceneBuildFile, NamesTheFileInItsErrors) {
  const TemporaryFolder folder;
  const std::string path = folder.file("x.json");
  vrdmScene_t* scene = nullptr;
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkSceneBuildFile(path.c_str(), nullptr, &scene, nullptr, &error), VRTK_FILE_MISSING);
  vrtkErrorDestroy(error);
  error = nullptr;
  writeFile(path, "{ \"format\": 3 }");
  EXPECT_EQ(vrtkSceneBuildFile(path.c_str(), nullptr, &scene, nullptr, &error), VRTK_JSON_INVALID);
  EXPECT_EQ(std::string(vrtkErrorMessage(error)).rfind(path + ": line 1, column 13: /format: ", 0),
            0U)
      << vrtkErrorMessage(error);
  vrtkErrorDestroy(error);
  error = nullptr;
  writeFile(path,
            documentWith(
                R"("objects": { "Mesh": [ { "desc": {}, "bytes": { "file": "gone.bin" } } ] })"));
  EXPECT_EQ(vrtkSceneBuildFile(path.c_str(), nullptr, &scene, nullptr, &error), VRTK_JSON_INVALID);
  EXPECT_NE(std::string(vrtkErrorMessage(error)).find("gone.bin"), std::string::npos)
      << vrtkErrorMessage(error);
  vrtkErrorDestroy(error);
  EXPECT_EQ(scene, nullptr);
}

TEST(vrtkJsonReportJson, HasTheMessagesAsJson) {
  const Built built = tryBuild("{ \"format\": 3 }");
  char* json = nullptr;
  ASSERT_EQ(vrtkJsonReportJson(built.report.get(), &json, nullptr), VRTK_OK);
  const std::string text(json);
  vrtkStringDestroy(json);
  EXPECT_NE(text.find("\"valid\": false"), std::string::npos) << text;
  EXPECT_NE(
      text.find(
          R"({ "code": "JSON_VERSION", "line": 1, "column": 13, "offset": 12, "pointer": "/format")"),
      std::string::npos)
      << text;
}

}  // namespace
}  // namespace vornath_test
