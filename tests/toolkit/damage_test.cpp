// Damaged files: each damage is reported, or does no harm.
#include <cstdlib>
#include <random>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kStep = 23;
#else
constexpr std::size_t kStep = 1;
#endif

// Takes all bytes and keeps none.
class NoBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
};

// If the bytes have no error, calls all that reads a scene. Returns whether they have none.
bool use(const std::string& bytes, bool thoroughly) {
  vrdmScene_t* opened = nullptr;
  vrtkError* error = nullptr;
  vrtkReport* report = nullptr;
  const std::uint32_t status =
      vrtkSceneOpenBytes(bytes.data(), bytes.size(), nullptr, &opened, &report, &error);
  const ToolkitError owner(error);
  const ReportHandle reportOwner(report);
  if (status != VRTK_OK) {
    EXPECT_TRUE(status == VRTK_FILE_DAMAGED || status == VRTK_FILE_NO_SCENE ||
                status == VRTK_FILE_VERSION)
        << vrtkErrorMessage(error);
    EXPECT_NE(vrtkReportErrorCount(report), 0U);
    return false;
  }
  const SceneHandle scene(opened);
  if (!thoroughly) return true;
  NoBuffer buffer;
  std::ostream stream(&buffer);
  try {
    stream << *scene;
  } catch (const vrnt::Exception&) {
    // An enum without a name has no text.
    EXPECT_NE(find(report, "ENUM_CODE_UNNAMED"), nullptr) << textOf(report);
  }
  const std::string saved = bytesOf(scene.get());
  const ReportHandle again = check(saved);
  EXPECT_TRUE(vrtkReportValid(again.get())) << textOf(again.get());
  vrnt::data::Scene other(vrnt::UniqueId::null());
  other.import(*scene);
  const ReportHandle validated = validate(scene.get());
  EXPECT_TRUE(vrtkReportValid(validated.get())) << textOf(validated.get());
  return true;
}

class DamagedFiles : public testing::Test {
 protected:
  // The Cornell box, if the examples are built, and a scene of all classes.
  static std::vector<std::string> files() {
    std::vector<std::string> files{bytesOf(sceneOfAllClasses().get())};
#ifdef BUILD_SCENE
    const TemporaryFolder folder;
    const std::string path = folder.file("box.vrnscene");
    const std::string command = std::string(BUILD_SCENE) + " " + path + " >" + folder.file("out");
    EXPECT_EQ(std::system(command.c_str()), 0);
    files.push_back(readFile(path));
#endif
    return files;
  }
};

TEST_F(DamagedFiles, AreReportedIfTheyAreCut) {
  for (const std::string& bytes : files()) {
    ASSERT_TRUE(use(bytes, true));
    for (std::size_t length = 0; length < bytes.size(); length += kStep) {
      EXPECT_FALSE(use(bytes.substr(0, length), false)) << length;
    }
  }
}

TEST_F(DamagedFiles, AreReportedOrDoNoHarmIfOneByteIsWrong) {
  std::size_t reported = 0;
  std::size_t harmless = 0;
  for (const std::string& bytes : files()) {
    for (std::size_t i = 0; i < bytes.size(); i += kStep) {
      // One bit, another one for the next byte, or all bits.
      const unsigned change = i % 9 == 8 ? 0xFFU : 1U << i % 9;
      std::string damaged = bytes;
      damaged[i] = static_cast<char>(static_cast<unsigned char>(damaged[i]) ^ change);
      ++(use(damaged, i % 4 == 0) ? harmless : reported);
    }
  }
  EXPECT_GT(reported, 0U);
  EXPECT_GT(harmless, 0U);
}

TEST_F(DamagedFiles, AreReportedOrDoNoHarmIfAWordIsWrong) {
  std::mt19937 random(1);
  for (const std::string& bytes : files()) {
    for (const std::uint32_t word : {0xFFFFFFFFU, 0x7FFFFFFFU, 0x10000U}) {
      for (std::size_t i = random() % 4; i + 4 <= bytes.size(); i += 4 * kStep) {
        std::string damaged = bytes;
        put(damaged, i, word);
        use(damaged, i % 32 == 0);
      }
    }
  }
}

TEST_F(DamagedFiles, AreReportedOrDoNoHarmIfBytesAreGoneOrNew) {
  std::mt19937 random(2);
  for (const std::string& bytes : files()) {
    for (std::size_t i = 0; i < 3000; i += kStep) {
      std::string damaged = bytes;
      const std::size_t at = random() % damaged.size();
      const std::size_t count = random() % 16 + 1;
      if (random() % 2 == 0) {
        damaged.erase(at, count);
      } else {
        damaged.insert(at, damaged.substr(random() % damaged.size(), count));
      }
      use(damaged, i % 4 == 0);
    }
  }
}

}  // namespace
}  // namespace vornath_test
