#include "catalogue/words.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "catalogue/value_text.hpp"
#include "check/type_plan.hpp"
#include "vornath_data/metadata.h"

namespace vrtk {
namespace {

std::string unquoted(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '"'), text.end());
  return text;
}

std::string rangeWords(const vrntType_t* type, const char* low, const char* high) {
  std::string words;
  if (const vrnt::UniqueValue limit = limitOf(type, low)) {
    words = fmt::format("from {}", unquoted(valueJson(limit.get())));
  }
  if (const vrnt::UniqueValue limit = limitOf(type, high)) {
    words += words.empty() ? "to " : " to ";
    words += unquoted(valueJson(limit.get()));
  }
  return words;
}

}  // namespace

std::string valueWords(const vrntType_t* type, const char* bytes) {
  // A long array of the same is told by one element.
  constexpr std::uint64_t kMost = 8;
  if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_ARRAY) {
    const vrnt::UniqueType element(vrntTypeElementType(type));
    const std::uint64_t size = vrntTypeSize(element.get());
    const std::uint64_t whole = vrntTypeSize(type);
    if (size != 0 && whole > kMost * size &&
        std::memcmp(bytes, bytes + size, static_cast<std::size_t>(whole - size)) == 0) {
      return fmt::format("all {}", unquoted(valueJson(element.get(), bytes)));
    }
  }
  return unquoted(valueJson(type, bytes));
}

std::string limitWords(const vrntType_t* type) {
  std::string words = rangeWords(type, "min", "max");
  const std::string soft = rangeWords(type, "soft_min", "soft_max");
  if (soft.empty()) return words;
  words += words.empty() ? "soft " : "; soft ";
  return words + soft;
}

std::string typeWords(const vrntType_t* type) {
  if (isStruct(type)) return "struct";
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_ENUM:
      return "enum";
    case VRNT_DESCRIPTOR_ARRAY: {
      std::int32_t shape[4] = {};
      vrntTypeArrayShape(type, shape);
      std::string words = typeWords(vrnt::UniqueType(vrntTypeElementType(type)).get());
      for (std::uint32_t i = 0; i < vrntTypeArrayDimension(type); ++i) {
        words += i == 0 ? '[' : ',';
        words += std::to_string(shape[i]);
      }
      words += ']';
      return words;
    }
    default:
      return plainTypeText(type);
  }
}

std::vector<std::string> furtherWords(const vrntType_t* type) {
  std::vector<std::string> all;
  for (std::uint32_t i = 0; i < vrntMetadataSize(type); ++i) {
    const char* const key = vrntMetadataName(type, i);
    if (!isFurtherAnnotation(key)) continue;
    std::string words = "@";
    words += key;
    if (vrntMetadataType(type, key) == VRNT_METADATA_TEXT) {
      words += ' ';
      words += annotationText(type, key);
    } else if (const vrnt::UniqueValue value = annotationValue(type, key)) {
      words += ' ';
      words += unquoted(valueJson(value.get()));
    }
    all.push_back(std::move(words));
  }
  return all;
}

}  // namespace vrtk
