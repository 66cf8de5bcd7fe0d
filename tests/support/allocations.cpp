#include "support/allocations.hpp"

#include <cstdlib>
#include <new>

namespace {

thread_local std::uint64_t count = 0;
thread_local int failing = 0;
constexpr std::uint64_t kNone = ~std::uint64_t{0};
thread_local std::uint64_t failingNumber = kNone;

}  // namespace

void* operator new(std::size_t size) {
  const bool fails = failing > 0 || count == failingNumber;
  ++count;
  void* const memory = fails ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace vornath_test {

std::uint64_t allocationCount() { return count; }

FailingAllocations::FailingAllocations() { ++failing; }
FailingAllocations::~FailingAllocations() { --failing; }

FailNthAllocation::FailNthAllocation(std::uint64_t number) { failingNumber = count + number; }
FailNthAllocation::~FailNthAllocation() { failingNumber = kNone; }

}  // namespace vornath_test
