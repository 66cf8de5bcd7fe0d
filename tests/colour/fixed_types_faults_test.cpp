// Every allocation of a fixed type's first use is made to fail, one after the other, until it
// succeeds: a failure leaves the type unmade, and the next call tries again.
#include <gtest/gtest.h>

#include <new>

#include "fixed_types_list.hpp"
#include "support/allocations.hpp"
#include "type_reading.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary

constexpr std::uint64_t kManyAllocations = 100'000;

}  // namespace

TEST(FixedTypes, AreMadeByTheFirstCallThatFindsMemory) {
  std::uint64_t failures = 0;
  for (const FixedType& fixed : kFixedTypes) {
    vrntType_t* type = nullptr;
    for (std::uint64_t number = 0; type == nullptr && number < kManyAllocations; ++number) {
      const FailNthAllocation failure(number);
      try {
        type = fixed.get();
      } catch (const std::bad_alloc&) {
        ++failures;
      }
    }
    const TypeHandle owner(type);
    ASSERT_NE(type, nullptr) << fixed.name;
    const TypeHandle again(fixed.get());
    EXPECT_EQ(again.get(), type) << fixed.name;
    EXPECT_NE(defaultOf(type), nullptr) << fixed.name;
  }
  EXPECT_GT(failures, std::size(kFixedTypes));
  const std::uint64_t before = allocationCount();
  for (const FixedType& fixed : kFixedTypes) vrntTypeDestroy(fixed.get());
  EXPECT_EQ(allocationCount(), before);
}
