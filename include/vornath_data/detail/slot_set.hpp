/// A set of slot indices.
#ifndef VORNATH_DATA_DETAIL_SLOT_SET_HPP
#define VORNATH_DATA_DETAIL_SLOT_SET_HPP

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

namespace vrnt::detail {

/// An ordered set of slot indices with one bit for each slot. Above the bits are further levels. A
/// bit of a level tells whether a word of the level below is not zero. So the next member is found
/// in a few steps, however far away it is. A set that never had a member holds no memory. Otherwise
/// it holds an eighth of a byte for each slot, up to twice the largest member.
class SlotSet {
 public:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  /// Adds a slot, which may already be a member. Returns false and changes nothing if there is no
  /// memory.
  bool insert(std::uint32_t slot) noexcept {
    if (slot / kBits >= starts_[1] && !growFor(slot)) return false;
    std::size_t bit = slot;
    for (std::size_t level = 0; level < levels_; ++level, bit /= kBits) {
      std::uint64_t& word = words_[starts_[level] + bit / kBits];
      const bool wasEmpty = word == 0;
      word |= std::uint64_t{1} << (bit % kBits);
      if (!wasEmpty) break;
    }
    return true;
  }

  /// Removes a slot. Does nothing if it is not a member.
  void erase(std::uint32_t slot) noexcept {
    if (slot / kBits >= starts_[1]) return;
    std::size_t bit = slot;
    for (std::size_t level = 0; level < levels_; ++level, bit /= kBits) {
      std::uint64_t& word = words_[starts_[level] + bit / kBits];
      word &= ~(std::uint64_t{1} << (bit % kBits));
      if (word != 0) break;
    }
  }

  /// Returns the lowest member that is `from` or higher, or kNone if there is none.
  std::uint32_t next(std::uint32_t from) const noexcept {
    // Go up until a word has a bit at this position or higher, then down to the first bit below it.
    std::size_t bit = from;
    for (std::size_t level = 0; level < levels_; ++level, bit = bit / kBits + 1) {
      if (bit / kBits >= starts_[level + 1] - starts_[level]) return kNone;
      const std::uint64_t rest = words_[starts_[level] + bit / kBits] >> (bit % kBits);
      if (rest == 0) continue;
      bit += lowestBit(rest);
      while (level-- != 0) bit = bit * kBits + lowestBit(words_[starts_[level] + bit]);
      return static_cast<std::uint32_t>(bit);
    }
    return kNone;
  }

 private:
  static constexpr std::size_t kBits = 64;
  // 64 to the power of 6 is more than the number of slot indices.
  static constexpr std::size_t kMostLevels = 6;

  static std::size_t lowestBit(std::uint64_t word) noexcept {
    return static_cast<std::size_t>(__builtin_ctzll(word));
  }

  bool growFor(std::uint32_t slot) noexcept {
    SlotSet grown;
    std::size_t words = std::max<std::size_t>(slot / kBits + 1, 2 * starts_[1]);
    for (;; words = (words + kBits - 1) / kBits) {
      grown.starts_[grown.levels_ + 1] = grown.starts_[grown.levels_] + words;
      ++grown.levels_;
      if (words == 1) break;
    }
    try {
      grown.words_.resize(grown.starts_[grown.levels_]);
    } catch (const std::bad_alloc&) {
      return false;
    }
    for (std::size_t level = 0; level < levels_; ++level) {
      std::copy(words_.begin() + static_cast<std::ptrdiff_t>(starts_[level]),
                words_.begin() + static_cast<std::ptrdiff_t>(starts_[level + 1]),
                grown.words_.begin() + static_cast<std::ptrdiff_t>(grown.starts_[level]));
    }
    // The former top level is one word. The levels above it tell whether that word is zero.
    for (std::size_t level = levels_; level != 0 && level < grown.levels_; ++level) {
      if (grown.words_[grown.starts_[level - 1]] != 0) grown.words_[grown.starts_[level]] = 1;
    }
    *this = std::move(grown);
    return true;
  }

  // All levels in sequence; level i starts at starts_[i]. The last level is a single word.
  std::vector<std::uint64_t> words_;
  std::array<std::size_t, kMostLevels + 1> starts_{};
  std::size_t levels_ = 0;
};

}  // namespace vrnt::detail

#endif
