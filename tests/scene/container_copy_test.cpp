#include "vornath_data/container_copy.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

using vrnt::data::detail::trivialContainerCopy;

class TrivialContainerCopy : public testing::TestWithParam<std::size_t> {};

TEST_P(TrivialContainerCopy, CopiesAllBytesAndNoMore) {
  const std::size_t size = GetParam();
  std::vector<unsigned char> source(size + 8);
  for (std::size_t i = 0; i < source.size(); ++i) {
    source[i] = static_cast<unsigned char>(i * 2654435761u >> 13);
  }
  std::vector<unsigned char> destination(size + 8, 0xA5);
  trivialContainerCopy(destination.data() + 4, source.data() + 4, size);
  EXPECT_TRUE(std::equal(source.begin() + 4, source.end() - 4, destination.begin() + 4));
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(destination[i], 0xA5);
    EXPECT_EQ(destination[size + 4 + i], 0xA5);
  }
}

// On both sides of the size from which the work is shared out, and sizes that don't divide evenly.
INSTANTIATE_TEST_SUITE_P(Sizes, TrivialContainerCopy,
                         testing::Values(0, 1, 0xFFFFF, 0x100000, 0x100001, 0x3000007));

TEST(TrivialContainerCopyOfNothing, TakesNullPlaces) { trivialContainerCopy(nullptr, nullptr, 0); }

}  // namespace
