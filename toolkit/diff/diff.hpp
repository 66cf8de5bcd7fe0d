// A list of differences, and what numbers count as equal.
#ifndef VORNATH_TOOLKIT_DIFF_DIFF_HPP
#define VORNATH_TOOLKIT_DIFF_DIFF_HPP

#include <cmath>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "foundation/half.hpp"
#include "vornath_toolkit/vrtk_diff.h"

namespace vrtk {

/// Throws Failure with VRTK_INVALID_ARGUMENT for tolerances that are none.
vrtkDiffOptions diffOptionsOf(const vrtkDiffOptions* given, const char* function);

/// Says which floats count as equal.
class Tolerance {
 public:
  explicit Tolerance(const vrtkDiffOptions& options)
      : relative_(options.relative), absolute_(options.absolute) {}

  bool isExact() const { return relative_ == 0 && absolute_ == 0; }

  bool equal(double a, double b) const {
    // What is infinite or no number is not near anything.
    if (!std::isfinite(a) || !std::isfinite(b)) return a == b;
    const double magnitude = std::fmax(std::fabs(a), std::fabs(b));
    return std::fabs(a - b) <= std::fmax(absolute_, relative_ * magnitude);
  }

  bool equalFloats(std::uint32_t a, std::uint32_t b) const;
  bool equalHalves(std::uint16_t a, std::uint16_t b) const {
    return a == b || equal(double{halfToFloat(a)}, double{halfToFloat(b)});
  }

 private:
  double relative_;
  double absolute_;
};

}  // namespace vrtk

struct vrtkDiff {
 public:
  explicit vrtkDiff(std::uint64_t maxEntries) : maxEntries_(maxEntries) {}

  /// Counts a difference, and returns whether it is to be kept by add().
  bool found() {
    ++found_;
    return maxEntries_ == 0 || entries_.size() < maxEntries_;
  }
  void add(std::string address, std::uint32_t kind, std::optional<std::string> oldText,
           std::optional<std::string> newText);

  std::uint64_t count() const { return found_; }
  const std::vector<vrtkDiffEntry>& entries() const { return entries_; }
  std::string json() const;

 private:
  struct Texts {
    std::string address;
    std::optional<std::string> oldText;
    std::optional<std::string> newText;
  };

  std::uint64_t maxEntries_;
  std::uint64_t found_ = 0;
  std::deque<Texts> texts_;  // whose elements stay where they are
  std::vector<vrtkDiffEntry> entries_;
};

#endif
