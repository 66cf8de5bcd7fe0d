// The program as a user calls it.
#include <gtest/gtest.h>
#include <png.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "renderer/support.hpp"

namespace {

using namespace vrn_render_tests;

class Program : public testing::Test {
 protected:
  void SetUp() override {
    folder_ =
        std::filesystem::temp_directory_path() /
        (std::string("renderer_") + testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(folder_);
    Maker maker;
    maker.shape(maker.diffuse(flat(0.7F)),
                maker.mesh({{{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}}}}));
    const Object lamp = maker.light("rectangle", flat(3));
    maker.place(lamp, {1, 0, 0}, {0, -1, 0}, {0, 0, -1}, {0, 0, 1});
    maker.camera({0, 0, 2});
    maker.scene.write(path("scene"));
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::string path(const std::string& name) const { return (folder_ / name).string(); }

  // Runs the program and returns its status; what it prints goes to the file "out".
  int run(const std::string& arguments) const {
    const std::string command =
        std::string(VRN_RENDER) + " " + arguments + " > " + path("out") + " 2>&1";
    return WEXITSTATUS(std::system(command.c_str()));
  }
  std::string bytes(const std::string& name) const {
    std::ifstream stream(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  std::filesystem::path folder_;
};

TEST_F(Program, WritesPicturesThatOthersRead) {
  ASSERT_EQ(run(path("scene") + " -o " + path("a.png") + " --size 24x16 --samples 4"), 0);
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  ASSERT_NE(png_image_begin_read_from_file(&image, path("a.png").c_str()), 0);
  EXPECT_EQ(image.width, 24U);
  EXPECT_EQ(image.height, 16U);
  png_image_free(&image);
  ASSERT_EQ(run(path("scene") + " -o " + path("a.exr") +
                " --size 8 --samples 2 --pass depth --pass normal --pass albedo --pass object"
                " --pass spectrum"),
            0);
  const std::string exr = bytes("a.exr");
  EXPECT_EQ(exr.substr(0, 4), "\x76\x2f\x31\x01");
  for (const char* channel : {"depth.Z", "normal.X", "albedo.G", "object.id", "spectrum.555nm"}) {
    EXPECT_NE(exr.find(channel), std::string::npos) << channel;
  }
  for (const char* pass : {"depth", "normal", "albedo", "object"}) {
    EXPECT_EQ(run(path("scene") + " -o " + path("b.png") + " --size 8 --samples 1 --pass " + pass),
              0);
  }
}

TEST_F(Program, PutsSharesTogetherToTheSameBytes) {
  const std::string how = " --size 40x30 --samples 3 --quiet ";
  ASSERT_EQ(run(path("scene") + how + "-o " + path("whole.png") + " --threads 2"), 0);
  ASSERT_EQ(run(path("scene") + how + "--count-tiles"), 0);
  EXPECT_EQ(bytes("out"), "6\n");
  ASSERT_EQ(run(path("scene") + how + "-o " + path("a") + " --tiles 0-2 --threads 1"), 0);
  ASSERT_EQ(run(path("scene") + how + "-o " + path("b") + " --tiles 3-5 --threads 3"), 0);
  ASSERT_EQ(run("--assemble " + path("b") + " " + path("a") + " -o " + path("put.png")), 0);
  EXPECT_EQ(bytes("put.png"), bytes("whole.png"));
  const std::string before = bytes("put.png");
  EXPECT_EQ(run("--assemble " + path("b") + " -o " + path("put.png")), 2);
  EXPECT_EQ(bytes("out"), "vrn render: " + path("b") +
                              ": the shares have fewer pixels than the picture; give all shares, "
                              "as they were written\n");
  EXPECT_EQ(
      run("--assemble " + path("a") + " " + path("b") + " " + path("b") + " -o " + path("put.png")),
      2);
  EXPECT_NE(bytes("out").find("it has tile 3, which another share has"), std::string::npos);
  // Shares of other options belong to another picture.
  ASSERT_EQ(run(path("scene") + how + "-o " + path("c") + " --tiles 0-2 --bounces 1"), 0);
  EXPECT_EQ(run("--assemble " + path("c") + " " + path("b") + " -o " + path("put.png")), 2);
  EXPECT_NE(bytes("out").find("it belongs to another picture"), std::string::npos);
  EXPECT_EQ(bytes("put.png"), before);
}

TEST_F(Program, WritesWhatThereIsWhenItIsInterrupted) {
  const std::string command =
      "(" + std::string(VRN_RENDER) + " " + path("scene") + " -o " + path("cut.png") +
      " --size 64 --samples 100000000 --quiet & sleep 1; kill -INT $!; wait $!)";
  EXPECT_EQ(WEXITSTATUS(std::system(("bash -c '" + command + "'").c_str())), 130);
  EXPECT_EQ(bytes("cut.png").substr(1, 3), "PNG");
}

TEST_F(Program, TellsInOneLineWhatIsWrong) {
  const auto expectTrouble = [&](const std::string& arguments) {
    EXPECT_EQ(run(arguments), 2) << arguments;
    const std::string text = bytes("out");
    EXPECT_EQ(text.find("vrn render: "), 0U) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    return text;
  };
  EXPECT_EQ(
      expectTrouble(path("none") + " -o " + path("a.png")).find("vrn render: " + path("none")), 0U);
  expectTrouble(path("scene") + " -o " + path("folder/a.png") + " --size 4 --samples 1 --quiet");
  EXPECT_EQ(expectTrouble(path("scene") + " -o " + path("a.png") + " --task 7"),
            "vrn render: --task: there is no image task 7; run vrn show " + path("scene") + "\n");
  EXPECT_EQ(expectTrouble("scene -o a.png --sampels 3"),
            "vrn render: --sampels: there is no such option; did you mean --samples?\n");
  EXPECT_EQ(expectTrouble("scene -o a.exr --pass deph"),
            "vrn render: --pass: there is no pass 'deph'; did you mean depth?\n");
  for (const char* arguments :
       {"", "scene", "scene -o a.jpg", "scene -o a.png --size 0", "scene -o a.png --samples none",
        "scene -o a.png --wrong", "scene -o a.png --pass light", "--assemble -o a.png",
        "scene -o a.png --tiles 0-1", "scene -o a.png --tiles 3-1", "scene -o",
        "scene other -o a.png", "scene -o a.png --quiet=1", "scene -o a.png --max-memory much"}) {
    expectTrouble(arguments);
  }
  EXPECT_EQ(run("--help"), 0);
  EXPECT_EQ(run("--version"), 0);
}

TEST_F(Program, RefusesAFileThatIsNotSafeToReadUnlessItIsTrusted) {
  const std::string whole = bytes("scene");
  std::ofstream(path("cut"), std::ios::binary) << whole.substr(0, whole.size() - 4);
  EXPECT_EQ(run(path("cut") + " -o " + path("a.png")), 2);
  EXPECT_NE(bytes("out").find("; run vrn check " + path("cut") + "\n"), std::string::npos)
      << bytes("out");
  EXPECT_FALSE(std::filesystem::exists(path("a.png")));
  EXPECT_EQ(run(path("scene") + " --trust -o " + path("a.png") + " --size 4 --samples 1"), 0);
  EXPECT_EQ(run(path("scene") + " --max-memory 1KiB -o " + path("a.png") + " --size 4"), 2);
}

TEST_F(Program, WritesToStandardOutputAndReadsStandardInput) {
  const std::string how = " --size 8 --samples 2 --quiet ";
  ASSERT_EQ(run(path("scene") + how + "-o " + path("a.png")), 0);
  ASSERT_EQ(run("-" + how + "-o - < " + path("scene")), 0);
  EXPECT_EQ(bytes("out"), bytes("a.png"));
}

TEST_F(Program, KeepsTheOldFileIfItFails) {
  std::ofstream(path("a.png")) << "old";
  std::filesystem::permissions(path("a.png"), std::filesystem::perms(0640));
  EXPECT_EQ(run(path("none") + " -o " + path("a.png")), 2);
  EXPECT_EQ(bytes("a.png"), "old");
  ASSERT_EQ(run(path("scene") + " -o " + path("a.png") + " --size 4 --samples 1 --quiet"), 0);
  EXPECT_EQ(std::filesystem::status(path("a.png")).permissions(), std::filesystem::perms(0640));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_), {}), 3);
}

TEST_F(Program, PrintsOneJsonDocument) {
  ASSERT_EQ(run(path("scene") + " --json -o " + path("a.png") + " --size 8x4 --samples 2"), 0);
  const std::string text = bytes("out");
  EXPECT_EQ(text.front(), '{');
  for (const char* member : {"\"width\": 8,", "\"height\": 4,", "\"samples\": 64,",
                             "\"interrupted\": false", "\"notices\": []\n}\n"}) {
    EXPECT_NE(text.find(member), std::string::npos) << member << " in " << text;
  }
}

TEST_F(Program, HasAManualPageOfItsOptions) {
  ASSERT_EQ(run("--help"), 0);
  // The long options at the beginnings of lines, behind what may stand before them.
  const auto optionsOf = [](const std::string& text, const std::string& before) {
    std::set<std::string> found;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      const std::size_t at = line.find("--");
      if (at == std::string::npos || line.compare(0, before.size(), before) != 0) continue;
      const std::size_t end = line.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", at);
      if (at <= 13) found.insert(line.substr(at, end - at));
    }
    return found;
  };
  std::ifstream stream(std::string(SOURCE) + "/renderer/vrn-render.1");
  std::string page{std::istreambuf_iterator<char>(stream), {}};
  for (std::size_t at = 0; (at = page.find("\\-", at)) != std::string::npos;) page.erase(at, 1);
  const auto inHelp = optionsOf(bytes("out"), "  ");
  const auto inPage = optionsOf(page, "\\fB-");
  EXPECT_GT(inHelp.size(), 15U);
  EXPECT_EQ(inHelp, inPage);
}

// Runs the program on a terminal of its own, and returns what it draws there.
std::string onTerminal(const std::string& arguments) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    execl("/bin/sh", "sh", "-c", (std::string("exec ") + VRN_RENDER + " " + arguments).c_str(),
          nullptr);
    _exit(127);
  }
  std::string drawn;
  char part[4096];
  for (ssize_t count; (count = read(terminal, part, sizeof part)) > 0;) {
    drawn.append(part, static_cast<std::size_t>(count));
  }
  close(terminal);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(WEXITSTATUS(status), 0);
  return drawn;
}

TEST_F(Program, DrawsPreviewsOnATerminalAndLettersElsewhere) {
  const std::string how =
      path("scene") + " -o " + path("a.png") + " --size 16 --samples 4 --quiet ";
  EXPECT_NE(onTerminal(how + "--preview").find("\u2580"), std::string::npos);
  EXPECT_NE(onTerminal(how + "--preview=sixel").find("\x1bPq"), std::string::npos);
  ASSERT_EQ(setenv("NO_COLOR", "1", 1), 0);
  EXPECT_EQ(onTerminal(how + "--preview").find("\u2580"), std::string::npos);
  unsetenv("NO_COLOR");
  for (const char* preview : {"--preview", "--preview=sixel"}) {
    ASSERT_EQ(run(how + preview), 0);
    EXPECT_EQ(bytes("out").find('\x1b'), std::string::npos);
    EXPECT_GT(bytes("out").size(), 16U);
  }
}

// The scene would take days.
TEST_F(Program, ChecksTheTargetBeforeItTracesARay) {
  const std::string how = " --size 4096 --samples 1000000000 --quiet -o ";
  EXPECT_EQ(run(path("scene") + how + path("none/a.png")), 2);
  EXPECT_EQ(bytes("out"), "vrn render: " + path("none/a.png") + ": the folder " + path("none") +
                              " does not exist; make it first\n");
  std::filesystem::create_directory(path("folder.png"));
  EXPECT_EQ(run(path("scene") + how + path("folder.png")), 2);
  EXPECT_EQ(bytes("out"),
            "vrn render: " + path("folder.png") + ": this is a folder; name a file in it\n");
  EXPECT_EQ(run(path("scene") + how + "/proc/a.png"), 2);
  EXPECT_EQ(bytes("out").find("vrn render: /proc/a.png: no file can be made beside it: "), 0U)
      << bytes("out");
  EXPECT_EQ(run("--assemble " + path("scene") + " -o " + path("none/a.png")), 2);
  EXPECT_NE(bytes("out").find("does not exist; make it first"), std::string::npos);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_), {}), 3);
}

TEST_F(Program, KeepsTheOldPictureIfItIsInterruptedBeforeTheFirstSample) {
  std::ofstream(path("a.png")) << "old";
  // It waits for its scene.
  ASSERT_EQ(std::system(("mkfifo " + path("pipe")).c_str()), 0);
  const std::string command = "set -m; " + std::string(VRN_RENDER) + " - -o " + path("a.png") +
                              " --json < " + path("pipe") + " > " + path("out") +
                              " 2>&1 & exec 3> " + path("pipe") +
                              "; sleep 0.3; kill -INT $!; wait $!";
  EXPECT_EQ(WEXITSTATUS(std::system(("bash -c '" + command + "'").c_str())), 130);
  EXPECT_EQ(bytes("out"),
            "vrn render: interrupted before the first sample, so no picture is written\n");
  EXPECT_EQ(bytes("a.png"), "old");
  EXPECT_EQ(run(path("scene") + " --time 1e-9 --json -o " + path("a.png")), 2);
  EXPECT_EQ(bytes("a.png"), "old");
}

TEST_F(Program, RefusesSharesThatAreNotWhole) {
  const std::string share = " --size 16 --samples 1 --quiet --tiles 0-0 -o " + path("share");
  EXPECT_EQ(run(path("scene") + share + " --time 100"), 2);
  EXPECT_EQ(bytes("out"),
            "vrn render: --time: a share of tiles must be whole; limit it by --samples or "
            "--noise\n");
  ASSERT_EQ(run(path("scene") + share), 0);
  ASSERT_EQ(run("--assemble " + path("share") + " -o " + path("a.png")), 0);
  std::ofstream(path("share"), std::ios::app) << "x";
  EXPECT_EQ(run("--assemble " + path("share") + " -o " + path("a.png")), 2);
  EXPECT_EQ(bytes("out"),
            "vrn render: " + path("share") + ": it has bytes behind its end; render it again\n");
  EXPECT_EQ(run("--assemble - -o " + path("a.png") + " < " + path("share")), 2);
  EXPECT_EQ(bytes("out"),
            "vrn render: -: a share is not read from standard input; give the file of it\n");
}

TEST_F(Program, AssemblesWithTheOptionsThatHaveAUse) {
  ASSERT_EQ(
      run(path("scene") + " --size 20x10 --samples 3 --quiet --tiles 0-1 -o " + path("share")), 0);
  const std::string how = "--assemble " + path("share") + " -o " + path("a.png");
  ASSERT_EQ(run(how + " --json --quiet --exposure 1 --pass depth"), 0);
  EXPECT_EQ(bytes("out").find("{\n  \"shares\": [\n    \"" + path("share") +
                              "\"\n  ],\n  \"output\": \"" + path("a.png") +
                              "\",\n  \"width\": 20,\n  \"height\": 10,\n  \"tiles\": 2,\n  "
                              "\"samples\": 600,\n  \"rays\": "),
            0U)
      << bytes("out");
  for (const char* option :
       {"--size 4", "--samples 2", "--noise 1", "--time 1", "--task 0", "--bounces 1", "--seed 1",
        "--threads 1", "--preview", "--tiles 0", "--count-tiles", "--trust", "--max-memory 1GB"}) {
    EXPECT_EQ(run(how + " " + option), 2) << option;
    EXPECT_NE(bytes("out").find(": it means nothing with --assemble; leave it out\n"),
              std::string::npos)
        << bytes("out");
  }
}

TEST_F(Program, TellsIfStandardOutputIsFull) {
  for (const std::string& arguments :
       {std::string("--help"), std::string("--version"), path("scene") + " --count-tiles"}) {
    const std::string command =
        std::string(VRN_RENDER) + " " + arguments + " > /dev/full 2> " + path("out");
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 2);
    EXPECT_EQ(bytes("out").find("vrn render: standard output: it cannot be written: "), 0U);
  }
}

TEST_F(Program, PrintsJsonInUtf8WhateverTheNameOfAFileIs) {
  const std::string name = path("a\xFF\xC3\xA9\xED\xA0\x80\x01.png");
  ASSERT_EQ(run(path("scene") + " --json --size 4 --samples 1 -o '" + name + "'"), 0);
  const std::string sign = "\xEF\xBF\xBD";
  EXPECT_NE(bytes("out").find("/a" + sign + "\xC3\xA9" + sign + sign + sign + "\\u0001.png\""),
            std::string::npos)
      << bytes("out");
}

}  // namespace
