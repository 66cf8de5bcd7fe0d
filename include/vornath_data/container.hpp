/// A container for the objects of one class.
#ifndef VORNATH_DATA_CONTAINER_HPP
#define VORNATH_DATA_CONTAINER_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

#include "vornath_data/detail/slot_set.hpp"
#include "vornath_data/slot_vector.hpp"

namespace vrnt::data {

/// Stores objects in slots. A slot never moves, and the number of slots never falls. Removal of an
/// object leaves a free slot; the next addition takes the lowest free slot. The element itself
/// tells whether its slot is live, by `live()`. Only valid() checks its index.
///
/// The container records which slots are free, so that an addition finds the next free slot in a
/// few steps, however many live slots lie in between. It calls `live()` before it moves `firstFree`
/// to a slot.
///
/// Code that fills or frees a slot must report that by the functions below. If a slot was made live
/// in place without a report, additions skip it, unless it is the slot `firstFree`. If a slot was
/// freed in place without a report (through its flag, or through the data pointer of an asset's
/// block that a host holds), additions may miss it until freed() is called for it. vrdmRemove()
/// calls freed().
template <typename Element>
struct Container {
  SlotVector<Element> slots;

  /// When this was set, every slot below it was live, and this slot, if it exists, was free. A slot
  /// that a host makes live or frees in place does not change it.
  std::uint32_t firstFree = 0;

  Container() noexcept = default;
  Container(Container&& other) noexcept
      : slots(std::move(other.slots)),
        firstFree(std::exchange(other.firstFree, 0)),
        known_(std::exchange(other.known_, 0)),
        freed_(std::move(other.freed_)) {}
  Container& operator=(Container&& other) noexcept {
    slots = std::move(other.slots);
    firstFree = std::exchange(other.firstFree, 0);
    known_ = std::exchange(other.known_, 0);
    freed_ = std::move(other.freed_);
    return *this;
  }
  ~Container() = default;

  /// Returns the number of slots, including free ones.
  std::uint32_t size() const noexcept { return static_cast<std::uint32_t>(slots.size()); }

  /// Returns the slot at `index`. The index must be below size(); it is not checked.
  Element& at(std::int32_t index) { return slots[static_cast<std::size_t>(index)]; }
  const Element& at(std::int32_t index) const { return slots[static_cast<std::size_t>(index)]; }

  /// Returns true if the slot at `index` is live. Any index is allowed.
  bool valid(std::int32_t index) const {
    return index >= 0 && index < static_cast<std::int32_t>(size()) && at(index).live();
  }

  /// Chooses the slot for an addition: the lowest free slot, or a new one. The slot is still free
  /// when this returns; the caller must make it live or call leftFree(). Takes amortised constant
  /// time.
  /// Errors: throws std::bad_alloc and changes nothing.
  std::uint32_t allocate() {
    const std::uint32_t chosen = firstFree;
    if (chosen >= size()) {
      slots.append();
      firstFree = chosen + 1;
      use(chosen);
    } else {
      use(chosen);
      findNextFree();
    }
    return chosen;
  }

  /// Reports that an object was put into a free slot by other means than allocate().
  void occupied(std::uint32_t index) noexcept {
    use(index);
    if (firstFree == index) findNextFree();
  }

  /// Reports that a slot was freed.
  void freed(std::int32_t index) noexcept {
    leftFree(static_cast<std::uint32_t>(index));
    if (static_cast<std::uint32_t>(index) < firstFree) {
      firstFree = static_cast<std::uint32_t>(index);
    }
  }

  /// Reports that the content put into a slot is not live, for example an asset without data. An
  /// addition takes the slot only after a lower slot was freed.
  void leftFree(std::uint32_t index) noexcept {
    if (index < known_) note(index);
  }

  /// Adds free slots until there are `count` slots. Never removes a slot.
  void grow(std::uint32_t count) { slots.grow(count); }

 private:
  // Records a free slot below known_. If there is no memory for that, lowers known_ to the slot, so
  // that this slot and all later ones are asked again.
  bool note(std::uint32_t index) noexcept {
    if (!freed_) freed_.reset(new (std::nothrow) vrnt::detail::SlotSet);
    if (freed_ && freed_->insert(index)) return true;
    known_ = index;
    return false;
  }

  void use(std::uint32_t index) noexcept {
    if (index < known_) {
      if (freed_) freed_->erase(index);
      return;
    }
    for (; known_ < index; ++known_) {
      if (!slots[known_].live() && !note(known_)) return;
    }
    known_ = index + 1;
  }

  void findNextFree() noexcept {
    std::uint32_t next = firstFree + 1;
    if (freed_) {
      std::uint32_t noted = freed_->next(next);
      while (noted < known_) {
        if (!slots[noted].live()) {
          firstFree = noted;
          return;
        }
        freed_->erase(noted);
        noted = freed_->next(noted);
      }
    }
    if (next < known_) next = known_;
    while (next < size() && slots[next].live()) {
      if (next == known_) ++known_;
      ++next;
    }
    firstFree = next;
  }

  // Below known_, the slots in freed_ may be free, and all others are live. Slots from known_ on
  // were added by other means than allocate(), and each of them may be free.
  std::uint32_t known_ = 0;
  std::unique_ptr<vrnt::detail::SlotSet> freed_;
};

}  // namespace vrnt::data

#endif
