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

/// Provides containers with memory in huge pages. Everything here is optional: a container that got
/// none uses memory from malloc().
class SlotMemory {
 public:
  /// Provides memory for exactly `count` elements, which will all be used.
  template <typename Element>
  static void provide(SlotVector<Element>& slots, std::size_t count) noexcept {
    if (count <= slots.capacity_ || !isLarge<Element>(count, kLargeSize)) return;
    changeMemory(slots, count);
  }

  /// Provides memory for one more element, and for as many as SlotVector::append() would.
  template <typename Element>
  static void provideOneMore(SlotVector<Element>& slots) noexcept {
    if (slots.size_ != slots.capacity_ || !isLarge<Element>(slots.size_, kLargeGrowing / 2)) return;
    changeMemory(slots, 2 * slots.capacity_);
  }

 private:
  // A vector of this size in bytes has at least one huge page, even if another one at its end is
  // not filled and so is in usual pages.
  static constexpr std::size_t kLargeSize = 2 * vrnt::detail::kHugePage;

  // While a vector grows, up to a huge page at its end is not used yet. That is at most an eighth
  // of the elements in a vector that grows to this size. A smaller one also gains from malloc(),
  // which uses freed memory again.
  static constexpr std::size_t kLargeGrowing = vrnt::detail::kNeverReused;

  template <typename Element>
  static bool isLarge(std::size_t count, std::size_t bytes) noexcept {
    // Pages are moved byte by byte. And leak checkers do not look for pointers in such memory.
    return std::is_trivially_copyable_v<Element> && count >= bytes / sizeof(Element) &&
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
  detail::SlotMemory::provide(container.slots, count);
  container.slots.reserve(count);
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
/// takes less time than a page fault for each page.
template <typename Element>
class SlotsAhead {
 public:
  /// For `count` slots.
  SlotsAhead(Container<Element>& container, std::size_t count) noexcept
      : container_(container), end_(count * sizeof(Element) >= kLarge ? count : 0) {}

  /// Call it before a slot is added at `index`, for each index in order.
  void provide(std::size_t index) noexcept {
    if (index != next_ || index >= end_) return;
    const std::size_t count = std::min(kPiece, end_ - index);
    vrnt::detail::provideMemory(container_.slots.begin() + index, count * sizeof(Element));
    next_ += count;
  }

 private:
  static constexpr std::size_t kLarge = 2 * vrnt::detail::kHugePage;
  // Slots for 256 KiB, which fit into a processor's second cache.
  static constexpr std::size_t kPiece = (std::size_t{256} << 10) / sizeof(Element);

  Container<Element>& container_;
  std::size_t end_;
  std::size_t next_ = 0;
};

}  // namespace vrnt::data

#endif
