// A stack that needs no memory while it is low.
#ifndef VORNATH_TOOLKIT_FOUNDATION_SMALL_STACK_HPP
#define VORNATH_TOOLKIT_FOUNDATION_SMALL_STACK_HPP

#include <array>
#include <cstddef>
#include <vector>

namespace vrtk {

/// References to elements are valid until the next push().
template <typename Element, std::size_t Low>
class SmallStack {
 public:
  bool empty() const { return size_ == 0; }
  std::size_t size() const { return size_; }
  Element& back() { return size_ <= Low ? low_[size_ - 1] : high_.back(); }
  void push(const Element& element) {
    if (size_ < Low) {
      low_[size_] = element;
    } else {
      high_.push_back(element);
    }
    ++size_;
  }
  void pop() {
    if (size_ > Low) high_.pop_back();
    --size_;
  }

 private:
  std::size_t size_ = 0;
  std::array<Element, Low> low_;
  std::vector<Element> high_;
};

}  // namespace vrtk

#endif
