#include "types/type_pool.hpp"

#include <new>
#include <utility>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#if defined(__SANITIZE_ADDRESS__)
#define VORNATH_POISONS_TYPES 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VORNATH_POISONS_TYPES 1
#endif
#endif
#if defined(VORNATH_POISONS_TYPES)
#include <sanitizer/asan_interface.h>
#endif

namespace qex::vornath {
namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kSlabSize = 16 * kPage;

// The room of a dead type links to the next one.
struct Room {
  std::uint64_t count;
  union {
    Room* nextFree;
    alignas(InternedType) std::byte type[sizeof(InternedType)];
  };
};
static_assert(offsetof(Room, type) == sizeof(std::uint64_t));

Room* roomOf(void* type) {
  return reinterpret_cast<Room*>(static_cast<std::byte*>(type) - offsetof(Room, type));
}

// Lets AddressSanitizer report a read of a dead type.
void setReadable([[maybe_unused]] Room* room, [[maybe_unused]] bool readable) {
#if defined(VORNATH_POISONS_TYPES)
  std::byte* const type = room->type + sizeof(Room*);
  constexpr std::size_t kSize = sizeof(InternedType) - sizeof(Room*);
  if (readable) {
    ASAN_UNPOISON_MEMORY_REGION(type, kSize);
  } else {
    ASAN_POISON_MEMORY_REGION(type, kSize);
  }
#endif
}

}  // namespace

// A slab is aligned to its size, so that the address of a room leads to it. The memory behind the
// first page of a slab without types goes back to the system. Its counts then read as 0, which is
// what they are.
struct TypePool::Slab {
  static constexpr std::size_t kHeader = 64;
  static constexpr std::size_t kRooms = (kSlabSize - kHeader) / sizeof(Room);

  static Slab& of(Room* room) {
    const auto address = reinterpret_cast<std::uintptr_t>(room);
    return *reinterpret_cast<Slab*>(address - address % kSlabSize);
  }

  Room* room(std::size_t i) {
    return reinterpret_cast<Room*>(reinterpret_cast<std::byte*>(this) + kHeader) + i;
  }
  bool full() const { return free == nullptr && fresh == kRooms; }
  void giveBack() {
#if defined(__linux__)
    madvise(reinterpret_cast<std::byte*>(this) + kPage, kSlabSize - kPage, MADV_DONTNEED);
    free = nullptr;
    fresh = 0;
#endif
  }

  Slab* next = nullptr;   // of all slabs
  Slab* later = nullptr;  // of the list that it stands in
  Slab* earlier = nullptr;
  Room* free = nullptr;
  std::size_t fresh = 0;  // the rooms from here on are not in use and not in the list
  std::size_t types = 0;
};

TypePool::~TypePool() {
  while (slabs_ != nullptr) {
    Slab* const slab = std::exchange(slabs_, slabs_->next);
    for (std::size_t i = 0; i < Slab::kRooms; ++i) setReadable(slab->room(i), true);
    ::operator delete (slab, std::align_val_t{kSlabSize});
  }
}

void TypePool::open(Slab& slab) noexcept {
  slab.earlier = nullptr;
  slab.later = std::exchange(open_, &slab);
  if (slab.later != nullptr) slab.later->earlier = &slab;
}

void TypePool::close(Slab& slab) noexcept {
  (slab.earlier != nullptr ? slab.earlier->later : open_) = slab.later;
  if (slab.later != nullptr) slab.later->earlier = slab.earlier;
}

TypePool::Slab& TypePool::openSlab() {
  if (open_ != nullptr) return *open_;
  Slab* slab = std::exchange(spare_, nullptr);
  if (slab == nullptr && empty_ != nullptr) slab = std::exchange(empty_, empty_->later);
  if (slab == nullptr) {
    static_assert(sizeof(Slab) <= Slab::kHeader);
    slab = new (::operator new (kSlabSize, std::align_val_t{kSlabSize})) Slab;
    slab->next = std::exchange(slabs_, slab);
  }
  open(*slab);
  return *slab;
}

void* TypePool::allocate() {
  Slab& slab = openSlab();
  Room* room = slab.free;
  if (room == nullptr) {
    room = slab.room(slab.fresh++);
    std::atomic_ref(referenceCount(room->type)).store(0, std::memory_order_relaxed);
  } else {
    slab.free = room->nextFree;
  }
  setReadable(room, true);
  ++slab.types;
  if (slab.full()) close(slab);
  return room->type;
}

void TypePool::free(void* type) noexcept {
  Room* const room = roomOf(type);
  Slab& slab = Slab::of(room);
  if (slab.full()) open(slab);
  room->nextFree = std::exchange(slab.free, room);
  setReadable(room, false);
  if (--slab.types != 0) return;
  close(slab);
  if (spare_ == nullptr) {
    spare_ = &slab;
  } else {
    slab.giveBack();
    slab.later = std::exchange(empty_, &slab);
  }
}

}  // namespace qex::vornath
