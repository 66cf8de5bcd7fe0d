// The check of files: header, sections, programs, assets, references and groups.
#include <cmath>
#include <limits>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

using Words = std::vector<std::int32_t>;

std::string emptyFile() {
  const SceneHandle scene(vrdmCreateScene());
  return bytesOf(scene.get());
}

std::int32_t addMesh(vrdmScene_t* scene, const vrdmMeshDesc& desc, std::string bytes) {
  AssetStorage* const storage = vrdmAssetStorageCopy(bytes.data(), bytes.size());
  const std::uint32_t slot = vrdmAddAsset(scene, VRDM_CLASS_MESH, &desc, &storage);
  vrdmAssetStorageRelease(storage);
  return static_cast<std::int32_t>(slot);
}

std::int32_t addTexture(vrdmScene_t* scene, const vrdmTextureDesc& desc) {
  const std::string bytes(vrnt::detail::TextureDesc{desc.width, desc.height, desc.depth,
                                                    static_cast<vrnt::TextureFormat>(desc.format),
                                                    static_cast<vrnt::TextureLayout>(desc.layout)}
                              .size(),
                          'x');
  AssetStorage* const storage = vrdmAssetStorageCopy(bytes.data(), bytes.size());
  const std::uint32_t slot = vrdmAddAsset(scene, VRDM_CLASS_TEXTURE, &desc, &storage);
  vrdmAssetStorageRelease(storage);
  return static_cast<std::int32_t>(slot);
}

TEST(vrtkCheckBytes, FindsNothingInAnEmptyScene) {
  const ReportHandle report = check(emptyFile());
  EXPECT_TRUE(vrtkReportValid(report.get()));
  EXPECT_EQ(textOf(report.get()), "");
  EXPECT_EQ(vrtkReportInfo(report.get())->size, 420U);
  EXPECT_EQ(vrtkReportInfo(report.get())->version, 173U);
}

TEST(vrtkCheckBytes, FindsNoErrorInASceneOfAllClasses) {
  const SceneHandle scene = sceneOfAllClasses();
  const ReportHandle report = check(bytesOf(scene.get()));
  EXPECT_TRUE(vrtkReportValid(report.get())) << textOf(report.get());
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    EXPECT_EQ(vrtkReportClass(report.get(), i).slots, 2U) << vrdmObjectName(i);
    EXPECT_EQ(vrtkReportClass(report.get(), i).live, 1U) << vrdmObjectName(i);
  }
}

TEST(vrtkCheckBytes, FindsNothingInNewObjectsButWhatTheyNeed) {
  const SceneHandle scene(vrdmCreateScene());
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    if (vrdmObjectClass(i) != VRDM_KIND_INSTANCE) continue;
    vrdmCreateInstance(scene.get(), i);
    vrdmSetInstanceValue(scene.get(), i, 0, parseValue("{ a = 1; }").get());
  }
  const ReportHandle report = check(bytesOf(scene.get()));
  for (std::uint64_t i = 0; i < vrtkReportMessageCount(report.get()); ++i) {
    EXPECT_STREQ(vrtkReportMessage(report.get(), i)->code, "SLOT_REQUIRED_UNSET")
        << textOf(report.get());
  }
  EXPECT_EQ(vrtkReportWarningCount(report.get()), 6U) << textOf(report.get());
  expectMessage(report.get(), "SLOT_REQUIRED_UNSET",
                find(report.get(), "SLOT_REQUIRED_UNSET")->offset, "Camera/0/slots/program");
}

TEST(vrtkCheckBytes, ReportsBytesThatAreNoScene) {
  for (const char* const text : {"", "VRNSCENX and more", "hello"}) {
    const ReportHandle report = check(text);
    EXPECT_EQ(vrtkReportErrorCount(report.get()), 1U);
    expectMessage(report.get(), "FILE_HEADER", 0, "");
  }
}

TEST(vrtkCheckBytes, ReportsAnotherVersion) {
  std::string bytes = emptyFile();
  put<std::uint32_t>(bytes, 8, 172);
  const ReportHandle report = check(bytes);
  expectMessage(report.get(), "FILE_VERSION", 8, "");
  EXPECT_STREQ(find(report.get(), "FILE_VERSION")->message,
               "the file has version 172; the library reads version 173 only");
}

TEST(vrtkCheckBytes, ReportsAFileThatIsCutAnywhere) {
  const SceneHandle scene = sceneOfAllClasses();
  const std::string bytes = bytesOf(scene.get());
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    const ReportHandle report = check(std::string_view(bytes).substr(0, length));
    EXPECT_EQ(vrtkReportErrorCount(report.get()), 1U) << length << "\n" << textOf(report.get());
  }
  expectMessage(check(std::string_view(bytes).substr(0, 200)).get(), "FILE_TRUNCATED", 28, "scene");
}

TEST(vrtkCheckBytes, ReportsBytesThatAreLeftOver) {
  const ReportHandle report = check(emptyFile() + "more");
  EXPECT_EQ(vrtkReportErrorCount(report.get()), 1U);
  expectMessage(report.get(), "FILE_TRAILING_BYTES", 420, "");
}

TEST(vrtkCheckBytes, ReportsAFlagThatIsNeither0Nor1AndGoesOn) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmAddProgram(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, "");
  vrdmRemove(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, 0);
  std::string bytes = bytesOf(scene.get());
  bytes[352] = 7;
  const ReportHandle report = check(bytes + "x");
  EXPECT_EQ(vrtkReportErrorCount(report.get()), 2U);
  expectMessage(report.get(), "FLAG_INVALID", 352, "CameraProgram/0");
  expectMessage(report.get(), "FILE_TRAILING_BYTES", bytes.size(), "");
}

TEST(vrtkCheckBytes, DoesNotBelieveACountThatTheFileCannotHold) {
  std::string bytes = emptyFile();
  put<std::uint32_t>(bytes, sectionOf(VRDM_CLASS_SHAPE), 0xFFFFFFFF);
  expectMessage(check(bytes).get(), "COUNT_TOO_LARGE", sectionOf(VRDM_CLASS_SHAPE), "Shape");
  bytes = emptyFile();
  put<std::uint32_t>(bytes, sectionOf(VRDM_CLASS_SHAPE), 100);
  expectMessage(check(bytes).get(), "FILE_TRUNCATED", sectionOf(VRDM_CLASS_SHAPE), "Shape");
}

TEST(vrtkCheckBytes, DoesNotBelieveTheLengthOfAList) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_KEYFRAME_LIST);
  std::string bytes = bytesOf(scene.get());
  const std::size_t list = sectionOf(VRDM_CLASS_KEYFRAME_LIST) + 5;
  put<std::uint32_t>(bytes, list, 0x80000000);
  expectMessage(check(bytes).get(), "COUNT_TOO_LARGE", list, "KeyframeList/0/slots/keyframes");
}

TEST(vrtkCheckBytes, WarnsOfAProgramWithoutTextAndOfANul) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmAddProgram(scene.get(), VRDM_CLASS_MATERIAL_PROGRAM, "");
  vrdmAddProgram(scene.get(), VRDM_CLASS_MATERIAL_PROGRAM, "ab");
  std::string bytes = bytesOf(scene.get());
  const std::size_t first = sectionOf(VRDM_CLASS_MATERIAL_PROGRAM) + 5;
  bytes[first + 4 + 1 + 4 + 1] = '\0';
  const ReportHandle report = check(bytes);
  EXPECT_TRUE(vrtkReportValid(report.get()));
  expectMessage(report.get(), "PROGRAM_EMPTY", first, "MaterialProgram/0/text");
  expectMessage(report.get(), "PROGRAM_HAS_NUL", first + 10, "MaterialProgram/1/text");
}

TEST(vrtkCheckBytes, ReportsExtentsOfMeshesThatDisagreeOrOverflow) {
  const SceneHandle scene(vrdmCreateScene());
  addMesh(scene.get(), {}, "");
  const std::string bytes = bytesOf(scene.get());
  const std::size_t record = sectionOf(VRDM_CLASS_MESH) + 5 + 16;
  const struct {
    vrdmMeshDesc desc;
    const char* code;
    std::size_t offset;
    const char* address;
  } cases[] = {
      {{-1, 0, 0, 0}, "MESH_EXTENTS", record, "Mesh/0/desc/triangles"},
      {{0, -5, 0, 0}, "MESH_EXTENTS", record + 4, "Mesh/0/desc/vertices"},
      {{0, 0, INT32_MIN, 0}, "MESH_EXTENTS", record + 8, "Mesh/0/desc/texcoordSets"},
      {{0, INT32_MAX, INT32_MAX, 0}, "MESH_EXTENTS", record + 8, "Mesh/0/desc/texcoordSets"},
      {{INT32_MAX, 0, 0, 0}, "SIZE_TOO_LARGE", record + 16, "Mesh/0/bytes"},
      {{1, 0, 0, 0}, "FILE_TRUNCATED", 0, "Mesh/0/bytes"},
  };
  for (const auto& each : cases) {
    std::string damaged = bytes;
    put(damaged, record, each.desc);
    if (each.offset == 0) damaged.resize(record + 16 + 8);
    const ReportHandle report = check(damaged);
    EXPECT_FALSE(vrtkReportValid(report.get()));
    expectMessage(report.get(), each.code, each.offset == 0 ? record + 16 : each.offset,
                  each.address);
  }
}

TEST(vrtkCheckBytes, WarnsOfIndicesOutsideTheVertices) {
  const SceneHandle scene(vrdmCreateScene());
  std::string bytes(std::size_t{4} * (3 * 2 + 9 * 3 + 2 * 3), '\0');
  put<std::uint32_t>(bytes, 4, 2);
  put<std::uint32_t>(bytes, 8, 3);
  put<std::uint32_t>(bytes, 20, 0xFFFFFFFF);
  addMesh(scene.get(), {2, 3, 0, 0}, bytes);
  const ReportHandle report = check(bytesOf(scene.get()));
  EXPECT_EQ(vrtkReportWarningCount(report.get()), 1U);
  expectMessage(report.get(), "MESH_INDEX_OUT_OF_RANGE", sectionOf(VRDM_CLASS_MESH) + 5 + 32 + 8,
                "Mesh/0/bytes");
  EXPECT_STREQ(find(report.get(), "MESH_INDEX_OUT_OF_RANGE")->message,
               "2 of 6 indices are not below the number of vertices, 3; the first is 3");
}

TEST(vrtkCheckBytes, JudgesTheRecordsOfTextures) {
  const SceneHandle scene(vrdmCreateScene());
  addTexture(scene.get(), {1, 1, 1, VRNT_TEXTURE_FORMAT_L32, VRNT_TEXTURE_LAYOUT_2D});
  const std::string bytes = bytesOf(scene.get());
  EXPECT_EQ(textOf(check(bytes).get()), "");
  const std::size_t record = sectionOf(VRDM_CLASS_TEXTURE) + 5 + 16;
  const auto damaged = [&](const vrdmTextureDesc& desc) {
    std::string changed = bytes;
    put(changed, record, desc);
    return check(changed);
  };
  expectMessage(damaged({-1, 1, 1, 24, 0}).get(), "TEXTURE_EXTENTS", record,
                "Texture/0/desc/width");
  expectMessage(damaged({INT32_MAX, INT32_MAX, INT32_MAX, 27, 0}).get(), "TEXTURE_EXTENTS", record,
                "Texture/0/desc/width");
  expectMessage(damaged({INT32_MAX, INT32_MAX, 1, 24, 0}).get(), "SIZE_TOO_LARGE", record + 20,
                "Texture/0/bytes");
}

TEST(vrtkCheckBytes, WarnsOfTexturesThatARendererMayStumbleOver) {
  const SceneHandle scene(vrdmCreateScene());
  addTexture(scene.get(), {1, 0, 1, VRNT_TEXTURE_FORMAT_L32, VRNT_TEXTURE_LAYOUT_2D});
  addTexture(scene.get(), {1, 1, 1, 5, VRNT_TEXTURE_LAYOUT_2D});
  addTexture(scene.get(), {1, 1, 1, VRNT_TEXTURE_FORMAT_L32, 3});
  addTexture(scene.get(), {2, 2, 4, VRNT_TEXTURE_FORMAT_L32, VRNT_TEXTURE_LAYOUT_CUBE});
  addTexture(scene.get(), {2, 2, 6, VRNT_TEXTURE_FORMAT_L32, VRNT_TEXTURE_LAYOUT_CUBE});
  const ReportHandle report = check(bytesOf(scene.get()));
  EXPECT_TRUE(vrtkReportValid(report.get()));
  EXPECT_EQ(vrtkReportWarningCount(report.get()), 4U) << textOf(report.get());
  EXPECT_STREQ(find(report.get(), "TEXTURE_EMPTY")->address, "Texture/0/desc/height");
  EXPECT_STREQ(find(report.get(), "TEXTURE_FORMAT_UNKNOWN")->address, "Texture/1/desc/format");
  EXPECT_STREQ(find(report.get(), "TEXTURE_LAYOUT_UNKNOWN")->address, "Texture/2/desc/layout");
  EXPECT_STREQ(find(report.get(), "TEXTURE_CUBE_EXTENTS")->address, "Texture/3/desc/width");
}

TEST(vrtkCheckBytes, WarnsOfPlacesOutsideAMaterialGraph) {
  const SceneHandle scene(vrdmCreateScene());
  const vrdmMaterialGraphDesc desc{4, 5, 4};
  AssetStorage* const storage = vrdmAssetStorageCopy("grph", 4);
  vrdmAddAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, &desc, &storage);
  vrdmAssetStorageRelease(storage);
  std::string bytes = bytesOf(scene.get());
  const std::size_t record = sectionOf(VRDM_CLASS_MATERIAL_GRAPH) + 5 + 16;
  const ReportHandle report = check(bytes);
  EXPECT_EQ(vrtkReportWarningCount(report.get()), 1U);
  expectMessage(report.get(), "GRAPH_OFFSET_OUT_OF_RANGE", record + 8,
                "MaterialGraph/0/desc/rootOffset");
  put<std::uint64_t>(bytes, record, UINT64_MAX);
  expectMessage(check(bytes).get(), "SIZE_TOO_LARGE", record + 24, "MaterialGraph/0/bytes");
}

TEST(vrtkCheckBytes, WarnsOfReferencesThatNameNoLiveObject) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_TRANSFORMATION_GROUP);
  vrdmRemove(scene.get(), VRDM_CLASS_TRANSFORMATION_GROUP, 0);
  vrdmSetReference(scene.get(), VRDM_CLASS_SHAPE, 0, 0, 3);
  vrdmSetReference(scene.get(), VRDM_CLASS_SHAPE, 0, 1, 0xFFFFFFFE);
  vrdmSetReference(scene.get(), VRDM_CLASS_SHAPE, 0, 3, 0);
  const ReportHandle report = check(bytesOf(scene.get()));
  EXPECT_TRUE(vrtkReportValid(report.get()));
  EXPECT_EQ(vrtkReportWarningCount(report.get()), 3U) << textOf(report.get());
  EXPECT_STREQ(vrtkReportMessage(report.get(), 0)->code, "SLOT_OUT_OF_RANGE");
  EXPECT_STREQ(vrtkReportMessage(report.get(), 0)->address, "Shape/0/slots/material");
  EXPECT_STREQ(vrtkReportMessage(report.get(), 0)->message,
               "found Material 3, but the scene has no Material");
  EXPECT_STREQ(vrtkReportMessage(report.get(), 1)->address, "Shape/0/slots/mesh");
  EXPECT_STREQ(vrtkReportMessage(report.get(), 2)->code, "SLOT_NOT_LIVE");
  EXPECT_STREQ(vrtkReportMessage(report.get(), 2)->address, "Shape/0/slots/transformationGroup");
}

TEST(vrtkCheckBytes, LooksAtTheElementsOfAllLists) {
  const SceneHandle scene(vrdmCreateScene());
  const auto list = [&](std::uint32_t objectClass, std::uint32_t slot, const Words& words) {
    const auto index = static_cast<std::int32_t>(vrdmCreateInstance(scene.get(), objectClass));
    vrdmSetReference(scene.get(), objectClass, index, slot,
                     static_cast<std::uint32_t>(words.size()));
    std::memcpy(vrdmModifyReferenceList(scene.get(), objectClass, index, slot), words.data(),
                words.size() * 4);
  };
  vrdmCreateInstance(scene.get(), VRDM_CLASS_KEYFRAME);
  list(VRDM_CLASS_KEYFRAME_LIST, 0, {0, -1, 1});
  // Shape 0, shape 1, light 0, light 1, none: the classes come behind that of the list.
  list(VRDM_CLASS_LIGHT_GROUP, 0, {0, 1, -1, -2, INT32_MIN});
  list(VRDM_CLASS_DECAL_LIST, 0, {0, -1, 1, -2, INT32_MIN});
  vrdmCreateInstance(scene.get(), VRDM_CLASS_LIGHT);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_LIGHT, 0, parseValue("{ a = 1; }").get());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_DECAL);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE);
  const ReportHandle report = check(bytesOf(scene.get()));
  EXPECT_TRUE(vrtkReportValid(report.get()));
  std::vector<std::string> addresses;
  for (std::uint64_t i = 0; i < vrtkReportMessageCount(report.get()); ++i) {
    const vrtkMessage* const message = vrtkReportMessage(report.get(), i);
    if (std::string_view(message->code) == "SLOT_OUT_OF_RANGE") {
      addresses.emplace_back(message->address);
    }
  }
  EXPECT_EQ(addresses, (std::vector<std::string>{
                           "KeyframeList/0/slots/keyframes/2", "LightGroup/0/slots/emitters/1",
                           "LightGroup/0/slots/emitters/3", "DecalList/0/slots/decals/2",
                           "DecalList/0/slots/decals/3"}));
}

// A camera whose group is changed at some bytes.
ReportHandle changedCamera(std::uint64_t offset, std::uint32_t word) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
  vrdmAddProgram(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, "p");
  vrdmSetReference(scene.get(), VRDM_CLASS_CAMERA, 0, 0, 0);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_CAMERA, 0, parseValue("{ a = 1; }").get());
  std::string bytes = bytesOf(scene.get());
  const std::size_t groups = sectionOf(VRDM_CLASS_CAMERA) + 1 + 4 + 1 + 5 + 12;
  put(bytes, groups + offset, word);
  ReportHandle report = check(bytes);
  EXPECT_TRUE(vrtkReportValid(report.get())) << textOf(report.get());
  EXPECT_EQ(vrtkReportWarningCount(report.get()), 1U) << textOf(report.get());
  if (vrtkReportMessageCount(report.get()) == 1) {
    EXPECT_EQ(vrtkReportMessage(report.get(), 0)->offset, groups + offset);
  }
  return report;
}

std::uint32_t bitsOf(float number) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &number, sizeof(bits));
  return bits;
}

TEST(vrtkCheckBytes, WarnsOfFieldsWithTheirPaths) {
  const float infinity = std::numeric_limits<float>::infinity();
  const struct {
    std::uint64_t offset;  // docs/catalogue.md
    std::uint32_t word;
    const char* code;
    const char* address;
    const char* message;
  } cases[] = {
      {4, bitsOf(NAN), "NUMBER_NOT_FINITE", "Camera/0/groups/Transformation/matrix/x/1",
       "found nan; expected a finite number"},
      {60, bitsOf(-infinity), "NUMBER_NOT_FINITE", "Camera/0/groups/Transformation/matrix/w/3",
       "found -inf; expected a finite number"},
      {64, bitsOf(-0.5F), "FIELD_OUT_OF_LIMITS", "Camera/0/groups/General/near_distance",
       "found -0.5; the minimum is 0"},
      {68, bitsOf(1.5F), "FIELD_OUT_OF_LIMITS", "Camera/0/groups/General/shutter_open",
       "found 1.5; the maximum is 1"},
      {84, 2, "BOOL_NOT_CANONICAL", "Camera/0/groups/Background/active",
       "found the word 0x00000002; a bool is 0 or 0xffffffff"},
      {112, 5, "ENUM_CODE_UNNAMED", "Camera/0/groups/Backplate/mode",
       "found the code 5; the codes are 0 to 4"},
      {128, 0, "TEXTURE_REFERENCE_INVALID",
       "Camera/0/groups/Backplate/image/spectrum_texture/index",
       "found texture 0, but there is no live Texture in that slot; expected one of 0 slots, or -1 "
       "for none"},
  };
  for (const auto& each : cases) {
    const ReportHandle report = changedCamera(each.offset, each.word);
    ASSERT_EQ(vrtkReportMessageCount(report.get()), 1U) << each.address;
    EXPECT_STREQ(vrtkReportMessage(report.get(), 0)->code, each.code);
    EXPECT_STREQ(vrtkReportMessage(report.get(), 0)->address, each.address);
    EXPECT_STREQ(vrtkReportMessage(report.get(), 0)->message, each.message);
  }
}

TEST(vrtkCheckBytes, WarnsOfAFieldInEachObjectBetweenOthersThatAreRight) {
  constexpr std::uint32_t kClass = VRDM_CLASS_TRANSFORMATION_GROUP;
  constexpr std::size_t kRecord = 1 + 64;  // the flag and the matrix
  const SceneHandle scene(vrdmCreateScene());
  for (int i = 0; i < 6; ++i) vrdmCreateInstance(scene.get(), kClass);
  std::string bytes = bytesOf(scene.get());
  std::vector<std::string> expected;
  for (const std::size_t wrong : {std::size_t{1}, std::size_t{3}, std::size_t{4}}) {
    put<std::uint32_t>(bytes, sectionOf(kClass) + 4 + wrong * kRecord + 1 + 20, 0x7FC00000);
    expected.push_back("TransformationGroup/" + std::to_string(wrong) +
                       "/groups/Transformation/matrix/y/1");
  }
  const ReportHandle report = check(bytes);
  std::vector<std::string> found;
  for (std::uint64_t i = 0; i < vrtkReportMessageCount(report.get()); ++i) {
    found.emplace_back(vrtkReportMessage(report.get(), i)->address);
  }
  EXPECT_EQ(found, expected) << textOf(report.get());
}

TEST(vrtkCheckBytes, WarnsOfFieldsOfTheScene) {
  std::string bytes = emptyFile();
  put(bytes, 324, bitsOf(-1.0F));
  put<std::uint32_t>(bytes, 328, 99);
  const ReportHandle report = check(bytes);
  expectMessage(report.get(), "ENUM_CODE_UNNAMED", 328, "scene/Raytracer/bvh_mode");
  expectMessage(report.get(), "FIELD_OUT_OF_LIMITS", 324, "scene/Raytracer/ray_epsilon");
}

TEST(vrtkCheckBytes, WarnsOfEachObjectAlthoughItsNeighbourWasTheSame) {
  const SceneHandle scene(vrdmCreateScene());
  for (int i = 0; i < 3; ++i) vrdmCreateInstance(scene.get(), VRDM_CLASS_KEYFRAME);
  std::string bytes = bytesOf(scene.get());
  const std::size_t first = sectionOf(VRDM_CLASS_KEYFRAME) + 5;
  put(bytes, first, bitsOf(NAN));
  put(bytes, first + 2 * 53, bitsOf(NAN));
  const ReportHandle report = check(bytes);
  EXPECT_EQ(vrtkReportWarningCount(report.get()), 2U);
  EXPECT_STREQ(vrtkReportMessage(report.get(), 0)->address, "Keyframe/0/groups/Transformation/px");
  EXPECT_STREQ(vrtkReportMessage(report.get(), 1)->address, "Keyframe/2/groups/Transformation/px");
}

}  // namespace
}  // namespace vornath_test
