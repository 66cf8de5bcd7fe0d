// Reading types and default values through the flat functions.
#ifndef VORNATH_TESTS_COLOUR_TYPE_READING_HPP
#define VORNATH_TESTS_COLOUR_TYPE_READING_HPP

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/flat_handles.hpp"

namespace vornath_test {

inline std::string textOf(const vrntType_t* type) { return vrntTypeString(type); }

inline std::string strippedText(const vrntType_t* type) {
  const TypeHandle stripped(vrntTypeStripMetadata(type));
  return textOf(stripped.get());
}

inline std::vector<std::string> labelsOf(const vrntType_t* type) {
  std::vector<std::string> labels;
  for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
    labels.emplace_back(vrntTypeFieldLabel(type, i));
  }
  return labels;
}

// The type of the field that is reached by these indices.
inline TypeHandle fieldOf(const vrntType_t* type, const std::vector<std::uint32_t>& path) {
  TypeHandle found(vrntTypeCopy(type));
  for (const std::uint32_t index : path) found.reset(vrntTypeFieldType(found.get(), index));
  return found;
}

inline std::vector<std::string> keysOf(const vrntType_t* type) {
  std::vector<std::string> keys;
  for (std::uint32_t i = 0; i < vrntMetadataSize(type); ++i) {
    keys.emplace_back(vrntMetadataName(type, i));
  }
  return keys;
}

// The label that a host shows; empty if there is none.
inline std::string displayName(const vrntType_t* type) {
  if (vrntMetadataExists(type, "name") == 0) return "";
  if (vrntMetadataType(type, "name") != std::uint32_t{VRNT_METADATA_TEXT}) return "not a text";
  return vrntMetadataString(type, "name");
}

inline bool isFlag(const vrntType_t* type, const char* key) {
  return vrntMetadataExists(type, key) != 0 &&
         vrntMetadataType(type, key) == std::uint32_t{VRNT_METADATA_FLAG};
}

inline std::string printed(const ValueHandle& value) {
  if (!value) return "no value";
  const vrntValueView_t whole{vrntValueType(value.get()), 0};
  vrntValuesError_t* error = nullptr;
  const StringHandle text(vrntValueString(value.get(), &whole, 0, &error));
  const ErrorHandle owner(error);
  return text ? text.get() : vrntValuesErrorMessage(error);
}

inline ValueHandle defaultOf(const vrntType_t* type) {
  vrntValuesError_t* error = nullptr;
  ValueHandle value(vrntValueCreateDefault(type, &error));
  const ErrorHandle owner(error);
  EXPECT_NE(value, nullptr) << (error ? vrntValuesErrorMessage(error) : "no error");
  return value;
}

// Where a handle's type is, or was: the handle is ended.
inline const vrntType_t* destroyedAddress(const vrntType_t* handle) {
  vrntTypeDestroy(handle);
  return handle;
}

// The @default of a type, as text; empty if there is none.
inline std::string defaultEntry(const vrntType_t* type) {
  if (vrntMetadataExists(type, "default") == 0) return "";
  if (vrntMetadataType(type, "default") != std::uint32_t{VRNT_METADATA_VALUE}) return "not a value";
  return printed(ValueHandle(vrntMetadataValue(type, "default")));
}

}  // namespace vornath_test

#endif
