#include "catalogue/nearest.hpp"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace vrtk {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// How many letters to insert, remove or replace.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row[b.size()];
}

}  // namespace

std::string nearestName(const std::vector<std::string>& names, std::string_view wanted) {
  std::string nearest;
  std::size_t least = wanted.size() / 3 + 1;
  for (const std::string& name : names) {
    // A text of any length may be asked for; only one of about the same length is near.
    if (wanted.size() > name.size() + least || name.size() > wanted.size() + least) continue;
    const std::size_t found = distance(wanted, name);
    if (found > least || (found == least && !nearest.empty())) continue;
    least = found;
    nearest = name;
  }
  return nearest;
}

}  // namespace vrtk
