// The types in which lights hold their strength, and the way to the universal spectrum.
#include <gtest/gtest.h>

#include "type_reading.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary

const std::string kSpectrum = "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }";
const std::string kCompact = "{ float3 spectrum; }";
const std::string kUniversal = kSpectrum + " @name=\"Spectrum\"";

TypeHandle universal(const vrntType_t* type) {
  return TypeHandle(vrntTypeToUniversalSpectrum(type));
}

std::string universalText(const std::string& text) {
  return textOf(universal(parseType(text).get()).get());
}

}  // namespace

TEST(vrntTypeSpectrum, IsNamedAndHasAnEncodingAndItsNumbers) {
  const TypeHandle type(vrntTypeSpectrum());
  EXPECT_EQ(textOf(type.get()), kUniversal);
  EXPECT_EQ(strippedText(type.get()), kSpectrum);
  EXPECT_EQ(keysOf(type.get()), (std::vector<std::string>{"name"}));
  EXPECT_EQ(displayName(type.get()), "Spectrum");
  EXPECT_EQ(labelsOf(type.get()), (std::vector<std::string>{"encoding", "spectrum"}));
  const TypeHandle encoding = fieldOf(type.get(), {0});
  EXPECT_STREQ(vrntTypeConstructorName(encoding.get(), VRNT_ENCODING_LUMINANCE), "LUMINANCE");
  EXPECT_STREQ(vrntTypeConstructorName(encoding.get(), VRNT_ENCODING_RGB), "RGB");
  EXPECT_STREQ(vrntTypeConstructorName(encoding.get(), VRNT_ENCODING_SPECTRAL), "SPECTRAL");
  EXPECT_EQ(vrntTypeConstructorCount(encoding.get()), 3u);
}

TEST(vrntTypeSpectrum, IsALeafToHosts) {
  const TypeHandle type(vrntTypeSpectrum());
  EXPECT_EQ(vrntTypeDescriptor(type.get()), std::uint32_t{VRNT_DESCRIPTOR_BASE});
  EXPECT_EQ(vrntTypeBasetype(type.get()), std::uint32_t{VRNT_BASETYPE_STRUCT});
}

TEST(vrntTypeSpectrum, IsOnePermanentType) {
  const TypeHandle first(vrntTypeSpectrum());
  const vrntType_t* const address = first.get();
  EXPECT_EQ(TypeHandle(vrntTypeSpectrum()).get(), address);
  EXPECT_EQ(parseType(kUniversal).get(), address);
}

TEST(vrntTypeLightUnit, HasTheFourUnitsByNumber) {
  const TypeHandle type(vrntTypeLightUnit());
  EXPECT_EQ(textOf(type.get()), "enum { LUMEN; CANDELA; LUX; NIT; }");
  EXPECT_EQ(vrntTypeDescriptor(type.get()), std::uint32_t{VRNT_DESCRIPTOR_ENUM});
  EXPECT_EQ(vrntMetadataSize(type.get()), 0u);
  ASSERT_EQ(vrntTypeConstructorCount(type.get()), 4u);
  EXPECT_STREQ(vrntTypeConstructorName(type.get(), VRNT_LIGHT_UNIT_LUMEN), "LUMEN");
  EXPECT_STREQ(vrntTypeConstructorName(type.get(), VRNT_LIGHT_UNIT_CANDELA), "CANDELA");
  EXPECT_STREQ(vrntTypeConstructorName(type.get(), VRNT_LIGHT_UNIT_LUX), "LUX");
  EXPECT_STREQ(vrntTypeConstructorName(type.get(), VRNT_LIGHT_UNIT_NIT), "NIT");
  EXPECT_EQ(parseType("enum { LUMEN; CANDELA; LUX; NIT; }").get(), type.get());
}

TEST(vrntTypeLightUnit, OutlivesItsHandles) {
  const vrntType_t* const address = destroyedAddress(vrntTypeLightUnit());
  const TypeHandle filler = parseType("enum { LUMEN; CANDELA; LUX; FOOT; }");
  EXPECT_EQ(TypeHandle(vrntTypeLightUnit()).get(), address);
  EXPECT_STREQ(vrntTypeString(address), "enum { LUMEN; CANDELA; LUX; NIT; }");
}

TEST(vrntTypeEmission, IsAColourWithAValueInAUnit) {
  const TypeHandle type(vrntTypeEmission());
  EXPECT_EQ(textOf(type.get()),
            "{ " + kUniversal + " color; float value; enum { LUMEN; CANDELA; LUX; NIT; } unit; }");
  EXPECT_EQ(strippedText(type.get()),
            "{ " + kSpectrum + " color; float value; enum { LUMEN; CANDELA; LUX; NIT; } unit; }");
  EXPECT_EQ(labelsOf(type.get()), (std::vector<std::string>{"color", "value", "unit"}));
  EXPECT_EQ(fieldOf(type.get(), {0}).get(), TypeHandle(vrntTypeSpectrum()).get());
  EXPECT_EQ(fieldOf(type.get(), {1}).get(), parseType("float").get());
  EXPECT_EQ(fieldOf(type.get(), {2}).get(), TypeHandle(vrntTypeLightUnit()).get());
  EXPECT_EQ(vrntMetadataSize(type.get()), 0u);
  EXPECT_EQ(vrntTypeDescriptor(type.get()), std::uint32_t{VRNT_DESCRIPTOR_STRUCT});
}

TEST(vrntTypeEmission, OutlivesItsHandles) {
  const vrntType_t* const address = destroyedAddress(vrntTypeEmission());
  const TypeHandle filler = parseType("{ float emission_filler; }");
  EXPECT_EQ(TypeHandle(vrntTypeEmission()).get(), address);
  EXPECT_STREQ(vrntTypeFieldLabel(address, 2), "unit");
}

TEST(vrntTypeToUniversalSpectrum, OfTheCompactSpectrumIsTheSpectrumItself) {
  EXPECT_EQ(universal(parseType(kCompact).get()).get(), TypeHandle(vrntTypeSpectrum()).get());
}

TEST(vrntTypeToUniversalSpectrum, AddsTheMetadataOfACompactSpectrum) {
  EXPECT_EQ(universalText(kCompact + " @desc=\"Tint\" @hide"),
            kSpectrum + " @desc=\"Tint\" @hide @name=\"Spectrum\"");
  // The compact spectrum's own name stays.
  EXPECT_EQ(universalText(kCompact + " @name=\"Tint\""), kSpectrum + " @name=\"Tint\"");
  EXPECT_EQ(universalText(kCompact + " @name"), kSpectrum + " @name");
  EXPECT_EQ(universalText(kCompact + " @default={ spectrum = float3(1.0, 2.0, 3.0); }"),
            kSpectrum + " @default={ spectrum = float3(1.0, 2.0, 3.0); } @name=\"Spectrum\"");
}

TEST(vrntTypeToUniversalSpectrum, KnowsACompactSpectrumWhateverItsFieldsAnnotations) {
  EXPECT_EQ(
      universal(parseType("{ float3 @default=float3(1.0, 1.0, 1.0) @name=\"X\" spectrum; }").get())
          .get(),
      TypeHandle(vrntTypeSpectrum()).get());
}

TEST(vrntTypeToUniversalSpectrum, LeavesWhatIsNoCompactSpectrum) {
  for (const char* text :
       {"float3", "float3 @name=\"spectrum\"", "{ float3 color; }", "{ float4 spectrum; }",
        "{ float spectrum; }", "{ float[3] spectrum; }", "{ float3 spectrum; float alpha; }", "{ }",
        "int", "void*", "enum { A @x; B; } @y", "((float3) => float3)",
        "{ int a; { float @default=0.5 @min=0.0 b; }[3] @c d; } @e=\"f\"",
        "{ { float3 spectra; } spectrum; }"}) {
    const TypeHandle type = parseType(text);
    EXPECT_EQ(universal(type.get()).get(), type.get()) << text;
  }
  const TypeHandle spectrum(vrntTypeSpectrum());
  EXPECT_EQ(universal(spectrum.get()).get(), spectrum.get());
}

TEST(vrntTypeToUniversalSpectrum, ReplacesFieldsInPlace) {
  EXPECT_EQ(universalText("{ " + kCompact + " color; float weight; }"),
            "{ " + kUniversal + " color; float weight; }");
  EXPECT_EQ(universalText("{ float @min=0.0 a; " + kCompact + " @hide b; int c; { int x; " +
                          kCompact + " y; } @inner d; } @outer"),
            "{ float @min=0.0 a; " + kSpectrum + " @hide @name=\"Spectrum\" b; int c; { int x; " +
                kUniversal + " y; } @inner d; } @outer");
  // A field of that name makes no compact spectrum of its struct.
  EXPECT_EQ(universalText("{ " + kCompact + " spectrum; }"), "{ " + kUniversal + " spectrum; }");
}

TEST(vrntTypeToUniversalSpectrum, KeepsTheTypesOfFieldsThatStay) {
  const TypeHandle type =
      parseType("{ { float @default=0.5 x; } kept; { " + kCompact + " c; } changed; }");
  const TypeHandle result = universal(type.get());
  EXPECT_EQ(fieldOf(result.get(), {0}).get(), fieldOf(type.get(), {0}).get());
  EXPECT_NE(fieldOf(result.get(), {1}).get(), fieldOf(type.get(), {1}).get());
}

TEST(vrntTypeToUniversalSpectrum, KeepsValuesInMetadata) {
  const TypeHandle type =
      parseType("{ " + kCompact + " c; int @default=3 n; } @default={ n = 4; } @name=\"Outer\"");
  const TypeHandle result = universal(type.get());
  EXPECT_EQ(defaultEntry(result.get()), "{ n = 4; }");
  EXPECT_EQ(displayName(result.get()), "Outer");
  EXPECT_EQ(defaultEntry(fieldOf(result.get(), {1}).get()), "3");
  EXPECT_EQ(vrntTypeSize(result.get()), 24u);
}

TEST(vrntTypeToUniversalSpectrum, GoesThroughArraysOfOneDimension) {
  EXPECT_EQ(universalText(kCompact + "[4]"), kUniversal + "[4]");
  EXPECT_EQ(universalText(kCompact + "[]"), kUniversal + "[]");
  EXPECT_EQ(universalText(kCompact + "[0]"), kUniversal + "[0]");
  EXPECT_EQ(universalText(kCompact + "[4][2] @a"), kUniversal + "[4][2] @a");
  EXPECT_EQ(universalText("{ { " + kCompact + " c; }[3] @many list; }"),
            "{ { " + kUniversal + " c; }[3] @many list; }");
}

TEST(vrntTypeToUniversalSpectrum, StopsAtEverythingElse) {
  for (const std::string& text :
       {kCompact + "[2,2]", kCompact + "[,]", kCompact + "[1,2,3]", kCompact + "[1,2,3,4] @a",
        kCompact + "*", kCompact + "[3]*", "((" + kCompact + ") => " + kCompact + ")",
        "enum { A( " + kCompact + " x ); B; }"}) {
    const TypeHandle type = parseType(text);
    EXPECT_EQ(universal(type.get()).get(), type.get()) << text;
  }
  EXPECT_EQ(universalText("{ " + kCompact + "* kept; " + kCompact + "[2,2] also; " + kCompact +
                          " changed; }"),
            "{ " + kCompact + "* kept; " + kCompact + "[2,2] also; " + kUniversal + " changed; }");
}

TEST(vrntTypeToUniversalSpectrum, GivesAReferenceOfItsOwn) {
  TypeHandle type = parseType("{ " + kCompact + " own_reference; }");
  const TypeHandle result = universal(type.get());
  type.reset();
  EXPECT_EQ(textOf(result.get()), "{ " + kUniversal + " own_reference; }");
  TypeHandle unchanged = parseType("{ int own_reference; }");
  const TypeHandle same = universal(unchanged.get());
  unchanged.reset();
  EXPECT_EQ(textOf(same.get()), "{ int own_reference; }");
}
