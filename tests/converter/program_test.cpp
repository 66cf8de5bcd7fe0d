// The program as a user calls it, and the process in which it reads.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "converter/support.hpp"
#include "program/options.hpp"
#include "program/supervisor.hpp"

namespace {

using namespace vrn_convert_tests;
using vrn_convert::Ending;
using vrn_convert::runSupervised;

class Program : public testing::Test {
 protected:
  void SetUp() override {
    folder_ =
        std::filesystem::temp_directory_path() /
        (std::string("converter_") + testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(folder_);
    write("in.gltf", triangleGltf(kOneNode));
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
  }
  std::string bytes(const std::string& name) const {
    std::ifstream stream(folder_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  // Runs the program in the folder and returns its status. Its streams go to files.
  int run(const std::string& arguments, const std::string& program = VRN_CONVERT) const {
    const std::string command =
        "cd " + folder_.string() + " && " + program + " " + arguments + " > out 2> err";
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  // The only line on standard error; the number of lines if there are others.
  std::string line() const {
    const std::string text = bytes("err");
    const auto lines = std::count(text.begin(), text.end(), '\n');
    return lines == 1 ? text.substr(0, text.size() - 1) : std::to_string(lines) + " lines";
  }

  std::filesystem::path folder_;
};

TEST_F(Program, WritesASceneThatACheckFindsNothingIn) {
  ASSERT_EQ(run("in.gltf out.vrnscene"), 0) << bytes("err");
  EXPECT_EQ(bytes("out"), "");
  vrtkReport* report = nullptr;
  ASSERT_EQ(vrtkCheckFile(path("out.vrnscene").c_str(), nullptr, &report, nullptr), VRTK_OK);
  EXPECT_EQ(vrtkReportErrorCount(report), 0U);
  EXPECT_EQ(vrtkReportWarningCount(report), 0U);
  EXPECT_EQ(vrtkReportClass(report, VRDM_CLASS_SHAPE).live, 1U);
  // A camera and lights are added.
  EXPECT_EQ(vrtkReportClass(report, VRDM_CLASS_CAMERA).live, 1U);
  EXPECT_EQ(vrtkReportClass(report, VRDM_CLASS_LIGHT).live, 2U);
  vrtkReportDestroy(report);
  EXPECT_NE(bytes("err").find("vrn convert: in.gltf: it has no camera"), std::string::npos);
  EXPECT_NE(bytes("err").find("vrn convert: in.gltf: it has no light"), std::string::npos);
}

TEST_F(Program, TheAddedCameraSeesTheWholeScene) {
  ASSERT_EQ(run("in.gltf out.vrnscene"), 0);
  vrdmScene_t* opened = nullptr;
  ASSERT_EQ(vrtkSceneOpen(path("out.vrnscene").c_str(), nullptr, &opened, nullptr, nullptr),
            VRTK_OK);
  const Converted made{vrnt::host::Scene(opened), {}, false, {}};
  const Record lens = made.value(VRDM_CLASS_CAMERA, 0);
  const auto film = lens.get<Float2>("film_size");
  const auto length = lens.get<float>("focal_length");
  const Float4 eye = made.row(VRDM_CLASS_CAMERA, 0, "w");
  // The corners of the triangle of the file.
  for (const Float3& corner : {Float3{0, 0, 0}, Float3{2, 0, 0}, Float3{0, 1, 0}}) {
    const auto along = [&](const char* axis) {
      const Float4 row = made.row(VRDM_CLASS_CAMERA, 0, axis);
      float sum = 0;
      for (std::size_t i = 0; i < 3; ++i) sum += row[i] * (corner[i] - eye[i]);
      return sum;
    };
    const float depth = -along("z");
    ASSERT_GT(depth, 0);
    EXPECT_LT(std::abs(along("x")) / depth * length, film[0] / 2);
    EXPECT_LT(std::abs(along("y")) / depth * length, film[1] / 2);
  }
}

TEST_F(Program, ACameraThatLooksAwayIsNotTheFirst) {
  const auto added = [this](const std::string& turn) {
    write("in.gltf",
          triangleGltf(
              "\"cameras\": [ { \"type\": \"perspective\", \"perspective\": { \"yfov\": 0.8, "
              "\"aspectRatio\": 1, \"znear\": 0.1 } } ], \"nodes\": [ { \"mesh\": 0 }, { "
              "\"camera\": 0, \"translation\": [ 0, 0, 9 ]" +
              turn + " } ]"));
    EXPECT_EQ(run("--json in.gltf out.vrnscene"), 0) << bytes("err");
    const nlohmann::json report = nlohmann::json::parse(bytes("out"));
    EXPECT_EQ(report["objects"]["Camera"], report["addedCamera"] ? 2 : 1);
    return report["addedCamera"].get<bool>();
  };
  EXPECT_FALSE(added(""));
  EXPECT_TRUE(added(", \"rotation\": [ 0, 1, 0, 0 ]"));
}

TEST_F(Program, AddsNothingIfItIsTold) {
  ASSERT_EQ(run("--no-default-camera --no-default-light in.gltf --json -o out.vrnscene"), 0);
  const nlohmann::json report = nlohmann::json::parse(bytes("out"));
  EXPECT_EQ(report["addedCamera"], false);
  EXPECT_EQ(report["addedLight"], false);
  EXPECT_FALSE(report["objects"].contains("Camera"));
  EXPECT_FALSE(report["objects"].contains("Light"));
}

TEST_F(Program, ReportsAsJson) {
  ASSERT_EQ(run("--json --quiet in.gltf out.vrnscene"), 0);
  EXPECT_EQ(bytes("err"), "");
  const nlohmann::json report = nlohmann::json::parse(bytes("out"));
  EXPECT_EQ(report["input"], "in.gltf");
  EXPECT_EQ(report["output"], "out.vrnscene");
  EXPECT_EQ(report["reader"], "glTF");
  EXPECT_EQ(report["triangles"], 1);
  EXPECT_EQ(report["vertices"], 3);
  EXPECT_EQ(report["objects"]["Shape"], 1);
  EXPECT_EQ(report["addedCamera"], true);
  EXPECT_EQ(report["warnings"], 0);
  EXPECT_EQ(report["notices"].size(), 3U);
}

TEST_F(Program, StandardInputAndOutputAreStreams) {
  ASSERT_EQ(run("--quiet - - < in.gltf"), 0) << bytes("err");
  EXPECT_EQ(bytes("out").substr(0, 8), "VRNSCENE");
  ASSERT_EQ(run("--quiet in.gltf file.vrnscene"), 0);
  EXPECT_EQ(bytes("out").size(), 0U);
  write("in.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
  EXPECT_EQ(run("--quiet --format obj - - < in.obj"), 0) << bytes("err");
  EXPECT_EQ(bytes("out").substr(0, 8), "VRNSCENE");
}

TEST_F(Program, AFullDeviceIsTroubleAndAReaderThatLeavesIsNot) {
  EXPECT_EQ(run("--quiet in.gltf - > /dev/full 2> err; echo $?"), 0);
  EXPECT_EQ(bytes("out"), "2\n");
  // More bytes than a pipe holds: 20,000 nodes.
  std::string nodes = "\"nodes\": [ { \"mesh\": 0 }";
  for (int i = 1; i < 20000; ++i) nodes += ", { \"mesh\": 0 }";
  write("large.gltf", triangleGltf(nodes + " ]"));
  EXPECT_EQ(run("--quiet large.gltf - | head -c 8"), 0);
  EXPECT_EQ(bytes("out"), "VRNSCENE");
  EXPECT_EQ(bytes("err"), "");
}

TEST_F(Program, BuffersAndImagesBesideTheFileAreRead) {
  Buffer buffer;
  const int positions = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0});
  write(
      "in.gltf",
      gltf(buffer.jsonWithout("a%20b.bin") + ", \"accessors\": [ " +
           accessor(positions, 5126, 3, "VEC3") +
           " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { \"POSITION\": 0 } } ] } ], " +
           kOneNode));
  // A file may have more bytes than the buffer.
  write("a b.bin", buffer.bytes() + "more");
  EXPECT_EQ(run("--quiet in.gltf out.vrnscene"), 0) << bytes("err");
  // It is looked for beside the file, not in the working folder.
  std::filesystem::create_directories(folder_ / "sub");
  std::filesystem::rename(folder_ / "in.gltf", folder_ / "sub" / "in.gltf");
  EXPECT_EQ(run("--quiet sub/in.gltf out.vrnscene"), 2);
  EXPECT_NE(line().find("a b.bin"), std::string::npos) << line();
}

TEST_F(Program, TroubleIsOneLineAndTheStatus2) {
  std::filesystem::create_directories(folder_ / "folder");
  write("empty.obj", "");
  write("bad.glb", "glTF and nothing more");
  const struct {
    std::string arguments, line;
  } cases[] = {
      {"", "vrn convert: IN: the file to convert is missing; see vrn convert --help"},
      {"in.gltf", "vrn convert: OUT: the scene file to write is missing; see vrn convert --help"},
      {"a b c", "vrn convert: c: there are too many files; give IN and OUT.vrnscene"},
      {"--jsn in.gltf o", "vrn convert: --jsn: there is no such option; did you mean --json?"},
      {"--scale x in.gltf o",
       "vrn convert: --scale: 'x' is not a number that it takes; see --help"},
      {"--up x in.gltf o", "vrn convert: --up: 'x' is not an axis that can be up; give y or z"},
      {"gone.gltf o", "vrn convert: gone.gltf: there is no such file; check the path"},
      {"folder o", "vrn convert: folder: it is a folder; give a file"},
      {"empty.obj o", "vrn convert: empty.obj: it is empty"},
      {"--json in.gltf -",
       "vrn convert: -: standard output cannot take both the scene and the report; give a file"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(run(each.arguments), 2) << each.arguments;
    EXPECT_EQ(line(), each.line);
    EXPECT_EQ(bytes("out"), "");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "o"));
  }
  EXPECT_EQ(run("bad.glb o"), 2);
  EXPECT_EQ(line().substr(0, 22), "vrn convert: bad.glb: ");
  EXPECT_EQ(run("in.gltf nowhere/o.vrnscene --quiet"), 2);
  EXPECT_NE(line().find("nowhere/o.vrnscene"), std::string::npos);
}

TEST_F(Program, AFileThatIsRefusedLeavesTheOldSceneAlone) {
  write("old.vrnscene", "old");
  write("bad.gltf", "{ \"asset\": { \"version\": \"2.0\" }, \"meshes\": [");
  EXPECT_EQ(run("bad.gltf old.vrnscene"), 2);
  EXPECT_EQ(bytes("old.vrnscene"), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_), {}), 5);
}

TEST_F(Program, WithStrictALossIsTheStatus1) {
  EXPECT_EQ(run("--strict in.gltf out.vrnscene"), 0) << bytes("err");
  write("loss.gltf", triangleGltf(std::string(kOneNode) +
                                  ", \"animations\": [ { \"channels\": [], \"samplers\": [] } ]"));
  EXPECT_EQ(run("loss.gltf out.vrnscene"), 0);
  EXPECT_EQ(run("--strict loss.gltf out.vrnscene"), 1);
  EXPECT_TRUE(std::filesystem::exists(folder_ / "out.vrnscene"));
}

TEST_F(Program, NamesGoIntoAFile) {
  ASSERT_EQ(run("--quiet --names names.json in.gltf out.vrnscene"), 0);
  const nlohmann::json names = nlohmann::json::parse(bytes("names.json"));
  EXPECT_EQ(names["Mesh"], nlohmann::json::parse("[\"tri\"]"));
  EXPECT_EQ(names["Shape"], nlohmann::json::parse("[\"it\"]"));
}

TEST_F(Program, TheFileToConvertIsNotOverwritten) {
  write("in.glb", triangleGltf(kOneNode));
  const std::string before = bytes("in.glb");
  std::filesystem::create_symlink("in.glb", folder_ / "link.glb");
  std::filesystem::create_hard_link(folder_ / "in.glb", folder_ / "hard.glb");
  std::filesystem::create_directory_symlink(".", folder_ / "here");
  const std::string words = ": it is the file to convert; give another file to write";
  for (const char* name : {"in.glb", "link.glb", "hard.glb", "./here/in.glb"}) {
    EXPECT_EQ(run(std::string("in.glb ") + name), 2);
    EXPECT_EQ(line(), std::string("vrn convert: ") + name + words);
    EXPECT_EQ(run(std::string("- ") + name + " < in.glb"), 2);
    EXPECT_EQ(line(), std::string("vrn convert: ") + name + words);
    EXPECT_EQ(run(std::string("in.glb out.vrnscene --names ") + name), 2);
    EXPECT_EQ(line(), std::string("vrn convert: --names: ") + name + words);
  }
  EXPECT_EQ(run("link.glb in.glb"), 2);
  EXPECT_EQ(bytes("in.glb"), before);
  EXPECT_FALSE(std::filesystem::exists(folder_ / "out.vrnscene"));
}

TEST_F(Program, TheNamesDoNotGoOverTheScene) {
  EXPECT_EQ(run("in.gltf out.vrnscene --names ./out.vrnscene"), 2);
  EXPECT_EQ(line(),
            "vrn convert: --names: ./out.vrnscene: it is the scene file to write; give another");
  EXPECT_FALSE(std::filesystem::exists(folder_ / "out.vrnscene"));
  write("out.vrnscene", "old");
  std::filesystem::create_hard_link(folder_ / "out.vrnscene", folder_ / "names.json");
  EXPECT_EQ(run("in.gltf out.vrnscene --names names.json"), 2);
  EXPECT_EQ(bytes("out.vrnscene"), "old");
}

TEST_F(Program, NothingIsWrittenIfTheNamesOrTheSceneCannotBe) {
  std::filesystem::create_directories(folder_ / "folder");
  const auto files = [this] {
    return std::distance(std::filesystem::directory_iterator(folder_), {});
  };
  ASSERT_EQ(run("--help"), 0);
  const auto before = files();
  for (const char* names : {"nowhere/n.json", "folder", "/dev/full"}) {
    EXPECT_EQ(run(std::string("--quiet in.gltf out.vrnscene --names ") + names), 2);
    EXPECT_EQ(line().find(std::string("vrn convert: ") + names), 0U) << line();
    EXPECT_EQ(files(), before);
  }
  EXPECT_EQ(run("--quiet in.gltf nowhere/out.vrnscene --names names.json"), 2);
  EXPECT_EQ(files(), before);
  write("names.json", "old");
  EXPECT_EQ(run("--quiet in.gltf nowhere/out.vrnscene --names names.json"), 2);
  EXPECT_EQ(bytes("names.json"), "old");
  EXPECT_EQ(run("--quiet in.gltf out.vrnscene --names names.json"), 0) << bytes("err");
  EXPECT_EQ(nlohmann::json::parse(bytes("names.json"))["Mesh"][0], "tri");
  EXPECT_EQ(files(), before + 2);
}

TEST_F(Program, TheTimeLimitEndsAWaitForever) {
  ASSERT_EQ(mkfifo(path("pipe.obj").c_str(), 0600), 0);
  EXPECT_EQ(run("--time-limit 0.2 pipe.obj out.vrnscene"), 2);
  EXPECT_EQ(line(),
            "vrn convert: pipe.obj: it takes longer than the time limit; give more with "
            "--time-limit");
}

TEST_F(Program, HelpVersionAndFormatsGoToStandardOutput) {
  EXPECT_EQ(run("--help"), 0);
  EXPECT_EQ(bytes("out"), vrn_convert::kHelp);
  EXPECT_EQ(run("--version"), 0);
  EXPECT_EQ(bytes("out").substr(0, 12), "vrn-convert ");
  EXPECT_EQ(run("--formats"), 0);
  for (const char* format : {"\nfbx\n", "\nglb\n", "\ngltf\n", "\nobj\n", "\nply\n", "\nstl\n"}) {
    EXPECT_NE(bytes("out").find(format), std::string::npos) << format;
  }
  EXPECT_EQ(bytes("err"), "");
}

TEST_F(Program, AFullStandardOutputIsTroubleAndALine) {
  for (const char* option :
       {"--help", "--version", "--formats", "--json --quiet in.gltf out.vrnscene"}) {
    EXPECT_EQ(run(std::string(option) + " > /dev/full 2> told; echo $?"), 0);
    EXPECT_EQ(bytes("out"), "2\n") << option;
    EXPECT_EQ(bytes("told"),
              "vrn convert: standard output: it cannot be written: No space left on device; make "
              "room and run the command again\n");
  }
}

TEST_F(Program, ARefusalOfAGltfSaysWhatIsWrong) {
  const std::string whole = glb(triangleGltf(kOneNode), "some");
  write("whole.glb", whole);
  ASSERT_EQ(run("--quiet whole.glb out.vrnscene"), 0) << bytes("err");
  const auto lineFor = [this](const std::string& name, const std::string& text) {
    write(name, text);
    EXPECT_EQ(run("--quiet " + name + " o"), 2) << text;
    EXPECT_FALSE(std::filesystem::exists(folder_ / "o"));
    return line().substr(std::string("vrn convert: ").size() + name.size() + 2);
  };
  const std::string invalid = "it is no valid glTF: ";
  for (const std::size_t size : {std::size_t{20}, std::size_t{100}, whole.size() - 1}) {
    EXPECT_EQ(lineFor("cut.glb", whole.substr(0, size)),
              invalid + "its header tells of " + std::to_string(whole.size()) +
                  " bytes, and the file has " + std::to_string(size) + "; it may be cut");
  }
  EXPECT_EQ(lineFor("cut.glb", whole.substr(0, 7)),
            invalid + "a .glb has at least 20 bytes, and the file has 7; it may be cut");
  const std::string text = triangleGltf(kOneNode);
  const std::string version = "\"version\": \"2.0\"";
  const auto with = [&](const std::string& asset) {
    return std::string(text).replace(text.find(version), version.size(), asset);
  };
  EXPECT_EQ(lineFor("a.gltf", with("")), invalid + "its asset.version is missing, or is no string");
  EXPECT_EQ(lineFor("a.gltf", "{}"), invalid + "its asset.version is missing, or is no string");
  EXPECT_EQ(lineFor("a.gltf", "{ \"asset\""),
            invalid + "its JSON is damaged at byte 10; the file may be cut");
  EXPECT_EQ(lineFor("a.gltf", "words"),
            invalid + "it does not begin with an object of JSON in UTF-8");
  EXPECT_EQ(
      lineFor("a.gltf", with("\"version\": \"2.1\", \"minVersion\": \"2.1\"")),
      "it needs at least version 2.1 of glTF (asset.minVersion), and 2.0 is what can be read");
  write("a.gltf", with("\"minVersion\": \"2.0\", \"version\": \"2.1\""));
  EXPECT_EQ(run("--quiet a.gltf out.vrnscene"), 0) << bytes("err");
  const std::string type = "application/octet-stream";
  EXPECT_EQ(lineFor("a.gltf", std::string(text).replace(text.find(type), type.size(), "x/y")),
            "a data URI has a type or an encoding that cannot be read; write "
            "data:application/octet-stream;base64, and the bytes, or name a file");
}

#if defined(VRN)
TEST_F(Program, IsACommandOfVrn) {
  const std::string folder = std::filesystem::path(VRN_CONVERT).parent_path().string();
  EXPECT_EQ(run("convert --quiet in.gltf out.vrnscene", "PATH=" + folder + ":$PATH " VRN), 0)
      << bytes("err");
  EXPECT_TRUE(std::filesystem::exists(folder_ / "out.vrnscene"));
}
#endif

TEST(Supervisor, ReturnsWhatTheWorkReturns) {
  const std::string text(100000, 'x');
  const Ending ending = runSupervised(
      {}, [&](int) { return text; }, [](double) {});
  EXPECT_TRUE(ending.isWhole);
  EXPECT_EQ(ending.message, text);
}

TEST(Supervisor, ACrashAnExitAndAnEndlessLoopEndOnlyTheWork) {
  const auto crash = runSupervised(
      {},
      [](int) -> std::string {
        std::raise(SIGKILL);
        return "";
      },
      [](double) {});
  EXPECT_FALSE(crash.isWhole);
  EXPECT_NE(crash.message.find("killed"), std::string::npos);
  const auto exits = runSupervised(
      {}, [](int) -> std::string { _exit(0); }, [](double) {});
  EXPECT_FALSE(exits.isWhole);
  const auto hang = runSupervised(
      {0.1, 0},
      [](int) -> std::string {
        for (;;) pause();
      },
      [](double) {});
  EXPECT_FALSE(hang.isWhole);
  EXPECT_NE(hang.message.find("time limit"), std::string::npos);
}

}  // namespace
