/// A hash table from digests to types that is read without a lock.
#ifndef VORNATH_TYPES_DIGEST_TABLE_HPP
#define VORNATH_TYPES_DIGEST_TABLE_HPP

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "types/type.hpp"
#include "types/type_pointer.hpp"
#include "types/type_pool.hpp"

namespace qex::vornath {

/// Finds types by digests of 64 bits. Several entries may have one digest, and one type may have
/// several entries. The table adds no references.
///
/// Threads: find() may run at any time. All other functions need the lock of the owner. A find()
/// that meets a change may miss an entry, and it may meet an entry whose type is dead or whose
/// memory holds another type: so it adds a reference, which only a living type takes, before it
/// asks whether the type is the right one. Whoever needs to know that there is no entry asks
/// findLocked().
///
/// Open addressing with linear probing, at most two thirds full; a removal moves later entries up.
class DigestTable {
 public:
  /// Makes a table that never has fewer slots than this power of two. Throws std::bad_alloc.
  explicit DigestTable(std::size_t minCapacity);
  DigestTable(const DigestTable&) = delete;
  DigestTable& operator=(const DigestTable&) = delete;
  ~DigestTable();

  /// Returns a new reference to a living type with this digest for which `accept(type)` is true, or
  /// null. `accept` is called with a type that cannot die meanwhile, of whatever description. It
  /// must not throw.
  template <typename Accept>
  TypePtr find(std::uint64_t digest, Accept accept) const noexcept {
    const Array& array = *current_.load(std::memory_order_acquire);
    const std::size_t mask = array.mask;
    std::size_t i = digest & mask;
    for (std::size_t probes = 0; probes <= mask; ++probes, i = (i + 1) & mask) {
      const Slot& slot = array.slots()[i];
      const InternedType* const type = slot.type.load(std::memory_order_acquire);
      if (type == nullptr) break;
      if (slot.digest.load(std::memory_order_relaxed) != digest) continue;
      if (!addReferenceIfAlive(type)) continue;
      TypePtr found(type, false);
      if (accept(*type)) return found;
    }
    return {};
  }

  /// Returns the first type with this digest for which `accept(type)` is true, or null.
  template <typename Accept>
  const InternedType* findLocked(std::uint64_t digest, Accept accept) const {
    const Slot* const slot = slotLocked(digest, accept);
    return slot != nullptr ? slot->type.load(std::memory_order_relaxed) : nullptr;
  }

  /// Makes room, so that the next `entries` calls of insertLocked() need none. Throws
  /// std::bad_alloc; the entries are then unchanged.
  void reserveLocked(std::size_t entries);
  /// Adds an entry, for which reserveLocked() has made room.
  void insertLocked(std::uint64_t digest, const InternedType* type) noexcept;
  /// Replaces the type of the first entry with this digest for which `accept(type)` is true.
  /// Returns the former type, or null if there is no such entry.
  template <typename Accept>
  const InternedType* replaceLocked(std::uint64_t digest, const InternedType* type,
                                    Accept accept) noexcept {
    Slot* const slot = slotLocked(digest, accept);
    return slot != nullptr ? slot->type.exchange(type, std::memory_order_acq_rel) : nullptr;
  }
  /// Removes the first entry with this digest for which `accept(type)` is true, if there is one.
  template <typename Accept>
  void eraseLocked(std::uint64_t digest, Accept accept) noexcept {
    if (Slot* const slot = slotLocked(digest, accept)) eraseLocked(*slot);
  }

  std::size_t sizeLocked() const noexcept { return size_; }

 private:
  struct Slot {
    std::atomic<std::uint64_t> digest;
    std::atomic<const InternedType*> type;  // null in a free slot
  };

  // The slots stand behind it.
  struct alignas(Slot) Array {
    Slot* slots() const { return reinterpret_cast<Slot*>(const_cast<Array*>(this) + 1); }

    std::size_t mask;
  };

  template <typename Accept>
  Slot* slotLocked(std::uint64_t digest, Accept accept) const {
    const Array& array = *current_.load(std::memory_order_relaxed);
    for (std::size_t i = digest & array.mask;; i = (i + 1) & array.mask) {
      Slot& slot = array.slots()[i];
      const InternedType* const type = slot.type.load(std::memory_order_relaxed);
      if (type == nullptr) return nullptr;
      if (slot.digest.load(std::memory_order_relaxed) == digest && accept(*type)) return &slot;
    }
  }
  void eraseLocked(Slot& slot) noexcept;
  void resizeLocked(std::size_t capacity);
  static void insert(Array& array, std::uint64_t digest, const InternedType* type) noexcept;

  const std::size_t minCapacity_;
  std::atomic<Array*> current_{nullptr};
  std::size_t size_ = 0;
  // By the logarithm of the number of slots. One that was replaced stays for those who still read
  // it, and for the next time that the table has its size.
  std::array<Array*, 64> arrays_{};
};

}  // namespace qex::vornath

#endif
