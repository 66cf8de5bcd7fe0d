// Every form of value text: the type and the bytes that it builds.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "support/flat_handles.hpp"

namespace {

using vornath_test::parseType;
using vornath_test::parseValue;
using vornath_test::readAt;
using vornath_test::TypeHandle;
using vornath_test::typeTextOf;
using vornath_test::valueFailure;
using vornath_test::ValueHandle;

// The value has this type, and its bytes begin with these lanes.
template <typename Lane>
void expectLanes(const std::string& text, const std::string& type, const std::vector<Lane>& lanes) {
  SCOPED_TRACE(text);
  const ValueHandle value = parseValue(text);
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(typeTextOf(value), type);
  const std::uint64_t size = vrntTypeSize(vrntValueType(value.get()));
  ASSERT_GE(size, lanes.size() * sizeof(Lane));
  for (std::size_t i = 0; i < lanes.size(); ++i) {
    EXPECT_EQ(readAt<Lane>(value, i * sizeof(Lane)), lanes[i]) << "lane " << i;
  }
}

// The value that the reference word at an offset leads to.
ValueHandle follow(const ValueHandle& value, std::uint64_t offset, const char* referenceType) {
  const TypeHandle type = parseType(referenceType);
  const vrntValueView_t view{type.get(), offset};
  return ValueHandle(vrntValueDereference(value.get(), &view));
}

}  // namespace

TEST(vrntValueParse, ReadsBooleansAsAllOnesAndZeros) {
  expectLanes<std::int32_t>("true", "bool", {-1});
  expectLanes<std::int32_t>("false", "bool", {0});
  expectLanes<std::int32_t>("bool2(true, false)", "bool2", {-1, 0});
  expectLanes<std::int32_t>("bool3(false, true, true)", "bool3", {0, -1, -1});
  expectLanes<std::int32_t>("bool4(true,false,true,false)", "bool4", {-1, 0, -1, 0});
}

TEST(vrntValueParse, ReadsIntegersAndTheirVectors) {
  expectLanes<std::int32_t>("-7", "int", {-7});
  expectLanes<std::int32_t>("int2(1, -2)", "int2", {1, -2});
  expectLanes<std::int32_t>("int3(1, 2, 3)", "int3", {1, 2, 3});
  expectLanes<std::int32_t>("int4(1, 2, 3, 0xffffffff)", "int4", {1, 2, 3, -1});
}

TEST(vrntValueParse, ReadsSinglesAndTheirVectors) {
  expectLanes<float>("2.5", "float", {2.5f});
  expectLanes<float>("float2(1.0, -2.0)", "float2", {1.0f, -2.0f});
  expectLanes<float>("float3(1.0, 2.0, 3.0)", "float3", {1.0f, 2.0f, 3.0f});
  expectLanes<float>("float4(1.0, 0x3f800000., 1e1, 0.)", "float4", {1.0f, 1.0f, 10.0f, 0.0f});
}

TEST(vrntValueParse, ReadsCharactersAndTheirVectors) {
  expectLanes<std::uint8_t>("200c", "char", {200});
  expectLanes<std::uint8_t>("char2(1c, 255c)", "char2", {1, 255});
  expectLanes<std::uint8_t>("char3(1c, 2c, 0x03)", "char3", {1, 2, 3});
  expectLanes<std::uint8_t>("char4(1c, 2c, 3c, 4c)", "char4", {1, 2, 3, 4});
}

TEST(vrntValueParse, ReadsHalvesAndTheirVectors) {
  expectLanes<std::uint16_t>("1h", "half", {0x3c00});
  expectLanes<std::uint16_t>("half2(1h, -1h)", "half2", {0x3c00, 0xbc00});
  expectLanes<std::uint16_t>("half3(1.0h, 0x1234., infh)", "half3", {0x3c00, 0x1234, 0x7c00});
  expectLanes<std::uint16_t>("half4(0h, 1h, 2h, NaNh)", "half4", {0, 0x3c00, 0x4000, 0x7fff});
}

TEST(vrntValueParse, DerivesAStructTypeFromLabelsAndValuesAsWritten) {
  const ValueHandle value = parseValue("{ b = 1c; a = 2.5; c = [ 1, 2 ]; d = { e = true; }; }");
  EXPECT_EQ(typeTextOf(value), "{ char b; float a; int[2] c; { bool e; } d; }");
  EXPECT_EQ(readAt<std::uint8_t>(value, 0), 1);
  EXPECT_EQ(readAt<float>(value, 4), 2.5f);
  EXPECT_EQ(readAt<std::int32_t>(value, 8), 1);
  EXPECT_EQ(readAt<std::int32_t>(value, 12), 2);
  EXPECT_EQ(readAt<std::int32_t>(value, 16), -1);
  EXPECT_EQ(typeTextOf(parseValue("{ }")), "{ }");
  EXPECT_EQ(typeTextOf(parseValue("{a=1;}")), "{ int a; }");
}

TEST(vrntValueParse, MakesAnEmptyArrayOfANamedElementType) {
  expectLanes<std::int32_t>("[ : int ]", "int[0]", {});
  EXPECT_EQ(typeTextOf(parseValue("[ : { float[]* a; } ]")), "{ float[]* a; }[0]");
  EXPECT_EQ(typeTextOf(parseValue("[:void*]")), "void*[0]");
}

TEST(vrntValueParse, FillsAnArrayOfTypeAndExtentsWithZeros) {
  expectLanes<std::int32_t>("[ : int | 3 ]", "int[3]", {0, 0, 0});
  expectLanes<std::int32_t>("[ : int | 0 ]", "int[0]", {});
  expectLanes<float>("[ : float | 2, 2 ]", "float[2,2]", {0, 0, 0, 0});
  expectLanes<std::uint8_t>("[ : char | 1, 2, 3 ]", "char[1,2,3]", {0, 0, 0, 0, 0, 0});
  expectLanes<std::int32_t>("[ : bool | 1, 1, 2, 2 ]", "bool[1,1,2,2]", {0, 0, 0, 0});
  expectLanes<std::uint64_t>("[ : void* | 2 ]", "void*[2]", {0, 0});
}

TEST(vrntValueParse, TakesTheElementTypeOfAListFromItsFirstValue) {
  expectLanes<std::int32_t>("[ 1, 2, 3 ]", "int[3]", {1, 2, 3});
  expectLanes<float>("[ 0.5, -inf ]", "float[2]", {0.5f, -std::numeric_limits<float>::infinity()});
  expectLanes<std::int32_t>("[ [ 1, 2 ], [ 3, 4 ] ]", "int[2][2]", {1, 2, 3, 4});
  expectLanes<float>("[ float3(1.0, 2.0, 3.0) ]", "float3[1]", {1.0f, 2.0f, 3.0f});
  expectLanes<std::int32_t>("[ 5, B : enum { A; B; } ]", "int[2]", {5, 1});
  EXPECT_EQ(typeTextOf(parseValue("[ { a = 1; }, { a = 2; } ]")), "{ int a; }[2]");
}

TEST(vrntValueParse, TakesACountThatIsTheListsLength) {
  expectLanes<std::int32_t>("[ 1, 2, 3 | 3 ]", "int[3]", {1, 2, 3});
  expectLanes<std::int32_t>("[ 1 | 0x00000001 ]", "int[1]", {1});
  for (const char* text : {"[ 1, 2 | 3 ]", "[ 1, 2 | 1 ]", "[ 1 | 0 ]"}) {
    const auto failure = valueFailure(text);
    ASSERT_TRUE(failure) << text;
    EXPECT_EQ(failure->message, "Empty array without type is not allowed.");
  }
}

TEST(vrntValueParse, TakesTwoToFourExtentsAsTheRank) {
  expectLanes<std::int32_t>("[ 1, 2, 3, 4 | 2, 2 ]", "int[2,2]", {1, 2, 3, 4});
  expectLanes<std::int32_t>("[ 1, 2, 3, 4, 5, 6 | 3, 2 ]", "int[3,2]", {1, 2, 3, 4, 5, 6});
  expectLanes<std::int32_t>("[ 1, 2, 3, 4, 5, 6 | 1, 2, 3 ]", "int[1,2,3]", {1, 2, 3, 4, 5, 6});
  expectLanes<std::int32_t>("[ 1, 2, 3, 4 | 2, 1, 2, 1 ]", "int[2,1,2,1]", {1, 2, 3, 4});
}

TEST(vrntValueParse, LeavesElementsOfHigherRanksThatAreNotGivenZero) {
  expectLanes<std::int32_t>("[ 1, 2 | 2, 2 ]", "int[2,2]", {1, 2, 0, 0});
  expectLanes<std::int32_t>("[ 1 | 1, 2, 2 ]", "int[1,2,2]", {1, 0, 0, 0});
  expectLanes<std::int32_t>("[ 1 : int | 2, 1, 1, 2 ]", "int[2,1,1,2]", {1, 0, 0, 0});
}

TEST(vrntValueParse, RefusesMoreValuesThanHigherRanksHold) {
  for (const char* text : {"[ 1, 2, 3 | 1, 2 ]", "[ 1, 2, 3 | 1, 1, 2 ]", "[ 1, 2 | 1, 1, 1, 1 ]",
                           "[ 1, 2, 3 : int | 1, 2 ]"}) {
    const auto failure = valueFailure(text);
    ASSERT_TRUE(failure) << text;
    EXPECT_EQ(failure->message, "Empty array without type is not allowed.") << text;
  }
}

TEST(vrntValueParse, TakesAGivenElementTypeForAList) {
  expectLanes<std::int32_t>("[ 1, 2 : int ]", "int[2]", {1, 2});
  expectLanes<std::int32_t>("[ B : enum { A; B; } : int ]", "int[1]", {1});
  expectLanes<std::int32_t>("[ 1, 2 : int | 1, 2 ]", "int[1,2]", {1, 2});
  expectLanes<std::int32_t>("[ 1, B : enum { A; B; } : int | 2, 1, 1 ]", "int[2,1,1]", {1, 1});
  expectLanes<std::int32_t>("[ 1, 2 : int | 1, 1, 2, 1 ]", "int[1,1,2,1]", {1, 2});
  EXPECT_EQ(typeTextOf(parseValue("[ &1, &2.0 : void* ]")), "void*[2]");
  EXPECT_EQ(typeTextOf(parseValue("[ &[ 1 ], &[ 1, 2 ] : int[]* ]")), "int[]*[2]");
}

TEST(vrntValueParse, RefusesAValueThatDoesNotRelateToTheElementType) {
  const auto failure = valueFailure("[ 1, 2.0 : int ]");
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->kind, 0u);
  EXPECT_EQ(failure->message, "Incompatible type for value -> type float does not match type int.");
}

TEST(vrntValueParse, IgnoresATypeWithOneCountBehindAList) {
  expectLanes<std::int32_t>("[ 1, 2 : float | 9 ]", "int[2]", {1, 2});
  expectLanes<std::int32_t>("[ 1, 2 : int | 2 ]", "int[2]", {1, 2});
  expectLanes<std::int32_t>("[ 1 : { void* x; } | -5 ]", "int[1]", {1});
  expectLanes<std::int32_t>("[ 1 : float[] | 0 ]", "int[1]", {1});
}

TEST(vrntValueParse, DropsTheAnnotationsOfAnElementType) {
  EXPECT_EQ(typeTextOf(parseValue("[ : float @a=1.0 ]")), "float[0]");
  EXPECT_EQ(typeTextOf(parseValue("[ : { float @min=0.0 x; } @b | 2 ]")), "{ float x; }[2]");
  EXPECT_EQ(typeTextOf(parseValue("[ 1 : int @a | 1, 1 ]")), "int[1,1]");
  EXPECT_EQ(typeTextOf(parseValue("$(1:int @a)")), "int*");
}

TEST(vrntValueParse, ReadsAForeignAddress) {
  expectLanes<std::uint64_t>("$0x0000000000000000", "void*", {0});
  expectLanes<std::uint64_t>("$0", "void*", {0});
  expectLanes<std::uint64_t>("$5", "void*", {11});
  expectLanes<std::uint64_t>("$0x12345678", "void*", {0x2468acf1});
  expectLanes<std::uint64_t>("$0x0000000012345678", "void*", {0x2468acf1});
  expectLanes<std::uint64_t>("$4294967296", "void*", {0x200000001});
}

TEST(vrntValueParse, WidensANegativeAddressWithItsSign) {
  expectLanes<std::uint64_t>("$-1", "void*", {0xffffffffffffffff});
  expectLanes<std::uint64_t>("$-2", "void*", {0xfffffffffffffffd});
  expectLanes<std::uint64_t>("$(0xffffffff:int)", "int*", {0xffffffffffffffff});
}

TEST(vrntValueParse, DropsTheHighestBitOfAForeignAddress) {
  expectLanes<std::uint64_t>("$0xc000000000000001", "void*", {0x8000000000000003});
  expectLanes<std::uint64_t>("$0x8000000000000000", "void*", {0});
}

TEST(vrntValueParse, ReadsAForeignAddressWithAType) {
  expectLanes<std::uint64_t>("$(0x0000000000000000:int)", "int*", {0});
  expectLanes<std::uint64_t>("$(7:float[])", "float[]*", {15});
  expectLanes<std::uint64_t>("$( 0x0000000000000007 : { int a; } )", "{ int a; }*", {15});
  expectLanes<std::uint64_t>("$(1:void*)", "void**", {3});
}

TEST(vrntValueParse, ReadsAReferenceToANewValue) {
  const ValueHandle one = parseValue("&1");
  EXPECT_EQ(typeTextOf(one), "int*");
  const ValueHandle target = follow(one, 0, "int*");
  EXPECT_EQ(typeTextOf(target), "int");
  EXPECT_EQ(readAt<std::int32_t>(target), 1);
  // Held by the reference and by this handle.
  EXPECT_EQ(target->refCount, 2u);
}

TEST(vrntValueParse, ReadsReferencesToReferences) {
  const ValueHandle outer = parseValue("& &[ 1.5, 2.5 ]");
  EXPECT_EQ(typeTextOf(outer), "float[2]**");
  const ValueHandle inner = follow(outer, 0, "float[2]**");
  EXPECT_EQ(typeTextOf(inner), "float[2]*");
  const ValueHandle target = follow(inner, 0, "float[2]*");
  EXPECT_EQ(typeTextOf(target), "float[2]");
  EXPECT_EQ(readAt<float>(target, 4), 2.5f);
}

TEST(vrntValueParse, KeepsReferencesInStructsAndArrays) {
  const ValueHandle value = parseValue(
      "{ encoding = RGB : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &[ 0., 1., 2. ]; }");
  EXPECT_EQ(typeTextOf(value),
            "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[3]* spectrum; }");
  EXPECT_EQ(readAt<std::int32_t>(value), 1);
  EXPECT_EQ(readAt<float>(follow(value, 8, "float[3]*"), 8), 2.0f);
  const ValueHandle list = parseValue("[ &1, &2 ]");
  EXPECT_EQ(typeTextOf(list), "int*[2]");
  EXPECT_EQ(readAt<std::int32_t>(follow(list, 8, "int*")), 2);
}

TEST(vrntValueParse, ReadsAConstructorOfAWrittenEnum) {
  expectLanes<std::int32_t>("REPEAT : enum { CLAMP; BORDER; REPEAT; MIRROR; }",
                            "enum { CLAMP; BORDER; REPEAT; MIRROR; }", {2});
  expectLanes<std::int32_t>("A:enum{A;}", "enum { A; }", {0});
}

TEST(vrntValueParse, TakesThePlainFormOfAnAnnotatedEnum) {
  expectLanes<std::int32_t>("ValB : enum { ValA @name=\"a\"; ValB; }", "enum { ValA; ValB; }", {1});
}

TEST(vrntValueParse, KeepsThePayloadOfAnEnumInItsTypeOnly) {
  expectLanes<std::int32_t>("LoadB : enum { LoadA(int x); LoadB(float4 y); }",
                            "enum { LoadA( int x ); LoadB( float4 y ); }", {1});
}

TEST(vrntValueParse, RefusesAnUnknownConstructor) {
  const auto failure = valueFailure("X : enum { A; }");
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->kind, 0u);
  EXPECT_EQ(failure->message, "Invalid enum constructor: X");
}

TEST(vrntValueParse, ReportsATextThatDoesNotParse) {
  const auto failure = valueFailure("[ ]");
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->kind, 0u);
  EXPECT_EQ(failure->message, "Unable to parse value: [ ].\nsyntax error, unexpected ]");
}

TEST(vrntValueParse, LeavesTheErrorLocationUntouchedOnSuccess) {
  auto* const untouched = reinterpret_cast<vrntValuesError_t*>(0x10);
  vrntValuesError_t* error = untouched;
  const ValueHandle value(vrntValueParse("1", &error));
  EXPECT_NE(value, nullptr);
  EXPECT_EQ(error, untouched);
}

TEST(vrntValueParse, ReadsManyValuesWithoutRunningOut) {
  std::string list = "[ 0";
  for (int i = 1; i < 20000; ++i) list += ", " + std::to_string(i);
  const ValueHandle value = parseValue(list + " ]");
  EXPECT_EQ(typeTextOf(value), "int[20000]");
  EXPECT_EQ(readAt<std::int32_t>(value, 4 * 19999), 19999);
}

TEST(vrntValueParse, ReadsDeepNesting) {
  std::string text = "1";
  std::string type = "int";
  for (int i = 0; i < 200; ++i) {
    text = "{ a = [ " + text + " ]; }";
    type = "{ " + type + "[1] a; }";
  }
  const ValueHandle value = parseValue(text);
  EXPECT_EQ(typeTextOf(value), type);
  EXPECT_EQ(readAt<std::int32_t>(value), 1);
}
