#include "foundation/boundary.hpp"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "support/allocations.hpp"

namespace {

using qex::vornath::outOfMemoryError;
using qex::vornath::reportEveryError;
using qex::vornath::reportLibraryErrorsOrUnknown;
using qex::vornath::reportOutOfMemoryOrOther;
using vornath_test::FailingAllocations;

// What a template made of one thrown object.
struct Outcome {
  Outcome() = default;
  Outcome(const Outcome&) = delete;
  Outcome& operator=(const Outcome&) = delete;
  ~Outcome() { vrntValuesErrorDestroy(error); }

  int result = 0;
  vrntValuesError_t* error = nullptr;
};

constexpr int kFailure = -7;

void throwLibraryError() {
  throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, "bad argument");
}
void throwLibraryErrorWithoutText() { throw vrnt::Exception(vrnt::ErrorCode::IoError); }
void throwBadAlloc() { throw std::bad_alloc(); }
void throwStandardError() { throw std::out_of_range("too far"); }
void throwForeign() { throw 42; }

#define EXPECT_REPORTS(report, thrower, kind, message)                               \
  do {                                                                               \
    Outcome outcome;                                                                 \
    outcome.result = report(&outcome.error, kFailure, []() -> int {                  \
      thrower();                                                                     \
      return 1;                                                                      \
    });                                                                              \
    EXPECT_EQ(outcome.result, kFailure);                                             \
    ASSERT_NE(outcome.error, nullptr);                                               \
    EXPECT_EQ(vrntValuesErrorCode(outcome.error), static_cast<std::uint32_t>(kind)); \
    EXPECT_STREQ(vrntValuesErrorMessage(outcome.error), message);                    \
  } while (false)

#define EXPECT_PASSES_FOREIGN(report)                       \
  do {                                                      \
    Outcome outcome;                                        \
    const auto run = [&] {                                  \
      return report(&outcome.error, kFailure, []() -> int { \
        throwForeign();                                     \
        return 1;                                           \
      });                                                   \
    };                                                      \
    EXPECT_THROW(run(), int);                               \
    EXPECT_EQ(outcome.error, nullptr);                      \
  } while (false)

#define EXPECT_LEAVES_LOCATION_ON_SUCCESS(report)                \
  do {                                                           \
    vrntValuesError_t* const before = &outOfMemoryError;         \
    vrntValuesError_t* location = before;                        \
    EXPECT_EQ(report(&location, kFailure, [] { return 5; }), 5); \
    EXPECT_EQ(location, before);                                 \
  } while (false)

// The second allocation failure comes while the first failure is being reported.
#define EXPECT_REPORTS_WITHOUT_MEMORY(report)                                                \
  do {                                                                                       \
    vrntValuesError_t* error = nullptr;                                                      \
    int result = 0;                                                                          \
    {                                                                                        \
      const std::logic_error prepared("words that are too long to stand inside a string");   \
      const FailingAllocations failing;                                                      \
      result = report(&error, kFailure, [&]() -> int { throw std::logic_error(prepared); }); \
    }                                                                                        \
    EXPECT_EQ(result, kFailure);                                                             \
    EXPECT_EQ(error, &outOfMemoryError);                                                     \
  } while (false)

TEST(ReportLibraryErrorsOrUnknown, ReportsALibraryErrorWithItsWords) {
  EXPECT_REPORTS(reportLibraryErrorsOrUnknown, throwLibraryError, 0, "bad argument");
  EXPECT_REPORTS(reportLibraryErrorsOrUnknown, throwLibraryErrorWithoutText, 0, "IO error");
}
TEST(ReportLibraryErrorsOrUnknown, ReportsAFailedAllocationAsOutOfMemory) {
  EXPECT_REPORTS(reportLibraryErrorsOrUnknown, throwBadAlloc, 1, "Out of memory.");
}
TEST(ReportLibraryErrorsOrUnknown, ReportsAnythingElseAsUnknown) {
  EXPECT_REPORTS(reportLibraryErrorsOrUnknown, throwStandardError, 2, "Unknown error.");
  EXPECT_REPORTS(reportLibraryErrorsOrUnknown, throwForeign, 2, "Unknown error.");
}
TEST(ReportLibraryErrorsOrUnknown, LeavesTheLocationUntouchedOnSuccess) {
  EXPECT_LEAVES_LOCATION_ON_SUCCESS(reportLibraryErrorsOrUnknown);
}
TEST(ReportLibraryErrorsOrUnknown, ReportsOutOfMemoryWhenThereIsNoneForTheReport) {
  EXPECT_REPORTS_WITHOUT_MEMORY(reportLibraryErrorsOrUnknown);
}

TEST(ReportEveryError, ReportsALibraryErrorWithItsWords) {
  EXPECT_REPORTS(reportEveryError, throwLibraryError, 0, "bad argument");
}
TEST(ReportEveryError, ReportsAFailedAllocationAsOutOfMemory) {
  EXPECT_REPORTS(reportEveryError, throwBadAlloc, 1, "Out of memory.");
}
TEST(ReportEveryError, ReportsAStandardErrorWithItsWords) {
  EXPECT_REPORTS(reportEveryError, throwStandardError, 2, "too far");
}
TEST(ReportEveryError, ReportsAnythingElseAsUnknown) {
  EXPECT_REPORTS(reportEveryError, throwForeign, 2, "Unknown error.");
}
TEST(ReportEveryError, LeavesTheLocationUntouchedOnSuccess) {
  EXPECT_LEAVES_LOCATION_ON_SUCCESS(reportEveryError);
}
TEST(ReportEveryError, ReportsOutOfMemoryWhenThereIsNoneForTheReport) {
  EXPECT_REPORTS_WITHOUT_MEMORY(reportEveryError);
}

TEST(ReportOutOfMemoryOrOther, ReportsALibraryErrorAsOther) {
  EXPECT_REPORTS(reportOutOfMemoryOrOther, throwLibraryError, 2, "bad argument");
}
TEST(ReportOutOfMemoryOrOther, ReportsAFailedAllocationAsOutOfMemory) {
  EXPECT_REPORTS(reportOutOfMemoryOrOther, throwBadAlloc, 1, "Out of memory.");
}
TEST(ReportOutOfMemoryOrOther, ReportsAStandardErrorWithItsWords) {
  EXPECT_REPORTS(reportOutOfMemoryOrOther, throwStandardError, 2, "too far");
}
TEST(ReportOutOfMemoryOrOther, LetsAnythingElsePass) {
  EXPECT_PASSES_FOREIGN(reportOutOfMemoryOrOther);
}
TEST(ReportOutOfMemoryOrOther, LeavesTheLocationUntouchedOnSuccess) {
  EXPECT_LEAVES_LOCATION_ON_SUCCESS(reportOutOfMemoryOrOther);
}
TEST(ReportOutOfMemoryOrOther, ReportsOutOfMemoryWhenThereIsNoneForTheReport) {
  EXPECT_REPORTS_WITHOUT_MEMORY(reportOutOfMemoryOrOther);
}
TEST(ReportOutOfMemoryOrOther, TakesAWorkWithoutResult) {
  vrntValuesError_t* error = nullptr;
  bool ran = false;
  reportOutOfMemoryOrOther(&error, [&] { ran = true; });
  EXPECT_TRUE(ran);
  EXPECT_EQ(error, nullptr);

  reportOutOfMemoryOrOther(&error, [] { throwStandardError(); });
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), 2U);
  EXPECT_STREQ(vrntValuesErrorMessage(error), "too far");
  vrntValuesErrorDestroy(error);
}

TEST(Boundary, DestroysWhatTheWorkHadBuilt) {
  struct Counted {
    explicit Counted(int& count) : count_(count) { ++count_; }
    ~Counted() { --count_; }
    int& count_;
  };
  int alive = 0;
  vrntValuesError_t* error = nullptr;
  const int* result = reportEveryError(&error, nullptr, [&]() -> const int* {
    const Counted first(alive);
    const Counted second(alive);
    EXPECT_EQ(alive, 2);
    throw std::runtime_error("in the middle");
  });
  EXPECT_EQ(result, nullptr);
  EXPECT_EQ(alive, 0);
  vrntValuesErrorDestroy(error);
}

}  // namespace
