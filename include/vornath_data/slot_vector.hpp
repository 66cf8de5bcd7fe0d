/// The memory of a container.
#ifndef VORNATH_DATA_SLOT_VECTOR_HPP
#define VORNATH_DATA_SLOT_VECTOR_HPP

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

namespace vrnt::data {

namespace detail {
class SlotMemory;
}

/// A vector that only grows and cannot be copied. In contrast to std::vector, it grows trivially
/// copyable elements by realloc(). For a large container, realloc() remaps pages instead of copying
/// their bytes to newly allocated ones. Copying would be most of the cost of an addition.
///
/// A host may rely on this: the elements are contiguous and in order, an element stays in place
/// until the vector grows beyond its capacity, and a move of the vector moves no element. Where the
/// memory comes from is no promise: the library moves large vectors into memory of its own. So a
/// host must not free the elements or pass them to realloc(). A vector can be moved and destroyed
/// on any thread.
template <typename Element>
class SlotVector {
  static_assert(std::is_nothrow_move_constructible_v<Element> &&
                    std::is_nothrow_default_constructible_v<Element>,
                "growth keeps all elements if there is no memory");
  static_assert(alignof(Element) <= alignof(std::max_align_t), "elements come from malloc");

 public:
  SlotVector() noexcept = default;
  SlotVector(SlotVector&& other) noexcept
      : elements_(std::exchange(other.elements_, nullptr)),
        size_(std::exchange(other.size_, 0)),
        capacity_(std::exchange(other.capacity_, 0)),
        release_(std::exchange(other.release_, nullptr)) {}
  SlotVector& operator=(SlotVector&& other) noexcept {
    SlotVector moved(std::move(other));
    std::swap(elements_, moved.elements_);
    std::swap(size_, moved.size_);
    std::swap(capacity_, moved.capacity_);
    std::swap(release_, moved.release_);
    return *this;
  }
  ~SlotVector() {
    for (Element& element : *this) element.~Element();
    releaseMemory();
  }

  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }

  /// Returns how many elements the vector can have before it takes other memory.
  std::size_t capacity() const noexcept { return capacity_; }

  Element* begin() noexcept { return elements_; }
  Element* end() noexcept { return elements_ + size_; }
  const Element* begin() const noexcept { return elements_; }
  const Element* end() const noexcept { return elements_ + size_; }

  /// The index is not checked.
  Element& operator[](std::size_t index) noexcept { return elements_[index]; }
  const Element& operator[](std::size_t index) const noexcept { return elements_[index]; }

  /// Allocates memory for `count` elements.
  /// Errors: throws std::bad_alloc and changes nothing.
  void reserve(std::size_t count) {
    if (count > capacity_) changeCapacity(count);
  }

  /// Appends elements until there are `count`. Never removes an element.
  /// Errors: throws std::bad_alloc and changes nothing.
  void grow(std::size_t count) {
    reserve(count);
    for (; size_ < count; ++size_) new (static_cast<void*>(elements_ + size_)) Element;
  }

  /// Appends an element and returns it. Takes amortised constant time.
  /// Errors: throws std::bad_alloc and changes nothing.
  Element& append() {
    if (size_ == capacity_) changeCapacity(capacity_ == 0 ? 1 : 2 * capacity_);
    Element* added = new (static_cast<void*>(elements_ + size_)) Element;
    ++size_;
    return *added;
  }

 private:
  friend class detail::SlotMemory;

  // Releases memory that is not from malloc(), given its address and its size in bytes.
  using Release = void (*)(void*, std::size_t) noexcept;

  void changeCapacity(std::size_t count) {
    // No object is larger than the largest pointer difference.
    constexpr auto kMostBytes =
        static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
    if (count > kMostBytes / sizeof(Element)) throw std::bad_alloc();
    const std::size_t bytes = count * sizeof(Element);
    if (std::is_trivially_copyable_v<Element> && !release_) {
      void* place = std::realloc(static_cast<void*>(elements_), bytes);
      if (!place) throw std::bad_alloc();
      elements_ = static_cast<Element*>(place);
      capacity_ = count;
    } else {
      void* place = std::malloc(bytes);
      if (!place) throw std::bad_alloc();
      moveTo(place, count, nullptr);
    }
  }

  // Moves the elements to other memory, which has room for `capacity` of them, and releases the
  // former memory. `release` is to release the new memory; null stands for std::free().
  void moveTo(void* memory, std::size_t capacity, Release release) noexcept {
    auto* const place = static_cast<Element*>(memory);
    if constexpr (std::is_trivially_copyable_v<Element>) {
      if (size_ != 0) std::memcpy(memory, static_cast<void*>(elements_), size_ * sizeof(Element));
    } else {
      for (std::size_t i = 0; i < size_; ++i) {
        new (static_cast<void*>(place + i)) Element(std::move(elements_[i]));
        elements_[i].~Element();
      }
    }
    releaseMemory();
    elements_ = place;
    capacity_ = capacity;
    release_ = release;
  }

  void releaseMemory() noexcept {
    if (release_) {
      release_(static_cast<void*>(elements_), capacity_ * sizeof(Element));
    } else {
      std::free(static_cast<void*>(elements_));
    }
  }

  Element* elements_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
  Release release_ = nullptr;  // null if the memory is from malloc()
};

}  // namespace vrnt::data

#endif
