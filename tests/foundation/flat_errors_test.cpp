#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "vornath_data/vrnt.h"

namespace {

TEST(vrntValuesErrorDestroy, DoesNothingForNull) { vrntValuesErrorDestroy(nullptr); }

TEST(vrntValuesErrorCode, IsZeroForALibraryError) {
  vrntValuesError_t* error = nullptr;
  EXPECT_EQ(vrntTypeParse("no such type!", &error), nullptr);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), 0U);
  vrntValuesErrorDestroy(error);
}

TEST(vrntValuesErrorMessage, StaysValidUntilTheObjectIsDestroyed) {
  vrntValuesError_t* error = nullptr;
  EXPECT_EQ(vrntTypeParse("no such type!", &error), nullptr);
  ASSERT_NE(error, nullptr);
  const char* message = vrntValuesErrorMessage(error);
  vrntValuesError_t* other = nullptr;
  EXPECT_EQ(vrntTypeParse("another bad one!", &other), nullptr);
  const std::string prefix = "Unable to parse type: ";
  EXPECT_EQ(std::string(message).substr(0, prefix.size()), prefix);
  EXPECT_EQ(vrntValuesErrorMessage(error), message);
  vrntValuesErrorDestroy(other);
  vrntValuesErrorDestroy(error);
}

TEST(vrntDestroyString, FreesAStringOfTheLibrary) {
  vrntValuesError_t* error = nullptr;
  vrntType_t* a = vrntTypeParse("int", &error);
  vrntType_t* b = vrntTypeParse("float", &error);
  ASSERT_EQ(error, nullptr);
  char* reason = vrntTypeCheckSubType(a, b, &error);
  ASSERT_NE(reason, nullptr);
  vrntDestroyString(reason);
  vrntTypeDestroy(a);
  vrntTypeDestroy(b);
}

TEST(vrntDestroyString, AllowsNull) { vrntDestroyString(nullptr); }

// An enum code that no constructor has makes the printing raise a library exception.
TEST(vrntValueString, ReportsALibraryExceptionAsOtherError) {
  vrntValuesError_t* error = nullptr;
  vrntType_t* type = vrntTypeParse("enum { A; B; }", &error);
  ASSERT_NE(type, nullptr);
  vrntValue_t* value = vrntValueCreate(type, &error);
  ASSERT_NE(value, nullptr);
  const std::int32_t code = 7;
  vrntValueWrite(&value, 0, &code, sizeof code, &error);
  ASSERT_EQ(error, nullptr);

  const vrntValueView_t view = {vrntValueType(value), 0};
  EXPECT_EQ(vrntValueString(value, &view, 0, &error), nullptr);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), 2U);
  EXPECT_STREQ(vrntValuesErrorMessage(error), "Enum code out of range: 7");

  vrntValuesErrorDestroy(error);
  vrntValueDestroy(value);
  vrntTypeDestroy(type);
}

TEST(vrntTypeParse, LeavesTheErrorLocationUntouchedOnSuccess) {
  int marker = 0;
  auto* const before = reinterpret_cast<vrntValuesError_t*>(&marker);
  vrntValuesError_t* error = before;
  vrntType_t* type = vrntTypeParse("float3", &error);
  EXPECT_NE(type, nullptr);
  EXPECT_EQ(error, before);
  vrntTypeDestroy(type);
}

TEST(vrtnTypeFloatArray, IsTheTypeThatTheTextGives) {
  for (const std::uint64_t count : {1U, 2U, 3U, 166U, 167U}) {
    vrntValuesError_t* error = nullptr;
    vrntType_t* made = vrtnTypeFloatArray(count);
    const std::string text = "float[" + std::to_string(count) + "]";
    vrntType_t* parsed = vrntTypeParse(text.c_str(), &error);
    EXPECT_EQ(made, parsed) << text;
    EXPECT_EQ(vrntTypeSize(made), 4 * count) << text;
    EXPECT_EQ(vrntTypeAlignment(made), 4U) << text;
    EXPECT_STREQ(vrntTypeString(made), text.c_str());
    vrntTypeDestroy(parsed);
    vrntTypeDestroy(made);
  }
}

TEST(vrtnTypeFloatArray, TakesTheLow32BitsOfTheCount) {
  vrntType_t* plain = vrtnTypeFloatArray(3);
  vrntType_t* high = vrtnTypeFloatArray((std::uint64_t{5} << 32) + 3);
  EXPECT_EQ(plain, high);
  vrntTypeDestroy(high);
  vrntTypeDestroy(plain);
}

TEST(vrtnTypeFloatArray, RaisesForACountThatIsNegativeIn32Bits) {
  try {
    vrtnTypeFloatArray(0x80000000U);
    FAIL() << "no exception";
  } catch (const std::exception& caught) {
    EXPECT_STREQ(caught.what(), "negative array length");
  }
}

TEST(vrntTypeDestroy, LeavesAPermanentTypeAlive) {
  vrntType_t* first = vrtnTypeFloatArray(3);
  vrntTypeDestroy(first);
  vrntType_t* second = vrtnTypeFloatArray(3);
  EXPECT_EQ(first, second);
  EXPECT_STREQ(vrntTypeString(second), "float[3]");
  vrntTypeDestroy(second);
}

TEST(vrntTypeCopy, ReturnsTheSameHandle) {
  vrntType_t* type = vrtnTypeFloatArray(12);
  vrntType_t* copy = vrntTypeCopy(type);
  EXPECT_EQ(type, copy);
  vrntTypeDestroy(type);
  EXPECT_STREQ(vrntTypeString(copy), "float[12]");
  vrntTypeDestroy(copy);
}

}  // namespace
