// Owners of flat handles, and the calls that every test of the flat functions makes.
#ifndef VORNATH_TESTS_SUPPORT_FLAT_HANDLES_HPP
#define VORNATH_TESTS_SUPPORT_FLAT_HANDLES_HPP

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

#include "vornath_data/handles.hpp"
#include "vornath_data/vrnt.h"

namespace vornath_test {

using TypeHandle = vrnt::UniqueType;
using ValueHandle = vrnt::UniqueValue;
using ErrorHandle = vrnt::UniqueError;
using StringHandle = vrnt::UniqueString;
using SceneHandle = vrnt::UniqueScene;
using StorageHandle = vrnt::UniqueAsset;

// The block behind a reference word, `offset` bytes behind the start of a value, as a host finds it
// that reads the value's bytes.
inline vrntValue_t* referencedBlock(const vrntValue_t* value, std::size_t offset = 0) {
  std::uint64_t word = 0;
  std::memcpy(&word, static_cast<const char*>(vrntValueData(value)) + offset, sizeof word);
  EXPECT_TRUE(word != 0 && (word & 1) == 0) << word;
  return reinterpret_cast<vrntValue_t*>(static_cast<std::uintptr_t>(word) - sizeof(vrntValue_t));
}

// What a failed call reported.
struct Failure {
  std::uint32_t kind;
  std::string message;
};

// The type of a text. A text that doesn't parse fails the test and gives null.
inline TypeHandle parseType(const std::string& text) {
  vrntValuesError_t* error = nullptr;
  TypeHandle type(vrntTypeParse(text.c_str(), &error));
  const ErrorHandle owner(error);
  EXPECT_NE(type, nullptr) << text << "\n" << (error ? vrntValuesErrorMessage(error) : "no error");
  EXPECT_EQ(error, nullptr) << text;
  return type;
}

// The value of a text. A text that doesn't parse fails the test and gives null.
inline ValueHandle parseValue(const std::string& text) {
  vrntValuesError_t* error = nullptr;
  ValueHandle value(vrntValueParse(text.c_str(), &error));
  const ErrorHandle owner(error);
  EXPECT_NE(value, nullptr) << text << "\n" << (error ? vrntValuesErrorMessage(error) : "no error");
  EXPECT_EQ(error, nullptr) << text;
  return value;
}

// The failure of a parse, or nothing if the text parsed.
inline std::optional<Failure> typeFailure(const std::string& text) {
  vrntValuesError_t* error = nullptr;
  const TypeHandle type(vrntTypeParse(text.c_str(), &error));
  const ErrorHandle owner(error);
  if (type || !error) return std::nullopt;
  return Failure{vrntValuesErrorCode(error), vrntValuesErrorMessage(error)};
}
inline std::optional<Failure> valueFailure(const std::string& text) {
  vrntValuesError_t* error = nullptr;
  const ValueHandle value(vrntValueParse(text.c_str(), &error));
  const ErrorHandle owner(error);
  if (value || !error) return std::nullopt;
  return Failure{vrntValuesErrorCode(error), vrntValuesErrorMessage(error)};
}

// The canonical text of the type of a text.
inline std::string canonical(const std::string& text) {
  const TypeHandle type = parseType(text);
  return type ? vrntTypeString(type.get()) : "";
}

inline std::string typeTextOf(const ValueHandle& value) {
  return value ? vrntTypeString(vrntValueType(value.get())) : "";
}

// The text of a whole value.
inline std::string textOf(const vrntValue_t* value) {
  const vrntValueView_t view{vrntValueType(value), 0};
  vrntValuesError_t* error = nullptr;
  const StringHandle text(vrntValueString(value, &view, 0, &error));
  const ErrorHandle owner(error);
  EXPECT_NE(text, nullptr) << (error ? vrntValuesErrorMessage(error) : "no error");
  return text ? text.get() : "";
}
inline std::string textOf(const ValueHandle& value) { return value ? textOf(value.get()) : ""; }

// The bytes at an offset of a value, read as a T.
template <typename T>
T readAt(const ValueHandle& value, std::uint64_t offset = 0) {
  T result{};
  if (value) {
    std::memcpy(&result, static_cast<const char*>(vrntValueData(value.get())) + offset, sizeof(T));
  }
  return result;
}

}  // namespace vornath_test

#endif
