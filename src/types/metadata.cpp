#include "types/metadata.hpp"

#include <utility>

#include "types/metadata_value.hpp"

namespace qex::vornath {

const DynamicValue* findMetadataValue(const Metadata& metadata, std::string_view key) {
  const auto entry = metadata.find(key);
  if (entry == metadata.end()) return nullptr;
  const auto* value = std::get_if<HeapValue<DynamicValue>>(&entry->second);
  return value ? value->get() : nullptr;
}

void setMetadata(Metadata& metadata, std::string key, MetadataEntry entry) {
  metadata.insert_or_assign(std::move(key), std::move(entry));
}

std::string metadataText(const Metadata& metadata) {
  std::string text;
  for (const auto& [key, entry] : metadata) {
    text.append(" @").append(key);
    if (const auto* string = std::get_if<std::string>(&entry)) {
      text.append("=\"").append(*string).append("\"");
    } else if (const auto* value = std::get_if<HeapValue<DynamicValue>>(&entry)) {
      text.append("=").append(metadataValueText(**value));
    }
  }
  return text;
}

}  // namespace qex::vornath
