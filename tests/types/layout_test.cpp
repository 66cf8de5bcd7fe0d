// Sizes, alignments, field offsets, places of references, and which types are concrete.
#include "types/layout.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "type_support.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary

using Words = std::vector<std::uint64_t>;

Words slotsOf(const char* typeText) { return parsed(typeText)->refSlots(); }

Words offsetsOf(const char* typeText) {
  const TypePtr type = parsed(typeText);
  return type->getIf<Struct>()->offsets;
}

void expectLayout(const char* typeText, std::uint64_t size, std::uint64_t alignment) {
  const TypePtr type = parsed(typeText);
  EXPECT_EQ(type->size(), size) << typeText;
  EXPECT_EQ(type->alignment(), alignment) << typeText;
}

}  // namespace

TEST(BaseTypeLayout, GivesThreeLanesTheRoomOfFour) {
  constexpr std::array<std::uint64_t, 20> sizes{4,  8,  16, 16, 4, 8, 16, 16, 4, 8,
                                                16, 16, 1,  2,  4, 4, 2,  4,  8, 8};
  for (std::size_t code = 0; code < sizes.size(); ++code) {
    const TypePtr type = make(static_cast<Base>(code));
    EXPECT_EQ(type->size(), sizes[code]) << type->text();
    EXPECT_EQ(type->alignment(), sizes[code]) << type->text();
    EXPECT_TRUE(type->refSlots().empty()) << type->text();
    EXPECT_TRUE(type->concrete()) << type->text();
    EXPECT_TRUE(type->deepConcrete()) << type->text();
  }
}

TEST(EnumLayout, IsFourBytesWhateverThePayloads) {
  expectLayout("enum { A; }", 4, 4);
  expectLayout("enum { A(float4 x, float[100] y, void* z); B; }", 4, 4);
  EXPECT_TRUE(slotsOf("enum { A(void* x); }").empty());
}

TEST(StructLayout, PutsEachFieldAtTheNextMultipleOfItsAlignment) {
  EXPECT_EQ(offsetsOf("{ char a; int b; }"), (Words{0, 4}));
  EXPECT_EQ(offsetsOf("{ float3 a; float b; }"), (Words{0, 16}));
  EXPECT_EQ(offsetsOf("{ char a; char b; half c; char d; float2 e; char3 f; float4 g; char h; }"),
            (Words{0, 1, 2, 4, 8, 16, 32, 48}));
  EXPECT_EQ(offsetsOf("{ char[3] a; char b; int[2] c; char d; void* e; }"),
            (Words{0, 3, 4, 12, 16}));
  EXPECT_EQ(offsetsOf("{ { char a; } a; char b; { void* p; } c; }"), (Words{0, 4, 8}));
  EXPECT_EQ(offsetsOf("{ int a; float[0] b; int c; float3[0] d; int e; }"),
            (Words{0, 4, 4, 16, 16}));
  EXPECT_EQ(offsetsOf("{ int a; (() => int) b; int c; }"), (Words{0, 8, 24}));
  EXPECT_EQ(offsetsOf("{ }"), Words{});
}

TEST(StructLayout, TakesTheLargestAlignmentAndNeverLessThanFour) {
  expectLayout("{ }", 4, 4);
  expectLayout("{ char a; }", 4, 4);
  expectLayout("{ char a; half b; }", 4, 4);
  expectLayout("{ half a; half b; half c; }", 8, 4);
  expectLayout("{ char a; int b; }", 8, 4);
  expectLayout("{ char4 a; char b; }", 8, 4);
  expectLayout("{ int a; float2 b; }", 16, 8);
  expectLayout("{ float2 a; int b; }", 16, 8);
  expectLayout("{ void* a; char b; }", 16, 8);
  expectLayout("{ float3 a; float b; }", 32, 16);
  expectLayout("{ float b; float3 a; }", 32, 16);
  expectLayout("{ float[0] a; }", 4, 4);
  expectLayout("{ char[9] a; }", 12, 4);
  expectLayout("{ { } a; { } b; }", 8, 4);
  expectLayout("{ { float3 a; char b; } a; char b; }", 48, 16);
}

TEST(StructLayout, IsTheSameForATypeAndItsTwin) {
  const TypePtr type = parsed("{ char @a a; float3 @b b; { char @c d; }[3] c; }");
  const auto& own = type->getIf<Struct>()->offsets;
  const auto& twins = type->stripped().getIf<Struct>()->offsets;
  EXPECT_EQ(own, twins);
  EXPECT_EQ(type->size(), type->stripped().size());
  EXPECT_EQ(own, (Words{0, 16, 32}));
}

TEST(ArrayLayout, IsTheProductOfTheExtents) {
  expectLayout("float[3]", 12, 4);
  expectLayout("float[0]", 0, 4);
  expectLayout("float[2,3]", 24, 4);
  expectLayout("char3[2,3,4]", 96, 4);
  expectLayout("char[2,3,4]", 24, 1);
  expectLayout("half[2,3,4,5]", 240, 2);
  expectLayout("float3[2,0,4]", 0, 16);
  expectLayout("{ char a; }[5]", 20, 4);
  expectLayout("int[2][3]", 24, 4);
  expectLayout("int[2147483647]", 8589934588u, 4);
}

TEST(ArrayLayout, IsZeroWithoutAShape) {
  expectLayout("float[]", 0, 4);
  expectLayout("char[,]", 0, 1);
  expectLayout("float4[,,]", 0, 16);
  expectLayout("void*[,,,]", 0, 8);
}

TEST(ArrayLayout, MultipliesExtentsInThirtyTwoBitsAndTheSizeInSixtyFour) {
  expectLayout("float[65536,65536]", 0, 4);
  expectLayout("float[65536,65537]", 262144, 4);
  expectLayout("float4[32768,32768]", 17179869184u, 16);
  expectLayout("char[2048,2048,2048]", 0, 1);
  expectLayout("char[65536,256,256,3]", 0, 1);
  expectLayout("char[65537,65537,1,1]", 131073, 1);
}

TEST(ArrayLayout, IsExactAsLongAsSixtyFourBitsHoldIt) {
  expectLayout("int[2147483647][2147483647]", 18446744056529682436u, 4);
  expectLayout("char[2147483647][2147483647][3]", 13835058042397261827u, 1);
  expectLayout("char[2147483647][2147483647][4]", 18446744056529682436u, 1);
  expectLayout("float4[1073741824][1073741823]", 18446744056529682432u, 16);
  // 2^64 - 1 is 4294967297 * 4294967295, and the factors are 641 * 6700417 and 65535 * 65537.
  expectLayout("char[641][6700417][65535][65537]", 18446744073709551615u, 1);
}

TEST(ArrayLayout, OfANegativeProductIsThatProductInSixtyFourBits) {
  expectLayout("char[65536,32768]", 18446744071562067968u, 1);               // -2^31
  expectLayout("int[64,67108863]", 18446744073709551360u, 4);                // -64 * 4
  expectLayout("char[65536][65536][65536,32768]", 9223372036854775808u, 1);  // -2^63
}

// A size that ran over would pass for a small one.
TEST(ArrayLayout, StopsAtTheMostWhereSixtyFourBitsDoNotHoldTheSize) {
  constexpr std::uint64_t most = 18446744073709551615u;
  expectLayout("int[65536][65536][65536][65536]", most, 4);
  expectLayout("int[1073741824][1073741824][16]", most, 4);
  expectLayout("int[1073741824][1073741824][4]", most, 4);
  expectLayout("int[2147483647][2147483647][2]", most, 4);
  // -2^63 is the least; -2^64 would pass for 0.
  expectLayout("char[65536][65536][2][65536,32768]", most, 1);
  expectLayout("char[65536][65537][65536,32768]", most, 1);
}

TEST(StructLayout, IsExactAsLongAsSixtyFourBitsHoldIt) {
  EXPECT_EQ(offsetsOf("{ char[2147483647][2147483647][3] a; int b; }"),
            (Words{0, 13835058042397261828u}));
  expectLayout("{ char[2147483647][2147483647][3] a; int b; }", 13835058042397261832u, 4);
  expectLayout(
      "{ char[2147483647][2147483647] a; char[2147483647][2147483647] b; "
      "char[2147483647][2147483647] c; }",
      13835058042397261828u, 4);
  // 18446744073709551612 is the largest multiple of 4.
  expectLayout("{ int[2147483647][2147483647] a; char[2147483647][8] b; }", 18446744073709551612u,
               4);
}

TEST(StructLayout, StopsAtTheMostWhereSixtyFourBitsDoNotHoldAnOffsetOrTheSize) {
  constexpr std::uint64_t most = 18446744073709551615u;
  expectLayout("{ char[64,67108863] a; int[32] b; }", most, 4);
  expectLayout("{ char[641][6700417][65535][65537] a; }", most, 4);
  constexpr char kBehindIt[] = "{ char[641][6700417][65535][65537] a; int b; char c; }";
  EXPECT_EQ(offsetsOf(kBehindIt), (Words{0, most, most}));
  expectLayout(kBehindIt, most, 4);
  expectLayout("{ int[2147483647][2147483647] a; char[2147483647][8] b; char c; }", most, 4);
}

TEST(ReferenceLayout, IsOneWord) {
  expectLayout("void*", 8, 8);
  expectLayout("char*", 8, 8);
  expectLayout("float[]*", 8, 8);
  EXPECT_EQ(slotsOf("void*"), Words{0});
  EXPECT_EQ(slotsOf("void**"), Words{0});
}

TEST(FunctionLayout, IsTwoWords) {
  expectLayout("(() => int)", 16, 8);
  expectLayout("((int, void*) => void*)", 16, 8);
  EXPECT_EQ(slotsOf("(() => int)"), (Words{0, 1}));
}

TEST(ReferenceSlots, OfAStructAreThoseOfItsFieldsInOrder) {
  EXPECT_EQ(slotsOf("{ float[]* s; int i; }"), Words{0});
  EXPECT_EQ(slotsOf("{ int i; float[]* s; }"), Words{1});
  EXPECT_EQ(slotsOf("{ void* a; int b; (() => int) c; { int d; void* e; } f; }"),
            (Words{0, 2, 3, 5}));
  EXPECT_TRUE(slotsOf("{ int a; float4 b; }").empty());
}

TEST(ReferenceSlots, OfAnArrayAreThoseOfItsElementsInOrder) {
  EXPECT_EQ(slotsOf("{ float[]* s; int i; }[2]"), (Words{0, 2}));
  EXPECT_EQ(slotsOf("void*[3]"), (Words{0, 1, 2}));
  EXPECT_EQ(slotsOf("void*[2,2]"), (Words{0, 1, 2, 3}));
  EXPECT_EQ(slotsOf("{ int i; void* p; }[2,1,2]"), (Words{1, 3, 5, 7}));
  EXPECT_EQ(slotsOf("(() => int)[1,1,1,2]"), (Words{0, 1, 2, 3}));
  EXPECT_EQ(slotsOf("{ void* a; float4 b; }[2]"), (Words{0, 4}));
  EXPECT_EQ(slotsOf("{ int n; { void*[2] p; }[2] q; }"), (Words{1, 2, 3, 4}));
}

TEST(ReferenceSlots, AreNoneInAnArrayWithoutElements) {
  EXPECT_TRUE(slotsOf("void*[]").empty());
  EXPECT_TRUE(slotsOf("void*[0]").empty());
  EXPECT_TRUE(slotsOf("void*[4,0]").empty());
}

TEST(Concreteness, NeedsAShapeInArraysOnly) {
  const std::vector<std::pair<const char*, bool>> types{{"float[]", false},
                                                        {"float[3]", true},
                                                        {"float[]*", true},
                                                        {"void*", true},
                                                        {"float[,]", false},
                                                        {"float[0,0]", true},
                                                        {"{ float[]* a; }", true},
                                                        {"(() => float[])", true},
                                                        {"enum { A(float[]* x); }", true},
                                                        {"{ float[]* a; }[]", false}};
  for (const auto& [typeText, concrete] : types) {
    EXPECT_EQ(parsed(typeText)->concrete(), concrete) << typeText;
  }
}

TEST(DeepConcreteness, NeedsAKnownTargetOfEveryReference) {
  const std::vector<std::pair<const char*, bool>> types{{"float", true},
                                                        {"enum { A(void* x); }", true},
                                                        {"(() => void*)", true},
                                                        {"((float[]) => float[])", true},
                                                        {"float[3]", true},
                                                        {"float[]", false},
                                                        {"float[,]", false},
                                                        {"void*", false},
                                                        {"float*", true},
                                                        {"float**", true},
                                                        {"void**", false},
                                                        {"float[]*", false},
                                                        {"float[3]*", true},
                                                        {"{ }", true},
                                                        {"{ int a; float* b; }", true},
                                                        {"{ int a; void* b; }", false},
                                                        {"{ { float[]* c; } a; int b; }", false},
                                                        {"float*[3]", true},
                                                        {"void*[3]", false},
                                                        {"{ float[]* a; }[2,2]", false},
                                                        {"void*[]", false}};
  for (const auto& [typeText, deep] : types) {
    EXPECT_EQ(parsed(typeText)->deepConcrete(), deep) << typeText;
  }
}
