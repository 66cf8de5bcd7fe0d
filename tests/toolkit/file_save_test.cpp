// Saving bytes: whole or not at all.
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

namespace fs = std::filesystem;

struct Saved {
  std::uint32_t status;
  std::string message;
};

Saved save(const std::string& bytes, const std::string& path) {
  vrtkError* error = nullptr;
  const std::uint32_t status =
      vrtkFileSave(bytes.data(), bytes.size(), path.c_str(), nullptr, &error);
  const ToolkitError owner(error);
  return {status, error != nullptr ? vrtkErrorMessage(error) : ""};
}

TEST(vrtkFileSave, WritesTheBytes) {
  const TemporaryFolder folder;
  const std::string bytes("a\0b\n", 4);
  const Saved saved = save(bytes, folder.file("out"));
  ASSERT_EQ(saved.status, VRTK_OK) << saved.message;
  EXPECT_EQ(readFile(folder.file("out")), bytes);
}

TEST(vrtkFileSave, WritesAnEmptyFileForNoBytes) {
  const TemporaryFolder folder;
  writeFile(folder.file("out"), "old");
  EXPECT_EQ(vrtkFileSave(nullptr, 0, folder.file("out").c_str(), nullptr, nullptr), VRTK_OK);
  EXPECT_EQ(readFile(folder.file("out")), "");
}

TEST(vrtkFileSave, KeepsThePermissionsOfATarget) {
  const TemporaryFolder folder;
  writeFile(folder.file("out"), "old");
  ASSERT_EQ(chmod(folder.file("out").c_str(), 0640), 0);
  EXPECT_EQ(save("new", folder.file("out")).status, VRTK_OK);
  struct stat found {};
  ASSERT_EQ(stat(folder.file("out").c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 07777U, 0640U);
}

TEST(vrtkFileSave, RefusesTargetsThatAreNoFiles) {
  const TemporaryFolder folder;
  EXPECT_EQ(save("new", folder.path()).status, VRTK_FILE_IS_FOLDER);
  EXPECT_EQ(save("new", "/dev/null").status, VRTK_FILE_NOT_REGULAR);
  EXPECT_EQ(save("new", folder.file("missing/out")).status, VRTK_SAVE_NO_FOLDER);
}

TEST(vrtkFileSave, LeavesTheOldFileIfThereIsNoSpace) {
  const TemporaryFolder folder;
  writeFile(folder.file("out"), "old");
  EXPECT_TRUE(inAProcess([&] {
    const rlimit limit{4096, 4096};
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(save(std::string(100000, 'x'), folder.file("out")).status, VRTK_SAVE_NO_SPACE);
  }));
  EXPECT_EQ(readFile(folder.file("out")), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1);
}

TEST(vrtkFileSave, RefusesNullArguments) {
  const TemporaryFolder folder;
  EXPECT_EQ(vrtkFileSave("a", 1, nullptr, nullptr, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(vrtkFileSave(nullptr, 1, folder.file("out").c_str(), nullptr, nullptr),
            VRTK_INVALID_ARGUMENT);
  EXPECT_FALSE(fs::exists(folder.file("out")));
}

}  // namespace
}  // namespace vornath_test
