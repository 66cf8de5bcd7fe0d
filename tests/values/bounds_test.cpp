#include "values/bounds.hpp"

#include <limits>
#include <set>

#include "values/half.hpp"
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

// Spectra: flat ones from 0 to infinity.

constexpr const char* kSpectrum =
    "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }";

std::string spectrumText(const std::string& encoding, const std::string& floats) {
  return "{ encoding = " + encoding + " : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &" +
         floats + "; }";
}

TEST(MakeValueBounds, OfASpectrumAreFlatSpectra) {
  const std::string zero = spectrumText("LUMINANCE", "[ 0.0 ]");
  const std::string infinity = spectrumText("LUMINANCE", "[ inf ]");
  const Texts expected{zero, zero, infinity, zero, infinity};
  EXPECT_EQ(bounds(kSpectrum), expected);
  EXPECT_EQ(bounds(std::string(kSpectrum) + " @name=\"Spectrum\""), expected);
  // Relating both ways is enough: metadata of parts and payloads of constructors don't matter.
  EXPECT_EQ(bounds("{ enum { LUMINANCE @name=\"L\"; RGB; SPECTRAL; } @desc=\"d\" encoding; "
                   "float[]* @hide spectrum; }"),
            expected);
}

TEST(MakeDefaultValue, OfASpectrumHasAnArrayOfOneFloat) {
  const DynamicValue value = makeDefaultValue(type(kSpectrum));
  const std::uint64_t word = at<std::uint64_t>(value, 8);
  ASSERT_TRUE(isBlockWord(word));
  EXPECT_EQ(blockType(blockOfWord(word)).text(), "float[1]");
  EXPECT_EQ(text(value), spectrumText("LUMINANCE", "[ 0.0 ]"));
}

TEST(MakeDefaultValue, OfPartsThatAreSpectra) {
  const std::string zero = spectrumText("LUMINANCE", "[ 0.0 ]");
  EXPECT_EQ(text(makeDefaultValue(type(std::string("{ int a; ") + kSpectrum + " b; }"))),
            "{ a = 0; b = " + zero + "; }");
  EXPECT_EQ(
      text(makeDefaultValue(type(std::string("{ int @default=7 a; ") + kSpectrum + "[2] b; }"))),
      "{ a = 7; b = [ " + zero + ", " + zero + " : " + kSpectrum + " ]; }");
  // Nothing is made behind a reference.
  EXPECT_EQ(at<std::uint64_t>(makeDefaultValue(type(std::string(kSpectrum) + "*"))), 0u);
}

// The words of a value that lead to blocks.
std::vector<std::uint64_t> blockWords(const DynamicValue& value) {
  std::vector<std::uint64_t> words;
  for (const std::uint64_t slot : value.typeOf().refSlots()) {
    words.push_back(at<std::uint64_t>(value, slot * kWordSize));
  }
  return words;
}

// All lead to different blocks, which nobody else holds.
void expectOwnBlocks(const std::vector<std::uint64_t>& words) {
  EXPECT_EQ(std::set<std::uint64_t>(words.begin(), words.end()).size(), words.size());
  for (const std::uint64_t word : words) {
    ASSERT_TRUE(isBlockWord(word));
    EXPECT_EQ(blockOfWord(word)->refCount, 1u);
  }
}

TEST(MakeDefaultValue, GivesEachSpectrumAnArrayOfItsOwn) {
  const std::string spectrum = kSpectrum;
  for (const std::string& text :
       {"{ " + spectrum + " a; int b; " + spectrum + " c; }", spectrum + "[7]",
        spectrum + "[2,3][2]", "{ { " + spectrum + " a; }[3] b; " + spectrum + " c; }[2]",
        "{ int @default=3 a; " + spectrum + "[3] b; }", spectrum + "[5] @name=\"kept\""}) {
    SCOPED_TRACE(text);
    const TypePtr of = type(text);
    std::vector<DynamicValue> values;
    std::vector<std::uint64_t> words;
    for (int i = 0; i < 3; ++i) {
      values.push_back(makeDefaultValue(of));
      const std::vector<std::uint64_t> own = blockWords(values.back());
      EXPECT_EQ(own.size(), of->refSlots().size());
      words.insert(words.end(), own.begin(), own.end());
    }
    expectOwnBlocks(words);
  }
}

TEST(MakeValueBounds, GiveEachSpectrumAnArrayOfItsOwn) {
  const ValueBounds bounds = makeValueBounds(type(std::string(kSpectrum) + "[3]"));
  std::vector<std::uint64_t> words;
  for (const DynamicValue& bound : bounds) {
    for (const std::uint64_t word : blockWords(bound)) words.push_back(word);
  }
  EXPECT_EQ(words.size(), 15u);
  expectOwnBlocks(words);
}

// What an annotation refers to is referred to, not copied.
TEST(MakeDefaultValue, SharesWhatAnAnnotationLeadsTo) {
  const std::string red = spectrumText("RGB", "[ 1.0, 0.0, 0.0 ]");
  const TypePtr of =
      type("{ " + (std::string(kSpectrum) + " @default=" + red) + " a; " + kSpectrum + " b; }[2]");
  const DynamicValue first = makeDefaultValue(of);
  const DynamicValue second = makeDefaultValue(of);
  const std::vector<std::uint64_t> a = blockWords(first);
  const std::vector<std::uint64_t> b = blockWords(second);
  ASSERT_EQ(a.size(), 4u);
  EXPECT_EQ(a[0], a[2]);
  EXPECT_EQ(a[0], b[0]);
  EXPECT_EQ(b[0], b[2]);
  expectOwnBlocks({a[1], a[3], b[1], b[3]});
}

TEST(MakeDefaultValue, OfASpectrumWithADefaultIsThat) {
  const std::string red = spectrumText("RGB", "[ 1.0, 0.0, 0.0 ]");
  EXPECT_EQ(text(makeDefaultValue(type(std::string(kSpectrum) + " @default=" + red))), red);
  const Texts limits = bounds(std::string(kSpectrum) + " @max=" + red);
  EXPECT_EQ(limits[kMax], red);
  EXPECT_EQ(limits[kSoftMax], red);
  EXPECT_EQ(limits[kDefault], spectrumText("LUMINANCE", "[ 0.0 ]"));
}

// An array of one float behind a reference that promises more would be read beyond its end.
TEST(MakeDefaultValue, OfAStructThatPromisesMoreThanASpectrumIsThatOfAnyStruct) {
  for (const char* const promise : {"float[3]", "float[0]", "float[2]"}) {
    const DynamicValue value =
        makeDefaultValue(type(std::string("{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; ") +
                              promise + "* spectrum; }"));
    EXPECT_EQ(at<std::int32_t>(value), 0);
    EXPECT_EQ(at<std::uint64_t>(value, 8), 0u) << promise;
  }
}

TEST(MakeDefaultValue, OfAStructThatPromisesOneFloatIsASpectrum) {
  const std::string narrow = "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[1]* spectrum; }";
  const Texts limits = bounds(narrow);
  EXPECT_EQ(limits[kDefault], spectrumText("LUMINANCE", "[ 0.0 ]"));
  EXPECT_EQ(limits[kMin], spectrumText("LUMINANCE", "[ 0.0 ]"));
  EXPECT_EQ(limits[kMax], spectrumText("LUMINANCE", "[ inf ]"));
  EXPECT_EQ(limits[kSoftMin], limits[kMin]);
  EXPECT_EQ(limits[kSoftMax], limits[kMax]);
}

TEST(MakeDefaultValue, OfASpectrumDoesNotKeepItsTypeAlive) {
  makeDefaultValue(type(kSpectrum));  // the permanent types are there
  const std::size_t before = Type::get_factory(true)->liveTypes();
  {
    const TypePtr holder = type(std::string("{ ") + kSpectrum + " only_here; }");
    const DynamicValue value = makeDefaultValue(holder);
    EXPECT_GT(Type::get_factory(true)->liveTypes(), before);
  }
  EXPECT_EQ(Type::get_factory(true)->liveTypes(), before);
}

}  // namespace
}  // namespace qex::vornath::test
