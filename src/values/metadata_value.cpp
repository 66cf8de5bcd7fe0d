#include "metadata_value.hpp"

#include <utility>

#include "dynamic_value.hpp"
#include "value_text.hpp"

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

std::string metadataValueText(const DynamicValue& value) { return valueToString(value.view()); }

vrntValue_t* allocateValue(const DynamicValue& value) {
  showToHost(value.block());
  retainBlock(value.block());
  return value.block();
}

}  // namespace qex::vornath
