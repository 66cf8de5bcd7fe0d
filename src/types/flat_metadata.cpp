#include <array>
#include <iterator>

#include "types/metadata_value.hpp"
#include "types/type_handle.hpp"
#include "vornath_data/detail/wrong_kind.hpp"
#include "vornath_data/metadata.h"

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

// The kind of the entry and its key, as in "the flag @hide".
[[noreturn]] void raiseWrongEntry(const char* function, const char* takes,
                                  const MetadataEntry& entry, std::string_view key) {
  constexpr std::array<const char*, 3> kKinds{"the flag @", "the text @", "the value @"};
  static_assert(std::variant_size_v<MetadataEntry> == kKinds.size());
  throw vrnt::detail::WrongKind(function, takes, kKinds[entry.index()], key);
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
  const MetadataEntry& entry = entryOf(type, key);
  const auto* text = std::get_if<std::string>(&entry);
  if (!text) raiseWrongEntry("vrntMetadataString", "an annotation with a text", entry, key);
  return text->c_str();
}

vrntValue_t* vrntMetadataValue(const vrntType_t* type, const char* key) {
  const MetadataEntry& entry = entryOf(type, key);
  const auto* value = std::get_if<HeapValue<DynamicValue>>(&entry);
  if (!value) raiseWrongEntry("vrntMetadataValue", "an annotation with a value", entry, key);
  return qex::vornath::allocateValue(**value);
}
