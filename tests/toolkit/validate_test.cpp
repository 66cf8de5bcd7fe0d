// The check of scenes in memory.
#include <cmath>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

std::vector<std::string> findings(const vrtkReport* report) {
  std::vector<std::string> found;
  for (std::uint64_t i = 0; i < vrtkReportMessageCount(report); ++i) {
    const vrtkMessage* const message = vrtkReportMessage(report, i);
    found.push_back(std::string(message->code) + " " + message->address);
  }
  return found;
}

TEST(vrtkSceneValidate, FindsNothingInAnEmptyScene) {
  const SceneHandle scene(vrdmCreateScene());
  const ReportHandle report = validate(scene.get());
  EXPECT_EQ(textOf(report.get()), "");
  EXPECT_TRUE(vrtkReportValid(report.get()));
}

TEST(vrtkSceneValidate, FindsWhatACheckOfTheFileFinds) {
  const SceneHandle scene = sceneOfAllClasses();
  const ReportHandle inFile = check(bytesOf(scene.get()));
  const ReportHandle inMemory = validate(scene.get());
  auto expected = findings(inFile.get());
  auto found = findings(inMemory.get());
  std::sort(expected.begin(), expected.end());
  std::sort(found.begin(), found.end());
  EXPECT_EQ(found, expected);
  EXPECT_FALSE(found.empty());
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    EXPECT_EQ(vrtkReportClass(inMemory.get(), i).live, vrtkReportClass(inFile.get(), i).live);
    EXPECT_EQ(vrtkReportClass(inMemory.get(), i).slots, vrtkReportClass(inFile.get(), i).slots);
  }
  EXPECT_EQ(vrtkReportInfo(inMemory.get())->assetBytes, vrtkReportInfo(inFile.get())->assetBytes);
  EXPECT_EQ(vrtkReportInfo(inMemory.get())->valueBytes, vrtkReportInfo(inFile.get())->valueBytes);
  EXPECT_EQ(vrtkReportMessage(inMemory.get(), 0)->offset, VRTK_NO_OFFSET);
}

TEST(vrtkSceneValidate, WarnsOfAnObjectWithoutItsValue) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  const ReportHandle report = validate(scene.get());
  EXPECT_EQ(findings(report.get()), std::vector<std::string>{"VALUE_MISSING Material/0/value"});
  EXPECT_TRUE(vrtkReportValid(report.get()));
}

TEST(vrtkSceneValidate, ReportsAnAssetOfFewerBytesThanItsRecordSays) {
  const SceneHandle scene(vrdmCreateScene());
  const vrdmMeshDesc desc{1, 3, 0, 0};
  AssetStorage* const storage = vrdmAssetStorageCopy("short", 5);
  vrdmAddAsset(scene.get(), VRDM_CLASS_MESH, &desc, &storage);
  vrdmAssetStorageRelease(storage);
  const ReportHandle report = validate(scene.get());
  EXPECT_EQ(findings(report.get()), std::vector<std::string>{"ASSET_TOO_SHORT Mesh/0/bytes"});
  EXPECT_FALSE(vrtkReportValid(report.get()));
}

TEST(vrtkSceneValidate, LooksAtFieldsAndValues) {
  const SceneHandle scene(vrdmCreateScene());
  scene->data.raytracer.ray_epsilon = NAN;
  vrdmCreateInstance(scene.get(), VRDM_CLASS_KEYFRAME);
  vrntValue_t* group = vrdmGetDataValue(scene.get(), VRDM_CLASS_KEYFRAME, 0, 0);
  vrntValuesError_t* error = nullptr;
  const float number = INFINITY;
  vrntValueWrite(&group, 4, &number, 4, &error);
  vrdmSetDataValue(scene.get(), VRDM_CLASS_KEYFRAME, 0, 0, group);
  vrntValueDestroy(group);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  vrdmSetInstanceValue(
      scene.get(), VRDM_CLASS_MATERIAL, 0,
      parseValue("{ a = { texture_ref = 3; }; b = &{ c = { texture_ref = 4; }; }; }").get());
  const ReportHandle report = validate(scene.get());
  EXPECT_EQ(findings(report.get()),
            (std::vector<std::string>{
                "NUMBER_NOT_FINITE scene/Raytracer/ray_epsilon",
                "NUMBER_NOT_FINITE Keyframe/0/groups/Transformation/py",
                "TEXTURE_REFERENCE_INVALID Material/0/value/data/a/texture_ref",
                "TEXTURE_REFERENCE_INVALID Material/0/value/data/b/to/c/texture_ref"}));
}

TEST(vrtkSceneValidate, LooksAtASharedBlockOnce) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  vrntValue_t* value = parseValue("{ a = &1; b = &1; }").release();
  const ValueHandle shared = parseValue("{ t = { texture_ref = 3; }; }");
  vrntValuesError_t* error = nullptr;
  const TypeHandle target = parseType("void*");
  for (std::uint64_t offset = 0; offset < 16; offset += 8) {
    const vrntValueView_t view{target.get(), offset};
    vrntValueSetReference(&value, &view, shared.get(), &error);
  }
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value);
  vrntValueDestroy(value);
  const ReportHandle report = validate(scene.get());
  int textures = 0;
  for (const std::string& finding : findings(report.get())) {
    textures += finding.rfind("TEXTURE_REFERENCE_INVALID", 0) == 0 ? 1 : 0;
  }
  EXPECT_EQ(textures, 1) << textOf(report.get());
  EXPECT_EQ(vrtkReportInfo(report.get())->valueBlocks, 2U);
}

}  // namespace
}  // namespace vornath_test
