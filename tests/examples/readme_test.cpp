// README.md holds what is there: its hosts are those that are built, its options are those that
// there are, its paths exist.
#include <algorithm>
#include <set>
#include <sstream>

#include "process.hpp"
#include "vornath_data/version.h"

namespace vornath_test {
namespace {

namespace fs = std::filesystem;

const fs::path kSource = SOURCE_FOLDER;

class Readme : public ProcessTest {
 protected:
  const std::string text_ = readFile(kSource / "README.md");
};

TEST_F(Readme, ShowsTheHostsThatAreBuilt) {
  const std::vector<std::string> hosts = blocksOf(text_, "c");
  ASSERT_EQ(hosts.size(), 2U);
  EXPECT_EQ(hosts[0], readFile(kSource / "examples/minimal_host.c"));
  EXPECT_EQ(hosts[1], readFile(kSource / "examples/minimal_scene.c"));
}

TEST_F(Readme, ShowsTheOutputOfItsHosts) {
  const Outcome host = run(MINIMAL_HOST, {});
  EXPECT_EQ(host.status, 0);
  EXPECT_EQ(host.output, "{ gloss = 0.5; size = [ 0, 0, 0 ]; }\n");
  EXPECT_NE(text_.find("It prints `{ gloss = 0.5; size = [ 0, 0, 0 ]; }`."), std::string::npos);

  const Outcome scene = run(MINIMAL_SCENE, {});
  EXPECT_EQ(scene.status, 0);
  EXPECT_EQ(scene.output, "General: near_distance = 0.25\n");
  EXPECT_NE(text_.find("It prints `General: near_distance = 0.25`."), std::string::npos);
}

// The file that the scene's host leaves is one that another program reads.
TEST_F(Readme, WritesASceneThatTheOtherExamplesRead) {
  ASSERT_EQ(run(MINIMAL_SCENE, {}).status, 0);
  const Outcome shown = run(SHOW_SCENE, {"--changed", path("camera.vrnscene")});
  EXPECT_EQ(shown.status, 0);
  EXPECT_NE(shown.output.find("near_distance"), std::string::npos) << shown.output;
  EXPECT_NE(shown.output.find("focal_length"), std::string::npos) << shown.output;
}

// The options of CMakeLists.txt with their defaults are the rows of README.md's table.
TEST_F(Readme, HasATableOfAllOptions) {
  std::set<std::string> declared = {"BUILD_SHARED_LIBS ON"};
  std::istringstream lists(readFile(kSource / "CMakeLists.txt"));
  for (std::string line; std::getline(lists, line);) {
    if (line.rfind("set(VORNATH_DATA_SANITIZE \"\" CACHE", 0) == 0) {
      declared.insert("VORNATH_DATA_SANITIZE ");
    }
    // The programs that need packages of their own are built if these are found.
    if (const std::size_t end = line.find(" \"${renderer_default}\" CACHE"); end != line.npos) {
      declared.insert(line.substr(4, end - 4) + " AUTO ¹");
    }
    if (line.rfind("option(", 0) != 0) continue;
    const std::string name = line.substr(7, line.find(' ') - 7);
    std::string value = line.substr(line.rfind(' ') + 1);
    value.pop_back();
    declared.insert(name + " " + (value == "${PROJECT_IS_TOP_LEVEL}" ? "ON ¹" : value));
  }
  EXPECT_GT(declared.size(), 8U);

  std::set<std::string> told;
  const std::size_t table = text_.find("| Option |");
  ASSERT_NE(table, std::string::npos);
  std::istringstream rows(text_.substr(table, text_.find("\n\n", table) - table));
  for (std::string row; std::getline(rows, row);) {
    if (row.rfind("| `", 0) != 0) continue;
    const std::string name = between(row, "`", "`").at(0);
    const std::string rest = row.substr(row.find('|', 1) + 1);
    std::string kept = rest.substr(0, rest.find('|'));
    kept.erase(std::remove(kept.begin(), kept.end(), '`'), kept.end());
    const std::size_t first = kept.find_first_not_of(' ');
    const std::size_t last = kept.find_last_not_of(' ');
    told.insert(name + " " +
                (first == std::string::npos ? "" : kept.substr(first, last - first + 1)));
  }
  EXPECT_EQ(told, declared);
}

TEST_F(Readme, NamesPathsThatExist) {
  const std::vector<std::string> names = pathsIn(text_);
  EXPECT_GT(names.size(), 15U);
  for (const std::string& name : names) EXPECT_TRUE(isThere(kSource, name)) << name;
}

TEST(Changelog, NamesPathsThatExistAndTheVersionOfTheHeaders) {
  const std::string text = readFile(kSource / "CHANGELOG.md");
  const std::vector<std::string> names = pathsIn(text);
  EXPECT_GE(names.size(), 2U);
  for (const std::string& name : names) EXPECT_TRUE(isThere(kSource, name)) << name;
  // The first version that it tells of.
  const std::size_t heading = text.find("\n## ");
  ASSERT_NE(heading, std::string::npos);
  EXPECT_EQ(text.compare(heading + 4, std::string(VORNATH_DATA_VERSION_STRING).size() + 1,
                         VORNATH_DATA_VERSION_STRING " "),
            0);
}

}  // namespace
}  // namespace vornath_test
