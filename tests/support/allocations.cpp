#include "support/allocations.hpp"

#include <cstdlib>
#include <new>

namespace {

thread_local std::uint64_t count = 0;
thread_local int failing = 0;

}  // namespace

void* operator new(std::size_t size) {
  ++count;
  void* const memory = failing > 0 ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace vornath_test {

std::uint64_t allocationCount() { return count; }

FailingAllocations::FailingAllocations() { ++failing; }
FailingAllocations::~FailingAllocations() { --failing; }

}  // namespace vornath_test
