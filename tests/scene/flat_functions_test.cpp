// Flat functions that the other files of this folder use on the way and show little of.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "scenes.hpp"

namespace {

using vornath_test::addGraph;
using vornath_test::addInstance;
using vornath_test::newScene;
using vornath_test::SceneHandle;

std::string bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

// A path of this test alone, whose file is gone before and after.
class TemporaryPath {
 public:
  TemporaryPath()
      : path_(testing::TempDir() + "vornath_" +
              testing::UnitTest::GetInstance()->current_test_info()->test_suite_name() + "_" +
              testing::UnitTest::GetInstance()->current_test_info()->name()) {
    std::remove(path_.c_str());
  }
  TemporaryPath(const TemporaryPath&) = delete;
  TemporaryPath& operator=(const TemporaryPath&) = delete;
  ~TemporaryPath() { std::remove(path_.c_str()); }

  const char* get() const { return path_.c_str(); }

 private:
  std::string path_;
};

TEST(vrdmSerialize, WritesWhatTheClassWrites) {
  const SceneHandle scene = newScene();
  addGraph(scene.get(), "some bytes");
  const TemporaryPath path;
  vrdmSerialize(scene.get(), path.get());
  std::ostringstream stream;
  vrnt::data::Scene::serialize(*scene, stream);
  EXPECT_FALSE(stream.str().empty());
  EXPECT_EQ(bytesOf(path.get()), stream.str());
}

TEST(vrdmSerialize, DoesNothingWhereNoFileCanBeMade) {
  const SceneHandle scene = newScene();
  vrdmSerialize(scene.get(), "/no such folder/scene.vrnscene");
  EXPECT_EQ(vrdmDeserialize("/no such folder/scene.vrnscene"), nullptr);
}

TEST(vrdmDeserialize, ReadsWhatWasWrittenWithItsId) {
  const SceneHandle scene = newScene();
  addGraph(scene.get(), "some bytes");
  const TemporaryPath path;
  vrdmSerialize(scene.get(), path.get());
  const SceneHandle read(vrdmDeserialize(path.get()));
  ASSERT_NE(read, nullptr);
  EXPECT_TRUE(*vrdmSceneId(read.get()) == *vrdmSceneId(scene.get()));
  EXPECT_EQ(vrdmContainerSize(read.get(), VRDM_CLASS_MATERIAL_GRAPH), 1U);
  AssetStorage** const storage =
      vrdmGetAssetStorage(read.get(), VRDM_CLASS_MATERIAL_GRAPH, 0, nullptr);
  ASSERT_NE(storage, nullptr);
  EXPECT_EQ(std::string(static_cast<const char*>((*storage)->data), (*storage)->size),
            "some bytes");
}

TEST(vrdmDeserialize, IsNullForAFileThatIsNoScene) {
  const TemporaryPath path;
  EXPECT_EQ(vrdmDeserialize(path.get()), nullptr);
  std::ofstream(path.get()) << "something else than a scene";
  EXPECT_EQ(vrdmDeserialize(path.get()), nullptr);
}

// Which meaning applies follows from the kind of slot, not from the name of the function.
TEST(vrdmGetReferenceCount, GivesTheIndexOfASingleSlotAndTheLengthOfAList) {
  const SceneHandle scene = newScene();
  const std::int32_t light = addInstance(scene.get(), VRDM_CLASS_LIGHT);
  EXPECT_EQ(vrdmGetReferenceCount(scene.get(), VRDM_CLASS_LIGHT, light, 0), -1);
  EXPECT_EQ(vrdmGetReferenceCount(scene.get(), VRDM_CLASS_LIGHT, light, 2), 0);
  EXPECT_TRUE(vrdmSetReference(scene.get(), VRDM_CLASS_LIGHT, light, 0, 7));
  EXPECT_TRUE(vrdmSetReference(scene.get(), VRDM_CLASS_LIGHT, light, 2, 4));
  EXPECT_EQ(vrdmGetReferenceCount(scene.get(), VRDM_CLASS_LIGHT, light, 0), 7);
  EXPECT_EQ(vrdmGetReferenceCount(scene.get(), VRDM_CLASS_LIGHT, light, 2), 4);
  EXPECT_EQ(vrdmGetReferenceCount(scene.get(), VRDM_CLASS_LIGHT, light, 3), 0);
}

TEST(vrdmSetReferenceCount, SetsTheWordOfASingleSlotAndTheLengthOfAList) {
  const SceneHandle scene = newScene();
  const std::int32_t light = addInstance(scene.get(), VRDM_CLASS_LIGHT);
  EXPECT_TRUE(vrdmSetReferenceCount(scene.get(), VRDM_CLASS_LIGHT, light, 0, 5));
  EXPECT_TRUE(vrdmSetReferenceCount(scene.get(), VRDM_CLASS_LIGHT, light, 2, 3));
  EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_LIGHT, light, 0), 5);
  EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_LIGHT, light, 2), 3);
  EXPECT_FALSE(vrdmSetReferenceCount(scene.get(), VRDM_CLASS_LIGHT, light, 3, 1));
}

TEST(vrntValueData, PointsBehindTheHeaderOfTheBlock) {
  const vornath_test::ValueHandle value = vornath_test::parseValue("[ 1, 2, 3 ]");
  ASSERT_NE(value, nullptr);
  const auto* const data = static_cast<const char*>(vrntValueData(value.get()));
  EXPECT_EQ(data - reinterpret_cast<const char*>(vrntValueBinary(value.get())), 48);
  EXPECT_EQ(vornath_test::readAt<std::int32_t>(value, 8), 3);
}

}  // namespace
