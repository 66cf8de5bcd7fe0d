#include "reference_counts.hpp"

#include <algorithm>

namespace vrnt::data {

bool WordCounts::add(std::int32_t word, std::size_t targets, std::size_t mostStrangers) {
  if (word == -1) {
    ++unset_;
    return true;
  }
  const auto place = static_cast<std::size_t>(word);
  if (word >= 0 && place >= counts_.size() && place < targets) {
    counts_.resize(std::min(targets, std::max(place + 1, 2 * counts_.size())));
    for (auto stranger = strangers_.begin(); stranger != strangers_.end();) {
      if (stranger->first >= 0 && static_cast<std::size_t>(stranger->first) < counts_.size()) {
        counts_[static_cast<std::size_t>(stranger->first)] = stranger->second;
        stranger = strangers_.erase(stranger);
      } else {
        ++stranger;
      }
    }
  }
  if (word >= 0 && place < counts_.size()) {
    ++counts_[place];
    return true;
  }
  const auto known = strangers_.find(word);
  if (known != strangers_.end()) {
    ++known->second;
    return true;
  }
  if (strangers_.size() >= mostStrangers) return false;
  strangers_.emplace(word, 1);
  return true;
}

void WordCounts::remove(std::int32_t word) noexcept {
  if (word == -1) {
    --unset_;
  } else if (word >= 0 && static_cast<std::size_t>(word) < counts_.size()) {
    --counts_[static_cast<std::size_t>(word)];
  } else {
    const auto known = strangers_.find(word);
    if (known != strangers_.end() && --known->second == 0) strangers_.erase(known);
  }
}

std::uint32_t WordCounts::count(std::int32_t word) const noexcept {
  if (word == -1) return unset_;
  if (word >= 0 && static_cast<std::size_t>(word) < counts_.size()) {
    return counts_[static_cast<std::size_t>(word)];
  }
  const auto known = strangers_.find(word);
  return known == strangers_.end() ? 0 : known->second;
}

}  // namespace vrnt::data
