// Long texts and lists, which are put together late, in memory that runs out.
#include <gtest/gtest.h>

#include "faults/fail_each_allocation.hpp"
#include "support/flat_handles.hpp"

namespace {

using namespace vornath_test;

// More than a type keeps from the start; few levels, so that few allocations make it.
const std::string kPart = "{ void*[100] " + std::string(5000, 'x') + "; }";

TEST(LongTypes, AreParsedWithEachAllocationFailing) {
  for (const std::string& text :
       {kPart + "*", "{ " + kPart + " a; int b; } @c=\"d\"", "enum { A( " + kPart + " x ); }"}) {
    EXPECT_GT(failEachAllocation(
                  [&](vrntValuesError_t** error) { return vrntTypeParse(text.c_str(), error); },
                  [](vrntType_t* type) { vrntTypeDestroy(type); }),
              0u);
  }
}

TEST(LongTypes, HaveNoTextAsLongAsThereIsNoMemoryForIt) {
  const TypeHandle type = parseType(kPart + "*");
  const TypeHandle part(vrntTypeReferencedType(type.get()));
  {
    const FailingAllocations failures;
    EXPECT_EQ(vrntTypeString(part.get()), nullptr);
  }
  EXPECT_EQ(vrntTypeString(part.get()), kPart);
}

TEST(LongTypes, AreLookedUpWithEachAllocationFailing) {
  const TypeHandle type = parseType(kPart + "*");
  const TypeHandle part(vrntTypeReferencedType(type.get()));
  EXPECT_GT(failEachAllocation(
                [&](vrntValuesError_t** error) { return vrntTypeParse(kPart.c_str(), error); },
                [&part](vrntType_t* found) {
                  EXPECT_EQ(found, part.get());
                  vrntTypeDestroy(found);
                }),
            0u);
}

TEST(LongTypes, HaveValuesWithEachAllocationFailing) {
  const TypeHandle type = parseType(kPart + "*");
  const TypeHandle part(vrntTypeReferencedType(type.get()));
  EXPECT_GT(failEachAllocation(
                [&](vrntValuesError_t** error) { return vrntValueCreate(part.get(), error); },
                [](vrntValue_t* value) {
                  EXPECT_EQ(value->typeText, kPart);
                  vrntValueDestroy(value);
                }),
            0u);
}

// Parts that wait to be put together beside some that already are.
TEST(NestedValues, AreParsedWithEachAllocationFailing) {
  for (const std::string text :
       {"{ a = [ { r = &1; z = [ : int | 5000 ]; } ]; b = [ &2, &3 | 2, 300 ]; c = { s = &4; }; }",
        "&{ a = { b = [ &[ : void* | 900 ] ]; c = [ : void* | 900 ]; }; d = { e = 1; f = &2; }; }",
        "{ x = [ { y = [ : float4 | 100 ]; }, { y = [ : float4 | 100 ]; } ]; z = 1; }"}) {
    EXPECT_GT(failEachAllocation(
                  [&](vrntValuesError_t** error) { return vrntValueParse(text.c_str(), error); },
                  [](vrntValue_t* value) { vrntValueDestroy(value); }),
              10u)
        << text;
  }
}

// Without memory for its text a target is handed out all the same.
TEST(LongTypes, HaveValuesThatAreReferredTo) {
  const ValueHandle value = parseValue("&{ " + std::string(5000, 'x') + " = 1; }");
  const vrntValueView_t view{vrntValueType(value.get()), 0};
  const auto target = [&] { return ValueHandle(vrntValueDereference(value.get(), &view)); };
  {
    const FailingAllocations failures;
    const ValueHandle untold = target();
    ASSERT_NE(untold, nullptr);
    EXPECT_EQ(untold->typeText, nullptr);
  }
  EXPECT_EQ(target()->typeText, "{ int " + std::string(5000, 'x') + "; }");
}

}  // namespace
