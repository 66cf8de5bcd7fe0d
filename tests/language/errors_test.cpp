// Every failing text of errors/ gives exactly the message that stands beside it there.
//
// A file holds blocks of: a line "type" or "value", the text, a line "----", the message, a line
// "====". Behind "type escaped" both parts are one line each with \n, \r, \t, \\ and \xHH. Lines
// between blocks are remarks.
#include <gtest/gtest.h>

#include <boost/thread/mutex.hpp>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "support/flat_handles.hpp"
#include "vornath_data/type_library.hpp"

namespace {

struct Case {
  int line = 0;
  bool isType = false;
  std::string text;
  std::string message;
};

std::string unescaped(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      result += text[i];
      continue;
    }
    switch (text.at(++i)) {
      case 'n':
        result += '\n';
        break;
      case 'r':
        result += '\r';
        break;
      case 't':
        result += '\t';
        break;
      case '\\':
        result += '\\';
        break;
      case 'x':
        result += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
        i += 2;
        break;
      default:
        ADD_FAILURE() << "unknown escape in " << text;
    }
  }
  return result;
}

std::vector<Case> readCases(const std::string& file) {
  std::vector<Case> cases;
  std::ifstream in(std::filesystem::path(LANGUAGE_TESTS) / "errors" / file, std::ios::binary);
  EXPECT_TRUE(in) << file;
  const auto readUntil = [&in](std::string_view mark, int& line) {
    std::string part;
    std::string next;
    while (std::getline(in, next) && next != mark) {
      ++line;
      if (!part.empty()) part += '\n';
      part += next;
    }
    ++line;
    return part;
  };
  std::string head;
  for (int line = 1; std::getline(in, head); ++line) {
    if (head != "type" && head != "value" && head != "type escaped" && head != "value escaped") {
      continue;
    }
    Case next;
    next.line = line;
    next.isType = head[0] == 't';
    next.text = readUntil("----", line);
    next.message = readUntil("====", line);
    if (head.back() == 'd') {
      next.text = unescaped(next.text);
      next.message = unescaped(next.message);
    }
    EXPECT_FALSE(next.message.empty()) << file << ":" << next.line;
    cases.push_back(std::move(next));
  }
  return cases;
}

class FailingTexts : public testing::TestWithParam<const char*> {};

}  // namespace

TEST_P(FailingTexts, GiveTheExactMessage) {
  const std::vector<Case> cases = readCases(std::string(GetParam()) + ".txt");
  ASSERT_GT(cases.size(), 10u);
  for (const Case& each : cases) {
    SCOPED_TRACE(std::string(GetParam()) + ".txt:" + std::to_string(each.line) + ": " + each.text);
    const auto failure =
        each.isType ? vornath_test::typeFailure(each.text) : vornath_test::valueFailure(each.text);
    if (!failure) {
      ADD_FAILURE() << "parsed, instead of: " << each.message;
      continue;
    }
    EXPECT_EQ(failure->message, each.message);
    EXPECT_EQ(failure->kind, 0u);
  }
}

TEST_P(FailingTexts, LeaveTheParserFreeAndReadyForTheNextText) {
  const auto before = vornath_test::parseType("{ int held_throughout; }");
  for (const Case& each : readCases(std::string(GetParam()) + ".txt")) {
    SCOPED_TRACE(std::string(GetParam()) + ".txt:" + std::to_string(each.line));
    if (each.isType) {
      vornath_test::typeFailure(each.text);
    } else {
      vornath_test::valueFailure(each.text);
    }
    const bool isFree = qex::vornath::parser_mutex.try_lock();
    ASSERT_TRUE(isFree);
    qex::vornath::parser_mutex.unlock();
    // Another spelling, so that the answer comes from a parse.
    ASSERT_EQ(vornath_test::parseType("{ int  held_throughout; }").get(), before.get());
    ASSERT_EQ(vornath_test::readAt<std::int32_t>(vornath_test::parseValue("17")), 17);
  }
}

INSTANTIATE_TEST_SUITE_P(
    OfEachTopic, FailingTexts,
    testing::Values("illegal_characters", "type_array", "type_enum", "type_function",
                    "type_metadata", "type_start", "type_struct", "value_array", "value_enum",
                    "value_reference", "value_start", "value_struct", "value_vectors"),
    [](const testing::TestParamInfo<const char*>& topic) { return std::string(topic.param); });

TEST(FailingTextFiles, AreAllRead) {
  std::size_t files = 0;
  for (const auto& file :
       std::filesystem::directory_iterator(std::filesystem::path(LANGUAGE_TESTS) / "errors")) {
    files += file.path().extension() == ".txt";
  }
  EXPECT_EQ(files, 13u);
}
