// The documents are true: their examples behave as they say, and the tests that they name and the
// files that they link to exist.
#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>
#include <tuple>

#include "../support/flat_handles.hpp"
#include "process.hpp"

namespace vornath_test {
namespace {

namespace fs = std::filesystem;

const fs::path kSource = SOURCE_FOLDER;

// The texts in the fenced blocks of a kind; blank lines separate the texts of a block.
std::vector<std::string> examples(const std::string& document, const std::string& kind) {
  std::vector<std::string> texts;
  for (const std::string& block : blocksOf(document, kind)) {
    for (std::size_t at = 0; at < block.size();) {
      const std::size_t end = std::min(block.find("\n\n", at), block.size() - 1);
      texts.push_back(block.substr(at, end - at));
      at = end + 2;
    }
  }
  return texts;
}

// The first line, and the lines below it.
std::pair<std::string, std::string> split(const std::string& example) {
  const std::size_t end = example.find('\n');
  if (end == std::string::npos) return {example, "nothing is expected"};
  return {example.substr(0, end), example.substr(end + 1)};
}

const std::string kLanguage = readFile(kSource / "docs/type_language.md");

std::string print(const vrntValue_t* value) {
  const vrntValueView_t whole{vrntValueType(value), 0};
  vrntValuesError_t* error = nullptr;
  const StringHandle text(vrntValueString(value, &whole, 0, &error));
  const ErrorHandle owner(error);
  return text ? text.get() : vrntValuesErrorMessage(error);
}

TEST(TypeLanguageDocument, HasTypesThatParse) {
  const std::vector<std::string> texts = examples(kLanguage, "type");
  EXPECT_GE(texts.size(), 10U);
  for (const std::string& text : texts) EXPECT_NE(parseType(text), nullptr);
}

TEST(TypeLanguageDocument, HasValuesThatParse) {
  const std::vector<std::string> texts = examples(kLanguage, "value");
  EXPECT_GE(texts.size(), 4U);
  for (const std::string& text : texts) EXPECT_NE(parseValue(text), nullptr);
}

TEST(TypeLanguageDocument, ShowsHowTypesPrint) {
  const std::vector<std::string> pairs = examples(kLanguage, "canonical type");
  EXPECT_GE(pairs.size(), 3U);
  for (const std::string& pair : pairs) EXPECT_EQ(canonical(split(pair).first), split(pair).second);
}

TEST(TypeLanguageDocument, ShowsHowValuesPrint) {
  const std::vector<std::string> pairs = examples(kLanguage, "canonical value");
  EXPECT_GE(pairs.size(), 4U);
  for (const std::string& pair : pairs) {
    const ValueHandle value = parseValue(split(pair).first);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(print(value.get()), split(pair).second);
  }
}

TEST(TypeLanguageDocument, ShowsTheMessagesOfErrors) {
  const std::vector<std::string> types = examples(kLanguage, "error type");
  EXPECT_GE(types.size(), 6U);
  for (const std::string& example : types) {
    const auto failure = typeFailure(split(example).first);
    ASSERT_TRUE(failure.has_value()) << example;
    EXPECT_EQ(failure->message, split(example).second);
  }
  const std::vector<std::string> values = examples(kLanguage, "error value");
  EXPECT_GE(values.size(), 4U);
  for (const std::string& example : values) {
    const auto failure = valueFailure(split(example).first);
    ASSERT_TRUE(failure.has_value()) << example;
    EXPECT_EQ(failure->message, split(example).second);
  }
}

// Every text in backticks in the first column of the tables of types, values and literals.
TEST(TypeLanguageDocument, HasTablesOfTextsThatParse) {
  const auto rows = [](const std::string& heading) {
    const std::size_t begin = kLanguage.find("\n" + heading + "\n");
    EXPECT_NE(begin, std::string::npos) << heading;
    const std::size_t table = kLanguage.find("|---|", begin);
    const std::size_t first = kLanguage.find('\n', table) + 1;
    return kLanguage.substr(first, kLanguage.find("\n\n", first) - first);
  };
  const auto texts = [](const std::string& table, std::size_t firstCell, std::size_t lastCell) {
    std::vector<std::string> found;
    bool isCode = false;
    std::size_t cell = 0;
    for (std::size_t i = 0; i < table.size(); ++i) {
      const char c = table[i];
      if (c == '\n') cell = 0;
      if (c == '|' && !isCode) ++cell;
      if (c == '`') {
        isCode = !isCode;
        if (isCode) found.emplace_back();
        if (!isCode && (cell < firstCell || cell > lastCell)) found.pop_back();
      } else if (isCode && !(c == '\\' && table[i + 1] == '|')) {
        found.back() += c;
      }
    }
    return found;
  };
  std::size_t count = 0;
  for (const std::string& text : texts(rows("## Types"), 1, 1)) {
    EXPECT_NE(parseType(text), nullptr) << text;
    ++count;
  }
  for (const std::string& text : texts(rows("## Values"), 1, 1)) {
    EXPECT_NE(parseValue(text), nullptr) << text;
    ++count;
  }
  const std::vector<std::string> literals = texts(rows("### Literals"), 2, 3);
  for (const std::string& text : literals) {
    // An address stands behind a dollar sign only.
    EXPECT_NE(parseValue(text.size() == 18 ? "$" + text : text), nullptr) << text;
    ++count;
  }
  EXPECT_GT(count, 40U);
}

// The tests that the sources define, as `Suite.Case`.
std::set<std::string> testNames() {
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(kSource / "tests")) {
    if (entry.path().extension() != ".cpp") continue;
    const std::string text = readFile(entry.path());
    for (const char* const macro : {"\nTEST(", "\nTEST_F(", "\nTEST_P("}) {
      for (std::size_t at = text.find(macro); at != std::string::npos;
           at = text.find(macro, at + 1)) {
        const std::size_t begin = at + std::string(macro).size();
        std::string name = text.substr(begin, text.find(')', begin) - begin);
        name.erase(std::remove_if(name.begin(), name.end(),
                                  [](unsigned char c) { return std::isspace(c); }),
                   name.end());
        std::replace(name.begin(), name.end(), ',', '.');
        names.insert(name);
      }
    }
  }
  return names;
}

// Checks that each row of a document's tables names existing tests in its last cell. Returns the
// number of rows.
int rowsHeldByTests(const char* document) {
  const std::set<std::string> tests = testNames();
  EXPECT_GT(tests.size(), 500U);
  std::istringstream lines(readFile(kSource / "docs" / document));
  int rows = 0;
  for (std::string line; std::getline(lines, line);) {
    const bool isTitle = line.rfind("| What |", 0) == 0 || line.rfind("| Guarantee |", 0) == 0;
    if (line.rfind("| ", 0) != 0 || isTitle) continue;
    ++rows;
    const std::size_t cell = line.rfind(" | ");
    if (cell == std::string::npos) {
      ADD_FAILURE() << line;
      continue;
    }
    const std::vector<std::string> held = between(line.substr(cell), "`", "`");
    EXPECT_FALSE(held.empty()) << line;
    for (const std::string& name : held) EXPECT_EQ(tests.count(name), 1U) << name;
  }
  return rows;
}

class MemoryDocument : public ProcessTest {};

TEST_F(MemoryDocument, ShowsPartsOfTheProgramsThatAreBuilt) {
  const std::string document = readFile(kSource / "docs/memory.md");
  for (const auto& [language, file, count] :
       {std::tuple("c", "copy_on_write.c", 6U), std::tuple("cpp", "copy_on_write.cpp", 2U)}) {
    const std::string program = readFile(kSource / "examples/copy_on_write" / file);
    const std::vector<std::string> parts = blocksOf(document, language);
    EXPECT_EQ(parts.size(), count);
    for (const std::string& part : parts) {
      EXPECT_NE(program.find(part), std::string::npos) << file << " lacks\n" << part;
    }
  }
}

TEST_F(MemoryDocument, SaysWhichCallsCopy) {
  for (const char* const program : {COPY_ON_WRITE_C, COPY_ON_WRITE_CPP}) {
    const Outcome outcome = run(program, {});
    EXPECT_EQ(outcome.status, 0) << program;
    EXPECT_EQ(outcome.errors, "") << program;
  }
}

TEST(OdditiesDocument, NamesATestThatExistsForEachOddity) {
  EXPECT_GT(rowsHeldByTests("oddities.md"), 40);
}

TEST(GuaranteesDocument, NamesATestThatExistsForEachGuarantee) {
  EXPECT_GT(rowsHeldByTests("guarantees.md"), 15);
}

// Whether the name is that of a test that a CMakeLists.txt adds, such as `abi.exports`.
bool isTestOfTheBuild(const std::string& name) {
  const auto has = [](const char* list, const std::string& words) {
    return readFile(kSource / list).find(words) != std::string::npos;
  };
  const auto rest = [&name](const char* prefix) { return name.substr(std::string(prefix).size()); };
  if (name.rfind("abi.header.", 0) == 0)
    return fs::exists(kSource / "include" / rest("abi.header."));
  if (name.rfind("abi.", 0) == 0) {
    return has("tests/abi/CMakeLists.txt", "abi_test(" + rest("abi.") + " ");
  }
  if (name.rfind("fuzz.replay.", 0) == 0) {
    return has("fuzz/CMakeLists.txt", "vornath_fuzz_target(" + rest("fuzz.replay."));
  }
  if (name.rfind("python.", 0) == 0) {
    return fs::exists(kSource / "python/tests" / (rest("python.") + ".py"));
  }
  return has("examples/CMakeLists.txt", "add_test(NAME " + name + "\n");
}

// Checks that each row of the table below the heading names an existing file in its first cell, and
// existing tests in its last one. Returns the number of rows.
int rowsOfFiles(const std::string& document, const std::string& heading) {
  const std::set<std::string> tests = testNames();
  const std::size_t begin = document.find("\n" + heading + "\n");
  if (begin == std::string::npos) return 0;
  const std::size_t table = document.find("| File | What | ", begin);
  if (table == std::string::npos) return 0;
  std::istringstream lines(document.substr(table, document.find("\n\n", table) - table));
  int rows = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("| `", 0) != 0) continue;
    ++rows;
    const std::string file = between(line, "`", "`").at(0);
    EXPECT_TRUE(fs::exists(kSource / file)) << file;
    for (const std::string& name : between(line.substr(line.rfind(" | ")), "`", "`")) {
      EXPECT_TRUE(tests.count(name) == 1 || isTestOfTheBuild(name)) << name;
    }
  }
  return rows;
}

TEST(ContributingDocument, ListsFilesAndTestsThatExist) {
  const std::string document = readFile(kSource / "CONTRIBUTING.md");
  EXPECT_GE(rowsOfFiles(document, "## A new field of a group"), 5);
  EXPECT_GE(rowsOfFiles(document, "## A new class"), 7);
  EXPECT_GE(rowsOfFiles(document, "## A new flat function"), 5);
  // Files that are named elsewhere in the document exist, too.
  const std::vector<std::string> names = pathsIn(document);
  EXPECT_GT(names.size(), 30U);
  for (const std::string& name : names) EXPECT_TRUE(isThere(kSource, name)) << name;
}

TEST(Documents, LinkToFilesThatExist) {
  int count = 0;
  for (const auto& entry : fs::recursive_directory_iterator(kSource / "docs")) {
    if (entry.path().extension() != ".md") continue;
    for (const std::string& link : linksOf(readFile(entry.path()))) {
      EXPECT_TRUE(fs::exists(entry.path().parent_path() / link))
          << entry.path() << " links to " << link;
      ++count;
    }
  }
  EXPECT_GT(count, 0);
}

}  // namespace
}  // namespace vornath_test
