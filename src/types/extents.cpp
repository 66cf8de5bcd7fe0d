#include "types/extents.hpp"

#include <cstring>
#include <limits>
#include <utility>

namespace qex::vornath {
namespace {

template <DimensionRecord D>
TypeDesc arrayDescOf(TypePtr element, const Extents& extents) {
  std::optional<D> shape;
  if (extents.known()) std::memcpy(&shape.emplace(), extents.begin(), sizeof(D));
  return Type::TArrayND<D>(std::move(element), shape);
}

}  // namespace

bool Extents::overflow() const {
  if (!known_) return false;
  std::int64_t product = 1;
  bool over = false;
  for (const std::int32_t extent : *this) {
    if (extent == 0) return false;
    if (over) continue;
    product *= extent;
    over = product > std::numeric_limits<std::int32_t>::max();
  }
  return over;
}

std::string Extents::text(std::string_view separator) const {
  std::string text;
  for (const std::int32_t extent : *this) {
    if (!text.empty()) text.append(separator);
    text.append(std::to_string(extent));
  }
  return text;
}

TypeDesc makeArrayDesc(TypePtr element, const Extents& extents) {
  switch (extents.rank()) {
    case 1:
      return arrayDescOf<int>(std::move(element), extents);
    case 2:
      return arrayDescOf<index2>(std::move(element), extents);
    case 3:
      return arrayDescOf<index3>(std::move(element), extents);
    default:
      return arrayDescOf<index4>(std::move(element), extents);
  }
}

}  // namespace qex::vornath
