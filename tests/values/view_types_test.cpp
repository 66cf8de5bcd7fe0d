// Which C++ types a view reads and writes on which types of values.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "vornath_data/value.hpp"
#include "vornath_data/vrnt.h"

namespace {

using vrnt::ConstView;
using vrnt::TypeHandle;
using vrnt::Value;
using vrnt::View;
using vrnt::detail::kCanFit;

enum class Word : std::int32_t { Zero, One };
enum class Byte : unsigned char { Zero };
enum class Wide : std::int64_t { Zero };
enum class Truth : bool { No };

struct Vector {
  float x, y, z;
  friend bool operator==(const Vector& a, const Vector& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
  }
};
struct Pair {
  std::int32_t first;
  float second;
  friend bool operator==(const Pair& a, const Pair& b) {
    return a.first == b.first && a.second == b.second;
  }
};
struct Empty {};
struct NotTrivial {
  NotTrivial(const NotTrivial& other);
  float x;
};

// What can be right nowhere doesn't compile.
static_assert(kCanFit<float> && kCanFit<bool> && kCanFit<std::int32_t> && kCanFit<std::uint32_t>);
static_assert(kCanFit<char> && kCanFit<signed char> && kCanFit<std::uint8_t> && kCanFit<std::byte>);
static_assert(kCanFit<std::uint16_t> && kCanFit<Word> && kCanFit<Byte>);
static_assert(kCanFit<std::array<float, 3>> && kCanFit<std::array<bool, 2>> && kCanFit<char[4]>);
static_assert(kCanFit<std::array<std::array<float, 2>, 3>> && kCanFit<Vector>);
static_assert(!kCanFit<double> && !kCanFit<long double> && !kCanFit<std::int64_t>);
static_assert(!kCanFit<std::uint64_t> && !kCanFit<std::int16_t> && !kCanFit<wchar_t>);
static_assert(!kCanFit<char16_t> && !kCanFit<char32_t> && !kCanFit<Wide> && !kCanFit<Truth>);
static_assert(!kCanFit<const char*> && !kCanFit<float*> && !kCanFit<std::nullptr_t>);
static_assert(!kCanFit<void (*)()> && !kCanFit<float Vector::*> && !kCanFit<Empty>);
static_assert(!kCanFit<NotTrivial> && !kCanFit<std::string> && !kCanFit<std::string_view>);
static_assert(!kCanFit<std::array<double, 2>> && !kCanFit<std::array<std::array<bool, 2>, 2>>);
static_assert(!kCanFit<std::array<float, 0>> && !kCanFit<Value> && !kCanFit<TypeHandle>);

// Reads a T from, and writes one to, the middle of three fields of the type: the neighbours stay.
// Gives what the refusal says, or nothing.
template <typename T>
std::string tryBoth(const char* typeText, const T& value) {
  const std::string text = std::string("{ char[64] before; ") + typeText + " x; char[64] after; }";
  const TypeHandle type = TypeHandle::parse(text.c_str()).value();
  Value block = Value::create(type.get(), false).value();
  const View view(&block);
  std::array<char, 64> guard{};
  guard.fill('g');
  view.field("before").write(guard);
  view.field("after").write(guard);
  std::string refusal;
  try {
    view.field("x").write(value);
    const T back = view.field("x").template read<T>();
    EXPECT_TRUE(back == value) << typeText;
  } catch (const vrnt::Exception& caught) {
    refusal = caught.what();
    EXPECT_EQ(caught.code(), vrnt::ErrorCode::InvalidArguments);
    EXPECT_THROW(static_cast<void>(view.field("x").template read<T>()), vrnt::Exception);
  }
  EXPECT_EQ((view.field("before").template read<std::array<char, 64>>()), guard) << typeText;
  EXPECT_EQ((view.field("after").template read<std::array<char, 64>>()), guard) << typeText;
  return refusal;
}

// One type of each kind, and of each base type.
const std::vector<const char*> kTypes{"bool",
                                      "bool2",
                                      "bool3",
                                      "bool4",
                                      "int",
                                      "int2",
                                      "int3",
                                      "int4",
                                      "float",
                                      "float2",
                                      "float3",
                                      "float4",
                                      "char",
                                      "char2",
                                      "char3",
                                      "char4",
                                      "half",
                                      "half2",
                                      "half3",
                                      "half4",
                                      "enum { A; B; }",
                                      "{ int a; float b; }",
                                      "float[3]",
                                      "float[3,1]",
                                      "int[2]",
                                      "bool[2]",
                                      "float2[3]",
                                      "char[4]",
                                      "half[4]",
                                      "{ int a; float b; }[2]",
                                      "int*",
                                      "void*",
                                      "((int) => bool)",
                                      "{ }"};

template <typename T>
std::string fittingTypes(const T& value) {
  std::string fitting;
  for (const char* type : kTypes) {
    if (tryBoth(type, value).empty()) fitting += (fitting.empty() ? "" : ", ") + std::string(type);
  }
  return fitting;
}

TEST(ViewTypes, OfScalarsAreThoseOfTheirFamily) {
  EXPECT_EQ(fittingTypes(1.5F), "float");
  EXPECT_EQ(fittingTypes(true), "bool");
  EXPECT_EQ(fittingTypes(std::int32_t{-1}), "int, enum { A; B; }");
  EXPECT_EQ(fittingTypes(std::uint32_t{1}), "int, enum { A; B; }");
  EXPECT_EQ(fittingTypes(Word::One), "int, enum { A; B; }");
  EXPECT_EQ(fittingTypes('c'), "char");
  EXPECT_EQ(fittingTypes(std::uint8_t{200}), "char");
  EXPECT_EQ(fittingTypes(std::byte{7}), "char");
  EXPECT_EQ(fittingTypes(std::uint16_t{0x3C00}), "half");
}

TEST(ViewTypes, OfArraysAreLanesAndElements) {
  EXPECT_EQ(fittingTypes(std::array<float, 1>{1}), "float");
  EXPECT_EQ(fittingTypes(std::array<float, 3>{1, 2, 3}), "float3, float[3], float[3,1]");
  EXPECT_EQ(fittingTypes(std::array<float, 4>{1, 2, 3, 4}), "float4");
  EXPECT_EQ(fittingTypes(std::array<std::int32_t, 2>{1, 2}), "int2, int[2]");
  EXPECT_EQ(fittingTypes(std::array<char, 4>{'a'}), "char4, char[4]");
  EXPECT_EQ(fittingTypes(std::array<std::uint16_t, 4>{1}), "half4, half[4]");
  EXPECT_EQ(fittingTypes(std::array<bool, 2>{true, false}), "bool2, bool[2]");
  EXPECT_EQ(fittingTypes(std::array<bool, 3>{true, false, true}), "bool3");
  EXPECT_EQ(fittingTypes(std::array<std::array<float, 2>, 3>{}), "float2[3]");
}

TEST(ViewTypes, OfRecordsHaveTheirSize) {
  // A record of twelve bytes also fits three lanes, which have the room of four.
  EXPECT_EQ(fittingTypes(Vector{1, 2, 3}), "bool3, int3, float3, float[3], float[3,1]");
  // And one of eight bytes no reference.
  EXPECT_EQ(fittingTypes(Pair{1, 2}),
            "bool2, int2, float2, half3, half4, { int a; float b; }, int[2], bool[2], half[4]");
  const TypeHandle type = TypeHandle::parse("{ int a; float b; }[2]").value();
  Value value = Value::create(type.get(), false).value();
  View(&value).element(1).write(Pair{3, 4.5F});
  EXPECT_EQ(ConstView(&value).text(), "[ { a = 0; b = 0.0; }, { a = 3; b = 4.5; } ]");
  EXPECT_EQ((ConstView(&value).read<std::array<Pair, 2>>()[1].second), 4.5F);
}

TEST(ViewTypes, WriteATrueBoolAsAllOnesAndReadAnyWordButZeroAsTrue) {
  Value value = Value::parse("{ a = false; b = bool2(false, false); }").value();
  const View view(&value);
  view.field("a").write(true);
  view.field("b").write(std::array<bool, 2>{false, true});
  std::array<std::int32_t, 3> words{};
  std::memcpy(words.data(), view.field("a").data(), 4);
  std::memcpy(words.data() + 1, view.field("b").data(), 8);
  EXPECT_EQ(words, (std::array<std::int32_t, 3>{-1, 0, -1}));
  const std::int32_t odd = 0x100;
  view.field("a").write(&odd, sizeof odd);
  EXPECT_TRUE(view.field("a").read<bool>());
}

TEST(ViewTypes, ThatDoNotFitAreToldInWords) {
  EXPECT_EQ(tryBoth("float", 1),
            "Incompatible type for accessor -> type float of field x does not match type int.");
  EXPECT_EQ(tryBoth("int", 1.0F),
            "Incompatible type for accessor -> type int of field x does not match type float.");
  EXPECT_EQ(tryBoth("{ int a; }", true),
            "Incompatible type for accessor -> type { int a; } of field x does not match type "
            "bool.");
  EXPECT_EQ(tryBoth("float4", std::array<float, 3>{}),
            "Incompatible type for accessor -> type float4 of field x does not match type float3 "
            "or float[3].");
  EXPECT_EQ(tryBoth("float[8]", std::array<float, 9>{}),
            "Incompatible type for accessor -> type float[8] of field x does not match type "
            "float[9].");
  EXPECT_EQ(tryBoth("float", Vector{}),
            "Incompatible type for accessor -> type float of field x does not match type record "
            "of 12 bytes.");
  Value value = Value::parse("[ 1.0, 2.0 ]").value();
  try {
    View(&value).element(0).write(1);
    ADD_FAILURE();
  } catch (const vrnt::Exception& refusal) {
    EXPECT_STREQ(refusal.what(),
                 "Incompatible type for accessor -> type float does not match type int.");
  }
}

TEST(ViewTypes, BytesAreAsManyAsTheTypeHas) {
  Value value = Value::parse("{ a = 1.0; b = float3(1.0, 2.0, 3.0); c = [ 1, 2 ]; }").value();
  const View view(&value);
  const std::array<float, 5> bytes{9, 8, 7, 6, 5};
  const auto refusalOf = [&](const char* field, std::size_t size) -> std::string {
    try {
      view.field(field).write(bytes.data(), size);
    } catch (const vrnt::Exception& refusal) {
      return refusal.what();
    }
    return "";
  };
  EXPECT_EQ(refusalOf("a", 8),
            "Incompatible type for accessor -> type float of field a does not match 8 bytes.");
  EXPECT_EQ(refusalOf("a", 0),
            "Incompatible type for accessor -> type float of field a does not match 0 bytes.");
  EXPECT_EQ(refusalOf("b", 20),
            "Incompatible type for accessor -> type float3 of field b does not match 20 bytes.");
  EXPECT_EQ(refusalOf("b", 8),
            "Incompatible type for accessor -> type float3 of field b does not match 8 bytes.");
  EXPECT_EQ(refusalOf("c", 6),
            "Incompatible type for accessor -> type int[2] of field c does not match 6 bytes.");
  EXPECT_EQ(ConstView(&value).text(), "{ a = 1.0; b = float3(1.0, 2.0, 3.0); c = [ 1, 2 ]; }");
  EXPECT_EQ(refusalOf("a", 4), "");
  EXPECT_EQ(refusalOf("b", 12), "");
  EXPECT_EQ(refusalOf("b", 16), "");
  EXPECT_EQ(ConstView(&value).text(), "{ a = 9.0; b = float3(9.0, 8.0, 7.0); c = [ 1, 2 ]; }");
}

TEST(ViewTypes, OfARefusedWriteLeaveASharedValueShared) {
  Value value = Value::parse("{ a = 1.0; }").value();
  const Value other = value;
  EXPECT_THROW(View(&value).field("a").write(1), vrnt::Exception);
  EXPECT_EQ(value.get(), other.get());
}

TEST(ViewTypes, AreToldByTheBeginningOfALongText) {
  const std::string label(200, 'n');
  const TypeHandle type = TypeHandle::parse(("{ { int " + label + "; } x; }").c_str()).value();
  const Value value = Value::create(type.get(), false).value();
  try {
    ConstView(&value).field(0).read<float>();
    ADD_FAILURE();
  } catch (const vrnt::Exception& refusal) {
    EXPECT_EQ(std::string(refusal.what()), "Incompatible type for accessor -> type { int " +
                                               label.substr(0, 114) +
                                               "... of field x does not match type float.");
  }
}

}  // namespace
