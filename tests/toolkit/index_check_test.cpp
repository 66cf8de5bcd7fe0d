// The indices of a mesh against the number of its vertices.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "check/rules.hpp"

namespace vornath_test {
namespace {

vrtk::IndexCheck checked(const std::vector<std::uint32_t>& indices, std::uint32_t limit) {
  vrtk::IndexCheck check(limit);
  check.add(reinterpret_cast<const char*>(indices.data()), indices.size());
  return check;
}

TEST(IndexCheck, TakesIndicesBelowTheLimitAndNoOthers) {
  for (const std::uint32_t limit : {0U, 1U, 2U, 1000U, 0x7FFFFFFEU, 0x7FFFFFFFU}) {
    for (const std::uint32_t index : {0U, 1U, 2U, 999U, 1000U, 0x7FFFFFFDU, 0x7FFFFFFEU,
                                      0x7FFFFFFFU, 0x80000000U, 0x80000001U, 0xFFFFFFFFU}) {
      EXPECT_EQ(checked({index}, limit).wrong(), index < limit ? 0U : 1U) << index << " " << limit;
    }
  }
}

TEST(IndexCheck, FindsAWrongIndexAtEachPlace) {
  for (std::size_t count = 1; count < 70; ++count) {
    std::vector<std::uint32_t> indices(count, 6);
    EXPECT_EQ(checked(indices, 7).wrong(), 0U);
    for (std::size_t place = 0; place < count; ++place) {
      indices[place] = 7;
      const vrtk::IndexCheck check = checked(indices, 7);
      EXPECT_EQ(check.wrong(), 1U);
      EXPECT_EQ(check.firstWrong(), place);
      indices[place] = 6;
    }
  }
}

TEST(IndexCheck, CountsOverAllPieces) {
  const std::vector<std::uint32_t> right = {0, 1, 2};
  const std::vector<std::uint32_t> wrong = {2, 3, 4};
  vrtk::IndexCheck check(3);
  for (const auto* const piece : {&right, &wrong, &right, &wrong}) {
    check.add(reinterpret_cast<const char*>(piece->data()), piece->size());
  }
  EXPECT_EQ(check.wrong(), 4U);
  EXPECT_EQ(check.firstWrong(), 4U);
}

}  // namespace
}  // namespace vornath_test
