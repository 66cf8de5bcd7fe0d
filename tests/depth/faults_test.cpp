// Long texts and lists, which are put together late, in memory that runs out.
#include <gtest/gtest.h>

#include <cstring>

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

// More references than all types have their texts for: three words away from what was parsed.
ValueHandle longChain() {
  return parseValue(std::string(200, '&') + "{ " + std::string(5000, 'x') + " = 1; }");
}

std::string textAt(int references) {
  return "{ int " + std::string(5000, 'x') + "; }" +
         std::string(static_cast<std::size_t>(references), '*');
}

vrntValue_t* inner(const ValueHandle& value) {
  vrntValue_t* const block = referencedBlock(referencedBlock(referencedBlock(value.get())));
  EXPECT_EQ(block->typeText, nullptr);
  return block;
}

TEST(LongTypes, AreToldByACopyAsSoonAsThereIsMemory) {
  const ValueHandle value = longChain();
  vrntValue_t* const block = inner(value);
  {
    const FailingAllocations failures;
    const ValueHandle copy(vrntValueCopy(block));
    EXPECT_EQ(copy.get(), block);
    EXPECT_EQ(vrntValueBinary(block), block);
    EXPECT_EQ(block->typeText, nullptr);
  }
  EXPECT_EQ(vrntValueBinary(block)->typeText, textAt(197));
}

TEST(LongTypes, AreToldByAnUnmapAsSoonAsThereIsMemory) {
  const ValueHandle value = longChain();
  vrntValue_t* const block = inner(value);
  vrntValue_t* any = parseValue("$0x0000000000000000").release();
  const vrntValueView_t view{vrntValueType(any), 0};
  vrntValuesError_t* error = nullptr;
  void* const word = vrntValueMap(&any, &view, &error);
  const auto address = reinterpret_cast<std::uintptr_t>(vrntValueData(block));
  std::memcpy(word, &address, sizeof address);
  {
    const FailingAllocations failures;
    vrntValueUnmap(any, &view);
  }
  EXPECT_EQ(block->refCount, 2u);
  EXPECT_EQ(block->typeText, nullptr);
  const ValueHandle target(vrntValueDereference(any, &view));
  EXPECT_EQ(target->typeText, textAt(197));
  vrntValueDestroy(any);
}

TEST(LongTypes, OfAMapThatFailsLeaveTheHandle) {
  const ValueHandle value = longChain();
  vrntValue_t* const block = inner(value);
  vrntValue_t* handle = block;
  const vrntValueView_t view{vrntValueType(block), 0};
  vrntValuesError_t* error = nullptr;
  {
    const FailingAllocations failures;
    EXPECT_EQ(vrntValueMap(&handle, &view, &error), nullptr);
  }
  EXPECT_EQ(handle, block);
  ASSERT_NE(error, nullptr);
  EXPECT_STREQ(vrntValuesErrorMessage(error), "Out of memory.");
}

}  // namespace
