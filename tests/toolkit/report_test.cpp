// Reports: what they keep, their JSON, and the list of codes.
#include <set>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

// A file with as many bad flags and bad numbers as asked for.
std::string damagedFile(int flags, int numbers) {
  const SceneHandle scene(vrdmCreateScene());
  for (int i = 0; i < flags; ++i) {
    vrdmAddProgram(scene.get(), VRDM_CLASS_LIGHT_PROGRAM, "");
  }
  for (int i = 0; i < flags; ++i) vrdmRemove(scene.get(), VRDM_CLASS_LIGHT_PROGRAM, i);
  for (int i = 0; i < numbers; ++i) vrdmAddProgram(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, "");
  std::string bytes = bytesOf(scene.get());
  for (int i = 0; i < flags; ++i) {
    bytes[bytes.size() - 15 * 4 - 1 - static_cast<std::size_t>(i)] = '\x7F';
  }
  return bytes;
}

TEST(vrtkReportMessage, KeepsAsManyMessagesAsAskedForAndCountsAll) {
  vrtkLimits limits = VRTK_LIMITS_INIT;
  limits.maxMessages = 3;
  const ReportHandle report = check(damagedFile(0, 10), &limits);
  EXPECT_EQ(vrtkReportWarningCount(report.get()), 10U);
  EXPECT_EQ(vrtkReportMessageCount(report.get()), 3U);
  EXPECT_TRUE(vrtkReportTruncated(report.get()));
  EXPECT_STREQ(vrtkReportMessage(report.get(), 2)->address, "CameraProgram/2/text");
  EXPECT_EQ(vrtkReportMessage(report.get(), 3), nullptr);
  EXPECT_FALSE(vrtkReportTruncated(check(damagedFile(0, 10)).get()));
}

TEST(vrtkReportMessage, KeepsErrorsBeforeWarnings) {
  vrtkLimits limits = VRTK_LIMITS_INIT;
  limits.maxMessages = 4;
  const ReportHandle report = check(damagedFile(3, 10), &limits);
  EXPECT_EQ(vrtkReportErrorCount(report.get()), 3U);
  EXPECT_EQ(vrtkReportWarningCount(report.get()), 10U);
  ASSERT_EQ(vrtkReportMessageCount(report.get()), 4U);
  EXPECT_EQ(vrtkReportMessage(report.get(), 0)->severity, VRTK_WARNING);
  for (std::uint64_t i = 1; i < 4; ++i) {
    EXPECT_EQ(vrtkReportMessage(report.get(), i)->severity, VRTK_ERROR);
    EXPECT_STREQ(vrtkReportMessage(report.get(), i)->code, "FLAG_INVALID");
  }
}

TEST(vrtkReportMessage, KeepsNoneIfNoneAreAskedFor) {
  vrtkLimits limits = VRTK_LIMITS_INIT;
  limits.maxMessages = 0;
  const ReportHandle report = check(damagedFile(3, 10), &limits);
  EXPECT_EQ(vrtkReportMessageCount(report.get()), 0U);
  EXPECT_EQ(vrtkReportErrorCount(report.get()), 3U);
  EXPECT_TRUE(vrtkReportTruncated(report.get()));
  EXPECT_FALSE(vrtkReportValid(report.get()));
}

TEST(vrtkReportInfo, TellsWhatWasReadUpToAnError) {
  const SceneHandle scene = sceneOfAllClasses();
  const std::string bytes = bytesOf(scene.get());
  const ReportHandle report = check(std::string_view(bytes).substr(0, bytes.size() - 3));
  const vrtkInfo* const info = vrtkReportInfo(report.get());
  EXPECT_EQ(std::memcmp(info->id, scene->id.begin(), 16), 0);
  EXPECT_EQ(info->size, bytes.size() - 3);
  EXPECT_EQ(vrtkReportClass(report.get(), VRDM_CLASS_SHAPE).live, 1U);
  EXPECT_EQ(vrtkReportClass(report.get(), 18).slots, 0U);
  EXPECT_GT(info->openMemory, bytes.size());
}

TEST(vrtkReportInfo, CountsTheBytesOfAssetsAndValues) {
  const SceneHandle scene(vrdmCreateScene());
  addBytes(scene.get(), VRDM_CLASS_TEXTURE, "twelve bytes");
  addBytes(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, "seven b");
  vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_CAMERA, 0,
                       parseValue("{ p = &[ 1, 2, 3 ]; }").get());
  const ReportHandle report = check(bytesOf(scene.get()));
  EXPECT_EQ(vrtkReportInfo(report.get())->assetBytes, 19U);
  EXPECT_EQ(vrtkReportInfo(report.get())->valueBytes, 20U);
  EXPECT_EQ(vrtkReportInfo(report.get())->valueBlocks, 2U);
}

std::string jsonOf(const vrtkReport* report) {
  char* json = nullptr;
  EXPECT_EQ(vrtkReportJson(report, &json, nullptr), VRTK_OK);
  std::string text = json;
  vrtkStringDestroy(json);
  return text;
}

TEST(vrtkReportJson, HasTheWholeReport) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmAddProgram(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, "");
  std::string bytes = bytesOf(scene.get());
  for (int i = 0; i < 16; ++i) bytes[12 + static_cast<std::size_t>(i)] = static_cast<char>(17 * i);
  const ReportHandle report = check(bytes);
  std::string expected = R"({
  "file": null,
  "size": 425,
  "valid": true,
  "issues": {
    "errors": 0,
    "warnings": 1,
    "truncated": false,
    "messages": [
      {"code": "PROGRAM_EMPTY", "severity": "warning", "offset": 353, "address": "CameraProgram/0/text", "message": "the program has no text; expected a source"}
    ]
  },
  "info": {
    "id": "00112233-4455-6677-8899-aabbccddeeff",
    "version": 173,
    "objects": {
)";
  for (std::uint32_t i = 0; i < 18; ++i) {
    expected += std::string("      \"") + vrdmObjectName(i) +
                "\": {\"slots\": " + (i == 0 ? "1" : "0") + ", \"live\": " + (i == 0 ? "1" : "0") +
                "}" + (i == 17 ? "\n" : ",\n");
  }
  expected += "    },\n    \"assetBytes\": 0,\n    \"valueBytes\": 0,\n    \"openMemory\": " +
              std::to_string(vrtkReportInfo(report.get())->openMemory) + "\n  }\n}\n";
  EXPECT_EQ(jsonOf(report.get()), expected);
}

TEST(vrtkReportJson, QuotesTheNameOfTheFile) {
  const TemporaryFolder folder;
  const std::string path = folder.file("a \"b\"\\\n\x01\xC3\xA4\xFF");
  writeFile(path, "no scene");
  vrtkReport* report = nullptr;
  ASSERT_EQ(vrtkCheckFile(path.c_str(), nullptr, &report, nullptr), VRTK_OK);
  const ReportHandle owner(report);
  const std::string json = jsonOf(report);
  EXPECT_NE(json.find("a \\\"b\\\"\\\\\\n\\u0001\xC3\xA4\xEF\xBF\xBD\",\n"), std::string::npos)
      << json;
  EXPECT_NE(json.find("\"valid\": false"), std::string::npos);
}

TEST(vrtkReportJson, HasNullForAMessageWithoutAnOffset) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmAddProgram(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, "");
  const ReportHandle report = validate(scene.get());
  EXPECT_NE(jsonOf(report.get()).find("\"offset\": null"), std::string::npos);
}

TEST(vrtkCheckCode, ListsEachCodeOnce) {
  std::set<std::string> codes;
  for (std::uint32_t i = 0; i < vrtkCheckCodeCount(); ++i) {
    EXPECT_TRUE(codes.insert(vrtkCheckCode(i)).second);
    EXPECT_LE(vrtkCheckCodeSeverity(i), VRTK_ERROR);
  }
  EXPECT_EQ(codes.count("FILE_TRUNCATED"), 1U);
  EXPECT_EQ(codes.count("SLOT_OUT_OF_RANGE"), 1U);
  EXPECT_EQ(vrtkCheckCode(vrtkCheckCodeCount()), nullptr);
}

TEST(vrtkCheckCode, EachCodeHasARowInTheDocumentWithItsSeverity) {
  const std::string document = readFile(SOURCE_FOLDER "/docs/scene_check.md");
  std::set<std::string> documented;
  std::istringstream lines(document);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("| `", 0) != 0) continue;
    const std::string code = line.substr(3, line.find('`', 3) - 3);
    EXPECT_TRUE(documented.insert(code).second) << code << " has two rows";
  }
  for (std::uint32_t i = 0; i < vrtkCheckCodeCount(); ++i) {
    const std::string code = vrtkCheckCode(i);
    EXPECT_EQ(documented.erase(code), 1U) << code << " has no row";
    const std::size_t at = document.find("| `" + code + "` |");
    const bool isError = at < document.find("## Warnings");
    EXPECT_EQ(isError, vrtkCheckCodeSeverity(i) == VRTK_ERROR) << code;
  }
  EXPECT_TRUE(documented.empty()) << *documented.begin() << " is not a code";
}

TEST(vrtkLimits, OfAnEarlierVersionKeepTheDefaultsOfWhatTheyLack) {
  vrtkLimits limits{offsetof(vrtkLimits, maxMessages), 1, 0};
  const ReportHandle report = check(damagedFile(0, 10), &limits);
  EXPECT_EQ(vrtkReportMessageCount(report.get()), 11U);
  EXPECT_NE(find(report.get(), "MEMORY_EXCEEDED"), nullptr);
}

}  // namespace
}  // namespace vornath_test
