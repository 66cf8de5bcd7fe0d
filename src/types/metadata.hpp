/// Look-ups in the annotations of a type.
#ifndef VORNATH_TYPES_METADATA_HPP
#define VORNATH_TYPES_METADATA_HPP

#include <string>
#include <string_view>

#include "vornath_data/type_library.hpp"

namespace qex::vornath {

/// The value of an entry, or null when the key is absent or the entry isn't a value.
const DynamicValue* findMetadataValue(const Metadata& metadata, std::string_view key);

/// Inserts an entry or replaces the one of that key, whatever its kind.
void setMetadata(Metadata& metadata, std::string key, MetadataEntry entry);

/// The annotations as they stand behind a type's text: empty, or beginning with a blank.
std::string metadataText(const Metadata& metadata);

}  // namespace qex::vornath

#endif
