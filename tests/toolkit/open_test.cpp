// Opening scenes from files and from memory.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

struct Opened {
  std::uint32_t status = 0;
  SceneHandle scene;
  ReportHandle report;
  std::string message;
};

Opened open(const std::string& path, const vrtkLimits* limits = nullptr) {
  vrdmScene_t* scene = nullptr;
  vrtkReport* report = nullptr;
  vrtkError* error = nullptr;
  Opened opened;
  opened.status = vrtkSceneOpen(path.c_str(), limits, &scene, &report, &error);
  const ToolkitError owner(error);
  opened.scene.reset(scene);
  opened.report.reset(report);
  if (error != nullptr) {
    opened.message = vrtkErrorMessage(error);
    EXPECT_EQ(vrtkErrorCode(error), opened.status);
  }
  EXPECT_EQ(opened.status == VRTK_OK, scene != nullptr);
  EXPECT_EQ(opened.status == VRTK_OK, error == nullptr);
  return opened;
}

TEST(vrtkSceneOpen, ReadsWhatTheLibraryWrote) {
  const TemporaryFolder folder;
  const SceneHandle scene = sceneOfAllClasses();
  vrdmSerialize(scene.get(), folder.file("scene").c_str());
  const Opened opened = open(folder.file("scene"));
  ASSERT_EQ(opened.status, VRTK_OK) << opened.message;
  EXPECT_TRUE(vrnt::data::Scene::equivalent(*scene, *opened.scene));
  EXPECT_TRUE(opened.scene->id == scene->id);
  EXPECT_TRUE(vrtkReportValid(opened.report.get()));
}

TEST(vrtkOpenFile, IsTheSame) {
  const TemporaryFolder folder;
  const SceneHandle scene = sceneOfAllClasses();
  vrdmSerialize(scene.get(), folder.file("scene").c_str());
  vrdmScene_t* opened = nullptr;
  ASSERT_EQ(vrtkOpenFile(folder.file("scene").c_str(), nullptr, &opened, nullptr, nullptr),
            VRTK_OK);
  const SceneHandle owner(opened);
  EXPECT_TRUE(vrnt::data::Scene::equivalent(*scene, *opened));
}

TEST(vrtkSceneOpen, ReadsAFileWithAnAssetThatIsLargerThanItsBuffers) {
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  std::string bytes(5000003, 'x');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 31 / 7);
  addBytes(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, bytes);
  addBytes(scene.get(), VRDM_CLASS_TEXTURE, "small");
  vrdmSerialize(scene.get(), folder.file("scene").c_str());
  const Opened opened = open(folder.file("scene"));
  ASSERT_EQ(opened.status, VRTK_OK) << opened.message;
  EXPECT_TRUE(vrnt::data::Scene::equivalent(*scene, *opened.scene));
}

TEST(vrtkSceneOpen, TellsAMissingFileFromOthers) {
  const TemporaryFolder folder;
  const Opened opened = open(folder.file("no"));
  EXPECT_EQ(opened.status, VRTK_FILE_MISSING);
  EXPECT_EQ(opened.message, folder.file("no") + ": there is no such file; check the path");
  EXPECT_EQ(opened.report, nullptr);
  EXPECT_EQ(open(folder.file("no/such")).status, VRTK_FILE_MISSING);
  writeFile(folder.file("file"), "x");
  EXPECT_EQ(open(folder.file("file/in it")).status, VRTK_FILE_MISSING);
}

TEST(vrtkSceneOpen, TellsAFolderAPipeAndADevice) {
  const TemporaryFolder folder;
  EXPECT_EQ(open(folder.path().string()).status, VRTK_FILE_IS_FOLDER);
  ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
  EXPECT_EQ(open(folder.file("pipe")).status, VRTK_FILE_NOT_REGULAR);
  EXPECT_EQ(open("/dev/null").status, VRTK_FILE_NOT_REGULAR);
  EXPECT_EQ(open("/dev/zero").status, VRTK_FILE_NOT_REGULAR);
}

TEST(vrtkSceneOpen, TellsAFileThatItMayNotRead) {
  const TemporaryFolder folder;
  writeFile(folder.file("file"), "x");
  ASSERT_EQ(chmod(folder.file("file").c_str(), 0), 0);
  EXPECT_TRUE(asAnOrdinaryUser(folder, [&] {
    const Opened opened = open(folder.file("file"));
    EXPECT_EQ(opened.status, VRTK_FILE_UNREADABLE);
    EXPECT_NE(opened.message.find("ask for permission to read it"), std::string::npos)
        << opened.message;
  }));
}

TEST(vrtkSceneOpen, TellsNoSceneAnotherVersionAndADamagedOne) {
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  std::string bytes = bytesOf(scene.get());
  const auto openBytes = [&] {
    writeFile(folder.file("file"), bytes);
    return open(folder.file("file"));
  };
  bytes += 'x';
  const Opened damaged = openBytes();
  EXPECT_EQ(damaged.status, VRTK_FILE_DAMAGED);
  EXPECT_EQ(damaged.message,
            folder.file("file") +
                ": it must not be read: FILE_TRAILING_BYTES at byte 420: 1 bytes follow the last "
                "section, where the file should end");
  ASSERT_NE(damaged.report, nullptr);
  EXPECT_FALSE(vrtkReportValid(damaged.report.get()));
  put<std::uint32_t>(bytes, 8, 1);
  EXPECT_EQ(openBytes().status, VRTK_FILE_VERSION);
  bytes = "This is no scene.";
  EXPECT_EQ(openBytes().status, VRTK_FILE_NO_SCENE);
  bytes = "";
  EXPECT_EQ(openBytes().status, VRTK_FILE_NO_SCENE);
}

TEST(vrtkSceneOpen, RefusesAFileThatTakesMoreMemoryThanAllowed) {
  const TemporaryFolder folder;
  const SceneHandle scene = sceneOfAllClasses();
  vrdmSerialize(scene.get(), folder.file("scene").c_str());
  vrtkLimits limits = VRTK_LIMITS_INIT;
  limits.maxMemory = 1000;
  const Opened refused = open(folder.file("scene"), &limits);
  EXPECT_EQ(refused.status, VRTK_FILE_TOO_LARGE);
  limits.maxMemory = vrtkReportInfo(refused.report.get())->openMemory;
  EXPECT_EQ(open(folder.file("scene"), &limits).status, VRTK_OK);
}

TEST(vrtkSceneOpen, ReadsTheFileThatItCheckedThoughAnotherTakesItsPlace) {
  // What is opened is opened once: a path that is replaced later no longer matters. The replacement
  // here comes before the call, through the name of an open file that has no other name any more.
  const TemporaryFolder folder;
  const SceneHandle scene = sceneOfAllClasses();
  vrdmSerialize(scene.get(), folder.file("scene").c_str());
  const int file = ::open(folder.file("scene").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  writeFile(folder.file("other"), "no scene");
  std::filesystem::rename(folder.file("other"), folder.file("scene"));
  const Opened opened = open("/proc/self/fd/" + std::to_string(file));
  EXPECT_EQ(opened.status, VRTK_OK) << opened.message;
  EXPECT_EQ(open(folder.file("scene")).status, VRTK_FILE_NO_SCENE);
  ::close(file);
}

TEST(vrtkSceneOpen, TellsTheFirstErrorAlthoughTheReportKeepsNoMessages) {
  const TemporaryFolder folder;
  writeFile(folder.file("file"), "no scene");
  vrtkLimits limits = VRTK_LIMITS_INIT;
  limits.maxMessages = 0;
  const Opened opened = open(folder.file("file"), &limits);
  EXPECT_EQ(opened.status, VRTK_FILE_NO_SCENE);
  EXPECT_NE(opened.message.find("FILE_HEADER at byte 0"), std::string::npos) << opened.message;
  EXPECT_EQ(vrtkReportMessageCount(opened.report.get()), 0U);
}

TEST(vrtkSceneOpenBytes, ReadsAndChecksBytes) {
  const SceneHandle scene = sceneOfAllClasses();
  std::string bytes = bytesOf(scene.get());
  vrdmScene_t* opened = nullptr;
  ASSERT_EQ(vrtkSceneOpenBytes(bytes.data(), bytes.size(), nullptr, &opened, nullptr, nullptr),
            VRTK_OK);
  const SceneHandle owner(opened);
  EXPECT_TRUE(vrnt::data::Scene::equivalent(*scene, *opened));
  bytes.pop_back();
  vrdmScene_t* refused = nullptr;
  vrtkReport* report = nullptr;
  EXPECT_EQ(vrtkSceneOpenBytes(bytes.data(), bytes.size(), nullptr, &refused, &report, nullptr),
            VRTK_FILE_DAMAGED);
  EXPECT_EQ(refused, nullptr);
  const ReportHandle reportOwner(report);
  EXPECT_EQ(vrtkReportErrorCount(report), 1U);
  EXPECT_EQ(vrtkSceneOpenBytes(nullptr, 0, nullptr, &refused, nullptr, nullptr),
            VRTK_FILE_NO_SCENE);
}

}  // namespace
}  // namespace vornath_test
