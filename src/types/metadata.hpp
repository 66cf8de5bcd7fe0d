/// The annotations of a type.
#ifndef VORNATH_TYPES_METADATA_HPP
#define VORNATH_TYPES_METADATA_HPP

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <variant>

#include "types/heap_value.hpp"

namespace qex::vornath {

class DynamicValue;

/// An annotation: a flag, a text or a value. The index is the flat interface's kind.
using MetadataEntry = std::variant<std::monostate, std::string, HeapValue<DynamicValue>>;

/// The annotations of one type or constructor, in ascending byte order of their keys.
using Metadata = std::map<std::string, MetadataEntry, std::less<>>;

/// Returns the value of an entry, or null if the key is absent or the entry is not a value.
const DynamicValue* findMetadataValue(const Metadata& metadata, std::string_view key);

/// Inserts an entry, or replaces the entry of that key, whatever its kind.
void setMetadata(Metadata& metadata, std::string key, MetadataEntry entry);

/// Returns the text of the annotations, which follows a type's text: empty, or starting with a
/// blank.
std::string metadataText(const Metadata& metadata);

}  // namespace qex::vornath

#endif
