// Scenes as text: the whole text for small scenes of every class, and what the stream has to do
// with it.
#include <algorithm>
#include <cstdlib>
#include <iomanip>
#include <locale>
#include <ostream>
#include <random>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "golden_catalogue.hpp"
#include "scenes.hpp"

namespace {

using namespace vornath_test;
using vrnt::UniqueId;
using vrnt::data::Scene;

constexpr char kId[] = "000102030405060708090a0b0c0d0e0f";

Scene sceneWithId() { return Scene(*UniqueId::parse(kId)); }

std::string dumped(const Scene& scene) {
  std::ostringstream stream;
  stream << scene;
  EXPECT_TRUE(stream.good());
  return stream.str();
}

std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

const std::string kRule = "---------------------------------------------\n";

// The scene's own lines, whose groups are the default ones and were never written.
std::string headWith(const std::string& id, const std::string& version) {
  return " Scene " + id + " [v" + version +
         "]\n"
         "\tdata\n"
         "\t\tCut planes: [vv0] { planes = [ " +
         repeated(
             "{ origin = float3(0.0, 0.0, 0.0); normal = float3(0.0, 0.0, 1.0); enabled = false; "
             "}, ",
             5) +
         "{ origin = float3(0.0, 0.0, 0.0); normal = float3(0.0, 0.0, 1.0); enabled = false; } ]; "
         "}\n"
         "\t\tRasterizer: [vv0] { voxel_grid_resolution = 128; compile_on_demand = false; }\n"
         "\t\tRaytracer: [vv0] { ray_epsilon = 0.0001; bvh_mode = AUTOMATIC : enum { DYNAMIC; "
         "STATIC; AUTOMATIC; ROBUST; }; }\n"
         "\t\tGeneral: [vv0] { infinite_ground = false; subdivision_edge_length = 0.0; "
         "subdivision_memory_limit = 0; }\n";
}

std::string head(int version) { return headWith(kId, std::to_string(version)); }

const std::string kMatrixText =
    "{ x = float4(1.0, 0.0, 0.0, 0.0); y = float4(0.0, 1.0, 0.0, 0.0); z = float4(0.0, 0.0, 1.0, "
    "0.0); w = float4(0.0, 0.0, 0.0, 1.0); }";
const std::string kProjectionText =
    "enum { KEEP; BOX; CUBIC; PLANAR; SPHERICAL; SPHERICAL_NORMALIZED; SPHERICAL_LATLONG; "
    "CYLINDRICAL; CYLINDRICAL_INFINITE; CYLINDRICAL_INFINITE_NORMALIZED; "
    "CYLINDRICAL_INFINITE_ANGLE_PRESERVING; CYLINDRICAL_LATLONG; RADIAL; }";
const std::string kTargetText =
    "{ tag = [ " + repeated("0c, ", 63) + "0c ]; custom_data = 0; visible_in_mask = true; }";
const std::string kSeenText =
    "reflection = TRUE : enum { FALSE; TRUE; ALL; }; refraction = TRUE : enum { FALSE; TRUE; ALL; "
    "}; transmission = TRUE : enum { FALSE; TRUE; ALL; }; ";

// As a stream with such a setting prints a pointer.
std::string pointer(const void* address, std::ios_base& (*setting)(std::ios_base&) = std::dec) {
  std::ostringstream stream;
  stream << setting << address;
  return stream.str();
}

std::string bytesAddress(const Scene& scene, std::uint32_t objectClass, std::int32_t index) {
  std::array<std::uint64_t, 3> desc = {};
  return pointer((*vrdmGetAssetStorage(&scene, objectClass, index, desc.data()))->data);
}

std::string valueAddress(const Scene& scene, std::uint32_t objectClass, std::int32_t index) {
  const ValueHandle value(vrdmGetInstanceValue(&scene, objectClass, index));
  return pointer(vrntValueBinary(value.get()));
}

void setValue(Scene& scene, std::uint32_t objectClass, std::int32_t index,
              const std::string& text) {
  const ValueHandle value = parseValue(text);
  ASSERT_TRUE(vrdmSetInstanceValue(&scene, objectClass, index, value.get()));
}

template <std::size_t Count>
void addAsset(Scene& scene, std::uint32_t objectClass, std::array<std::uint32_t, Count> words,
              const std::string& bytes) {
  std::array<std::uint32_t, 6> desc = {};
  std::copy(words.begin(), words.end(), desc.begin());
  const StorageHandle storage = newStorage(bytes);
  AssetStorage* handle = storage.get();
  vrdmAddAsset(&scene, objectClass, desc.data(), &handle);
}

// Writes a word into a group of an object.
void setWord(Scene& scene, std::uint32_t objectClass, std::int32_t index, std::uint32_t group,
             std::size_t offset, std::uint32_t word) {
  std::string bytes = groupBytes(&scene, objectClass, index, group);
  ASSERT_LE(offset + sizeof(word), bytes.size());
  std::memcpy(bytes.data() + offset, &word, sizeof(word));
  const ValueHandle value = groupValue(objectClass, group, bytes);
  ASSERT_TRUE(vrdmSetDataValue(&scene, objectClass, index, group, value.get()));
}

// SHA-256 digests that the standard gives: of "abc", of a text of two blocks, of a million 'a'.
constexpr char kDigestOfAbc[] = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
constexpr char kTwoBlocks[] = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
constexpr char kDigestOfTwoBlocks[] =
    "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1";
constexpr char kDigestOfAMillion[] =
    "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0";

TEST(SceneDump, OfANewSceneIsItsSixLines) {
  const std::string text = dumped(sceneWithId());
  EXPECT_EQ(text, head(0));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 6);
}

TEST(SceneDump, ShowsTheGroupsOfTheSceneAndTheirCounters) {
  Scene scene = sceneWithId();
  scene.data.general = {-1, 0.25F, 7};
  scene.data.rasterizer.compile_on_demand = 1;
  scene.data.raytracer.bvh_mode = 3;
  scene.versions.version = 4000000000U;
  scene.versions.groups = {1, 22, 333, 3};
  EXPECT_EQ(dumped(scene),
            " Scene 000102030405060708090a0b0c0d0e0f [v4000000000]\n"
            "\tdata\n"
            "\t\tCut planes: [vv1] { planes = [ " +
                repeated("{ origin = float3(0.0, 0.0, 0.0); normal = float3(0.0, 0.0, 1.0); "
                         "enabled = false; }, ",
                         5) +
                "{ origin = float3(0.0, 0.0, 0.0); normal = float3(0.0, 0.0, 1.0); enabled = "
                "false; } ]; }\n"
                "\t\tRasterizer: [vv22] { voxel_grid_resolution = 128; compile_on_demand = true; "
                "}\n"
                "\t\tRaytracer: [vv333] { ray_epsilon = 0.0001; bvh_mode = ROBUST : enum { "
                "DYNAMIC; STATIC; AUTOMATIC; ROBUST; }; }\n"
                "\t\tGeneral: [vv3] { infinite_ground = true; subdivision_edge_length = 0.25; "
                "subdivision_memory_limit = 7; }\n");
}

TEST(SceneDump, NamesEachClassInItsPlaceAlsoWhereAllSlotsAreFree) {
  Scene scene = sceneWithId();
  std::string expected = head(36);
  for (const char* name : {"CameraPrograms", "MaterialPrograms", "LightPrograms", "Meshs",
                           "Textures", "MaterialGraphs", "Keyframes", "KeyframeLists", "Cameras",
                           "TransformationGroups", "LightGroups", "Lights", "Materials", "Decals",
                           "DecalLists", "Shapes", "ImageTasks", "BakeTasks"}) {
    expected += std::string("\n ") + name + " [v2]\n" + kRule + "[0] <empty>\n";
  }
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    addObject(&scene, i);
    vrdmRemove(&scene, i, 0);
  }
  EXPECT_EQ(dumped(scene), expected);
}

TEST(SceneDump, OfARemovedProgramIsAFreeSlot) {
  Scene scene = sceneWithId();
  vrdmAddProgram(&scene, VRDM_CLASS_CAMERA_PROGRAM, "text");
  vrdmRemove(&scene, VRDM_CLASS_CAMERA_PROGRAM, 0);
  EXPECT_EQ(dumped(scene), head(2) + "\n CameraPrograms [v2]\n" + kRule + "[0] <empty>\n");
}

TEST(SceneDump, ShowsProgramsAsTheyStand) {
  Scene scene = sceneWithId();
  vrdmAddProgram(&scene, VRDM_CLASS_MATERIAL_PROGRAM, "abc");
  vrdmAddProgram(&scene, VRDM_CLASS_MATERIAL_PROGRAM, "removed");
  vrdmAddProgram(&scene, VRDM_CLASS_MATERIAL_PROGRAM, "");
  vrdmRemove(&scene, VRDM_CLASS_MATERIAL_PROGRAM, 1);
  const std::string lines = "// \xC3\xA9\n\tvoid main() {}\n";
  vrdmAddProgram(&scene, VRDM_CLASS_LIGHT_PROGRAM, lines.c_str());
  std::ostringstream lightId;
  lightId << UniqueId::hash(lines.c_str());
  EXPECT_EQ(dumped(scene), head(5) + "\n MaterialPrograms [v4]\n" + kRule +
                               "[0] MaterialProgram [v8275618601ff911fb1d3bbaae5a9276d]\n"
                               "\tabc\n"
                               "[1] <empty>\n"
                               "[2] MaterialProgram [v2ac0ee3f15aeaf1a502fad4ae7a98832]\n"
                               "\t\n"
                               "\n LightPrograms [v1]\n" +
                               kRule + "[0] LightProgram [v" + lightId.str() + "]\n\t" + lines +
                               "\n");
}

TEST(SceneDump, ShowsAssets) {
  Scene scene = sceneWithId();
  addAsset<4>(scene, VRDM_CLASS_MESH, {1, 3, 0, 3}, "abc");
  addAsset<5>(scene, VRDM_CLASS_TEXTURE, {4, 1, 1, 3, 0x8000}, kTwoBlocks);
  addAsset<5>(scene, VRDM_CLASS_TEXTURE, {2, 3, 1, 5, 5}, std::string(1000000, 'a'));
  addAsset<6>(scene, VRDM_CLASS_MATERIAL_GRAPH, {10, 0, 20, 0, 30, 1}, "abc");
  // Of the second texture only that its format and layout have no name.
  const std::size_t nameless =
      vrnt::detail::TextureDesc{2, 3, 1, static_cast<vrnt::TextureFormat>(5),
                                static_cast<vrnt::TextureLayout>(5)}
          .size();
  EXPECT_EQ(dumped(scene),
            head(4) + "\n Meshs [v1]\n" + kRule +  //
                "[0] Mesh [v" + bytesAddress(scene, VRDM_CLASS_MESH, 0) +
                "]\n"
                "\ttriangles: 1\n"
                "\tvertices: 3\n"
                "\ttexcoord sets: 0\n"
                "\tstorage: <152 bytes of data>\n"
                "\tsha256: " +
                kDigestOfAbc +
                "\n"
                "\n Textures [v2]\n" +
                kRule +  //
                "[0] Texture [v" + bytesAddress(scene, VRDM_CLASS_TEXTURE, 0) +
                "]\n"
                "\tsize: 4 x 1\n"
                "\tformat: SRGBA8\n"
                "\tlayout: 2D-Mipmap\n"
                "\tstorage: <28 bytes of data>\n"
                "\tsha256: " +
                kDigestOfTwoBlocks +
                "\n"
                "[1] Texture [v" +
                bytesAddress(scene, VRDM_CLASS_TEXTURE, 1) +
                "]\n"
                "\tsize: 2 x 3\n"
                "\tformat: Unknown\n"
                "\tlayout: Unknown\n"
                "\tstorage: <" +
                std::to_string(nameless) +
                " bytes of data>\n"
                "\tsha256: " +
                kDigestOfAMillion +
                "\n"
                "\n MaterialGraphs [v1]\n" +
                kRule +  //
                "[0] MaterialGraph [v" + bytesAddress(scene, VRDM_CLASS_MATERIAL_GRAPH, 0) +
                "]\n"
                "\tbinary size: 10\n"
                "\tparameter offset: 4294967326\n"
                "\troot offset: 20\n"
                "\tstorage: <10 bytes of data>\n"
                "\tsha256: " +
                kDigestOfAbc + "\n");
}

TEST(SceneDump, ShowsAnAssetOfNoBytesAsAFreeSlot) {
  Scene scene = sceneWithId();
  addGraph(&scene, "");
  const StorageHandle none(vrdmAssetStorageWrap(nullptr, 3, nullptr));
  AssetStorage* handle = none.get();
  const std::array<std::uint64_t, 3> desc = {3, 0, 0};
  EXPECT_EQ(vrdmAddAsset(&scene, VRDM_CLASS_MATERIAL_GRAPH, desc.data(), &handle), 1U);
  EXPECT_TRUE(vrdmValid(&scene, VRDM_CLASS_MATERIAL_GRAPH, 0));
  EXPECT_FALSE(vrdmValid(&scene, VRDM_CLASS_MATERIAL_GRAPH, 1));
  EXPECT_EQ(dumped(scene), head(2) + "\n MaterialGraphs [v2]\n" + kRule +
                               "[0] <empty>\n"
                               "[1] <empty>\n");
}

TEST(SceneDump, ShowsKeyframes) {
  Scene scene = sceneWithId();
  addInstance(&scene, VRDM_CLASS_KEYFRAME);
  addInstance(&scene, VRDM_CLASS_KEYFRAME);
  setWord(scene, VRDM_CLASS_KEYFRAME, 1, 0, 4, 0xC0200000);  // -2.5
  setWord(scene, VRDM_CLASS_KEYFRAME, 1, 0, 8, 0x7FC00000);  // a NaN
  const std::string end =
      "sx = 1.0; sy = 1.0; sz = 1.0; qi = 0.0; qj = 0.0; qk = 0.0; qr = 1.0; tx = 0.0; ty = 0.0; "
      "tz = 0.0; }\n";
  EXPECT_EQ(dumped(scene), head(4) + "\n Keyframes [v4]\n" + kRule +
                               "[0] Keyframe [vv1]\n"
                               "\tdata\n"
                               "\t\tTransformation: [vv1] { px = 0.0; py = 0.0; pz = 0.0; " +
                               end +
                               "[1] Keyframe [vv3]\n"
                               "\tdata\n"
                               "\t\tTransformation: [vv3] { px = 0.0; py = -2.5; pz = NaN; " +
                               end);
}

TEST(SceneDump, ShowsListsOfKeyframes) {
  Scene scene = sceneWithId();
  for (int i = 0; i < 3; ++i) addInstance(&scene, VRDM_CLASS_KEYFRAME_LIST);
  setList(&scene, VRDM_CLASS_KEYFRAME_LIST, 1, 0, {12, -1, 0, -7});
  setList(&scene, VRDM_CLASS_KEYFRAME_LIST, 2, 0, {5});
  EXPECT_EQ(dumped(scene), head(7) + "\n KeyframeLists [v7]\n" + kRule +
                               "[0] KeyframeList [vv1]\n"
                               "\treferences [vv1]\n"
                               "\t\tKeyframes: [ ]\n"
                               "[1] KeyframeList [vv3]\n"
                               "\treferences [vv3]\n"
                               "\t\tKeyframes: [ 12, -1, 0, -7, ]\n"
                               "[2] KeyframeList [vv3]\n"
                               "\treferences [vv3]\n"
                               "\t\tKeyframes: [ 5, ]\n");
}

TEST(SceneDump, ShowsCameras) {
  Scene scene = sceneWithId();
  addInstance(&scene, VRDM_CLASS_CAMERA);
  addInstance(&scene, VRDM_CLASS_CAMERA);
  setValue(scene, VRDM_CLASS_CAMERA, 0, "{ a = 1.5; b = [ 1, 2 ]; }");
  setValue(scene, VRDM_CLASS_CAMERA, 1, "{ }");
  vrdmSetReference(&scene, VRDM_CLASS_CAMERA, 1, 0, 3);
  vrdmSetReference(&scene, VRDM_CLASS_CAMERA, 1, 1, 4);
  vrdmSetReference(&scene, VRDM_CLASS_CAMERA, 1, 2, 0x80000000);
  setWord(scene, VRDM_CLASS_CAMERA, 1, 2, 0, 1);           // "active" of "Background"
  setWord(scene, VRDM_CLASS_CAMERA, 1, 1, 0, 0x7F800000);  // "near_distance" of "General"
  const std::string backplate = "\t\tBackplate: [vv1] " + goldenText("Camera", "Backplate") + "\n";
  EXPECT_EQ(dumped(scene),
            head(9) + "\n Cameras [v9]\n" + kRule +
                "[0] Camera [vv2]\n"
                "\treferences [vv1]\n"
                "\t\tCameraProgram: -1\n"
                "\t\tTexture: null\n"
                "\t\tKeyframeList: null\n"
                "\tdata\n"
                "\t\tTransformation: [vv1] { matrix = " +
                kMatrixText +
                "; }\n"
                "\t\tGeneral: [vv1] " +
                goldenText("Camera", "General") +
                "\n"
                "\t\tBackground: [vv1] { active = false; red = 0.0; green = 0.0; blue = 0.0; }\n" +
                backplate + "\tvalue: [v" + valueAddress(scene, VRDM_CLASS_CAMERA, 0) +
                "] { a = 1.5; b = [ 1, 2 ]; }\n"
                "[1] Camera [vv7]\n"
                "\treferences [vv4]\n"
                "\t\tCameraProgram: 3\n"
                "\t\tTexture: 4\n"
                "\t\tKeyframeList: -2147483648\n"
                "\tdata\n"
                "\t\tTransformation: [vv1] { matrix = " +
                kMatrixText +
                "; }\n"
                "\t\tGeneral: [vv2] " +
                goldenText("Camera", "General", {{"near_distance", "inf"}}) +
                "\n"
                "\t\tBackground: [vv2] { active = true; red = 0.0; green = 0.0; blue = 0.0; }\n" +
                backplate + "\tvalue: [v" + valueAddress(scene, VRDM_CLASS_CAMERA, 1) + "] { }\n");
}

TEST(SceneDump, ShowsTransformationGroups) {
  Scene scene = sceneWithId();
  addInstance(&scene, VRDM_CLASS_TRANSFORMATION_GROUP);
  EXPECT_EQ(dumped(scene), head(1) + "\n TransformationGroups [v1]\n" + kRule +
                               "[0] TransformationGroup [vv1]\n"
                               "\tdata\n"
                               "\t\tTransformation: [vv1] { matrix = " +
                               kMatrixText + "; }\n");
}

TEST(SceneDump, ShowsEmittersWithTheirKinds) {
  Scene scene = sceneWithId();
  for (int i = 0; i < 3; ++i) addInstance(&scene, VRDM_CLASS_LIGHT_GROUP);
  setList(&scene, VRDM_CLASS_LIGHT_GROUP, 0, 0, {3, -2});
  setList(&scene, VRDM_CLASS_LIGHT_GROUP, 1, 0, {-1, 0, kNoTarget, INT32_MAX});
  EXPECT_EQ(dumped(scene),
            head(7) + "\n LightGroups [v7]\n" + kRule +
                "[0] LightGroup [vv3]\n"
                "\treferences [vv3]\n"
                "\t\tEmitters: [ 3 (Shape), 1 (Light), ]\n"
                "[1] LightGroup [vv3]\n"
                "\treferences [vv3]\n"
                "\t\tEmitters: [ 0 (Light), 0 (Shape), 2147483647 (Light), 2147483647 (Shape), ]\n"
                "[2] LightGroup [vv1]\n"
                "\treferences [vv1]\n"
                "\t\tEmitters: [ ]\n");
}

TEST(SceneDump, ShowsLights) {
  Scene scene = sceneWithId();
  addInstance(&scene, VRDM_CLASS_LIGHT);
  setList(&scene, VRDM_CLASS_LIGHT, 0, 2, {1, 1, -1});
  vrdmSetReference(&scene, VRDM_CLASS_LIGHT, 0, 1, 6);
  setValue(scene, VRDM_CLASS_LIGHT, 0, "7");
  EXPECT_EQ(dumped(scene),
            head(5) + "\n Lights [v5]\n" + kRule +
                "[0] Light [vv5]\n"
                "\treferences [vv4]\n"
                "\t\tLightProgram: -1\n"
                "\t\tTransformationGroup: 6\n"
                "\t\tTextures: [ 1, 1, -1, ]\n"
                "\tdata\n"
                "\t\tTransformation: [vv1] { matrix = " +
                kMatrixText +
                "; }\n"
                "\t\tGeneral: [vv1] { matte = false; unused = false; }\n"
                "\t\tTarget: [vv1] " +
                kTargetText +
                "\n"
                "\t\tSampling probability: [vv1] { multiplier = 1.0; }\n"
                "\t\tView space: [vv1] { translation = false; rotation = false; }\n"
                "\t\tVisibility: [vv1] { visible_to = { camera = true; " +
                kSeenText +
                "diffuse_glossy = true; indirect_illumination = true; direct_light = true; }; cast "
                "= { shadow = true; caustics = true; }; }\n"
                "\tvalue: [v" +
                valueAddress(scene, VRDM_CLASS_LIGHT, 0) + "] 7\n");
}

TEST(SceneDump, ShowsMaterials) {
  Scene scene = sceneWithId();
  addInstance(&scene, VRDM_CLASS_MATERIAL);
  addInstance(&scene, VRDM_CLASS_MATERIAL);
  setValue(scene, VRDM_CLASS_MATERIAL, 0, "{ a = 1; }");
  setValue(scene, VRDM_CLASS_MATERIAL, 1, "{ a = &2; }");
  vrdmSetReference(&scene, VRDM_CLASS_MATERIAL, 1, 0, 0);
  vrdmSetReference(&scene, VRDM_CLASS_MATERIAL, 1, 1, 9);
  setList(&scene, VRDM_CLASS_MATERIAL, 1, 2, {2});
  EXPECT_EQ(dumped(scene), head(8) + "\n Materials [v8]\n" + kRule +
                               "[0] Material [vv2]\n"
                               "\treferences [vv1]\n"
                               "\t\tMaterialProgram: null\n"
                               "\t\tMaterialGraph: null\n"
                               "\t\tTextures: [ ]\n"
                               "\tvalue: [v" +
                               valueAddress(scene, VRDM_CLASS_MATERIAL, 0) +
                               "] { a = 1; }\n"
                               "[1] Material [vv6]\n"
                               "\treferences [vv5]\n"
                               "\t\tMaterialProgram: 0\n"
                               "\t\tMaterialGraph: 9\n"
                               "\t\tTextures: [ 2, ]\n"
                               "\tvalue: [v" +
                               valueAddress(scene, VRDM_CLASS_MATERIAL, 1) + "] { a = &2; }\n");
}

TEST(SceneDump, ShowsDecals) {
  Scene scene = sceneWithId();
  addInstance(&scene, VRDM_CLASS_DECAL);
  vrdmSetReference(&scene, VRDM_CLASS_DECAL, 0, 1, 8);
  EXPECT_EQ(dumped(scene),
            head(2) + "\n Decals [v2]\n" + kRule +
                "[0] Decal [vv2]\n"
                "\treferences [vv2]\n"
                "\t\tMaterial: -1\n"
                "\t\tMaterial: 8\n"
                "\t\tTransformationGroup: null\n"
                "\tdata\n"
                "\t\tTransformation: [vv1] { matrix = " +
                kMatrixText +
                "; }\n"
                "\t\tProjection: [vv1] { mode = PLANAR : " +
                kProjectionText +
                "; direction = OUTSIDE_IN : enum { OUTSIDE_IN; INSIDE_OUT; BIDIRECTIONAL; }; "
                "clipping_box = { min = [ -inf, -inf, -inf ]; max = [ inf, inf, inf ]; }; }\n");
}

TEST(SceneDump, ShowsDecalsInOrderWithTheirSides) {
  Scene scene = sceneWithId();
  addInstance(&scene, VRDM_CLASS_DECAL_LIST);
  addInstance(&scene, VRDM_CLASS_DECAL_LIST);
  setList(&scene, VRDM_CLASS_DECAL_LIST, 0, 0, {0, -1});
  setList(&scene, VRDM_CLASS_DECAL_LIST, 1, 0, {kNoTarget, 5, -6});
  EXPECT_EQ(dumped(scene), head(6) + "\n DecalLists [v6]\n" + kRule +
                               "[0] DecalList [vv3]\n"
                               "\treferences [vv3]\n"
                               "\t\tOrderedDecals: [ 0 (Back), 0 (Front), ]\n"
                               "[1] DecalList [vv3]\n"
                               "\treferences [vv3]\n"
                               "\t\tOrderedDecals: [ 2147483647 (Front), 5 (Back), 5 (Front), ]\n");
}

TEST(SceneDump, ShowsUnsetSlots) {
  Scene scene = sceneWithId();
  addInstance(&scene, VRDM_CLASS_SHAPE);
  EXPECT_NE(dumped(scene).find("\treferences [vv1]\n"
                               "\t\tMaterial: -1\n"
                               "\t\tMesh: null\n"
                               "\t\tLightGroup: null\n"
                               "\t\tTransformationGroup: null\n"
                               "\t\tDecalList: null\n"
                               "\t\tTexture: null\n"
                               "\t\tTexture: null\n"
                               "\t\tMaterial: null\n"
                               "\t\tKeyframeList: null\n"
                               "\tdata\n"),
            std::string::npos)
      << dumped(scene);
}

TEST(SceneDump, ShowsShapes) {
  Scene scene = sceneWithId();
  addInstance(&scene, VRDM_CLASS_SHAPE);
  for (std::uint32_t slot = 0; slot < 9; ++slot) {
    // Slot 1, the mesh, and slot 8, the keyframes, stay unset.
    if (slot != 1 && slot != 8) vrdmSetReference(&scene, VRDM_CLASS_SHAPE, 0, slot, 20 + slot);
  }
  setWord(scene, VRDM_CLASS_SHAPE, 0, 2, 0, 0x00636261);  // "abc" in the tag of "Target"
  EXPECT_EQ(
      dumped(scene),
      head(9) + "\n Shapes [v9]\n" + kRule +
          "[0] Shape [vv9]\n"
          "\treferences [vv8]\n"
          "\t\tMaterial: 20\n"
          "\t\tMesh: null\n"
          "\t\tLightGroup: 22\n"
          "\t\tTransformationGroup: 23\n"
          "\t\tDecalList: 24\n"
          "\t\tTexture: 25\n"
          "\t\tTexture: 26\n"
          "\t\tMaterial: 27\n"
          "\t\tKeyframeList: null\n"
          "\tdata\n"
          "\t\tTransformation: [vv1] { matrix = " +
          kMatrixText +
          "; }\n"
          "\t\tGeneral: [vv1] { geometric_representation = MESH : enum { MESH; RECTANGLE; DISK; "
          "SPHERE; CYLINDER; CUBE; }; edge_radius = 0.0; time_start = 0.0; time_end = 1.0; "
          "subdivision_edge_length = 0.0; }\n"
          "\t\tTarget: [vv2] { tag = [ 97c, 98c, 99c, " +
          repeated("0c, ", 60) +
          "0c ]; custom_data = 0; visible_in_mask = true; }\n"
          "\t\tAmbient occlusion: [vv1] { tmax_multiplier = 1.0; transparent_appears_diffuse = "
          "false; }\n"
          "\t\tCut planes: [vv1] { capped = false; cut = [ true, true, true, true, true, true ]; "
          "}\n"
          "\t\tFace culling: [vv1] { mode = DISABLED : enum { DISABLED; FRONT; BACK; }; "
          "only_primary_rays = true; }\n"
          "\t\tMatte objects: [vv1] { matte = false; ground = false; }\n"
          "\t\tNested priority: [vv1] { priority = 0; }\n"
          "\t\tProcedural UVs: [vv1] { mode = KEEP : " +
          kProjectionText + "; uv_transformation = " + kMatrixText +
          "; }\n"
          "\t\tRasterizer: [vv1] { voxel_ao = { epsilon = 1.0; max_distance = 0.5; }; "
          "accurate_reflections = false; }\n"
          "\t\tHemilux: [vv1] { mode = DISABLED : enum { DISABLED; ILLUMINATION; OCCLUSION; }; "
          "texture = { index = -1; }; enable_tone_mapping = false; tone_mapping_texture = { index "
          "= -1; }; split_value = 0.5; split_strength = 0.5; }\n"
          "\t\tSampling probability: [vv1] { multiplier = 1.0; }\n"
          "\t\tView space: [vv1] { translation = false; rotation = false; scaling = false; }\n"
          "\t\tVisibility: [vv1] { visible_to = { camera = true; " +
          kSeenText +
          "indirect_illumination = true; photons = true; direct_light = true; light_tracing = "
          "true; }; cast = { direct_shadow = true; indirect_illumination = true; caustics = true; "
          "}; receive = { shadow = true; indirect_illumination = true; caustics = true; }; }\n");
}

// The groups that both kinds of task have, never written.
const std::string kTaskGroups =
    "\tdata\n"
    "\t\tGeneral: [vv1] { baking_offset = 0.0001; cut_planes = { only_primary = false; render_caps "
    "= false; }; }\n"
    "\t\tAccumulation: [vv1] { reconstruction_gauss_filter = { enable = false; alpha = 1.7; radius "
    "= 1.5; }; clamping_technique = LUMINANCE : enum { LUMINANCE; EQUAL; }; clamp_value = inf; "
    "clamp_multiplier = 1.0; brightness = 1.0; transparent_background = false; accumulation = "
    "true; base_seed = 0; }\n"
    "\t\tRender region: [vv1] { left = 0.0; bottom = 0.0; width = 1.0; height = 1.0; }\n"
    "\t\tGlobal illumination: [vv1] { pixel_subsampling = 1; russian_roulette_termination = { "
    "scheme = ADAPTIVE : enum { FIXED; ADAPTIVE; }; start_depth = 2; fixed_probability = 0.1; }; "
    "light_importance_sampling = { importance_method = EQUAL : enum { EQUAL; PROPORTIONAL; }; "
    "meshlight_sampling_ratio = 1.0; }; glossy_threshold = 0.5; max_bounces = 32; "
    "glass_casts_shadows = true; caustic_paths = true; final_gathering = false; caustic_photons = "
    "false; lbis_sampling = false; }\n"
    "\t\tPhoton maps: [vv1] { final_gather_map = { num_started_photon_paths = 1000000; max_bounces "
    "= 8; radius = 0.01; recompute_photon_map = false; precompute_irradiance = false; }; "
    "caustic_map = { num_started_photon_paths = 1000000; max_bounces = 8; radius = 0.001; "
    "recompute_photon_map = false; precompute_irradiance = false; }; visualization = NONE : enum { "
    "NONE; CAUSTIC_MAP; PHOTON_MAP; }; }\n"
    "\t\tAmbient occlusion: [vv1] { num_samples = 16; tmax = 1.0; ignore_bumpmapping = false; }\n"
    "\t\tWavefront: [vv1] { max_bounces = 32; sample_IBL = true; light_tracing = false; "
    "lighttracing_visualisation = ALL : enum { ALL; PATHTRACING; LIGHTTRACING; PHOTONMAPPING; "
    "PATHTRACING_MIS; LIGHTTRACING_MIS; PHOTONMAPPING_MIS; PT_MIS_PASS; LTPM_PASS; }; sss_next_ee "
    "= true; photon_mapping = false; photon_radius = 0.01; refraction_in_alpha = false; "
    "glossy_photon_mapping = true; gloss_pdf = 1.0; rounded_edges = true; focused_light_particles "
    "= false; spectral_wavelength = 0.0; refraction_override = false; }\n"
    "\t\tRealtime gi: [vv1] { max_bounces = 12; max_cutout_bounces = 8; max_indirect_bounces = 4; "
    "denoising = 1.0; taa = 1.0; motion_blur = 0.0; pass_filter = DISABLED : enum { DISABLED; "
    "PRIMARY; FIRST_SECONDARY; LAST_SECONDARY; CLEARCOAT; INDIRECT; }; debug_output_overlay = "
    "int4(0, 0, 0, 0); direct_light = { num_meshlight_candidates = 4; num_virtuallight_candidates "
    "= 1; num_envlight_candidates = 1; num_bsdf_samples = 4; num_spatial_samples = 4; "
    "num_disocclusion_boost_samples = 8; spatial_radius = 32; history_length = 20; perturbation = "
    "0.01; }; indirect_light = { nee_meshlight_weight = 1.0; nee_virtuallight_weight = 1.0; "
    "nee_environment_weight = 1.0; num_spatial_samples = 2; spatial_radius = 64; history_length = "
    "50; spatial_pw_mis = 1.0; temporal_pw_mis = 0.0; min_reconnect_distance = 2.0; "
    "min_reconnect_roughness = 0.4; max_resampling_pdf_change = 5.0; firefly_filter = 0.0; "
    "clamp_multiplier = 150.0; reprojection_radius = 64; }; direct_light_denoiser = { "
    "diffuse_max_accumulated_frame_num = 63; specular_max_accumulated_frame_num = 63; "
    "diffuse_prepass_blur_radius = 0.0; specular_prepass_blur_radius = 50.0; firefly_filter = "
    "false; }; indirect_light_denoiser = { max_accumulated_frame_num = 63; "
    "max_fast_accumulated_frame_num = 6; history_fix_frame_num = 3; diffuse_prepass_blur_radius = "
    "30.0; specular_prepass_blur_radius = 50.0; blur_radius = 50.0; firefly_filter = false; "
    "reference_accumulation = false; performance_mode = false; "
    "indirect_light_denoiser_antilag_intensity = { threshold_min = 0.03; threshold_max = 0.2; "
    "sigma_scale = 1.0; sensitivity_to_darkness = 0.0; enable = false; }; "
    "indirect_light_denoiser_antilag_distance = { threshold_min = 0.03; threshold_max = 0.2; "
    "sigma_scale = 1.0; sensitivity_to_darkness = 0.1; enable = true; }; }; kernel_debug = { flags "
    "= 1; launch_id = int2(0, 0); }; light_presampling = { bucket_count = 128; bucket_size = 1024; "
    "tile_size = 8; }; denoiser = AUTO : enum { NRD_UPSCALER; NRD_TAA; DLSS; AUTO; }; upscaling = "
    "AUTO : enum { NONE; QUALITY; BALANCED; PERFORMANCE; ULTRA_PERFORMANCE; AUTO; }; "
    "artistic_sky_sampling_probability = 0.8; dlss_input_clamping = 0.0; }\n"
    "\t\tRasterizer: [vv1] { visualization_mode = SCENE : enum { SCENE; VOXEL_GRID; }; shadows = "
    "true; ambient_occlusion = { darkness = 1.0; edge_intensity = 1.0; edge_depth_threshold = "
    "0.01; }; multisampling_antialiasing = { opaque = false; transparent = false; num_samples = 2; "
    "clamp_value = inf; }; fullscreen_antialiasing = false; ibl_sampling_mode = { progressive = "
    "true; samples = 16; }; backface_highlighting_color = { red = 0.0; green = 0.0; blue = 0.0; "
    "alpha = 0.0; }; }\n"
    "\t\tWhitted raytracing: [vv1] { pixel_subsampling = 1; ray_contribution_threshold = 0.001; "
    "glossy_threshold = 0.99; max_bounces = 4; ibl_sampling = { progressive = true; samples = 16; "
    "}; }\n"
    "\t\tDiagnostic: [vv1] { max_iterations = 1024; }\n";

TEST(SceneDump, ShowsTasks) {
  Scene scene = sceneWithId();
  addInstance(&scene, VRDM_CLASS_IMAGE_TASK);
  vrdmSetReference(&scene, VRDM_CLASS_IMAGE_TASK, 0, 0, 2);
  addInstance(&scene, VRDM_CLASS_BAKE_TASK);
  setList(&scene, VRDM_CLASS_BAKE_TASK, 0, 0, {3, 1});
  EXPECT_EQ(dumped(scene), head(5) + "\n ImageTasks [v2]\n" + kRule +
                               "[0] ImageTask [vv2]\n"
                               "\treferences [vv2]\n"
                               "\t\tCamera: 2\n" +
                               kTaskGroups + "\n BakeTasks [v3]\n" + kRule +
                               "[0] BakeTask [vv3]\n"
                               "\treferences [vv3]\n"
                               "\t\tShapes: [ 3, 1, ]\n" +
                               kTaskGroups);
}

// A scene with numbers of every sort that the dump itself prints.
Scene sceneOfNumbers() {
  Scene scene = sceneWithId();
  addAsset<4>(scene, VRDM_CLASS_MESH, {1234567, 0xFFFFFFFF, 10, 0}, "abc");
  addInstance(&scene, VRDM_CLASS_KEYFRAME_LIST);
  setList(&scene, VRDM_CLASS_KEYFRAME_LIST, 0, 0, {12, -1});
  addInstance(&scene, VRDM_CLASS_DECAL_LIST);
  setList(&scene, VRDM_CLASS_DECAL_LIST, 0, 0, {10, -11});
  addInstance(&scene, VRDM_CLASS_MATERIAL);
  vrdmSetReference(&scene, VRDM_CLASS_MATERIAL, 0, 0, 31);
  setValue(scene, VRDM_CLASS_MATERIAL, 0, "{ a = 1234567; b = 31; c = 1.5; }");
  return scene;
}

struct Numbers {
  std::string id = kId;
  std::string zero = "0", one = "1", ten = "10", three = "3", two = "2";
  std::string triangles, vertices, size, twelve, none, thirtyOne;
  std::string version;
};

// 4 * (3 * 1234567 - 9 - 2 * 10) bytes.
constexpr std::size_t kBytesOfNumbers = 14814688;

std::string expectedNumbers(const Numbers& n, const std::string& bytesAt,
                            const std::string& valueAt) {
  return headWith(n.id, n.version) + "\n Meshs [v" + n.one + "]\n" + kRule + "[" + n.zero +
         "] Mesh [v" + bytesAt + "]\n\ttriangles: " + n.triangles + "\n\tvertices: " + n.vertices +
         "\n\ttexcoord sets: " + n.ten + "\n\tstorage: <" + n.size +
         " bytes of data>\n\tsha256: " + kDigestOfAbc + "\n\n KeyframeLists [v" + n.three + "]\n" +
         kRule + "[" + n.zero + "] KeyframeList [vv" + n.three + "]\n\treferences [vv" + n.three +
         "]\n\t\tKeyframes: [ " + n.twelve + ", " + n.none + ", ]\n\n Materials [v" + n.three +
         "]\n" + kRule + "[" + n.zero + "] Material [vv" + n.three + "]\n\treferences [vv" + n.two +
         "]\n\t\tMaterialProgram: " + n.thirtyOne +
         "\n\t\tMaterialGraph: null\n\t\tTextures: [ ]\n\tvalue: [v" + valueAt +
         "] { a = 1234567; b = 31; c = 1.5; }\n\n DecalLists [v" + n.three + "]\n" + kRule + "[" +
         n.zero + "] DecalList [vv" + n.three + "]\n\treferences [vv" + n.three +
         "]\n\t\tOrderedDecals: [ " + n.ten + " (Back), " + n.ten + " (Front), ]\n";
}

const void* bytesOf(const Scene& scene) {
  return scene.container<vrnt::detail::MeshDesc>().at(0).storage.get()->data;
}
const void* valueOf(const Scene& scene) {
  return scene.container<vrnt::data::MaterialDesc>().at(0).value.get();
}

TEST(SceneDumpSettings, ReachTheNumbersInHexadecimal) {
  const Scene scene = sceneOfNumbers();
  std::ostringstream stream;
  stream << std::hex << scene;
  Numbers n;
  n.version = "a";
  n.ten = "a";
  n.triangles = "12d687";
  n.vertices = "ffffffff";
  n.size = "e20de0";
  n.twelve = "c";
  n.none = "ffffffff";
  n.thirtyOne = "1f";
  static_assert(kBytesOfNumbers == 0xE20DE0);
  EXPECT_EQ(stream.str(), expectedNumbers(n, pointer(bytesOf(scene)), pointer(valueOf(scene))));
  EXPECT_EQ(stream.flags() & std::ios::basefield, std::ios::hex);
}

TEST(SceneDumpSettings, ReachTheNumbersWithBaseAndInUpperCase) {
  const Scene scene = sceneOfNumbers();
  std::ostringstream stream;
  stream << std::hex << std::showbase << std::uppercase << scene;
  Numbers n;
  // Each byte of an id is a number of its own, of which zero has no base.
  n.id = "000X10X20X30X40X50X60X70X80X90XA0XB0XC0XD0XE0XF";
  n.version = "0XA";
  n.one = "0X1";
  n.two = "0X2";
  n.three = "0X3";
  n.ten = "0XA";
  n.triangles = "0X12D687";
  n.vertices = "0XFFFFFFFF";
  n.size = "0XE20DE0";
  n.twelve = "0XC";
  n.none = "0XFFFFFFFF";
  n.thirtyOne = "0X1F";
  EXPECT_EQ(stream.str(), expectedNumbers(n, pointer(bytesOf(scene), std::uppercase),
                                          pointer(valueOf(scene), std::uppercase)));
}

TEST(SceneDumpSettings, ReachTheNumbersWithASign) {
  const Scene scene = sceneOfNumbers();
  std::ostringstream stream;
  stream << std::showpos << scene;
  Numbers n;  // of these only what is signed
  n.version = "10";
  n.triangles = "+1234567";
  n.vertices = "-1";
  n.size = "14814688";
  n.twelve = "+12";
  n.none = "-1";
  n.thirtyOne = "+31";
  std::string expected = expectedNumbers(n, pointer(bytesOf(scene), std::showpos),
                                         pointer(valueOf(scene), std::showpos));
  for (const char* signedTen : {"sets: 10", "[ 10 (Back)", ", 10 (Front)"}) {
    const std::string before = signedTen;
    std::string after = before;
    after.insert(after.find("10"), "+");
    const std::size_t at = expected.find(before);
    ASSERT_NE(at, std::string::npos);
    expected.replace(at, before.size(), after);
  }
  EXPECT_EQ(stream.str(), expected);
}

struct Thousands : std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(SceneDumpSettings, ReachTheNumbersInTheStreamsLocale) {
  const Scene scene = sceneOfNumbers();
  const std::locale locale(std::locale::classic(), new Thousands);
  std::ostringstream stream;
  stream.imbue(locale);
  stream << std::setprecision(1) << std::fixed << scene;
  Numbers n;
  n.version = "10";
  n.triangles = "1.234.567";
  n.vertices = "-1";
  n.size = "14.814.688";
  n.twelve = "12";
  n.none = "-1";
  n.thirtyOne = "31";
  std::ostringstream addresses;
  addresses.imbue(locale);
  addresses << bytesOf(scene) << ' ' << valueOf(scene);
  const std::string both = addresses.str();
  const std::size_t blank = both.find(' ');
  EXPECT_EQ(stream.str(), expectedNumbers(n, both.substr(0, blank), both.substr(blank + 1)));
}

TEST(SceneDumpSettings, OfAWidthIsUsedUpByTheFirstText) {
  const Scene scene = sceneWithId();
  std::ostringstream stream;
  stream << std::setfill('*') << std::setw(10) << scene;
  EXPECT_EQ(stream.str(), "***" + head(0));
}

// Takes a number of characters, and counts flushes.
class LimitedBuffer : public std::streambuf {
 public:
  explicit LimitedBuffer(std::size_t room) : room_(room) {}

  const std::string& text() const { return text_; }
  std::size_t flushes() const { return flushes_; }
  std::size_t largestPiece() const { return largest_; }

 protected:
  int_type overflow(int_type character) override {
    const char c = traits_type::to_char_type(character);
    return xsputn(&c, 1) == 1 ? character : traits_type::eof();
  }
  std::streamsize xsputn(const char* characters, std::streamsize count) override {
    const std::size_t taken = std::min(static_cast<std::size_t>(count), room_ - text_.size());
    text_.append(characters, taken);
    largest_ = std::max(largest_, taken);
    return static_cast<std::streamsize>(taken);
  }
  int sync() override {
    ++flushes_;
    return 0;
  }

 private:
  std::size_t room_;
  std::size_t flushes_ = 0;
  std::size_t largest_ = 0;
  std::string text_;
};

constexpr std::size_t kUnlimited = ~std::size_t{0};

TEST(SceneDumpStream, IsFlushedAfterEachLineButThoseWithinAnAssetsNumbers) {
  Scene scene = sceneWithId();
  const auto flushes = [&scene] {
    LimitedBuffer buffer(kUnlimited);
    std::ostream stream(&buffer);
    stream << scene;
    return buffer.flushes();
  };
  EXPECT_EQ(flushes(), 6U);
  vrdmAddProgram(&scene, VRDM_CLASS_CAMERA_PROGRAM, "a\nb");
  EXPECT_EQ(flushes(), 6U + 3 + 2);
  vrdmRemove(&scene, VRDM_CLASS_CAMERA_PROGRAM, 0);
  EXPECT_EQ(flushes(), 6U + 3 + 1);
  addGraph(&scene, "abc");
  EXPECT_EQ(flushes(), 6U + 3 + 1 + 3 + 4);
  addInstance(&scene, VRDM_CLASS_DECAL);
  EXPECT_EQ(flushes(), 6U + 3 + 1 + 3 + 4 + 3 + 1 + 4 + 3);
}

TEST(SceneDumpStream, GetsTheTextInSmallPieces) {
  Scene scene = sceneWithId();
  for (int i = 0; i < 1000; ++i) addInstance(&scene, VRDM_CLASS_KEYFRAME);
  LimitedBuffer buffer(kUnlimited);
  std::ostream stream(&buffer);
  stream << scene;
  EXPECT_GT(buffer.text().size(), 100000U);
  EXPECT_LT(buffer.largestPiece(), 1000U);
}

TEST(SceneDumpStream, IsLeftFailedWithWhatItTook) {
  const Scene scene = sceneOfNumbers();
  const std::string whole = dumped(scene);
  for (std::size_t room = 0; room < whole.size(); room += room < 40 ? 1 : 37) {
    LimitedBuffer buffer(room);
    std::ostream stream(&buffer);
    EXPECT_EQ(&(stream << scene), &stream);
    EXPECT_TRUE(stream.bad()) << room;
    EXPECT_EQ(buffer.text(), whole.substr(0, room)) << room;
    // Also one that had failed before.
    stream << scene;
    EXPECT_EQ(buffer.text(), whole.substr(0, room)) << room;
  }
  EXPECT_EQ(dumped(scene), whole);
}

TEST(SceneDumpStream, ThrowsWhatItIsSetToThrow) {
  const Scene scene = sceneOfNumbers();
  LimitedBuffer buffer(100);
  std::ostream stream(&buffer);
  stream.exceptions(std::ios::badbit);
  EXPECT_THROW(stream << scene, std::ios::failure);
  EXPECT_EQ(buffer.text(), dumped(scene).substr(0, 100));
}

TEST(SceneDumpStream, IsReturned) {
  const Scene scene = sceneWithId();
  std::ostringstream stream;
  stream << "before|" << scene << "|after";
  EXPECT_EQ(stream.str(), "before|" + head(0) + "|after");
}

// Prints numbers as the classic locale does, but isn't it: the dump leaves each piece to the
// stream.
class Classic : public std::numpunct<char> {};

// A scene with random words in every part, each class with free slots, and long and short texts.
Scene randomScene(std::uint32_t seed) {
  std::mt19937 random(seed);
  const auto below = [&random](std::uint32_t limit) {
    return static_cast<std::uint32_t>(random()) % limit;
  };
  const auto word = [&] {
    const auto bits = static_cast<std::int32_t>(random());
    return below(4) == 0 ? -1 : below(2) == 0 ? bits : static_cast<std::int32_t>(below(100));
  };
  Scene scene;
  for (int i = 0; i < 60; ++i) {
    const std::uint32_t number = below(vrdmObjectTypeCount());
    switch (vrdmObjectClass(number)) {
      case VRDM_KIND_PROGRAM:
        vrdmAddProgram(&scene, number, std::string(below(3) * below(600), 'p').c_str());
        break;
      case VRDM_KIND_ASSET: {
        std::array<std::uint32_t, 6> desc = {};
        for (std::uint32_t& part : desc) part = below(3);
        const StorageHandle storage = newStorage(std::string(below(5), 'a'));
        AssetStorage* handle = storage.get();
        vrdmAddAsset(&scene, number, desc.data(), &handle);
        break;
      }
      default: {
        const std::int32_t object = addInstance(&scene, number);
        for (std::uint32_t slot = 0; slot < vrdmReferenceCount(number); ++slot) {
          if (vrdmReferenceType(number, slot).kind >= VRDM_REFERENCE_LIST) {
            std::vector<std::int32_t> words(below(4) * below(40));
            std::generate(words.begin(), words.end(), word);
            setList(&scene, number, object, slot, words);
          } else {
            vrdmSetReference(&scene, number, object, slot, word());
          }
        }
        if (vrdmHasValue(number)) {
          std::string text = "{ a = " + std::to_string(word()) + "; b = [ 0.5";
          for (std::uint32_t more = below(3) * below(200); more > 0; --more) text += ", 0.25";
          setValue(scene, number, object, text + " ]; c = &true; }");
        }
        break;
      }
    }
    if (below(5) == 0) vrdmRemove(&scene, number, 0);
  }
  return scene;
}

TEST(SceneDumpStream, GetsTheSameBytesCollectedAsInPieces) {
  for (std::uint32_t seed = 0; seed < 200; ++seed) {
    const Scene scene = randomScene(seed);
    LimitedBuffer lines(kUnlimited);
    std::ostream collecting(&lines);
    collecting << scene;
    LimitedBuffer pieces(kUnlimited);
    std::ostream piecewise(&pieces);
    piecewise.imbue(std::locale(std::locale::classic(), new Classic));
    piecewise << scene;
    ASSERT_EQ(lines.text(), pieces.text()) << seed;
    ASSERT_EQ(lines.flushes(), pieces.flushes()) << seed;
    // A stream that is flushed after each piece gets each piece.
    LimitedBuffer flushed(kUnlimited);
    std::ostream unbuffered(&flushed);
    unbuffered << std::unitbuf << scene;
    ASSERT_EQ(flushed.text(), lines.text()) << seed;
    ASSERT_GT(flushed.flushes(), 2 * lines.flushes()) << seed;
  }
}

// Dumps a scene that can't be printed whole; returns what was printed until then.
std::string printedUntilRaised(const Scene& scene, const char* message) {
  std::ostringstream stream;
  try {
    stream << scene;
    ADD_FAILURE() << "nothing was raised";
  } catch (const vrnt::Exception& exception) {
    EXPECT_STREQ(exception.what(), message);
  }
  EXPECT_TRUE(stream.good());
  // So it is where each piece goes to the stream alone.
  std::ostringstream piecewise;
  piecewise.imbue(std::locale(std::locale::classic(), new Classic));
  EXPECT_THROW(piecewise << scene, vrnt::Exception);
  EXPECT_EQ(piecewise.str(), stream.str());
  return stream.str();
}

TEST(SceneDumpFailure, OfAGroupIsRaisedAndLeavesWhatWasPrinted) {
  Scene scene = sceneWithId();
  addInstance(&scene, VRDM_CLASS_DECAL);
  setWord(scene, VRDM_CLASS_DECAL, 0, 1, 0, 13);
  EXPECT_EQ(printedUntilRaised(scene, "Enum code out of range: 13"),
            head(2) + "\n Decals [v2]\n" + kRule +
                "[0] Decal [vv2]\n"
                "\treferences [vv1]\n"
                "\t\tMaterial: -1\n"
                "\t\tMaterial: -1\n"
                "\t\tTransformationGroup: null\n"
                "\tdata\n"
                "\t\tTransformation: [vv1] { matrix = " +
                kMatrixText +
                "; }\n"
                "\t\tProjection: [vv2] ");
}

TEST(SceneDumpFailure, OfAValueIsRaisedAndLeavesWhatWasPrinted) {
  Scene scene = sceneWithId();
  addInstance(&scene, VRDM_CLASS_MATERIAL);
  const TypeHandle type = parseType("{ enum { ONE; } a; }");
  vrntValuesError_t* error = nullptr;
  const std::int32_t code = -1;
  vrntValue_t* made = vrntValueCreate(type.get(), &error);
  vrntValueWrite(&made, 0, &code, sizeof(code), &error);
  const ValueHandle value(made);
  vrdmSetInstanceValue(&scene, VRDM_CLASS_MATERIAL, 0, value.get());
  EXPECT_EQ(printedUntilRaised(scene, "Enum code out of range: -1"),
            head(2) + "\n Materials [v2]\n" + kRule +
                "[0] Material [vv2]\n"
                "\treferences [vv1]\n"
                "\t\tMaterialProgram: null\n"
                "\t\tMaterialGraph: null\n"
                "\t\tTextures: [ ]\n"
                "\tvalue: [v" +
                pointer(value.get()) + "] ");
}

}  // namespace
