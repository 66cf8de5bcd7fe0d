// When types end: the last reference, permanence, failures halfway.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "type_support.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary

std::size_t live() { return factory().liveTypes(); }

// Ends the permanent types that the cases here make, when all cases are through.
class Shutdown : public testing::Environment {
 public:
  void TearDown() override {
    vrntValuesShutdown();
    EXPECT_EQ(live(), 0u);
  }
};
const testing::Environment* const kShutdown = testing::AddGlobalTestEnvironment(new Shutdown);

}  // namespace

TEST(TypeLifetime, EndsWithTheLastReference) {
  const TypePtr parts[] = {parsed("int"), parsed("float[3]*")};
  const std::size_t before = live();
  TypePtr type = parsed("{ int lifetime_a; float[3]* lifetime_b; }");
  EXPECT_EQ(live(), before + 1);
  TypePtr copy = type;
  type.reset();
  EXPECT_EQ(live(), before + 1);
  EXPECT_EQ(copy->text(), "{ int lifetime_a; float[3]* lifetime_b; }");
  copy.reset();
  EXPECT_EQ(live(), before);
}

TEST(TypeLifetime, LeavesNothingBehind) {
  for (const char* typeText :
       {"float", "float @a", "float @a=1.0", "enum { A @a; B(int @b x); }", "{ float @a x; } @b",
        "float @a[3]", "float[2,3]", "float[,,]", "int[1,2,3,4] @a", "void*", "float @a[]*",
        "((int @a, float) => { int b; }) @c",
        "{ enum { A; } @default=A : enum { A; } a; int @default=[ : { float @x y; } | 2 ] b; }",
        "float @a=&{ x = [ 1.0, 2.0 ]; y = $(1:int @z); }"}) {
    // The first use may make types that the library holds on to.
    parsed(typeText);
    const std::size_t before = live();
    TypePtr type = parsed(typeText);
    type.reset();
    EXPECT_EQ(live(), before) << typeText;
  }
}

TEST(TypeLifetime, LeavesNothingBehindOfATextThatFails) {
  for (const char* typeText :
       {"", "{ float @a x; float[] y; }", "{ float @a x; int[4] x; }", "{ float @a x; float",
        "enum { A(float @a x); A; }", "float[3]*[][]", "float @a=1.0 @b=X : enum { A @k; }",
        "((int @a) => float[-1])", "{ float @a=&[ 1, 2 ] x; } !", "int @a=[ &1, 2 ]",
        "int @a={ x = &1.0; x = 1; }", "int @a=[ &1, &2 | 2, 2, 256c ]", "float @a \"open"}) {
    thrownBy([&] { parsed(typeText); });
    const std::size_t before = live();
    const Thrown failure = thrownBy([&] { parsed(typeText); });
    EXPECT_NE(failure.code, vrnt::ErrorCode::NoError) << typeText;
    EXPECT_EQ(live(), before) << typeText;
  }
}

TEST(TypeLifetime, OfAChildIsThatOfItsLastParent) {
  const std::size_t before = live();
  TypePtr inner = parsed("{ int inner_label; }");
  const std::size_t withInner = live();
  TypePtr outer = makeArray(inner, 3);
  const qex::vornath::InternedType* const address = inner.get();
  inner.reset();
  EXPECT_EQ(live(), withInner + 1);
  EXPECT_EQ(parsed("{ int inner_label; }").get(), address);
  outer.reset();
  EXPECT_EQ(live(), before);
}

TEST(TypeLifetime, OfALongChainEndsAsAWhole) {
  const std::size_t before = live();
  TypePtr type = make(Base::Float, {{"chain", flag()}});
  for (int i = 0; i < 600; ++i) type = makeReference(type);
  EXPECT_GE(live(), before + 600);
  type.reset();
  EXPECT_EQ(live(), before);
}

TEST(TypeLifetime, OfTwinsThatPrintAlikeIsTheirOwn) {
  parsed("float @alike=1.0");
  const std::size_t before = live();
  TypePtr older = parsed("float  @alike=1.0");
  TypePtr newer = parsed("float  @alike=1.0");
  newer.reset();
  EXPECT_EQ(older->text(), "float @alike=1.0");
  newer = parsed("float @alike=1.0");
  EXPECT_NE(newer, older);
  older.reset();
  EXPECT_EQ(newer->text(), "float @alike=1.0");
  EXPECT_EQ(parsed("float @alike=1.0")->text(), newer->text());
  newer.reset();
  EXPECT_EQ(live(), before);
}

TEST(TypeLifetime, FreesTheTableForANewMeaning) {
  // Payloads take no part in identity, so a new payload shows that the old type is gone.
  EXPECT_EQ(parsed("enum { Meaning(int x); }")->text(), "enum { Meaning( int x ); }");
  EXPECT_EQ(parsed("enum { Meaning(float y); }")->text(), "enum { Meaning( float y ); }");
}

TEST(AllocateType, GivesTheTypesAddressWithAReference) {
  TypePtr type = parsed("{ int allocated; }");
  const std::size_t held = live();
  vrntType_t* const handle = qex::vornath::allocateType(*type);
  EXPECT_EQ(static_cast<const void*>(handle), static_cast<const void*>(type.get()));
  type.reset();
  EXPECT_EQ(live(), held);
  EXPECT_STREQ(vrntTypeString(handle), "{ int allocated; }");
  vrntTypeDestroy(handle);
  EXPECT_LT(live(), held);
}

TEST(PermanentTypes, StayWithoutAReference) {
  TypePtr type = parsed("enum { Lasting(int x); }");
  EXPECT_EQ(factory().makePermanent(type.get()), type.get());
  type.reset();
  EXPECT_EQ(parsed("enum { Lasting(float y); }")->text(), "enum { Lasting( int x ); }");
  const std::size_t after = live();
  for (int i = 0; i < 3; ++i) parsed("enum { Lasting; }");
  EXPECT_EQ(live(), after);
}

TEST(PermanentTypes, MayBeMadeSoTwice) {
  TypePtr type = parsed("enum { Twice(int x); }");
  factory().makePermanent(type.get());
  EXPECT_EQ(factory().makePermanent(type.get()), type.get());
  const std::size_t held = live();
  type.reset();
  EXPECT_EQ(live(), held);
}

TEST(PermanentTypes, KeepTheirPartsAlive) {
  TypePtr type = parsed("{ enum { Part(int x); }* part; } @permanent_whole");
  factory().makePermanent(type.get());
  const std::size_t held = live();
  type.reset();
  EXPECT_EQ(live(), held);
  EXPECT_EQ(parsed("enum { Part(float y); }")->text(), "enum { Part( int x ); }");
}

TEST(ParseType, AnswersACanonicalTextFromTheTable) {
  const TypePtr first = parsed("float @default=1.0 @table");
  EXPECT_EQ(parsed("float @default=1.0 @table"), first);
}

TEST(ParseType, ReportsASyntaxErrorWithItsOwnCode) {
  const Thrown failure = thrownBy([] { parsed("float["); });
  EXPECT_EQ(failure.code, vrnt::ErrorCode::ParseFailed);
  EXPECT_EQ(
      failure.message,
      "Unable to parse type: float[.\nsyntax error, unexpected END, expecting ] or \",\" or INT");
}

TEST(ParseType, LetsABrokenRuleThroughWithItsOwnCode) {
  expectThrows([] { parsed("{ float x; float x; }"); }, "Duplicate struct field: x.");
  expectThrows([] { parsed("float[][]"); }, "concrete type required");
}
