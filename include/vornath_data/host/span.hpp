/// A view of contiguous elements that it does not own.
#ifndef VORNATH_DATA_HOST_SPAN_HPP
#define VORNATH_DATA_HOST_SPAN_HPP

#include <cstddef>
#include <type_traits>
#include <utility>

namespace vrnt::host {

/// A pointer and a count. Owns nothing; the elements must outlive it.
template <typename T>
class Span {
 public:
  constexpr Span() noexcept = default;
  constexpr Span(T* data, std::size_t size) noexcept : data_(data), size_(size) {}

  /// Makes a span of the elements of a std::vector, std::array or other Span. If the container is a
  /// temporary, the elements live until the end of the call that the span is passed to.
  template <typename Container,
            typename = std::enable_if_t<!std::is_same_v<std::decay_t<Container>, Span>>,
            typename Element = std::remove_pointer_t<decltype(std::declval<Container&>().data())>,
            typename = std::enable_if_t<std::is_convertible_v<Element (*)[], T (*)[]>>>
  constexpr Span(Container&& container)  // NOLINT(google-explicit-constructor)
      : data_(container.data()), size_(container.size()) {}

  constexpr T* data() const noexcept { return data_; }
  constexpr std::size_t size() const noexcept { return size_; }
  constexpr bool empty() const noexcept { return size_ == 0; }
  constexpr T* begin() const noexcept { return data_; }
  constexpr T* end() const noexcept { return data_ + size_; }

  /// The index is not checked.
  constexpr T& operator[](std::size_t index) const noexcept { return data_[index]; }

 private:
  T* data_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace vrnt::host

#endif
