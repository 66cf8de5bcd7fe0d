/// Choice of one of many things by their weights.
#ifndef VRN_RENDER_LIGHTS_DISTRIBUTION_HPP
#define VRN_RENDER_LIGHTS_DISTRIBUTION_HPP

#include <algorithm>
#include <cstddef>
#include <vector>

namespace vrn_render {

/// A discrete distribution. Weights are not negative; without a positive one it is empty.
class Distribution {
 public:
  Distribution() = default;
  explicit Distribution(const std::vector<float>& weights) {
    sums_.reserve(weights.size());
    double sum = 0;
    for (const float weight : weights) sums_.push_back(sum += weight);
    if (!(sum > 0)) sums_.clear();
    total_ = sum;
  }

  bool empty() const { return sums_.empty(); }
  double total() const { return total_; }
  float probability(std::size_t index) const {
    return static_cast<float>((sums_[index] - (index > 0 ? sums_[index - 1] : 0)) / total_);
  }

  /// Chooses by a number from 0 up to 1, and makes it such a number again. Never chooses what has
  /// no weight.
  std::size_t choose(float& u) const {
    const double at = static_cast<double>(u) * total_;
    auto found = std::upper_bound(sums_.begin(), sums_.end(), at);
    if (found == sums_.end()) --found;
    auto index = static_cast<std::size_t>(found - sums_.begin());
    double before = index > 0 ? sums_[index - 1] : 0;
    while (index > 0 && !(sums_[index] > before)) {
      --index;
      before = index > 0 ? sums_[index - 1] : 0;
    }
    u = static_cast<float>(std::clamp((at - before) / (sums_[index] - before), 0.0, 0.99999994));
    return index;
  }

 private:
  std::vector<double> sums_;
  double total_ = 0;
};

}  // namespace vrn_render

#endif
