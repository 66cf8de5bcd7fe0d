#include "vornath_data/result.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace {

using vrnt::ErrorCode;
using vrnt::ErrorRecord;
using vrnt::Exception;
using vrnt::Result;

struct CodeText {
  int code;
  const char* text;
};

constexpr CodeText kCodeTexts[] = {
    {0, "No error"},
    {1, "Input arguments are invalid"},
    {2, "Invalid operation"},
    {3, "Feature is not supported"},
    {4, "Parse failed"},
    {5, "Compilation failed"},
    {6, "Buffer type does not match"},
    {7, "Invalid filesystem path"},
    {8, "Directory not found"},
    {9, "File not found"},
    {10, "IO error"},
    {11, "Access is denied"},
    {12, "Connection failed"},
    {13, "Operation timed out"},
    {14, "Missing buffer binding"},
    {15, "CPU is not supported"},
    {16, "GPU is not supported"},
    {17, "Out of graphics memory"},
    {18, "Version mismatch"},
    {19, "Internal error"},
    {20, "Memory allocation failure"},
    {21, "Unrecoverable state after previous error"},
    {22, "Operation was cancelled"},
    {24, "String encoding error"},
    {25, "Unknown error"},
};

TEST(ErrorCode, HasItsNumbers) {
  EXPECT_EQ(static_cast<int>(ErrorCode::NoError), 0);
  EXPECT_EQ(static_cast<int>(ErrorCode::InvalidArguments), 1);
  EXPECT_EQ(static_cast<int>(ErrorCode::InvalidOperation), 2);
  EXPECT_EQ(static_cast<int>(ErrorCode::NotSupported), 3);
  EXPECT_EQ(static_cast<int>(ErrorCode::ParseFailed), 4);
  EXPECT_EQ(static_cast<int>(ErrorCode::CompilationFailed), 5);
  EXPECT_EQ(static_cast<int>(ErrorCode::BufferTypeMismatch), 6);
  EXPECT_EQ(static_cast<int>(ErrorCode::InvalidPath), 7);
  EXPECT_EQ(static_cast<int>(ErrorCode::DirectoryNotFound), 8);
  EXPECT_EQ(static_cast<int>(ErrorCode::FileNotFound), 9);
  EXPECT_EQ(static_cast<int>(ErrorCode::IoError), 10);
  EXPECT_EQ(static_cast<int>(ErrorCode::AccessDenied), 11);
  EXPECT_EQ(static_cast<int>(ErrorCode::ConnectionFailed), 12);
  EXPECT_EQ(static_cast<int>(ErrorCode::TimedOut), 13);
  EXPECT_EQ(static_cast<int>(ErrorCode::MissingBufferBinding), 14);
  EXPECT_EQ(static_cast<int>(ErrorCode::CpuNotSupported), 15);
  EXPECT_EQ(static_cast<int>(ErrorCode::GpuNotSupported), 16);
  EXPECT_EQ(static_cast<int>(ErrorCode::OutOfGraphicsMemory), 17);
  EXPECT_EQ(static_cast<int>(ErrorCode::VersionMismatch), 18);
  EXPECT_EQ(static_cast<int>(ErrorCode::InternalError), 19);
  EXPECT_EQ(static_cast<int>(ErrorCode::MemoryAllocationFailure), 20);
  EXPECT_EQ(static_cast<int>(ErrorCode::UnrecoverableState), 21);
  EXPECT_EQ(static_cast<int>(ErrorCode::Cancelled), 22);
  EXPECT_EQ(static_cast<int>(ErrorCode::StringEncodingError), 24);
  EXPECT_EQ(static_cast<int>(ErrorCode::UnknownError), 25);
  EXPECT_EQ(sizeof(ErrorCode), 4U);
}

TEST(Exception, WithoutTextReportsTheTextOfItsCode) {
  for (const auto& [code, text] : kCodeTexts) {
    EXPECT_STREQ(Exception(static_cast<ErrorCode>(code)).what(), text) << code;
  }
}

TEST(Exception, WithACodeOutsideTheTableReportsUnknownError) {
  for (const int code : {-1, 23, 26, 99, 1 << 30}) {
    EXPECT_STREQ(Exception(static_cast<ErrorCode>(code)).what(), "Unknown error") << code;
    EXPECT_EQ(static_cast<int>(Exception(static_cast<ErrorCode>(code)).code()), code);
  }
}

TEST(Exception, ReportsItsOwnTextAndKeepsTheCode) {
  const Exception exception(ErrorCode::IoError, "disk on fire");
  EXPECT_STREQ(exception.what(), "disk on fire");
  EXPECT_EQ(exception.code(), ErrorCode::IoError);
  EXPECT_EQ(exception.record().length(), 12U);
}

TEST(Exception, TakesAnEmptyOrNullTextForNone) {
  for (const Exception& exception :
       {Exception(ErrorCode::InvalidArguments, ""),
        Exception(ErrorCode::InvalidArguments, static_cast<const char*>(nullptr)),
        Exception(ErrorCode::InvalidArguments, std::string())}) {
    EXPECT_STREQ(exception.what(), "Input arguments are invalid");
    EXPECT_EQ(exception.record().message(), nullptr);
    EXPECT_EQ(exception.record().length(), 0U);
  }
}

TEST(Exception, CopiesTheTextThatItIsGiven) {
  std::string text = "first words";
  const Exception exception(ErrorCode::IoError, text.c_str());
  text = "other words";
  EXPECT_STREQ(exception.what(), "first words");
}

TEST(Exception, PutsOneToThreeArgumentsIntoItsFormat) {
  EXPECT_STREQ(Exception(ErrorCode::InvalidArguments, "Field not found: {}.", "x").what(),
               "Field not found: x.");
  EXPECT_STREQ(Exception(ErrorCode::InvalidArguments, "{} of {}", 3, std::string("four")).what(),
               "3 of four");
  EXPECT_STREQ(Exception(ErrorCode::InvalidArguments, "{}/{}/{}", -1, 2U, 2.5).what(), "-1/2/2.5");
}

TEST(Exception, FormatsEachKindOfArgumentInItsOwnWay) {
  const auto formatted = [](const auto& argument) {
    return std::string(Exception(ErrorCode::InvalidArguments, "<{}>", argument).what());
  };
  EXPECT_EQ(formatted(true), "<true>");
  EXPECT_EQ(formatted('c'), "<c>");
  EXPECT_EQ(formatted(static_cast<std::uint8_t>(200)), "<200>");
  EXPECT_EQ(formatted(static_cast<std::int16_t>(-5)), "<-5>");
  EXPECT_EQ(formatted(std::int64_t{-9223372036854775807}), "<-9223372036854775807>");
  EXPECT_EQ(formatted(std::uint64_t{18446744073709551615U}), "<18446744073709551615>");
  EXPECT_EQ(formatted(0.1F), "<0.1>") << "a float prints with the digits of a float";
  EXPECT_EQ(formatted(0.1), "<0.1>");
  EXPECT_EQ(formatted(std::string_view("view")), "<view>");
}

TEST(Exception, KeepsBracesInItsArguments) {
  EXPECT_STREQ(
      Exception(ErrorCode::ParseFailed, "Unable to parse type: {}.\n{}", "{}", "{0}").what(),
      "Unable to parse type: {}.\n{0}");
}

TEST(Exception, WithAFormatThatComesOutEmptyReportsTheTextOfItsCode) {
  const Exception exception(ErrorCode::IoError, "{}", "");
  EXPECT_STREQ(exception.what(), "IO error");
  EXPECT_EQ(exception.record().message(), nullptr);
}

TEST(Exception, TakesTheTextOfARecordOver) {
  ErrorRecord record(ErrorCode::VersionMismatch, "too new");
  const char* text = record.message();
  const Exception exception(std::move(record));
  EXPECT_EQ(exception.what(), text);
  EXPECT_EQ(exception.code(), ErrorCode::VersionMismatch);
}

TEST(Exception, IsCaughtAsAStandardException) {
  try {
    throw Exception(ErrorCode::Cancelled, "enough");
  } catch (const std::exception& caught) {
    EXPECT_STREQ(caught.what(), "enough");
  }
}

TEST(Exception, CopiesHoldTheirOwnText) {
  auto original = std::make_unique<Exception>(ErrorCode::IoError, "kept");
  const Exception copy(*original);
  Exception assigned(ErrorCode::NoError);
  assigned = *original;
  original.reset();
  EXPECT_STREQ(copy.what(), "kept");
  EXPECT_STREQ(assigned.what(), "kept");
  EXPECT_EQ(assigned.code(), ErrorCode::IoError);
}

TEST(ErrorRecord, StartsAsNoErrorWithoutText) {
  const ErrorRecord record;
  EXPECT_EQ(record.code(), ErrorCode::NoError);
  EXPECT_EQ(record.message(), nullptr);
  EXPECT_EQ(record.length(), 0U);
}

TEST(ErrorRecord, HoldsCodeMessageAndLength) {
  const ErrorRecord record(ErrorCode::FileNotFound, "no such file");
  EXPECT_EQ(record.code(), ErrorCode::FileNotFound);
  EXPECT_STREQ(record.message(), "no such file");
  EXPECT_EQ(record.length(), std::strlen("no such file"));
}

TEST(ErrorRecord, TerminatesATextThatIsCutOutOfALongerOne) {
  const ErrorRecord record(ErrorCode::FileNotFound, std::string_view("no such file", 7));
  EXPECT_STREQ(record.message(), "no such");
  EXPECT_EQ(record.length(), 7U);
}

TEST(ErrorRecord, CopyDuplicatesTheText) {
  const ErrorRecord record(ErrorCode::IoError, "text");
  const ErrorRecord copy(record);
  EXPECT_STREQ(copy.message(), "text");
  EXPECT_NE(copy.message(), record.message());
  EXPECT_EQ(copy.code(), ErrorCode::IoError);
}

TEST(ErrorRecord, MoveTakesTheTextAndLeavesNone) {
  ErrorRecord record(ErrorCode::IoError, "text");
  const char* text = record.message();
  const ErrorRecord moved(std::move(record));
  EXPECT_EQ(moved.message(), text);
  EXPECT_EQ(moved.length(), 4U);
  EXPECT_EQ(record.message(), nullptr);  // NOLINT(bugprone-use-after-move): what is left matters
  EXPECT_EQ(record.length(), 0U);
}

TEST(ErrorRecord, AssignmentReplacesCodeAndText) {
  ErrorRecord record(ErrorCode::IoError, "old");
  const ErrorRecord other(ErrorCode::TimedOut, "newer");
  record = other;
  EXPECT_STREQ(record.message(), "newer");
  EXPECT_EQ(record.length(), 5U);
  EXPECT_EQ(record.code(), ErrorCode::TimedOut);

  ErrorRecord source(ErrorCode::Cancelled, "newest");
  record = std::move(source);
  EXPECT_STREQ(record.message(), "newest");
  EXPECT_EQ(record.code(), ErrorCode::Cancelled);
  EXPECT_EQ(source.message(), nullptr);  // NOLINT(bugprone-use-after-move): what is left matters
}

TEST(ErrorRecord, SurvivesAssignmentToItself) {
  ErrorRecord record(ErrorCode::IoError, "text");
  ErrorRecord& alias = record;
  record = alias;
  EXPECT_STREQ(record.message(), "text");
  record = std::move(alias);
  EXPECT_STREQ(record.message(), "text");
  EXPECT_EQ(record.code(), ErrorCode::IoError);
}

TEST(Result, OfASuccessHasTheValueAndARecordWithoutError) {
  const Result<std::string> result(std::string("value"));
  ASSERT_TRUE(result.hasValue());
  EXPECT_TRUE(static_cast<bool>(result));
  EXPECT_EQ(*result, "value");
  EXPECT_EQ(result->size(), 5U);
  EXPECT_EQ(result.error().code(), ErrorCode::NoError);
  EXPECT_EQ(result.error().message(), nullptr);
}

TEST(Result, OfAFailureHasTheCodeAndTheText) {
  const Result<int> result(ErrorCode::IoError, "cannot read");
  EXPECT_FALSE(result.hasValue());
  EXPECT_EQ(result.error().code(), ErrorCode::IoError);
  EXPECT_STREQ(result.error().message(), "cannot read");
}

TEST(Result, RaisesACopyOfItsRecordWhenTheValueOfAFailureIsRead) {
  Result<int> result(ErrorCode::IoError, "cannot read");
  for (int reading = 0; reading < 2; ++reading) {
    try {
      static_cast<void>(result.value());
      FAIL() << "no exception";
    } catch (const Exception& caught) {
      EXPECT_EQ(caught.code(), ErrorCode::IoError);
      EXPECT_STREQ(caught.what(), "cannot read");
      EXPECT_NE(caught.what(), result.error().message());
    }
  }
  EXPECT_THROW(static_cast<void>(*std::move(result)), Exception);
}

TEST(Result, OfAFailureWithoutTextRaisesTheTextOfTheCode) {
  const Result<int> result(ErrorCode::MemoryAllocationFailure);
  try {
    static_cast<void>(*result);
    FAIL() << "no exception";
  } catch (const Exception& caught) {
    EXPECT_STREQ(caught.what(), "Memory allocation failure");
  }
}

TEST(Result, GivesItsValueAway) {
  Result<std::unique_ptr<int>> result(std::make_unique<int>(7));
  const std::unique_ptr<int> value = std::move(result).value();
  EXPECT_EQ(*value, 7);
}

TEST(VornathValuesAssertionFailure, IsAStandardException) {
  EXPECT_THROW(throw VornathValuesAssertionFailure(), std::exception);
  EXPECT_EQ(sizeof(VornathValuesAssertionFailure), sizeof(std::exception)) << "no state of its own";
}

}  // namespace
