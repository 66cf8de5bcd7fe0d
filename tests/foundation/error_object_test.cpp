#include "foundation/error_object.hpp"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <utility>

#include "vornath_data/detail/raise_error.hpp"
#include "vornath_data/result.hpp"

namespace {

using qex::vornath::makeError;
using qex::vornath::outOfMemoryError;
using qex::vornath::storeError;
using vrnt::detail::creationFailure;
using vrnt::detail::raiseError;
using vrnt::detail::typeParseFailure;

TEST(MakeError, MovesTheTextIntoTheObject) {
  std::string text(100, 'x');
  const char* bytes = text.data();
  vrntValuesError_t* error = makeError(2, std::move(text));
  EXPECT_EQ(vrntValuesErrorCode(error), 2U);
  EXPECT_EQ(vrntValuesErrorMessage(error), bytes);
  vrntValuesErrorDestroy(error);
}

TEST(OutOfMemoryError, IsOneStaticObject) {
  EXPECT_EQ(vrntValuesErrorCode(&outOfMemoryError), 1U);
  EXPECT_STREQ(vrntValuesErrorMessage(&outOfMemoryError), "Out of memory.");
}

TEST(OutOfMemoryError, CanBeDestroyedAnyNumberOfTimes) {
  vrntValuesErrorDestroy(&outOfMemoryError);
  vrntValuesErrorDestroy(&outOfMemoryError);
  EXPECT_EQ(vrntValuesErrorCode(&outOfMemoryError), 1U);
  EXPECT_STREQ(vrntValuesErrorMessage(&outOfMemoryError), "Out of memory.");
}

TEST(StoreError, StoresANewObject) {
  vrntValuesError_t* error = nullptr;
  storeError(&error, 0, "words");
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), 0U);
  EXPECT_STREQ(vrntValuesErrorMessage(error), "words");
  vrntValuesErrorDestroy(error);
}

TEST(RaiseError, RaisesUnknownErrorWithTheMessageForEveryKindButOutOfMemory) {
  for (const std::uint32_t kind : {0U, 2U, 7U}) {
    try {
      raiseError(makeError(kind, "what happened"));
    } catch (const vrnt::Exception& caught) {
      EXPECT_EQ(static_cast<int>(caught.code()), 25);
      EXPECT_STREQ(caught.what(), "what happened");
      continue;
    }
    FAIL() << "no exception for kind " << kind;
  }
}

TEST(RaiseError, RaisesBadAllocForOutOfMemory) {
  EXPECT_THROW(raiseError(&outOfMemoryError), std::bad_alloc);
  EXPECT_THROW(raiseError(makeError(1, "any words")), std::bad_alloc);
  EXPECT_STREQ(vrntValuesErrorMessage(&outOfMemoryError), "Out of memory.");
}

TEST(CreationFailure, IsAnInternalErrorWithTheMessage) {
  for (const std::uint32_t kind : {0U, 2U}) {
    const vrnt::ErrorRecord record = creationFailure(makeError(kind, "what happened"));
    EXPECT_EQ(static_cast<int>(record.code()), 19);
    EXPECT_STREQ(record.message(), "what happened");
  }
}

TEST(CreationFailure, OfOutOfMemoryIsAFailedAllocationWithoutMessage) {
  const vrnt::ErrorRecord record = creationFailure(&outOfMemoryError);
  EXPECT_EQ(static_cast<int>(record.code()), 20);
  EXPECT_EQ(record.message(), nullptr);
}

TEST(TypeParseFailure, OfALibraryErrorIsParseFailedWithTheMessage) {
  const vrnt::ErrorRecord record = typeParseFailure(makeError(0, "Unable to parse"));
  EXPECT_EQ(static_cast<int>(record.code()), 4);
  EXPECT_STREQ(record.message(), "Unable to parse");
}

TEST(TypeParseFailure, OfOutOfMemoryIsAFailedAllocationWithoutMessage) {
  const vrnt::ErrorRecord record = typeParseFailure(&outOfMemoryError);
  EXPECT_EQ(static_cast<int>(record.code()), 20);
  EXPECT_EQ(record.message(), nullptr);
}

TEST(TypeParseFailure, OfAnotherErrorIsAnInternalErrorWithTheMessage) {
  const vrnt::ErrorRecord record = typeParseFailure(makeError(2, "Unknown error."));
  EXPECT_EQ(static_cast<int>(record.code()), 19);
  EXPECT_STREQ(record.message(), "Unknown error.");
}

}  // namespace
