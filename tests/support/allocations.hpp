// The program's memory, to be counted and made to fail: `operator new` and, where that can be,
// malloc and its like. For programs that link the file allocations.cpp beside it; what the library
// in a shared object and the libraries under it allocate goes through it as well.
#ifndef VORNATH_TESTS_SUPPORT_ALLOCATIONS_HPP
#define VORNATH_TESTS_SUPPORT_ALLOCATIONS_HPP

#include <cstdint>
#include <cstdlib>

// A sanitizer has put its own malloc in place already, which leaves `operator new` alone to us.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__GLIBC__)
#define VORNATH_TESTS_COUNT_MALLOC 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define VORNATH_TESTS_COUNT_MALLOC 0
#endif
#endif
#ifndef VORNATH_TESTS_COUNT_MALLOC
#define VORNATH_TESTS_COUNT_MALLOC 1
#endif

namespace vornath_test {

// Whether malloc, calloc, realloc and the aligned ones are counted and made to fail too.
inline constexpr bool kMallocIsCounted = VORNATH_TESTS_COUNT_MALLOC != 0;

// The allocations of this thread so far, failed ones included.
std::uint64_t allocationCount();

// The blocks that this thread has allocated, less those that it has given back.
std::int64_t liveAllocations();

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

  // Whether it came to that allocation.
  bool triggered() const;

 private:
  std::uint64_t number_;
};

}  // namespace vornath_test

#endif
