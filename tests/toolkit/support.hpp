// Scenes, files and reports for the tests of the toolkit.
#ifndef VORNATH_TESTS_TOOLKIT_SUPPORT_HPP
#define VORNATH_TESTS_TOOLKIT_SUPPORT_HPP

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "faults/all_classes.hpp"
#include "support/flat_handles.hpp"
#include "support/temporary_folder.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_toolkit/vrtk.h"

namespace vornath_test {

struct ReportDeleter {
  void operator()(vrtkReport* report) const { vrtkReportDestroy(report); }
};
using ReportHandle = std::unique_ptr<vrtkReport, ReportDeleter>;

struct ToolkitErrorDeleter {
  void operator()(vrtkError* error) const { vrtkErrorDestroy(error); }
};
using ToolkitError = std::unique_ptr<vrtkError, ToolkitErrorDeleter>;

inline std::string bytesOf(const vrdmScene_t* scene) {
  std::ostringstream stream;
  vrnt::data::Scene::serialize(*scene, stream);
  return stream.str();
}

inline SceneHandle sceneOfAllClasses() {
  SceneHandle scene(vrdmCreateScene());
  fillAllClasses(scene.get());
  return scene;
}

inline ReportHandle check(std::string_view bytes, const vrtkLimits* limits = nullptr) {
  vrtkReport* report = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status = vrtkCheckBytes(bytes.data(), bytes.size(), limits, &report, &error);
  const ToolkitError owner(error);
  EXPECT_EQ(status, VRTK_OK) << (error != nullptr ? vrtkErrorMessage(error) : "");
  return ReportHandle(report);
}

inline ReportHandle validate(const vrdmScene_t* scene) {
  vrtkReport* report = nullptr;
  EXPECT_EQ(vrtkSceneValidate(scene, nullptr, &report, nullptr), VRTK_OK);
  return ReportHandle(report);
}

// The messages, one a line: the code, the offset, the address and the words.
inline std::string textOf(const vrtkReport* report) {
  std::ostringstream text;
  for (std::uint64_t i = 0; i < vrtkReportMessageCount(report); ++i) {
    const vrtkMessage* const message = vrtkReportMessage(report, i);
    text << message->code << " " << static_cast<std::int64_t>(message->offset) << " "
         << message->address << ": " << message->message << "\n";
  }
  return text.str();
}

inline const vrtkMessage* find(const vrtkReport* report, std::string_view code) {
  for (std::uint64_t i = 0; i < vrtkReportMessageCount(report); ++i) {
    const vrtkMessage* const message = vrtkReportMessage(report, i);
    if (message->code == code) return message;
  }
  return nullptr;
}

// Expects one message with the code, at the place and with the address.
inline void expectMessage(const vrtkReport* report, std::string_view code, std::uint64_t offset,
                          std::string_view address) {
  const vrtkMessage* const message = find(report, code);
  ASSERT_NE(message, nullptr) << code << " is not in\n" << textOf(report);
  EXPECT_EQ(message->offset, offset) << textOf(report);
  EXPECT_EQ(message->address, address) << textOf(report);
  EXPECT_FALSE(std::string_view(message->message).empty());
}

template <typename T>
T numberAt(const std::string& bytes, std::size_t offset) {
  T number;
  std::memcpy(&number, bytes.data() + offset, sizeof(number));
  return number;
}

template <typename T>
void put(std::string& bytes, std::size_t offset, T number) {
  ASSERT_LE(offset + sizeof(number), bytes.size());
  std::memcpy(bytes.data() + offset, &number, sizeof(number));
}

// Where a class's section starts in a file: at its number of slots. Only for files in which all
// classes before it are empty.
inline std::size_t sectionOf(std::uint32_t objectClass) {
  return 348 + 4 * std::size_t{objectClass};
}

inline std::string readFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

inline void writeFile(const std::string& path, std::string_view bytes) {
  std::ofstream stream(path, std::ios::binary);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// Runs a function in a process of its own, whose limits and user it may change. Returns whether all
// its expectations held.
template <typename Function>
bool inAProcess(Function&& function) {
  const pid_t child = fork();
  if (child == 0) {
    std::forward<Function>(function)();
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// The names of the files in a folder, sorted.
inline std::vector<std::string> namesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// Does the same as a user who may not read and write everything, and who owns the folder.
template <typename Function>
bool asAnOrdinaryUser(const TemporaryFolder& folder, Function&& function) {
  constexpr uid_t kNobody = 65534;
  if (geteuid() == 0) {
    EXPECT_EQ(chown(folder.path().c_str(), kNobody, kNobody), 0);
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
      EXPECT_EQ(chown(entry.path().c_str(), kNobody, kNobody), 0);
    }
  }
  return inAProcess([&] {
    if (geteuid() == 0) {
      EXPECT_EQ(setgid(kNobody), 0);
      EXPECT_EQ(setuid(kNobody), 0);
    }
    function();
  });
}

}  // namespace vornath_test

#endif
