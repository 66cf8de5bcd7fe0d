/// Memory for types. A look-up that takes no lock may meet a type that was destroyed, or another
/// type in its place. So the word that counts the references to a type stands in front of the type,
/// and stays a count for as long as the library is loaded: that of a dead type is 0.
#ifndef VORNATH_TYPES_TYPE_POOL_HPP
#define VORNATH_TYPES_TYPE_POOL_HPP

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "types/type.hpp"

namespace qex::vornath {

/// Room for types, in slabs of 64 KiB. Only one thread at a time may call; any thread may access
/// the counts.
class TypePool {
 public:
  TypePool() = default;
  TypePool(const TypePool&) = delete;
  TypePool& operator=(const TypePool&) = delete;
  /// Frees all memory, so no type may be left, nor a table that refers to one.
  ~TypePool();

  /// Returns room for one type, whose count is 0. Throws std::bad_alloc.
  void* allocate();
  /// Takes back the room of a destroyed type. Its count must be 0. The memory of a slab without
  /// types goes back to the system, except for one such slab.
  void free(void* type) noexcept;

 private:
  struct Slab;

  Slab& openSlab();
  void open(Slab& slab) noexcept;
  void close(Slab& slab) noexcept;

  Slab* slabs_ = nullptr;  // all of them
  Slab* open_ = nullptr;   // those with types and with room
  Slab* spare_ = nullptr;  // one without types that kept its memory
  Slab* empty_ = nullptr;  // those without types that gave it back
};

/// Returns the count of a type. It is a plain word since it outlives the type; access it through
/// std::atomic_ref only.
inline std::uint32_t& referenceCount(const void* type) noexcept {
  constexpr std::size_t kDistance = sizeof(std::uint64_t);
  return *reinterpret_cast<std::uint32_t*>(static_cast<char*>(const_cast<void*>(type)) - kDistance);
}

/// Adds a reference to the type that lives at this address. Returns false, and adds none, if none
/// lives there. The type may be another one than the caller looked for.
inline bool addReferenceIfAlive(const void* type) noexcept {
  const std::atomic_ref<std::uint32_t> count(referenceCount(type));
  std::uint32_t known = count.load(std::memory_order_relaxed);
  while (known != 0) {
    if (count.compare_exchange_weak(known, known + 1, std::memory_order_acquire,
                                    std::memory_order_relaxed)) {
      return true;
    }
  }
  return false;
}

}  // namespace qex::vornath

#endif
