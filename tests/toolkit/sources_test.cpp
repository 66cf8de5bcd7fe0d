// Files that are opened once and read through a window.
#include "file/sources.hpp"

#include <filesystem>
#include <random>

#include "foundation/failure.hpp"
#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

using vrtk::FileSource;
using vrtk::Window;

// The status of what a function throws.
template <typename Function>
std::uint32_t statusOf(Function&& function) {
  try {
    function();
    return VRTK_OK;
  } catch (const vrtk::Failure& failure) {
    return failure.status();
  }
}

TEST(FileSource, FailsIfTheFileIsCutMeanwhile) {
  const TemporaryFolder folder;
  writeFile(folder.file("file"), std::string(1000, 'x'));
  FileSource source(folder.file("file"));
  char bytes[100];
  EXPECT_EQ(statusOf([&] { source.read(900, bytes, 100); }), VRTK_OK);
  std::filesystem::resize_file(folder.file("file"), 950);
  EXPECT_EQ(statusOf([&] { source.read(900, bytes, 100); }), VRTK_FILE_CHANGED);
}

TEST(FileSource, FailsIfTheFileGrowsOrIsWrittenMeanwhile) {
  const TemporaryFolder folder;
  writeFile(folder.file("file"), std::string(1000, 'x'));
  char byte = 0;
  FileSource grown(folder.file("file"));
  std::filesystem::resize_file(folder.file("file"), 1100);
  EXPECT_EQ(statusOf([&] { grown.read(0, &byte, 1); }), VRTK_FILE_CHANGED);
  FileSource written(folder.file("file"));
  std::filesystem::last_write_time(
      folder.file("file"), std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  EXPECT_EQ(statusOf([&] { written.read(0, &byte, 1); }), VRTK_FILE_CHANGED);
}

TEST(FileSource, StaysWithItsFileIfAnotherTakesThePath) {
  const TemporaryFolder folder;
  writeFile(folder.file("file"), "first");
  FileSource source(folder.file("file"));
  writeFile(folder.file("other"), "other");
  std::filesystem::rename(folder.file("other"), folder.file("file"));
  char bytes[5];
  EXPECT_EQ(statusOf([&] { source.read(0, bytes, 5); }), VRTK_OK);
  EXPECT_EQ(std::string(bytes, 5), "first");
}

TEST(Window, GivesTheBytesOfTheFileInAnyOrder) {
  const TemporaryFolder folder;
  std::string bytes(3 * Window::kCapacity + 17, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 31 / 7);
  writeFile(folder.file("file"), bytes);
  FileSource source(folder.file("file"));
  Window window(source);
  Window small(source, 4096);
  std::mt19937 random(1);
  for (int i = 0; i < 2000; ++i) {
    const std::size_t offset = random() % bytes.size();
    const std::size_t size = std::min<std::size_t>(random() % 4096, bytes.size() - offset);
    ASSERT_EQ(std::string_view(window.at(offset, size), size),
              std::string_view(bytes).substr(offset, size));
    ASSERT_EQ(std::string_view(small.at(offset, size), size),
              std::string_view(bytes).substr(offset, size));
  }
  EXPECT_NE(window.at(bytes.size(), 0), nullptr);
}

TEST(SourceBuffer, GivesTheBytesToAStream) {
  std::string bytes(3 * Window::kCapacity + 17, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 13 / 5);
  vrtk::MemorySource source(bytes.data(), bytes.size());
  vrtk::SourceBuffer buffer(source);
  std::istream stream(&buffer);
  std::string read;
  for (std::size_t size = 1; stream; size = size * 3 % 2000003) {
    std::string piece(size, '\0');
    stream.read(piece.data(), static_cast<std::streamsize>(size));
    read.append(piece, 0, static_cast<std::size_t>(stream.gcount()));
  }
  EXPECT_TRUE(read == bytes);
}

}  // namespace
}  // namespace vornath_test
