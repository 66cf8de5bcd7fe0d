// The box of values in metadata: defined here, where DynamicValue is complete.
#include "types/heap_value.hpp"

#include "values/dynamic_value.hpp"

namespace qex::vornath {

template <typename T>
HeapValue<T>::HeapValue(const T& value) : value_(new T(value)) {}

template <typename T>
HeapValue<T>::HeapValue(T&& value) : value_(new T(std::move(value))) {}

template <typename T>
HeapValue<T>::HeapValue(const HeapValue& other) : value_(new T(*other)) {}

template <typename T>
HeapValue<T>& HeapValue<T>::operator=(const HeapValue& other) {
  HeapValue copy(other);
  std::swap(value_, copy.value_);
  return *this;
}

template <typename T>
HeapValue<T>::~HeapValue() {
  delete value_;
}

template class HeapValue<DynamicValue>;

}  // namespace qex::vornath
