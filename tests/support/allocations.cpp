#include "support/allocations.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace {

thread_local std::uint64_t count = 0;
thread_local std::int64_t live = 0;
thread_local int failing = 0;
constexpr std::uint64_t kNone = ~std::uint64_t{0};
thread_local std::uint64_t failingNumber = kNone;

// Counts an allocation. Whether it is to fail.
bool fails() {
  const bool chosen = failing > 0 || count == failingNumber;
  ++count;
  return chosen;
}

void* counted(void* memory) {
  if (memory != nullptr) ++live;
  return memory;
}

}  // namespace

#if VORNATH_TESTS_COUNT_MALLOC

// The C library's own functions under the names by which it lets a program put others in their
// place.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {

void* take(std::size_t size) { return counted(__libc_malloc(size)); }
void* takeAligned(std::size_t alignment, std::size_t size) {
  return counted(__libc_memalign(alignment, size));
}
void giveBack(void* memory) {
  if (memory == nullptr) return;
  --live;
  __libc_free(memory);
}

// What the C functions answer in place of memory.
void* none() {
  errno = ENOMEM;
  return nullptr;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept { return fails() ? none() : take(size); }

void* calloc(std::size_t number, std::size_t size) noexcept {
  return fails() ? none() : counted(__libc_calloc(number, size));
}

void* realloc(void* memory, std::size_t size) noexcept {
  if (fails()) return none();
  if (memory == nullptr) return take(size);
  if (size != 0) return __libc_realloc(memory, size);
  giveBack(memory);
  return nullptr;
}

int posix_memalign(void** place, std::size_t alignment, std::size_t size) noexcept {
  void* const memory = fails() ? nullptr : takeAligned(alignment, size);
  if (memory == nullptr) return ENOMEM;
  *place = memory;
  return 0;
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return fails() ? none() : takeAligned(alignment, size);
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
  return fails() ? none() : takeAligned(alignment, size);
}

void free(void* memory) noexcept { giveBack(memory); }

}  // extern "C"

#else

namespace {

void* take(std::size_t size) { return counted(std::malloc(size)); }
void* takeAligned(std::size_t alignment, std::size_t size) {
  return counted(std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment));
}
void giveBack(void* memory) {
  if (memory == nullptr) return;
  --live;
  std::free(memory);
}

}  // namespace

#endif

namespace {

void* orRaise(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void* takeForNew(std::size_t size) {
  return fails() ? nullptr : take(std::max(size, std::size_t{1}));
}

void* takeForNew(std::size_t size, std::align_val_t alignment) {
  if (fails()) return nullptr;
  return takeAligned(static_cast<std::size_t>(alignment), std::max(size, std::size_t{1}));
}

}  // namespace

// All forms: a sanitizer brings its own of each, which don't lead to these.

void* operator new(std::size_t size) { return orRaise(takeForNew(size)); }
void* operator new[](std::size_t size) { return orRaise(takeForNew(size)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return takeForNew(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return takeForNew(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return orRaise(takeForNew(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return orRaise(takeForNew(size, alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return takeForNew(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return takeForNew(size, alignment);
}

void operator delete(void* memory) noexcept { giveBack(memory); }
void operator delete[](void* memory) noexcept { giveBack(memory); }
void operator delete(void* memory, std::size_t) noexcept { giveBack(memory); }
void operator delete[](void* memory, std::size_t) noexcept { giveBack(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { giveBack(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { giveBack(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { giveBack(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { giveBack(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { giveBack(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { giveBack(memory); }
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
  giveBack(memory);
}
void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
  giveBack(memory);
}

namespace vornath_test {

std::uint64_t allocationCount() { return count; }

std::int64_t liveAllocations() { return live; }

FailingAllocations::FailingAllocations() { ++failing; }
FailingAllocations::~FailingAllocations() { --failing; }

FailNthAllocation::FailNthAllocation(std::uint64_t number) : number_(count + number) {
  failingNumber = number_;
}
FailNthAllocation::~FailNthAllocation() { failingNumber = kNone; }

bool FailNthAllocation::triggered() const { return count > number_; }

}  // namespace vornath_test
