#include "values/value_text.hpp"

#include <limits>
#include <optional>
#include <sstream>
#include <variant>

#include "values_support.hpp"

namespace qex::vornath::test {
namespace {

std::string exact(const DynamicValue& v) { return valueToString(v.view(), true); }
std::string multiline(const DynamicValue& v) { return valueToString(v.view(), false, true); }

DynamicValue floatBits(std::uint32_t bits) {
  return DynamicValue::base(Type::TBasetype::Float, bits);
}
DynamicValue halfBits(std::uint16_t bits) {
  return DynamicValue::base(Type::TBasetype::Half, bits);
}

TEST(ValueText, OfBool) {
  EXPECT_EQ(text(value("true")), "true");
  EXPECT_EQ(text(value("false")), "false");
  EXPECT_EQ(text(DynamicValue::base(Type::TBasetype::Bool, std::uint32_t{2})), "true");
}

TEST(ValueText, OfInt) {
  EXPECT_EQ(text(value("-3")), "-3");
  EXPECT_EQ(
      text(DynamicValue::base(Type::TBasetype::Int, std::numeric_limits<std::int32_t>::min())),
      "-2147483648");
}

TEST(ValueText, OfCharIsAPositiveNumber) {
  EXPECT_EQ(text(DynamicValue::base(Type::TBasetype::Char, std::uint8_t{200})), "200c");
  EXPECT_EQ(text(DynamicValue::base(Type::TBasetype::Char, std::uint8_t{128})), "128c");
  EXPECT_EQ(text(DynamicValue::base(Type::TBasetype::Char, std::uint8_t{5})), "5c");
}

TEST(ValueText, OfFloatIsTheShortestThatReadsBackWithAPoint) {
  EXPECT_EQ(text(value("1.0")), "1.0");
  EXPECT_EQ(text(value("0.1")), "0.1");
  EXPECT_EQ(text(value("-2.5")), "-2.5");
  EXPECT_EQ(text(floatBits(0x3727C5AC)), "1.e-05");
  EXPECT_EQ(text(floatBits(0x5A0E1BCA)), "1.e+16");
}

TEST(ValueText, OfFloatNamesInfinitiesAndNan) {
  EXPECT_EQ(text(floatBits(0x7F800000)), "inf");
  EXPECT_EQ(text(floatBits(0xFF800000)), "-inf");
  EXPECT_EQ(text(floatBits(0x7FC00000)), "NaN");
  EXPECT_EQ(text(floatBits(0xFFC00001)), "NaN");
  EXPECT_EQ(text(floatBits(0x7F800001)), "NaN");
}

TEST(ValueText, OfExactFloatIsItsBits) {
  EXPECT_EQ(exact(value("1.0")), "0x3f800000.");
  EXPECT_EQ(exact(floatBits(0xFFC0ABCD)), "0xffc0abcd.");
  EXPECT_EQ(exact(value("0.0")), "0x00000000.");
}

TEST(ValueText, OfHalf) {
  EXPECT_EQ(text(value("0.5h")), "0.5h");
  EXPECT_EQ(text(halfBits(0x7C00)), "infh");
  EXPECT_EQ(text(halfBits(0xFC00)), "-infh");
  EXPECT_EQ(text(halfBits(0x7E00)), "NaNh");
  EXPECT_EQ(exact(value("1.0h")), "0x3c00.");
  EXPECT_EQ(exact(halfBits(0x0001)), "0x0001.");
}

TEST(ValueText, OfVectorNeverHonoursExact) {
  EXPECT_EQ(exact(value("float3(1.0, 2.0, 3.0)")), "float3(1.0, 2.0, 3.0)");
  EXPECT_EQ(exact(value("half2(1.0h, 2.0h)")), "half2(1.0h, 2.0h)");
  EXPECT_EQ(text(value("bool2(true, false)")), "bool2(true, false)");
  EXPECT_EQ(text(value("char2(1c, 2c)")), "char2(1c, 2c)");
  EXPECT_EQ(text(value("int4(1, -2, 3, -4)")), "int4(1, -2, 3, -4)");
}

TEST(ValueText, PassesExactDownToFieldsAndElements) {
  EXPECT_EQ(exact(value("{ a = 1.0; b = [ 2.0, 0.5 ]; c = float2(1.0, 1.0); }")),
            "{ a = 0x3f800000.; b = [ 0x40000000., 0x3f000000. ]; c = float2(1.0, 1.0); }");
}

TEST(ValueText, OfEnumIsItsLabelAndType) {
  EXPECT_EQ(text(value("RED : enum { RED; GREEN; }")), "RED : enum { RED; GREEN; }");
}

TEST(ValueText, OfAnUnknownEnumCodeFails) {
  for (const std::int32_t code : {2, -1}) {
    const DynamicValue v(type("{ enum { A; B; } e; }"), &code);
    const std::string words = "Enum code out of range: " + std::to_string(code);
    EXPECT_REFUSED(text(v), words.c_str());
  }
}

TEST(ValueText, OfStructOnOneLine) {
  EXPECT_EQ(text(value("{ a = 1; b = 2.0; }")), "{ a = 1; b = 2.0; }");
  EXPECT_EQ(text(value("{ }")), "{ }");
}

TEST(ValueText, OfStructOnSeveralLines) {
  EXPECT_EQ(multiline(value("{ a = 1; b = 2.0; }")), "{\n  a = 1;\n  b = 2.0;\n}");
  EXPECT_EQ(multiline(value("{ }")), "{\n}");
  EXPECT_EQ(multiline(value("{ a = { b = 1; c = { d = true; }; }; e = 2; }")),
            "{\n  a = {\n    b = 1;\n    c = {\n      d = true;\n    };\n  };\n  e = 2;\n}");
}

TEST(ValueText, OfAnArrayOfStructsKeepsTheArraysIndentation) {
  EXPECT_EQ(multiline(value("{ a = [ { b = 1; }, { b = 2; } ]; }")),
            "{\n  a = [ {\n    b = 1;\n  }, {\n    b = 2;\n  } ];\n}");
}

TEST(ValueText, OfArrays) {
  EXPECT_EQ(text(value("[ 1, 2, 3 ]")), "[ 1, 2, 3 ]");
  EXPECT_EQ(text(value("[ : int ]")), "[ : int ]");
  EXPECT_EQ(text(value("[ 1, 2, 3, 4 | 2, 2 ]")), "[ 1, 2, 3, 4 | 2, 2 ]");
  EXPECT_EQ(text(value("[ 1, 2 | 1, 2, 1 ]")), "[ 1, 2 | 1, 2, 1 ]");
  EXPECT_EQ(text(value("[ 1, 2 | 1, 1, 2, 1 ]")), "[ 1, 2 | 1, 1, 2, 1 ]");
  EXPECT_EQ(text(DynamicValue(type("float[0,3]"))), "[ : float | 0, 3 ]");
}

TEST(ValueText, OfAnArrayShowsAnElementTypeThatTheElementsDoNotTell) {
  EXPECT_EQ(text(DynamicValue(type("void*[2]"))),
            "[ $0x0000000000000000, $0x0000000000000000 : void* ]");
  EXPECT_EQ(text(value("[ &[ 1.0 ] : float[]* ]")), "[ &[ 1.0 ] : float[]* ]");
  EXPECT_EQ(text(value("[ &1 ]")), "[ &1 ]");
  EXPECT_EQ(text(DynamicValue(type("void*[1,1]"))), "[ $0x0000000000000000 : void* | 1, 1 ]");
}

TEST(ValueText, OfAnArrayCountsItsExtentsNotItsLength) {
  DynamicValue v = value("[ 1, 2, 3 ]");
  v.setLength(1);
  EXPECT_EQ(text(v), "[ 1, 2, 3 ]");
}

TEST(ValueText, OfAnArrayOfOpenExtentsFails) {
  EXPECT_THROW(text(DynamicValue(type("float[]"))), std::bad_optional_access);
  EXPECT_THROW(text(DynamicValue(type("float[,,]"))), std::bad_optional_access);
}

TEST(ValueText, OfAnArrayWhoseExtentsRunOver) {
  // 65536 * 65536 is 0 in 32 bits.
  EXPECT_EQ(text(DynamicValue(type("int[65536,65536]"))), "[ : int | 65536, 65536 ]");
}

TEST(ValueText, OfReferences) {
  EXPECT_EQ(text(value("&1")), "&1");
  EXPECT_EQ(text(value("&{ a = &&2.0; }")), "&{ a = &&2.0; }");
  EXPECT_EQ(text(DynamicValue(type("int*"))), "$(0x0000000000000000:int)");
  EXPECT_EQ(text(DynamicValue(type("void*"))), "$0x0000000000000000");
  EXPECT_EQ(text(DynamicValue::foreign(type("float[]*"), 0xABC)), "$(0x0000000000000abc:float[])");
  EXPECT_EQ(text(DynamicValue::foreign(type("void*"), 0xABC)), "$0x0000000000000abc");
}

TEST(ValueText, OfWhatAReferenceLeadsToHasAllOptionsOff) {
  const DynamicValue v = value("{ a = 1.0; b = &{ c = 1.0; }; d = 2.0; }");
  EXPECT_EQ(valueToString(v.view(), true, true),
            "{\n  a = 0x3f800000.;\n  b = &{ c = 1.0; };\n  d = 0x40000000.;\n}");
}

TEST(ValueText, OfAFunction) {
  EXPECT_EQ(text(DynamicValue::function(type("(() => int)"), 1, 2)), "<<function>>");
}

TEST(ValueText, OfAPart) {
  const DynamicValue v = value("{ a = 1; b = [ 2.0, 3.0 ]; }");
  EXPECT_EQ(valueToString(v.view().field("b").element(1)), "3.0");
}

TEST(ValueText, GoesToAStream) {
  std::ostringstream stream;
  stream << value("{ a = 1; }");
  EXPECT_EQ(stream.str(), "{ a = 1; }");
}

TEST(ValueText, DoesNotChangeTheValue) {
  const DynamicValue v = value("{ a = &1; }");
  const DynamicValue other(v);
  text(v);
  EXPECT_EQ(v.block(), other.block());
  EXPECT_EQ(count(v), 2u);
}

TEST(ValueText, ExactFloatsReadBackBitByBit) {
  for (const std::uint32_t bits : {0x7FC12345u, 0xFFC00001u, 0x00000001u, 0x80000000u}) {
    const DynamicValue back = value(exact(floatBits(bits)));
    EXPECT_EQ(back.typeOf().text(), "float");
    EXPECT_EQ(at<std::uint32_t>(back), bits);
  }
}

TEST(ValueText, ForeignAddressesReadBackAsTheSameWord) {
  const DynamicValue v = DynamicValue::foreign(type("int*"), 0x7EADBEEFCAFE);
  EXPECT_EQ(at<std::uint64_t>(value(text(v))), at<std::uint64_t>(v));
}

}  // namespace
}  // namespace qex::vornath::test
