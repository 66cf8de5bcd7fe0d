/// What the rules of the value grammar build. Each throws what the construction of its part throws.
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

/// A label and what a struct value takes under it.
struct DraftField {
  std::string label;
  Draft value;
};
using DraftFields = std::vector<DraftField>;

/// A true component is stored as all ones.
inline std::uint32_t boolWord(std::uint8_t truth) { return truth ? ~std::uint32_t{0} : 0; }

template <typename... Lanes>
Draft bools(Type::TBasetype kind, Lanes... truths) {
  const std::array lanes{boolWord(truths)...};
  return DynamicValue::base<std::uint32_t>(kind, std::span(lanes));
}

/// A scalar or vector of lanes that are stored as they stand.
template <typename Lane, typename... Lanes>
Draft vector(Type::TBasetype kind, Lane first, Lanes... further) {
  const std::array<Lane, 1 + sizeof...(Lanes)> lanes{first, further...};
  return DynamicValue::base<Lane>(kind, std::span<const Lane>(lanes));
}

Draft structure(DraftFields fields);

/// An array of as many elements as there are values, of the first one's type or of the given one.
Draft array(Drafts values);
Draft array(Drafts values, const TypePtr& element);

/// An array with extents, of the first value's type or of the given one. One extent without a type
/// is the number of values.
Draft shapedArray(Drafts values, const Extents& extents);
Draft shapedArray(Drafts values, const Extents& extents, const TypePtr& element);

/// An address of the embedder's own, in a `void*` or in a reference to `target`.
Draft address(std::uint64_t id);
Draft address(std::uint64_t id, const TypePtr& target);

/// A small address scans as a signed integer; its bits are widened with the sign.
inline std::uint64_t widened(std::int32_t id) {
  return static_cast<std::uint64_t>(std::int64_t{id});
}

Draft reference(Draft referee);

Draft enumerator(const std::string& constructor, std::optional<Type::TEnum> enumeration);

}  // namespace qex::vornath::build

#endif
