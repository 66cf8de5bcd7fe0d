/// The extents of an array of any rank. Only this file and its .cpp know which record (int, index2,
/// index3 or index4) a rank has; what works on arrays takes and gives extents.
#ifndef VORNATH_TYPES_EXTENTS_HPP
#define VORNATH_TYPES_EXTENTS_HPP

#include <algorithm>
#include <array>
#include <bit>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "types/type.hpp"

namespace qex::vornath {

/// A record with one extent, or one index, for each dimension.
template <typename D>
concept DimensionRecord = std::same_as<D, int> || std::same_as<D, index2> ||
    std::same_as<D, index3> || std::same_as<D, index4>;

/// The members of such a record, the one that runs fastest first.
template <DimensionRecord D>
constexpr auto dimensions(const D& record) {
  return std::bit_cast<std::array<std::int32_t, sizeof(D) / sizeof(std::int32_t)>>(record);
}

/// A rank with its extents, the one that runs fastest first. They are known or unknown all
/// together; an unknown one reads as -1, as the flat interface tells it.
class Extents {
 public:
  static constexpr std::size_t kHighestRank = 4;

  /// Of a rank from 1 to kHighestRank.
  static constexpr Extents unknown(std::size_t rank) { return Extents(rank); }

  // Whatever gives the extents of an array is taken for them.
  // NOLINTBEGIN(google-explicit-constructor)

  template <DimensionRecord D>
  constexpr Extents(const D& record) : Extents(dimensions(record).size()) {
    known_ = true;
    for (std::size_t i = 0; i < rank_; ++i) extents_[i] = dimensions(record)[i];
  }

  template <std::same_as<std::int32_t>... Further>
  requires(sizeof...(Further) > 0 &&
           sizeof...(Further) < kHighestRank) constexpr Extents(std::int32_t first,
                                                                Further... further)
      : rank_(1 + sizeof...(Further)), known_(true), extents_{first, further...} {}

  template <typename D>
  constexpr Extents(const Type::TArrayND<D>& array)
      : Extents(array.shape ? Extents(*array.shape) : unknown(Type::TArrayND<D>::kRank)) {}

  // NOLINTEND(google-explicit-constructor)

  constexpr std::size_t rank() const { return rank_; }
  constexpr bool known() const { return known_; }
  /// Throws std::bad_optional_access if the extents are unknown.
  constexpr const Extents& requireKnown() const {
    if (!known_) throw std::bad_optional_access();
    return *this;
  }

  constexpr std::int32_t operator[](std::size_t dimension) const { return extents_[dimension]; }
  constexpr const std::int32_t* begin() const { return extents_.data(); }
  constexpr const std::int32_t* end() const { return extents_.data() + rank_; }

  /// The product of the extents as the 32 bits of a layout give it: one that they don't hold runs
  /// over as two's complement does, and may be negative. 0 for unknown extents.
  constexpr std::int32_t count() const {
    std::uint32_t product = known_ ? 1 : 0;
    for (const std::int32_t extent : *this) product *= static_cast<std::uint32_t>(extent);
    return static_cast<std::int32_t>(product);
  }
  /// The number of elements that a walk comes to: count(), but none where that is negative.
  constexpr std::size_t elements() const {
    const std::int32_t number = count();
    return number < 0 ? 0 : static_cast<std::size_t>(number);
  }
  /// Whether the product ran over in count(). Extents of which one is 0 never do.
  bool overflow() const;

  /// The extents joined by the separator, as "2,3".
  std::string text(std::string_view separator = ",") const;

  /// The lower rank first, then unknown extents before known ones, then the first extent that
  /// differs decides.
  friend constexpr auto operator<=>(const Extents&, const Extents&) = default;

 private:
  constexpr explicit Extents(std::size_t rank) : rank_(rank) {
    for (std::size_t i = 0; i < rank; ++i) extents_[i] = -1;
  }

  std::size_t rank_;
  bool known_ = false;
  std::array<std::int32_t, kHighestRank> extents_{};
};

/// Stores the extents of an array, as Extents has them, in as many words as its rank.
template <typename D>
void storeExtents(const Type::TArrayND<D>& array, std::int32_t* words) {
  if (array.shape) {
    std::memcpy(words, &*array.shape, sizeof(D));
  } else {
    std::fill_n(words, Type::TArrayND<D>::kRank, -1);
  }
}

/// An array type of any rank, taken apart.
struct ArrayDesc {
  const TypePtr* element;  ///< in the description
  Extents extents;
};

/// Nothing if the description is another kind's.
inline std::optional<ArrayDesc> arrayDesc(const TypeDesc& desc) {
  return std::visit(
      [](const auto& alternative) -> std::optional<ArrayDesc> {
        if constexpr (requires { alternative.shape; }) {
          return ArrayDesc{&alternative.element, Extents(alternative)};
        } else {
          return std::nullopt;
        }
      },
      desc);
}

/// The description of the rank's array type. Throws "concrete type required" and "negative array
/// length".
TypeDesc makeArrayDesc(TypePtr element, const Extents& extents);

}  // namespace qex::vornath

#endif
