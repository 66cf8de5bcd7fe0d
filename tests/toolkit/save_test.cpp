// Saving scenes: whole or not at all.
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <filesystem>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

namespace fs = std::filesystem;

struct Saved {
  std::uint32_t status;
  std::string message;
};

Saved save(const vrdmScene_t* scene, const std::string& path) {
  vrtkError* error = nullptr;
  const std::uint32_t status = vrtkSceneSave(scene, path.c_str(), nullptr, &error);
  const ToolkitError owner(error);
  return {status, error != nullptr ? vrtkErrorMessage(error) : ""};
}

std::vector<std::string> namesIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

mode_t modeOf(const std::string& path) {
  struct stat found {};
  EXPECT_EQ(stat(path.c_str(), &found), 0);
  return found.st_mode & 07777U;
}

SceneHandle sceneOfMegabytes(std::size_t megabytes) {
  SceneHandle scene(vrdmCreateScene());
  addBytes(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, std::string(megabytes << 20U, 'x'));
  return scene;
}

TEST(vrtkSceneSave, WritesWhatTheLibraryWrites) {
  const TemporaryFolder folder;
  const SceneHandle scene = sceneOfAllClasses();
  const Saved saved = save(scene.get(), folder.file("scene"));
  ASSERT_EQ(saved.status, VRTK_OK) << saved.message;
  EXPECT_EQ(readFile(folder.file("scene")), bytesOf(scene.get()));
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"scene"});
}

TEST(vrtkSceneSave, WritesListsWithoutElements) {
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_KEYFRAME_LIST);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_LIGHT_GROUP);
  const Saved saved = save(scene.get(), folder.file("scene"));
  ASSERT_EQ(saved.status, VRTK_OK) << saved.message;
  EXPECT_EQ(readFile(folder.file("scene")), bytesOf(scene.get()));
}

TEST(vrtkSceneSave, GivesANewFileTheUsualPermissions) {
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  const mode_t before = umask(027);
  EXPECT_EQ(save(scene.get(), folder.file("scene")).status, VRTK_OK);
  umask(before);
  EXPECT_EQ(modeOf(folder.file("scene")), 0640U);
}

TEST(vrtkSceneSave, KeepsThePermissionsOfAFileThatItReplaces) {
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  writeFile(folder.file("scene"), "old");
  ASSERT_EQ(chmod(folder.file("scene").c_str(), 0604), 0);
  EXPECT_EQ(save(scene.get(), folder.file("scene")).status, VRTK_OK);
  EXPECT_EQ(modeOf(folder.file("scene")), 0604U);
  EXPECT_EQ(readFile(folder.file("scene")).size(), 420U);
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"scene"});
}

TEST(vrtkSceneSave, ReplacesTheFileBehindALink) {
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  fs::create_directory(folder.file("sub"));
  writeFile(folder.file("sub/file"), "old");
  fs::create_symlink("sub/file", folder.file("link"));
  fs::create_symlink("sub/new", folder.file("dangling"));
  EXPECT_EQ(save(scene.get(), folder.file("link")).status, VRTK_OK);
  EXPECT_EQ(save(scene.get(), folder.file("dangling")).status, VRTK_OK);
  EXPECT_TRUE(fs::is_symlink(folder.file("link")));
  EXPECT_EQ(readFile(folder.file("sub/file")).size(), 420U);
  EXPECT_EQ(readFile(folder.file("sub/new")).size(), 420U);
  fs::create_symlink("round", folder.file("round"));
  EXPECT_EQ(save(scene.get(), folder.file("round")).status, VRTK_SAVE_FAILED);
}

TEST(vrtkSceneSave, TellsWhatStandsInTheWay) {
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  EXPECT_EQ(save(scene.get(), folder.path().string()).status, VRTK_FILE_IS_FOLDER);
  EXPECT_EQ(save(scene.get(), folder.path().string() + "/").status, VRTK_FILE_IS_FOLDER);
  EXPECT_EQ(save(scene.get(), "/dev/null").status, VRTK_FILE_NOT_REGULAR);
  ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
  EXPECT_EQ(save(scene.get(), folder.file("pipe")).status, VRTK_FILE_NOT_REGULAR);
  const Saved noFolder = save(scene.get(), folder.file("no/scene"));
  EXPECT_EQ(noFolder.status, VRTK_SAVE_NO_FOLDER);
  EXPECT_EQ(noFolder.message, folder.file("no/scene") + ": the folder " + folder.file("no") +
                                  " does not exist; make it first");
  writeFile(folder.file("file"), "x");
  EXPECT_EQ(save(scene.get(), folder.file("file/scene")).status, VRTK_SAVE_NO_FOLDER);
  EXPECT_EQ(save(scene.get(), "").status, VRTK_SAVE_NO_FOLDER);
  EXPECT_EQ(save(scene.get(), "/proc/scene").status, VRTK_SAVE_NO_FOLDER);
  EXPECT_EQ(namesIn(folder.path()), (std::vector<std::string>{"file", "pipe"}));
}

TEST(vrtkSceneSave, TellsThatItMayNotWrite) {
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  writeFile(folder.file("scene"), "old");
  ASSERT_EQ(chmod(folder.file("scene").c_str(), 0400), 0);
  EXPECT_TRUE(asAnOrdinaryUser(folder, [&] {
    EXPECT_EQ(save(scene.get(), folder.file("scene")).status, VRTK_SAVE_DENIED);
    EXPECT_EQ(save(scene.get(), folder.file("new")).status, VRTK_OK);
    fs::permissions(folder.path(), fs::perms::owner_read | fs::perms::owner_exec);
    const Saved denied = save(scene.get(), folder.file("other"));
    EXPECT_EQ(denied.status, VRTK_SAVE_DENIED);
    EXPECT_NE(denied.message.find("ask for permission"), std::string::npos) << denied.message;
    // It may write there, though it may not list the files.
    fs::permissions(folder.path(), fs::perms::owner_write | fs::perms::owner_exec);
    EXPECT_EQ(save(scene.get(), folder.file("unlisted")).status, VRTK_OK);
  }));
  fs::permissions(folder.path(), fs::perms::owner_all);
  EXPECT_EQ(readFile(folder.file("scene")), "old");
  EXPECT_EQ(namesIn(folder.path()), (std::vector<std::string>{"new", "scene", "unlisted"}));
}

TEST(vrtkSceneSave, TellsThatThereIsNoSpaceAndLeavesTheOldFile) {
  const TemporaryFolder folder;
  const SceneHandle scene = sceneOfMegabytes(4);
  writeFile(folder.file("scene"), "old");
  EXPECT_TRUE(inAProcess([&] {
    const rlimit limit{1 << 20, 1 << 20};
    setrlimit(RLIMIT_FSIZE, &limit);
    const Saved saved = save(scene.get(), folder.file("scene"));
    EXPECT_EQ(saved.status, VRTK_SAVE_NO_SPACE) << saved.message;
    EXPECT_NE(saved.message.find("what was there stands as it was"), std::string::npos)
        << saved.message;
    EXPECT_EQ(save(scene.get(), folder.file("new")).status, VRTK_SAVE_NO_SPACE);
  }));
  EXPECT_EQ(readFile(folder.file("scene")), "old");
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"scene"});
}

TEST(vrtkSceneSave, TellsThatTheDeviceIsFullAndLeavesTheOldFile) {
  const TemporaryFolder folder;
  const SceneHandle small(vrdmCreateScene());
  const SceneHandle large = sceneOfMegabytes(4);
  constexpr int kNoMount = 77;
  const pid_t child = fork();
  if (child == 0) {
    // A file system of a megabyte, which only this process sees.
    if (unshare(CLONE_NEWNS) != 0 ||
        mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("tmpfs", folder.path().c_str(), "tmpfs", 0, "size=1m") != 0) {
      _exit(kNoMount);
    }
    EXPECT_EQ(save(small.get(), folder.file("scene")).status, VRTK_OK);
    const std::string before = readFile(folder.file("scene"));
    const Saved saved = save(large.get(), folder.file("scene"));
    EXPECT_EQ(saved.status, VRTK_SAVE_NO_SPACE) << saved.message;
    EXPECT_NE(saved.message.find("make room"), std::string::npos) << saved.message;
    EXPECT_EQ(readFile(folder.file("scene")), before);
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"scene"});
    // A file system that may only be read.
    EXPECT_EQ(mount("tmpfs", folder.path().c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr), 0);
    EXPECT_EQ(save(small.get(), folder.file("scene")).status, VRTK_SAVE_DENIED);
    EXPECT_EQ(save(small.get(), folder.file("new")).status, VRTK_SAVE_DENIED);
    EXPECT_EQ(readFile(folder.file("scene")), before);
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == kNoMount) GTEST_SKIP() << "this user may not mount a file system";
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(vrtkSceneSave, TellsThatThereIsNoSpaceForAValueToo) {
  // The error passes through the library's own callback.
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  const TypeHandle type = parseType("float[1000000]");
  vrntValuesError_t* error = nullptr;
  const ValueHandle value(vrntValueCreate(type.get(), &error));
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value.get());
  EXPECT_TRUE(inAProcess([&] {
    const rlimit limit{1 << 20, 1 << 20};
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(save(scene.get(), folder.file("scene")).status, VRTK_SAVE_NO_SPACE);
  }));
  EXPECT_TRUE(namesIn(folder.path()).empty());
}

TEST(vrtkSceneSave, LeavesNothingIfTheProcessIsKilled) {
  const TemporaryFolder folder;
  const SceneHandle scene = sceneOfMegabytes(16);
  writeFile(folder.file("scene"), "old");
  for (int i = 0; i < 8; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      for (;;) vrtkSceneSave(scene.get(), folder.file("scene").c_str(), nullptr, nullptr);
    }
    usleep(static_cast<useconds_t>(2000 + 3000 * i));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    const std::string bytes = readFile(folder.file("scene"));
    EXPECT_TRUE(bytes == "old" || bytes.size() > std::size_t{16} << 20U) << bytes.size();
    EXPECT_LE(namesIn(folder.path()).size(), 2U);
  }
}

TEST(vrtkSceneSave, RefusesAnObjectWithoutItsValueAndNamesIt) {
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  writeFile(folder.file("scene"), "old");
  vrdmCreateInstance(scene.get(), VRDM_CLASS_LIGHT);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_LIGHT);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_LIGHT, 0, parseValue("{ a = 1; }").get());
  const Saved saved = save(scene.get(), folder.file("scene"));
  EXPECT_EQ(saved.status, VRTK_SCENE_INCOMPLETE);
  EXPECT_EQ(saved.message, folder.file("scene") +
                               ": Light/1 cannot be written: the object has no value; it needs "
                               "one; nothing was written");
  EXPECT_EQ(readFile(folder.file("scene")), "old");
}

TEST(vrtkSceneSave, RefusesAnAssetOfTooFewBytesAndNamesIt) {
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  const vrdmMaterialGraphDesc desc{6, 0, 0};
  AssetStorage* const storage = vrdmAssetStorageCopy("short", 5);
  vrdmAddAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, &desc, &storage);
  vrdmAssetStorageRelease(storage);
  const Saved saved = save(scene.get(), folder.file("scene"));
  EXPECT_EQ(saved.status, VRTK_SCENE_INCOMPLETE);
  EXPECT_NE(saved.message.find("MaterialGraph/0 cannot be written: the record asks for 6 bytes, "
                               "but the asset has 5"),
            std::string::npos)
      << saved.message;
  EXPECT_TRUE(namesIn(folder.path()).empty());
}

TEST(vrtkSceneSave, WritesABlockOfMoreBytesThanItsRecordSays) {
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  const vrdmMaterialGraphDesc desc{2, 0, 0};
  AssetStorage* const storage = vrdmAssetStorageCopy("long", 4);
  vrdmAddAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, &desc, &storage);
  vrdmAssetStorageRelease(storage);
  EXPECT_EQ(save(scene.get(), folder.file("scene")).status, VRTK_OK);
}

TEST(vrtkSceneSave, CanDoWithoutWaitingForTheDevice) {
  const TemporaryFolder folder;
  const SceneHandle scene(vrdmCreateScene());
  vrtkSaveOptions options = VRTK_SAVE_OPTIONS_INIT;
  options.skipSync = 1;
  EXPECT_EQ(vrtkSceneSave(scene.get(), folder.file("scene").c_str(), &options, nullptr), VRTK_OK);
  EXPECT_EQ(readFile(folder.file("scene")).size(), 420U);
}

TEST(vrtkSceneSaveBytes, WritesWhatTheLibraryWrites) {
  const SceneHandle scene = sceneOfAllClasses();
  void* bytes = nullptr;
  std::uint64_t size = 0;
  ASSERT_EQ(vrtkSceneSaveBytes(scene.get(), &bytes, &size, nullptr), VRTK_OK);
  const std::string expected = bytesOf(scene.get());
  ASSERT_EQ(size, expected.size());
  EXPECT_EQ(std::memcmp(bytes, expected.data(), size), 0);
  vrtkBytesDestroy(bytes);
}

TEST(vrtkSceneSaveBytes, RefusesAnObjectWithoutItsValue) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  void* bytes = nullptr;
  std::uint64_t size = 7;
  EXPECT_EQ(vrtkSceneSaveBytes(scene.get(), &bytes, &size, nullptr), VRTK_SCENE_INCOMPLETE);
  EXPECT_EQ(bytes, nullptr);
  EXPECT_EQ(size, 7U);
}

}  // namespace
}  // namespace vornath_test
