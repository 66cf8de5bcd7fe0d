#include <gtest/gtest.h>

#include <new>
#include <type_traits>

#include "vornath_data/value.hpp"
#include "vornath_data/vrnt.h"

namespace {

using vrnt::BasicView;
using vrnt::ConstBasicView;
using vrnt::ConstView;
using vrnt::ErrorCode;
using vrnt::TypeHandle;
using vrnt::Value;
using vrnt::View;

static_assert(std::is_same_v<View, BasicView<Value*>>);
static_assert(std::is_same_v<ConstView, ConstBasicView<const Value*>>);

static_assert(std::is_base_of_v<ConstBasicView<Value*>, View>);
static_assert(std::has_virtual_destructor_v<ConstBasicView<Value*>>);
static_assert(std::has_virtual_destructor_v<ConstView>);
static_assert(sizeof(Value) == sizeof(void*));

Value parse(const char* text) { return Value::parse(text).value(); }

#define EXPECT_REFUSAL(call, words)                         \
  try {                                                     \
    static_cast<void>(call);                                \
    ADD_FAILURE() << #call << " threw nothing";             \
  } catch (const vrnt::Exception& refusal) {                \
    EXPECT_STREQ(refusal.what(), words);                    \
    EXPECT_EQ(refusal.code(), ErrorCode::InvalidArguments); \
  }

std::string text(const Value& value) { return ConstView(&value).text(); }

constexpr char kHuge[] = "char[2147483647][2147483647][3]";

TEST(TypeHandle, ParsesAText) {
  EXPECT_STREQ(vrntTypeString(TypeHandle::parse("int [ 2 ]").value().get()), "int[2]");
}

TEST(TypeHandle, FailsAsAParse) {
  const auto failure = TypeHandle::parse("int !");
  ASSERT_FALSE(failure);
  EXPECT_EQ(failure.error().code(), ErrorCode::ParseFailed);
  EXPECT_EQ(std::string(failure.error().text()).rfind("Unable to parse type: int !.\n", 0), 0u);
  EXPECT_THROW(static_cast<void>(failure.value()), vrnt::Exception);
}

TEST(ValueClass, CreatesZeroOrDefault) {
  const TypeHandle type = TypeHandle::parse("int @default=3").value();
  EXPECT_EQ(text(Value::create(type.get(), false).value()), "0");
  EXPECT_EQ(text(Value::create(type.get(), true).value()), "3");
}

TEST(ValueClass, ParsesAText) { EXPECT_EQ(text(parse("{ a = [ 1 ]; }")), "{ a = [ 1 ]; }"); }

TEST(ValueClass, ParseFailsAsCreate) {
  const auto failure = Value::parse("{ a = ");
  ASSERT_FALSE(failure);
  EXPECT_EQ(failure.error().code(), ErrorCode::InternalError);
  EXPECT_EQ(std::string(failure.error().text()).rfind("Unable to parse value: { a = .\n", 0), 0u);
  EXPECT_STREQ(Value::parse(nullptr).error().text(), "No text.");
}

TEST(ValueClass, ParseTakesNoTextForABlock) {
  const auto failure = Value::parse("vrntval");
  ASSERT_FALSE(failure);
  EXPECT_EQ(std::string(failure.error().text()).rfind("Unable to parse value:  vrntval.\n", 0), 0u);
}

TEST(ValueClass, CoercesToAnotherType) {
  const TypeHandle type = TypeHandle::parse("{ int b; int @default=4 c; }").value();
  const Value a = parse("{ a = 1; b = 2; }");
  EXPECT_EQ(text(a.coerce(type.get()).value()), "{ b = 2; c = 4; }");
  EXPECT_EQ(text(a), "{ a = 1; b = 2; }");
}

TEST(ValueClass, CoerceFailsAsCreate) {
  Value a = parse("A : enum { A; }");
  View(&a).write(std::int32_t{9});
  const TypeHandle type = TypeHandle::parse("enum { A; B; }").value();
  const auto failure = a.coerce(type.get());
  ASSERT_FALSE(failure);
  EXPECT_EQ(failure.error().code(), ErrorCode::InternalError);
  EXPECT_STREQ(failure.error().text(), "Enum code out of range: 9");
}

TEST(ValueClass, EqualsWithinATolerance) {
  const Value a = parse("{ a = 1.0; }");
  const Value b = parse("{ a = 1.5; }");
  std::string reason;
  EXPECT_TRUE(a.equal(a));
  EXPECT_TRUE(a.equal(b, 0.6F));
  EXPECT_FALSE(a.equal(b, 0.4F, &reason));
  EXPECT_EQ(reason, ".a: 1.0 != 1.5");
  EXPECT_FALSE(a.equal(b));
  reason = "untouched";
  EXPECT_TRUE(a.equal(a, 0.0F, &reason));
  EXPECT_EQ(reason, "untouched");
  EXPECT_TRUE(ConstView(&a).field("a").equal(ConstView(&b).field("a"), 0.5F));
}

TEST(ValueClass, OfNothingEqualsNothingElse) {
  const Value a = parse("1");
  EXPECT_TRUE(Value().equal(Value()));
  EXPECT_FALSE(a.equal(Value()));
  EXPECT_FALSE(Value().equal(a));
}

TEST(ValueClass, FailsWithoutWordsWhenThereIsNoMemory) {
  const TypeHandle type = TypeHandle::parse(kHuge).value();
  for (const bool withDefault : {false, true}) {
    const auto failure = Value::create(type.get(), withDefault);
    ASSERT_FALSE(failure);
    EXPECT_EQ(failure.error().code(), ErrorCode::MemoryAllocationFailure);
    EXPECT_EQ(failure.error().message(), nullptr);
  }
}

TEST(ValueClass, CopySharesAndAWriteMovesToACopy) {
  Value a = parse("{ x = 1; }");
  const Value b = a;
  EXPECT_EQ(a.get(), b.get());
  View(&a).field("x").write(2);
  EXPECT_NE(a.get(), b.get());
  EXPECT_EQ(text(a), "{ x = 2; }");
  EXPECT_EQ(text(b), "{ x = 1; }");
}

TEST(ValueClass, MoveAndReleaseHandTheReferenceOn) {
  Value a = parse("1");
  Value b = std::move(a);
  EXPECT_FALSE(a);  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(b.get()->refCount, 1u);
  vrntValue_t* const handle = b.release();
  EXPECT_FALSE(b);
  const Value c = Value::adopt(handle);
  const Value d = Value::share(handle);
  EXPECT_EQ(handle->refCount, 2u);
  b = d;
  EXPECT_EQ(handle->refCount, 3u);
  b = Value();
  EXPECT_EQ(handle->refCount, 2u);
}

TEST(ViewClass, ReadsFieldsAndElements) {
  const Value v = parse("{ a = 1; b = [ { c = 2.0; d = true; }, { c = 3.0; d = false; } ]; }");
  const ConstView view(&v);
  EXPECT_EQ(view.fieldCount(), 2u);
  EXPECT_EQ(view.field(0).read<int>(), 1);
  EXPECT_EQ(view.field("b").element(1).field("c").read<float>(), 3.0f);
  EXPECT_EQ(view.field(1).element(0).field(1).text(), "true");
  EXPECT_EQ(view.field(1).element(1).place().offset, 4u + 8u);
  EXPECT_STREQ(vrntTypeString(view.field("b").element(0).type()), "{ float c; bool d; }");
}

TEST(ViewClass, ReadsElementsOfSeveralDimensions) {
  const Value v = parse("[ 1, 2, 3, 4, 5, 6 | 3, 2 ]");
  EXPECT_EQ(ConstView(&v).element(1, 1).read<int>(), 5);
}

TEST(ViewClass, WritesFieldsAndElements) {
  Value v = parse("{ a = 1; b = [ 1.0, 2.0 ]; }");
  const View view(&v);
  view.field("a").write(7);
  view.field("b").element(1).write(0.5f);
  EXPECT_EQ(text(v), "{ a = 7; b = [ 1.0, 0.5 ]; }");
}

TEST(ViewClass, RefusesUnknownFields) {
  const Value v = parse("{ a = 1; }");
  const ConstView view(&v);
  try {
    view.field(1);
    ADD_FAILURE();
  } catch (const vrnt::Exception& refusal) {
    EXPECT_STREQ(refusal.what(), "Struct field index 1 out of range.");
    EXPECT_EQ(refusal.code(), ErrorCode::InvalidArguments);
  }
  try {
    view.field("zz");
    ADD_FAILURE();
  } catch (const vrnt::Exception& refusal) {
    EXPECT_STREQ(refusal.what(), "Field not found in struct: zz.");
  }
}

TEST(ViewClass, SaysWhatItWasGivenInPlaceOfAStructAnArrayOrAReference) {
  Value v = parse("{ a = 1; b = [ 1 ]; c = A : enum { A; }; d = $0x0000000000000008; }");
  const View view(&v);
  const auto wordsOf = [](auto call) -> std::string {
    try {
      call();
    } catch (const VornathValuesAssertionFailure& failure) {
      return failure.what();
    }
    return "nothing was thrown";
  };
  EXPECT_EQ(wordsOf([&] { view.field(0).field(0); }),
            "ConstBasicView::field: takes a struct, was given the base type int");
  EXPECT_EQ(wordsOf([&] { view.field("b").field("a"); }),
            "ConstBasicView::field: takes a struct, was given the array int[1]");
  EXPECT_EQ(wordsOf([&] { view.element(0); }),
            "ConstBasicView::element: takes an array, was given the struct { int a; int[1] b; "
            "enum { A; } c; void* d; }");
  EXPECT_EQ(wordsOf([&] { view.field("c").at(0); }),
            "ConstBasicView::at: takes an array, was given the enum { A; }");
  EXPECT_EQ(wordsOf([&] { view.field("a").dereference(); }),
            "ConstBasicView::dereference: takes a reference, was given the base type int");
  EXPECT_EQ(wordsOf([&] { view.field("c").setReference(Value()); }),
            "BasicView::setReference: takes a reference, was given the enum { A; }");
  EXPECT_EQ(wordsOf([&] { view.field("a").fieldCount(); }),
            "vrntTypeFieldCount: takes an enum, a struct or a function, was given the base type "
            "int");
  EXPECT_EQ(wordsOf([&] { view.field("d").element(0); }),
            "ConstBasicView::element: takes an array, was given the reference void*");
}

TEST(ViewClass, TakesAsManyIndicesAsTheArrayHasDimensions) {
  const Value v = parse("[ 1, 2, 3, 4, 5, 6 | 3, 2 ]");
  const ConstView view(&v);
  EXPECT_REFUSAL(view.element(1), "Array of rank 2 takes 2 indices, not 1.");
  EXPECT_REFUSAL(view.element(1, 1, 1), "Array of rank 2 takes 2 indices, not 3.");
  EXPECT_REFUSAL(view.at(1), "Array of rank 2 takes 2 indices, not 1.");
}

TEST(ViewClass, ChecksTheIndicesOfAtAndNotOfElement) {
  Value v = parse("{ a = [ 1, 2, 3, 4, 5, 6 | 3, 2 ]; b = [ 7 ]; }");
  const View view(&v);
  EXPECT_EQ(view.field("a").at(2, 1u).read<int>(), 6);
  EXPECT_EQ(view.field("a").at(std::size_t{0}, std::int64_t{1}).read<int>(), 4);
  EXPECT_EQ(view.field("a").element(6, 0).read<int>(), 7);
  EXPECT_REFUSAL(view.field("a").at(3, 0), "Array index 3 out of range [0, 3).");
  EXPECT_REFUSAL(view.field("a").at(0, 2), "Array index 2 out of range [0, 2).");
  EXPECT_REFUSAL(view.field("a").at(-1, 0), "Array index -1 out of range [0, 3).");
  EXPECT_REFUSAL(view.field("b").at(std::uint64_t{1} << 32),
                 "Array index 4294967296 out of range [0, 1).");
  const TypeHandle open = TypeHandle::parse("int[]").value();
  EXPECT_REFUSAL(ConstView(&v, open.get(), 0).at(0), "Array index 0 out of range [0, 0).");
}

TEST(ViewClass, IsDeducedFromTheValue) {
  Value v = parse("{ a = 1; }");
  const Value& reading = v;
  BasicView view(&v);
  ConstBasicView constView(&reading);
  static_assert(std::is_same_v<decltype(view), View>);
  static_assert(std::is_same_v<decltype(constView), ConstView>);
  static_assert(std::is_same_v<decltype(BasicView(&v, v.type(), 0)), View>);
  static_assert(std::is_same_v<decltype(BasicView(view.field(0))), View>);
  static_assert(std::is_same_v<decltype(ConstBasicView(&v)), ConstBasicView<Value*>>);
  static_assert(std::is_same_v<decltype(ConstBasicView(view)), ConstBasicView<Value*>>);
  static_assert(std::is_same_v<decltype(ConstBasicView(constView)), ConstView>);
  view.field("a").write(2);
  EXPECT_EQ(constView.field("a").read<int>(), 2);
}

TEST(ViewClass, ForWritingTurnsIntoOneForReading) {
  Value v = parse("{ a = { b = 4; }; }");
  const auto read = [](const ConstView& view) { return view.field("b").read<int>(); };
  EXPECT_EQ(read(View(&v).field("a")), 4);
  ConstView view = View(&v);
  // With a reference on its type, where the one for writing has one.
  view = View(&v, TypeHandle::parse("{ { int @hide b; } a; }").value(), 0).field("a");
  EXPECT_STREQ(vrntTypeString(view.type()), "{ int @hide b; }");
  static_assert(!std::is_convertible_v<ConstView, View>);
}

TEST(ViewClass, SetsAndFollowsReferences) {
  Value v = parse("{ a = $(0x0000000000000000:int); }");
  EXPECT_FALSE(View(&v).field("a").dereference());
  const Value target = parse("5");
  View(&v).field("a").setReference(target);
  EXPECT_EQ(target.get()->refCount, 2u);
  EXPECT_EQ(View(&v).field("a").dereference().get(), target.get());
  EXPECT_EQ(text(v), "{ a = &5; }");
}

TEST(ViewClass, ReadsTheFormOfTheSpectrumAsAStruct) {
  const Value v = parse(
      "{ encoding = RGB : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &[ 0.0, 0.5, 1.0 ]; }");
  const ConstView view(&v);
  EXPECT_EQ(view.field("encoding").read<int>(), 1);
  EXPECT_EQ(text(view.field("spectrum").dereference()), "[ 0.0, 0.5, 1.0 ]");
}

TEST(ViewClass, MayHoldItsTypes) {
  Value v = parse("{ a = { b = 4; }; }");
  // An annotated type that is the view's alone.
  ConstBasicView<Value*> part(&v, vrntValueType(v.get()), 0);
  {
    const TypeHandle type = TypeHandle::parse("{ { int @hide b; } @name=\"n\" a; }").value();
    const ConstBasicView<Value*> owning(&v, type, 0);
    part = owning.field("a");
  }
  EXPECT_STREQ(vrntTypeString(part.type()), "{ int @hide b; } @name=\"n\"");
  EXPECT_EQ(part.field("b").read<int>(), 4);
}

TEST(ViewClass, RaisesWhatTheFlatFunctionsReport) {
  Value v = parse("A : enum { A; }");
  View(&v).write(std::int32_t{9});
  try {
    View(&v).text();
    ADD_FAILURE();
  } catch (const vrnt::Exception& failure) {
    EXPECT_STREQ(failure.what(), "Enum code out of range: 9");
    EXPECT_EQ(failure.code(), ErrorCode::UnknownError);
  }
}

TEST(ViewClass, RaisesABadAllocationWhenAMapFails) {
  const TypeHandle huge = TypeHandle::parse(kHuge).value();
  Value v = parse("1");
  const Value other = v;
  vrntType_t* const type = v.get()->type;
  const View view(&v);
  // The copy that a shared block needs can't be allocated for this type.
  v.get()->type = huge.get();
  EXPECT_THROW(view.write(5), std::bad_alloc);
  v.get()->type = type;
  EXPECT_EQ(v.get(), other.get());
  EXPECT_EQ(text(v), "1");
}

}  // namespace
