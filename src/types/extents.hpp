/// The extents of an array of any rank. Only this file and its .cpp know which record (int, index2,
/// index3 or index4) a rank uses; functions on arrays take and return Extents.
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

/// A record that holds one extent, or one index, for each dimension.
template <typename D>
concept DimensionRecord = std::same_as<D, int> || std::same_as<D, index2> ||
    std::same_as<D, index3> || std::same_as<D, index4>;

/// Returns the members of such a record, the fastest dimension first.
template <DimensionRecord D>
constexpr auto dimensions(const D& record) {
  return std::bit_cast<std::array<std::int32_t, Type::TArrayND<D>::kRank>>(record);
}

/// A rank and its extents, the fastest dimension first. Either all extents are known or none is. An
/// unknown extent reads as -1, as in the flat interface.
class Extents {
 public:
  static constexpr std::size_t kMaxRank = 4;

  /// Returns the extents of an unsized array. `rank` is from 1 to kMaxRank.
  static constexpr Extents unknown(std::size_t rank) { return Extents(rank); }

  // NOLINTBEGIN(google-explicit-constructor): each of these types denotes the extents of an array.

  template <DimensionRecord D>
  constexpr Extents(const D& record) : Extents(dimensions(record).size()) {
    known_ = true;
    for (std::size_t i = 0; i < rank_; ++i) extents_[i] = dimensions(record)[i];
  }

  template <std::same_as<std::int32_t>... Further>
  requires(sizeof...(Further) > 0 &&
           sizeof...(Further) < kMaxRank) constexpr Extents(std::int32_t first, Further... further)
      : rank_(1 + sizeof...(Further)), known_(true), extents_{first, further...} {}

  template <typename D>
  constexpr Extents(const Type::TArrayND<D>& array)
      : Extents(array.shape ? Extents(*array.shape) : unknown(Type::TArrayND<D>::kRank)) {}

  // NOLINTEND(google-explicit-constructor)

  constexpr std::size_t rank() const { return rank_; }
  constexpr bool known() const { return known_; }
  /// Returns *this. Throws std::bad_optional_access if the extents are unknown.
  constexpr const Extents& requireKnown() const {
    if (!known_) throw std::bad_optional_access();
    return *this;
  }

  constexpr std::int32_t operator[](std::size_t dimension) const { return extents_[dimension]; }
  constexpr const std::int32_t* begin() const { return extents_.data(); }
  constexpr const std::int32_t* end() const { return extents_.data() + rank_; }

  /// Returns the product of the extents in 32 bits, as the layout of an array uses it. The product
  /// wraps around in two's complement and may be negative. Returns 0 for unknown extents.
  constexpr std::int32_t count() const {
    std::uint32_t product = known_ ? 1 : 0;
    for (const std::int32_t extent : *this) product *= static_cast<std::uint32_t>(extent);
    return static_cast<std::int32_t>(product);
  }
  /// Returns the number of elements to visit: count(), or 0 if that is negative.
  constexpr std::size_t elements() const {
    const std::int32_t number = count();
    return number < 0 ? 0 : static_cast<std::size_t>(number);
  }
  /// Returns whether count() wraps around. Extents of which one is 0 never do.
  bool overflow() const;

  /// Returns the extents joined by the separator, as "2,3".
  std::string text(std::string_view separator = ",") const;

  /// Orders by rank, then unknown extents before known ones, then by the first extent that differs.
  friend constexpr auto operator<=>(const Extents&, const Extents&) = default;

 private:
  constexpr explicit Extents(std::size_t rank) : rank_(rank) {
    for (std::size_t i = 0; i < rank; ++i) extents_[i] = -1;
  }

  std::size_t rank_;
  bool known_ = false;
  std::array<std::int32_t, kMaxRank> extents_{};
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

/// The element type and the extents of an array type of any rank.
struct ArrayDesc {
  const TypePtr* element;  ///< in the description
  Extents extents;
};

/// Returns nothing if the description is not that of an array.
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

/// Returns the description of an array type of the rank of `extents`. Throws "concrete type
/// required" and "negative array length".
TypeDesc makeArrayDesc(TypePtr element, const Extents& extents);

}  // namespace qex::vornath

#endif
