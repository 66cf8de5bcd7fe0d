// What the first call of a process makes, and what its last call ends. Each case is the first one
// only in a process of its own, as ctest gives it one.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "support/allocations.hpp"
#include "support/flat_handles.hpp"
#include "vornath_data/type_library.hpp"
#include "vornath_data/unique_id.hpp"
#include "vornath_data/vrdm.h"

namespace {

using namespace vornath_test;

// Lets each allocation of `work` fail in turn, until it succeeds. Returns how many failed.
template <typename Work>
int failEach(Work work) {
  for (int number = 0; number < 10'000; ++number) {
    const FailNthAllocation failure(static_cast<std::uint64_t>(number));
    try {
      work();
      return number;
    } catch (const std::bad_alloc&) {
    }
  }
  ADD_FAILURE() << "it never succeeded";
  return 0;
}

TEST(FirstUse, OfTheFactoryRaisesEachFailedAllocation) {
  const int failures = failEach([] { qex::vornath::Type::get_factory(true); });
  EXPECT_GT(failures, 0);
  EXPECT_NE(qex::vornath::Type::get_factory(false), nullptr);
  EXPECT_EQ(canonical("int [ 2 ]"), "int[2]");
}

TEST(FirstUse, OfTheDigestRaisesEachFailedAllocation) {
  vrnt::UniqueId id;
  const int failures = failEach([&id] { id = vrnt::UniqueId::hash("abc"); });
  EXPECT_GT(failures, 0);
  const auto before = allocationCount();
  EXPECT_TRUE(vrnt::UniqueId::hash("abc") == id);
  EXPECT_EQ(allocationCount(), before);
}

TEST(FirstUse, OfParsesReportsEachFailedAllocation) {
  int failures = 0;
  for (vrntType_t* type = nullptr; type == nullptr && failures < 10'000; ++failures) {
    vrntValuesError_t* error = nullptr;
    {
      const FailNthAllocation failure(static_cast<std::uint64_t>(failures));
      type = vrntTypeParse("{ float @default=0.25 share; int[2,3] grid; }", &error);
    }
    const TypeHandle owner(type);
    EXPECT_EQ(type == nullptr, error != nullptr);
    if (error != nullptr) {
      EXPECT_EQ(vrntValuesErrorCode(error), std::uint32_t{VRNT_OUT_OF_MEMORY});
    }
  }
  EXPECT_GT(failures, 10);
  EXPECT_LT(failures, 10'000);
}

// It ends types and so needs no memory, and can't be told of any that is missing.
TEST(LastUse, AllocatesNothing) {
  const auto shutDown = [] {
    TypeHandle(vrntTypeEmission()).reset();
    TypeHandle(vrtnTypeFloatArray(166)).reset();
    const auto before = allocationCount();
    {
      const FailingAllocations failures;
      vrntValuesShutdown();
    }
    std::exit(allocationCount() == before ? 0 : 1);
  };
  EXPECT_EXIT(shutDown(), testing::ExitedWithCode(0), "");
}

}  // namespace
