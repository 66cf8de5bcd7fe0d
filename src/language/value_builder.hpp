/// What the rules of the value grammar build. Each throws what the construction of its part throws.
#ifndef VORNATH_LANGUAGE_VALUE_BUILDER_HPP
#define VORNATH_LANGUAGE_VALUE_BUILDER_HPP

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "dynamic_value.hpp"
#include "vornath_data/type_library.hpp"

namespace qex::vornath::build {

using Values = std::vector<DynamicValue>;
using ValueFields = std::vector<DynamicValue::Field>;

/// A true component is stored as all ones.
inline std::uint32_t boolWord(std::uint8_t truth) { return truth ? ~std::uint32_t{0} : 0; }

template <typename... Lanes>
DynamicValue bools(Type::TBasetype kind, Lanes... truths) {
  const std::array lanes{boolWord(truths)...};
  return DynamicValue::base<std::uint32_t>(kind, std::span(lanes));
}

/// A scalar or vector of lanes that are stored as they stand.
template <typename Lane, typename... Lanes>
DynamicValue vector(Type::TBasetype kind, Lane first, Lanes... further) {
  const std::array<Lane, 1 + sizeof...(Lanes)> lanes{first, further...};
  return DynamicValue::base<Lane>(kind, std::span<const Lane>(lanes));
}

DynamicValue structure(const ValueFields& fields);

/// An array of as many elements as there are values, of the first one's type or of the given one.
DynamicValue array(const Values& values);
DynamicValue array(const Values& values, const TypePtr& element);

/// An array with extents (int, index2, index3 or index4), of the first value's type or of the given
/// one.
template <typename Extents>
DynamicValue shapedArray(const Values& values, const Extents& extents) {
  return DynamicValue::array(values, extents);
}
template <typename Extents>
DynamicValue shapedArray(const Values& values, const Extents& extents, const TypePtr& element) {
  return DynamicValue::array(values, extents, element);
}

/// An address of the embedder's own, in a `void*` or in a reference to `target`.
DynamicValue address(std::uint64_t id);
DynamicValue address(std::uint64_t id, const TypePtr& target);

/// A small address scans as a signed integer; its bits are widened with the sign.
inline std::uint64_t widened(std::int32_t id) {
  return static_cast<std::uint64_t>(std::int64_t{id});
}

DynamicValue reference(const DynamicValue& referee);

DynamicValue enumerator(const std::string& constructor, std::optional<Type::TEnum> enumeration);

}  // namespace qex::vornath::build

#endif
