#include "values/equality.hpp"

#include <limits>

#include "values_support.hpp"

namespace qex::vornath::test {
namespace {

constexpr float kInf = std::numeric_limits<float>::infinity();

bool areEqual(const DynamicValue& a, const DynamicValue& b, float tolerance = 0,
              std::string* reason = nullptr) {
  return valuesEqual(a.view(), b.view(), tolerance, reason);
}
bool areEqual(const std::string& a, const std::string& b, float tolerance = 0) {
  return areEqual(value(a), value(b), tolerance);
}
std::string reason(const DynamicValue& a, const DynamicValue& b, float tolerance = 0) {
  std::string words;
  EXPECT_FALSE(areEqual(a, b, tolerance, &words));
  return words;
}
std::string reason(const std::string& a, const std::string& b) {
  return reason(value(a), value(b));
}

DynamicValue bits(Type::TBasetype base, std::uint32_t word) {
  return DynamicValue::base(base, word);
}

TEST(ValuesEqual, TakesTheSameAsEqual) {
  for (const char* v : {"1", "true", "2.5", "3c", "0.5h", "float3(1.0, 2.0, 3.0)", "[ 1, 2 ]",
                        "{ a = 1; b = { c = 2.0; }; }", "B : enum { A; B; }", "&[ 1.0 ]",
                        "[ : int ]", "{ }", "$0x000000000000000f"}) {
    EXPECT_TRUE(areEqual(v, v)) << v;
  }
}

TEST(ValuesEqual, SaysWhereTheFirstMismatchIs) {
  EXPECT_EQ(reason("1", "2"), "1 != 2");
  EXPECT_EQ(reason("{ a = [ { b = 0; }, { b = 0; }, { b = 1; } ]; }",
                   "{ a = [ { b = 0; }, { b = 0; }, { b = 2; } ]; }"),
            ".a[2].b: 1 != 2");
  EXPECT_EQ(reason("{ a = 1; b = 2; c = 3; }", "{ a = 1; b = 5; c = 6; }"), ".b: 2 != 5");
  EXPECT_EQ(reason("[ 1, 2, 3, 4 | 2, 2 ]", "[ 1, 2, 9, 4 | 2, 2 ]"), "[2]: 3 != 9");
  EXPECT_EQ(reason("float2(1.0, 2.0)", "float2(1.0, 3.0)"), "float2(1.0, 2.0) != float2(1.0, 3.0)");
  EXPECT_EQ(reason("A : enum { A; B; }", "B : enum { A; B; }"),
            "A : enum { A; B; } != B : enum { A; B; }");
  EXPECT_EQ(reason("{ r = &{ x = true; }; }", "{ r = &{ x = false; }; }"), ".r.x: true != false");
}

TEST(ValuesEqual, LeavesTheReasonAloneOnSuccess) {
  std::string words = "as it was";
  EXPECT_TRUE(areEqual(value("1"), value("1"), 0, &words));
  EXPECT_EQ(words, "as it was");
}

TEST(ValuesEqual, RefusesDifferentTypes) {
  EXPECT_EQ(reason("1", "1.0"), "Type mismatch: int != float");
  EXPECT_EQ(reason("[ 1 ]", "[ 1, 2 ]"), "Type mismatch: int[1] != int[2]");
  // One way only isn't enough.
  EXPECT_EQ(reason("A : enum { A; }", "0"), "Type mismatch: enum { A; } != int");
}

TEST(ValuesEqual, ComparesTruthNotBits) {
  EXPECT_TRUE(areEqual(bits(Type::TBasetype::Bool, 1), bits(Type::TBasetype::Bool, 0xFFFFFFFF)));
  EXPECT_FALSE(areEqual(bits(Type::TBasetype::Bool, 1), bits(Type::TBasetype::Bool, 0)));
}

TEST(ValuesEqual, ComparesIntegersExactlyWhateverTheTolerance) {
  EXPECT_FALSE(areEqual("1", "2", 100));
  EXPECT_FALSE(areEqual("1c", "2c", 100));
}

TEST(ValuesEqual, ComparesFloatsWithinTheTolerance) {
  EXPECT_TRUE(areEqual("1.0", "1.5", 0.5f));
  EXPECT_FALSE(areEqual("1.0", "1.5", 0.25f));
  EXPECT_TRUE(areEqual("0.0", "-0.0"));
  EXPECT_FALSE(areEqual("float4(0.0, 0.0, 0.0, 1.0)", "float4(0.0, 0.0, 0.0, 2.0)", 0.5f));
}

TEST(ValuesEqual, TakesNoNanAsEqual) {
  const DynamicValue nan = bits(Type::TBasetype::Float, 0x7FC00000);
  EXPECT_FALSE(areEqual(nan, nan, 0));
  EXPECT_FALSE(areEqual(nan, nan, kInf));
  const DynamicValue halfNan = DynamicValue::base(Type::TBasetype::Half, std::uint16_t{0x7E00});
  EXPECT_FALSE(areEqual(halfNan, halfNan, kInf));
}

TEST(ValuesEqual, TakesInfinitiesAsEqualToThemselvesOnly) {
  for (const float tolerance : {0.0f, 1.0f, kInf}) {
    EXPECT_TRUE(areEqual("inf", "inf", tolerance));
    EXPECT_FALSE(areEqual("inf", "-inf", tolerance));
    EXPECT_FALSE(areEqual("-inf", "inf", tolerance));
    const DynamicValue plus = DynamicValue::base(Type::TBasetype::Half, std::uint16_t{0x7C00});
    const DynamicValue minus = DynamicValue::base(Type::TBasetype::Half, std::uint16_t{0xFC00});
    EXPECT_TRUE(areEqual(plus, plus, tolerance));
    EXPECT_FALSE(areEqual(plus, minus, tolerance));
  }
  EXPECT_FALSE(areEqual("inf", "1.0", 1e30f));
}

TEST(ValuesEqual, TakesTheDifferenceOfHalfsAsAHalf) {
  // 2049 isn't a half: the difference of 2048 and -1 is the nearest even one, 2048.
  EXPECT_TRUE(areEqual("2048.0h", "-1.0h", 2048));
  EXPECT_FALSE(areEqual("2048.0h", "-1.0h", 2047.5f));
  // It runs over to infinity.
  EXPECT_FALSE(areEqual("65504.0h", "-65504.0h", 200000));
}

TEST(ValuesEqual, IgnoresPadding) {
  float lanes[4] = {1, 2, 3, 4};
  const DynamicValue a(type("float3"), lanes);
  lanes[3] = 5;
  const DynamicValue b(type("float3"), lanes);
  EXPECT_TRUE(areEqual(a, b));
}

TEST(ValuesEqual, ComparesReferencesByWordFirst) {
  // A NaN is unequal to itself, but the same block is the same word.
  const DynamicValue nan = bits(Type::TBasetype::Float, 0x7FC00000);
  EXPECT_TRUE(areEqual(DynamicValue::reference(nan), DynamicValue::reference(nan)));
  EXPECT_TRUE(areEqual("$(0x000000000000000f:int)", "$(0x000000000000000f:int)"));
}

TEST(ValuesEqual, GivesNoReasonForANullOrForeignReference) {
  EXPECT_EQ(reason("$(0x0000000000000000:int)", "&1"), "");
  EXPECT_EQ(reason("$0x000000000000000f", "$0x000000000000000e"), "");
}

TEST(ValuesEqual, ComparesWhatReferencesLeadTo) {
  EXPECT_TRUE(areEqual("&{ a = &1; }", "&{ a = &1; }"));
  EXPECT_EQ(reason("&{ a = &1; }", "&{ a = &2; }"), ".a: 1 != 2");
}

// As many ways lead to the innermost value as a number of 64 bits can't tell.
DynamicValue sharedTwiceOnEachLevel(const std::string& innermost) {
  DynamicValue v = value(innermost);
  for (int level = 0; level < 70; ++level) {
    const DynamicValue both = DynamicValue::reference(v, type("void*"));
    v = DynamicValue::structure({{"a", both}, {"b", both}});
  }
  return v;
}

TEST(ValuesEqual, LooksOnceAtWhatIsSharedOnEachLevel) {
  const DynamicValue v = sharedTwiceOnEachLevel("[ 1, 2 ]");
  EXPECT_TRUE(areEqual(v, sharedTwiceOnEachLevel("[ 1, 2 ]")));
  EXPECT_FALSE(areEqual(v, sharedTwiceOnEachLevel("[ 1, 3 ]")));
}

TEST(ValuesEqual, ComparesASharedValueWithEachThatStandsAgainstIt) {
  const DynamicValue inner = DynamicValue::reference(value("1"));
  const auto pair = [](const DynamicValue& a, const DynamicValue& b) {
    return DynamicValue::structure(
        {{"a", DynamicValue::reference(a)}, {"b", DynamicValue::reference(b)}});
  };
  EXPECT_TRUE(areEqual(pair(inner, inner), pair(value("&1"), value("&1"))));
  EXPECT_FALSE(areEqual(pair(inner, inner), pair(value("&1"), value("&2"))));
  EXPECT_FALSE(areEqual(pair(value("&1"), value("&2")), pair(inner, inner)));
}

TEST(ValuesEqual, PassesOverElementsWithoutBytes) {
  EXPECT_TRUE(areEqual("[ : int[0] | 2000000000 ]", "[ : int[0] | 2000000000 ]"));
  EXPECT_FALSE(areEqual("[ : int[0] | 2000000000 ]", "[ : int[0] | 2000000001 ]"));
}

TEST(ValuesEqual, RefusesReferredValuesOfUnrelatedTypes) {
  const TypePtr any = type("void*");
  const auto refer = [&](const char* v) { return DynamicValue::reference(value(v), any); };
  EXPECT_EQ(reason(refer("1"), refer("1.0")), "Referenced type mismatch: int != float");
  EXPECT_EQ(reason(refer("0"), refer("A : enum { A; }")),
            "Referenced type mismatch: int != enum { A; }");
  EXPECT_EQ(reason(refer("A : enum { A; }"), refer("0")), "Type mismatch: enum { A; } != int");
}

TEST(ValuesEqual, ComparesFunctionsAsWords) {
  const TypePtr f = type("(() => int)");
  EXPECT_TRUE(areEqual(DynamicValue::function(f, 1, 2), DynamicValue::function(f, 1, 2)));
  EXPECT_FALSE(areEqual(DynamicValue::function(f, 1, 2), DynamicValue::function(f, 1, 3)));
  EXPECT_FALSE(areEqual(DynamicValue::function(f, 1, 2), DynamicValue::function(f, 3, 2)));
}

TEST(ValuesEqual, PassesOnABadEnumCodeOnlyIfAReasonIsWanted) {
  const std::int32_t code = 5;
  const DynamicValue bad(type("enum { A; }"), &code);
  const DynamicValue good = value("A : enum { A; }");
  EXPECT_FALSE(areEqual(bad, good));
  std::string words;
  EXPECT_REFUSED(areEqual(bad, good, 0, &words), "Enum code out of range: 5");
}

}  // namespace
}  // namespace qex::vornath::test
