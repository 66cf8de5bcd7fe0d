/// The functions that the type rules of the grammar call. Each throws what the construction of its
/// part throws.
#ifndef VORNATH_LANGUAGE_TYPE_BUILDER_HPP
#define VORNATH_LANGUAGE_TYPE_BUILDER_HPP

#include <optional>
#include <string>
#include <vector>

#include "types/extents.hpp"
#include "types/type.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath::build {

using Fields = std::vector<Type::Field>;
using Constructors = std::vector<Type::Constructor>;
using Types = std::vector<TypePtr>;

TypePtr type(TypeDesc desc, Metadata metadata);

TypeDesc array(TypePtr element, const Extents& extents);
TypeDesc structure(Fields fields);
TypeDesc reference(TypePtr target);
TypeDesc function(Types domain, TypePtr codomain);
std::optional<Type::TEnum> enumeration(Constructors constructors);
Type::Constructor constructor(std::string name, Fields payload, Metadata metadata);

MetadataEntry valueEntry(DynamicValue value);

/// Inserts the entry, or replaces the entry of that key.
Metadata annotate(Metadata metadata, std::string key, MetadataEntry entry);

/// Returns the list with one more item at its end.
template <typename Item>
std::vector<Item> append(std::vector<Item> list, Item item) {
  list.push_back(std::move(item));
  return list;
}

}  // namespace qex::vornath::build

#endif
