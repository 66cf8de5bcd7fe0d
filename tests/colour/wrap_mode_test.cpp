// Wrap modes: names, and types with another default.
#include "colour/wrap_mode.hpp"

#include <gtest/gtest.h>

#include "type_reading.hpp"
#include "types/type_handle.hpp"
#include "types/type_support.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary
using qex::vornath::makeWrapModeType;
using qex::vornath::typeHandle;
using qex::vornath::WrapMode;

WrapMode mode(int number) { return static_cast<WrapMode>(number); }

const std::string kModes = "enum { CLAMP; BORDER; REPEAT; MIRROR; }";
const char* const kNames[] = {"CLAMP", "BORDER", "REPEAT", "MIRROR"};

}  // namespace

TEST(WrapModes, HaveNames) {
  for (int i = 0; i < 4; ++i) EXPECT_STREQ(toString(mode(i)), kNames[i]);
}

TEST(WrapModes, OfAnyOtherNumberPrintAsInvalid) {
  for (const int number : {7, 4, -1, 0x7FFFFFFF}) {
    EXPECT_STREQ(toString(mode(number)), "INVALID_WRAPMODE") << number;
  }
}

TEST(WrapModes, CanBeTheDefaultOfAType) {
  for (int i = 0; i < 4; ++i) {
    const TypePtr type = makeWrapModeType(mode(i));
    EXPECT_EQ(type->text(), kModes + " @default=" + kNames[i] + " : " + kModes);
    EXPECT_EQ(readAt<std::int32_t>(defaultOf(typeHandle(*type))), i);
  }
}

TEST(WrapModes, OfAnyOtherNumberAreNoDefault) {
  expectThrows([] { makeWrapModeType(mode(7)); }, "Invalid enum constructor: INVALID_WRAPMODE");
}

TEST(WrapModes, ComeInPairsWithDefaultsOfTheirOwn) {
  const TypePtr type = qex::vornath::makeWrapMode2Type(WrapMode::Clamp, WrapMode::Mirror);
  EXPECT_EQ(type->text(), "{ " + kModes + " @default=CLAMP : " + kModes +
                              " @name=\"Wrap mode\" u; " + kModes + " @default=MIRROR : " + kModes +
                              " @name=\"Wrap mode\" v; }");
  const ValueHandle value = defaultOf(typeHandle(*type));
  EXPECT_EQ(readAt<std::int32_t>(value, 0), 0);
  EXPECT_EQ(readAt<std::int32_t>(value, 4), 3);
}

TEST(WrapModes, ComeInPairsThatRepeat) {
  const std::string repeat = kModes + " @default=REPEAT : " + kModes + " @name=\"Wrap mode\"";
  EXPECT_EQ(qex::vornath::wrapMode2Type().text(), "{ " + repeat + " u; " + repeat + " v; }");
  EXPECT_EQ(&qex::vornath::wrapMode2Type(), &qex::vornath::wrapMode2Type());
}
