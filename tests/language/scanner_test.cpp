// Every form of token, read through value and type texts.
#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/flat_handles.hpp"

namespace {

using vornath_test::canonical;
using vornath_test::parseType;
using vornath_test::parseValue;
using vornath_test::readAt;
using vornath_test::TypeHandle;
using vornath_test::typeTextOf;
using vornath_test::ValueHandle;

// The text is a scalar of the named type with these bits.
template <typename Bits>
void expectBits(const std::string& text, const char* type, Bits bits) {
  SCOPED_TRACE(text);
  const ValueHandle value = parseValue(text);
  ASSERT_NE(value, nullptr);
  ASSERT_EQ(typeTextOf(value), type);
  ASSERT_EQ(vrntTypeSize(vrntValueType(value.get())), sizeof(Bits));
  EXPECT_EQ(readAt<Bits>(value), bits);
}

void expectInt(const std::string& text, std::int32_t number) { expectBits(text, "int", number); }
void expectChar(const std::string& text, std::uint8_t byte) { expectBits(text, "char", byte); }
void expectHalf(const std::string& text, std::uint16_t bits) { expectBits(text, "half", bits); }
void expectFloatBits(const std::string& text, std::uint32_t bits) {
  expectBits(text, "float", bits);
}
void expectFloat(const std::string& text, float number) {
  std::uint32_t bits;
  std::memcpy(&bits, &number, sizeof bits);
  expectFloatBits(text, bits);
}

// What a stream in the "C" locale makes of the text of a number.
float extracted(const std::string& text) {
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  float number = 0;
  stream >> number;
  return number;
}

// The address behind a "$", which is the only place where an ADDR can stand.
std::uint64_t addressWord(const std::string& text) {
  return readAt<std::uint64_t>(parseValue(text));
}

struct CommaNumbers : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

class Locales {
 public:
  Locales()
      : stream_(std::locale::global(std::locale(std::locale::classic(), new CommaNumbers))),
        c_(std::setlocale(LC_ALL, nullptr)) {
    for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "fr_FR"}) {
      if (std::setlocale(LC_ALL, name)) break;
    }
  }
  ~Locales() {
    std::setlocale(LC_ALL, c_.c_str());
    std::locale::global(stream_);
  }

 private:
  std::locale stream_;
  std::string c_;
};

}  // namespace

TEST(Blanks, StandBetweenTokensInAnyNumber) {
  expectInt(" \t 7 \t ", 7);
  expectInt("\n7\n", 7);
  expectInt("\r\n\r\n7\r\n", 7);
  EXPECT_EQ(canonical("{\r\n  int\ta;\n\r\n}\n"), "{ int a; }");
}

TEST(Blanks, AreNotNeededWhereATokenEndsByItself) {
  EXPECT_EQ(canonical("{int a;float[3]b;}"), "{ int a; float[3] b; }");
  EXPECT_EQ(canonical("float@a@b=\"x\"@c"), "float @a @b=\"x\" @c");
  EXPECT_EQ(typeTextOf(parseValue("[1,2]")), "int[2]");
}

TEST(Booleans, AreTwoWords) {
  expectInt("0", 0);
  expectBits<std::int32_t>("true", "bool", -1);
  expectBits<std::int32_t>("false", "bool", 0);
}

TEST(Integers, FitThirtyTwoSignedBits) {
  expectInt("0", 0);
  expectInt("+0", 0);
  expectInt("-0", 0);
  expectInt("+12", 12);
  expectInt("-12", -12);
  expectInt("007", 7);
  expectInt("-00000000000000000008", -8);
  expectInt("2147483647", INT32_MAX);
  expectInt("-2147483648", INT32_MIN);
}

TEST(Integers, PastThirtyTwoBitsAreAddresses) {
  EXPECT_EQ(vornath_test::valueFailure("2147483648")->message,
            "Unable to parse value: 2147483648.\nsyntax error, unexpected ADDR");
  EXPECT_EQ(vornath_test::valueFailure("-2147483649")->message,
            "Unable to parse value: -2147483649.\nsyntax error, unexpected ADDR");
  EXPECT_EQ(addressWord("$2147483648"), UINT64_C(2147483648) * 2 + 1);
  EXPECT_EQ(addressWord("$4294967296"), UINT64_C(4294967296) * 2 + 1);
  EXPECT_EQ(addressWord("$4611686018427387904"), (std::uint64_t{1} << 63) + 1);
}

TEST(Integers, TakeEightHexadecimalDigitsAsBits) {
  expectInt("0x00000000", 0);
  expectInt("0x12345678", 0x12345678);
  expectInt("0X7FFFffff", INT32_MAX);
  expectInt("0x80000000", INT32_MIN);
  expectInt("0xffffffff", -1);
  expectInt("0xFFFFFFFE", -2);
  expectInt("0x0000000e", 14);
}

TEST(Characters, AreDecimalWithALetter) {
  expectChar("0c", 0);
  expectChar("255c", 255);
  expectChar("+7c", 7);
  expectChar("-0c", 0);
  expectChar("0065c", 65);
  expectChar("127c", 127);
  expectChar("128c", 128);
}

TEST(Characters, TakeTwoHexadecimalDigits) {
  expectChar("0x00", 0);
  expectChar("0x12", 0x12);
  expectChar("0XfF", 255);
  expectChar("0x1c", 0x1c);
  expectChar("0x0e", 0x0e);
}

TEST(Characters, OutsideOfAByteAreIllegal) {
  for (const char* text : {"256c", "-1c", "+256c", "100000000000c", "99999999999999999999999c"}) {
    EXPECT_EQ(vornath_test::valueFailure(text)->message,
              "Unable to parse value: " + std::string(text) + ".\nIllegal character: " + text);
  }
}

TEST(HexadecimalForms, AreExactInLength) {
  // A character and what is left over, which can't stand behind it.
  for (const auto& [text, left] :
       std::vector<std::pair<const char*, const char*>>{{"0x123", "INT"},
                                                        {"0x1234", "INT"},
                                                        {"0x12345", "INT"},
                                                        {"0x1234567", "INT"},
                                                        {"0x12ab", "LIDENT"},
                                                        {"0x12AB", "UIDENT"},
                                                        {"0x123456789", "INT"},
                                                        {"0x123456781234567", "INT"},
                                                        {"0x1", "LIDENT"},
                                                        {"0x", "LIDENT"}}) {
    EXPECT_EQ(vornath_test::valueFailure(text)->message, std::string("Unable to parse value: ") +
                                                             text + ".\nsyntax error, unexpected " +
                                                             left + ", expecting END");
  }
}

TEST(Addresses, TakeSixteenHexadecimalDigits) {
  EXPECT_EQ(addressWord("$0x0000000000000001"), 3u);
  EXPECT_EQ(addressWord("$0x1234567812345678"), UINT64_C(0x2468acf02468acf1));
  EXPECT_EQ(addressWord("$0X00000000ABCDEFab"), UINT64_C(0xABCDEFab) * 2 + 1);
  EXPECT_EQ(addressWord("$0xffffffffffffffff"), ~std::uint64_t{0});
  EXPECT_EQ(addressWord("$0x0000000000000000"), 0u);
}

TEST(Singles, NeedAPointOrAnExponent) {
  expectFloat("1.0", 1.0f);
  expectFloat("1.", 1.0f);
  expectFloat("-1.", -1.0f);
  expectFloat("+2.5", 2.5f);
  expectFloat("1e2", 100.0f);
  expectFloat("1E2", 100.0f);
  expectFloat("1.5e+2", 150.0f);
  expectFloat("1.e-2", 0.01f);
  expectFloat("-1.25E-2", -0.0125f);
  expectFloat("000.5", 0.5f);
  expectFloat("1e0000002", 100.0f);
}

TEST(Singles, AreReadToTheNearest) {
  expectFloatBits("0.0", 0x00000000);
  expectFloatBits("-0.0", 0x80000000);
  expectFloatBits("-0e0", 0x80000000);
  expectFloatBits("0.1", 0x3dcccccd);
  expectFloatBits("0.3", 0x3e99999a);
  expectFloatBits("16777217.0", 0x4b800000);
  expectFloatBits("16777219.0", 0x4b800002);
  expectFloatBits("3.4028235e38", 0x7f7fffff);
  expectFloatBits("1.17549435e-38", 0x00800000);
  expectFloatBits("1.4e-45", 0x00000001);
  expectFloatBits("0.000000059604644775390625", 0x33800000);
  expectFloatBits("1.00000017881393432617187499", 0x3f800001);
  expectFloatBits("1.00000017881393432617187501", 0x3f800002);
}

TEST(Singles, OfOddFormAreWhatAStreamExtracts) {
  for (const char* text : {"1e",
                           "1e+",
                           "1e-",
                           "1.5e",
                           "-2.E",
                           "+1.5E+",
                           "1e999",
                           "-1e999",
                           "1e39",
                           "3.5e38",
                           "1e-60",
                           "-1e-60",
                           "1e-46",
                           "1e-45",
                           "1e99999999999999999999",
                           "1e-99999999999999999999",
                           "0e999",
                           "+1.5",
                           "+0.0",
                           "+1e5",
                           "340282356779733661637539395458142568447.9",
                           "340282356779733661637539395458142568448.0",
                           "00000000000000000000000000000000000000000000000000000000000001.5"}) {
    expectFloat(text, extracted(text));
  }
}

TEST(Singles, TakeEightHexadecimalDigitsAndAPoint) {
  expectFloatBits("0x3f800000.", 0x3f800000);
  expectFloatBits("0X12345678.", 0x12345678);
  expectFloatBits("0x7f800001.", 0x7f800001);
  expectFloatBits("0xFFC00001.", 0xffc00001);
  expectFloatBits("0x00000000.", 0);
}

TEST(Singles, HaveWordsForTheInfinitiesAndForNoNumber) {
  expectFloatBits("inf", 0x7f800000);
  expectFloatBits("+inf", 0x7f800000);
  expectFloatBits("-inf", 0xff800000);
  expectFloatBits("NaN", 0x7fc00000);
}

TEST(Halves, AreAnyNumberWithALetter) {
  expectHalf("1h", 0x3c00);
  expectHalf("-1h", 0xbc00);
  expectHalf("+1.5h", 0x3e00);
  expectHalf("1.h", 0x3c00);
  expectHalf("1e1h", 0x4900);
  expectHalf("25E-2h", 0x3400);
  expectHalf("0h", 0x0000);
  expectHalf("-0.0h", 0x8000);
}

TEST(Halves, AreRoundedToTheNearestEven) {
  expectHalf("0.1h", 0x2e66);
  expectHalf("2048h", 0x6800);
  expectHalf("2049h", 0x6800);
  expectHalf("2050h", 0x6801);
  expectHalf("2051h", 0x6802);
  expectHalf("1.00048828125h", 0x3c00);
  expectHalf("1.000489h", 0x3c01);
  expectHalf("1.00146484375h", 0x3c02);
  expectHalf("65504h", 0x7bff);
  expectHalf("65519h", 0x7bff);
  expectHalf("65520h", 0x7c00);
  expectHalf("-65520h", 0xfc00);
  expectHalf("1e30h", 0x7c00);
  expectHalf("6.103515625e-05h", 0x0400);
  expectHalf("6.097555160522461e-05h", 0x03ff);
  expectHalf("5.960464477539063e-08h", 0x0001);
  expectHalf("2.980232238769531e-08h", 0x0000);
  expectHalf("2.99e-08h", 0x0001);
  expectHalf("-1e-30h", 0x8000);
}

TEST(Halves, PassThroughASingle) {
  // The nearest single of this number lies midway between two halves.
  expectHalf("1.0004882812500001h", 0x3c00);
}

TEST(Halves, OfOddFormAreWhatAStreamExtracts) {
  expectHalf("1eh", extracted("1eh") == 0.0f ? 0x0000 : 0x3c00);
  expectHalf("-1e999h", 0xfc00);
  expectHalf("1e999h", 0x7c00);
}

TEST(Halves, TakeFourHexadecimalDigitsAndAPoint) {
  expectHalf("0x1234.", 0x1234);
  expectHalf("0X3C00.", 0x3c00);
  expectHalf("0xfE01.", 0xfe01);
  expectHalf("0x7c01.", 0x7c01);
}

TEST(Halves, HaveWordsForTheInfinitiesAndForNoNumber) {
  expectHalf("infh", 0x7c00);
  expectHalf("+infh", 0x7c00);
  expectHalf("-infh", 0xfc00);
  expectHalf("NaNh", 0x7fff);
}

TEST(Names, AreLongerThanTheKeywordsWithinThem) {
  for (const char* label : {"bool5",  "float2x", "int'",   "halfh",  "enum1",  "enums", "void_",
                            "char44", "truely",  "false0", "infx",   "infh5",  "inf'",  "nan",
                            "x",      "x'y'z''", "x_9",    "bool2x", "half3_", "inf_h", "aNaN"}) {
    const TypeHandle type = parseType("{ int " + std::string(label) + "; }");
    ASSERT_NE(type, nullptr) << label;
    EXPECT_STREQ(vrntTypeFieldLabel(type.get(), 0), label);
  }
  for (const char* name :
       {"NaN1", "NaNhh", "NaN'", "TRUE", "Inf", "X", "X'", "X_9y", "Float2", "NaN_"}) {
    const TypeHandle type = parseType("enum { " + std::string(name) + "; }");
    ASSERT_NE(type, nullptr) << name;
    EXPECT_STREQ(vrntTypeConstructorName(type.get(), 0), name);
  }
}

TEST(Names, EqualToAKeywordCanNotStandAsALabel) {
  for (const char* word : {"bool",  "bool2",  "bool3",  "bool4",  "int",  "int2",  "int3",  "int4",
                           "float", "float2", "float3", "float4", "char", "char2", "char3", "char4",
                           "half",  "half2",  "half3",  "half4",  "enum", "void"}) {
    const std::string text = "{ int " + std::string(word) + "; }";
    const auto failure = vornath_test::typeFailure(text);
    ASSERT_TRUE(failure) << text;
    EXPECT_EQ(failure->message, "Unable to parse type: " + text + ".\nsyntax error, unexpected " +
                                    word + ", expecting [ or * or LIDENT");
  }
  for (const auto& [word, token] : std::vector<std::pair<const char*, const char*>>{
           {"true", "BOOL"}, {"false", "BOOL"}, {"inf", "FLOAT"}, {"infh", "HALF"}}) {
    EXPECT_EQ(vornath_test::typeFailure("{ int " + std::string(word) + "; }")->message,
              "Unable to parse type: { int " + std::string(word) +
                  "; }.\nsyntax error, unexpected " + token + ", expecting [ or * or LIDENT");
  }
  EXPECT_EQ(
      vornath_test::typeFailure("enum { NaN; }")->message,
      "Unable to parse type: enum { NaN; }.\nsyntax error, unexpected FLOAT, expecting UIDENT");
}

TEST(Keys, AreAnyNameCharacters) {
  for (const char* key :
       {"a", "A", "int", "true", "enum", "9", "'", "_", "9a", "NaN", "inf", "a'b_C9"}) {
    const TypeHandle type = parseType("float @" + std::string(key));
    ASSERT_NE(type, nullptr) << key;
    EXPECT_STREQ(vrntMetadataName(type.get(), 0), key);
  }
}

TEST(Keys, MayBeEmpty) {
  const TypeHandle alone = parseType("float @");
  EXPECT_EQ(vrntMetadataSize(alone.get()), 1u);
  EXPECT_STREQ(vrntMetadataName(alone.get(), 0), "");
  EXPECT_EQ(canonical("float @=1"), "float @=1");
  EXPECT_EQ(canonical("float @@a@"), "float @ @a");
  EXPECT_EQ(canonical("float @ @=\"x\" @b"), "float @=\"x\" @b");
}

TEST(QuotedTexts, HoldAnythingButQuotes) {
  for (const std::string& inner :
       {std::string(), std::string(" "), std::string("\\"), std::string("\\n\\t\\\\"),
        std::string("line one\nline two\r\nline three\r"), std::string("@a=1; { } [ ] // /* 'c'"),
        std::string("\xc3\xa9\xff\x80\x01\x7f\t"), std::string(20000, 'x')}) {
    const TypeHandle type = parseType("float @a=\"" + inner + "\" @b");
    ASSERT_NE(type, nullptr) << inner;
    EXPECT_EQ(vrntMetadataString(type.get(), "a"), inner);
    EXPECT_EQ(vrntMetadataExists(type.get(), "b"), 1u);
  }
}

TEST(QuotedTexts, EndAtTheFirstQuote) {
  EXPECT_EQ(canonical("float @a=\"x\\\"@b"), "float @a=\"x\\\" @b");
}

TEST(QuotedTexts, ThatStayOpenAreNoToken) {
  EXPECT_EQ(vornath_test::typeFailure("float @a=\"x; }")->message,
            "Unable to parse type: float @a=\"x; }.\nIllegal character: \"");
}

TEST(CarriageReturns, NeedANewlineBehindThem) {
  expectInt("\r\n1\r\n", 1);
  for (const std::string& text :
       {std::string("\r1"), std::string("1\r"), std::string("1\r\r\n"), std::string("\r")}) {
    EXPECT_EQ(vornath_test::valueFailure(text)->message,
              "Unable to parse value: " + text + ".\nIllegal character: \r");
  }
}

TEST(Numbers, AreReadAndPrintedWithoutTheProcessesLocale) {
  const Locales locales;
  expectFloat("1.5", 1.5f);
  expectFloat("+1.5", 1.5f);
  expectFloat("1234567.5", 1234567.5f);
  expectFloat("1.5e3", 1500.0f);
  expectHalf("2.5h", 0x4100);
  expectInt("1234567", 1234567);
  EXPECT_TRUE(vornath_test::valueFailure("1,5"));
  EXPECT_EQ(canonical("float[1234567] @max=1234.5 @min=-1234567"),
            "float[1234567] @max=1234.5 @min=-1234567");
}
