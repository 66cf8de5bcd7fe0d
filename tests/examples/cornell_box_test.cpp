// The measured box: from tables to a scene file, and back through another program.
#include <cstring>
#include <filesystem>

#include "process.hpp"
#include "vornath_data/vrdm.h"

namespace vornath_test {
namespace {

namespace fs = std::filesystem;

class CornellBox : public ProcessTest {
 protected:
  const std::string scene_ = path("box.vrnscene");
  const std::string data_ = SOURCE_FOLDER "/examples/cornell_box/data";
  const std::string programs_ = SOURCE_FOLDER "/examples/cornell_box/programs";

  // A folder with the tables, or with the programs, one text in one of the files replaced.
  std::string copyWith(const std::string& folder, const std::string& file, const std::string& from,
                       const std::string& to) const {
    const fs::path copy = path("copy");
    fs::copy(folder, copy);
    std::string text = readFile(copy / file);
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from << " is not in " << file;
    if (at != std::string::npos) text.replace(at, from.size(), to);
    fs::permissions(copy / file, fs::perms::owner_write, fs::perm_options::add);
    writeFile(copy / file, text);
    return copy.string();
  }

  // Builds a scene from changed tables, which is sound in itself, and checks it against the tables.
  Outcome checkOfSceneWith(const std::string& file, const std::string& from,
                           const std::string& to) const {
    const Outcome built = run(BUILD_SCENE, {"--data", copyWith(data_, file, from, to), scene_});
    EXPECT_EQ(built.status, 0) << built.errors;
    const Outcome check = run(CHECK_SCENE, {scene_});
    EXPECT_EQ(check.output, "");
    return check;
  }

  Outcome buildWith(const std::string& file, const std::string& from, const std::string& to) const {
    const Outcome built = run(BUILD_SCENE, {"--data", copyWith(data_, file, from, to), scene_});
    EXPECT_EQ(built.output, "");
    EXPECT_FALSE(fs::exists(scene_));
    return built;
  }

  void changeFile(const std::string& from, const std::string& to) const {
    std::string bytes = readFile(scene_);
    const std::size_t at = bytes.find(from);
    ASSERT_NE(at, std::string::npos);
    writeFile(scene_, bytes.replace(at, from.size(), to));
  }
};

TEST_F(CornellBox, IsWrittenByOneProgramAndFoundUnchangedByAnother) {
  const Outcome built = run(BUILD_SCENE, {scene_});
  EXPECT_EQ(built.status, 0) << built.errors;
  EXPECT_NE(built.output.find("32 objects"), std::string::npos) << built.output;
  const Outcome check = run(CHECK_SCENE, {scene_});
  EXPECT_EQ(check.status, 0) << check.errors;
  EXPECT_NE(check.output.find("228 reflectances"), std::string::npos) << check.output;
  EXPECT_EQ(check.errors, "");
}

TEST_F(CornellBox, IsPrintedWithEveryClassEveryCountAndEveryObject) {
  ASSERT_EQ(run(BUILD_SCENE, {scene_}).status, 0);
  const Outcome shown = run(SHOW_SCENE, {scene_});
  EXPECT_EQ(shown.status, 0) << shown.errors;
  const std::vector<int> counts = {1, 2, 1, 8, 0, 0, 0, 0, 1, 4, 1, 1, 4, 0, 0, 8, 1, 0};
  ASSERT_EQ(counts.size(), vrdmObjectTypeCount());
  for (std::uint32_t objectClass = 0; objectClass < counts.size(); ++objectClass) {
    const std::string name = vrdmObjectName(objectClass);
    const std::string line = "\n  " + name + std::string(22 - name.size(), ' ') + "     " +
                             std::to_string(counts[objectClass]) + "\n";
    EXPECT_NE(shown.output.find(line), std::string::npos) << line;
    for (int index = 0; index < counts[objectClass]; ++index) {
      const std::string title = "\n" + name + " " + std::to_string(index) + "\n-";
      EXPECT_NE(shown.output.find(title), std::string::npos) << title;
    }
    const std::string next = "\n" + name + " " + std::to_string(counts[objectClass]) + "\n-";
    EXPECT_EQ(shown.output.find(next), std::string::npos) << next;
  }
}

TEST_F(CornellBox, IsPrintedWithEveryGroupOfEveryClassThatHasObjects) {
  ASSERT_EQ(run(BUILD_SCENE, {scene_}).status, 0);
  const std::string output = run(SHOW_SCENE, {scene_}).output;
  const auto section = [&output](const std::string& title) {
    const std::size_t begin = output.find("\n" + title + "\n-");
    EXPECT_NE(begin, std::string::npos) << title;
    return output.substr(begin, output.find("\n\n", begin) - begin) + "\n";
  };
  const auto expectGroups = [&](std::uint32_t objectClass, const std::string& text) {
    for (std::uint32_t group = 0; group < vrdmFieldCount(objectClass); ++group) {
      const std::string line = std::string("\n  ") + vrdmFieldName(objectClass, group) + "\n";
      EXPECT_NE(text.find(line), std::string::npos) << line;
    }
  };
  expectGroups(VRDM_CLASS_SCENE_DATA, section("Scene-wide settings"));
  for (const std::uint32_t objectClass :
       {VRDM_CLASS_CAMERA, VRDM_CLASS_TRANSFORMATION_GROUP, VRDM_CLASS_LIGHT, VRDM_CLASS_SHAPE,
        VRDM_CLASS_IMAGE_TASK}) {
    expectGroups(objectClass, section(std::string(vrdmObjectName(objectClass)) + " 0"));
  }
}

TEST_F(CornellBox, IsPrintedWithMeasuredFiguresAndTargetsByName) {
  ASSERT_EQ(run(BUILD_SCENE, {scene_}).status, 0);
  const std::string output = run(SHOW_SCENE, {scene_}).output;
  for (const char* const text :
       {"w  float4(0.278, 0.273, -0.8, 1.0)  (default float4(0.0, 0.0, 0.0, 1.0))",
        "film_size     float2(0.025, 0.025)", "emitters  Light 0, Shape 1",
        "transformationGroup  TransformationGroup 3", "\"left_wall\"  (default \"\")",
        "400.0  0.343  404.0  0.445", "700.0  0.159  704.0    0.0", "-> float[156]",
        "max_bounces                 16   (default 32)", "geometric_representation  MESH",
        "camera pinhole(float focal_length, float2 film_size)",
        "descriptor  16 bytes, in 32-bit words: 10 20 1 0", "data        1000 bytes"}) {
    EXPECT_NE(output.find(text), std::string::npos) << text;
  }
}

// The numbers are those of the arithmetic in tests/colour/oracle.
TEST_F(CornellBox, IsPrintedWithTheColoursOfItsSpectra) {
  ASSERT_EQ(run(BUILD_SCENE, {scene_}).status, 0);
  const std::string output = run(SHOW_SCENE, {scene_}).output;
  const std::pair<const char*, const char*> colours[]{
      {"0.88631 0.69924 0.66681", "0.73692 0.73645 0.73810"},     // white
      {"0.10507 0.37850 0.07629", "0.06833 0.39846 0.08642"},     // green
      {"0.57044 0.04285 0.04441", "0.49247 0.04913 0.05108"},     // red
      {"20.81674 11.04717 2.95602", "17.81445 11.56761 3.51213"}  // the lamp
  };
  for (const auto& [underE, underD65] : colours) {
    EXPECT_NE(output.find(std::string("RGB under E    ") + underE), std::string::npos) << underE;
    EXPECT_NE(output.find(std::string("RGB under D65  ") + underD65), std::string::npos)
        << underD65;
  }
  // The lamp's own flat reflectance is the same under any light.
  EXPECT_NE(output.find("RGB            0.78000 0.78000 0.78000"), std::string::npos);
}

TEST_F(CornellBox, CanBePrintedWithoutWhatIsUnchanged) {
  ASSERT_EQ(run(BUILD_SCENE, {scene_}).status, 0);
  const Outcome shown = run(SHOW_SCENE, {"--changed", scene_});
  EXPECT_EQ(shown.status, 0) << shown.errors;
  EXPECT_EQ(shown.output.find("shutter_open"), std::string::npos);
  EXPECT_EQ(shown.output.find("Backplate"), std::string::npos);
  EXPECT_NE(shown.output.find("near_distance  0.5  (default 0.0)"), std::string::npos);
  EXPECT_NE(shown.output.find("TransformationGroup 0\n---------------------\n"
                              "  (nothing is changed)\n"),
            std::string::npos);
}

TEST_F(CornellBox, IsRefusedByTheCheckWhenAReflectanceDiffers) {
  const Outcome check =
      checkOfSceneWith("cornell_box_reflectance.csv", "560,0.733,0.337,", "560,0.733,0.338,");
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.errors,
            "check_scene: the reflectance of green: (560 nm, 0.338) instead of (560 nm, 0.337)\n");
}

TEST_F(CornellBox, IsRefusedByTheCheckWhenTheLastReflectanceDiffersInItsLastBit) {
  const Outcome check = checkOfSceneWith("cornell_box_reflectance.csv", "700,0.737,0.159,0.642",
                                         "700,0.737,0.159,0.6420001");
  EXPECT_EQ(check.status, 1);
  EXPECT_NE(
      check.errors.find("the reflectance of red: (700 nm, 0.6420001) instead of (700 nm, 0.642)"),
      std::string::npos)
      << check.errors;
}

TEST_F(CornellBox, IsRefusedByTheCheckWhenAWavelengthDiffers) {
  const Outcome check = checkOfSceneWith("cornell_box_reflectance.csv", "\n404,", "\n405,");
  EXPECT_EQ(check.status, 1);
  EXPECT_NE(check.errors.find("(405 nm, 0.445) instead of (404 nm, 0.445)"), std::string::npos)
      << check.errors;
}

TEST_F(CornellBox, IsRefusedByTheCheckWhenTheLampDiffers) {
  const Outcome check = checkOfSceneWith("cornell_box_light.csv", "600,15.6", "600,15.7");
  EXPECT_EQ(check.status, 1);
  EXPECT_NE(check.errors.find("the emission of Light 0: "), std::string::npos) << check.errors;
}

TEST_F(CornellBox, IsRefusedByTheCheckWhenAPositionDiffers) {
  const Outcome check =
      checkOfSceneWith("cornell_box_geometry.csv", "tall_block,side4,white,3,423.0,0.0,247.0",
                       "tall_block,side4,white,3,423.0,0.0,247.1");
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.errors, "check_scene: Mesh 7: vertex 19 has z = 0.2471 instead of 0.247\n");
}

TEST_F(CornellBox, IsRefusedByTheCheckWhenAnObjectIsMissing) {
  const Outcome check =
      checkOfSceneWith("cornell_box_geometry.csv",
                       "floor,floor,white,0,552.8,0.0,0.0\nfloor,floor,white,1,0.0,0.0,0.0\n"
                       "floor,floor,white,2,0.0,0.0,559.2\nfloor,floor,white,3,549.6,0.0,559.2\n",
                       "");
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.errors, "check_scene: Mesh: 7 objects instead of 8\n");
}

TEST_F(CornellBox, IsRefusedByTheCheckWhenTheCameraDiffers) {
  const Outcome check =
      checkOfSceneWith("cornell_box_camera.csv", "position,mm,278,", "position,mm,279,");
  EXPECT_EQ(check.status, 1);
  EXPECT_NE(check.errors.find("Camera 0 Transformation differs: .matrix.w: float4(0.279, "),
            std::string::npos)
      << check.errors;
}

TEST_F(CornellBox, IsRefusedByTheCheckWhenTheLensDiffers) {
  const Outcome check =
      checkOfSceneWith("cornell_box_camera.csv", "focal_length,m,0.035", "focal_length,m,0.05");
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.errors,
            "check_scene: the value of Camera 0 differs: .focal_length: 0.05 != 0.035\n");
}

TEST_F(CornellBox, IsRefusedByTheCheckWhenAProgramDiffers) {
  const std::string changed = copyWith(programs_, "diffuse.material", "/ pi", "/ 3.0");
  ASSERT_EQ(run(BUILD_SCENE, {"--programs", changed, scene_}).status, 0);
  const Outcome check = run(CHECK_SCENE, {scene_});
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.errors, "check_scene: MaterialProgram 0 is not the text of diffuse.material\n");
}

// Every byte of a group counts: one that is changed in the file itself is found.
TEST_F(CornellBox, IsRefusedByTheCheckWhenAByteOfAGroupDiffers) {
  ASSERT_EQ(run(BUILD_SCENE, {scene_}).status, 0);
  changeFile("left_wall", "left_walk");
  const Outcome check = run(CHECK_SCENE, {scene_});
  EXPECT_EQ(check.status, 1);
  EXPECT_NE(check.errors.find("Shape 5 Target differs: .tag[8]: 107c != 108c"), std::string::npos)
      << check.errors;
}

// The floor's last texture coordinates, (0, 1), stand before the next mesh's flag.
TEST_F(CornellBox, IsRefusedByTheCheckWhenAMeshDiffersBehindItsPositions) {
  ASSERT_EQ(run(BUILD_SCENE, {scene_}).status, 0);
  const std::string one("\0\0\x80\x3f", 4);
  const std::string zero(4, '\0');
  changeFile(one + zero + one + one + zero + one, one + zero + one + one + zero + zero);
  const Outcome check = run(CHECK_SCENE, {scene_});
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.errors, "check_scene: Mesh 0: vertex 3 has wrong texture coordinates\n");
}

TEST_F(CornellBox, IsRefusedByTheCheckWhenItsFileEndsEarly) {
  ASSERT_EQ(run(BUILD_SCENE, {scene_}).status, 0);
  fs::resize_file(scene_, fs::file_size(scene_) - 700);
  const Outcome check = run(CHECK_SCENE, {scene_});
  EXPECT_EQ(check.status, 1);
  EXPECT_NE(check.errors, "");
}

TEST_F(CornellBox, IsNotFoundInAFileThatIsNone) {
  writeFile(scene_, "no scene at all");
  for (const char* const program : {SHOW_SCENE, CHECK_SCENE}) {
    const Outcome outcome = run(program, {scene_});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(outcome.errors.find(scene_ + ": there is no scene file that this program can read"),
              std::string::npos)
        << outcome.errors;
  }
}

TEST_F(CornellBox, IsNotWrittenWhereThereIsNoFolder) {
  const std::string nowhere = path("nowhere/box.vrnscene");
  const Outcome built = run(BUILD_SCENE, {nowhere});
  EXPECT_EQ(built.status, 1);
  EXPECT_EQ(built.errors, "build_scene: " + nowhere + ": cannot write the file\n");
}

TEST_F(CornellBox, IsWrittenTwiceInTheSamePlace) {
  ASSERT_EQ(run(BUILD_SCENE, {scene_}).status, 0);
  ASSERT_EQ(run(BUILD_SCENE, {scene_}).status, 0);
  EXPECT_EQ(run(CHECK_SCENE, {scene_}).status, 0);
}

TEST_F(CornellBox, IsBuiltFromTablesWithOtherLineEndsAndMoreColumns) {
  const std::string changed = copyWith(
      data_, "cornell_box_light.csv", "wavelength,emission\n400,0.0\n500,8.0\n600,15.6\n700,18.4",
      "emission,note,wavelength\r\n0.0,,400\r\n8.0,a,500\r\n15.6,,600\r\n18.4,b,700\r\n");
  ASSERT_EQ(run(BUILD_SCENE, {"--data", changed, scene_}).status, 0);
  EXPECT_EQ(run(CHECK_SCENE, {scene_}).status, 0);
}

TEST_F(CornellBox, BadInputIsReportedByFileAndLine) {
  const std::string table = path("table.csv");
  const std::string header = "object,face,material,corner,x,y,z\n";
  const struct {
    const char* option;
    std::string text, message;
  } cases[] = {
      {"--reflectance", "", ": there are no rows"},
      {"--reflectance", "wavelength,white,green\n400,1,1\n", ": there is no column 'red'"},
      {"--reflectance", "wavelength,white,green,red\n400,1,1\n",
       ":2: 3 cells where the header has 4"},
      {"--reflectance", "wavelength,white,green,red\n400,1,1,1\n404,1,x,1\n",
       ":3: green is no number: 'x'"},
      {"--reflectance", "wavelength,white,green,red\n400,1,1,1\n404,1,0.5x,1\n",
       ":3: green is no number: '0.5x'"},
      {"--reflectance", "wavelength,white,green,red\n400,1,nan,1\n404,1,1,1\n",
       ":2: green is no number: 'nan'"},
      {"--reflectance", "wavelength,white,green,red\n400,1,1,1\n400,1,1,1\n",
       ":3: the wavelengths don't rise"},
      {"--reflectance", "wavelength,white,green,red\n400,1,1,1\n404,1.5,1,1\n",
       ":3: a fraction of 0 to 1 was expected"},
      {"--light", "wavelength,emission\n400,1\n", ":2: a spectrum needs two wavelengths at least"},
      {"--geometry", header + "f,f,white,0,0,0,0\n", ":2: the last face has no four corners"},
      {"--geometry",
       header + "f,f,white,0,0,0,0\nf,f,white,2,1,0,0\nf,f,white,1,1,1,0\nf,f,white,3,0,1,0\n",
       ":3: corner 1 of a face was expected here"},
      {"--geometry",
       header + "f,f,white,0,0,0,0\nf,f,red,1,1,0,0\nf,f,white,2,1,1,0\nf,f,white,3,0,1,0\n",
       ":3: the corners of a face differ in their material"},
      {"--geometry",
       header + "f,f,white,0,0,0,0\nf,f,white,1,1,0,0\nf,f,white,2,2,0,0\nf,f,white,3,0,1,0\n",
       ":3: two sides of the face lie on one line"},
      {"--camera", "quantity,unit,x,y,z\nposition,m,0,0,0\n", ":2: the unit should be mm"},
      {"--camera", "quantity,unit,x,y,z\nposition,mm,0,0,0\n",
       ":2: the file ends without 'direction'"},
  };
  for (const auto& [option, text, message] : cases) {
    writeFile(table, text);
    const Outcome built = run(BUILD_SCENE, {option, table, scene_});
    EXPECT_EQ(built.status, 1);
    EXPECT_EQ(built.output, "");
    EXPECT_EQ(built.errors, "build_scene: " + table + message + "\n");
    EXPECT_FALSE(fs::exists(scene_));
  }
}

TEST_F(CornellBox, MissingInputIsReportedByName) {
  const Outcome table = run(BUILD_SCENE, {"--light", path("none.csv"), scene_});
  EXPECT_EQ(table.status, 1);
  EXPECT_EQ(table.errors, "build_scene: " + path("none.csv") + ": cannot open the file\n");
  const Outcome programs = run(BUILD_SCENE, {"--programs", path("none"), scene_});
  EXPECT_EQ(programs.status, 1);
  EXPECT_EQ(programs.errors,
            "build_scene: " + path("none") + "/pinhole.camera: there is no program\n");
}

TEST_F(CornellBox, AMaterialWithoutAReflectanceIsRefused) {
  const Outcome built =
      buildWith("cornell_box_geometry.csv",
                "floor,floor,white,0,552.8,0.0,0.0\nfloor,floor,white,1,0.0,0.0,0.0\n"
                "floor,floor,white,2,0.0,0.0,559.2\nfloor,floor,white,3,549.6,0.0,559.2\n",
                "floor,floor,blue,0,552.8,0.0,0.0\nfloor,floor,blue,1,0.0,0.0,0.0\n"
                "floor,floor,blue,2,0.0,0.0,559.2\nfloor,floor,blue,3,549.6,0.0,559.2\n");
  EXPECT_EQ(built.status, 1);
  EXPECT_EQ(built.errors, "build_scene: there is no reflectance for the material 'blue'\n");
}

TEST_F(CornellBox, WrongArgumentsGiveTheUsage) {
  for (const char* const program : {BUILD_SCENE, SHOW_SCENE, CHECK_SCENE}) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--nothing"}, {"a", "b"}}) {
      const Outcome outcome = run(program, arguments);
      EXPECT_EQ(outcome.status, 2) << program;
      EXPECT_EQ(outcome.errors.rfind("usage: ", 0), 0U) << outcome.errors;
    }
    EXPECT_EQ(run(program, {"--help"}).output.rfind("usage: ", 0), 0U);
  }
}

}  // namespace
}  // namespace vornath_test
