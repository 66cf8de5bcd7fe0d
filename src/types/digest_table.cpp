#include "types/digest_table.hpp"

#include <bit>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace qex::vornath {
namespace {

constexpr std::size_t kMinDiscarded = 64 * 1024;  // bytes

// Lets the system take back the whole pages of memory that nobody needs any more. They read as
// zeros from then on.
void discard([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t size) {
#if defined(__linux__)
  constexpr std::uintptr_t kPage = 4096;
  if (size < kMinDiscarded) return;
  const auto begin = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t first = (begin + kPage - 1) / kPage * kPage;
  const std::uintptr_t last = (begin + size) / kPage * kPage;
  madvise(reinterpret_cast<void*>(first), last - first, MADV_DONTNEED);
#endif
}

}  // namespace

DigestTable::DigestTable(std::size_t minCapacity) : minCapacity_(minCapacity) {
  resizeLocked(minCapacity);
}

DigestTable::~DigestTable() {
  for (Array* const array : arrays_) ::operator delete(array);
}

void DigestTable::reserveLocked(std::size_t entries) {
  const std::size_t capacity = current_.load(std::memory_order_relaxed)->mask + 1;
  const std::size_t needed = (size_ + entries) * 3 / 2 + 1;
  if (needed > capacity) {
    resizeLocked(std::bit_ceil(needed));
  } else if (capacity > minCapacity_ && needed < capacity / 16) {
    resizeLocked(std::max(std::bit_ceil(2 * needed), minCapacity_));
  }
}

void DigestTable::insertLocked(std::uint64_t digest, const InternedType* type) noexcept {
  insert(*current_.load(std::memory_order_relaxed), digest, type);
  ++size_;
}

void DigestTable::insert(Array& array, std::uint64_t digest, const InternedType* type) noexcept {
  std::size_t i = digest & array.mask;
  while (array.slots()[i].type.load(std::memory_order_relaxed) != nullptr) i = (i + 1) & array.mask;
  array.slots()[i].digest.store(digest, std::memory_order_relaxed);
  array.slots()[i].type.store(type, std::memory_order_release);
}

void DigestTable::eraseLocked(Slot& erased) noexcept {
  const Array& array = *current_.load(std::memory_order_relaxed);
  auto hole = static_cast<std::size_t>(&erased - array.slots());
  for (std::size_t i = (hole + 1) & array.mask;; i = (i + 1) & array.mask) {
    const Slot& slot = array.slots()[i];
    const InternedType* const type = slot.type.load(std::memory_order_relaxed);
    if (type == nullptr) break;
    // An entry may not stand in front of the place that its digest gives it.
    const std::uint64_t digest = slot.digest.load(std::memory_order_relaxed);
    if (((i - digest) & array.mask) < ((i - hole) & array.mask)) continue;
    array.slots()[hole].digest.store(digest, std::memory_order_relaxed);
    array.slots()[hole].type.store(type, std::memory_order_release);
    hole = i;
  }
  array.slots()[hole].type.store(nullptr, std::memory_order_release);
  --size_;
}

void DigestTable::resizeLocked(std::size_t capacity) {
  Array*& array = arrays_[static_cast<std::size_t>(std::bit_width(capacity)) - 1];
  if (array == nullptr) {
    array = new (::operator new(sizeof(Array) + capacity * sizeof(Slot))) Array{capacity - 1};
    for (std::size_t i = 0; i < capacity; ++i) new (array->slots() + i) Slot{};
  } else {
    // Somebody may still read it.
    for (std::size_t i = 0; i < capacity; ++i) {
      array->slots()[i].type.store(nullptr, std::memory_order_relaxed);
    }
  }
  Array* const former = current_.load(std::memory_order_relaxed);
  if (former != nullptr) {
    for (std::size_t i = 0; i <= former->mask; ++i) {
      const Slot& slot = former->slots()[i];
      const InternedType* const type = slot.type.load(std::memory_order_relaxed);
      if (type != nullptr) insert(*array, slot.digest.load(std::memory_order_relaxed), type);
    }
  }
  current_.store(array, std::memory_order_release);
  if (former != nullptr) discard(former->slots(), (former->mask + 1) * sizeof(Slot));
}

}  // namespace qex::vornath
