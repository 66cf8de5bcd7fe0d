#include "foundation/nearest_name.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace vrtk {
namespace {

constexpr std::size_t kLongestName = 200;

// Letters of the other case decide between names with as many changes: all letters of a name count
// less than one change.
constexpr std::size_t kOtherCase = 1;
constexpr std::size_t kChange = kLongestName + 1;

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::size_t replacement(char a, char b) {
  if (a == b) return 0;
  return lower(a) == lower(b) ? kOtherCase : kChange;
}

std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = kChange * j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = kChange * i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min(
          {last[j] + kChange, row[j - 1] + kChange, last[j - 1] + replacement(a[i - 1], b[j - 1])});
      if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
          lower(a[i - 2]) == lower(b[j - 1])) {
        row[j] = std::min(row[j], beforeLast[j - 2] + kChange);
      }
    }
    std::swap(beforeLast, last);
    std::swap(last, row);
  }
  return last[b.size()];
}

}  // namespace

std::string_view nearestName(const std::vector<std::string_view>& names, std::string_view wanted) {
  if (wanted.size() > kLongestName) return {};
  std::string_view nearest;
  std::size_t bound = kChange * (std::max<std::size_t>(1, wanted.size() / 3) + 1);
  for (const std::string_view name : names) {
    // Each letter more or less is a change.
    const std::size_t longer = std::max(name.size(), wanted.size());
    if (kChange * (longer - std::min(name.size(), wanted.size())) >= bound) continue;
    const std::size_t found = distance(wanted, name);
    if (found >= bound) continue;
    bound = found;
    nearest = name;
  }
  return nearest;
}

}  // namespace vrtk
