// README.md holds what is there: its host is the one that is built, its paths exist.
#include "process.hpp"

namespace vornath_test {
namespace {

namespace fs = std::filesystem;

const fs::path kSource = SOURCE_FOLDER;

// The first fenced block of a language.
std::string block(const std::string& text, const std::string& language) {
  const std::string fence = "\n```" + language + "\n";
  const std::size_t begin = text.find(fence);
  if (begin == std::string::npos) return "there is no block of " + language;
  const std::size_t body = begin + fence.size();
  return text.substr(body, text.find("```\n", body) - body);
}

class Readme : public ProcessTest {
 protected:
  const std::string text_ = readFile(kSource / "README.md");
};

TEST_F(Readme, ShowsTheHostThatIsBuilt) {
  EXPECT_EQ(block(text_, "c"), readFile(kSource / "examples/minimal_host.c"));
}

TEST_F(Readme, TellsWhatItsHostPrints) {
  const Outcome host = run(MINIMAL_HOST, {});
  EXPECT_EQ(host.status, 0);
  EXPECT_EQ(host.output, "{ gloss = 0.5; size = [ 0, 0, 0 ]; }\n");
  EXPECT_NE(text_.find("`{ gloss = 0.5; size = [ 0, 0, 0 ]; }`"), std::string::npos);
}

// Every word in backticks with a slash in it, and every link. The blocks of code go first, since
// their fences are backticks too.
TEST_F(Readme, NamesPathsThatExist) {
  std::string prose = text_;
  for (std::size_t begin = prose.find("```"); begin != std::string::npos;
       begin = prose.find("```")) {
    const std::size_t end = prose.find("```", begin + 3);
    ASSERT_NE(end, std::string::npos);
    prose.erase(begin, end + 3 - begin);
  }
  std::vector<std::string> names = linksOf(prose);
  for (const std::string& name : between(prose, "`", "`")) {
    const bool isPath =
        name.find('/') != std::string::npos && name.find_first_of(" $(){};:") == std::string::npos;
    if (isPath) names.push_back(name);
  }
  EXPECT_GT(names.size(), 15U);
  for (const std::string& name : names) {
    EXPECT_TRUE(fs::exists(kSource / name) || fs::exists(kSource / "include" / name)) << name;
  }
}

}  // namespace
}  // namespace vornath_test
