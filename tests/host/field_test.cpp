#include "vornath_data/host/field.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "refusal.hpp"
#include "support/allocations.hpp"
#include "vornath_data/vrnt.h"

namespace {

using namespace vrnt::host;
using vornath_test::messageOf;
using vrnt::ConstView;
using vrnt::TypeHandle;
using vrnt::Value;

TypeHandle typeOf(const std::string& text) { return TypeHandle::parse(text.c_str()).value(); }
Value valueOf(const char* text) { return Value::parse(text).value(); }
std::string textOf(const Value& value) { return ConstView(&value).text(); }

constexpr char kType[] =
    "{ { float4 x; float4 w; } matrix; { int index; }[4] textures; float[3,2] grid; bool on; "
    "enum { A; B; } mode; char[8] tag; int*[2] links; }";

FieldPath pathOf(const char* path) { return FieldPath(typeOf(kType).get(), path); }

}  // namespace

TEST(FieldPath, LeadsToFieldsAndElements) {
  EXPECT_EQ(pathOf("").offset(), 0u);
  EXPECT_EQ(pathOf("matrix.w").offset(), 16u);
  EXPECT_STREQ(vrntTypeString(pathOf("matrix.w").type()), "float4");
  EXPECT_EQ(pathOf("textures[2].index").offset(), 32u + 8u);
  EXPECT_EQ(pathOf("textures[3]").offset(), 32u + 12u);
  EXPECT_EQ(pathOf("grid[1,1]").offset(), 48u + 16u);
  EXPECT_STREQ(vrntTypeString(pathOf("links[1]").type()), "int*");
  EXPECT_EQ(FieldPath(typeOf("float[3][2]").get(), "[1][2]").offset(), 12u + 8u);
  EXPECT_EQ(FieldPath(typeOf("{ int x; }[3]").get(), "[2].x").offset(), 8u);
}

TEST(FieldPath, OfAnAnnotatedTypeIsThatOfItsValues) {
  const FieldPath path(typeOf("{ int a; float @min=0.0 b; } @name=\"n\"").get(), "b");
  EXPECT_STREQ(vrntTypeString(path.wholeType().get()), "{ int a; float b; }");
  EXPECT_STREQ(vrntTypeString(path.type()), "float");
  EXPECT_NO_THROW(path.bytesIn(valueOf("{ a = 1; b = 2.0; }")));
}

TEST(FieldPath, SaysWhatIsNotThere) {
  const TypeHandle type = typeOf("{ { int b; }[2] a; float c; int[2,3] g; }");
  const auto words = [&](const char* path) {
    return messageOf([&] { FieldPath(type.get(), path); });
  };
  EXPECT_EQ(words("x"),
            "Field path x: there is no field x in { { int b; }[2] a; float c; "
            "int[2,3] g; }.");
  EXPECT_EQ(words("c.b"), "Field path c.b: there is no field b in float.");
  EXPECT_EQ(words("a.b"), "Field path a.b: there is no field b in { int b; }[2].");
  EXPECT_EQ(words("a[2]"), "Field path a[2]: there is no element [2] in { int b; }[2].");
  EXPECT_EQ(words("a[-1]"), "Field path a[-1]: there is no element [-1] in { int b; }[2].");
  EXPECT_EQ(words("a[-0]"), "Field path a[-0]: there is no element [-0] in { int b; }[2].");
  EXPECT_EQ(words("a[]"), "Field path a[]: there is no element [] in { int b; }[2].");
  EXPECT_EQ(words("a[1x]"), "Field path a[1x]: there is no element [1x] in { int b; }[2].");
  EXPECT_EQ(words("a[4294967296]"),
            "Field path a[4294967296]: there is no element [4294967296] in { int b; }[2].");
  EXPECT_EQ(words("a[0,0]"), "Field path a[0,0]: there is no element [0,0] in { int b; }[2].");
  EXPECT_EQ(words("g[1]"), "Field path g[1]: there is no element [1] in int[2,3].");
  EXPECT_EQ(words("g[1,3]"), "Field path g[1,3]: there is no element [1,3] in int[2,3].");
  EXPECT_EQ(words("c[0]"), "Field path c[0]: there is no element [0] in float.");
  EXPECT_EQ(words("a[0"), "Field path a[0: a ] is missing.");
  EXPECT_EQ(words("a[0]b"), "Field path a[0]b: a . or a [ is missing.");
  for (const std::string path : {".", "a.", "a..b", ".c", "a[0]."}) {
    EXPECT_EQ(words(path.c_str()), "Field path " + path + ": a label is missing.");
  }
}

TEST(Field, ReadsAndWritesWhatItIs) {
  const TypeHandle type = typeOf(kType);
  Value value = Value::create(type.get(), true).value();
  const Field<std::array<float, 4>> w(type, "matrix.w");
  const Field<std::int32_t> index(type, "textures[2].index");
  const Field<float> cell(type, "grid[2,1]");
  const Field<bool> on(type, "on");
  w.set(value, {1, 2, 3, 4});
  index.set(value, -1);
  cell.set(value, 0.5F);
  on.set(value, true);
  EXPECT_EQ(w.get(value), (std::array<float, 4>{1, 2, 3, 4}));
  EXPECT_EQ(index.get(value), -1);
  EXPECT_EQ(cell.get(value), 0.5F);
  EXPECT_TRUE(on.get(value));
  EXPECT_EQ(ConstView(&value).field("textures").text(),
            "[ { index = 0; }, { index = 0; }, { index = -1; }, { index = 0; } ]");
  EXPECT_EQ(ConstView(&value).field("grid").text(), "[ 0.0, 0.0, 0.0, 0.0, 0.0, 0.5 | 3, 2 ]");
  EXPECT_EQ(ConstView(&value).field("on").text(), "true");
}

TEST(Field, LeavesASharedValueToTheOthers) {
  Value value = valueOf("{ a = 1; }");
  const Value other = value;
  const Field<std::int32_t> field(value.type(), "a");
  field.set(value, 2);
  EXPECT_EQ(textOf(value), "{ a = 2; }");
  EXPECT_EQ(textOf(other), "{ a = 1; }");
  const vrntValue_t* const block = value.get();
  field.set(value, 3);
  EXPECT_EQ(value.get(), block);
}

TEST(Field, OfARecordCountsTheReferencesInIt) {
  struct Pair {
    std::uint64_t link;
    std::int32_t number[2];
  };
  const TypeHandle type = typeOf("{ { int* link; int[2] number; } pair; }");
  Value value = Value::create(type.get(), false).value();
  const Value target = valueOf("5");
  const Field<Pair> pair(type, "pair");
  pair.set(value, {reinterpret_cast<std::uintptr_t>(target.data()), {1, 2}});
  EXPECT_EQ(target.get()->refCount, 2u);
  EXPECT_EQ(textOf(value), "{ pair = { link = &5; number = [ 1, 2 ]; }; }");
  value = Value();
  EXPECT_EQ(target.get()->refCount, 1u);
}

TEST(Field, OfAnArrayOfRecordsCountsTheReferencesInIt) {
  struct Link {
    std::uint64_t word;
  };
  const TypeHandle type = typeOf("{ { int* link; }[2] links; }");
  Value value = Value::create(type.get(), false).value();
  const Value target = valueOf("5");
  const auto word = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(target.data()));
  const Field<std::array<Link, 2>> links(type, "links");
  links.set(value, {Link{word}, Link{word}});
  EXPECT_EQ(target.get()->refCount, 3u);
  links.set(value, {Link{word}, Link{0}});
  EXPECT_EQ(target.get()->refCount, 2u);
  value = Value();
  EXPECT_EQ(target.get()->refCount, 1u);
}

// A function's two words belong to the embedder, in a form that a struct of pointers doesn't have.
TEST(Field, OfARecordRefusesReferencesAndFunctions) {
  struct Call {
    const void* code;
    const void* context;
  };
  const TypeHandle type = typeOf("{ (() => int) f; int* r; }");
  EXPECT_EQ(messageOf([&] { Field<Call>(type, "f"); }),
            "Incompatible type for accessor -> type (() => int) of field f does not match type "
            "record of 16 bytes.");
  struct Word {
    std::uint64_t word;
  };
  EXPECT_NE(messageOf([&] { Field<Word>(type, "r"); }), "");
  Value value = Value::create(type.get(), false).value();
  EXPECT_THROW(vrnt::View(&value).field("f").write(Call{}), vrnt::Exception);
}

TEST(TextField, TakesTheTextThatStandsThere) {
  const TypeHandle type = typeOf("{ char[8] name; }");
  Value value = Value::create(type.get(), false).value();
  const TextField name(type, "name");
  name.set(value, "lamp 7");
  const auto* const there = static_cast<const char*>(value.data());
  name.set(value, std::string_view(there, 6));
  EXPECT_EQ(name.get(value), "lamp 7");
  name.set(value, std::string_view(there + 2, 4));
  EXPECT_EQ(name.get(value), "mp 7");
}

TEST(Field, IsCheckedForItsKindWhenItIsMade) {
  const TypeHandle type = typeOf("{ { float c; } a; }");
  EXPECT_EQ(messageOf([&] { Field<std::int32_t>(type, "a.c"); }),
            "Incompatible type for accessor -> type float of field a.c does not match type int.");
  EXPECT_EQ(messageOf([&] { EnumField(type, "a.c"); }),
            "Incompatible type for accessor -> type float of field a.c does not match an enum.");
  EXPECT_EQ(messageOf([&] { TextField(type, "a.c"); }),
            "Incompatible type for accessor -> type float of field a.c does not match an array of "
            "char.");
  EXPECT_EQ(messageOf([&] { SpectrumField(type, "a"); }),
            "Incompatible type for accessor -> type { float c; } of field a does not match a "
            "spectrum.");
}

TEST(Field, RefusesValuesOfAnotherType) {
  const Field<std::int32_t> field(typeOf("{ int a; }"), "a");
  Value value = valueOf("{ b = 1; }");
  const std::string words =
      "Incompatible type for value -> type { int b; } does not match type { int a; }.";
  EXPECT_EQ(messageOf([&] { field.get(value); }), words);
  EXPECT_EQ(messageOf([&] { field.set(value, 2); }), words);
  Value none;
  EXPECT_EQ(messageOf([&] { field.set(none, 2); }),
            "Incompatible type for value -> no value does not match type { int a; }.");
  EXPECT_EQ(textOf(value), "{ b = 1; }");
}

TEST(Field, ReadsAndWritesWithoutAllocating) {
  Value value = valueOf("{ a = 1; b = A : enum { A; B; }; c = [ 0c, 0c, 0c, 0c ]; }");
  const Field<std::int32_t> a(value.type(), "a");
  const EnumField b(value.type(), "b");
  const TextField c(value.type(), "c");
  const std::uint64_t before = vornath_test::allocationCount();
  a.set(value, a.get(value) + 1);
  b.set(value, "B");
  c.set(value, "abc");
  const bool isB = b.get(value) == "B";
  EXPECT_EQ(vornath_test::allocationCount(), before);
  EXPECT_TRUE(isB);
  EXPECT_EQ(a.get(value), 2);
}

TEST(EnumField, ReadsAndWritesNames) {
  Value value = valueOf("{ mode = A : enum { A; B; }; }");
  const EnumField mode(value.type(), "mode");
  EXPECT_EQ(mode.get(value), "A");
  mode.set(value, "B");
  EXPECT_EQ(mode.get(value), "B");
  EXPECT_EQ(mode.code("B"), 1);
  EXPECT_EQ(messageOf([&] { mode.set(value, "C"); }), "Invalid enum constructor: C");
  Field<std::int32_t>(value.type(), "mode").set(value, 2);
  EXPECT_EQ(messageOf([&] { mode.get(value); }), "Enum code out of range: 2");
}

TEST(TextField, ReadsAndWritesTextsThatAZeroEnds) {
  const TypeHandle type = typeOf("{ char[4] tag; int next; }");
  Value value = Value::create(type.get(), false).value();
  const TextField tag(type, "tag");
  EXPECT_EQ(tag.capacity(), 3u);
  tag.set(value, "abc");
  EXPECT_EQ(tag.get(value), "abc");
  tag.set(value, "d");
  EXPECT_EQ(tag.get(value), "d");
  EXPECT_EQ(ConstView(&value).field("tag").text(), "[ 100c, 0c, 0c, 0c ]");
  EXPECT_EQ(messageOf([&] { tag.set(value, "abcd"); }), "Text of 4 bytes does not fit char[4].");
  EXPECT_EQ(messageOf([&] { tag.set(value, std::string_view("a\0b", 3)); }),
            "Text of 3 bytes does not fit char[4].");
  EXPECT_EQ(tag.get(value), "d");
  // Without a zero, as another program may have left it.
  Field<std::array<char, 4>>(type, "tag").set(value, {'w', 'x', 'y', 'z'});
  EXPECT_EQ(tag.get(value), "wxyz");
}

TEST(SpectrumField, WritesEachEncoding) {
  const TypeHandle type =
      typeOf("{ int a; { enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; } s; }");
  Value value = Value::create(type.get(), true).value();
  const SpectrumField s(type, "s");
  s.set(value, FlatSpectrum{0.5F});
  EXPECT_EQ(s.encoding(value), VRNT_ENCODING_LUMINANCE);
  EXPECT_EQ(s.numbers(value), std::vector<float>{0.5F});
  s.set(value, RgbSpectrum{0.25F, 0.5F, 1});
  EXPECT_EQ(s.encoding(value), VRNT_ENCODING_RGB);
  EXPECT_EQ(s.numbers(value), (std::vector<float>{0.25F, 0.5F, 1}));
  s.set(value, SampledSpectrum{{400, 500}, {0.25F, 0.5F}, 700});
  EXPECT_EQ(s.encoding(value), VRNT_ENCODING_SPECTRAL);
  EXPECT_EQ(s.numbers(value), (std::vector<float>{0, 0, 400, 0.25F, 500, 0.5F, 700, 0}));
  const vrntValueView_t place = s.path().place();
  float rgb[3];
  EXPECT_EQ(vrntValueToRGB(value.get(), &place, VRNT_COLOUR_SPACE_E, rgb), 0);
}

TEST(SpectrumField, RefusesWhatIsNoDistribution) {
  const TypeHandle type = TypeHandle::adopt(vrntTypeSpectrum());
  Value value = Value::create(type.get(), true).value();
  const SpectrumField s(type, "");
  EXPECT_EQ(messageOf([&] {
              s.set(value, SampledSpectrum{{400}, {}, 700});
            }),
            "Wavelengths and amplitudes are 1 and 0.");
  EXPECT_EQ(messageOf([&] {
              s.set(value, SampledSpectrum{{500, 400}, {1, 1}, 700});
            }),
            "Wavelengths must increase: 400 comes behind 500.");
  EXPECT_EQ(messageOf([&] {
              s.set(value, SampledSpectrum{{500}, {1}, 500});
            }),
            "Wavelengths must increase: 500 comes behind 500.");
  EXPECT_EQ(s.encoding(value), VRNT_ENCODING_LUMINANCE);
  EXPECT_EQ(s.numbers(value), std::vector<float>{0.0F});
}

TEST(SpectrumField, OfASubtypeTakesAsManyNumbersAsItRefersTo) {
  const TypeHandle type =
      typeOf("{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[3]* spectrum; }");
  Value value = Value::create(type.get(), false).value();
  const SpectrumField s(type, "");
  EXPECT_TRUE(s.numbers(value).empty());
  s.set(value, RgbSpectrum{1, 2, 3});
  EXPECT_EQ(messageOf([&] { s.set(value, FlatSpectrum{1}); }),
            "Incompatible type for accessor -> type float[3]* does not match type float[1].");
  EXPECT_EQ(s.encoding(value), VRNT_ENCODING_RGB);
}

TEST(SpectrumField, LeavesTheValueAsItWasIfThereIsNoMemory) {
  const TypeHandle type = TypeHandle::adopt(vrntTypeSpectrum());
  const Value before = Value::create(type.get(), true).value();
  const SpectrumField s(type, "");
  const SampledSpectrum sampled{{400, 500}, {0.25F, 0.5F}, 700};
  int failures = 0;
  for (std::uint64_t number = 0;; ++number) {
    Value value = before;
    const std::int64_t live = vornath_test::liveAllocations();
    try {
      const vornath_test::FailNthAllocation failure(number);
      s.set(value, sampled);
      if (!failure.triggered()) break;
    } catch (const std::bad_alloc&) {
    } catch (const vrnt::Exception& caught) {
      EXPECT_EQ(caught.code(), vrnt::ErrorCode::MemoryAllocationFailure);
    }
    ++failures;
    EXPECT_EQ(s.encoding(value), VRNT_ENCODING_LUMINANCE) << number;
    EXPECT_EQ(s.numbers(value), std::vector<float>{0.0F}) << number;
    if (value.get() == before.get()) {
      EXPECT_EQ(vornath_test::liveAllocations(), live) << number;
    }
    ASSERT_LT(failures, 100);
  }
  EXPECT_GT(failures, 0);
}
