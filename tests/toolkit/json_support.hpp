// Scenes as JSON for the tests.
#ifndef VORNATH_TESTS_TOOLKIT_JSON_SUPPORT_HPP
#define VORNATH_TESTS_TOOLKIT_JSON_SUPPORT_HPP

#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/value_stream.hpp"
#include "toolkit/support.hpp"

namespace vornath_test {

struct JsonReportDeleter {
  void operator()(vrtkJsonReport* report) const { vrtkJsonReportDestroy(report); }
};
using JsonReportHandle = std::unique_ptr<vrtkJsonReport, JsonReportDeleter>;

// The document of a scene, with the bytes of its assets in it.
inline std::string jsonOf(const vrdmScene_t* scene, bool full = false) {
  vrtkExportOptions options = VRTK_EXPORT_OPTIONS_INIT;
  options.full = full ? 1 : 0;
  options.inlineAssets = 1;
  char* json = nullptr;
  std::uint64_t size = 0;
  vrtkError* error = nullptr;
  const std::uint32_t status = vrtkSceneExportString(scene, &options, &json, &size, &error);
  const ToolkitError owner(error);
  EXPECT_EQ(status, VRTK_OK) << (error != nullptr ? vrtkErrorMessage(error) : "");
  if (json == nullptr) return "";
  std::string text(json, size);
  EXPECT_EQ(std::strlen(json), size);
  vrtkStringDestroy(json);
  return text;
}

struct Built {
  SceneHandle scene;
  JsonReportHandle report;
  std::uint32_t status;
  std::string message;
};

inline Built tryBuild(std::string_view json, const vrtkBuildOptions* options = nullptr) {
  vrdmScene_t* scene = nullptr;
  vrtkJsonReport* report = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status =
      vrtkSceneBuild(json.data(), json.size(), options, &scene, &report, &error);
  const ToolkitError owner(error);
  EXPECT_EQ(scene != nullptr, status == VRTK_OK);
  EXPECT_EQ(report != nullptr, status == VRTK_JSON_INVALID);
  EXPECT_EQ(error != nullptr, status != VRTK_OK);
  return {SceneHandle(scene), JsonReportHandle(report), status,
          error != nullptr ? vrtkErrorMessage(error) : ""};
}

inline SceneHandle build(std::string_view json) {
  Built built = tryBuild(json);
  EXPECT_EQ(built.status, VRTK_OK) << built.message << "\n" << json.substr(0, 2000);
  return std::move(built.scene);
}

// A document with members beside the two that must be there.
// Where each value of a document begins and ends, keys aside. The document must be right.
inline std::vector<std::pair<std::size_t, std::size_t>> valuesIn(const std::string& json) {
  std::vector<std::pair<std::size_t, std::size_t>> values;
  std::vector<std::size_t> open;
  for (std::size_t at = 0; at < json.size(); ++at) {
    const std::size_t begin = at;
    if (json[at] == '{' || json[at] == '[') {
      open.push_back(at);
    } else if (json[at] == '}' || json[at] == ']') {
      values.emplace_back(open.back(), at + 1);
      open.pop_back();
    } else if (json[at] == '"') {
      while (json[++at] != '"') at += json[at] == '\\' ? 1 : 0;
      const std::size_t next = json.find_first_not_of(" \n", at + 1);
      if (next == std::string::npos || json[next] != ':') values.emplace_back(begin, at + 1);
    } else if (std::string_view(" \n,:").find(json[at]) == std::string_view::npos) {
      at = std::min(json.find_first_of(" \n,]}", at), json.size()) - 1;
      values.emplace_back(begin, at + 1);
    }
  }
  return values;
}

// A value of each kind, empty and not.
constexpr const char* kValuesOfEachKind[] = {
    "null", "true", "7", "-1.5", "\"\"", "\"x\"", "{}", "[]", "[ 1, 2 ]", "{ \"x\": 1 }", "[ [] ]"};

inline std::string documentWith(const std::string& members) {
  return R"({ "format": "vornath-scene", "formatVersion": 1)" +
         (members.empty() ? std::string() : ",\n" + members) + " }";
}

inline std::string textOf(const vrtkJsonReport* report) {
  std::ostringstream text;
  for (std::uint64_t i = 0; i < vrtkJsonReportCount(report); ++i) {
    const vrtkJsonMessage* const message = vrtkJsonReportMessage(report, i);
    text << message->code << " " << message->line << ":" << message->column << " "
         << message->pointer << ": " << message->message << "\n";
  }
  return text.str();
}

// A value's stream with numbers in place of the identities of its blocks.
inline std::string contentOf(const vrntValue_t* value) {
  Stream stream;
  vrntValuesError_t* error = nullptr;
  vrntValueSerialize(value, Stream::write, &stream, &error);
  EXPECT_EQ(error, nullptr);
  struct Record {
    std::string type;
    std::uint64_t id;
    std::string data;
  };
  std::vector<Record> records;
  std::map<std::uint64_t, std::uint64_t> numbers;
  const auto take = [&stream](std::size_t size) {
    const std::string bytes = stream.bytes.substr(stream.position, size);
    stream.position += size;
    return bytes;
  };
  while (stream.position < stream.bytes.size()) {
    Record record;
    record.type = take(numberAt<std::uint64_t>(take(8), 0));
    record.id = numberAt<std::uint64_t>(take(8), 0);
    record.data = take(vrntTypeSize(parseType(record.type).get()));
    numbers.emplace(record.id, numbers.size() + 1);
    records.push_back(std::move(record));
  }
  std::string content;
  for (Record& record : records) {
    for (std::size_t at = 0; at + 8 <= record.data.size(); at += 8) {
      const auto known = numbers.find(numberAt<std::uint64_t>(record.data, at));
      if (known != numbers.end()) put(record.data, at, known->second << 1U);
    }
    content += record.type + "#" + std::to_string(numbers[record.id]) + record.data;
  }
  return content;
}

// All that a file of a scene has, but for the identities of blocks.
inline std::string contentOf(const vrdmScene_t* scene) {
  std::istringstream stream(bytesOf(scene));
  vrnt::data::Scene copy =
      std::move(vrnt::data::Scene::deserialize(stream, vrnt::UniqueId::null())).value();
  std::string content;
  static const ValueHandle empty = parseValue("{ }");  // of one identity
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    for (std::uint32_t i = 0; vrdmHasValue(c) && i < vrdmContainerSize(scene, c); ++i) {
      const auto index = static_cast<std::int32_t>(i);
      if (!vrdmValid(scene, c, index)) continue;
      const ValueHandle value(vrdmGetInstanceValue(scene, c, index));
      content += contentOf(value.get());
      vrdmSetInstanceValue(&copy, c, index, empty.get());
    }
  }
  return content + bytesOf(&copy);
}

// Exports, builds, and expects the same scene.
inline void expectRoundTrip(const vrdmScene_t* scene) {
  for (const bool full : {false, true}) {
    const std::string json = jsonOf(scene, full);
    const SceneHandle built = build(json);
    ASSERT_NE(built, nullptr);
    EXPECT_EQ(jsonOf(built.get(), full), json);
    EXPECT_TRUE(contentOf(built.get()) == contentOf(scene)) << json.substr(0, 4000);
    for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
      EXPECT_EQ(vrdmContainerSize(built.get(), c), vrdmContainerSize(scene, c));
    }
  }
}

// Gives an object's group other bytes at one place.
template <typename T>
void setField(vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index,
              std::uint32_t group, std::uint64_t offset, T number) {
  vrntValue_t* value = vrdmGetDataValue(scene, objectClass, index, group);
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(&value, offset, &number, sizeof(number), &error);
  EXPECT_EQ(error, nullptr);
  EXPECT_TRUE(vrdmSetDataValue(scene, objectClass, index, group, value));
  vrntValueDestroy(value);
}

// A scene with one object of a class.
inline SceneHandle sceneWith(std::uint32_t objectClass, const char* value = nullptr) {
  SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), objectClass);
  if (value != nullptr) {
    vrdmSetInstanceValue(scene.get(), objectClass, 0, parseValue(value).get());
  }
  return scene;
}

}  // namespace vornath_test

#endif
