// The printer of scene files, on what the measured box has none of: coded lists, free slots, every
// kind of asset, and values of every shape.
#include <array>
#include <cstring>

#include "../support/flat_handles.hpp"
#include "process.hpp"
#include "vornath_data/vrdm.h"

namespace vornath_test {
namespace {

class ShowScene : public ProcessTest {
 protected:
  std::int32_t create(std::uint32_t objectClass) {
    return static_cast<std::int32_t>(vrdmCreateInstance(scene_, objectClass));
  }

  template <typename Words>
  std::int32_t addAsset(std::uint32_t objectClass, const Words& descriptor, std::uint64_t size) {
    const std::string bytes(size, 'x');
    AssetStorage* storage = vrdmAssetStorageCopy(bytes.data(), size);
    const std::uint32_t index = vrdmAddAsset(scene_, objectClass, descriptor.data(), &storage);
    vrdmAssetStorageRelease(storage);
    return static_cast<std::int32_t>(index);
  }

  void setList(std::uint32_t objectClass, std::int32_t index, std::uint32_t slot,
               const std::vector<std::int32_t>& words) {
    const auto count = static_cast<std::uint32_t>(words.size());
    ASSERT_TRUE(vrdmSetReferenceCount(scene_, objectClass, index, slot, count));
    std::memcpy(vrdmModifyReferenceList(scene_, objectClass, index, slot), words.data(),
                words.size() * sizeof(std::int32_t));
  }

  void setValue(std::uint32_t objectClass, std::int32_t index, const vrntValue_t* value) {
    ASSERT_TRUE(vrdmSetInstanceValue(scene_, objectClass, index, value));
  }

  // What another process prints of the scene.
  std::string show() const {
    vrdmSerialize(scene_, path("shown.vrnscene").c_str());
    const Outcome shown = run(SHOW_SCENE, {path("shown.vrnscene")});
    EXPECT_EQ(shown.status, 0) << shown.errors;
    return shown.output;
  }

  static std::string section(const std::string& output, const std::string& title) {
    const std::string heading = "\n" + title + "\n" + std::string(title.size(), '-') + "\n";
    const std::size_t begin = output.find(heading);
    if (begin == std::string::npos) return "there is no " + title;
    const std::size_t body = begin + heading.size();
    const std::size_t end = output.find("\n\n", body);
    return output.substr(body, end == std::string::npos ? end : end + 1 - body);
  }

  const SceneHandle owner_{vrdmCreateScene()};
  vrdmScene_t* const scene_ = owner_.get();
};

TEST_F(ShowScene, PrintsWhichLightsAndShapesEmit) {
  for (int i = 0; i < 2; ++i) create(VRDM_CLASS_SHAPE);
  const ValueHandle value = parseValue("{ }");
  for (int i = 0; i < 2; ++i) setValue(VRDM_CLASS_LIGHT, create(VRDM_CLASS_LIGHT), value.get());
  const std::int32_t group = create(VRDM_CLASS_LIGHT_GROUP);
  setList(VRDM_CLASS_LIGHT_GROUP, group, 0, {-1, 0, 1, -2, INT32_MIN, 5, -6});
  EXPECT_EQ(section(show(), "LightGroup 0"),
            "  References\n"
            "    emitters  Light 0, Shape 0, Shape 1, Light 1, none, Shape 5 (a free slot), "
            "Light 5 (a free slot)\n");
}

TEST_F(ShowScene, PrintsTheSidesOfDecalsInOrder) {
  for (int i = 0; i < 2; ++i) create(VRDM_CLASS_DECAL);
  const std::int32_t list = create(VRDM_CLASS_DECAL_LIST);
  setList(VRDM_CLASS_DECAL_LIST, list, 0, {1, -1, INT32_MIN, -2});
  EXPECT_EQ(section(show(), "DecalList 0"),
            "  References\n"
            "    decals  Decal 1 behind, Decal 0 in front, none, Decal 1 in front\n");
}

TEST_F(ShowScene, PrintsPlainListsEmptyListsAndUnsetSlots) {
  create(VRDM_CLASS_KEYFRAME);
  const std::int32_t full = create(VRDM_CLASS_KEYFRAME_LIST);
  setList(VRDM_CLASS_KEYFRAME_LIST, full, 0, {0, -1, 0});
  create(VRDM_CLASS_KEYFRAME_LIST);
  create(VRDM_CLASS_IMAGE_TASK);
  const std::string output = show();
  EXPECT_EQ(section(output, "KeyframeList 0"),
            "  References\n    keyframes  Keyframe 0, none, Keyframe 0\n");
  EXPECT_EQ(section(output, "KeyframeList 1"), "  References\n    keyframes  empty list\n");
  EXPECT_NE(section(output, "ImageTask 0").find("    camera  none, but one is needed\n"),
            std::string::npos);
}

TEST_F(ShowScene, PrintsFreeSlotsButDoesNotCountThem) {
  for (int i = 0; i < 3; ++i) create(VRDM_CLASS_TRANSFORMATION_GROUP);
  vrdmRemove(scene_, VRDM_CLASS_TRANSFORMATION_GROUP, 1);
  const std::int32_t shape = create(VRDM_CLASS_SHAPE);
  vrdmSetReference(scene_, VRDM_CLASS_SHAPE, shape, 3, 1);
  const std::string output = show();
  EXPECT_NE(output.find("\n  TransformationGroup        2\n"), std::string::npos);
  EXPECT_EQ(section(output, "TransformationGroup 1"), "  (free slot)\n");
  EXPECT_NE(section(output, "Shape 0").find("transformationGroup  TransformationGroup 1 (a free"),
            std::string::npos);
}

TEST_F(ShowScene, PrintsTheRecordAndTheSizeOfEveryKindOfAsset) {
  addAsset(VRDM_CLASS_MESH, std::array<std::int32_t, 4>{1, 3, 0, 3}, 152);
  addAsset(VRDM_CLASS_TEXTURE, std::array<std::int32_t, 5>{4, 1, 1, 0, 0x8000}, 7);
  addAsset(VRDM_CLASS_MATERIAL_GRAPH, std::array<std::uint64_t, 3>{9, 1, 2}, 9);
  const std::string output = show();
  EXPECT_NE(section(output, "Mesh 0")
                .find("descriptor  16 bytes, in 32-bit words: 1 3 0 3\n  data        152 bytes\n"),
            std::string::npos)
      << output;
  EXPECT_NE(
      section(output, "Texture 0")
          .find("descriptor  20 bytes, in 32-bit words: 4 1 1 0 32768\n  data        7 bytes\n"),
      std::string::npos)
      << output;
  EXPECT_NE(
      section(output, "MaterialGraph 0")
          .find("descriptor  24 bytes, in 32-bit words: 9 0 1 0 2 0\n  data        9 bytes\n"),
      std::string::npos)
      << output;
}

TEST_F(ShowScene, PrintsValuesOfEveryShape) {
  const TypeHandle type = parseType(
      "{ { float a; bool b; }[2] pairs; int[2,2] grid; int[30] many; void* nothing; int* number;"
      " enum { A; B; } kind; char[2] code; float3 v; { } empty; void*[0] none; (() => int) call; { "
      "int x; }* deep;"
      " int* outside; }");
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  const auto view = [&](std::uint32_t field) {
    vrntValueView_t found;
    vrntValueStructField(&found, vrntValueType(value), field);
    return found;
  };
  const vrntValueView_t number = view(4);
  const ValueHandle seven = parseValue("7");
  vrntValueSetReference(&value, &number, seven.get(), &error);
  const vrntValueView_t deep = view(11);
  const ValueHandle target = parseValue("{ x = -3; }");
  vrntValueSetReference(&value, &deep, target.get(), &error);
  const std::int32_t b = 1;
  vrntValueWrite(&value, view(5).offset, &b, sizeof b, &error);
  const std::uint64_t outside = 2 * 0xABC + 1;
  vrntValueWrite(&value, view(12).offset, &outside, sizeof outside, &error);
  ASSERT_EQ(error, nullptr);

  setValue(VRDM_CLASS_CAMERA, create(VRDM_CLASS_CAMERA), value);
  vrntValueDestroy(value);
  const std::string text = section(show(), "Camera 0");
  const std::size_t begin = text.find("  Value\n");
  ASSERT_NE(begin, std::string::npos) << text;
  EXPECT_EQ(
      text.substr(begin),
      "  Value\n"
      "    pairs\n"
      "      [0]\n"
      "        a    0.0\n"
      "        b    false\n"
      "      [1]\n"
      "        a    0.0\n"
      "        b    false\n"
      "    grid     [ 0, 0, 0, 0 | 2, 2 ]\n"
      "    many     int[30]\n"
      "      0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0"
      "  0  0\n"
      "    nothing  null\n"
      "    number   -> 7\n"
      "    kind     B\n"
      "    code     [ 0c, 0c ]\n"
      "    v        float3(0.0, 0.0, 0.0)\n"
      "    empty    { }\n"
      "    none     [ : void* ]\n"
      "    call     <<function>>\n"
      "    deep     ->\n"
      "      x      -3\n"
      "    outside  $(0x0000000000000abc:int)\n");
}

TEST_F(ShowScene, PrintsAValueThatIsNoStruct) {
  const ValueHandle value = parseValue("1.5");
  setValue(VRDM_CLASS_MATERIAL, create(VRDM_CLASS_MATERIAL), value.get());
  const std::string text = section(show(), "Material 0");
  EXPECT_NE(text.find("  Value\n    1.5\n"), std::string::npos) << text;
}

TEST_F(ShowScene, ShowsTextUpToItsEndAndNoControlCharacters) {
  const std::int32_t shape = create(VRDM_CLASS_SHAPE);
  vrntValue_t* group = vrdmGetDataValue(scene_, VRDM_CLASS_SHAPE, shape, 2);
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(&group, 0, "a\x1b[1m\0hidden", 12, &error);
  ASSERT_EQ(error, nullptr);
  ASSERT_TRUE(vrdmSetDataValue(scene_, VRDM_CLASS_SHAPE, shape, 2, group));
  vrntValueDestroy(group);
  const std::string text = section(show(), "Shape 0");
  EXPECT_NE(text.find("tag              \"a?[1m\"  (default \"\")\n"), std::string::npos) << text;
}

TEST_F(ShowScene, PrintsAnEmptyScene) {
  const std::string output = show();
  EXPECT_NE(output.find("\n  BakeTask                   0\n"), std::string::npos);
  EXPECT_NE(output.find("voxel_grid_resolution  128"), std::string::npos);
  EXPECT_EQ(output.find(" 0\n--"), std::string::npos);
}

}  // namespace
}  // namespace vornath_test
