/// The store of one class's objects.
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

/// Objects in slots. Slots never move and their number never falls; a removed object leaves a free
/// slot, and an addition takes the lowest one. Whether a slot is live is for its element to say,
/// by `live()`. No index is checked except by valid().
///
/// The container notes which slots are free, so that an addition finds the next one in a few steps
/// however many lie in between, and asks `live()` before it stands on one. Whoever fills or empties
/// a slot tells it so by the functions below. A slot that was brought to life in place is passed
/// over, unless `firstFree` stands on it. One that was emptied in place (its flag, or the data
/// pointer of an asset's block that a host holds) need not be found before freed() is called for
/// it, which vrdmRemove() does.
template <typename Element>
struct Container {
  SlotVector<Element> slots;

  /// Every slot below was in use when this was set, and the one here, if there is one, free. A slot
  /// that a host brings to life or empties in place isn't noticed.
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
  /// returns, and the caller makes it live, or calls leftFree(). Amortised constant time.
  /// Errors: std::bad_alloc, with nothing changed.
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

  /// To be called when an object was put into a free slot otherwise than by allocate().
  void occupied(std::uint32_t index) noexcept {
    use(index);
    if (firstFree == index) findNextFree();
  }

  /// To be called when a slot was freed.
  void freed(std::int32_t index) noexcept {
    leftFree(static_cast<std::uint32_t>(index));
    if (static_cast<std::uint32_t>(index) < firstFree) {
      firstFree = static_cast<std::uint32_t>(index);
    }
  }

  /// To be called when what was put into a slot isn't live, as an asset without data. An addition
  /// takes the slot once a lower one was freed.
  void leftFree(std::uint32_t index) noexcept {
    if (index < known_) note(index);
  }

  /// Adds free slots up to a count; never takes any away.
  void grow(std::uint32_t count) { slots.grow(count); }

 private:
  // Notes a free slot below known_. Without the memory for that, it and all behind it are asked.
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

  // Of the slots below known_, those in freed_ may be free, and all others are in use. The slots
  // from there on were added by other means than allocate(), and each may be free.
  std::uint32_t known_ = 0;
  std::unique_ptr<vrnt::detail::SlotSet> freed_;
};

}  // namespace vrnt::data

#endif
