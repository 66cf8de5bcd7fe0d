/// The reference slots of a type, one after the other. Those of an array repeat those of its
/// element, so an array needs no list of its own.
#ifndef VORNATH_TYPES_REF_SLOTS_HPP
#define VORNATH_TYPES_REF_SLOTS_HPP

#include <cstddef>
#include <cstdint>
#include <vector>

#include "types/type.hpp"

namespace qex::vornath {

/// The slots that InternedType::refSlots() lists: 8-byte words, ascending. The type must outlive
/// it.
class RefSlots {
 public:
  /// Throws std::bad_alloc if there is no memory for a long list of the elements at its first
  /// request. Once one RefSlots of a type was created, no other one of that type throws.
  explicit RefSlots(const InternedType& type)
      : list_(type.slotPattern().refSlots()),
        stride_(type.slotPattern().size() / 8),
        size_(type.refSlotCount()) {}

  bool empty() const noexcept { return size_ == 0; }
  std::uint64_t size() const noexcept { return size_; }

  std::uint64_t operator[](std::uint64_t i) const noexcept {
    const std::size_t length = list_.size();
    return i < length ? list_[i] : list_[i % length] + i / length * stride_;
  }

  /// Calls `call` with each slot. Faster than the iterator, which can be resumed.
  template <typename Call>
  void forEach(Call&& call) const {
    if (size_ == list_.size()) {
      for (const std::uint64_t slot : list_) call(slot);
    } else if (list_.size() == 1) {
      std::uint64_t slot = list_.front();
      for (std::uint64_t i = 0; i < size_; ++i, slot += stride_) call(slot);
    } else {
      const std::uint64_t repetitions = size_ / list_.size();
      std::uint64_t origin = 0;
      for (std::uint64_t i = 0; i < repetitions; ++i, origin += stride_) {
        for (const std::uint64_t slot : list_) call(origin + slot);
      }
    }
  }

  struct End {};

  class Iterator {
   public:
    std::uint64_t operator*() const noexcept { return origin_ + list_[next_]; }
    Iterator& operator++() noexcept {
      --remaining_;
      if (++next_ == length_) {
        next_ = 0;
        origin_ += stride_;
      }
      return *this;
    }
    friend bool operator==(const Iterator& at, End) noexcept { return at.remaining_ == 0; }

   private:
    friend RefSlots;
    Iterator(const RefSlots& slots, std::uint64_t i) noexcept
        : list_(slots.list_.data()),
          length_(slots.list_.size()),
          next_(i < length_ || length_ == 0 ? i : i % length_),
          origin_(i < length_ || length_ == 0 ? 0 : i / length_ * slots.stride_),
          stride_(slots.stride_),
          remaining_(slots.size_ - i) {}

    const std::uint64_t* list_;
    std::size_t length_;
    std::size_t next_;
    std::uint64_t origin_;
    std::uint64_t stride_;
    std::uint64_t remaining_;
  };

  Iterator begin() const noexcept { return from(0); }
  End end() const noexcept { return {}; }
  /// Returns an iterator to the slot with this index, which is at most size().
  Iterator from(std::uint64_t i) const noexcept { return {*this, i}; }

 private:
  const std::vector<std::uint64_t>& list_;
  std::uint64_t stride_;
  std::uint64_t size_;
};

}  // namespace qex::vornath

#endif
