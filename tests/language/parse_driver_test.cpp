// A run of the parser from inside: its status, its context, and the codes of what it raises.
#include "language/parse_driver.hpp"

#include <gtest/gtest.h>

#include <boost/thread/mutex.hpp>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "language/parse_context.hpp"
#include "language/scanner.hpp"
#include "types/type_factory.hpp"
#include "values/value_parser.hpp"
#include "vornath_data/result.hpp"

using qex::vornath::DynamicValue;
using qex::vornath::ParseContext;
using qex::vornath::parser_mutex;
using qex::vornath::Type;
using qex::vornath::TypePtr;

namespace {

bool parserIsFree() {
  const bool isFree = parser_mutex.try_lock();
  if (isFree) parser_mutex.unlock();
  return isFree;
}

// The code and the words of what a call raises; NoError if it raises nothing.
template <typename Call>
std::pair<vrnt::ErrorCode, std::string> thrownBy(Call call) {
  try {
    call();
  } catch (const vrnt::Exception& failure) {
    return {failure.code(), failure.what()};
  }
  return {vrnt::ErrorCode::NoError, ""};
}

}  // namespace

TEST(Scan, TakesTextsThatAnIntCounts) {
  using qex::vornath::Scan;
  constexpr std::size_t kMost = 0x7FFFFFFF;  // with the two bytes that the scanner wants behind it
  for (const std::size_t length : {std::size_t{0}, std::size_t{1}, kMost - 3, kMost - 2}) {
    EXPECT_NO_THROW(Scan::requireScannable(length)) << length;
  }
  // The last ones are small numbers in 32 bits.
  for (const std::size_t length :
       {kMost - 1, kMost, kMost + 1, 2 * kMost, 2 * kMost + 2, 2 * kMost + 12, ~std::size_t{0}}) {
    EXPECT_THROW(Scan::requireScannable(length), std::bad_alloc) << length;
  }
}

TEST(ParseTypeText, ReturnsZeroAndTheType) {
  ParseContext context;
  TypePtr type;
  EXPECT_EQ(qex::vornath::parseTypeText(context, "float  [3]", type), 0);
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type->text(), "float[3]");
  EXPECT_EQ(context.type, type);
  EXPECT_FALSE(context.value);
  EXPECT_EQ(context.error, "");
  EXPECT_TRUE(parserIsFree());
}

TEST(ParseTypeText, ReturnsAStatusAndLeavesTheTypeAsItWasOnAnError) {
  ParseContext context;
  const TypePtr before = Type::get_factory(true)->parseType("int");
  TypePtr type = before;
  EXPECT_NE(qex::vornath::parseTypeText(context, "float[", type), 0);
  EXPECT_EQ(type, before);
  EXPECT_EQ(context.error, "syntax error, unexpected END, expecting ] or \",\" or INT");
  EXPECT_TRUE(parserIsFree());
}

TEST(ParseTypeText, StoresTheWordsOfAnIllegalCharacter) {
  ParseContext context;
  TypePtr type;
  EXPECT_NE(qex::vornath::parseTypeText(context, "float ?", type), 0);
  EXPECT_EQ(context.error, "Illegal character: ?");
  EXPECT_NE(qex::vornath::parseTypeText(context, "float[300c]", type), 0);
  EXPECT_EQ(context.error, "Illegal character: 300c");
  EXPECT_EQ(type, nullptr);
}

TEST(ParseTypeText, LetsABrokenRuleThroughAndFreesTheParser) {
  ParseContext context;
  TypePtr type;
  const auto failure =
      thrownBy([&] { qex::vornath::parseTypeText(context, "{ int x; int x; }", type); });
  EXPECT_EQ(failure.first, vrnt::ErrorCode::InvalidArguments);
  EXPECT_EQ(failure.second, "Duplicate struct field: x.");
  EXPECT_EQ(type, nullptr);
  EXPECT_TRUE(parserIsFree());
  EXPECT_EQ(qex::vornath::parseTypeText(context, "{ int x; }", type), 0);
}

TEST(ParseTypeText, DoesNotReadValueText) {
  ParseContext context;
  TypePtr type;
  EXPECT_NE(qex::vornath::parseTypeText(context, "1", type), 0);
  EXPECT_EQ(context.error, "syntax error, unexpected INT");
}

TEST(ParseValueText, ReturnsZeroAndTheValue) {
  ParseContext context;
  std::optional<DynamicValue> value;
  EXPECT_EQ(qex::vornath::parseValueText(context, "[ 1, 2 ]", value), 0);
  EXPECT_TRUE(value);
  EXPECT_TRUE(context.value);
  EXPECT_EQ(context.type, nullptr);
  EXPECT_EQ(context.error, "");
  EXPECT_TRUE(parserIsFree());
}

TEST(ParseValueText, ReturnsAStatusAndLeavesTheValueAsItWasOnAnError) {
  ParseContext context;
  std::optional<DynamicValue> value;
  EXPECT_NE(qex::vornath::parseValueText(context, "float", value), 0);
  EXPECT_FALSE(value);
  EXPECT_EQ(context.error, "syntax error, unexpected float");
  EXPECT_TRUE(parserIsFree());
}

TEST(Parsing, StartsAfreshAfterAFailureOfTheOtherKind) {
  ParseContext context;
  TypePtr type;
  std::optional<DynamicValue> value;
  EXPECT_NE(qex::vornath::parseValueText(context, "", value), 0);
  EXPECT_EQ(qex::vornath::parseTypeText(context, "int", type), 0);
  EXPECT_NE(qex::vornath::parseTypeText(context, "", type), 0);
  EXPECT_EQ(qex::vornath::parseValueText(context, "1", value), 0);
  EXPECT_NE(qex::vornath::parseTypeText(context, "\"", type), 0);
  EXPECT_EQ(qex::vornath::parseValueText(context, "2", value), 0);
}

TEST(Parsing, RaisesParseFailedForATextThatIsNotOfTheLanguage) {
  for (const char* text : {"", "float[", "float ?", "float[300c]", "float x"}) {
    EXPECT_EQ(thrownBy([&] { Type::get_factory(true)->parseType(text); }).first,
              vrnt::ErrorCode::ParseFailed)
        << text;
  }
  for (const char* text : {"", "[ ]", "1 ?", "300c", "1 2"}) {
    EXPECT_EQ(thrownBy([&] { qex::vornath::parseValue(text); }).first, vrnt::ErrorCode::ParseFailed)
        << text;
  }
}

TEST(Parsing, RaisesInvalidArgumentsForABrokenRule) {
  for (const char* text : {"{ int x; int x; }", "enum { A; A; }", "{ int[] x; }", "int[][]",
                           "int[-1]", "int @a=X : enum { A; }", "int @a=[ 1, 1.0 ]"}) {
    EXPECT_EQ(thrownBy([&] { Type::get_factory(true)->parseType(text); }).first,
              vrnt::ErrorCode::InvalidArguments)
        << text;
  }
  for (const char* text : {"{ x = 1; x = 1; }", "X : enum { A; }", "[ 1 | 2 ]", "[ 1 : float ]",
                           "[ : int[] ]", "[ : int | -1 ]"}) {
    EXPECT_EQ(thrownBy([&] { qex::vornath::parseValue(text); }).first,
              vrnt::ErrorCode::InvalidArguments)
        << text;
  }
}
