#include <iterator>

#include "metadata_value.hpp"
#include "type_handle.hpp"
#include "vornath_data/metadata.h"
#include "vornath_data/result.hpp"

using qex::vornath::DynamicValue;
using qex::vornath::HeapValue;
using qex::vornath::Metadata;
using qex::vornath::MetadataEntry;
using qex::vornath::typeOf;

namespace {

// The entry exists: a host asks vrntMetadataExists() first.
const MetadataEntry& entryOf(const vrntType_t* type, const char* key) {
  return typeOf(type).metadata().find(std::string_view(key))->second;
}

}  // namespace

uint32_t vrntMetadataSize(const vrntType_t* type) {
  return static_cast<std::uint32_t>(typeOf(type).metadata().size());
}

const char* vrntMetadataName(const vrntType_t* type, uint32_t index) {
  const Metadata& metadata = typeOf(type).metadata();
  if (index >= metadata.size()) return nullptr;
  return std::next(metadata.begin(), static_cast<std::ptrdiff_t>(index))->first.c_str();
}

uint32_t vrntMetadataExists(const vrntType_t* type, const char* key) {
  return typeOf(type).metadata().contains(std::string_view(key)) ? 1 : 0;
}

uint32_t vrntMetadataType(const vrntType_t* type, const char* key) {
  return static_cast<std::uint32_t>(entryOf(type, key).index());
}

const char* vrntMetadataString(const vrntType_t* type, const char* key) {
  const auto* text = std::get_if<std::string>(&entryOf(type, key));
  if (!text) throw VornathValuesAssertionFailure();
  return text->c_str();
}

vrntValue_t* vrntMetadataValue(const vrntType_t* type, const char* key) {
  const auto* value = std::get_if<HeapValue<DynamicValue>>(&entryOf(type, key));
  if (!value) throw VornathValuesAssertionFailure();
  return qex::vornath::allocateValue(**value);
}
