// What comes back to the library after its static destructors, each in a process of its own:
// late_host.cpp.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// What the program printed, and the words of its ending if that wasn't a success.
std::string run(const std::string& command) {
  std::FILE* const output = popen((command + " 2>&1").c_str(), "r");
  if (output == nullptr) return "not started";
  std::string words;
  std::array<char, 256> line{};
  while (std::fgets(line.data(), line.size(), output) != nullptr) words += line.data();
  const int status = pclose(output);
  return status == 0 ? words : words + "ended with " + std::to_string(status);
}

std::string comeBack(const std::string& way, const std::string& held) {
  return run("\"" LATE_HOST "\" \"" VORNATH_DATA_LIBRARY "\" " + way + " " + held);
}

}  // namespace

TEST(vrntValuesShutdown, DoesNothingAfterTheStaticDestructors) {
  for (const char* const way : {"atexit", "destructor"}) {
    EXPECT_EQ(comeBack(way, "nothing"), "came back\n") << way;
  }
}

TEST(vrntValuesShutdown, AfterTheStaticDestructorsLeavesWhatIsHeldReadable) {
  // A type that is held when its factory ends is never freed: nothing is left that could unlink it.
  setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
  for (const char* const way : {"atexit", "destructor"}) {
    for (const char* const held : {"type", "value"}) {
      EXPECT_EQ(comeBack(way, held), "came back\n") << way << ' ' << held;
    }
  }
}
