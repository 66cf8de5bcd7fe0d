// Status codes and error objects.
#include <set>
#include <string>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

TEST(vrtkStatusName, HasANameForEachStatusAndNullForOthers) {
  std::set<std::string> names;
  for (std::uint32_t status = 0; status < 100; ++status) {
    const char* const name = vrtkStatusName(status);
    if (name != nullptr) {
      EXPECT_TRUE(names.insert(name).second);
    }
  }
  EXPECT_EQ(names.size(), 28U);
  EXPECT_STREQ(vrtkStatusName(VRTK_FILE_MISSING), "FILE_MISSING");
  EXPECT_EQ(vrtkStatusName(5), nullptr);
}

TEST(vrtkVersion, IsThatOfTheHeaders) {
  EXPECT_EQ(vrtkVersion(), std::to_string(VORNATH_TOOLKIT_VERSION_MAJOR) + "." +
                               std::to_string(VORNATH_TOOLKIT_VERSION_MINOR) + "." +
                               std::to_string(VORNATH_TOOLKIT_VERSION_PATCH));
}

TEST(vrtkErrorDestroy, TakesNull) {
  vrtkErrorDestroy(nullptr);
  vrtkStringDestroy(nullptr);
  vrtkBytesDestroy(nullptr);
  vrtkReportDestroy(nullptr);
}

TEST(vrtkErrorMessage, NamesTheFunctionAndTheArgumentThatIsNull) {
  vrtkReport* report = nullptr;
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkCheckFile(nullptr, nullptr, &report, &error), VRTK_INVALID_ARGUMENT);
  const ToolkitError owner(error);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrtkErrorCode(error), VRTK_INVALID_ARGUMENT);
  EXPECT_STREQ(vrtkErrorMessage(error), "vrtkCheckFile: the argument 'path' must not be null");
  EXPECT_EQ(report, nullptr);
}

TEST(vrtkErrorCode, IsReportedWithoutAnErrorLocationToo) {
  vrdmScene_t* scene = nullptr;
  EXPECT_EQ(vrtkSceneOpen("/no such file", nullptr, &scene, nullptr, nullptr), VRTK_FILE_MISSING);
  EXPECT_EQ(scene, nullptr);
}

TEST(vrtkErrorCode, LeavesTheErrorLocationUntouchedOnSuccess) {
  vrtkError* error = nullptr;
  vrtkReport* report = nullptr;
  EXPECT_EQ(vrtkCheckBytes(nullptr, 0, nullptr, &report, &error), VRTK_OK);
  EXPECT_EQ(error, nullptr);
  const ReportHandle owner(report);
}

TEST(vrtkErrorMessage, RefusesEveryNullOutParameter) {
  const SceneHandle scene(vrdmCreateScene());
  EXPECT_EQ(vrtkCheckBytes("", 0, nullptr, nullptr, nullptr), VRTK_INVALID_ARGUMENT);
  vrtkReport* report = nullptr;
  EXPECT_EQ(vrtkCheckBytes(nullptr, 1, nullptr, &report, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(vrtkSceneValidate(nullptr, nullptr, &report, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(vrtkSceneOpen("x", nullptr, nullptr, nullptr, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(vrtkSceneSave(scene.get(), nullptr, nullptr, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(vrtkSceneSave(nullptr, "x", nullptr, nullptr), VRTK_INVALID_ARGUMENT);
  void* bytes = nullptr;
  EXPECT_EQ(vrtkSceneSaveBytes(scene.get(), &bytes, nullptr, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(bytes, nullptr);
  EXPECT_EQ(vrtkReportJson(nullptr, nullptr, nullptr), VRTK_INVALID_ARGUMENT);
}

}  // namespace
}  // namespace vornath_test
