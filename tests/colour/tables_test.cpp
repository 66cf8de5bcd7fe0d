// The tables against what was published about them, and against the files of published digits.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "colour/tables/illuminants.hpp"
#include "colour/tables/observer.hpp"
#include "colour/tables/reconstruction_curves.hpp"

namespace qex::vornath {
namespace {

// The numbers of a file of published digits, without its line of titles.
std::vector<std::vector<float>> publishedRows(const std::string& name) {
  std::ifstream file(std::string(VORNATH_PUBLISHED_TABLES) + "/" + name);
  std::vector<std::vector<float>> rows;
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::istringstream cells(line);
    rows.emplace_back();
    for (std::string cell; std::getline(cells, cell, ',');) rows.back().push_back(std::stof(cell));
  }
  EXPECT_EQ(rows.size(), kGridSize) << name;
  return rows;
}

TEST(Observer, HasThePublishedDigits) {
  const auto rows = publishedRows("cie_1931_2deg_5nm.csv");
  ASSERT_EQ(rows.size(), kObserver.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i][0], kGridFirst + kGridStep * static_cast<float>(i));
    EXPECT_EQ(kObserver[i].x, rows[i][1]) << rows[i][0];
    EXPECT_EQ(kObserver[i].y, rows[i][2]) << rows[i][0];
    EXPECT_EQ(kObserver[i].z, rows[i][3]) << rows[i][0];
  }
}

TEST(Observer, BeginsAndEndsAsPublished) {
  EXPECT_EQ(kObserver.front().x, 0.01431F);
  EXPECT_EQ(kObserver.front().y, 0.000396F);
  EXPECT_EQ(kObserver.front().z, 0.06785F);
  EXPECT_EQ(kObserver.back().x, 0.011359F);
  EXPECT_EQ(kObserver.back().y, 0.004102F);
  EXPECT_EQ(kObserver.back().z, 0.0F);
  EXPECT_EQ(kObserver[(555 - 400) / 5].y, 1.0F);
}

// Over the whole spectrum the CIE's 5 nm tables sum to 21.3714, 21.3711 and 21.3715. What lies
// outside of 400 to 700 nm is 0.1 of it for x, 0.02 for y and 0.16 for z.
TEST(Observer, SumsToAlmostTheSameForEachFunction) {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  for (const ColourMatch& match : kObserver) {
    x += static_cast<double>(match.x);
    y += static_cast<double>(match.y);
    z += static_cast<double>(match.z);
  }
  EXPECT_NEAR(x, 21.3714, 0.15);
  EXPECT_NEAR(y, 21.3711, 0.03);
  EXPECT_NEAR(z, 21.3715, 0.2);
  EXPECT_LT(x, 21.3714);
  EXPECT_LT(y, 21.3711);
  EXPECT_LT(z, 21.3715);
}

TEST(Illuminants, HaveThePublishedDigits) {
  const auto rows = publishedRows("illuminant_d65_5nm.csv");
  ASSERT_EQ(rows.size(), kIlluminantD65.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(kIlluminantD65[i], rows[i][1]) << rows[i][0];
    EXPECT_EQ(kIlluminantE[i], 1.0F);
  }
  EXPECT_EQ(kIlluminantD65[0], 82.7549F);
  EXPECT_EQ(kIlluminantD65[1], 87.1204F);
  EXPECT_EQ(kIlluminantD65[2], 91.486F);
  EXPECT_EQ(kIlluminantD65[(560 - 400) / 5], 100.0F);
}

// D65 has the chromaticity (0.3127, 0.3290), E has (1/3, 1/3). What lies outside of 400 to 700 nm
// moves them by less than the tolerance.
TEST(Illuminants, HaveTheirWhitePoints) {
  const auto expectWhite = [](const GridRow& light, double x, double y) {
    double sum[3]{};
    for (std::size_t i = 0; i < kGridSize; ++i) {
      sum[0] += static_cast<double>(light[i] * kObserver[i].x);
      sum[1] += static_cast<double>(light[i] * kObserver[i].y);
      sum[2] += static_cast<double>(light[i] * kObserver[i].z);
    }
    const double all = sum[0] + sum[1] + sum[2];
    EXPECT_NEAR(sum[0] / all, x, 0.002);
    EXPECT_NEAR(sum[1] / all, y, 0.002);
  };
  expectWhite(kIlluminantD65, 0.3127, 0.3290);
  expectWhite(kIlluminantE, 1.0 / 3.0, 1.0 / 3.0);
}

TEST(ReconstructionCurves, BeginAndEndAsPublished) {
  const auto expectEnds = [](const GridRow& curve, float first, float last) {
    EXPECT_EQ(curve.front(), first);
    EXPECT_EQ(curve.back(), last);
  };
  expectEnds(kWhiteCurve, 0.998295F, 1.00119F);
  expectEnds(kCyanCurve, 0.941339F, 0.00082712F);
  expectEnds(kMagentaCurve, 0.998539F, 0.990914F);
  expectEnds(kYellowCurve, 0.439673F, 0.999791F);
  expectEnds(kRedCurve, 0.0645384F, 0.953601F);
  expectEnds(kGreenCurve, 0.00083233F, 0.00480091F);
  expectEnds(kBlueCurve, 0.988392F, 0.0341637F);
}

TEST(ReconstructionCurves, HaveThePublishedDigits) {
  const auto rows = publishedRows("curves.csv");
  const GridRow* const curves[]{&kWhiteCurve, &kCyanCurve,  &kMagentaCurve, &kYellowCurve,
                                &kRedCurve,   &kGreenCurve, &kBlueCurve};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    ASSERT_EQ(rows[i].size(), 8U);
    for (std::size_t curve = 0; curve < 7; ++curve) {
      EXPECT_EQ((*curves[curve])[i], rows[i][curve + 1]) << rows[i][0];
    }
  }
}

// A primary and its complement make white; yellow and blue overlap in the violet.
TEST(ReconstructionCurves, AddUpToWhite) {
  for (std::size_t i = 0; i < kGridSize; ++i) {
    EXPECT_NEAR(kWhiteCurve[i], 1.0F, 0.01F) << i;
    EXPECT_NEAR(kRedCurve[i] + kCyanCurve[i], 1.0F, 0.125F) << i;
    EXPECT_NEAR(kGreenCurve[i] + kMagentaCurve[i], 1.0F, 0.125F) << i;
  }
}

}  // namespace
}  // namespace qex::vornath
