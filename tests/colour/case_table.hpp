// Tables of worked-out cases: tab-separated, a line for each case, "#" before remarks. A float is
// the eight hex digits of its bits, a list of them is separated by blanks, "-" when empty.
#ifndef VORNATH_TESTS_COLOUR_CASE_TABLE_HPP
#define VORNATH_TESTS_COLOUR_CASE_TABLE_HPP

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace vornath_test {

class Case {
 public:
  Case(std::string where, std::vector<std::string> cells)
      : where_(std::move(where)), cells_(std::move(cells)) {}

  // File and line, for messages.
  const std::string& where() const { return where_; }
  std::size_t columns() const { return cells_.size(); }

  float real(std::size_t column) const { return fromHex(cells_.at(column)); }
  std::vector<float> list(std::size_t column) const {
    std::vector<float> floats;
    if (cells_.at(column) == "-") return floats;
    std::istringstream words(cells_.at(column));
    for (std::string word; words >> word;) floats.push_back(fromHex(word));
    return floats;
  }
  std::int32_t integer(std::size_t column) const { return std::stoi(cells_.at(column)); }
  double decimal(std::size_t column) const { return std::stod(cells_.at(column)); }

 private:
  static float fromHex(const std::string& digits) {
    std::uint32_t bits = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), bits, 16);
    if (error != std::errc() || end != digits.data() + digits.size() || digits.size() != 8) {
      throw std::invalid_argument("not a float's bits: " + digits);
    }
    return std::bit_cast<float>(bits);
  }

  std::string where_;
  std::vector<std::string> cells_;
};

// The cases of a table of the build. A table without cases fails the test.
inline std::vector<Case> readCases(const std::string& name) {
  const std::string path = std::string(VORNATH_CASE_TABLES) + "/" + name + ".tsv";
  std::ifstream file(path);
  std::vector<Case> cases;
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    if (line.empty() || line[0] == '#') continue;
    std::vector<std::string> cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, '\t');) cells.push_back(cell);
    cases.emplace_back(name + ".tsv:" + std::to_string(number), std::move(cells));
  }
  EXPECT_FALSE(cases.empty()) << path;
  return cases;
}

// Two floats of the same bits, or two NaNs.
inline ::testing::AssertionResult sameFloat(float actual, float expected) {
  if (std::isnan(expected)
          ? std::isnan(actual)
          : std::bit_cast<std::uint32_t>(actual) == std::bit_cast<std::uint32_t>(expected)) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << std::hexfloat << actual << " instead of " << expected;
}

inline ::testing::AssertionResult sameFloats(const std::vector<float>& actual,
                                             const std::vector<float>& expected) {
  if (actual.size() != expected.size()) {
    return ::testing::AssertionFailure()
           << actual.size() << " floats instead of " << expected.size();
  }
  for (std::size_t i = 0; i < actual.size(); ++i) {
    if (auto result = sameFloat(actual[i], expected[i]); !result) return result << " at " << i;
  }
  return ::testing::AssertionSuccess();
}

}  // namespace vornath_test

#endif
