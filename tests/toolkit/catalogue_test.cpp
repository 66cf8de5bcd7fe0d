// The catalogue in its forms, and what changed since a saved one.
#include <algorithm>
#include <map>
#include <set>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

struct StringDeleter {
  void operator()(char* text) const { vrtkStringDestroy(text); }
};
using ToolkitString = std::unique_ptr<char, StringDeleter>;

struct ChangesDeleter {
  void operator()(vrtkCatalogueChanges* changes) const { vrtkCatalogueChangesDestroy(changes); }
};
using ChangesHandle = std::unique_ptr<vrtkCatalogueChanges, ChangesDeleter>;

std::string inForm(std::uint32_t form, const char* filter = nullptr) {
  char* text = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status = vrtkCatalogue(form, filter, &text, &error);
  const ToolkitError errorOwner(error);
  EXPECT_EQ(status, VRTK_OK) << (error != nullptr ? vrtkErrorMessage(error) : "");
  const ToolkitString owner(text);
  return text != nullptr ? text : "";
}

const std::string& savedJson() {
  static const std::string json = inForm(VRTK_CATALOGUE_JSON);
  return json;
}

std::string refusal(const char* filter) {
  char* text = nullptr;
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkCatalogue(VRTK_CATALOGUE_JSON, filter, &text, &error), VRTK_CATALOGUE_UNKNOWN);
  const ToolkitError owner(error);
  EXPECT_EQ(text, nullptr);
  return error != nullptr ? vrtkErrorMessage(error) : "";
}

constexpr std::uint32_t kForms[] = {VRTK_CATALOGUE_TEXT, VRTK_CATALOGUE_JSON, VRTK_CATALOGUE_SCHEMA,
                                    VRTK_CATALOGUE_HTML, VRTK_CATALOGUE_MARKDOWN};

TEST(vrtkCatalogue, WritesTheSameBytesOnEveryCall) {
  for (const std::uint32_t form : kForms) {
    const std::string text = inForm(form);
    EXPECT_GT(text.size(), 1000U);
    EXPECT_EQ(text.back(), '\n');
    EXPECT_EQ(inForm(form), text);
  }
}

TEST(vrtkCatalogue, WritesThePageOfTheDocuments) {
  EXPECT_EQ(inForm(VRTK_CATALOGUE_MARKDOWN), readFile(SOURCE_FOLDER "/docs/catalogue.md"))
      << "run scripts/write_catalogue.py";
}

TEST(vrtkCatalogue, WritesOneClassOrOneGroupInEachForm) {
  for (const std::uint32_t form : kForms) {
    const std::string camera = inForm(form, "Camera");
    EXPECT_NE(camera.find("near_distance"), std::string::npos);
    EXPECT_NE(camera.find("Backplate"), std::string::npos);
    EXPECT_EQ(camera.find("priority"), std::string::npos);
    const std::string group = inForm(form, "Camera/General");
    EXPECT_NE(group.find("near_distance"), std::string::npos);
    EXPECT_EQ(group.find("Backplate"), std::string::npos);
    const std::string scene = inForm(form, "scene");
    EXPECT_NE(scene.find("ray_epsilon"), std::string::npos);
    EXPECT_EQ(scene.find("near_distance"), std::string::npos);
  }
}

TEST(vrtkCatalogue, WritesEveryGroupOfEveryClassByItsName) {
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    for (std::uint32_t g = 0; g < vrdmFieldCount(c); ++g) {
      const std::string filter = std::string(vrdmObjectName(c)) + "/" + vrdmFieldName(c, g);
      EXPECT_NE(inForm(VRTK_CATALOGUE_JSON, filter.c_str()).find(vrdmFieldName(c, g)),
                std::string::npos);
    }
  }
}

TEST(vrtkCatalogue, SuggestsTheNearestNameForAMisspeltOne) {
  EXPECT_EQ(refusal("Camra"), "the catalogue has no class \"Camra\"; did you mean \"Camera\"?");
  EXPECT_EQ(refusal("camera"), "the catalogue has no class \"camera\"; did you mean \"Camera\"?");
  EXPECT_EQ(refusal("Scene"), "the catalogue has no class \"Scene\"; did you mean \"scene\"?");
  EXPECT_EQ(refusal("Camera/Genral"), "Camera has no group \"Genral\"; did you mean \"General\"?");
}

TEST(vrtkCatalogue, ListsTheNamesIfNoneIsNear) {
  EXPECT_EQ(
      refusal("Camera/Wheels"),
      "Camera has no group \"Wheels\"; it has Transformation, General, Background, Backplate");
  EXPECT_EQ(refusal("Mesh/General"), "Mesh has no groups, and so no group \"General\"");
  EXPECT_NE(refusal("").find("it has CameraProgram, MaterialProgram"), std::string::npos);
}

TEST(vrtkCatalogue, QuotesAnyNameOnOneLine) {
  EXPECT_NE(refusal("a\nb").find("\"a\\u000ab\""), std::string::npos);
  EXPECT_LT(refusal(std::string(100000, 'x').c_str()).size(), 500U);
  EXPECT_NE(refusal("Camera/\xFF").find("\xEF\xBF\xBD"), std::string::npos);
}

TEST(vrtkCatalogue, RefusesAnUnknownFormAndANullResult) {
  char* text = nullptr;
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkCatalogue(5, nullptr, &text, &error), VRTK_INVALID_ARGUMENT);
  const ToolkitError owner(error);
  EXPECT_STREQ(vrtkErrorMessage(error),
               "vrtkCatalogue: 5 is no form; use a constant VRTK_CATALOGUE_*");
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(vrtkCatalogue(VRTK_CATALOGUE_JSON, nullptr, nullptr, nullptr), VRTK_INVALID_ARGUMENT);
}

TEST(vrtkCatalogue, WritesTextInLinesOfATerminal) {
  const std::string text = inForm(VRTK_CATALOGUE_TEXT, "Camera/General");
  EXPECT_EQ(text.substr(0, text.find("  shutter_close")).find("\t"), std::string::npos);
  EXPECT_NE(text.find("    +0   near_distance  float  0.0  from 0.0; soft to 1.0  Near Distance\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("Near distance offset in meter."), std::string::npos);
  std::istringstream lines(inForm(VRTK_CATALOGUE_TEXT));
  for (std::string line; std::getline(lines, line);) EXPECT_LT(line.size(), 200U) << line;
}

// Compares a catalogue that was saved in other words.
ChangesHandle compare(std::string_view json) {
  vrtkCatalogueChanges* changes = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status = vrtkCatalogueCompare(json.data(), json.size(), &changes, &error);
  const ToolkitError owner(error);
  EXPECT_EQ(status, VRTK_OK) << (error != nullptr ? vrtkErrorMessage(error) : "");
  return ChangesHandle(changes);
}

std::string replaced(const std::string& text, const std::string& before, const std::string& now) {
  const std::size_t at = text.find(before);
  EXPECT_NE(at, std::string::npos) << before;
  std::string out = text;
  if (at != std::string::npos) out.replace(at, before.size(), now);
  return out;
}

// The changes, one a line: the code, ! for one that breaks, the address and the message.
std::string textOf(const vrtkCatalogueChanges* changes) {
  std::string text;
  for (std::uint64_t i = 0; i < vrtkCatalogueChangesCount(changes); ++i) {
    const vrtkCatalogueChange* const change = vrtkCatalogueChangesGet(changes, i);
    text += std::string(change->code) + (change->breaking ? "! " : " ") + change->address + ": " +
            change->message + "\n";
  }
  return text;
}

// The changes if a part of the saved catalogue had been another.
std::string changesIf(const std::string& now, const std::string& before) {
  return textOf(compare(replaced(savedJson(), now, before)).get());
}

TEST(vrtkCatalogueCompare, FindsNoChangeInTheCatalogueOfTheLibrary) {
  const ChangesHandle changes = compare(savedJson());
  EXPECT_EQ(vrtkCatalogueChangesCount(changes.get()), 0U) << textOf(changes.get());
  EXPECT_EQ(vrtkCatalogueChangesBreaking(changes.get()), 0U);
  EXPECT_EQ(vrtkCatalogueChangesGet(changes.get(), 0), nullptr);
}

TEST(vrtkCatalogueCompare, ComparesOnlyThePartThatWasSaved) {
  for (const char* const filter :
       {"Camera", "Camera/General", "scene", "scene/Raytracer", "Mesh"}) {
    const ChangesHandle changes = compare(inForm(VRTK_CATALOGUE_JSON, filter));
    EXPECT_EQ(textOf(changes.get()), "") << filter;
  }
  const std::string other = replaced(inForm(VRTK_CATALOGUE_JSON, "Camera/General"),
                                     "\"path\": \"near_distance\"", "\"path\": \"near\"");
  EXPECT_EQ(textOf(compare(other).get()),
            "FIELD_REMOVED! Camera/groups/General/near: the field is gone; it was \"float\" at 0\n"
            "FIELD_ADDED Camera/groups/General/near_distance: the field is new: \"float\" at 0\n");
}

TEST(vrtkCatalogueCompare, BreaksWhereANameIsGone) {
  EXPECT_EQ(changesIf("\"Mesh\": {", "\"Lattice\": {"),
            "CLASS_REMOVED! Lattice: the class is gone\nCLASS_ADDED Mesh: the class is new\n");
  EXPECT_EQ(changesIf("\"backplate\": { \"number\"", "\"plate\": { \"number\""),
            "SLOT_REMOVED! Camera/slots/plate: the slot is gone\n"
            "SLOT_ADDED Camera/slots/backplate: the slot is new\n");
  EXPECT_EQ(changesIf("\"Backplate\": {", "\"Plate\": {"),
            "GROUP_REMOVED! Camera/groups/Plate: the group is gone\n"
            "GROUP_ADDED Camera/groups/Backplate: the group is new\n");
  EXPECT_EQ(changesIf("\"path\": \"ray_epsilon\"", "\"path\": \"epsilon\""),
            "FIELD_REMOVED! scene/Raytracer/epsilon: the field is gone; it was \"float\" at 0\n"
            "FIELD_ADDED scene/Raytracer/ray_epsilon: the field is new: \"float\" at 0\n");
  EXPECT_EQ(
      changesIf("\"label\": \"FIT_SIZE\"", "\"label\": \"FIT\""),
      "CONSTRUCTOR_REMOVED! Camera/groups/Backplate/mode: the constructor \"FIT\" is gone; its "
      "code was 1\n"
      "CONSTRUCTOR_ADDED Camera/groups/Backplate/mode: the constructor \"FIT_SIZE\" is new; its "
      "code is 1\n");
}

TEST(vrtkCatalogueCompare, BreaksWhereAKindATypeOrALayoutIsAnother) {
  const std::string field = R"("path": "near_distance", "offset": 0, "size": 4, "kind": "scalar", )"
                            R"("type": "float")";
  const std::string start = R"("path": "near_distance", )";
  EXPECT_EQ(
      changesIf(field, start + R"("offset": 4, "size": 4, "kind": "scalar", "type": "float")"),
      "FIELD_OFFSET_CHANGED! Camera/groups/General/near_distance: offset 4 before, 0 now\n");
  EXPECT_EQ(changesIf(field, start + R"("offset": 0, "size": 4, "kind": "scalar", "type": "int")"),
            "FIELD_TYPE_CHANGED! Camera/groups/General/near_distance: \"int\" before, \"float\" "
            "now\n");
  EXPECT_EQ(
      changesIf(field, start + R"("offset": 0, "size": 8, "kind": "vector", "type": "float2")"),
      "FIELD_TYPE_CHANGED! Camera/groups/General/near_distance: \"float2\" before, \"float\" "
      "now\n");
  EXPECT_EQ(changesIf("\"sceneVersion\": 173", "\"sceneVersion\": 172"),
            "VERSION_CHANGED! : version 172 before, 173 now\n");
  EXPECT_EQ(
      changesIf(R"("backplate": { "number": 1, "kind": "optional")",
                R"("backplate": { "number": 1, "kind": "required")"),
      "SLOT_KIND_CHANGED! Camera/slots/backplate: kind \"required\" before, \"optional\" now\n");
  EXPECT_EQ(changesIf(R"("targets": ["Texture"])", R"("targets": ["Mesh"])"),
            "SLOT_TARGET_CHANGED! Camera/slots/backplate: [\"Mesh\"] before, [\"Texture\"] now\n");
  EXPECT_EQ(changesIf(R"("number": 3,
      "kind": "asset")",
                      R"("number": 2,
      "kind": "instance")"),
            "CLASS_NUMBER_CHANGED! Mesh: number 2 before, 3 now\n"
            "CLASS_KIND_CHANGED! Mesh: kind \"instance\" before, \"asset\" now\n");
  EXPECT_EQ(changesIf(R"("hasValue": true)", R"("hasValue": false)"),
            "CLASS_VALUE_CHANGED! Camera: its objects had no value\n");
  EXPECT_EQ(changesIf("\"groupsSize\": 208", "\"groupsSize\": 200"),
            "CLASS_SIZE_CHANGED! Camera: bytes of the groups: 200 before, 208 now\n");
  EXPECT_EQ(changesIf("\"offset\": 64,\n          \"size\": 20,\n          \"alignment\": 4",
                      "\"offset\": 60,\n          \"size\": 24,\n          \"alignment\": 8"),
            "GROUP_OFFSET_CHANGED! Camera/groups/General: offset 60 before, 64 now\n"
            "GROUP_SIZE_CHANGED! Camera/groups/General: size 24 before, 20 now\n"
            "GROUP_ALIGNMENT_CHANGED! Camera/groups/General: alignment 8 before, 4 now\n");
  EXPECT_EQ(
      changesIf(R"({ "code": 1, "label": "FIT_SIZE" }, { "code": 2, "label": "FIT_WIDTH" })",
                R"({ "code": 2, "label": "FIT_SIZE" }, { "code": 1, "label": "FIT_WIDTH" })"),
      "CONSTRUCTOR_CODE_CHANGED! Camera/groups/Backplate/mode: code of \"FIT_SIZE\": 2 before, "
      "1 now\n"
      "CONSTRUCTOR_CODE_CHANGED! Camera/groups/Backplate/mode: code of \"FIT_WIDTH\": 1 before, "
      "2 now\n");
  EXPECT_EQ(
      changesIf("\"type\": \"{ { float4 @default", "\"type\": \"{ { half4 @default").substr(0, 60),
      "GROUP_TYPE_CHANGED! Camera/groups/Transformation: \"{ { half4");
}

TEST(vrtkCatalogueCompare, BreaksWhereTheOrderOfFieldsIsAnother) {
  const std::string json = savedJson();
  const std::size_t red = json.find(R"({ "path": "red")");
  const std::size_t green = json.find(R"({ "path": "green")");
  const std::size_t blue = json.find(R"({ "path": "blue")");
  const std::string other = json.substr(0, red) + json.substr(green, blue - green) +
                            json.substr(red, green - red) + json.substr(blue);
  EXPECT_EQ(
      textOf(compare(other).get()),
      "FIELD_ORDER_CHANGED! Camera/groups/Background/green: place 1 among the fields before, 2 "
      "now\n"
      "FIELD_ORDER_CHANGED! Camera/groups/Background/red: place 2 among the fields before, 1 "
      "now\n");
}

TEST(vrtkCatalogueCompare, TellsAChangeInsideOfAStructOnceAndNotOfTheStruct) {
  EXPECT_EQ(
      changesIf(
          R"("path": "matrix/x", "offset": 0, "size": 16, "kind": "vector", "type": "float4")",
          R"("path": "matrix/x", "offset": 0, "size": 16, "kind": "vector", "type": "int4")"),
      "FIELD_TYPE_CHANGED! Camera/groups/Transformation/matrix/x: \"int4\" before, \"float4\" "
      "now\n");
  EXPECT_EQ(
      changesIf(R"("type": "{ float4 x; float4 y; float4 z; float4 w; }")",
                R"("type": "{ float4 x; float4 y; float4 z; }")"),
      "FIELD_TYPE_CHANGED! Camera/groups/Transformation/matrix: \"{ float4 x; float4 y; float4 "
      "z; }\" before, \"{ float4 x; float4 y; float4 z; float4 w; }\" now\n");
}

TEST(vrtkCatalogueCompare, DoesNotBreakForAdditionsAndWords) {
  const std::string json = savedJson();
  const std::size_t start = json.find(R"({ "path": "shutter_open")");
  const std::size_t end = json.find(R"({ "path": "shutter_close")");
  EXPECT_EQ(textOf(compare(json.substr(0, start) + json.substr(end)).get()),
            "FIELD_ADDED Camera/groups/General/shutter_open: the field is new: \"float\" at 4\n");
  EXPECT_EQ(changesIf(R"("label": "Near Distance")", R"("label": "Nearest")"),
            "LABEL_CHANGED Camera/groups/General/near_distance: label: \"Nearest\" before, \"Near "
            "Distance\" now\n");
  EXPECT_EQ(changesIf(R"("default": 0.0, "min": 0.0, "soft_max": 1.0, "label": "Near)",
                      R"("default": 0.5, "min": 0.25, "unit": "m", "label": "Near)"),
            "DEFAULT_CHANGED Camera/groups/General/near_distance: default: 0.5 before, 0.0 now\n"
            "LIMIT_CHANGED Camera/groups/General/near_distance: min: 0.25 before, 0.0 now\n"
            "LIMIT_CHANGED Camera/groups/General/near_distance: soft_max: none before, 1.0 now\n"
            "UNIT_CHANGED Camera/groups/General/near_distance: unit: \"m\" before, none now\n");
  EXPECT_EQ(changesIf(R"("description": "Near distance offset in meter.")", R"("flags": ["hide"])"),
            "DESCRIPTION_CHANGED Camera/groups/General/near_distance: description: none before, "
            "\"Near distance offset in meter.\" now\n"
            "METADATA_CHANGED Camera/groups/General/near_distance: flags: [\"hide\"] before, none "
            "now\n");
  EXPECT_EQ(
      changesIf(R"(, { "code": 4, "label": "MANUAL" })", ""),
      "CONSTRUCTOR_ADDED Camera/groups/Backplate/mode: the constructor \"MANUAL\" is new; its "
      "code is 4\n");
  EXPECT_EQ(
      changesIf(R"("label": "CLAMP", "name": "Clamp")", R"("label": "CLAMP", "name": "Hold")"),
      "LABEL_CHANGED Camera/groups/Backplate/image/wrapmode/u: name of \"CLAMP\": \"Hold\" "
      "before, \"Clamp\" now\n");
}

TEST(vrtkCatalogueCompare, FindsAClassOrAGroupGoneThatTheFilterNamed) {
  EXPECT_EQ(
      textOf(compare(R"({"format": "vornath-catalogue", "formatVersion": 1, "sceneVersion": 173,
      "filter": "Fog", "classes": {"Fog": {}}})")
                 .get()),
      "CLASS_REMOVED! Fog: the class is gone\n");
}

TEST(vrtkCatalogueChangesJson, WritesTheChangesAsADocument) {
  const ChangesHandle changes =
      compare(replaced(savedJson(), "\"path\": \"near_distance\"", "\"path\": \"n\\\"ear\""));
  EXPECT_EQ(vrtkCatalogueChangesBreaking(changes.get()), 1U);
  char* json = nullptr;
  EXPECT_EQ(vrtkCatalogueChangesJson(changes.get(), &json, nullptr), VRTK_OK);
  const ToolkitString owner(json);
  EXPECT_STREQ(json,
               "{\n  \"breaking\": 1,\n  \"changes\": [\n"
               "    { \"code\": \"FIELD_REMOVED\", \"breaking\": true, \"address\": "
               "\"Camera/groups/General/n\\\\\\\"ear\", \"message\": \"the field is gone; it was "
               "\\\"float\\\" at 0\" },\n"
               "    { \"code\": \"FIELD_ADDED\", \"breaking\": false, \"address\": "
               "\"Camera/groups/General/near_distance\", \"message\": \"the field is new: "
               "\\\"float\\\" at 0\" }\n  ]\n}\n");
  EXPECT_EQ(vrtkCatalogueChangesJson(nullptr, &json, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(vrtkCatalogueChangesJson(changes.get(), nullptr, nullptr), VRTK_INVALID_ARGUMENT);
}

std::string compareRefusal(std::string_view json) {
  vrtkCatalogueChanges* changes = nullptr;
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkCatalogueCompare(json.data(), json.size(), &changes, &error),
            VRTK_CATALOGUE_INVALID);
  const ToolkitError owner(error);
  EXPECT_EQ(changes, nullptr);
  vrtkCatalogueChangesDestroy(changes);
  return error != nullptr ? vrtkErrorMessage(error) : "";
}

TEST(vrtkCatalogueCompare, SaysWhatIsNoCatalogueAndWhere) {
  const std::string help = "; give a catalogue that was saved in the form of JSON";
  EXPECT_EQ(compareRefusal(""), "line 1, column 1: The document is empty" + help);
  EXPECT_EQ(compareRefusal("{\n  nothing"),
            "line 2, column 3: Missing a name for object member" + help);
  EXPECT_EQ(compareRefusal("[]"), "the text is not an object" + help);
  EXPECT_EQ(compareRefusal("{}"), "/format: a string was expected" + help);
  EXPECT_EQ(compareRefusal(R"({"format": "vornath-scene"})"),
            "/format: \"vornath-catalogue\" was expected" + help);
  EXPECT_EQ(compareRefusal(R"({"format": "vornath-catalogue", "formatVersion": 2})"),
            "/formatVersion: 1 was expected, and 2 was found" + help);
  EXPECT_EQ(compareRefusal(replaced(savedJson(), R"("path": "near_distance", "offset": 0)",
                                    R"("path": "near_distance", "offset": "0")")),
            "/classes/Camera/groups/General/fields/0/offset: a whole number was expected" + help);
  EXPECT_EQ(compareRefusal(
                replaced(savedJson(), R"("path": "shutter_open")", R"("path": "near_distance")")),
            "/classes/Camera/groups/General/fields/1: the field \"near_distance\" is listed twice" +
                help);
  EXPECT_EQ(
      compareRefusal(replaced(savedJson(), R"("label": "FIT_SIZE")", R"("label": "DISABLED")")),
      "/classes/Camera/groups/Backplate/fields/0/constructors/1: the constructor \"DISABLED\" "
      "is listed twice" +
          help);
  EXPECT_EQ(compareRefusal(std::string(1000000, '[')),
            "the text is nested deeper than a catalogue is" + help);
  EXPECT_EQ(compareRefusal("\xFF\xFE"), "line 1, column 1: Invalid value" + help);
  EXPECT_NE(compareRefusal("\"\xC3\x28\"").find("Invalid encoding in string"), std::string::npos);
}

TEST(vrtkCatalogueCompare, RefusesNull) {
  vrtkCatalogueChanges* changes = nullptr;
  EXPECT_EQ(vrtkCatalogueCompare(nullptr, 1, &changes, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(vrtkCatalogueCompare("{}", 2, nullptr, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(vrtkCatalogueCompare(nullptr, 0, &changes, nullptr), VRTK_CATALOGUE_INVALID);
  vrtkCatalogueChangesDestroy(nullptr);
}

// Any bytes give a list or an error, of one line each.
void expectAnAnswer(std::string_view json) {
  vrtkCatalogueChanges* changes = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status = vrtkCatalogueCompare(json.data(), json.size(), &changes, &error);
  const ChangesHandle owner(changes);
  const ToolkitError errorOwner(error);
  if (status != VRTK_OK) {
    ASSERT_EQ(status, VRTK_CATALOGUE_INVALID);
    const std::string message = vrtkErrorMessage(error);
    EXPECT_EQ(message.find('\n'), std::string::npos);
    EXPECT_LT(message.size(), 1000U);
    return;
  }
  for (std::uint64_t i = 0; i < vrtkCatalogueChangesCount(changes); ++i) {
    const vrtkCatalogueChange* const change = vrtkCatalogueChangesGet(changes, i);
    const std::string words = std::string(change->address) + change->message;
    EXPECT_EQ(words.find('\n'), std::string::npos);
    EXPECT_LT(words.size(), 2000U);
  }
}

TEST(vrtkCatalogueCompare, AnswersForATextThatEndsAnywhere) {
  const std::string json = inForm(VRTK_CATALOGUE_JSON, "Camera/Backplate");
  for (std::size_t size = 0; size < json.size(); size += 41) {
    expectAnAnswer(std::string_view(json).substr(0, size));
  }
}

TEST(vrtkCatalogueCompare, AnswersForATextWithAnyPartOfItReplaced) {
  const std::string json = inForm(VRTK_CATALOGUE_JSON, "Camera/Backplate");
  for (const std::string_view part :
       {"null", "{}", "-1", "\"\\u0000\\n\"", "18446744073709551616"}) {
    // Each value in turn.
    for (std::size_t at = json.find(": "); at != std::string::npos; at = json.find(": ", at + 2)) {
      const std::size_t start = at + 2;
      if (json[start] == '{' || json[start] == '[') continue;
      std::size_t end = start;
      bool quoted = false;
      while (end < json.size() &&
             (quoted || (json[end] != ',' && json[end] != '\n' && json[end] != ' '))) {
        if (json[end] == '"' && json[end - 1] != '\\') quoted = !quoted;
        ++end;
      }
      expectAnAnswer(json.substr(0, start) + std::string(part) + json.substr(end));
    }
  }
  for (std::size_t at = 0; at < json.size(); at += 17) {
    std::string other = json;
    other[at] = static_cast<char>(other[at] ^ (1 << (at % 8)));
    expectAnAnswer(other);
  }
}

}  // namespace
}  // namespace vornath_test
