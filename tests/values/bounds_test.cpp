#include "bounds.hpp"

#include <limits>

#include "half.hpp"
#include "values_support.hpp"

namespace qex::vornath::test {
namespace {

// The five in order, as text.
std::vector<std::string> bounds(const std::string& typeText) {
  std::vector<std::string> texts;
  for (const DynamicValue& v : makeValueBounds(type(typeText))) texts.push_back(text(v));
  return texts;
}

using Texts = std::vector<std::string>;

TEST(MakeValueBounds, OfInt) {
  EXPECT_EQ(bounds("int"), (Texts{"0", "-2147483648", "2147483647", "-2147483648", "2147483647"}));
  EXPECT_EQ(bounds("int3")[1], "int3(-2147483648, -2147483648, -2147483648)");
}

TEST(MakeValueBounds, OfFloat) {
  EXPECT_EQ(bounds("float"), (Texts{"0.0", "-inf", "inf", "-inf", "inf"}));
  EXPECT_EQ(bounds("float2")[4], "float2(inf, inf)");
}

TEST(MakeValueBounds, OfHalf) {
  EXPECT_EQ(bounds("half"), (Texts{"0.0h", "-infh", "infh", "-infh", "infh"}));
  const ValueBounds half4 = makeValueBounds(type("half4"));
  EXPECT_EQ(at<std::uint64_t>(half4[kMin]), 0xFC00FC00FC00FC00u);
  EXPECT_EQ(at<std::uint64_t>(half4[kMax]), 0x7C007C007C007C00u);
}

TEST(MakeValueBounds, OfBoolIsAllBitsAtTheUpperEnd) {
  const ValueBounds b = makeValueBounds(type("bool"));
  EXPECT_EQ(at<std::uint32_t>(b[kDefault]), 0u);
  EXPECT_EQ(at<std::uint32_t>(b[kMin]), 0u);
  EXPECT_EQ(at<std::uint32_t>(b[kMax]), 0xFFFFFFFFu);
  EXPECT_EQ(at<std::uint32_t>(b[kSoftMin]), 0u);
  EXPECT_EQ(at<std::uint32_t>(b[kSoftMax]), 0xFFFFFFFFu);
}

TEST(MakeValueBounds, OfChar) {
  EXPECT_EQ(bounds("char"), (Texts{"0c", "0c", "255c", "0c", "255c"}));
  EXPECT_EQ(bounds("char2")[kMax], "char2(255c, 255c)");
  EXPECT_EQ(bounds("char3")[kSoftMax], "char3(255c, 255c, 255c)");
}

TEST(MakeValueBounds, OfChar4LeavesTheLastComponentOfTheMaximumAtZero) {
  const ValueBounds b = makeValueBounds(type("char4"));
  EXPECT_EQ(at<std::uint32_t>(b[kMax]), 0x00FFFFFFu);
  EXPECT_EQ(at<std::uint32_t>(b[kSoftMax]), 0x00FFFFFFu);
  EXPECT_EQ(at<std::uint32_t>(b[kMin]), 0u);
}

TEST(MakeValueBounds, OfEnumRunsOverItsCodes) {
  EXPECT_EQ(bounds("enum { A; B; C; }"),
            (Texts{"A : enum { A; B; C; }", "A : enum { A; B; C; }", "C : enum { A; B; C; }",
                   "A : enum { A; B; C; }", "C : enum { A; B; C; }"}));
}

TEST(MakeValueBounds, OfStructAndArrayAreThoseOfTheirParts) {
  EXPECT_EQ(bounds("{ int @max=5 a; float @default=2.0 b; }"),
            (Texts{"{ a = 0; b = 2.0; }", "{ a = -2147483648; b = -inf; }", "{ a = 5; b = inf; }",
                   "{ a = -2147483648; b = -inf; }", "{ a = 5; b = inf; }"}));
  EXPECT_EQ(bounds("float @default=0.5 @min=0.0[2,2]")[kDefault], "[ 0.5, 0.5, 0.5, 0.5 | 2, 2 ]");
  EXPECT_EQ(bounds("float @default=0.5 @min=0.0[3]")[kSoftMin], "[ 0.0, 0.0, 0.0 ]");
}

TEST(MakeValueBounds, OfNestedArraysFillsEachElement) {
  EXPECT_EQ(bounds("{ int @default=7 a; }[2][3]")[kDefault],
            "[ [ { a = 7; }, { a = 7; } ], [ { a = 7; }, { a = 7; } ], "
            "[ { a = 7; }, { a = 7; } ] ]");
}

TEST(MakeValueBounds, OfReferenceAndFunctionAreNull) {
  EXPECT_EQ(bounds("int*")[kDefault], "$(0x0000000000000000:int)");
  const ValueBounds f = makeValueBounds(type("(() => int)"));
  EXPECT_EQ(at<std::uint64_t>(f[kMax], 0), 0u);
  EXPECT_EQ(at<std::uint64_t>(f[kMax], 8), 0u);
}

TEST(MakeValueBounds, OfEmptyAndOpenArraysAreEmpty) {
  EXPECT_EQ(bounds("int @default=1[0]")[kDefault], "[ : int ]");
  EXPECT_EQ(makeValueBounds(type("float[]"))[kDefault].typeOf().text(), "float[]");
}

TEST(MakeValueBounds, LimitsStandForSoftLimitsThatAreAbsent) {
  EXPECT_EQ(bounds("float @max=9.0 @min=1.0"), (Texts{"0.0", "1.0", "9.0", "1.0", "9.0"}));
}

TEST(MakeValueBounds, SoftLimitsHaveTheirOwnPlace) {
  EXPECT_EQ(bounds("float @max=9.0 @min=1.0 @soft_max=7.0 @soft_min=3.0"),
            (Texts{"0.0", "1.0", "9.0", "3.0", "7.0"}));
  EXPECT_EQ(bounds("float @soft_min=3.0"), (Texts{"0.0", "-inf", "inf", "3.0", "inf"}));
}

TEST(MakeValueBounds, AnnotationOfAnUnrelatedTypeIsIgnored) {
  EXPECT_EQ(bounds("float @default=1 @min=0"), (Texts{"0.0", "-inf", "inf", "-inf", "inf"}));
  EXPECT_EQ(bounds("float @default=\"1.0\""), (Texts{"0.0", "-inf", "inf", "-inf", "inf"}));
  EXPECT_EQ(bounds("float @default"), (Texts{"0.0", "-inf", "inf", "-inf", "inf"}));
  // An ignored soft limit is as good as none.
  EXPECT_EQ(bounds("float @min=1.0 @soft_min=2")[kSoftMin], "1.0");
}

TEST(MakeValueBounds, AnnotationOfASubtypeCountsAndTheTypeStays) {
  const ValueBounds b = makeValueBounds(type("int @default=B : enum { A; B; }"));
  EXPECT_EQ(b[kDefault].typeOf().text(), "int");
  EXPECT_EQ(text(b[kDefault]), "1");
}

TEST(MakeValueBounds, OuterAnnotationOverridesInnerOnes) {
  EXPECT_EQ(bounds("{ int @default=1 a; int @default=2 b; } @default={ a = 8; b = 9; }")[kDefault],
            "{ a = 8; b = 9; }");
  EXPECT_EQ(bounds("float @default=1.0[2] @default=[ 3.0, 4.0 ]")[kDefault], "[ 3.0, 4.0 ]");
}

TEST(MakeValueBounds, ReferencesInDefaultsAreShared) {
  const TypePtr t = type("{ float[]* @default=&[ 1.0, 2.0 ] s; }[3]");
  const ValueBounds b = makeValueBounds(t);
  EXPECT_EQ(text(b[kDefault]),
            "[ { s = &[ 1.0, 2.0 ]; }, { s = &[ 1.0, 2.0 ]; }, { s = &[ 1.0, 2.0 ]; } "
            ": { float[]* s; } ]");
  const auto word = at<std::uint64_t>(b[kDefault]);
  EXPECT_EQ(at<std::uint64_t>(b[kDefault], 8), word);
  EXPECT_EQ(at<std::uint64_t>(b[kDefault], 16), word);
  // Three here, and one of the annotation's own.
  EXPECT_EQ(blockOfWord(word)->refCount, 4u);
}

TEST(MakeDefaultValue, IsTheFirstOfTheBounds) {
  for (const char* t : {"int @default=3", "{ bool @default=true a; char4 b; }", "half3[4]",
                        "enum { A; B; } @default=B : enum { A; B; }"}) {
    EXPECT_EQ(text(makeDefaultValue(type(t))), text(makeValueBounds(type(t))[kDefault])) << t;
  }
  EXPECT_EQ(at<std::uint32_t>(makeDefaultValue(type("bool @default=true"))), 0xFFFFFFFFu);
}

}  // namespace
}  // namespace qex::vornath::test
