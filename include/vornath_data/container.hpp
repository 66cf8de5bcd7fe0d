/// The store of one class's objects.
#ifndef VORNATH_DATA_CONTAINER_HPP
#define VORNATH_DATA_CONTAINER_HPP

#include <cstddef>
#include <cstdint>

#include "vornath_data/slot_vector.hpp"

namespace vrnt::data {

/// Objects in slots. Slots never move and their number never falls; a removed object leaves a free
/// slot, and an addition takes the lowest one. Whether a slot is live is for its element to say,
/// by `live()`. No index is checked except by valid().
template <typename Element>
struct Container {
  SlotVector<Element> slots;

  /// Every slot below was in use when this was set, and the one here, if there is one, free. A slot
  /// that a host brings to life or empties in place isn't noticed.
  std::uint32_t firstFree = 0;

  /// The number of slots, free ones included.
  std::uint32_t size() const noexcept { return static_cast<std::uint32_t>(slots.size()); }

  /// The slot at an index below size(), which isn't checked.
  Element& at(std::int32_t index) { return slots[static_cast<std::size_t>(index)]; }
  const Element& at(std::int32_t index) const { return slots[static_cast<std::size_t>(index)]; }

  /// Whether there is a live object at the index. Any index is allowed.
  bool valid(std::int32_t index) const {
    return index >= 0 && index < static_cast<std::int32_t>(size()) && at(index).live();
  }

  /// Chooses the slot for an addition: the lowest free one, or a new one. It is free when this
  /// returns, and the caller makes it live. Amortised constant time while there are no gaps.
  /// Errors: std::bad_alloc, with nothing changed.
  std::uint32_t allocate() {
    const std::uint32_t chosen = firstFree;
    if (chosen >= size()) {
      slots.append();
      firstFree = chosen + 1;
    } else {
      findNextFree();
    }
    return chosen;
  }

  /// To be called when an object was put into a free slot otherwise than by allocate().
  void occupied(std::uint32_t index) {
    if (firstFree == index) findNextFree();
  }

  /// To be called when a slot was freed.
  void freed(std::int32_t index) {
    if (static_cast<std::uint32_t>(index) < firstFree) {
      firstFree = static_cast<std::uint32_t>(index);
    }
  }

  /// Adds free slots up to a count; never takes any away.
  void grow(std::uint32_t count) { slots.grow(count); }

 private:
  void findNextFree() {
    do {
      ++firstFree;
    } while (firstFree < size() && slots[firstFree].live());
  }
};

}  // namespace vrnt::data

#endif
