// The program's `operator new`, to be counted and made to fail. For programs that link the file
// allocations.cpp beside it; what the library in a shared object allocates goes through it as well.
#ifndef VORNATH_TESTS_SUPPORT_ALLOCATIONS_HPP
#define VORNATH_TESTS_SUPPORT_ALLOCATIONS_HPP

#include <cstdint>

namespace vornath_test {

// The allocations of this thread so far, failed ones included.
std::uint64_t allocationCount();

// While one lives, the allocations of this thread fail.
class FailingAllocations {
 public:
  FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;
  ~FailingAllocations();
};

// While one lives, the allocation of this thread with that number from now on (0 is the next one)
// fails, and those after it succeed again.
class FailNthAllocation {
 public:
  explicit FailNthAllocation(std::uint64_t number);
  FailNthAllocation(const FailNthAllocation&) = delete;
  FailNthAllocation& operator=(const FailNthAllocation&) = delete;
  ~FailNthAllocation();
};

}  // namespace vornath_test

#endif
