// The measured box imported into other scenes, by one host, and read by the others.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "process.hpp"
#include "support/flat_handles.hpp"
#include "vornath_data/vrdm.h"

namespace vornath_test {
namespace {

class MergeScenes : public ProcessTest {
 protected:
  void SetUp() override { ASSERT_EQ(run(BUILD_SCENE, {box_}).status, 0); }

  // The counts of the classes that show_scene prints on top, in order.
  std::string counts(const std::string& scene) const {
    const Outcome shown = run(SHOW_SCENE, {"--changed", scene});
    EXPECT_EQ(shown.status, 0) << shown.errors;
    std::istringstream lines(shown.output.substr(shown.output.find("Objects\n") + 8));
    std::string found;
    std::string name;
    for (std::string line; std::getline(lines, line) && !line.empty();) {
      int count = 0;
      std::istringstream(line) >> name >> count;
      found += std::to_string(count) + " ";
    }
    return found;
  }

  // A scene's text without what differs from run to run: addresses.
  static std::string masked(std::string dump) {
    for (std::size_t at = dump.find("0x"); at != std::string::npos; at = dump.find("0x", at + 2)) {
      dump.erase(at + 2, dump.find_first_not_of("0123456789abcdef", at + 2) - at - 2);
    }
    return dump;
  }

  const std::string box_ = path("box.vrnscene");
  const std::string out_ = path("out.vrnscene");
};

TEST_F(MergeScenes, IntoAnEmptySceneGivesTheBoxAgain) {
  const Outcome merged = run(MERGE_SCENES, {"--empty", out_, box_});
  ASSERT_EQ(merged.status, 0) << merged.errors;
  EXPECT_EQ(merged.output,
            box_ +
                "\n  1 CameraProgram, the first at 0\n  2 MaterialProgram, the first at 0\n"
                "  1 LightProgram, the first at 0\n  8 Mesh, the first at 0\n"
                "  1 Camera, the first at 0\n  4 TransformationGroup, the first at 0\n"
                "  1 LightGroup, the first at 0\n  1 Light, the first at 0\n"
                "  4 Material, the first at 0\n  8 Shape, the first at 0\n"
                "  1 ImageTask, the first at 0\n");
  EXPECT_EQ(counts(out_), "1 2 1 8 0 0 0 0 1 4 1 1 4 0 0 8 1 0 ");
  // An import leaves the scene-wide settings alone. With those of the box as well, the independent
  // check finds each object, field and measured figure where it was.
  vrdmScene_t* const from = vrdmDeserialize(box_.c_str());
  vrdmScene_t* const to = vrdmDeserialize(out_.c_str());
  ASSERT_TRUE(from != nullptr && to != nullptr);
  for (std::uint32_t group = 0; group < vrdmFieldCount(VRDM_CLASS_SCENE_DATA); ++group) {
    const ValueHandle settings(vrdmGetSceneDataValue(from, group));
    vrdmSetSceneDataValue(to, group, settings.get());
  }
  vrdmSerialize(to, out_.c_str());
  vrdmDestroyScene(from);
  vrdmDestroyScene(to);
  const Outcome check = run(CHECK_SCENE, {out_});
  EXPECT_EQ(check.status, 0) << check.errors;
}

TEST_F(MergeScenes, IntoASceneThatHoldsItMergesProgramsOnly) {
  const Outcome merged = run(MERGE_SCENES, {out_, box_, box_});
  ASSERT_EQ(merged.status, 0) << merged.errors;
  EXPECT_EQ(counts(out_), "1 2 1 16 0 0 0 0 2 8 2 2 8 0 0 16 2 0 ");
  const std::string shown = run(SHOW_SCENE, {"--changed", out_}).output;
  // The second lamp's group names the second light and the second lamp's shape.
  EXPECT_NE(shown.find("emitters  Light 0, Shape 1\n"), std::string::npos);
  EXPECT_NE(shown.find("emitters  Light 1, Shape 9\n"), std::string::npos);
  // Both cameras have the one program.
  std::size_t cameras = 0;
  const std::string line = "    program    CameraProgram 0\n";
  for (std::size_t at = shown.find(line); at != std::string::npos; at = shown.find(line, at + 1)) {
    ++cameras;
  }
  EXPECT_EQ(cameras, 2u);
}

TEST_F(MergeScenes, IntoASceneWithGapsFillsThoseOfAssetsOnly) {
  const std::string gaps = path("gaps.vrnscene");
  vrdmScene_t* const scene = vrdmDeserialize(box_.c_str());
  ASSERT_NE(scene, nullptr);
  vrdmRemove(scene, VRDM_CLASS_MESH, 2);
  vrdmRemove(scene, VRDM_CLASS_SHAPE, 2);
  vrdmSerialize(scene, gaps.c_str());
  vrdmDestroyScene(scene);

  const Outcome merged = run(MERGE_SCENES, {out_, gaps, box_});
  ASSERT_EQ(merged.status, 0) << merged.errors;
  EXPECT_NE(merged.output.find("  8 Mesh, the first at 2\n"), std::string::npos) << merged.output;
  EXPECT_NE(merged.output.find("  8 Shape, the first at 8\n"), std::string::npos) << merged.output;
  EXPECT_EQ(counts(out_), "1 2 1 15 0 0 0 0 2 8 2 2 8 0 0 15 2 0 ");
  const std::string shown = run(SHOW_SCENE, {out_}).output;
  EXPECT_NE(shown.find("\nShape 2\n-------\n  (free slot)\n"), std::string::npos);
}

TEST_F(MergeScenes, PrintTheSameTextInTwoRuns) {
  const Outcome first = run(MERGE_SCENES, {"--dump", out_, box_, box_});
  const Outcome second = run(MERGE_SCENES, {"--dump", out_, box_, box_});
  ASSERT_EQ(first.status, 0) << first.errors;
  EXPECT_EQ(masked(first.output), masked(second.output));
  for (const char* const text : {" Scene ", "\tdata\n", " Meshs [v", "[15] Mesh [v",
                                 "\tsha256: ", "\t\tEmitters: [ 0 (Light), 1 (Shape), ]",
                                 "\t\tEmitters: [ 1 (Light), 9 (Shape), ]"}) {
    EXPECT_NE(first.output.find(text), std::string::npos) << text;
  }
}

TEST_F(MergeScenes, ReportWhatCannotBeRead) {
  const Outcome missing = run(MERGE_SCENES, {out_, path("none")});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.errors, "merge_scenes: " + path("none") + ": the file can't be opened\n");
  writeFile(path("text"), "this is no scene");
  const Outcome text = run(MERGE_SCENES, {out_, path("text")});
  EXPECT_EQ(text.status, 1);
  EXPECT_EQ(text.errors, "merge_scenes: " + path("text") +
                             ": Bad header: this is not a Vornath scene binary.\n");
  EXPECT_EQ(run(MERGE_SCENES, {out_}).status, 2);
  EXPECT_EQ(run(MERGE_SCENES, {"--help"}).output.rfind("usage: ", 0), 0U);
}

}  // namespace
}  // namespace vornath_test
