#include "vornath_data/host/record.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "refusal.hpp"

namespace {

using namespace vrnt::host;
using vornath_test::refusalOf;
using vornath_test::messageOf;
using vrnt::ErrorCode;

}  // namespace

TEST(Record, BeginsWithTheDefaultOfItsType) {
  EXPECT_EQ(Record::ofType("{ float @default=0.5 a; int b; }").text(), "{ a = 0.5; b = 0; }");
  EXPECT_EQ(refusalOf([] { Record::ofType("{ float a }"); }).code, ErrorCode::ParseFailed);
}

TEST(Record, SetsEachKindOfFieldByItsPath) {
  Record record = Record::ofType(
      "{ float f; int i; bool b; float2 v; enum { A; B; } e; char[6] t; { half[2] h; } n; }");
  const std::string text = "words";
  record.set("f", 1.5F)
      .set("i", 7)
      .set("b", true)
      .set("v", std::array<float, 2>{1, 2})
      .set("e", "B")
      .set("t", text)
      .set("n.h[1]", std::uint16_t{0x3C00});
  EXPECT_EQ(record.text(),
            "{ f = 1.5; i = 7; b = true; v = float2(1.0, 2.0); e = B : enum { A; B; }; t = [ 119c, "
            "111c, 114c, 100c, 115c, 0c ]; n = { h = [ 0.0h, 1.0h ]; }; }");
  EXPECT_EQ(record.get<float>("f"), 1.5F);
  EXPECT_TRUE(record.get<bool>("b"));
  EXPECT_EQ(record.get<std::string>("e"), "B");
  EXPECT_EQ(record.get<std::string>("t"), "words");
}

TEST(Record, RefusesToBeUsedAfterAMove) {
  Record record = Record::ofType("{ int a; }");
  const Record taken = std::move(record);
  const std::string words = "Incompatible type for value -> no value.";
  // NOLINTBEGIN(bugprone-use-after-move): that is what is tested
  EXPECT_EQ(messageOf([&] { record.set("a", 1); }), words);
  EXPECT_EQ(messageOf([&] { record.get<std::int32_t>("a"); }), words);
  EXPECT_EQ(messageOf([&] { record.text(); }), words);
  // NOLINTEND(bugprone-use-after-move)
  EXPECT_EQ(taken.text(), "{ a = 0; }");
}

TEST(Record, SetsSpectra) {
  Record record =
      Record::ofType("{ { enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; } s; }");
  record.set("s", FlatSpectrum{0.5F});
  EXPECT_EQ(record.text(),
            "{ s = { encoding = LUMINANCE : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &[ 0.5 "
            "]; }; }");
  record.set("s", RgbSpectrum{1, 2, 3}).set("s", SampledSpectrum{{400}, {1}, 500});
  EXPECT_EQ(record.get<std::string>("s.encoding"), "SPECTRAL");
}

TEST(Record, IsUnchangedByARefusal) {
  Record record = Record::ofType("{ float f; enum { A; B; } e; char[4] t; }");
  EXPECT_EQ(messageOf([&] { record.set("f", 1); }),
            "Incompatible type for accessor -> type float of field f does not match type int.");
  EXPECT_EQ(messageOf([&] { record.set("f", "1.0"); }),
            "Incompatible type for accessor -> type float of field f does not match an array of "
            "char.");
  EXPECT_EQ(messageOf([&] { record.set("e", "C"); }), "Invalid enum constructor: C");
  EXPECT_EQ(messageOf([&] { record.set("t", "four"); }), "Text of 4 bytes does not fit char[4].");
  EXPECT_EQ(messageOf([&] { record.set("g", 1.0F); }),
            "Field path g: there is no field g in { float f; enum { A; B; } e; char[4] t; }.");
  EXPECT_EQ(record.text(), "{ f = 0.0; e = A : enum { A; B; }; t = [ 0c, 0c, 0c, 0c ]; }");
}

TEST(Record, SharesItsValueUntilItIsWritten) {
  Record record = Record::ofType("{ int a; }");
  const Record copy = record;
  EXPECT_EQ(record.value().get(), copy.value().get());
  record.set("a", 1);
  EXPECT_EQ(copy.get<std::int32_t>("a"), 0);
  const vrnt::Value value = std::move(record).value();
  EXPECT_FALSE(record.value());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(value.get()->refCount, 1u);
}
