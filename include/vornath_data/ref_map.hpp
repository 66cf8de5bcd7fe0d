/// A map from the objects of a source scene to their copies in a target scene.
#ifndef VORNATH_DATA_REF_MAP_HPP
#define VORNATH_DATA_REF_MAP_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vrnt::data {

/// The slot map of one class. Each pair holds a slot index in the source and the slot index in the
/// target that it became, sorted by source index. T is the element that the class's container
/// stores, as in Ref<T>.
/// Threads: as for a std::vector.
template <typename T>
class RefMap {
 public:
  using Pair = std::pair<std::int32_t, std::int32_t>;

  /// Returns the pairs, one for each live object of the source.
  const std::vector<Pair>& pairs() const noexcept { return pairs_; }

  /// Inserts a pair after all pairs with the same or a lower source index. Takes constant time if
  /// the calls come in ascending order of the source index.
  /// Errors: throws std::bad_alloc and changes nothing.
  void add(std::int32_t source, std::int32_t target) {
    auto place = pairs_.cend();
    if (!pairs_.empty() && source < pairs_.back().first) {
      place = std::upper_bound(
          pairs_.cbegin(), pairs_.cend(), source,
          [](std::int32_t number, const Pair& pair) { return number < pair.first; });
    }
    pairs_.insert(place, Pair(source, target));
  }

  /// Returns the target index of the first pair with this source index, or -1 if there is none. Any
  /// index is allowed. Takes constant time below the first free slot of the source, else
  /// logarithmic time.
  std::int32_t lookup(std::int32_t source) const noexcept {
    // If the source has no free slots below this one, the pair's position is the source index.
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
