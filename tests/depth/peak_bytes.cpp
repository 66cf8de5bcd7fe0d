#include "peak_bytes.hpp"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::uint64_t> used{0};
std::atomic<std::uint64_t> peak{0};

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  const std::uint64_t now = used += malloc_usable_size(memory);
  std::uint64_t most = peak;
  while (most < now && !peak.compare_exchange_weak(most, now)) {
  }
  return memory;
}

void operator delete(void* memory) noexcept {
  used -= malloc_usable_size(memory);
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace vornath_test {

PeakBytes::PeakBytes() : before_(used) { peak = before_; }

std::uint64_t PeakBytes::value() const { return peak - before_; }

}  // namespace vornath_test
