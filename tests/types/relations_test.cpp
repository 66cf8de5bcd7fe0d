// Whether a value of one type may stand where another is expected, and why not.
#include "types/relations.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "type_support.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary
using qex::vornath::checkSubType;
using qex::vornath::isSameType;
using qex::vornath::isSubType;

struct Pair {
  const char* a;
  const char* b;
};

void expectRelated(const Pair& pair) {
  const TypePtr a = parsed(pair.a);
  const TypePtr b = parsed(pair.b);
  EXPECT_TRUE(isSubType(*a, *b)) << pair.a << " for " << pair.b;
  EXPECT_EQ(checkSubType(*a, *b), std::nullopt) << pair.a << " for " << pair.b;
}

void expectReason(const Pair& pair, const std::string& reason) {
  const TypePtr a = parsed(pair.a);
  const TypePtr b = parsed(pair.b);
  EXPECT_FALSE(isSubType(*a, *b)) << pair.a << " for " << pair.b;
  EXPECT_EQ(checkSubType(*a, *b).value_or("(related)"), reason) << pair.a << " for " << pair.b;
}

struct Kind {
  const char* text;
  const char* label;
};
// One of each kind, with the name by which a reason calls it.
const std::vector<Kind> kKinds{{"float", "float"},
                               {"enum { A; B; }", "enum { A; B; }"},
                               {"{ int a; float b; }", "{ a; b; }"},
                               {"float[3]", "array"},
                               {"float[2,3]", "array2d"},
                               {"float[2,3,4]", "array3d"},
                               {"float[,,,]", "array4d"},
                               {"int*", "ref"},
                               {"((int) => int)", "func"}};

}  // namespace

TEST(SubTypes, RelateToThemselves) {
  for (const Kind& kind : kKinds) expectRelated({kind.text, kind.text});
  expectRelated({"void*", "void*"});
}

TEST(SubTypes, LeaveMetadataOut) {
  const TypePtr a = parsed("float @a");
  const TypePtr b = parsed("float @b");
  EXPECT_NE(a, b);
  expectRelated({"float @a", "float @b"});
  expectRelated({"float @b", "float @a"});
  expectRelated({"{ float @a x; } @c", "{ float @min=0.0 x; }"});
  expectRelated({"float @a[3]* @x", "float[3] @b* @y"});
  expectRelated({"((int @a) => int @b) @c", "((int) => int)"});
  expectRelated({"enum { A @name=\"a\"; B; }", "enum { A; B @k; } @t"});
}

TEST(SubTypes, OfDifferentKindsDoNotRelate) {
  for (const Kind& a : kKinds) {
    for (const Kind& b : kKinds) {
      if (&a == &b) continue;
      expectReason({a.text, b.text},
                   std::string("type ") + a.label + " does not match type " + b.label);
    }
  }
}

TEST(SubTypes, OfABaseTypeIsOnlyItself) {
  for (int a = 0; a < 20; ++a) {
    for (int b = 0; b < 20; ++b) {
      const TypePtr first = make(static_cast<Base>(a));
      const TypePtr second = make(static_cast<Base>(b));
      EXPECT_EQ(isSubType(*first, *second), a == b) << first->text() << " " << second->text();
    }
  }
  expectReason({"float", "int"}, "type float does not match type int");
  expectReason({"half3", "half4"}, "type half3 does not match type half4");
}

TEST(SubTypes, LetAnEnumStandForAnInteger) {
  expectRelated({"enum { A; B; }", "int"});
  expectRelated({"enum { A(float x); }", "int"});
  expectReason({"int", "enum { A; B; }"}, "type int does not match type enum { A; B; }");
  expectReason({"enum { A; B; }", "float"}, "type enum { A; B; } does not match type float");
  expectReason({"enum { A; B; }", "int2"}, "type enum { A; B; } does not match type int2");
  expectReason({"enum { A; B; }", "bool"}, "type enum { A; B; } does not match type bool");
}

TEST(SubTypes, CompareEnumsByTheirNamesInOrder) {
  expectReason({"enum { A; }", "enum { A; B; }"},
               "type enum { A; } does not match type enum { A; B; }");
  expectReason({"enum { A; B; }", "enum { A; }"},
               "type enum { A; B; } does not match type enum { A; }");
  expectReason({"enum { A; B; }", "enum { B; A; }"},
               "type enum { A; B; } does not match type enum { B; A; }");
  expectReason({"enum { A; B; }", "enum { A; C; }"},
               "type enum { A; B; } does not match type enum { A; C; }");
}

TEST(SubTypes, CompareNoPayloads) {
  // An annotation keeps the two apart as objects; the payload of the plain one stays.
  const TypePtr loaded = parsed("enum { RelA(int x); RelB; }");
  const TypePtr annotated = parsed("enum { RelA(float y); RelB @k; }");
  ASSERT_NE(loaded, annotated);
  EXPECT_TRUE(isSubType(*loaded, *annotated));
  EXPECT_TRUE(isSubType(*annotated, *loaded));
  EXPECT_EQ(checkSubType(*loaded, *annotated), std::nullopt);
}

TEST(SubTypes, CompareStructsFieldByField) {
  expectRelated({"{ float[3]* a; enum { A; } b; }", "{ void* a; int b; }"});
  expectRelated({"{ }", "{ } @a"});
  expectReason({"{ int a; }", "{ int a; int b; }"}, "type { a; } does not match type { a; b; }");
  expectReason({"{ int a; int b; }", "{ int a; }"}, "type { a; b; } does not match type { a; }");
  expectReason({"{ int a; int b; }", "{ int a; int c; }"},
               "type { a; b; } does not match type { a; c; }");
  expectReason({"{ int a; int b; }", "{ int b; int a; }"},
               "type { a; b; } does not match type { b; a; }");
  expectReason({"{ }", "{ int a; }"}, "type { } does not match type { a; }");
  // All labels come before the first type of a field.
  expectReason({"{ int a; int b; }", "{ float a; int c; }"},
               "type { a; b; } does not match type { a; c; }");
  expectReason({"{ int a; float b; }", "{ int a; int b; }"},
               "Type mismatch for field b: type float does not match type int");
  expectReason({"{ { { float c; } b; } a; }", "{ { { int c; } b; } a; }"},
               "Type mismatch for field a: Type mismatch for field b: Type mismatch for field c: "
               "type float does not match type int");
}

TEST(SubTypes, CompareArraysByExtentsThenElements) {
  expectRelated({"float[3]", "float[]"});
  expectRelated({"float[]", "float[]"});
  expectRelated({"float[2,3]", "float[,]"});
  expectRelated({"float[2,3,4]", "float[,,]"});
  expectRelated({"float[2,3,4,5]", "float[,,,]"});
  expectRelated({"enum { A; }[3]", "int[3]"});
  expectRelated({"float*[3]", "void*[]"});
  expectReason({"float[3]", "float[4]"}, "Expected array of size: 4 - provided array of size: 3");
  // Unknown extents show as they do in vrntTypeArrayShape().
  expectReason({"float[]", "float[3]"}, "Expected array of size: 3 - provided array of size: -1");
  expectReason({"float[,]", "float[2,3]"},
               "Expected array of size: 2,3 - provided array of size: -1,-1");
  expectReason({"float[2,3]", "float[3,2]"},
               "Expected array of size: 3,2 - provided array of size: 2,3");
  expectReason({"float[2,3,4]", "float[2,3,5]"},
               "Expected array of size: 2,3,5 - provided array of size: 2,3,4");
  expectReason({"float[1,2,3,4]", "float[0,2,3,4]"},
               "Expected array of size: 0,2,3,4 - provided array of size: 1,2,3,4");
  expectReason({"float[3]", "int[3]"}, "Array type mismatch: type float does not match type int");
  expectReason({"float[3]", "int[]"}, "Array type mismatch: type float does not match type int");
  expectReason({"float[2,2]", "int[2,2]"},
               "Array type mismatch: type float does not match type int");
  expectReason({"float[1,2,3]", "int[1,2,3]"},
               "Array type mismatch: type float does not match type int");
  expectReason({"float[1,2,3,4]", "int[1,2,3,4]"},
               "Array type mismatch: type float does not match type int");
  expectReason({"float[3]", "int[4]"}, "Expected array of size: 4 - provided array of size: 3");
  expectReason({"float[3][2]", "float[4][2]"},
               "Array type mismatch: Expected array of size: 4 - provided array of size: 3");
}

TEST(SubTypes, DoNotLetOpenExtentsStandForGivenOnes) {
  for (const Pair& pair : {Pair{"float[]", "float[3]"}, Pair{"float[,]", "float[2,3]"},
                           Pair{"float[,,]", "float[2,3,4]"}, Pair{"float[,,,]", "float[2,3,4,5]"},
                           Pair{"float[]", "float[0]"}}) {
    const TypePtr a = parsed(pair.a);
    const TypePtr b = parsed(pair.b);
    EXPECT_FALSE(isSubType(*a, *b)) << pair.a;
    const auto reason = checkSubType(*a, *b);
    ASSERT_TRUE(reason) << pair.a;
    EXPECT_EQ(reason->rfind("Expected array of size: ", 0), 0u) << *reason;
  }
}

TEST(SubTypes, OfDifferentRankDoNotRelate) {
  expectReason({"float[2,3]", "float[]"}, "type array2d does not match type array");
  expectReason({"float[6]", "float[,]"}, "type array does not match type array2d");
  expectReason({"float[1,2,3]", "float[1,2,3,4]"}, "type array3d does not match type array4d");
}

TEST(SubTypes, CompareReferencesByTheirTargets) {
  expectRelated({"float[3]*", "void*"});
  expectRelated({"float[3]*", "float[]*"});
  expectRelated({"float**", "void**"});
  expectReason({"void*", "float*"},
               "Provided reference is missing a reference type - expected: float");
  expectReason({"void*", "{ int a; }*"},
               "Provided reference is missing a reference type - expected: { int a; }");
  expectReason({"float*", "int*"}, "Referenced type mismatch: type float does not match type int");
  expectReason({"float[]*", "float[3]*"}, [] {
    const auto inner = checkSubType(*parsed("float[]"), *parsed("float[3]"));
    return "Referenced type mismatch: " + inner.value_or("");
  }());
  expectReason({"void**", "float**"},
               "Referenced type mismatch: Provided reference is missing a reference type - "
               "expected: float");
}

TEST(SubTypes, NameTheExpectedTargetWithoutItsMetadata) {
  expectReason({"void* @a", "float @b* @c"},
               "Provided reference is missing a reference type - expected: float");
}

TEST(SubTypes, CompareFunctionsAgainstTheirDomains) {
  expectRelated({"(() => enum { A; })", "(() => int)"});
  expectRelated({"((int) => int)", "((enum { A; }) => int)"});
  expectRelated({"((void*) => float[3]*)", "((float*) => float[]*)"});
  expectReason({"((enum { A; }) => int)", "((int) => int)"},
               "Mismatch in function domain[0]: type int does not match type enum { A; }");
  expectReason({"((int) => int)", "((float) => int)"},
               "Mismatch in function domain[0]: type float does not match type int");
  expectReason({"((int, int, float) => int)", "((int, int, half) => int)"},
               "Mismatch in function domain[2]: type half does not match type float");
  expectReason({"(() => int)", "((int, int) => int)"},
               "Expected function with domain size: 2  - function with domain size: 0");
  expectReason({"((int) => float)", "(() => int)"},
               "Expected function with domain size: 0  - function with domain size: 1");
  expectReason({"(() => float)", "(() => int)"},
               "Function codomain mismatch: type float does not match type int");
  expectReason({"((int) => float)", "((float) => int)"},
               "Mismatch in function domain[0]: type float does not match type int");
}

TEST(SubTypes, AreCalledInReasonsByTheirKind) {
  expectReason({"{ int a; }", "void*"}, "type { a; } does not match type ref");
  expectReason({"{ }", "float"}, "type { } does not match type float");
  expectReason({"float[] @a", "(() => int) @b"}, "type array does not match type func");
  expectReason({"enum { CallA @name=\"a\"; CallB(int x); } @t", "float"},
               "type enum { CallA; CallB; } does not match type float");
}

TEST(SubTypes, KeepAPayloadInTheNameOfAnEnumWithoutMetadata) {
  expectReason({"enum { NamedA(int x); NamedB; }", "float"},
               "type enum { NamedA( int x ); NamedB; } does not match type float");
}

TEST(Identity, NeedsTheRelationBothWays) {
  EXPECT_TRUE(isSameType(*parsed("{ int @a x; }"), *parsed("{ int x; } @b")));
  EXPECT_FALSE(isSameType(*parsed("float[3]"), *parsed("float[]")));
  EXPECT_FALSE(isSameType(*parsed("enum { A; }"), *parsed("int")));
  EXPECT_FALSE(isSameType(*parsed("float*"), *parsed("void*")));
}

TEST(StripMetadata, IsTheTwinOrTheTypeItself) {
  const TypePtr plain = parsed("float[3]");
  const TypePtr annotated = parsed("float[3] @a");
  EXPECT_EQ(&qex::vornath::stripMetadata(*annotated), plain.get());
  EXPECT_EQ(&qex::vornath::stripMetadata(*plain), plain.get());
}
