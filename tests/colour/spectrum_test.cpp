// Making, checking and averaging spectra, on numbers that are worked out by hand.
#include "embed/spectrum.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "colour/spectrum_reading.hpp"
#include "colour/step_function.hpp"
#include "embed/spectral_pairs.hpp"
#include "embed/spectrum_value.hpp"
#include "vornath_data/result.hpp"
#include "vornath_data/vrnt.h"

namespace qex::vornath {
namespace {

using Floats = std::vector<float>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

constexpr const char* kBadLambda = "Wavelength lambda must be greater than 0.";
constexpr const char* kBadStep = "Wavelength delta lambda must be greater than 0";
constexpr const char* kTooFewLambdas = "Wavelength lambda array must contain at least 2 elements.";
constexpr const char* kBadFirstLambda = "Wavelength lambda[0] must be greater than 0.";
constexpr const char* kBadOrder = "Wavelength lambdas must increase strictly monotonic.";

// The words of the vrnt::Exception that `work` throws, which must be about its arguments.
template <typename Work>
std::string refusal(Work&& work) {
  try {
    work();
  } catch (const vrnt::Exception& caught) {
    EXPECT_EQ(caught.code(), vrnt::ErrorCode::InvalidArguments);
    return caught.what();
  }
  return "no refusal";
}

Floats floatsOf(const Spectrum& spectrum) {
  const auto floats = spectrum.view().floats();
  return {floats.begin(), floats.end()};
}

Spectrum spectral(const Floats& floats) {
  return Spectrum(makeSpectrumValue(SpectrumEncoding::Spectral, floats));
}

std::string validity(const Spectrum& spectrum) {
  return refusal([&] { spectrum.validate(); });
}
std::string validity(const Floats& floats) { return validity(spectral(floats)); }

// Amplitude 1 from 400 to 500 nm and 2 from 500 to 600 nm.
Spectrum twoSteps() { return Spectrum::fromSamples(Floats{400, 500, 600}, Floats{1, 2}); }

TEST(FromLuminance, HoldsOneFloat) {
  const Spectrum spectrum = Spectrum::fromLuminance(0.5F);
  EXPECT_EQ(spectrum.view().encoding(), SpectrumEncoding::Luminance);
  EXPECT_EQ(floatsOf(spectrum), Floats{0.5F});
  EXPECT_EQ(spectrum.value().typeOf().text(),
            "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }");
  EXPECT_EQ(validity(spectrum), "no refusal");
}

TEST(FromRgb, HoldsThreeFloats) {
  const Spectrum spectrum = Spectrum::fromRgb(0.1F, 0.2F, 0.3F);
  EXPECT_EQ(spectrum.view().encoding(), SpectrumEncoding::Rgb);
  EXPECT_EQ(floatsOf(spectrum), (Floats{0.1F, 0.2F, 0.3F}));
  EXPECT_EQ(validity(spectrum), "no refusal");
}

TEST(FromSamples, OfOneBandIsTooShortToBeValid) {
  const Spectrum spectrum = Spectrum::fromSamples(Floats{400, 500}, Floats{2});
  EXPECT_EQ(spectrum.view().encoding(), SpectrumEncoding::Spectral);
  EXPECT_EQ(floatsOf(spectrum), (Floats{0, 0, 400, 2, 500, 0}));
  EXPECT_EQ(validity(spectrum), "At least 7 spectral values must be specified.");
}

TEST(FromSamples, OfTwoBandsIsValid) {
  EXPECT_EQ(floatsOf(twoSteps()), (Floats{0, 0, 400, 1, 500, 2, 600, 0}));
  EXPECT_EQ(validity(twoSteps()), "no refusal");
}

TEST(FromSamples, ReportsTheFirstFaultOfTheWavelengthsBeforeTheSizes) {
  const auto from = [](const Floats& lambdas, const Floats& amplitudes) {
    return refusal([&] { Spectrum::fromSamples(lambdas, amplitudes); });
  };
  const Floats none;
  EXPECT_EQ(from(none, none), kTooFewLambdas);
  EXPECT_EQ(from({400}, {1, 2, 3}), kTooFewLambdas);
  EXPECT_EQ(from({0}, none), kTooFewLambdas);
  EXPECT_EQ(from({0, 500}, {1, 2, 3}), kBadFirstLambda);
  EXPECT_EQ(from({-1, -2}, {1}), kBadFirstLambda);
  EXPECT_EQ(from({400, 400}, {1, 2, 3}), kBadOrder);
  EXPECT_EQ(from({400, 500, 450}, {1, 2}), kBadOrder);
  EXPECT_EQ(from({400, kNan}, {1}), kBadOrder);
  EXPECT_EQ(from({kNan, 400}, {1}), kBadOrder);
  const char* const sizes = "amplitudes.size() must be lambdas.size() - 1.";
  EXPECT_EQ(from({400, 500}, none), sizes);
  EXPECT_EQ(from({400, 500}, {1, 2}), sizes);
}

TEST(FromUniformSamples, ReachesItsWavelengthsByAddition) {
  EXPECT_EQ(floatsOf(Spectrum::fromUniformSamples(400, 50, Floats{1, 2})),
            (Floats{0, 0, 400, 1, 450, 2, 500, 0}));
  // 0.1 is not a float: sixteen additions don't land where a product does.
  const Floats ones(16, 1.0F);
  const Floats pairs = floatsOf(Spectrum::fromUniformSamples(1.0F, 0.1F, ones));
  ASSERT_EQ(pairs.size(), 36U);
  float lambda = 1.0F;
  for (int i = 0; i < 16; ++i) lambda += 0.1F;
  EXPECT_EQ(pairs[34], lambda);
  EXPECT_NE(lambda, 1.0F + 16.0F * 0.1F);
  EXPECT_EQ(pairs[35], 0.0F);
}

TEST(FromUniformSamples, ChecksItsStartAndItsStep) {
  const auto from = [](float lambda0, float delta) {
    return refusal([&] { Spectrum::fromUniformSamples(lambda0, delta, Floats{1}); });
  };
  EXPECT_EQ(from(0, 0), kBadLambda);
  EXPECT_EQ(from(-400, 5), kBadLambda);
  EXPECT_EQ(from(400, 0), kBadStep);
  EXPECT_EQ(from(400, -5), kBadStep);
  // Only zero and below are refused.
  EXPECT_EQ(from(kNan, kNan), "no refusal");
}

TEST(FromBand, HasOneIntervalAndChecksNothing) {
  EXPECT_EQ(floatsOf(Spectrum::fromBand(400, 100, 2)), (Floats{0, 0, 400, 2, 500, 0}));
  EXPECT_EQ(floatsOf(Spectrum::fromBand(-1, -1, 2)), (Floats{0, 0, -1, 2, -2, 0}));
}

TEST(Spectrum, SharesItsArrayWithItsCopies) {
  const Spectrum spectrum = twoSteps();
  const Spectrum copy = spectrum;  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_EQ(copy.view().floats().data(), spectrum.view().floats().data());
}

TEST(Validate, TellsTheFirstFault) {
  const char* const count = "At least 7 spectral values must be specified.";
  const char* const even = "Number of spectral values must be even.";
  const char* const first =
      "The first wave length and amplitude of the spectral value need to be zero.";
  const char* const order = "Lambdas must increase strictly monotonical.";
  const char* const last = "The last amplitude of the spectral value must be zero.";
  EXPECT_EQ(validity({5, 5}), count);
  EXPECT_EQ(validity({5, 5, 4, 1, 3, 1}), count);
  EXPECT_EQ(validity({5, 5, 4, 1, 3, 1, 9}), even);
  EXPECT_EQ(validity({0, 1, 400, 1, 300, 1, 600, 1}), first);
  EXPECT_EQ(validity({1, 0, 400, 1, 500, 1, 600, 0}), first);
  EXPECT_EQ(validity({kNan, 0, 400, 1, 500, 1, 600, 0}), first);
  EXPECT_EQ(validity({0, kNan, 400, 1, 500, 1, 600, 0}), first);
  EXPECT_EQ(validity({0, 0, 0, 1, 500, 1, 600, 0}), order);
  EXPECT_EQ(validity({0, 0, 400, 1, 400, 1, 600, 1}), order);
  EXPECT_EQ(validity({0, 0, 400, 1, 500, 1, 450, 1}), order);
  EXPECT_EQ(validity({0, 0, 400, 1, kNan, 1, 600, 0}), order);
  EXPECT_EQ(validity({0, 0, 400, 1, 500, 1, 600, 0.5F}), last);
  EXPECT_EQ(validity({0, 0, 400, 1, 500, 1, 600, kNan}), last);
  EXPECT_EQ(validity({0, 0, 400, 1, 500, 1, 600, 0}), "no refusal");
  EXPECT_EQ(validity({0, 0, 400, kNan, 500, -1, 600, -0.0F}), "no refusal");
}

TEST(Validate, AcceptsAnEmptySpectrumOfAnyEncoding) {
  for (const auto encoding :
       {SpectrumEncoding::Luminance, SpectrumEncoding::Rgb, SpectrumEncoding::Spectral}) {
    EXPECT_EQ(validity(Spectrum(makeSpectrumValue(encoding, {}))), "no refusal");
  }
  // A null reference.
  EXPECT_EQ(validity(Spectrum(DynamicValue(TypePtr(&Spectrum::fromLuminance(0).value().typeOf())))),
            "no refusal");
}

TEST(Validate, WantsTheArrayTypeOfTheEncoding) {
  const auto made = [](SpectrumEncoding encoding, std::size_t count) {
    return Spectrum(makeSpectrumValue(encoding, Floats(count, 1.0F)));
  };
  EXPECT_EQ(
      validity(made(SpectrumEncoding::Luminance, 3)),
      "Incompatible type for value -> Expected array of size: 1 - provided array of size: 3.");
  EXPECT_EQ(
      validity(made(SpectrumEncoding::Rgb, 1)),
      "Incompatible type for value -> Expected array of size: 3 - provided array of size: 1.");
  EXPECT_EQ(
      validity(made(SpectrumEncoding::Rgb, 4)),
      "Incompatible type for value -> Expected array of size: 3 - provided array of size: 4.");
}

TEST(BandAverage, IntegratesTheStepFunction) {
  const Spectrum spectrum = twoSteps();
  const SpectrumView view = spectrum.view();
  EXPECT_EQ(view.bandAverage(450, 100, Illuminant::E), 1.5F);
  EXPECT_EQ(view.bandAverage(350, 100, Illuminant::E), 0.5F);
  EXPECT_EQ(view.bandAverage(650, 100, Illuminant::E), 0.0F);
  EXPECT_EQ(view.bandAverage(400, 200, Illuminant::E), 1.5F);
  EXPECT_EQ(view.bandAverage(410, 10, Illuminant::E), 1.0F);
  EXPECT_EQ(view.bandAverage(500, 100, Illuminant::D65), 2.0F);
  EXPECT_EQ(view.bandAverage(550, 100, Illuminant::E), 1.0F);
  EXPECT_EQ(view.bandAverage(300, 400, Illuminant::E), 0.75F);
  EXPECT_EQ(view.bandAverage(100, 100, Illuminant::E), 0.0F);
}

TEST(BandAverage, ChecksItsArgumentsInEveryEncoding) {
  const Spectrum spectra[]{Spectrum::fromLuminance(0.5F), Spectrum::fromRgb(1, 1, 1), twoSteps()};
  for (const Spectrum& spectrum : spectra) {
    const auto average = [&](float lambda, float delta) {
      return refusal([&] { spectrum.view().bandAverage(lambda, delta, Illuminant::E); });
    };
    EXPECT_EQ(average(0, 5), kBadLambda);
    EXPECT_EQ(average(-1, 0), kBadLambda);
    EXPECT_EQ(average(500, 0), kBadStep);
    EXPECT_EQ(average(500, -1), kBadStep);
    EXPECT_EQ(average(kNan, 5), "no refusal");
    EXPECT_EQ(average(500, kNan), "no refusal");
  }
}

TEST(BandAverage, OfAnEmptySpectrumIsZeroWithoutACheck) {
  for (const auto encoding :
       {SpectrumEncoding::Luminance, SpectrumEncoding::Rgb, SpectrumEncoding::Spectral}) {
    EXPECT_EQ(SpectrumView(encoding, {}).bandAverage(0, -1, Illuminant::E), 0.0F);
  }
}

TEST(BandAverage, OfALuminanceIsFlat) {
  const Spectrum spectrum = Spectrum::fromLuminance(0.25F);
  EXPECT_EQ(spectrum.view().bandAverage(1, 10000, Illuminant::D65), 0.25F);
  EXPECT_EQ(spectrum.view().bandAverage(kNan, 1, Illuminant::E), 0.25F);
}

TEST(BandAverage, OfANanBandIsNan) {
  const Spectrum spectra[]{Spectrum::fromRgb(1, 1, 1), twoSteps()};
  for (const Spectrum& spectrum : spectra) {
    EXPECT_TRUE(std::isnan(spectrum.view().bandAverage(kNan, 100, Illuminant::E)));
    EXPECT_TRUE(std::isnan(spectrum.view().bandAverage(500, kNan, Illuminant::E)));
  }
}

TEST(BandAverage, OfWhiteIsNearOne) {
  const Spectrum white = Spectrum::fromRgb(1, 1, 1);
  EXPECT_NEAR(white.view().bandAverage(500, 100, Illuminant::E), 1.0F, 0.003F);
}

// White D65 is white E after the adaptation, so the light alone makes no colour.
TEST(BandAverage, OfGreyStaysGreyUnderD65) {
  const Spectrum grey = Spectrum::fromRgb(0.5F, 0.5F, 0.5F);
  for (float lambda = 400; lambda < 700; lambda += 20) {
    EXPECT_NEAR(grey.view().bandAverage(lambda, 20, Illuminant::D65),
                grey.view().bandAverage(lambda, 20, Illuminant::E), 0.0001F)
        << lambda;
  }
}

TEST(BandAverage, OfATripleBeyondTheGridAveragesInZeros) {
  const Spectrum white = Spectrum::fromRgb(1, 1, 1);
  const SpectrumView view = white.view();
  EXPECT_EQ(view.bandAverage(100, 200, Illuminant::E), 0.0F);
  EXPECT_EQ(view.bandAverage(705, 100, Illuminant::E), 0.0F);
  EXPECT_EQ(view.bandAverage(1e30F, 1e30F, Illuminant::E), 0.0F);
  EXPECT_NEAR(view.bandAverage(300, 200, Illuminant::E), 0.5F, 0.003F);
  EXPECT_NEAR(view.bandAverage(655, 100, Illuminant::E), 0.5F, 0.003F);
}

TEST(SampleAt, GivesABandForEachAdjacentPair) {
  EXPECT_EQ(twoSteps().view().sampleAt(Floats{350, 450, 550, 650}), (Floats{0.5F, 1.5F, 1.0F}));
}

TEST(SampleAt, ChecksTheWavelengthsOfAnEmptySpectrumToo) {
  const SpectrumView empty(SpectrumEncoding::Spectral, {});
  const Spectrum full = twoSteps();
  for (const SpectrumView& view : {empty, full.view()}) {
    EXPECT_EQ(refusal([&] { (void)view.sampleAt(Floats{}); }), kTooFewLambdas);
    EXPECT_EQ(refusal([&] { (void)view.sampleAt(Floats{500}); }), kTooFewLambdas);
    EXPECT_EQ(refusal([&] { (void)view.sampleAt(Floats{0, 500}); }), kBadFirstLambda);
    EXPECT_EQ(refusal([&] { (void)view.sampleAt(Floats{500, 500}); }), kBadOrder);
  }
  EXPECT_EQ(empty.sampleAt(Floats{400, 500, 600}), (Floats{0, 0}));
}

TEST(SampleUniform, GivesBandsOfOneWidth) {
  const Spectrum spectrum = twoSteps();
  EXPECT_EQ(spectrum.view().sampleUniform(350, 100, 4), (Floats{0.5F, 1.5F, 1.0F, 0.0F}));
  EXPECT_EQ(spectrum.view().sampleUniform(0, 0, 0), Floats{});
  EXPECT_EQ(refusal([&] { (void)spectrum.view().sampleUniform(0, 100, 1); }), kBadLambda);
  EXPECT_EQ(refusal([&] { (void)spectrum.view().sampleUniform(400, 0, 1); }), kBadStep);
  EXPECT_EQ(SpectrumView(SpectrumEncoding::Rgb, {}).sampleUniform(0, 0, 2), (Floats{0, 0}));
}

TEST(SampleCompact, CoversTheRangeFrom400To720) {
  const Spectrum step = Spectrum::fromSamples(Floats{400, 560, 720}, Floats{1, 3});
  const auto eight = step.view().sampleCompact<8>();
  const auto sixteen = step.view().sampleCompact<16>();
  const auto thirtyTwo = step.view().sampleCompact<32>();
  for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(eight[i], i < 4 ? 1.0F : 3.0F);
  for (std::size_t i = 0; i < 16; ++i) EXPECT_EQ(sixteen[i], i < 8 ? 1.0F : 3.0F);
  for (std::size_t i = 0; i < 32; ++i) EXPECT_EQ(thirtyTwo[i], i < 16 ? 1.0F : 3.0F);
}

// A walk over many bands takes each pair up once; band by band from the start must agree with it.
TEST(SampleAt, AgreesWithSingleAverages) {
  Floats lambdas;
  Floats amplitudes;
  for (int i = 0; i < 200; ++i) {
    lambdas.push_back(380.0F + 1.7F * static_cast<float>(i) + (i % 3 == 0 ? 0.6F : 0.0F));
    amplitudes.push_back(static_cast<float>((i * 37) % 11));
  }
  lambdas.push_back(730.0F);
  const Spectrum spectrum = Spectrum::fromSamples(lambdas, amplitudes);
  Floats edges;
  for (int i = 0; i < 90; ++i) edges.push_back(350.0F + 4.3F * static_cast<float>(i));
  const Floats bands = spectrum.view().sampleAt(edges);
  ASSERT_EQ(bands.size(), edges.size() - 1);
  for (std::size_t i = 0; i < bands.size(); ++i) {
    EXPECT_EQ(bands[i],
              spectrum.view().bandAverage(edges[i], edges[i + 1] - edges[i], Illuminant::E));
  }
}

// Nobody promises the order of an array that a host wrote: reading stays within it.
TEST(BandAverage, ReadsOnlyWithinAnArrayThatBreaksTheRules) {
  const Floats broken[]{{500, 1},           {500, 1, 400, 2}, {600, 2, 500, 1, 400, 3},
                        {kNan, 1, kNan, 2}, {0, 0, 400},      {1}};
  for (const Floats& floats : broken) {
    const SpectrumView view(SpectrumEncoding::Spectral, floats);
    for (const float lambda : {1.0F, 450.0F, 550.0F, 1000.0F}) {
      for (const float delta : {1.0F, 100.0F, kInfinity}) {
        EXPECT_NO_THROW(view.bandAverage(lambda, delta, Illuminant::E));
      }
    }
  }
}

TEST(ToLuminance, OfATripleIsTheYRow) {
  const Spectrum red = Spectrum::fromRgb(1, 0, 0);
  const Spectrum green = Spectrum::fromRgb(0, 1, 0);
  const Spectrum blue = Spectrum::fromRgb(0, 0, 1);
  for (const Illuminant illuminant : {Illuminant::E, Illuminant::D65}) {
    EXPECT_EQ(red.view().toLuminance(illuminant), 0.2126729F);
    EXPECT_EQ(green.view().toLuminance(illuminant), 0.7151522F);
    EXPECT_EQ(blue.view().toLuminance(illuminant), 0.072175F);
  }
}

TEST(ToRgb, OfAnEmptySpectrumIsBlack) {
  for (const auto encoding :
       {SpectrumEncoding::Luminance, SpectrumEncoding::Rgb, SpectrumEncoding::Spectral}) {
    const SpectrumView empty(encoding, {});
    const Rgb rgb = empty.toRgb(Illuminant::D65);
    EXPECT_EQ(rgb.r, 0.0F);
    EXPECT_EQ(rgb.g, 0.0F);
    EXPECT_EQ(rgb.b, 0.0F);
    EXPECT_EQ(empty.toLuminance(Illuminant::E), 0.0F);
  }
}

// A reflectance of 1 under D65 has the colour of D65, which is white in RGB. The grid ends at 400
// and 700 nm, so not quite.
TEST(ToRgb, OfAnEvenReflectanceUnderD65IsWhite) {
  Floats amplitudes(61, 1.0F);
  const Spectrum even = Spectrum::fromUniformSamples(400, 5, amplitudes);
  const Rgb rgb = even.view().toRgb(Illuminant::D65);
  EXPECT_NEAR(rgb.r, 1.0F, 0.01F);
  EXPECT_NEAR(rgb.g, 1.0F, 0.01F);
  EXPECT_NEAR(rgb.b, 1.0F, 0.01F);
  EXPECT_NEAR(even.view().toLuminance(Illuminant::E), 1.0F, 1e-5F);
}

TEST(ReadSpectrum, RefusesOtherTypes) {
  const DynamicValue number = DynamicValue::base(Type::TBasetype::Float, 1.0F);
  EXPECT_EQ(refusal([&] { (void)readSpectrum(number.typeOf(), number.data()); }),
            "Incompatible type for accessor -> type float does not match type { encoding; "
            "spectrum; }.");
  EXPECT_EQ(refusal([&] { (void)Spectrum(number); }),
            "Incompatible type for accessor -> type float does not match type { encoding; "
            "spectrum; }.");
}

}  // namespace
}  // namespace qex::vornath
