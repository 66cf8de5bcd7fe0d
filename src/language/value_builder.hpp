/// The functions that the value rules of the grammar call. Each throws what the construction of its
/// part throws.
#ifndef VORNATH_LANGUAGE_VALUE_BUILDER_HPP
#define VORNATH_LANGUAGE_VALUE_BUILDER_HPP

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "language/value_draft.hpp"
#include "types/extents.hpp"
#include "types/type.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath::build {

using Drafts = std::vector<Draft>;

/// A label and the draft of its value: one field of a struct.
struct DraftField {
  std::string label;
  Draft value;
};
using DraftFields = std::vector<DraftField>;

/// Returns the stored form of a bool: true is all ones.
inline std::uint32_t boolWord(std::uint8_t truth) { return truth ? ~std::uint32_t{0} : 0; }

template <typename... Lanes>
Draft bools(Type::TBasetype kind, Lanes... truths) {
  const std::array lanes{boolWord(truths)...};
  return DynamicValue::base<std::uint32_t>(kind, std::span(lanes));
}

/// Builds a scalar or vector whose lanes are stored unchanged.
template <typename Lane, typename... Lanes>
Draft vector(Type::TBasetype kind, Lane first, Lanes... rest) {
  const std::array<Lane, 1 + sizeof...(Lanes)> lanes{first, rest...};
  return DynamicValue::base<Lane>(kind, std::span<const Lane>(lanes));
}

Draft structure(DraftFields fields);

/// Builds an array with one element for each value, of the first value's type or of the given type.
Draft array(Drafts values);
Draft array(Drafts values, const TypePtr& element);

/// Builds an array with extents, of the first value's type or of the given type. A single extent
/// without a type must be the number of values.
Draft shapedArray(Drafts values, const Extents& extents);
Draft shapedArray(Drafts values, const Extents& extents, const TypePtr& element);

/// Builds a foreign pointer: a `void*`, or a reference to `target`.
Draft foreignPointer(std::uint64_t id);
Draft foreignPointer(std::uint64_t id, const TypePtr& target);

/// Returns the bits of a small address, which the scanner reads as a signed integer, sign-extended.
inline std::uint64_t signExtended(std::int32_t id) {
  return static_cast<std::uint64_t>(std::int64_t{id});
}

Draft reference(Draft referee);

Draft enumerator(const std::string& constructor, std::optional<Type::TEnum> enumeration);

}  // namespace qex::vornath::build

#endif
