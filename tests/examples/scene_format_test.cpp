// docs/scene_format.md and the words of the fuzzers against the files that the library writes: a
// change of the format is told here for every place in them that it makes wrong.
#include <array>
#include <cstring>
#include <optional>
#include <sstream>
#include <type_traits>

#include "../support/flat_handles.hpp"
#include "process.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"

namespace vornath_test {
namespace {

namespace fs = std::filesystem;
using vrnt::data::ClassInfo;
using vrnt::data::ObjectKind;
using vrnt::data::Scene;
using vrnt::data::SceneData;

const fs::path kSource = SOURCE_FOLDER;
const std::string kDocument = readFile(kSource / "docs/scene_format.md");

std::string written(const Scene& scene) {
  std::ostringstream stream;
  Scene::serialize(scene, stream);
  return stream.str();
}

std::uint32_t writtenVersion() {
  std::uint32_t version = 0;
  std::memcpy(&version, written(Scene()).data() + 8, sizeof version);
  return version;
}

// The cells of the rows of the table that begins with this row.
std::vector<std::vector<std::string>> table(const std::string& title) {
  std::vector<std::vector<std::string>> rows;
  const std::size_t begin = kDocument.find("\n" + title + "\n");
  EXPECT_NE(begin, std::string::npos) << title;
  if (begin == std::string::npos) return rows;
  std::istringstream lines(kDocument.substr(begin + 1));
  std::string line;
  std::getline(lines, line);
  std::getline(lines, line);
  while (std::getline(lines, line) && line.rfind('|', 0) == 0) {
    rows.emplace_back();
    for (std::size_t at = 1; at < line.size();) {
      const std::size_t end = line.find('|', at);
      std::string cell = line.substr(at, end - at);
      cell.erase(0, cell.find_first_not_of(' ') == std::string::npos ? cell.size()
                                                                     : cell.find_first_not_of(' '));
      cell.erase(cell.find_last_not_of(' ') + 1);
      rows.back().push_back(cell);
      at = end + 1;
    }
  }
  return rows;
}

using Rows = std::vector<std::vector<std::string>>;

TEST(SceneFormatDocument, NamesTheVersionThatIsWritten) {
  const std::string version = std::to_string(writtenVersion());
  const Rows rows = table("| Offset | Size | Content |");
  ASSERT_GT(rows.size(), 1U);
  EXPECT_EQ(rows[1], (std::vector<std::string>{"8", "4", "version, " + version}));
  EXPECT_NE(kDocument.find("the message names that version and " + version + "."),
            std::string::npos)
      << "\"## Reading\" names another version than " << version;
  const std::vector<std::string> dump = between(kDocument, "    00008  ", "\n");
  ASSERT_EQ(dump.size(), 1U);
  EXPECT_EQ(dump[0].substr(dump[0].rfind(' ') + 1), version) << "in the example";
}

TEST(FileVersion, HasALineInItsHistory) {
  const std::string source = readFile(kSource / "src/scene/scene_file.cpp");
  EXPECT_NE(source.find("\n//   " + std::to_string(writtenVersion()) + "  "), std::string::npos)
      << "the history in src/scene/scene_file.cpp ends before version " << writtenVersion();
}

TEST(FileVersion, IsThatOfTheNewestChanges) {
  // The newest version of the library is the first section.
  const std::string changes = readFile(kSource / "CHANGELOG.md");
  const std::vector<std::string> versions = between(changes, "scene files of version ", ".");
  ASSERT_FALSE(versions.empty());
  EXPECT_EQ(versions[0], std::to_string(writtenVersion())) << "in CHANGELOG.md";
}

TEST(SceneFormatDocument, HasTheOffsetsAndSizesOfTheHeader) {
  Rows expected{{"0", "8", "\"VRNSCENE\""},
                {"8", "4", "version, " + std::to_string(writtenVersion())},
                {"12", "16", "the scene's id"}};
  constexpr std::size_t kHeader = 28;
  const SceneData data;
  std::size_t end = 0;
  vrnt::data::forEachGroup<SceneData>([&](const auto& group, auto) {
    using Record = typename std::decay_t<decltype(group)>::Record;
    const auto offset =
        static_cast<std::size_t>(reinterpret_cast<const char*>(&(data.*group.member)) -
                                 reinterpret_cast<const char*>(&data));
    if (offset != end) {
      expected.push_back({std::to_string(kHeader + end), std::to_string(offset - end), "zero"});
    }
    expected.push_back({std::to_string(kHeader + offset), std::to_string(sizeof(Record)),
                        '"' + std::string(group.name) + '"'});
    end = offset + sizeof(Record);
  });
  if (end != sizeof(SceneData)) {
    expected.push_back(
        {std::to_string(kHeader + end), std::to_string(sizeof(SceneData) - end), "zero"});
  }
  expected.push_back({std::to_string(kHeader + sizeof(SceneData)), "",
                      "the sections of the " + std::to_string(vrdmObjectTypeCount()) + " classes"});
  EXPECT_EQ(table("| Offset | Size | Content |"), expected);
}

// What the table says of an instance's record.
template <typename Desc>
std::string recordOf() {
  std::string words;
  const auto add = [&words](const std::string& part) {
    words += (words.empty() ? "" : "; ") + part;
  };
  std::size_t singles = 0;
  std::size_t lists = 0;
  vrnt::data::forEachSlot<Desc>([&](const auto& slot, auto) {
    const bool single = slot.kind == vrnt::data::ReferenceKind::Required ||
                        slot.kind == vrnt::data::ReferenceKind::Optional;
    ++(single ? singles : lists);
  });
  if (singles != 0) add(std::to_string(singles) + (singles == 1 ? " slot" : " slots"));
  for (std::size_t i = 0; i < lists; ++i) add("list");
  if constexpr (vrnt::data::kGroupCount<Desc> != 0) {
    add("groups " + std::to_string(sizeof(typename Desc::Groups)));
  }
  if (ClassInfo<Desc>::kHasValue) add("value");
  return words;
}

TEST(SceneFormatDocument, HasTheRecordOfEachClass) {
  Rows instances;
  std::size_t assets = 0;
  std::string programs;
  const Rows rows = table("| Class | Record of a live slot, in order |");
  vrnt::data::forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    const std::string name = '`' + std::string(ClassInfo<Desc>::kName) + '`';
    switch (ClassInfo<Desc>::kKind) {
      case ObjectKind::Program:
        programs += (programs.empty() ? "" : ", ") + name;
        break;
      case ObjectKind::Asset: {
        // "id 16; a, b, c: 4 each; bytes": as many words as the descriptor has.
        ASSERT_GT(rows.size(), 1 + assets);
        const auto& row = rows[1 + assets++];
        EXPECT_EQ(row[0], name);
        const std::size_t words =
            static_cast<std::size_t>(1 + std::count(row[1].begin(), row[1].end(), ','));
        const std::size_t each = std::stoul(row[1].substr(row[1].find(": ") + 2));
        EXPECT_EQ(words * each, sizeof(Desc)) << row[1];
        break;
      }
      case ObjectKind::Instance:
        if constexpr (ClassInfo<Desc>::kKind == ObjectKind::Instance) {
          instances.push_back({name, recordOf<Desc>()});
        }
        break;
    }
  });
  ASSERT_EQ(rows.size(), 1 + assets + instances.size());
  EXPECT_EQ(rows[0], (std::vector<std::string>{programs, "text"}));
  EXPECT_EQ(Rows(rows.begin() + 1 + static_cast<std::ptrdiff_t>(assets), rows.end()), instances);
}

std::optional<int> hexDigits(const std::string& text, std::size_t at, std::size_t count) {
  if (at + count > text.size()) return std::nullopt;
  int number = 0;
  for (std::size_t i = at; i < at + count; ++i) {
    if (std::isxdigit(static_cast<unsigned char>(text[i])) == 0) return std::nullopt;
    number = 16 * number + std::stoi(text.substr(i, 1), nullptr, 16);
  }
  return number;
}

struct DumpLine {
  std::size_t offset;
  std::string bytes;  // none for what is cut short
  std::string text;
};

std::vector<DumpLine> dumpLines() {
  std::vector<DumpLine> lines;
  std::istringstream document(kDocument.substr(kDocument.find("\n## An example\n")));
  for (std::string line; std::getline(document, line);) {
    const auto offset = hexDigits(line, 4, 5);
    if (line.rfind("    ", 0) != 0 || !offset || line.compare(9, 2, "  ") != 0) continue;
    DumpLine found{static_cast<std::size_t>(*offset), "", line};
    std::size_t at = 11;
    for (auto byte = hexDigits(line, at, 2); byte; byte = hexDigits(line, at, 2)) {
      found.bytes += static_cast<char>(*byte);
      at += 2;
      if (line.compare(at, 2, "  ") == 0) break;
      ++at;
    }
    if (line.compare(at, 3, "  (") == 0) {
      const std::string once = found.bytes;
      for (int times = std::stoi(line.substr(at + 3)); times > 1; --times) found.bytes += once;
    }
    lines.push_back(found);
  }
  return lines;
}

TEST(SceneFormatDocument, ShowsTheBytesOfItsExample) {
  std::array<std::uint8_t, 16> id{};
  for (std::uint8_t i = 0; i < 16; ++i) id[i] = i;
  Scene scene;
  std::memcpy(scene.id.begin(), id.data(), id.size());
  vrdmAddProgram(&scene, VRDM_CLASS_CAMERA_PROGRAM, "removed");
  vrdmAddProgram(&scene, VRDM_CLASS_CAMERA_PROGRAM, "abc");
  vrdmRemove(&scene, VRDM_CLASS_CAMERA_PROGRAM, 0);
  vrdmCreateInstance(&scene, VRDM_CLASS_LIGHT_GROUP);
  vrdmSetReferenceCount(&scene, VRDM_CLASS_LIGHT_GROUP, 0, 0, 2);
  std::int32_t* const emitters = vrdmModifyReferenceList(&scene, VRDM_CLASS_LIGHT_GROUP, 0, 0);
  emitters[0] = 3;
  emitters[1] = ~1;
  vrdmCreateInstance(&scene, VRDM_CLASS_MATERIAL);
  vrdmSetReference(&scene, VRDM_CLASS_MATERIAL, 0, 0, 0);
  const ValueHandle value = parseValue("{ a = 7; }");
  vrdmSetInstanceValue(&scene, VRDM_CLASS_MATERIAL, 0, value.get());
  std::string file = written(scene);

  const std::vector<DumpLine> lines = dumpLines();
  ASSERT_GT(lines.size(), 20U);
  std::size_t next = 0;
  for (const DumpLine& line : lines) {
    SCOPED_TRACE(line.text);
    ASSERT_EQ(line.offset, next) << "the line before ends elsewhere";
    if (line.bytes.empty()) {
      EXPECT_NE(line.text.find("  ...  "), std::string::npos);
      next = line.offset + sizeof(vrnt::data::CutPlanesData);
      continue;
    }
    next = line.offset + line.bytes.size();
    ASSERT_LE(next, file.size());
    // An address of the process that wrote the file.
    if (line.text.find("identity of the block") != std::string::npos) {
      EXPECT_EQ(line.bytes.size(), 8U);
      continue;
    }
    EXPECT_TRUE(file.compare(line.offset, line.bytes.size(), line.bytes) == 0)
        << "these aren't the bytes of the file";
  }
  EXPECT_EQ(next, file.size()) << "the last line";
  std::ostringstream size;
  size << "The file has 0x" << std::hex << file.size() << " bytes.";
  EXPECT_NE(kDocument.find(size.str()), std::string::npos) << size.str();
}

// The bytes of a word of a dictionary, between its quotes.
std::string unescaped(const std::string& word) {
  std::string bytes;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (word[i] != '\\') {
      bytes += word[i];
    } else if (word[i + 1] == 'x') {
      bytes += static_cast<char>(std::stoi(word.substr(i + 2, 2), nullptr, 16));
      i += 3;
    } else {
      bytes += word[++i];
    }
  }
  return bytes;
}

std::vector<std::string> wordsOf(const fs::path& dictionary) {
  std::vector<std::string> words;
  std::istringstream lines(readFile(dictionary));
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    const std::size_t begin = line.find('"');
    const std::size_t end = line.rfind('"');
    EXPECT_LT(begin, end) << dictionary << ": " << line;
    if (begin < end) words.push_back(unescaped(line.substr(begin + 1, end - begin - 1)));
  }
  return words;
}

TEST(FuzzDictionaries, BeginSceneFilesByTheVersionThatIsWritten) {
  const std::string header = written(Scene()).substr(0, 12);
  int headers = 0;
  for (const auto& entry : fs::directory_iterator(kSource / "fuzz")) {
    if (entry.path().extension() != ".dict") continue;
    for (const std::string& word : wordsOf(entry.path())) {
      if (word.compare(0, 8, "VRNSCENE") != 0) continue;
      EXPECT_EQ(word, header) << entry.path() << ": the version isn't " << writtenVersion()
                              << "; scripts/raise_corpus_version.py raises it";
      ++headers;
    }
  }
  EXPECT_EQ(headers, 1);
}

TEST(FuzzDictionaries, StateTheLengthsOfTypes) {
  // A word of a length in 64 bits and the text behind it.
  int types = 0;
  for (const std::string& word : wordsOf(kSource / "fuzz/scene_file.dict")) {
    if (word.size() <= 8 || word.compare(1, 7, std::string(7, '\0')) != 0) continue;
    EXPECT_EQ(static_cast<std::size_t>(word[0]), word.size() - 8) << word.substr(8);
    EXPECT_NE(parseType(word.substr(8)), nullptr) << word.substr(8);
    ++types;
  }
  EXPECT_GE(types, 5);
}

}  // namespace
}  // namespace vornath_test
