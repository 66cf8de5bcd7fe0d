// Each allocation of the toolkit's functions fails once: they report it, and the next call
// succeeds.
#include "support/allocations.hpp"
#include "toolkit/failed_allocations.hpp"
#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

// A scene with values, in bytes.
const std::string& someFile() {
  static const std::string bytes = bytesOf(sceneOfAllClasses().get());
  return bytes;
}

TEST(vrtkCheckBytes, ReportsEachFailedAllocation) {
  const std::string expected = textOf(check(someFile()).get());
  failEachAllocation([&] {
    vrtkReport* report = nullptr;
    vrtkError* error = nullptr;
    const std::uint32_t status =
        vrtkCheckBytes(someFile().data(), someFile().size(), nullptr, &report, &error);
    const ReportHandle owner(report);
    const ToolkitError errorOwner(error);
    EXPECT_EQ(report != nullptr, status == VRTK_OK);
    EXPECT_EQ(error == nullptr, status == VRTK_OK);
    if (report != nullptr && vrtkReportErrorCount(report) != 0) return status + 1000;
    return status;
  });
  EXPECT_EQ(textOf(check(someFile()).get()), expected);
}

TEST(vrtkSceneOpenBytes, ReportsEachFailedAllocation) {
  failEachAllocation([&] {
    vrdmScene_t* scene = nullptr;
    vrtkReport* report = nullptr;
    vrtkError* error = nullptr;
    const std::uint32_t status =
        vrtkSceneOpenBytes(someFile().data(), someFile().size(), nullptr, &scene, &report, &error);
    const SceneHandle sceneOwner(scene);
    const ReportHandle owner(report);
    const ToolkitError errorOwner(error);
    EXPECT_EQ(scene != nullptr, status == VRTK_OK);
    EXPECT_EQ(report != nullptr, status == VRTK_OK);
    return status;
  });
}

TEST(vrtkSceneSaveBytes, ReportsEachFailedAllocation) {
  const SceneHandle scene = sceneOfAllClasses();
  failEachAllocation([&] {
    void* bytes = nullptr;
    std::uint64_t size = 0;
    vrtkError* error = nullptr;
    const std::uint32_t status = vrtkSceneSaveBytes(scene.get(), &bytes, &size, &error);
    const ToolkitError errorOwner(error);
    EXPECT_EQ(bytes != nullptr, status == VRTK_OK);
    vrtkBytesDestroy(bytes);
    return status;
  });
}

TEST(vrtkSceneSave, ReportsEachFailedAllocationAndLeavesTheOldFile) {
  const TemporaryFolder folder;
  const std::string path = folder.file("scene");
  const SceneHandle scene = sceneOfAllClasses();
  vrtkSaveOptions options = VRTK_SAVE_OPTIONS_INIT;
  options.skipSync = 1;
  failEachAllocation([&] { return vrtkSceneSave(scene.get(), path.c_str(), &options, nullptr); });
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
  EXPECT_EQ(readFile(path), bytesOf(scene.get()));
}

TEST(vrtkFileSave, ReportsEachFailedAllocationAndLeavesTheOldFile) {
  const TemporaryFolder folder;
  const std::string path = folder.file("out");
  vrtkSaveOptions options = VRTK_SAVE_OPTIONS_INIT;
  options.skipSync = 1;
  failEachAllocation([&] { return vrtkFileSave("new", 3, path.c_str(), &options, nullptr); });
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
  EXPECT_EQ(readFile(path), "new");
}

TEST(vrtkSceneValidate, ReportsEachFailedAllocation) {
  const SceneHandle scene = sceneOfAllClasses();
  failEachAllocation([&] {
    vrtkReport* report = nullptr;
    const std::uint32_t status = vrtkSceneValidate(scene.get(), nullptr, &report, nullptr);
    const ReportHandle owner(report);
    return status;
  });
}

TEST(vrtkReportJson, ReportsEachFailedAllocation) {
  const ReportHandle report = check(someFile());
  failEachAllocation([&] {
    char* json = nullptr;
    const std::uint32_t status = vrtkReportJson(report.get(), &json, nullptr);
    vrtkStringDestroy(json);
    return status;
  });
}

}  // namespace
}  // namespace vornath_test
