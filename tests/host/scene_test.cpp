#include "vornath_data/host/scene.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <type_traits>
#include <vector>

#include "refusal.hpp"
#include "support/temporary_folder.hpp"

namespace {

using namespace vrnt::host;
using vornath_test::refusalOf;
using vornath_test::messageOf;
using vrnt::ErrorCode;
namespace fs = std::filesystem;

static_assert(!std::is_copy_constructible_v<Scene> && std::is_nothrow_move_constructible_v<Scene>);

class SceneFiles : public testing::Test {
 protected:
  std::string path(const char* name) const { return folder_.file(name); }
  std::string file(const char* name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
  }

  vornath_test::TemporaryFolder folder_;
};

Object addCamera(Scene& scene) {
  const Object camera = scene.create(VRDM_CLASS_CAMERA);
  scene.refer(camera, "program", scene.addProgram(VRDM_CLASS_CAMERA_PROGRAM, "camera { }"));
  scene.setGroup(camera, "General", scene.group(camera, "General").set("near_distance", 0.5F));
  scene.setValue(camera, Record::ofType("{ float @default=0.25 focal_length; }"));
  return camera;
}

Object addMesh(Scene& scene) {
  return scene.addAsset(vrdmMeshDesc{1, 3, 0, 0},
                        moveBytes(std::vector<std::uint32_t>(3 + 9 * 3 + 2 * 3, 7)));
}

}  // namespace

TEST(HostScene, HoldsWhatItIsGiven) {
  Scene scene;
  const Object camera = addCamera(scene);
  EXPECT_EQ(camera, (Object{VRDM_CLASS_CAMERA, 0}));
  const Object program = scene.target(camera, "program");
  EXPECT_STREQ(scene.source(program), "camera { }");
  EXPECT_EQ(scene.target(camera, "backplate"), (Object{VRDM_CLASS_TEXTURE, -1}));
  EXPECT_EQ(scene.group(camera, "General").get<float>("near_distance"), 0.5F);
  EXPECT_EQ(scene.value(camera).text(), "{ focal_length = 0.25; }");
  scene.clear(camera, "program");
  EXPECT_EQ(scene.target(camera, "program").index, -1);
  scene.setGroup("Raytracer", scene.group("Raytracer").set("bvh_mode", "AUTOMATIC"));
  scene.setGroup("General", scene.group("General").set("infinite_ground", true));
  EXPECT_TRUE(scene.group("General").get<bool>("infinite_ground"));
}

TEST(HostScene, HoldsAssetsWithTheirRecords) {
  Scene scene;
  const Object mesh = addMesh(scene);
  EXPECT_EQ(scene.desc<vrdmMeshDesc>(mesh).vertices, 3);
  EXPECT_EQ(scene.bytes(mesh).size(), 144u);
  EXPECT_EQ(scene.bytes(mesh)[4], 7u);
  const vrdmTextureDesc desc{2, 1, 1, VRNT_TEXTURE_FORMAT_SRGBA8, VRNT_TEXTURE_LAYOUT_2D};
  const Object texture = scene.addAsset(desc, copyBytes("12345678", 8));
  EXPECT_EQ(scene.desc<vrdmTextureDesc>(texture).format, VRNT_TEXTURE_FORMAT_SRGBA8);
  const Object graph = scene.addAsset(vrdmMaterialGraphDesc{3, 1, 2}, copyBytes("abc", 3));
  EXPECT_EQ(scene.desc<vrdmMaterialGraphDesc>(graph).parameterOffset, 2u);
  // Kept longer than the scene keeps them.
  const Storage kept = scene.storage(texture);
  scene.remove(texture);
  EXPECT_EQ(std::memcmp(kept.get()->data, "12345678", 8), 0);
  EXPECT_EQ(kept.get()->references, 1u);
}

TEST(HostScene, RefusesAnAssetWithFewerBytesThanItsRecordAsksFor) {
  Scene scene;
  EXPECT_EQ(messageOf([&] {
              scene.addAsset(vrdmMeshDesc{1, 3, 0, 0}, copyBytes("abc", 3));
            }),
            "The record of a Mesh asks for 144 bytes, not 3.");
  EXPECT_EQ(messageOf([&] {
              scene.addAsset(vrdmMaterialGraphDesc{1, 0, 0}, Storage());
            }),
            "The record of a MaterialGraph asks for 1 bytes, not 0.");
  EXPECT_EQ(vrdmContainerSize(scene.get(), VRDM_CLASS_MESH), 0u);
}

TEST(HostScene, RefusesWhatDoesNotGoTogether) {
  Scene scene;
  const Object camera = addCamera(scene);
  const Object mesh = addMesh(scene);
  const Object light = scene.create(VRDM_CLASS_LIGHT);
  const Object gone{VRDM_CLASS_CAMERA, 1};
  EXPECT_EQ(messageOf([&] { scene.refer(camera, "program", mesh); }),
            "The slot program of Camera does not take Mesh 0.");
  EXPECT_EQ(messageOf([&] { scene.refer(camera, "lens", mesh); }),
            "There is no slot lens in Camera.");
  EXPECT_EQ(messageOf([&] { scene.refer(light, "textures", mesh); }),
            "The slot textures of Light is a list.");
  EXPECT_EQ(messageOf([&] { scene.list(camera, "program"); }),
            "The slot program of Camera is no list.");
  EXPECT_EQ(messageOf([&] {
              scene.refer(camera, "backplate", Object{VRDM_CLASS_TEXTURE, 0});
            }),
            "There is no Texture 0.");
  EXPECT_EQ(messageOf([&] { scene.group(camera, "Nothing"); }),
            "There is no group Nothing in Camera.");
  EXPECT_EQ(messageOf([&] { scene.group("Nothing"); }), "There is no group Nothing in SceneData.");
  EXPECT_EQ(messageOf([&] { scene.setGroup(camera, "General", Record::ofType("int")); }),
            "The group General of Camera does not take int.");
  EXPECT_EQ(messageOf([&] { scene.group(gone, "General"); }), "There is no Camera 1.");
  EXPECT_EQ(messageOf([&] { scene.remove(gone); }), "There is no Camera 1.");
  EXPECT_EQ(messageOf([&] { scene.value(light); }), "Light 0 has no value.");
  EXPECT_EQ(messageOf([&] { scene.value(mesh); }), "Mesh is no class of objects with values.");
  EXPECT_EQ(messageOf([&] { scene.source(camera); }), "Camera is no class of programs.");
  EXPECT_EQ(messageOf([&] { scene.bytes(camera); }), "Camera is no class of assets.");
  EXPECT_EQ(messageOf([&] { scene.create(VRDM_CLASS_MESH); }), "Mesh is no class of instances.");
  EXPECT_EQ(messageOf([&] { scene.create(18); }), "class 18 is no class of instances.");
  EXPECT_EQ(messageOf([&] { scene.addProgram(18, ""); }), "class 18 is no class of programs.");
  EXPECT_EQ(messageOf([&] { scene.desc<vrdmTextureDesc>(mesh); }),
            "The record of a Mesh is not that of a Texture.");
}

TEST(HostScene, CodesTheListsThatAreCoded) {
  Scene scene;
  const Object group = scene.create(VRDM_CLASS_LIGHT_GROUP);
  const Object light = scene.create(VRDM_CLASS_LIGHT);
  const Object shape = scene.create(VRDM_CLASS_SHAPE);
  const auto words = [&](const Object& object, const char* slot) {
    const Span<const std::int32_t> list = scene.list(object, slot);
    return std::vector<std::int32_t>(list.begin(), list.end());
  };
  EXPECT_TRUE(scene.list(group, "emitters").empty());
  scene.setList(group, "emitters", {light, shape});
  EXPECT_EQ(words(group, "emitters"), (std::vector<std::int32_t>{~0, 0}));
  EXPECT_EQ(messageOf([&] { scene.setList(group, "emitters", {group}); }),
            "The slot emitters of LightGroup does not take LightGroup 0.");
  const Object task = scene.create(VRDM_CLASS_BAKE_TASK);
  scene.setList(task, "shapes", {shape, shape});
  EXPECT_EQ(words(task, "shapes"), (std::vector<std::int32_t>{0, 0}));
  scene.setWords(task, "shapes", scene.list(task, "shapes"));
  EXPECT_EQ(words(task, "shapes"), (std::vector<std::int32_t>{0, 0}));
  scene.setList(task, "shapes", std::vector<Object>{shape});
  EXPECT_EQ(words(task, "shapes"), (std::vector<std::int32_t>{0}));
  const Object decals = scene.create(VRDM_CLASS_DECAL_LIST);
  const Object decal = scene.create(VRDM_CLASS_DECAL);
  EXPECT_EQ(messageOf([&] { scene.setList(decals, "decals", {decal}); }),
            "The slot decals of DecalList does not take Decal 0.");
  scene.setWords(decals, "decals", {onFront(decal), onBack(decal)});
  EXPECT_EQ(words(decals, "decals"), (std::vector<std::int32_t>{~0, 0}));
}

TEST(HostScene, GoesThroughTheLiveObjectsOfAClass) {
  Scene scene;
  std::vector<Object> shapes;
  for (int i = 0; i < 5; ++i) shapes.push_back(scene.create(VRDM_CLASS_SHAPE));
  scene.remove(shapes[0]);
  scene.remove(shapes[3]);
  scene.remove(shapes[4]);
  std::vector<std::int32_t> found;
  for (const Object shape : scene.objects(VRDM_CLASS_SHAPE)) found.push_back(shape.index);
  EXPECT_EQ(found, (std::vector<std::int32_t>{1, 2}));
  for (const Object none : scene.objects(VRDM_CLASS_LIGHT)) ADD_FAILURE() << none.index;
  for (const Object none : scene.objects(18)) ADD_FAILURE() << none.index;
}

TEST_F(SceneFiles, AreWrittenAndRead) {
  Scene scene;
  const Object camera = addCamera(scene);
  const Object mesh = addMesh(scene);
  scene.write(path("a.vrnscene"));
  const Scene read = Scene::read(path("a.vrnscene"));
  EXPECT_EQ(read.id(), scene.id());
  EXPECT_EQ(read.bytes(mesh).size(), 144u);
  EXPECT_TRUE(vrnt::data::Scene::equivalent(*read.get(), *scene.get()));
  EXPECT_EQ(read.value(camera).get<float>("focal_length"), 0.25F);
  // As the flat function writes it.
  vrdmSerialize(scene.get(), path("b.vrnscene").c_str());
  EXPECT_EQ(fs::file_size(path("a.vrnscene")), fs::file_size(path("b.vrnscene")));
}

TEST_F(SceneFiles, ThatCannotBeReadAreToldByPathAndReason) {
  const auto refusal = [](const std::string& file) {
    return refusalOf([&] { Scene::read(file); });
  };
  const auto words = [](const std::string& file, const char* reason) {
    return file + ": there is no scene file that this program can read (" + reason + ").";
  };
  const std::string nowhere = path("nowhere");
  EXPECT_EQ(refusal(nowhere).message, words(nowhere, "No such file or directory"));
  EXPECT_EQ(refusal(nowhere).code, ErrorCode::FileNotFound);
  EXPECT_EQ(refusal(folder_.path().string()).message,
            words(folder_.path().string(), "Is a directory"));
  EXPECT_EQ(refusal(folder_.path().string()).code, ErrorCode::IoError);
  const std::string text = file("text", "no scene at all");
  EXPECT_EQ(refusal(text).message, words(text, "it is none"));
  EXPECT_EQ(refusal(text).code, ErrorCode::InvalidArguments);
  const std::string empty = file("empty", "");
  EXPECT_EQ(refusal(empty).message, words(empty, "it is too short"));
  const std::string older = file("older", std::string("VRNSCENE\xac\0\0\0more of it", 22));
  EXPECT_EQ(refusal(older).message, words(older, "it has version 172"));
  EXPECT_EQ(refusal(older).code, ErrorCode::VersionMismatch);
}

TEST_F(SceneFiles, ThatCannotBeWrittenAreToldByPath) {
  Scene scene;
  addMesh(scene);
  const auto refusal = [&](const std::string& file) {
    return refusalOf([&] { scene.write(file); });
  };
  EXPECT_EQ(refusal(path("nowhere/scene")).message,
            path("nowhere/scene") + ": cannot write the file");
  EXPECT_EQ(refusal(path("nowhere/scene")).code, ErrorCode::IoError);
  EXPECT_EQ(refusal(folder_.path().string()).code, ErrorCode::IoError);
  if (fs::exists("/dev/full")) {
    EXPECT_EQ(refusal("/dev/full").message, "/dev/full: cannot write the file");
  }
}

TEST_F(SceneFiles, AreNotWrittenWhileAnObjectLacksItsValue) {
  Scene scene;
  scene.create(VRDM_CLASS_MATERIAL);
  EXPECT_EQ(messageOf([&] { scene.write(path("a.vrnscene")); }), "Material 0 has no value.");
  EXPECT_FALSE(fs::exists(path("a.vrnscene")));
}

TEST(HostScene, MovesAndIsHandedOver) {
  Scene scene;
  vrdmScene_t* const handle = scene.get();
  Scene moved = std::move(scene);
  EXPECT_EQ(moved.get(), handle);
  scene = Scene(moved.release());
  EXPECT_EQ(scene.get(), handle);
  EXPECT_THROW(Scene(nullptr), std::bad_alloc);
}

TEST(GroupType, IsForFields) {
  const Field<float> distance(groupType(VRDM_CLASS_CAMERA, "General"), "near_distance");
  Scene scene;
  const Object camera = addCamera(scene);
  EXPECT_EQ(distance.get(scene.group(camera, "General").value()), 0.5F);
}
