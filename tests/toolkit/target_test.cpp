// Files that are written whole or not at all, on file systems without files that have no name.
#include "file/target.hpp"

#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

using vrtk::TargetFile;

std::size_t filesIn(const std::filesystem::path& folder) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    static_cast<void>(entry);
    ++count;
  }
  return count;
}

TEST(TargetFile, HasANameBesideTheTargetWhereItMust) {
  const TemporaryFolder folder;
  writeFile(folder.file("file"), "old");
  ASSERT_EQ(chmod(folder.file("file").c_str(), 0640), 0);
  {
    TargetFile target(folder.file("file"), TargetFile::Name::Always);
    EXPECT_EQ(filesIn(folder.path()), 2U);
    target.write([](std::ostream& stream) { stream << "new"; });
    EXPECT_EQ(readFile(folder.file("file")), "old");
    target.commit(true);
  }
  EXPECT_EQ(readFile(folder.file("file")), "new");
  EXPECT_EQ(filesIn(folder.path()), 1U);
  struct stat found {};
  ASSERT_EQ(stat(folder.file("file").c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 07777U, 0640U);
}

TEST(TargetFile, LeavesNothingIfItIsNotCommitted) {
  for (const auto name : {TargetFile::Name::Always, TargetFile::Name::NoneIfPossible}) {
    const TemporaryFolder folder;
    writeFile(folder.file("file"), "old");
    {
      TargetFile target(folder.file("file"), name);
      EXPECT_THROW(target.write([](std::ostream& stream) {
        stream << "half";
        throw std::runtime_error("it failed");
      }),
                   std::runtime_error);
    }
    EXPECT_EQ(readFile(folder.file("file")), "old");
    EXPECT_EQ(filesIn(folder.path()), 1U);
  }
}

TEST(TargetFile, TakesThePlaceOfAFileThatCameMeanwhile) {
  const TemporaryFolder folder;
  TargetFile target(folder.file("file"));
  target.write([](std::ostream& stream) { stream << "new"; });
  writeFile(folder.file("file"), "came meanwhile");
  target.commit(true);
  EXPECT_EQ(readFile(folder.file("file")), "new");
  EXPECT_EQ(filesIn(folder.path()), 1U);
}

}  // namespace
}  // namespace vornath_test
