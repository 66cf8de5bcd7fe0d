/// Where objects of one scene are found in another.
#ifndef VORNATH_DATA_REF_MAP_HPP
#define VORNATH_DATA_REF_MAP_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vrnt::data {

/// The renumbering of one class: pairs of a slot number in the source and the slot number in the
/// target that it became, in ascending order of the source's numbers. T is what the class's
/// container stores, as in Ref<T>.
/// Threads: as a std::vector.
template <typename T>
class RefMap {
 public:
  using Pair = std::pair<std::int32_t, std::int32_t>;

  /// One pair for each live object of the source.
  const std::vector<Pair>& pairs() const noexcept { return pairs_; }

  /// Puts in a pair, behind those of the same source number. Constant time in ascending order.
  /// Errors: std::bad_alloc, with nothing changed.
  void add(std::int32_t source, std::int32_t target) {
    auto place = pairs_.cend();
    if (!pairs_.empty() && source < pairs_.back().first) {
      place = std::upper_bound(
          pairs_.cbegin(), pairs_.cend(), source,
          [](std::int32_t number, const Pair& pair) { return number < pair.first; });
    }
    pairs_.insert(place, Pair(source, target));
  }

  /// The target's number by the first pair of that source number, -1 if there is none. Any number
  /// is allowed. Constant time below the source's first free slot, else logarithmic.
  std::int32_t lookup(std::int32_t source) const noexcept {
    // Where the source has no gaps, an object's pair stands at the object's own number.
    const auto own = static_cast<std::size_t>(source);
    if (source >= 0 && own < pairs_.size() && pairs_[own].first == source &&
        (own == 0 || pairs_[own - 1].first != source)) {
      return pairs_[own].second;
    }
    const auto place =
        std::lower_bound(pairs_.begin(), pairs_.end(), source,
                         [](const Pair& pair, std::int32_t number) { return pair.first < number; });
    return place != pairs_.end() && place->first == source ? place->second : -1;
  }

 private:
  std::vector<Pair> pairs_;
};

}  // namespace vrnt::data

#endif
