// The colour functions as a host calls them.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "support/allocations.hpp"
#include "support/flat_handles.hpp"
#include "vornath_data/result.hpp"

namespace {

using vornath_test::parseType;
using vornath_test::parseValue;
using vornath_test::TypeHandle;
using vornath_test::ValueHandle;
using Floats = std::vector<float>;
using Triple = std::array<float, 3>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// Spectra from text.

std::string spectrumText(const std::string& encoding, const std::string& floats) {
  return "{ encoding = " + encoding + " : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &" +
         floats + "; }";
}

ValueHandle spectrumOf(const std::string& encoding, const std::string& floats) {
  return parseValue(spectrumText(encoding, floats));
}

ValueHandle defaultOf(const std::string& typeText) {
  const TypeHandle type = parseType(typeText);
  vrntValuesError_t* error = nullptr;
  ValueHandle value(vrntValueCreateDefault(type.get(), &error));
  EXPECT_EQ(error, nullptr);
  return value;
}

constexpr const char* kSpectrumType =
    "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }";

vrntValueView_t whole(const ValueHandle& value) { return {vrntValueType(value.get()), 0}; }

std::int32_t toRgb(const ValueHandle& value, std::int32_t code, Triple& rgb) {
  const vrntValueView_t view = whole(value);
  return vrntValueToRGB(value.get(), &view, code, rgb.data());
}

std::int32_t toSpd(const ValueHandle& value, std::int32_t count, Floats& pairs) {
  const vrntValueView_t view = whole(value);
  return vrntValueToSPD(value.get(), &view, count, pairs.data());
}

// The words of the vrnt::Exception that the conversion lets through.
std::string refusal(const vrntSpectrumRec& in, vrntSpectrumRec out) {
  try {
    vrntSpectrumConvert(&in, &out, VRNT_COLOUR_SPACE_E);
  } catch (const vrnt::Exception& caught) {
    EXPECT_EQ(caught.code(), vrnt::ErrorCode::InvalidArguments);
    return caught.what();
  }
  return "no refusal";
}

vrntSpectrumRec record(std::uint32_t encoding, Floats& floats) {
  return {encoding, static_cast<std::int32_t>(floats.size()), floats.data()};
}

constexpr const char* kTooFewLambdas = "Wavelength lambda array must contain at least 2 elements.";
constexpr const char* kBadFirstLambda = "Wavelength lambda[0] must be greater than 0.";
constexpr const char* kBadOrder = "Wavelength lambdas must increase strictly monotonic.";

// Planck's law.

TEST(vrntPlancksLaw, IsZeroAtNoWavelengthOrNoTemperature) {
  EXPECT_EQ(vrntPlancksLaw(0.0F, 6500.0F), 0.0F);
  EXPECT_EQ(vrntPlancksLaw(555.0F, 0.0F), 0.0F);
  EXPECT_EQ(vrntPlancksLaw(-0.0F, -0.0F), 0.0F);
}

TEST(vrntPlancksLaw, IsTheSpectralRadianceForANanometre) {
  EXPECT_NEAR(vrntPlancksLaw(555.0F, 6500.0F), 4.27e4F, 0.01e4F);
  // 2 h c^2 / l^5 / (exp(h c / (l k T)) - 1) in double, with the CODATA 2018 constants. The older k
  // differs by 3e-7 of itself and the exponent's two roundings by 1.2e-7, which the exponential
  // multiplies by the exponent.
  const auto planck = [](double nanometres, double kelvin) {
    const double h = 6.62607015e-34;
    const double c = 299792458.0;
    const double k = 1.380649e-23;
    const double l = nanometres * 1e-9;
    return 2.0 * h * c * c / std::pow(l, 5.0) / std::expm1(h * c / (l * k * kelvin)) * 1e-9;
  };
  for (const float wavelength : {300.0F, 400.0F, 555.0F, 700.0F, 1500.0F}) {
    for (const float kelvin : {1000.0F, 2856.0F, 6500.0F, 20000.0F}) {
      const double exact = planck(static_cast<double>(wavelength), static_cast<double>(kelvin));
      const double exponent = 1.4388e7 / static_cast<double>(wavelength * kelvin);
      EXPECT_NEAR(vrntPlancksLaw(wavelength, kelvin), exact, exact * 5e-7 * (1.0 + exponent))
          << wavelength << " nm, " << kelvin << " K";
    }
  }
}

// The maximum lies at 2,897,772 nm K divided by the temperature.
TEST(vrntPlancksLaw, ObeysWiensDisplacement) {
  for (const float kelvin : {3000.0F, 5000.0F, 6500.0F}) {
    float best = 0.0F;
    for (float wavelength = 300.0F; wavelength < 1500.0F; wavelength += 1.0F) {
      if (vrntPlancksLaw(wavelength, kelvin) > vrntPlancksLaw(best, kelvin)) best = wavelength;
    }
    EXPECT_NEAR(best, 2897772.0F / kelvin, 2.0F) << kelvin;
  }
}

TEST(vrntPlancksLaw, RunsOverToInfinity) {
  // The fifth power of so short a wavelength exceeds a float; the exponential doesn't yet.
  EXPECT_EQ(vrntPlancksLaw(19.0F, 50000.0F), std::numeric_limits<float>::infinity());
  // Here both do.
  EXPECT_TRUE(std::isnan(vrntPlancksLaw(1.0F, 1000.0F)));
}

TEST(vrntBlackbodyToRGB, HasALuminanceOfOne) {
  for (float kelvin = 1000.0F; kelvin <= 20000.0F; kelvin += 500.0F) {
    Triple rgb{};
    vrntBlackbodyToRGB(rgb.data(), kelvin);
    EXPECT_NEAR(0.2126729F * rgb[0] + 0.7151522F * rgb[1] + 0.072175F * rgb[2], 1.0F, 1e-5F);
    for (const float channel : rgb) EXPECT_GE(channel, 0.0F);
  }
}

TEST(vrntBlackbodyToRGB, IsNearlyWhiteAt6500AndRedAt2000) {
  Triple white{};
  vrntBlackbodyToRGB(white.data(), 6500.0F);
  for (const float channel : white) EXPECT_NEAR(channel, 1.0F, 0.06F);
  Triple red{};
  vrntBlackbodyToRGB(red.data(), 2000.0F);
  EXPECT_GT(red[0], 2.0F);
  EXPECT_GT(red[0], 20.0F * red[2]);
}

TEST(vrntBlackbodyToRGB, IsNanAtNoTemperature) {
  Triple rgb{};
  vrntBlackbodyToRGB(rgb.data(), 0.0F);
  for (const float channel : rgb) EXPECT_TRUE(std::isnan(channel));
}

// Records.

TEST(vrntSpectrumConvert, KeepsATripleAndSpreadsALuminance) {
  Floats in{0.1F, 0.2F, 0.3F};
  Floats out{9, 9, 9, 9};
  vrntSpectrumRec to = record(VRNT_ENCODING_RGB, out);
  vrntSpectrumRec from = record(VRNT_ENCODING_RGB, in);
  vrntSpectrumConvert(&from, &to, VRNT_COLOUR_SPACE_D65);
  EXPECT_EQ(out, (Floats{0.1F, 0.2F, 0.3F, 9}));

  from.encoding = VRNT_ENCODING_LUMINANCE;
  vrntSpectrumConvert(&from, &to, VRNT_COLOUR_SPACE_E);
  EXPECT_EQ(out, (Floats{0.1F, 0.1F, 0.1F, 9}));

  // Any other number means a triple, on both sides, whose count isn't read.
  from.encoding = 77;
  to.encoding = 0xFFFFFFFF;
  from.count = to.count = -5;
  vrntSpectrumConvert(&from, &to, VRNT_COLOUR_SPACE_E);
  EXPECT_EQ(out, (Floats{0.1F, 0.2F, 0.3F, 9}));

  to.encoding = VRNT_ENCODING_LUMINANCE;
  vrntSpectrumConvert(&from, &to, VRNT_COLOUR_SPACE_E);
  EXPECT_EQ(out, (Floats{0.2126729F * 0.1F + 0.7151522F * 0.2F + 0.072175F * 0.3F, 0.2F, 0.3F, 9}));
}

TEST(vrntSpectrumConvert, WritesOneAmplitudeBetweenTwoClosingPairs) {
  Floats in{1, 1, 1};
  Floats out{-1, -2, 500, -3, -4, -5, -6};
  vrntSpectrumRec to = record(VRNT_ENCODING_SPECTRAL, out);
  const vrntSpectrumRec from = record(VRNT_ENCODING_RGB, in);
  vrntSpectrumConvert(&from, &to, VRNT_COLOUR_SPACE_E);
  EXPECT_NEAR(out[3], 1.0F, 0.003F);
  out[3] = -3;
  EXPECT_EQ(out, (Floats{-1, -2, 500, -3, -4, -5, -6}));
}

TEST(vrntSpectrumConvert, DropsTheClosingPairsOfASampledRecord) {
  // Two samples 100 nm apart: the last one holds for 50 nm.
  Floats in{7, 7, 400, 1, 500, 2, 7, 7};
  Floats out{0, 0, 390, 0, 400, 0, 490, 0, 545, 0, 548, 0, 0, 0};
  vrntSpectrumRec to = record(VRNT_ENCODING_SPECTRAL, out);
  const vrntSpectrumRec from = record(VRNT_ENCODING_SPECTRAL, in);
  vrntSpectrumConvert(&from, &to, VRNT_COLOUR_SPACE_E);
  // 390 to 400 lies before, 490 to 545 takes 10 of 1 and 45 of 2, 548 to 553 takes 2 of 2.
  EXPECT_EQ(out[3], 0.0F);
  EXPECT_EQ(out[5], 1.0F);
  EXPECT_FLOAT_EQ(out[7], 100.0F / 55.0F);
  EXPECT_EQ(out[9], 2.0F);
  EXPECT_FLOAT_EQ(out[11], 4.0F / 5.0F);
}

TEST(vrntSpectrumConvert, LetsTheRefusalOfItsWavelengthsThrough) {
  Floats triple{1, 1, 1};
  const vrntSpectrumRec rgb = record(VRNT_ENCODING_RGB, triple);
  const auto from = [&](Floats pairs) {
    Floats out{9, 9, 9};
    const std::string words =
        refusal(record(VRNT_ENCODING_SPECTRAL, pairs), record(VRNT_ENCODING_RGB, out));
    EXPECT_EQ(out, (Floats{9, 9, 9}));
    return words;
  };
  const auto to = [&](Floats pairs) {
    const Floats before = pairs;
    const std::string words = refusal(rgb, record(VRNT_ENCODING_SPECTRAL, pairs));
    EXPECT_EQ(pairs, before);
    return words;
  };
  for (const Floats& few : {Floats{}, Floats{1}, Floats{0, 0, 1, 0}, Floats{0, 0, 1, 0, 5}}) {
    EXPECT_EQ(from(few), kTooFewLambdas);
    EXPECT_EQ(to(few), kTooFewLambdas);
  }
  EXPECT_EQ(from({0, 0, 0, 1, 500, 2, 0, 0}), kBadFirstLambda);
  EXPECT_EQ(to({0, 0, -1, 1, 500, 2, 0, 0}), kBadFirstLambda);
  EXPECT_EQ(from({0, 0, 500, 1, 500, 2, 0, 0}), kBadOrder);
  EXPECT_EQ(to({0, 0, 500, 1, 400, 2, 0, 0}), kBadOrder);
  // A single sample has no range to hold for.
  EXPECT_EQ(from({0, 0, 500, 1, 600, 0}), kBadOrder);
  // Counts below zero are none.
  vrntSpectrumRec negative = rgb;
  negative.encoding = VRNT_ENCODING_SPECTRAL;
  negative.count = -8;
  Floats out{9, 9, 9};
  EXPECT_EQ(refusal(negative, record(VRNT_ENCODING_RGB, out)), kTooFewLambdas);
}

TEST(vrntSpectrumConvert, ReportsTheInputsFaultBeforeTheOutputs) {
  Floats in{0, 0, 500, 1, 500, 2, 0, 0};
  Floats out{0, 0, 0, 0, 1, 1, 2, 2};
  EXPECT_EQ(refusal(record(VRNT_ENCODING_SPECTRAL, in), record(VRNT_ENCODING_SPECTRAL, out)),
            kBadOrder);
}

TEST(vrntSpectrumConvert, MayShareItsData) {
  Floats data{0.5F, 0.25F, 0.75F};
  const vrntSpectrumRec from = record(VRNT_ENCODING_LUMINANCE, data);
  vrntSpectrumRec to = record(VRNT_ENCODING_RGB, data);
  vrntSpectrumConvert(&from, &to, VRNT_COLOUR_SPACE_E);
  EXPECT_EQ(data, (Floats{0.5F, 0.5F, 0.5F}));
}

// Values.

TEST(vrntValueToRGB, GivesTheStoredColour) {
  Triple rgb{};
  EXPECT_EQ(toRgb(spectrumOf("RGB", "[ 0.1, 0.2, 0.3 ]"), VRNT_COLOUR_SPACE_D65, rgb), 0);
  EXPECT_EQ(rgb, (Triple{0.1F, 0.2F, 0.3F}));
  EXPECT_EQ(toRgb(spectrumOf("LUMINANCE", "[ 0.5 ]"), VRNT_COLOUR_SPACE_E, rgb), 0);
  EXPECT_EQ(rgb, (Triple{0.5F, 0.5F, 0.5F}));
}

TEST(vrntValueToRGB, SeesASampledOneUnderTheIlluminantOfTheCode) {
  const ValueHandle value = spectrumOf(
      "SPECTRAL", "[ 0., 0., 400., 0.5, 450., 0.5, 500., 0.5, 550., 0.5, 600., 0.5, 650., 0. ]");
  Triple e{};
  Triple d65{};
  Triple other{};
  EXPECT_EQ(toRgb(value, VRNT_COLOUR_SPACE_E, e), 0);
  EXPECT_EQ(toRgb(value, VRNT_COLOUR_SPACE_D65, d65), 0);
  EXPECT_EQ(toRgb(value, 4, other), 0);
  EXPECT_NE(e, d65);
  EXPECT_EQ(e, other);
  // Light with more blue in it.
  EXPECT_GT(d65[2], e[2]);
}

TEST(vrntValueToRGB, IsNanWithoutAPairInRange) {
  Triple rgb{1, 1, 1};
  EXPECT_EQ(toRgb(spectrumOf("SPECTRAL", "[ 0., 0., 701., 1., 750., 1., 800., 0. ]"),
                  VRNT_COLOUR_SPACE_E, rgb),
            0);
  for (const float channel : rgb) EXPECT_TRUE(std::isnan(channel));
}

TEST(vrntValueToRGB, TakesAnEmptySpectrumForBlack) {
  // Zero bytes are a null reference; an array of no floats is the other empty one.
  vrntValuesError_t* error = nullptr;
  const TypeHandle type = parseType(kSpectrumType);
  const ValueHandle null(vrntValueCreate(type.get(), &error));
  ASSERT_EQ(error, nullptr);
  Triple rgb{1, 1, 1};
  EXPECT_EQ(toRgb(null, VRNT_COLOUR_SPACE_D65, rgb), 0);
  EXPECT_EQ(rgb, (Triple{0, 0, 0}));

  const TypeHandle noFloats = parseType("float[0]");
  const ValueHandle array(vrntValueCreate(noFloats.get(), &error));
  for (const std::int32_t encoding : {0, 1, 2}) {
    vrntValue_t* raw = vrntValueCreate(type.get(), &error);
    vrntValueWrite(&raw, 0, &encoding, sizeof(encoding), &error);
    vrntValueView_t field{};
    vrntValueStructField(&field, vrntValueType(raw), 1);
    vrntValueSetReference(&raw, &field, array.get(), &error);
    ASSERT_EQ(error, nullptr);
    const ValueHandle empty(raw);
    rgb = {1, 1, 1};
    EXPECT_EQ(toRgb(empty, VRNT_COLOUR_SPACE_D65, rgb), 0);
    EXPECT_EQ(rgb, (Triple{0, 0, 0}));
  }
}

TEST(vrntValueToRGB, ReadsASpectrumInsideAValue) {
  const ValueHandle value =
      parseValue("{ a = 1; b = " + spectrumText("RGB", "[ 1.0, 2.0, 3.0 ]") + "; }");
  vrntValueView_t view{};
  vrntValueStructField(&view, vrntValueType(value.get()), 1);
  Triple rgb{};
  EXPECT_EQ(vrntValueToRGB(value.get(), &view, 0, rgb.data()), 0);
  EXPECT_EQ(rgb, (Triple{1, 2, 3}));
}

TEST(vrntValueToRGB, RefusesOtherTypesAndWritesNothing) {
  Triple rgb{7, 8, 9};
  EXPECT_EQ(toRgb(parseValue("1.0"), 0, rgb), -1);
  EXPECT_EQ(toRgb(parseValue("{ a = 1; b = 2.0; }"), 0, rgb), -1);
  // Not every array will do behind the reference.
  EXPECT_EQ(toRgb(parseValue("{ encoding = RGB : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = "
                             "&[ 1, 2, 3 ]; }"),
                  0, rgb),
            -1);
  // Nor one that is too short for its encoding.
  EXPECT_EQ(toRgb(spectrumOf("RGB", "[ 1.0, 2.0 ]"), 0, rgb), -1);
  EXPECT_EQ(rgb, (Triple{7, 8, 9}));
}

// A reference may be made to lead to anything: the write protocol checks no types.
TEST(vrntValueToRGB, RefusesAForeignBlockBehindTheReference) {
  vrntValue_t* raw = defaultOf(kSpectrumType).release();
  vrntValueView_t field{};
  vrntValueStructField(&field, vrntValueType(raw), 1);
  const ValueHandle integers = parseValue("[ 1, 2, 3 ]");
  vrntValuesError_t* error = nullptr;
  vrntValueSetReference(&raw, &field, integers.get(), &error);
  const ValueHandle value(raw);
  ASSERT_EQ(error, nullptr);
  Triple rgb{7, 8, 9};
  EXPECT_EQ(toRgb(value, 0, rgb), -1);
  EXPECT_EQ(rgb, (Triple{7, 8, 9}));
}

// An address of the embedder's own is not read through, whatever the type says of it.
TEST(vrntValueToRGB, RefusesAnEmbeddersAddress) {
  for (const char* const target : {"float[]", "float[1]", "float[3]", "float[8]"}) {
    const TypeHandle type = parseType(
        std::string("{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; ") + target + "* spectrum; }");
    for (const std::int32_t encoding : {0, 1, 2}) {
      vrntValuesError_t* error = nullptr;
      vrntValue_t* raw = vrntValueCreate(type.get(), &error);
      ASSERT_EQ(error, nullptr);
      const vrntValueView_t all{vrntValueType(raw), 0};
      auto* const bytes = static_cast<char*>(vrntValueMap(&raw, &all, &error));
      ASSERT_NE(bytes, nullptr);
      const std::uint64_t word = 7 * 2 + 1;
      std::memcpy(bytes, &encoding, sizeof(encoding));
      std::memcpy(bytes + 8, &word, sizeof(word));
      vrntValueUnmap(raw, &all);
      const ValueHandle value(raw);
      Triple rgb{7, 8, 9};
      EXPECT_EQ(toRgb(value, 0, rgb), -1);
      EXPECT_EQ(rgb, (Triple{7, 8, 9}));
      Floats pairs{400, 9, 500, 9};
      EXPECT_EQ(toSpd(value, 4, pairs), -1);
      EXPECT_EQ(pairs, (Floats{400, 9, 500, 9}));
    }
  }
}

TEST(vrntValueToRGB, AllocatesNothingAndTakesNoReference) {
  const ValueHandle value = spectrumOf("SPECTRAL", "[ 0., 0., 400., 1., 500., 2., 600., 0. ]");
  const vrntValueView_t view = whole(value);
  Triple rgb{};
  vrntValueToRGB(value.get(), &view, 1, rgb.data());  // the permanent types are there
  const std::uint64_t before = vornath_test::allocationCount();
  EXPECT_EQ(vrntValueToRGB(value.get(), &view, 1, rgb.data()), 0);
  EXPECT_EQ(vornath_test::allocationCount(), before);
  EXPECT_EQ(vrntValueBinary(value.get())->refCount, 1U);
}

TEST(vrntValueToSPD, AveragesFromEachWavelengthToTheNext) {
  const ValueHandle value = spectrumOf("SPECTRAL", "[ 0., 0., 400., 1., 500., 2., 600., 0. ]");
  Floats pairs{350, 9, 450, 9, 550, 9};
  // The last band is as wide as an average pair: (550 - 350) / 3.
  EXPECT_EQ(toSpd(value, 6, pairs), 0);
  EXPECT_EQ(pairs[1], 0.5F);
  EXPECT_EQ(pairs[3], 1.5F);
  EXPECT_FLOAT_EQ(pairs[5], 100.0F / (200.0F / 3.0F));
  EXPECT_EQ(pairs[4], 550.0F);
}

TEST(vrntValueToSPD, LeavesAnOddFloatAtTheEndAlone) {
  const ValueHandle value = spectrumOf("LUMINANCE", "[ 0.5 ]");
  Floats pairs{400, 9, 500, 9, 600};
  EXPECT_EQ(toSpd(value, 5, pairs), 0);
  EXPECT_EQ(pairs, (Floats{400, 0.5F, 500, 0.5F, 600}));
}

TEST(vrntValueToSPD, IsUnderD65) {
  const ValueHandle red = spectrumOf("RGB", "[ 1.0, 0.0, 0.0 ]");
  Floats pairs{600, 0, 650, 0};
  ASSERT_EQ(toSpd(red, 4, pairs), 0);
  // White-balanced red isn't the red curve itself, whose mean from 600 to 650 nm lies near 0.98.
  float curve = 0;
  for (const float sample : {0.91759F, 0.973603F, 0.986388F, 0.986945F, 0.969565F, 1.00016F,
                             1.00001F, 0.991603F, 1.00009F, 0.985259F}) {
    curve += sample / 10;
  }
  EXPECT_GT(std::abs(pairs[1] - curve), 0.05F);
}

TEST(vrntValueToSPD, RefusesBadWavelengthsAndTypesAndWritesNothing) {
  const ValueHandle value = spectrumOf("LUMINANCE", "[ 0.5 ]");
  const auto refuse = [](const ValueHandle& v, std::int32_t count, Floats pairs) {
    const Floats before = pairs;
    EXPECT_EQ(toSpd(v, count, pairs), -1);
    EXPECT_EQ(pairs, before);
  };
  refuse(value, 0, {1, 1});
  refuse(value, 1, {1, 1});
  refuse(value, -4, {400, 1, 500, 1});
  refuse(value, 2, {500, 9});  // a single pair has no range to hold for
  refuse(value, 4, {0, 9, 500, 9});
  refuse(value, 4, {500, 9, 500, 9});
  refuse(value, 4, {500, 9, 400, 9});
  refuse(parseValue("1.0"), 4, {400, 9, 500, 9});
  Floats nan{400, 9, kNan, 9};
  EXPECT_EQ(toSpd(value, 4, nan), -1);
  EXPECT_EQ(nan[1], 9.0F);
}

TEST(vrntValueToSPD, AnswersMinusOneWhenMemoryEnds) {
  const ValueHandle value = spectrumOf("LUMINANCE", "[ 0.5 ]");
  const vrntValueView_t view = whole(value);
  Floats pairs{400, 9, 500, 9};
  ASSERT_EQ(vrntValueToSPD(value.get(), &view, 4, pairs.data()), 0);
  pairs[1] = 9;
  {
    const vornath_test::FailingAllocations failing;
    EXPECT_EQ(vrntValueToSPD(value.get(), &view, 4, pairs.data()), -1);
  }
  EXPECT_EQ(pairs[1], 9.0F);
  EXPECT_EQ(vrntValueToSPD(value.get(), &view, 4, pairs.data()), 0);
  EXPECT_EQ(pairs[1], 0.5F);
}

}  // namespace
