// Every allocation of a call is made to fail, one after the other, until the call succeeds. Each
// time the promised error comes and nothing is left behind; the leak checker sees to the rest.
#ifndef VORNATH_TESTS_FAULTS_FAIL_EACH_ALLOCATION_HPP
#define VORNATH_TESTS_FAULTS_FAIL_EACH_ALLOCATION_HPP

#include <gtest/gtest.h>

#include "support/allocations.hpp"
#include "vornath_data/vrnt.h"

namespace vornath_test {

inline constexpr std::uint64_t kManyAllocations = 10'000;

// Runs `call`, which takes an error location and returns a handle or null, and ends what succeeds
// with `end`. Returns how many allocations had to fail first.
template <typename Call, typename End>
std::uint64_t failEachAllocation(Call call, End end) {
  for (std::uint64_t number = 0; number < kManyAllocations; ++number) {
    vrntValuesError_t* error = nullptr;
    decltype(call(&error)) result;
    {
      const FailNthAllocation failure(number);
      result = call(&error);
    }
    if (result != nullptr) {
      EXPECT_EQ(error, nullptr);
      end(result);
      return number;
    }
    if (error == nullptr) {
      ADD_FAILURE() << "allocation " << number << ": neither a result nor an error";
      return number;
    }
    EXPECT_EQ(vrntValuesErrorCode(error), std::uint32_t{VRNT_OUT_OF_MEMORY}) << number;
    EXPECT_STREQ(vrntValuesErrorMessage(error), "Out of memory.") << number;
    vrntValuesErrorDestroy(error);
  }
  ADD_FAILURE() << "the call never succeeded";
  return kManyAllocations;
}

}  // namespace vornath_test

#endif
