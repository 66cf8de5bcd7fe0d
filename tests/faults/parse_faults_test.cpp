// Parses, and the defaults and prints of what they make, in memory that runs out.
#include <gtest/gtest.h>

#include <string>

#include "fail_each_allocation.hpp"
#include "vornath_data/vrnt.h"

namespace {

using vornath_test::failEachAllocation;

constexpr const char* kTypes[] = {
    "float  [ 7 ]",
    "{ float @default=0.25 @name=\"Share\" share; int[2,3] grid; float[]* list; void* any; }",
    "enum { ALPHA @name=\"Alpha\"; BETA( int x, float y ); }  @alias=\"letters\"",
    "((float, int2) => { half h; })",
    "{ int @default=3 @min=0 @max=9 n; { float4 @default=float4(1.0, 0.0, 0.0, 0.0) x; } @a m; }",
};

constexpr const char* kValues[] = {
    "{ a = 1; b = [ 1.0, 2.0 ]; c = &{ d = true; }; }",
    "[ 1, 2, 3, 4 | 2, 2 ]",
    "RED : enum { RED; GREEN; BLUE; }",
    "$(0x0000000000000010:{ float f; })",
    "&&[ : float[3] | 2 ]",
};

TEST(vrntTypeParse, ReportsEachFailedAllocationAndThenSucceeds) {
  for (const char* text : kTypes) {
    SCOPED_TRACE(text);
    EXPECT_GT(
        failEachAllocation([text](vrntValuesError_t** error) { return vrntTypeParse(text, error); },
                           [](vrntType_t* type) { vrntTypeDestroy(type); }),
        0u);
  }
}

TEST(vrntValueParse, ReportsEachFailedAllocationAndThenSucceeds) {
  for (const char* text : kValues) {
    SCOPED_TRACE(text);
    EXPECT_GT(failEachAllocation(
                  [text](vrntValuesError_t** error) { return vrntValueParse(text, error); },
                  [](vrntValue_t* value) { vrntValueDestroy(value); }),
              0u);
  }
}

TEST(vrntValueCreateDefault, ReportsEachFailedAllocationAndThenSucceeds) {
  vrntValuesError_t* error = nullptr;
  vrntType_t* type = vrntTypeParse(kTypes[4], &error);
  ASSERT_NE(type, nullptr);
  failEachAllocation(
      [type](vrntValuesError_t** location) { return vrntValueCreateDefault(type, location); },
      [](vrntValue_t* value) { vrntValueDestroy(value); });
  vrntTypeDestroy(type);
}

TEST(vrntValueString, ReportsEachFailedAllocationAndThenSucceeds) {
  for (const char* text : kValues) {
    SCOPED_TRACE(text);
    vrntValuesError_t* error = nullptr;
    vrntValue_t* value = vrntValueParse(text, &error);
    ASSERT_NE(value, nullptr);
    const vrntValueView_t view{vrntValueType(value), 0};
    failEachAllocation(
        [&](vrntValuesError_t** location) { return vrntValueString(value, &view, 0, location); },
        [](char* string) { vrntDestroyString(string); });
    vrntValueDestroy(value);
  }
}

TEST(vrntTypeCheckSubType, ReportsEachFailedAllocationAndThenSucceeds) {
  vrntValuesError_t* error = nullptr;
  vrntType_t* a = vrntTypeParse("{ int x; { float y; } z; }", &error);
  vrntType_t* b = vrntTypeParse("{ int x; { float2 y; } z; }", &error);
  ASSERT_TRUE(a != nullptr && b != nullptr);
  EXPECT_GT(failEachAllocation(
                [&](vrntValuesError_t** location) { return vrntTypeCheckSubType(a, b, location); },
                [](char* reason) { vrntDestroyString(reason); }),
            0u);
  vrntTypeDestroy(a);
  vrntTypeDestroy(b);
}

// A type whose size doesn't fit an address is one that no value can be made of.
TEST(vrntValueCreate, OfATypeBeyondAllMemoryIsOutOfMemory) {
  for (const char* text :
       {"int[65536][65536][65536][65536]", "float @default=1.0[1073741824][1073741824][16]",
        "{ char[64,67108863] a; int[32] @default=[ 1 ] b; }"}) {
    SCOPED_TRACE(text);
    vrntValuesError_t* error = nullptr;
    vrntType_t* type = vrntTypeParse(text, &error);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(vrntValueCreate(type, &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(vrntValuesErrorCode(error), std::uint32_t{VRNT_OUT_OF_MEMORY});
    error = nullptr;
    EXPECT_EQ(vrntValueCreateDefault(type, &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(vrntValuesErrorCode(error), std::uint32_t{VRNT_OUT_OF_MEMORY});
    vrntTypeDestroy(type);
  }
}

}  // namespace
