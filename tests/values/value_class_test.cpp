#include <gtest/gtest.h>

#include <new>
#include <type_traits>

#include "vornath_data/value.hpp"
#include "vornath_data/vrnt.h"

namespace {

using vrnt::BasicView;
using vrnt::ConstBasicView;
using vrnt::ErrorCode;
using vrnt::TypeHandle;
using vrnt::Value;

using View = BasicView<Value*>;
using ConstView = ConstBasicView<const Value*>;

static_assert(std::is_base_of_v<ConstBasicView<Value*>, View>);
static_assert(std::has_virtual_destructor_v<ConstBasicView<Value*>>);
static_assert(std::has_virtual_destructor_v<ConstView>);
static_assert(sizeof(Value) == sizeof(void*));

Value parse(const char* text) {
  vrntValuesError_t* error = nullptr;
  vrntValue_t* const value = vrntValueParse(text, &error);
  if (value == nullptr) vrnt::detail::raiseError(error);
  return Value::adopt(value);
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
  EXPECT_THROW(view.field(0).field(0), VornathValuesAssertionFailure);
  EXPECT_THROW(view.field(0).field("a"), VornathValuesAssertionFailure);
  EXPECT_THROW(view.element(0), VornathValuesAssertionFailure);
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
