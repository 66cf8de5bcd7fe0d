#include "values/coercion.hpp"

#include <array>
#include <functional>
#include <optional>

#include "case_count.hpp"
#include "embed/view_writing.hpp"
#include "random_values.hpp"
#include "support/small_stack.hpp"
#include "types/relations.hpp"
#include "values/bounds.hpp"
#include "values/kept_plans.hpp"
#include "values/write_protocol.hpp"

namespace qex::vornath::test {
namespace {

constexpr bool kLenient = true;
constexpr bool kStrict = false;

std::string coerced(const std::string& valueText, const std::string& typeText) {
  return text(coerceValue(value(valueText), type(typeText), kLenient));
}

std::string strictlyCoerced(const std::string& valueText, const std::string& typeText) {
  return text(coerceValue(value(valueText), type(typeText), kStrict));
}

TEST(CoerceValue, DoesNotConvertNumbers) {
  EXPECT_EQ(coerced("5", "float"), "0.0");
  EXPECT_EQ(coerced("5", "float @default=2.5"), "2.5");
  EXPECT_EQ(coerced("5", "int2"), "int2(0, 0)");
  EXPECT_REFUSED(strictlyCoerced("5", "float"),
                 "Cannot convert int to float: Types are unrelated.");
}

TEST(CoerceValue, OfTheSameTypeIsACopyInABlockOfItsOwn) {
  const DynamicValue source = value("{ a = 1; b = &2; }");
  for (const bool lenient : {kLenient, kStrict}) {
    const DynamicValue result = coerceValue(source, source.type(), lenient);
    EXPECT_NE(result.block(), source.block());
    EXPECT_EQ(count(result), 1u);
    EXPECT_EQ(text(result), "{ a = 1; b = &2; }");
    EXPECT_EQ(blockOfWord(at<std::uint64_t>(result, 8))->refCount, 2u);
  }
  EXPECT_EQ(blockOfWord(at<std::uint64_t>(source, 8))->refCount, 1u);
}

TEST(CoerceValue, TakesTheWholeSourceOverTheDefaultOfARelatedType) {
  EXPECT_EQ(strictlyCoerced("{ a = 1; }", "{ int @default=7 a; } @default={ a = 8; }"),
            "{ a = 1; }");
}

TEST(CoerceValue, CarriesFieldsByLabel) {
  EXPECT_EQ(coerced("{ a = 1; b = 2.0; }", "{ float b; int @default=7 c; }"),
            "{ b = 2.0; c = 7; }");
  EXPECT_EQ(strictlyCoerced("{ a = 1; b = 2.0; }", "{ float b; int c; }"), "{ b = 2.0; c = 0; }");
  EXPECT_EQ(strictlyCoerced("{ a = 1; b = 2; c = 3; }", "{ int c; int a; int b; }"),
            "{ c = 3; a = 1; b = 2; }");
  EXPECT_EQ(strictlyCoerced("{ a = 1; }", "{ }"), "{ }");
  EXPECT_EQ(strictlyCoerced("{ }", "{ int @default=3 a; }"), "{ a = 3; }");
}

TEST(CoerceValue, LeavesAFieldOfAnotherTypeAtItsDefault) {
  EXPECT_EQ(coerced("{ a = 5; b = 6; }", "{ float @default=0.5 a; int b; }"),
            "{ a = 0.5; b = 6; }");
  EXPECT_EQ(coerced("{ a = 5; }", "{ float a; }"), "{ a = 0.0; }");
  EXPECT_REFUSED(strictlyCoerced("{ a = 5; b = 6; }", "{ float a; int b; }"),
                 "Cannot convert int to float: Types are unrelated.");
}

TEST(CoerceValue, AppliesOuterDefaultsToWhatTheSourceLacks) {
  EXPECT_EQ(coerced("{ a = 2; }",
                    "{ int @default=1 a; int b; { int @default=3 x; } c; } "
                    "@default={ a = 5; b = 6; c = { x = 9; }; }"),
            "{ a = 2; b = 6; c = { x = 9; }; }");
}

TEST(CoerceValue, GoesIntoStructsAndArraysOfStructs) {
  EXPECT_EQ(strictlyCoerced("{ s = { x = 1; y = 2; }; }", "{ { int y; int z; } s; }"),
            "{ s = { y = 2; z = 0; }; }");
  EXPECT_EQ(strictlyCoerced("[ { x = 1; y = 2; }, { x = 3; y = 4; } ]",
                            "{ int @default=9 z; int y; }[3]"),
            "[ { z = 9; y = 2; }, { z = 9; y = 4; }, { z = 9; y = 0; } ]");
}

TEST(CoerceValue, CarriesTheElementsThatBothArraysHave) {
  EXPECT_EQ(strictlyCoerced("[ 1, 2, 3 ]", "int @default=9[5]"), "[ 1, 2, 3, 9, 9 ]");
  EXPECT_EQ(strictlyCoerced("[ 1, 2, 3, 4, 5 ]", "int[3]"), "[ 1, 2, 3 ]");
  EXPECT_EQ(strictlyCoerced("[ 1, 2 ]", "int[3] @default=[ 7, 8, 9 ]"), "[ 1, 2, 9 ]");
}

TEST(CoerceValue, CarriesTheCornerAtMatchingIndices) {
  EXPECT_EQ(strictlyCoerced("[ 1.0, 2.0, 3.0, 4.0, 5.0, 6.0 | 2, 3 ]", "float[3,2]"),
            "[ 1.0, 2.0, 0.0, 3.0, 4.0, 0.0 | 3, 2 ]");
  EXPECT_EQ(strictlyCoerced("[ 1, 2, 3, 4, 5, 6 | 3, 2 ]", "int[2,3]"),
            "[ 1, 2, 4, 5, 0, 0 | 2, 3 ]");
  EXPECT_EQ(strictlyCoerced("[ 1, 2, 3, 4, 5, 6, 7, 8 | 2, 2, 2 ]", "int[1,3,2]"),
            "[ 1, 3, 0, 5, 7, 0 | 1, 3, 2 ]");
  EXPECT_EQ(strictlyCoerced("[ 1, 2, 3, 4, 5, 6, 7, 8 | 2, 1, 2, 2 ]", "int @default=-1[1,2,1,2]"),
            "[ 1, -1, 5, -1 | 1, 2, 1, 2 ]");
}

TEST(CoerceValue, WalksElementsThatChange) {
  EXPECT_EQ(strictlyCoerced("[ { a = 1; }, { a = 2; }, { a = 3; }, { a = 4; } | 2, 2 ]",
                            "{ int a; int b; }[1,3]"),
            "[ { a = 1; b = 0; }, { a = 3; b = 0; }, { a = 0; b = 0; } | 1, 3 ]");
}

TEST(CoerceValue, OfNoCommonElementsDoesNothing) {
  EXPECT_EQ(strictlyCoerced("[ : int ]", "float @default=1.0[2]"), "[ 1.0, 1.0 ]");
  EXPECT_EQ(text(coerceValue(DynamicValue(type("int[2,0]")), type("float[2,2]"), kStrict)),
            "[ 0.0, 0.0, 0.0, 0.0 | 2, 2 ]");
  EXPECT_EQ(text(coerceValue(DynamicValue(type("int[2]")), type("float[0]"), kStrict)),
            "[ : float ]");
}

// The extents of such a type multiply to 0, and no elements lie in its values.
TEST(CoerceValue, OfExtentsThatRunOverCarriesNothing) {
  const DynamicValue source(type("int[65536,65536]"));
  ASSERT_EQ(source.typeOf().size(), 0u);
  EXPECT_EQ(text(coerceValue(source, type("int @default=4[2,1]"), kStrict)), "[ 4, 4 | 2, 1 ]");
  const DynamicValue back = coerceValue(value("[ 1, 2 | 2, 1 ]"), source.type(), kStrict);
  EXPECT_EQ(back.type(), source.type());
}

TEST(CoerceValue, KeepsTheLabelOfAnEnum) {
  EXPECT_EQ(strictlyCoerced("A : enum { A; B; }", "enum { B; A; }"), "A : enum { B; A; }");
  EXPECT_EQ(
      at<std::int32_t>(coerceValue(value("A : enum { A; B; }"), type("enum { B; A; }"), kStrict)),
      1);
  EXPECT_EQ(strictlyCoerced("[ B : enum { A; B; }, A : enum { A; B; } ]", "enum { C; A; B; }[3]"),
            "[ B : enum { C; A; B; }, A : enum { C; A; B; }, C : enum { C; A; B; } ]");
}

TEST(CoerceValue, LeavesAnEnumWithoutTheLabelAtItsDefault) {
  EXPECT_EQ(coerced("C : enum { A; B; C; }", "enum { A; B; }"), "A : enum { A; B; }");
  EXPECT_EQ(coerced("C : enum { A; B; C; }", "enum { A; B; } @default=B : enum { A; B; }"),
            "B : enum { A; B; }");
  EXPECT_REFUSED(strictlyCoerced("C : enum { A; B; C; }", "enum { A; B; }"),
                 "Enum constructor C not found in type enum { A; B; }.");
  EXPECT_EQ(strictlyCoerced("A : enum { A; B; C; }", "enum { B; A; } @default=B : enum { B; A; }"),
            "A : enum { B; A; }");
}

DynamicValue codes(const std::string& typeText, std::vector<std::int32_t> numbers) {
  return DynamicValue(type(typeText), numbers.data());
}

TEST(CoerceValue, RefusesACodeThatTheSourceEnumDoesNotHave) {
  for (const bool lenient : {kLenient, kStrict}) {
    const auto coerceCode = [lenient](std::int32_t code) {
      return coerceValue(codes("enum { A; B; }", {code}), type("enum { B; A; }"), lenient);
    };
    EXPECT_REFUSED(coerceCode(2), "Enum code out of range: 2");
    EXPECT_REFUSED(coerceCode(-1), "Enum code out of range: -1");
    // With no label in common, too.
    EXPECT_REFUSED(coerceValue(codes("enum { A; B; }", {7}), type("enum { C; }"), lenient),
                   "Enum code out of range: 7");
  }
}

TEST(CoerceValue, CopiesARelatedEnumWhateverItsCode) {
  EXPECT_EQ(at<std::int32_t>(coerceValue(codes("enum { A; B; }", {9}),
                                         type("enum { A( float x ); B @b; } @a"), kStrict)),
            9);
  EXPECT_EQ(text(coerceValue(codes("enum { A; B; }[2]", {9, 1}), type("int[3]"), kStrict)),
            "[ 9, 1, 0 ]");
}

TEST(CoerceValue, MakesNoEnumOfAnInt) {
  EXPECT_EQ(coerced("1", "enum { A; B; }"), "A : enum { A; B; }");
  EXPECT_REFUSED(strictlyCoerced("1", "enum { A; B; }"),
                 "Cannot convert int to enum { A; B; }: Types are unrelated.");
}

// One of each kind: as a source, and as a target that relates to none of the sources.
struct Kind {
  const char* source;
  const char* target;
  const char* targetText;
};

constexpr Kind kKinds[] = {
    {"int", "float @default=1.5", "float"},
    {"enum { A; B; }", "enum { A; C; } @default=C : enum { A; C; }", "enum { A; C; }"},
    {"{ int a; }", "{ int @default=7 b; int a; }", "{ int b; int a; }"},
    {"int[1]", "int @default=7[2]", "int[2]"},
    {"int[1,1]", "int @default=7[2,1]", "int[2,1]"},
    {"int[1,1,1]", "int @default=7[1,1,2]", "int[1,1,2]"},
    {"int[1,1,1,1]", "int @default=7[1,1,1,2]", "int[1,1,1,2]"},
    {"int*", "float* @default=&1.5", "float*"},
    {"((int) => int)", "((float) => int)", "((float) => int)"},
};

TEST(CoerceValue, RelatesNoKindsButTheSame) {
  constexpr std::size_t kReference = 7;
  for (std::size_t s = 0; s < std::size(kKinds); ++s) {
    for (std::size_t t = 0; t < std::size(kKinds); ++t) {
      // Of the same kind, base types, references and functions that don't relate are no better.
      if (s == t && s != 0 && s < kReference) continue;
      const TypePtr target = type(kKinds[t].target);
      std::vector<char> ones(type(kKinds[s].source)->size(), 1);
      const DynamicValue source(type(kKinds[s].source), ones.data());
      EXPECT_TRUE(sameBytes(coerceValue(source, target, kLenient), makeDefaultValue(target)))
          << kKinds[s].source << " to " << kKinds[t].target;
      const std::string words = std::string("Cannot convert ") + kKinds[s].source + " to " +
                                kKinds[t].targetText + ": Types are unrelated.";
      EXPECT_REFUSED(coerceValue(source, target, kStrict), words.c_str());
    }
  }
}

TEST(CoerceValue, NamesTheTypesWithoutMetadata) {
  const DynamicValue source = value("1");
  const TypePtr annotated = type("int @a @b=\"c\"");
  EXPECT_REFUSED(
      coerceValue(ConstView{annotated.get(), 0, &source}, type("{ float @d x; } @e"), kStrict),
      "Cannot convert int to { float x; }: Types are unrelated.");
}

TEST(CoerceValue, FailsWithTheFirstPartThatDoesNotConvert) {
  EXPECT_REFUSED(strictlyCoerced("{ a = 1; b = 2.0; }", "{ int b; float a; }"),
                 "Cannot convert int to float: Types are unrelated.");
  EXPECT_REFUSED(
      strictlyCoerced("[ B : enum { A; B; C; }, C : enum { A; B; C; } ]", "enum { A; }[2]"),
      "Enum constructor B not found in type enum { A; }.");
  EXPECT_REFUSED(
      strictlyCoerced("[ { e = A : enum { A; B; C; }; x = 1; } ]", "{ bool x; enum { B; } e; }[1]"),
      "Enum constructor A not found in type enum { B; }.");
  // x runs fastest: the first column fails before the second row does.
  EXPECT_REFUSED(
      coerceValue(codes("enum { A; B; C; }[2,2]", {0, 1, 2, 0}), type("enum { A; }[2,2]"), kStrict),
      "Enum constructor B not found in type enum { A; }.");
}

TEST(CoerceValue, DropsTheResultOfAFailureWhole) {
  const DynamicValue source = value("{ a = &1; b = 2; }");
  vrntValue_t* const referred = blockOfWord(at<std::uint64_t>(source));
  const std::uint32_t before = referred->refCount;
  EXPECT_REFUSED(coerceValue(source, type("{ int* a; float b; }"), kStrict),
                 "Cannot convert int to float: Types are unrelated.");
  EXPECT_EQ(referred->refCount, before);
}

TEST(CoerceValue, LeavesTheSourceAsItIs) {
  const DynamicValue source = value("{ a = 1; b = [ 1, 2 ]; }");
  coerceValue(source, type("{ int[3] b; int c; }"), kLenient);
  EXPECT_EQ(text(source), "{ a = 1; b = [ 1, 2 ]; }");
  EXPECT_EQ(count(source), 1u);
}

TEST(CoerceValue, CarriesReferencesWithTheirCounts) {
  const DynamicValue referee = value("5");
  const DynamicValue source =
      DynamicValue::structure({{"r", DynamicValue::reference(referee)},
                               {"s", DynamicValue::foreign(type("void*"), 0x123)}});
  ASSERT_EQ(count(referee), 2u);
  const TypePtr target = type("{ void* @default=&7 s; int k; void* @default=&8 r; }");
  const DynamicValue kept = makeDefaultValue(target);
  vrntValue_t* const replaced = blockOfWord(at<std::uint64_t>(kept, 16));
  const std::uint32_t before = replaced->refCount;
  {
    const DynamicValue result = coerceValue(source, target, kStrict);
    EXPECT_EQ(at<std::uint64_t>(result, 0), 0x123u * 2 + 1);
    EXPECT_EQ(at<std::uint64_t>(result, 16), wordOfBlock(referee.block()));
    EXPECT_EQ(count(referee), 3u);
    EXPECT_EQ(replaced->refCount, before);
  }
  EXPECT_EQ(count(referee), 2u);
  EXPECT_EQ(replaced->refCount, before);
}

TEST(CoerceValue, LeavesAReferenceThatDoesNotRelateAtItsDefault) {
  const TypePtr target = type("{ float* @default=&7.5 r; int k; }");
  vrntValue_t* const referred = blockOfWord(at<std::uint64_t>(makeDefaultValue(target)));
  const std::uint32_t before = referred->refCount;
  const DynamicValue result = coerceValue(value("{ r = &5; k = 4; }"), target, kLenient);
  EXPECT_EQ(text(result), "{ r = &7.5; k = 4; }");
  EXPECT_EQ(referred->refCount, before + 1);
}

TEST(CoerceValue, CountsTheReferencesOfCopiedElements) {
  const DynamicValue referee = value("5");
  const DynamicValue element =
      DynamicValue::structure({{"k", value("1")}, {"r", DynamicValue::reference(referee)}});
  const DynamicValue source =
      DynamicValue::array({element, element, element, element, element, element}, index2{3, 2});
  ASSERT_EQ(count(referee), 8u);
  const TypePtr target = type("{ int k; int* @default=&7 r; }[2,3]");
  const DynamicValue standard = makeDefaultValue(target);
  vrntValue_t* const replaced = blockOfWord(at<std::uint64_t>(standard, 8));
  const std::uint32_t before = replaced->refCount;
  {
    const DynamicValue result = coerceValue(source, target, kStrict);
    EXPECT_EQ(text(result),
              "[ { k = 1; r = &5; }, { k = 1; r = &5; }, { k = 1; r = &5; }, { k = 1; r = &5; }, "
              "{ k = 0; r = &7; }, { k = 0; r = &7; } | 2, 3 ]");
    EXPECT_EQ(count(referee), 12u);
    EXPECT_EQ(replaced->refCount, before + 2);
  }
  EXPECT_EQ(count(referee), 8u);
  EXPECT_EQ(replaced->refCount, before);
}

TEST(CoerceValue, CarriesFunctionsOfRelatedTypes) {
  const TypePtr function = type("((int) => int)");
  const DynamicValue source =
      DynamicValue::structure({{"f", DynamicValue::function(function, 3, 4)}});
  const DynamicValue result = coerceValue(source, type("{ int a; ((int) => int) f; }"), kStrict);
  EXPECT_EQ(at<std::uint64_t>(result, 8), 7u);
  EXPECT_EQ(at<std::uint64_t>(result, 16), 9u);
}

TEST(CoerceValue, ToOpenExtentsTakesNothing) {
  for (const bool lenient : {kLenient, kStrict}) {
    const DynamicValue result = coerceValue(value("[ 1.0, 2.0 ]"), type("float[]"), lenient);
    EXPECT_EQ(result.type(), type("float[]"));
    EXPECT_EQ(result.length(), 0);
    const DynamicValue open(type("float[]"));
    EXPECT_EQ(coerceValue(open, type("float[]"), lenient).type(), type("float[]"));
  }
}

TEST(CoerceValue, OfOpenExtentsFailsWhereTheTypesDoNotRelate) {
  for (const bool lenient : {kLenient, kStrict}) {
    EXPECT_THROW(coerceValue(value("[ 1, 2 ]"), type("float[]"), lenient),
                 std::bad_optional_access);
    EXPECT_THROW(coerceValue(DynamicValue(type("int[]")), type("int[2]"), lenient),
                 std::bad_optional_access);
    EXPECT_THROW(coerceValue(DynamicValue(type("int[,]")), type("float[2,2]"), lenient),
                 std::bad_optional_access);
    EXPECT_THROW(coerceValue(DynamicValue(type("int[,,]")), type("float[,,]"), lenient),
                 std::bad_optional_access);
    EXPECT_THROW(coerceValue(value("[ 1 | 1, 1, 1, 1 ]"), type("float[,,,]"), lenient),
                 std::bad_optional_access);
  }
  const DynamicValue other = coerceValue(value("[ 1, 2 ]"), type("int[,]"), kLenient);
  EXPECT_EQ(other.type(), type("int[,]"));
  EXPECT_REFUSED(coerceValue(value("[ 1, 2 ]"), type("int[,]"), kStrict),
                 "Cannot convert int[2] to int[,]: Types are unrelated.");
}

TEST(CoerceValue, GivesTheDeclaredLength) {
  DynamicValue source = value("[ 1, 2, 3 ]");
  source.setLength(1);
  EXPECT_EQ(coerceValue(source, type("int[3]"), kStrict).block()->length, 3u);
  EXPECT_EQ(coerceValue(source, type("int[4]"), kStrict).block()->length, 4u);
  EXPECT_EQ(text(coerceValue(source, type("int[4]"), kStrict)), "[ 1, 2, 3, 0 ]");
}

TEST(CoerceValue, OfAPartOfAValue) {
  const DynamicValue source = value("{ a = 1; b = [ { x = 2; }, { x = 3; } ]; }");
  EXPECT_EQ(
      text(coerceValue(source.view().field("b").element(1), type("{ int y; int x; }"), kStrict)),
      "{ y = 0; x = 3; }");
}

TEST(CoerceValue, GivesEachCallABlockOfItsOwn) {
  const TypePtr target = type("{ int @default=3 a; int b; }");
  const DynamicValue source = value("{ b = 2; }");
  const DynamicValue first = coerceValue(source, target, kLenient);
  const DynamicValue second = coerceValue(source, target, kLenient);
  EXPECT_EQ(count(first), 1u);
  EXPECT_EQ(text(coerceValue(value("{ b = 5; }"), target, kLenient)), "{ a = 3; b = 5; }");
  EXPECT_EQ(text(first), "{ a = 3; b = 2; }");
  EXPECT_EQ(text(second), "{ a = 3; b = 2; }");
}

// Sizes.

std::vector<Type::Field> manyFields(const std::string& typeText, bool backwards) {
  constexpr int kFields = 10000;
  const TypePtr t = type(typeText);
  std::vector<Type::Field> fields;
  for (int i = 0; i < kFields; ++i) {
    fields.emplace_back(t, "f" + std::to_string(backwards ? kFields - 1 - i : i));
  }
  return fields;
}

TEST(CoerceValue, OfTenThousandFieldsInAnotherOrder) {
  const TypePtr sourceType = makeType(Type::TStruct(manyFields("int", false)));
  const TypePtr targetType = makeType(Type::TStruct(manyFields("int", true)));
  const DynamicValue source = DynamicValue::filled(sourceType, [](const InternedType&, char* data) {
    for (int i = 0; i < 10000; ++i) std::memcpy(data + 4 * i, &i, sizeof(i));
  });
  const DynamicValue result = coerceValue(source, targetType, kStrict);
  for (std::uint64_t i = 0; i < 10000; ++i) {
    ASSERT_EQ(at<std::int32_t>(result, 4 * i), 9999 - static_cast<std::int32_t>(i));
  }
}

TEST(CoerceValue, OfAMillionElements) {
  constexpr int kCount = 1000000;
  const DynamicValue source =
      DynamicValue::filled(type("float[1000000]"), [](const InternedType&, char* data) {
        for (int i = 0; i < kCount; ++i) {
          const float number = static_cast<float>(i);
          std::memcpy(data + 4 * std::size_t(i), &number, sizeof(number));
        }
      });
  const DynamicValue longer = coerceValue(source, type("float @default=0.5[1000002]"), kStrict);
  EXPECT_EQ(std::memcmp(longer.data(), source.data(), 4 * std::size_t(kCount)), 0);
  EXPECT_EQ(at<float>(longer, 4 * std::uint64_t(kCount)), 0.5F);
  EXPECT_EQ(at<float>(longer, 4 * std::uint64_t(kCount) + 4), 0.5F);
  const DynamicValue shorter = coerceValue(source, type("float[999999]"), kStrict);
  EXPECT_EQ(std::memcmp(shorter.data(), source.data(), 4 * std::size_t(kCount - 1)), 0);
  const DynamicValue wrapped = coerceValue(longer, type("{ float x; }[1000000]"), kLenient);
  EXPECT_EQ(at<float>(wrapped, 400), 0.0F);
}

TEST(CoerceValue, OfAMillionStructs) {
  const DynamicValue source = DynamicValue::filled(
      type("{ int a; enum { A; B; } e; }[1000,1000]"), [](const InternedType& t, char* data) {
        for (std::uint64_t i = 0; i < t.size() / 8; ++i) {
          const std::int32_t words[] = {static_cast<std::int32_t>(i),
                                        static_cast<std::int32_t>(i % 2)};
          std::memcpy(data + 8 * i, words, sizeof(words));
        }
      });
  const DynamicValue result = coerceValue(
      source, type("{ enum { B; A; } e; float @default=1.0 x; int a; }[999,1001]"), kStrict);
  const auto wordAt = [&](std::uint64_t x, std::uint64_t y, std::uint64_t word) {
    return at<std::int32_t>(result, ((y * 999 + x) * 3 + word) * 4);
  };
  for (std::uint64_t y = 0; y < 1000; y += 37) {
    for (std::uint64_t x = 0; x < 999; ++x) {
      const auto i = static_cast<std::int32_t>(y * 1000 + x);
      ASSERT_EQ(wordAt(x, y, 0), 1 - i % 2);
      ASSERT_EQ(wordAt(x, y, 1), 0x3F800000);
      ASSERT_EQ(wordAt(x, y, 2), i);
    }
  }
  EXPECT_EQ(wordAt(0, 1000, 0), 0);
  EXPECT_EQ(wordAt(998, 1000, 1), 0x3F800000);
  EXPECT_EQ(wordAt(998, 1000, 2), 0);
}

TEST(CoerceValue, OfDeepNestingNeedsNoStack) {
  vornath_test::runOnStack(vornath_test::kSmallStack, [] {
    const DynamicValue source =
        coerceValue(codes("enum { A; B; }", {1}), type("enum { A; B; }"), kStrict);
    const DynamicValue deep(nested(source.type()), source.data());
    const DynamicValue renumbered = coerceValue(deep, nested(type("enum { B; A; }")), kStrict);
    EXPECT_EQ(at<std::int32_t>(renumbered), 0);
    EXPECT_EQ(at<std::int32_t>(coerceValue(deep, nested(type("int")), kStrict)), 1);
    EXPECT_EQ(at<float>(coerceValue(deep, nested(type("float")), kLenient)), 0.0F);
    EXPECT_REFUSED(coerceValue(deep, nested(type("float")), kStrict),
                   "Cannot convert enum { A; B; } to float: Types are unrelated.");
  });
}

// A struct with a field beside the next level, so that each level does something of its own.
TEST(CoerceValue, OfDeepNestingCarriesWhatLiesOnTheWay) {
  const auto levels = [](const std::string& innermost, bool extra) {
    TypePtr t = type(innermost);
    for (int i = 0; i < 1000; ++i) {
      std::vector<Type::Field> fields{{type("int"), "k"}, {t, "a"}};
      if (extra && i % 100 == 0) fields.emplace_back(type("int"), "z");
      t = makeType(Type::TStruct(std::move(fields)));
    }
    return t;
  };
  vornath_test::runOnStack(vornath_test::kSmallStack, [&] {
    const DynamicValue source =
        DynamicValue::filled(levels("int", false), [](const InternedType&, char* data) {
          for (std::int32_t i = 0; i <= 1000; ++i) std::memcpy(data + 4 * i, &i, sizeof(i));
        });
    const DynamicValue result = coerceValue(source, levels("float", true), kLenient);
    const InternedType* t = &result.typeOf();
    std::uint64_t offset = 0;
    for (std::int32_t i = 0; i < 1000; ++i) {
      EXPECT_EQ(at<std::int32_t>(result, offset), i);
      offset += fieldPart(*t, "a").offset;
      t = fieldPart(*t, "a").type;
    }
    EXPECT_EQ(at<float>(result, offset), 0.0F);
  });
}

// The slow walk: one step for each pair of views, in the order of the parts.

template <typename Visit>
void forEachIndex(const std::array<std::int32_t, 4>& extents, Visit visit) {
  for (std::int32_t w = 0; w < extents[3]; ++w) {
    for (std::int32_t z = 0; z < extents[2]; ++z) {
      for (std::int32_t y = 0; y < extents[1]; ++y) {
        for (std::int32_t x = 0; x < extents[0]; ++x) visit(x, y, z, w);
      }
    }
  }
}

void slowConvert(const ConstView& source, const View& target, bool lenient);

[[noreturn]] void refuse(const std::string& words) {
  throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, words);
}

void slowStep(const Type::TStruct& s, const Type::TStruct& t, const ConstView& source,
              const View& target, bool lenient) {
  for (std::size_t i = 0; i < s.fields.size(); ++i) {
    if (!t.hasField(s.fields[i].label)) continue;
    slowConvert(source.field(i), target.field(s.fields[i].label), lenient);
  }
}

void slowStep(const Type::TEnum& s, const Type::TEnum& t, const ConstView& source,
              const View& target, bool lenient) {
  std::int32_t code;
  std::memcpy(&code, source.data(), sizeof(code));
  const std::string name = s.constructorName(code);
  try {
    const std::int32_t found = t.constructorIndex(name);
    writeSpan(*target.mutableOwner, *target.type, target.offset, &found);
  } catch (const vrnt::Exception&) {
    if (!lenient) {
      refuse("Enum constructor " + name + " not found in type " + target.type->text() + ".");
    }
  }
}

void slowStep(const Type::TArrayND<int>& s, const Type::TArrayND<int>& t, const ConstView& source,
              const View& target, bool lenient) {
  forEachIndex({std::min(s.shape.value(), t.shape.value()), 1, 1, 1}, [&](int x, int, int, int) {
    slowConvert(source.element(x), target.element(x), lenient);
  });
}

void slowStep(const Type::TArrayND<index2>& s, const Type::TArrayND<index2>& t,
              const ConstView& source, const View& target, bool lenient) {
  const index2 a = s.shape.value(), b = t.shape.value();
  forEachIndex({std::min(a.x, b.x), std::min(a.y, b.y), 1, 1}, [&](int x, int y, int, int) {
    slowConvert(source.element(index2{x, y}), target.element(index2{x, y}), lenient);
  });
}

void slowStep(const Type::TArrayND<index3>& s, const Type::TArrayND<index3>& t,
              const ConstView& source, const View& target, bool lenient) {
  const index3 a = s.shape.value(), b = t.shape.value();
  forEachIndex({std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z), 1}, [&](int x, int y,
                                                                                    int z, int) {
    slowConvert(source.element(index3{x, y, z}), target.element(index3{x, y, z}), lenient);
  });
}

void slowStep(const Type::TArrayND<index4>& s, const Type::TArrayND<index4>& t,
              const ConstView& source, const View& target, bool lenient) {
  const index4 a = s.shape.value(), b = t.shape.value();
  forEachIndex({std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z), std::min(a.w, b.w)},
               [&](int x, int y, int z, int w) {
                 slowConvert(source.element(index4{x, y, z, w}), target.element(index4{x, y, z, w}),
                             lenient);
               });
}

template <typename S, typename T>
void slowStep(const S&, const T&, const ConstView& source, const View& target, bool lenient) {
  if (lenient) return;
  refuse("Cannot convert " + source.type->text() + " to " + target.type->text() +
         ": Types are unrelated.");
}

void slowConvert(const ConstView& source, const View& target, bool lenient) {
  if (source.type == target.type || isSubType(*source.type, *target.type)) {
    assignView(target, source);
    return;
  }
  std::visit([&](const auto& s, const auto& t) { slowStep(s, t, source, target, lenient); },
             source.type->desc(), target.type->desc());
}

DynamicValue slowCoerce(const DynamicValue& source, const TypePtr& targetType, bool lenient) {
  DynamicValue result = makeValueBounds(targetType)[kDefault];
  slowConvert(source.view(), result.view(), lenient);
  return result;
}

// Two types with something in common.
std::pair<std::string, std::string> typePair(Random& random, int depth);

std::string targetType(Random& random, int depth) { return typePair(random, depth).second; }

std::pair<std::string, std::string> structPair(Random& random, int depth) {
  std::vector<std::string> source, target;
  for (const char* label : {"a", "b", "c", "d", "e"}) {
    const auto [s, t] = typePair(random, depth - 1);
    if (!random.once(4)) source.push_back(s + " " + label + "; ");
    if (!random.once(4)) target.push_back(t + " " + label + "; ");
  }
  if (random.once(2)) random.shuffle(target);
  std::pair<std::string, std::string> both{"{ ", "{ "};
  for (const std::string& field : source) both.first += field;
  for (const std::string& field : target) both.second += field;
  return {both.first + "}", both.second + "}"};
}

std::pair<std::string, std::string> typePair(Random& random, int depth) {
  switch (random.below(depth == 0 ? 6 : 12)) {
    case 0: {
      const std::string t = random.base();
      return {t, t};
    }
    case 1:
      return {"int", "int @default=" + std::to_string(random.below(100))};
    case 2:
      return {random.base(), random.base()};
    case 3:
      return {random.enumeration(), random.once(3) ? "int" : random.enumeration()};
    case 4: {
      static const std::pair<const char*, const char*> kReferences[] = {
          {"int*", "int*"},
          {"int*", "void*"},
          {"int[3]*", "int[]* @default=&[ 1 ]"},
          {"void*", "int*"},
          {"float*", "int* @default=&5"},
          {"int[]*", "int[3]*"},
          {"int*", "void* @default=&6"}};
      return kReferences[random.below(7)];
    }
    case 5:
      return {"((int) => float)", random.once(2) ? "((int) => float)" : "((int) => int)"};
    case 6:
    case 7:
    case 8:
      return structPair(random, depth);
    case 9:
    case 10: {
      const auto [s, t] = typePair(random, depth - 1);
      const int rank = 1 + random.below(4);
      const std::string shape = random.extents(rank);
      return {s + shape, t + (random.once(4) ? shape : random.extents(rank))};
    }
    default: {
      const std::string other = targetType(random, depth - 1);
      return {typePair(random, depth - 1).first, other};
    }
  }
}

std::string outcome(const std::function<DynamicValue()>& work, std::optional<DynamicValue>& made) {
  try {
    made.emplace(work());
  } catch (const vrnt::Exception& failure) {
    return failure.what();
  }
  return "";
}

// The first value of a pair of types is converted by a plan that is built for it, the others by the
// kept one.
TEST(CoerceValue, GivesWhatTheSlowWalkGives) {
  Random random(20240817);
  std::vector<DynamicValue> referees;
  for (int i = 0; i < 3; ++i) referees.push_back(value(std::to_string(i)));
  const int pairs = vornath_test::cases(30000);
  int carried = 0, failed = 0, byKeptPlan = 0;
  for (int i = 0; i < pairs; ++i) {
    const auto [sourceText, targetText] = typePair(random, 3);
    const TypePtr sourceType = type(sourceText);
    const TypePtr target = type(targetText);
    for (int j = 0; j < 6; ++j) {
      const DynamicValue source = random.valueOf(sourceType, referees, random.once(4));
      const bool lenient = random.once(2);
      const PlanKind kind = lenient ? PlanKind::LenientCoercion : PlanKind::StrictCoercion;
      byKeptPlan += findKeptPlan(kind, source.typeOf(), target->stripped()) != nullptr;
      const auto before = counts(referees);
      std::optional<DynamicValue> slow, fast;
      const std::string slowWords =
          outcome([&] { return slowCoerce(source, target, lenient); }, slow);
      const auto withSlow = counts(referees);
      const std::string fastWords =
          outcome([&] { return coerceValue(source, target, lenient); }, fast);
      const auto withBoth = counts(referees);
      ASSERT_EQ(fastWords, slowWords) << sourceText << "\n" << targetText;
      ASSERT_EQ(slow.has_value(), fast.has_value());
      (slow ? carried : failed) += 1;
      if (slow) {
        ASSERT_TRUE(sameBytes(*fast, *slow)) << sourceText << "\n" << targetText;
        EXPECT_EQ(count(*fast), 1u);
      }
      for (std::size_t r = 0; r < referees.size(); ++r) {
        ASSERT_EQ(withBoth[r] - withSlow[r], withSlow[r] - before[r]) << targetText;
      }
      slow.reset();
      fast.reset();
      ASSERT_EQ(counts(referees), before);
    }
  }
  EXPECT_GT(carried, 3 * pairs);
  EXPECT_GT(failed, pairs);
  EXPECT_GT(byKeptPlan, 3 * pairs);
}

}  // namespace
}  // namespace qex::vornath::test
