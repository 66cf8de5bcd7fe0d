// docs/first_scene.md: its programs make one scene, and what it says of slots and spectra is so.
#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <vector>

#include "../support/flat_handles.hpp"
#include "process.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"

namespace vornath_test {
namespace {

namespace fs = std::filesystem;

const fs::path kSource = SOURCE_FOLDER;
const std::string kGuide = readFile(kSource / "docs/first_scene.md");

class FirstScene : public ProcessTest {
 protected:
  static vrnt::data::Scene read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return vrnt::data::Scene::deserialize(file, vrnt::UniqueId::null()).value();
  }
};

TEST_F(FirstScene, IsTheSameFromBothPrograms) {
  const std::string expected =
      "1 CameraProgram\n1 MaterialProgram\n1 LightProgram\n1 Mesh\n1 Texture\n1 Camera\n"
      "1 LightGroup\n1 Light\n1 Material\n1 Shape\n1 ImageTask\n";
  const std::string c = path("c.vrnscene");
  const std::string cpp = path("cpp.vrnscene");
  for (const auto& [program, file] :
       {std::pair(FIRST_SCENE_C, c), std::pair(FIRST_SCENE_CPP, cpp)}) {
    const Outcome outcome = run(program, {file});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, expected);
    EXPECT_EQ(outcome.errors, "");
  }
  EXPECT_TRUE(vrnt::data::Scene::equivalent(read(c), read(cpp)));
}

TEST_F(FirstScene, ReportsAFileThatCannotBeWritten) {
  const std::string nowhere = path("there/is/no/such/folder.vrnscene");
  EXPECT_EQ(run(FIRST_SCENE_C, {nowhere}).status, 1);
  const Outcome outcome = run(FIRST_SCENE_CPP, {nowhere});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.errors.find(nowhere), std::string::npos);
}

TEST(FirstSceneGuide, ShowsPartsOfTheProgramsThatAreBuilt) {
  for (const auto& [language, file] :
       {std::pair("c", "first_scene.c"), std::pair("cpp", "first_scene.cpp")}) {
    const std::string program = readFile(kSource / "examples/first_scene" / file);
    const std::vector<std::string> parts = blocksOf(kGuide, language);
    EXPECT_GE(parts.size(), 5U);
    for (const std::string& part : parts) {
      EXPECT_NE(program.find(part), std::string::npos) << file << " lacks\n" << part;
    }
  }
}

TEST(FirstSceneGuide, ListsEachSlotOfEachClass) {
  std::set<std::string> told;
  const std::size_t begin = kGuide.find("\n    KeyframeList  keyframes");
  std::istringstream lines(kGuide.substr(begin + 1, kGuide.find("\n\n", begin) - begin));
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string joined;
    for (std::string word; words >> word;) joined += joined.empty() ? word : " " + word;
    told.insert(joined);
  }
  std::set<std::string> there;
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    for (std::uint32_t slot = 0; slot < vrdmReferenceCount(i); ++slot) {
      const vrdmReferenceInfo info = vrdmReferenceType(i, slot);
      const bool isSingle =
          info.kind == VRDM_REFERENCE_REQUIRED || info.kind == VRDM_REFERENCE_OPTIONAL;
      const std::string target = info.targetClass == VRDM_TARGET_EMITTER
                                     ? "Light and Shape"
                                     : vrdmObjectName(info.targetClass);
      there.insert(std::string(vrdmObjectName(i)) + " " + info.name + (isSingle ? " " : " ... ") +
                   target);
    }
  }
  EXPECT_EQ(told, there);
}

// The RGB of a reflectance that is sampled from 400 to 700 nm, under D65.
template <typename Reflectance>
std::string rgbOf(int step, Reflectance reflectance) {
  std::string pairs = "0., 0.";
  int wavelength = 400;
  for (; wavelength <= 700; wavelength += step) {
    char text[64];
    std::snprintf(text, sizeof text, ", %d., %.9e", wavelength, reflectance(wavelength));
    pairs += text;
  }
  const ValueHandle value =
      parseValue("{ encoding = SPECTRAL : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &[ " +
                 pairs + ", " + std::to_string(wavelength) + "., 0. ]; }");
  const vrntValueView_t view{vrntValueType(value.get()), 0};
  std::array<float, 3> rgb{};
  EXPECT_EQ(vrntValueToRGB(value.get(), &view, VRNT_COLOUR_SPACE_D65, rgb.data()), 0);
  char text[64];
  std::snprintf(text, sizeof text, "%.3f %.3f %.3f", static_cast<double>(rgb[0]),
                static_cast<double>(rgb[1]), static_cast<double>(rgb[2]));
  return text;
}

// The measured red, row by row: 400 to 700 nm in steps of 4.
std::vector<double> measuredRed() {
  std::ifstream file(kSource / "examples/cornell_box/data/cornell_box_reflectance.csv");
  std::vector<double> red;
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) red.push_back(std::stod(line.substr(line.rfind(',') + 1)));
  return red;
}

TEST(FirstSceneGuide, ShowsTheColourForEachStepOfASpectrum) {
  const std::vector<double> red = measuredRed();
  ASSERT_EQ(red.size(), 76U);
  const auto redAt = [&red](int wavelength) {
    const std::size_t row =
        std::min<std::size_t>(static_cast<std::size_t>(wavelength - 400) / 4, red.size() - 2);
    const double part = (wavelength - 400 - 4.0 * static_cast<double>(row)) / 4;
    return red[row] * (1 - part) + red[row + 1] * part;
  };
  for (const int step : {80, 40, 20, 10, 5}) {
    const std::string row = "| " + std::to_string(step) + " nm | " +
                            rgbOf(step, [](int) { return 0.5; }) + " | " + rgbOf(step, redAt) +
                            " |\n";
    EXPECT_NE(kGuide.find(row), std::string::npos) << row;
  }
}

}  // namespace
}  // namespace vornath_test
