// The set of the blocks that a check has met.
#include "check/block_set.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <unordered_map>

namespace vornath_test {
namespace {

using vrtk::BlockSet;
using State = BlockSet::State;

TEST(BlockSet, KnowsWhatWasOpenedAndWhatWasClosed) {
  BlockSet set;
  double parts = 0;
  EXPECT_EQ(set.find(16, parts), State::Unknown);
  set.open(16);
  EXPECT_EQ(set.find(16, parts), State::Open);
  set.close(16, 7);
  EXPECT_EQ(set.find(16, parts), State::Closed);
  EXPECT_EQ(parts, 7);
  set.clear();
  EXPECT_EQ(set.find(16, parts), State::Unknown);
}

// Opens and closes many words, at all sizes of the set.
void agreesWithAMap(std::size_t count) {
  std::mt19937_64 random(count);
  BlockSet set;
  std::unordered_map<std::uint64_t, double> model;
  for (std::size_t i = 0; i < count; ++i) {
    // Addresses in steps of 16, and some others.
    const std::uint64_t word = i % 3 == 0 ? random() : 0x7f0000000000 + 16 * i;
    double parts = 0;
    ASSERT_EQ(set.find(word, parts) != State::Unknown, model.count(word) != 0);
    if (model.count(word) != 0) continue;
    set.open(word);
    const double number = std::ldexp(1.0 + static_cast<double>(random() % 1000) / 1000,
                                     static_cast<int>(random() % 62));
    set.close(word, number);
    model.emplace(word, number);
  }
  for (const auto& [word, number] : model) {
    double parts = 0;
    ASSERT_EQ(set.find(word, parts), State::Closed);
    ASSERT_NEAR(parts / number, 1, 0.002);
  }
  // Sixteen bytes a word while there are few, and then eight and what growing takes.
  EXPECT_LT(set.memory(), (std::size_t{6} << 20U) + count * 9);
}

TEST(BlockSet, AgreesWithAMapForFewWords) { agreesWithAMap(1000); }
TEST(BlockSet, AgreesWithAMapForManyWords) { agreesWithAMap(300000); }

TEST(BlockSet, KeepsALongSumRightAlthoughEachNumberIsRounded) {
  // As in a chain of blocks, each of which has one part more than the next.
  BlockSet set;
  double parts = 0;
  for (std::uint64_t i = 1; i <= 100000; ++i) {
    set.open(16 * i);
    set.close(16 * i, parts + 1);
    ASSERT_EQ(set.find(16 * i, parts), State::Closed);
  }
  EXPECT_NEAR(parts, 100000, 30000);
}

}  // namespace
}  // namespace vornath_test
