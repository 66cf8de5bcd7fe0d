#include <gtest/gtest.h>

#include "support/allocations.hpp"
#include "vornath_data/unique_id.hpp"

namespace {

using vornath_test::allocationCount;
using vrnt::UniqueId;

TEST(UniqueIdHash, AllocatesNothingAfterAThreadsFirstCall) {
  const UniqueId first = UniqueId::hash("abc");
  const auto before = allocationCount();
  const UniqueId second = UniqueId::hash("abc");
  const bool equal = first == second && !second.isNull();
  const auto after = allocationCount();
  EXPECT_TRUE(equal);
  EXPECT_EQ(after, before);
}

TEST(UniqueIdHasher, AllocatesInItsConstructorOnly) {
  UniqueId::Hasher hasher;
  const auto before = allocationCount();
  hasher.update("abc", 3);
  const UniqueId first = hasher.finalize();
  hasher.update("abc", 3);
  const UniqueId second = hasher.finalize();
  const auto after = allocationCount();
  EXPECT_TRUE(first == second);
  EXPECT_EQ(after, before);
}

}  // namespace
