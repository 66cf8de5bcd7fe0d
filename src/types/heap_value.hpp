/// A box for a value whose type is not complete where the box is declared.
#ifndef VORNATH_TYPES_HEAP_VALUE_HPP
#define VORNATH_TYPES_HEAP_VALUE_HPP

#include <utility>

namespace qex::vornath {

/// Owns one T on the heap; copying the box copies the T. Breaks the cycle between types, whose
/// metadata hold values, and values, which have a type. Member functions that need a complete T are
/// defined and instantiated in the value layer.
template <typename T>
class HeapValue {
 public:
  explicit HeapValue(const T& value);
  explicit HeapValue(T&& value);
  HeapValue(const HeapValue& other);
  HeapValue(HeapValue&& other) noexcept : value_(other.value_) { other.value_ = nullptr; }
  HeapValue& operator=(const HeapValue& other);
  HeapValue& operator=(HeapValue&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~HeapValue();

  const T& operator*() const { return *value_; }
  const T* get() const { return value_; }

 private:
  T* value_;
};

}  // namespace qex::vornath

#endif
