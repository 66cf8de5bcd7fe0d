// Lets each allocation of a function of the toolkit fail.
#ifndef VORNATH_TESTS_TOOLKIT_FAILED_ALLOCATIONS_HPP
#define VORNATH_TESTS_TOOLKIT_FAILED_ALLOCATIONS_HPP

#include <gtest/gtest.h>

#include <cstdint>

#include "support/allocations.hpp"
#include "vornath_toolkit/vrtk_error.h"

namespace vornath_test {

/// Calls a function with its Nth allocation failing, for growing N, until it does not get to the
/// Nth any more. The function returns a status. The first 200 allocations fail in turn, and of
/// those that follow each at a distance. `look(status)` sees what each call has left behind.
template <typename Call, typename Look>
void failSomeAllocations(std::uint64_t distance, Call&& call, Look&& look) {
  EXPECT_EQ(call(), VRTK_OK);
  look(VRTK_OK);
  std::uint64_t failures = 0;
  for (std::uint64_t number = 0;; number += number < 200 ? 1 : distance) {
    bool triggered = false;
    std::uint32_t status = VRTK_OK;
    {
      const FailNthAllocation failing(number);
      status = call();
      triggered = failing.triggered();
    }
    look(status);
    if (!triggered) break;
    failures += status == VRTK_OK ? 0 : 1;
    ASSERT_TRUE(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY)
        << number << ": " << vrtkStatusName(status);
    ASSERT_LT(number, 1000000U);
  }
  EXPECT_GT(failures, 0U);
}

template <typename Call, typename Look>
void failEachAllocation(Call&& call, Look&& look) {
  failSomeAllocations(1, call, look);
}

template <typename Call>
void failEachAllocation(Call&& call) {
  failSomeAllocations(1, call, [](std::uint32_t) {});
}

}  // namespace vornath_test

#endif
