// The picture of black bodies and reflectances, as the host writes it.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "process.hpp"

namespace vornath_test {
namespace {

class Blackbody : public ProcessTest {
 protected:
  // The points of each line of the picture with that colour and dash.
  static std::vector<std::vector<std::pair<double, double>>> lines(const std::string& picture,
                                                                   const std::string& attributes) {
    std::vector<std::vector<std::pair<double, double>>> found;
    for (const std::string& line :
         between(picture, "<polyline fill=\"none\" " + attributes, "/>")) {
      std::istringstream points(between(line, "points=\"", "\"").at(0));
      found.emplace_back();
      for (std::string point; points >> point;) {
        found.back().emplace_back(std::stod(point), std::stod(point.substr(point.find(',') + 1)));
      }
    }
    return found;
  }
};

TEST_F(Blackbody, DrawsTheResultsOfTheLibrary) {
  const std::string file = path("picture.svg");
  const Outcome drawn = run(BLACKBODY, {file});
  ASSERT_EQ(drawn.status, 0) << drawn.errors;
  const std::string picture = readFile(file);
  EXPECT_EQ(picture.rfind("<svg ", 0), 0U);
  EXPECT_EQ(picture.substr(picture.size() - 7), "</svg>\n");
  for (const char* const text : {"1000 K", "6500 K", "20000 K", ">white<", ">green<", ">red<"}) {
    EXPECT_NE(picture.find(text), std::string::npos) << text;
  }

  // 1000 K to 20000 K in steps of 100 K, from red on the right to blue on the left.
  const auto locus = lines(picture, "stroke=\"#444\"");
  ASSERT_EQ(locus.size(), 1U);
  ASSERT_EQ(locus[0].size(), 191U);
  for (std::size_t i = 1; i < locus[0].size(); ++i) {
    EXPECT_LE(locus[0][i].first, locus[0][i - 1].first) << i;
  }
  // 6500 K lies beside the white of D65, (0.3127, 0.3290), on a plot of 460 points for 0.6.
  const auto [x, y] = locus[0][55];
  EXPECT_NEAR(0.1 + 0.6 * (x - 70) / 460, 0.3127, 0.005);
  EXPECT_NEAR(0.6 - 0.6 * (y - 50) / 460, 0.3290, 0.01);

  // The measured curves, and one reconstruction beside each: 60 bands, each with two ends.
  const auto white = lines(picture, "stroke=\"#999\"");
  ASSERT_EQ(white.size(), 2U);
  for (const auto& curve : white) ASSERT_EQ(curve.size(), 120U);
  // From 450 nm on, a measured and a reconstructed white differ by less than 0.05.
  for (std::size_t i = 20; i < 120; ++i) {
    EXPECT_NEAR(white[0][i].second, white[1][i].second, 0.05 * 460) << i;
  }
}

// The band of the only row reaches from its wavelength to twice that.
TEST_F(Blackbody, DrawsATableOfOneRow) {
  writeFile(path("table.csv"), "wavelength,white,green,red\n500,0.5,0.5,0.5\n");
  const std::string file = path("picture.svg");
  const Outcome drawn = run(BLACKBODY, {file, path("table.csv")});
  ASSERT_EQ(drawn.status, 0) << drawn.errors;
  const auto white = lines(readFile(file), "stroke=\"#999\"");
  ASSERT_EQ(white.size(), 2U);
  ASSERT_EQ(white[0].size(), 120U);
  // A plot of 460 points for 1, beginning at 50: below 500 nm there is nothing, then half.
  EXPECT_NEAR(white[0][38].second, 510, 0.1);
  EXPECT_NEAR(white[0][40].second, 280, 0.1);
  EXPECT_NEAR(white[0][119].second, 280, 0.1);
}

TEST_F(Blackbody, ReportsAMissingTableOrPicture) {
  const std::string nowhere = path("none/picture.svg");
  const Outcome unwritten = run(BLACKBODY, {nowhere});
  EXPECT_EQ(unwritten.status, 1);
  EXPECT_EQ(unwritten.errors, "blackbody: " + nowhere + ": the file can't be written\n");
  const Outcome unread = run(BLACKBODY, {path("picture.svg"), path("none.csv")});
  EXPECT_EQ(unread.status, 1);
  EXPECT_NE(unread.errors.find(path("none.csv")), std::string::npos) << unread.errors;
}

TEST_F(Blackbody, PrintsItsUsage) {
  EXPECT_EQ(run(BLACKBODY, {"--help"}).output.rfind("usage: ", 0), 0U);
  EXPECT_EQ(run(BLACKBODY, {"--what"}).status, 2);
  EXPECT_EQ(run(BLACKBODY, {"a", "b", "c"}).status, 2);
}

}  // namespace
}  // namespace vornath_test
