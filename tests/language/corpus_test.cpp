// A canonical text parses to itself, over every line of corpus/.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/flat_handles.hpp"

namespace {

using vornath_test::parseType;
using vornath_test::parseValue;
using vornath_test::StringHandle;
using vornath_test::TypeHandle;
using vornath_test::ValueHandle;

std::vector<std::string> readLines(const char* file) {
  std::vector<std::string> lines;
  std::ifstream in(std::filesystem::path(LANGUAGE_TESTS) / "corpus" / file, std::ios::binary);
  EXPECT_TRUE(in) << file;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line[0] != '#') lines.push_back(line);
  }
  return lines;
}

bool hasValues(const std::string& text) {
  // Outside of texts in quotes an annotation's value follows its equals sign.
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') quoted = !quoted;
    if (!quoted && text[i] == '=' && text[i + 1] != '"' && text[i + 1] != '>') return true;
  }
  return false;
}

std::string printed(const ValueHandle& value, std::uint32_t flags) {
  const vrntValueView_t whole{vrntValueType(value.get()), 0};
  vrntValuesError_t* error = nullptr;
  const StringHandle text(vrntValueString(value.get(), &whole, flags, &error));
  const vornath_test::ErrorHandle owner(error);
  EXPECT_EQ(error, nullptr);
  return text ? text.get() : "";
}

// The same type in another spelling: blanks around every mark outside of texts in quotes.
std::string spacedOut(const std::string& text) {
  std::string result = " ";
  bool quoted = false;
  for (const char c : text) {
    const bool isMark = std::string("()[]{},;*").find(c) != std::string::npos;
    if (c == '"') quoted = !quoted;
    if (!quoted && isMark) result += "\r\n ";
    result += c;
    if (!quoted && isMark) result += " \t\n";
  }
  return result;
}

}  // namespace

TEST(CanonicalTypeTexts, ParseToThemselves) {
  const std::vector<std::string> lines = readLines("types.txt");
  ASSERT_GT(lines.size(), 60u);
  for (const std::string& line : lines) {
    const TypeHandle type = parseType(line);
    ASSERT_NE(type, nullptr) << line;
    EXPECT_EQ(vrntTypeString(type.get()), line);
    EXPECT_EQ(parseType(line).get(), type.get()) << line;
  }
}

TEST(CanonicalTypeTexts, ComeFromEverySpelling) {
  for (const std::string& line : readLines("types.txt")) {
    const TypeHandle type = parseType(line);
    const TypeHandle spaced = parseType(spacedOut(line));
    ASSERT_NE(spaced, nullptr) << line;
    EXPECT_EQ(vrntTypeString(spaced.get()), line);
    EXPECT_EQ(spaced.get() == type.get(), !hasValues(line)) << line;
    EXPECT_NE(vrntTypeIsEqual(spaced.get(), type.get()), 0) << line;
  }
}

TEST(CanonicalTypeTexts, OfTwinsParseToThemselves) {
  for (const std::string& line : readLines("types.txt")) {
    const TypeHandle type = parseType(line);
    const TypeHandle twin(vrntTypeStripMetadata(type.get()));
    const std::string text = vrntTypeString(twin.get());
    EXPECT_EQ(text.find('@'), std::string::npos) << line;
    EXPECT_EQ(parseType(text).get(), twin.get()) << line;
    EXPECT_EQ(vrntTypeSize(type.get()), vrntTypeSize(twin.get())) << line;
  }
}

TEST(CanonicalValueTexts, ParseToThemselves) {
  const std::vector<std::string> lines = readLines("values.txt");
  ASSERT_GT(lines.size(), 60u);
  for (const std::string& line : lines) {
    const ValueHandle value = parseValue(line);
    ASSERT_NE(value, nullptr) << line;
    EXPECT_EQ(printed(value, 0), line);
  }
}

TEST(CanonicalValueTexts, StandInTypeTextsUnchanged) {
  for (const std::string& line : readLines("values.txt")) {
    const TypeHandle type = parseType("{ float @z   @default=" + line + " x; }");
    ASSERT_NE(type, nullptr) << line;
    EXPECT_EQ(vrntTypeString(type.get()), "{ float @default=" + line + " @z x; }");
  }
}

TEST(ValueTexts, OnSeveralLinesParseToTheSameValue) {
  for (const std::string& line : readLines("values.txt")) {
    const ValueHandle value = parseValue(line);
    const ValueHandle again = parseValue(printed(value, VRNT_STRING_MULTILINE));
    ASSERT_NE(again, nullptr) << line;
    EXPECT_EQ(printed(again, 0), line);
  }
}

TEST(ValueTexts, ByBitsParseToTheSameBytes) {
  for (const char* text : {"1.5", "-0.0", "inf", "-inf", "NaN", "0x7f800001.", "0xffc12345.", "0.1",
                           "1e-45", "0.1h", "-infh", "NaNh", "0x7c01.", "0xfe12.", "0x0001."}) {
    const ValueHandle value = parseValue(text);
    const ValueHandle again = parseValue(printed(value, VRNT_STRING_EXACT));
    ASSERT_NE(again, nullptr) << text;
    ASSERT_EQ(vrntValueType(again.get()), vrntValueType(value.get())) << text;
    EXPECT_EQ(std::memcmp(vrntValueData(again.get()), vrntValueData(value.get()),
                          vrntTypeSize(vrntValueType(value.get()))),
              0)
        << text;
  }
}
