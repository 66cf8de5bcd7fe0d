// The memory of large containers, which the library allocates in huge pages if the system has them
// at hand.
#ifndef VORNATH_SCENE_SLOT_MEMORY_HPP
#define VORNATH_SCENE_SLOT_MEMORY_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "platform/huge_pages.hpp"
#include "vornath_data/container.hpp"

namespace vrnt::data {

namespace detail {

/// Containers of this size in bytes have at least one whole huge page.
inline constexpr std::size_t kLarge = 2 * vrnt::detail::kHugePage;

/// Moves large containers into memory of their own, in huge pages. This is optional: a container
/// that got none uses memory from malloc().
class SlotMemory {
 public:
  /// Provides memory for exactly `count` elements, which will all be used.
  template <typename Element>
  static void provide(SlotVector<Element>& slots, std::size_t count) noexcept {
    if (count > slots.capacity_ && isLarge<Element>(count)) changeMemory(slots, count);
  }

  /// Provides memory for one more element, and for as many more as are worth a call of the system.
  /// Until the container grows further, up to a huge page of it is not used. A container that grows
  /// to kNeverReused has at least half of that in use, so this is at most an eighth.
  template <typename Element>
  static void provideOneMore(SlotVector<Element>& slots) noexcept {
    if (slots.size_ != slots.capacity_ || !isLarge<Element>(2 * slots.size_)) return;
    changeMemory(slots, slots.capacity_ + addedCount(slots));
  }

 private:
  // Pages are moved, not copied. So memory in pages need not double to grow in linear time, and
  // each small step finds out anew whether huge pages are fast.
  template <typename Element>
  static std::size_t addedCount(const SlotVector<Element>& slots) noexcept {
    if (slots.release_ != vrnt::detail::releasePages) return slots.capacity_;
    constexpr std::size_t kStep = (std::size_t{16} << 20) / sizeof(Element);
    return std::max(slots.capacity_ / 8, kStep);
  }

  template <typename Element>
  static bool isLarge(std::size_t count) noexcept {
    // Pages are moved byte by byte. And leak checkers do not look for pointers in such memory.
    return std::is_trivially_copyable_v<Element> &&
           count >= vrnt::detail::kNeverReused / sizeof(Element) &&
           count <= std::numeric_limits<std::ptrdiff_t>::max() / sizeof(Element) / 2;
  }

  template <typename Element>
  static void changeMemory(SlotVector<Element>& slots, std::size_t count) noexcept {
    using vrnt::detail::releasePages;
    const std::size_t size = count * sizeof(Element);
    if (slots.release_ == releasePages) {
      void* const place =
          vrnt::detail::resizePages(slots.elements_, slots.capacity_ * sizeof(Element), size);
      if (!place) return;
      slots.elements_ = static_cast<Element*>(place);
      slots.capacity_ = count;
    } else if (void* const place = vrnt::detail::allocatePages(size)) {
      slots.moveTo(place, count, releasePages);
    }
  }
};

}  // namespace detail

/// Allocates memory for `count` elements that a caller is about to add. In contrast to
/// SlotVector::reserve(), it uses huge pages if the system has them at hand.
/// Errors: throws std::bad_alloc and changes nothing.
template <typename Element>
void reserveSlots(Container<Element>& container, std::size_t count) {
  SlotVector<Element>& slots = container.slots;
  detail::SlotMemory::provide(slots, count);
  if (count <= slots.capacity()) return;
  slots.reserve(count);
  // Memory from malloc() that was used before has its pages already, and they stay as they are.
  if (count >= detail::kLarge / sizeof(Element)) {
    vrnt::detail::useHugePages(slots.end(), (count - slots.size()) * sizeof(Element));
  }
}

/// Chooses the slot for an addition, as Container::allocate() does. Uses huge pages if the
/// container is large and the system has them at hand.
/// Errors: throws std::bad_alloc and changes nothing.
template <typename Element>
std::uint32_t allocateSlot(Container<Element>& container) {
  if (container.firstFree >= container.size()) detail::SlotMemory::provideOneMore(container.slots);
  return container.allocate();
}

/// Appends a slot. Uses huge pages as allocateSlot() does.
/// Errors: throws std::bad_alloc and changes nothing.
template <typename Element>
void appendSlot(Container<Element>& container) {
  detail::SlotMemory::provideOneMore(container.slots);
  container.slots.append();
}

/// Provides the memory that reserveSlots() allocated piece by piece, just before it is used. This
/// takes less time than a page fault for each page. Does nothing for memory that may have been used
/// before, which has its pages already.
template <typename Element>
class SlotsAhead {
 public:
  /// For the slots that the container needs to have `count`.
  SlotsAhead(Container<Element>& container, std::size_t count) noexcept
      : container_(container),
        end_(count >= vrnt::detail::kNeverReused / sizeof(Element) ? count : 0),
        next_(container.slots.size()) {}

  /// Call it before a slot is added at `index`, for each index in order.
  void provide(std::size_t index) noexcept {
    if (index != next_ || index >= end_) return;
    const std::size_t count = std::min(kPiece, end_ - index);
    Element* const slots = container_.slots.begin();
    vrnt::detail::provideMemory(slots + index, count * sizeof(Element), slots + end_);
    next_ += count;
  }

 private:
  // Slots for 256 KiB, which fit into a processor's second cache.
  static constexpr std::size_t kPiece = (std::size_t{256} << 10) / sizeof(Element);

  Container<Element>& container_;
  std::size_t end_;
  std::size_t next_;
};

}  // namespace vrnt::data

#endif
