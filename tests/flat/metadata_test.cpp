// The flat functions that read a type's annotations.
#include "vornath_data/metadata.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/flat_handles.hpp"
#include "vornath_data/result.hpp"

namespace {

using vornath_test::parseType;
using vornath_test::readAt;
using vornath_test::TypeHandle;
using vornath_test::typeTextOf;
using vornath_test::ValueHandle;

constexpr const char* kAllKinds = "float @flag @text=\"some words\" @value=2.5";

std::vector<std::string> namesOf(const std::string& text) {
  const TypeHandle type = parseType(text);
  std::vector<std::string> names;
  for (std::uint32_t i = 0; const char* name = vrntMetadataName(type.get(), i); ++i) {
    names.emplace_back(name);
  }
  EXPECT_EQ(names.size(), vrntMetadataSize(type.get()));
  return names;
}

using Names = std::vector<std::string>;

}  // namespace

TEST(vrntMetadataSize, CountsTheEntriesOfTheTypeItself) {
  EXPECT_EQ(vrntMetadataSize(parseType("float").get()), 0u);
  EXPECT_EQ(vrntMetadataSize(parseType(kAllKinds).get()), 3u);
  EXPECT_EQ(vrntMetadataSize(parseType("{ float @a @b x; }").get()), 0u);
  EXPECT_EQ(vrntMetadataSize(parseType("{ float @a @b x; } @c").get()), 1u);
  EXPECT_EQ(vrntMetadataSize(parseType("enum { A @a @b; }").get()), 0u);
  EXPECT_EQ(vrntMetadataSize(parseType("float @a @b[3]").get()), 0u);
}

TEST(vrntMetadataSize, CountsAKeyThatOccursTwiceOnce) {
  EXPECT_EQ(vrntMetadataSize(parseType("float @a=1.0 @a=\"x\"").get()), 1u);
}

TEST(vrntMetadataName, ReturnsTheKeysInOrder) {
  EXPECT_EQ(namesOf("float @z @a @m"), (Names{"a", "m", "z"}));
}

TEST(vrntMetadataName, OrdersKeysByTheirBytesWithTheShorterFirst) {
  EXPECT_EQ(namesOf("int @ab @b @a @B @a' @a1 @aB @a_ @abc @"),
            (Names{"", "B", "a", "a'", "a1", "aB", "a_", "ab", "abc", "b"}));
}

TEST(vrntMetadataName, IsNullAtAndPastTheEnd) {
  const TypeHandle plain = parseType("float");
  EXPECT_EQ(vrntMetadataName(plain.get(), 0), nullptr);
  const TypeHandle type = parseType(kAllKinds);
  EXPECT_STREQ(vrntMetadataName(type.get(), 2), "value");
  EXPECT_EQ(vrntMetadataName(type.get(), 3), nullptr);
  EXPECT_EQ(vrntMetadataName(type.get(), 0xffffffffu), nullptr);
}

TEST(vrntMetadataName, BelongsToTheType) {
  const TypeHandle type = parseType(kAllKinds);
  EXPECT_EQ(vrntMetadataName(type.get(), 1), vrntMetadataName(type.get(), 1));
}

TEST(vrntMetadataExists, IsOneForAKeyOfAnyKindAndZeroForNone) {
  const TypeHandle type = parseType(kAllKinds);
  EXPECT_EQ(vrntMetadataExists(type.get(), "flag"), 1u);
  EXPECT_EQ(vrntMetadataExists(type.get(), "text"), 1u);
  EXPECT_EQ(vrntMetadataExists(type.get(), "value"), 1u);
  EXPECT_EQ(vrntMetadataExists(type.get(), "fla"), 0u);
  EXPECT_EQ(vrntMetadataExists(type.get(), "flags"), 0u);
  EXPECT_EQ(vrntMetadataExists(type.get(), "Flag"), 0u);
  EXPECT_EQ(vrntMetadataExists(type.get(), ""), 0u);
  EXPECT_EQ(vrntMetadataExists(parseType("float @").get(), ""), 1u);
}

TEST(vrntMetadataType, IsTheKindOfTheEntry) {
  const TypeHandle type = parseType(kAllKinds);
  EXPECT_EQ(vrntMetadataType(type.get(), "flag"), 0u);
  EXPECT_EQ(vrntMetadataType(type.get(), "text"), 1u);
  EXPECT_EQ(vrntMetadataType(type.get(), "value"), 2u);
}

TEST(vrntMetadataType, DoesNotDependOnTheKey) {
  EXPECT_EQ(vrntMetadataType(parseType("float @default=\"x\"").get(), "default"), 1u);
  EXPECT_EQ(vrntMetadataType(parseType("float @default").get(), "default"), 0u);
  EXPECT_EQ(vrntMetadataType(parseType("float @name=1").get(), "name"), 2u);
}

TEST(vrntMetadataType, IsThatOfTheLastAnnotationIfAKeyOccursTwice) {
  EXPECT_EQ(vrntMetadataType(parseType("float @a=1.0 @a=\"x\"").get(), "a"), 1u);
  EXPECT_EQ(vrntMetadataType(parseType("float @a=\"x\" @a").get(), "a"), 0u);
  EXPECT_EQ(vrntMetadataType(parseType("float @a @a=1.0").get(), "a"), 2u);
}

TEST(vrntMetadataString, IsTheTextOfTheEntryUnchanged) {
  EXPECT_STREQ(vrntMetadataString(parseType(kAllKinds).get(), "text"), "some words");
  const TypeHandle type = parseType("float @a=\"\" @b=\"two\nlines\\n\t'; @x=1\" @c=\"\xc3\xa9\"");
  EXPECT_STREQ(vrntMetadataString(type.get(), "a"), "");
  EXPECT_STREQ(vrntMetadataString(type.get(), "b"), "two\nlines\\n\t'; @x=1");
  EXPECT_STREQ(vrntMetadataString(type.get(), "c"), "\xc3\xa9");
  EXPECT_EQ(vrntMetadataString(type.get(), "a"), vrntMetadataString(type.get(), "a"));
}

TEST(vrntMetadataString, ThrowsForAnAnnotationOfAnotherKind) {
  const TypeHandle type = parseType(kAllKinds);
  EXPECT_THROW(vrntMetadataString(type.get(), "flag"), VornathValuesAssertionFailure);
  EXPECT_THROW(vrntMetadataString(type.get(), "value"), VornathValuesAssertionFailure);
}

TEST(vrntMetadataValue, IsTheValueOfTheEntryWithItsOwnType) {
  const TypeHandle type =
      parseType("float @a=2.5 @b=[ 1, 2, 3 ] @c=B : enum { A; B; } @d={ x = true; }");
  const ValueHandle a(vrntMetadataValue(type.get(), "a"));
  EXPECT_EQ(typeTextOf(a), "float");
  EXPECT_EQ(readAt<float>(a), 2.5f);
  const ValueHandle b(vrntMetadataValue(type.get(), "b"));
  EXPECT_EQ(typeTextOf(b), "int[3]");
  EXPECT_EQ(readAt<std::int32_t>(b, 8), 3);
  const ValueHandle c(vrntMetadataValue(type.get(), "c"));
  EXPECT_EQ(typeTextOf(c), "enum { A; B; }");
  EXPECT_EQ(readAt<std::int32_t>(c), 1);
  const ValueHandle d(vrntMetadataValue(type.get(), "d"));
  EXPECT_EQ(typeTextOf(d), "{ bool x; }");
  EXPECT_EQ(readAt<std::int32_t>(d), -1);
}

TEST(vrntMetadataValue, ReturnsAReferenceToTheValueOfTheAnnotation) {
  TypeHandle type = parseType(kAllKinds);
  const ValueHandle first(vrntMetadataValue(type.get(), "value"));
  const ValueHandle second(vrntMetadataValue(type.get(), "value"));
  EXPECT_EQ(first.get(), second.get());
  EXPECT_EQ(first->refCount, 3u);
  type.reset();
  EXPECT_EQ(first->refCount, 2u);
  EXPECT_EQ(readAt<float>(first), 2.5f);
}

TEST(vrntMetadataValue, DoesNotChangeTheTypeWhenTheHandleIsWritten) {
  const TypeHandle type = parseType(kAllKinds);
  vrntValue_t* written = vrntMetadataValue(type.get(), "value");
  const float other = 7.0f;
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(&written, 0, &other, sizeof other, &error);
  const ValueHandle owner(written);
  EXPECT_EQ(error, nullptr);
  EXPECT_EQ(readAt<float>(owner), 7.0f);
  EXPECT_EQ(readAt<float>(ValueHandle(vrntMetadataValue(type.get(), "value"))), 2.5f);
}

TEST(vrntMetadataValue, ThrowsForAnAnnotationOfAnotherKind) {
  const TypeHandle type = parseType(kAllKinds);
  EXPECT_THROW(vrntMetadataValue(type.get(), "flag"), VornathValuesAssertionFailure);
  EXPECT_THROW(vrntMetadataValue(type.get(), "text"), VornathValuesAssertionFailure);
}

TEST(vrntMetadataValue, ReadsTheAnnotationsOfAFieldThroughTheFieldsType) {
  const TypeHandle type = parseType("{ int a; float @max=4.0 @name=\"Width\" b; } @name=\"Box\"");
  const TypeHandle field(vrntTypeFieldType(type.get(), 1));
  EXPECT_EQ(vrntMetadataSize(field.get()), 2u);
  EXPECT_STREQ(vrntMetadataString(field.get(), "name"), "Width");
  EXPECT_EQ(readAt<float>(ValueHandle(vrntMetadataValue(field.get(), "max"))), 4.0f);
  EXPECT_STREQ(vrntMetadataString(type.get(), "name"), "Box");
  EXPECT_EQ(vrntMetadataExists(type.get(), "max"), 0u);
}
