// Every operation against the cases that the independent arithmetic in oracle/ worked out: bit by
// bit, except where the C library's expf takes part.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "case_table.hpp"
#include "colour/black_body.hpp"
#include "colour/reconstruction.hpp"
#include "colour/step_function.hpp"
#include "embed/spectral_pairs.hpp"
#include "embed/spectrum.hpp"
#include "embed/spectrum_value.hpp"
#include "vornath_data/colour.h"

namespace qex::vornath {
namespace {

using vornath_test::Case;
using vornath_test::readCases;
using vornath_test::sameFloat;
using vornath_test::sameFloats;

TEST(Oracle, SpectralToXyzRgbAndLuminance) {
  for (const Case& c : readCases("to_rgb")) {
    SCOPED_TRACE(c.where());
    const std::vector<float> floats = c.list(1);
    ASSERT_EQ(floats.size(), static_cast<std::size_t>(c.integer(0)));
    const SpectrumView spectrum(SpectrumEncoding::Spectral, floats);
    const Illuminant illuminant = c.integer(2) == 1 ? Illuminant::D65 : Illuminant::E;
    const Xyz xyz = spectrum.toXyz(illuminant);
    EXPECT_TRUE(sameFloat(xyz.x, c.real(3)));
    EXPECT_TRUE(sameFloat(xyz.y, c.real(4)));
    EXPECT_TRUE(sameFloat(xyz.z, c.real(5)));
    const Rgb rgb = spectrum.toRgb(illuminant);
    EXPECT_TRUE(sameFloat(rgb.r, c.real(6)));
    EXPECT_TRUE(sameFloat(rgb.g, c.real(7)));
    EXPECT_TRUE(sameFloat(rgb.b, c.real(8)));
    EXPECT_TRUE(sameFloat(spectrum.toLuminance(illuminant), c.real(9)));
  }
}

TEST(Oracle, BandAverageOfAStepFunction) {
  for (const Case& c : readCases("step_average")) {
    SCOPED_TRACE(c.where());
    const std::vector<float> floats = c.list(0);
    const SpectrumView spectrum(SpectrumEncoding::Spectral, floats);
    EXPECT_TRUE(sameFloat(spectrum.bandAverage(c.real(1), c.real(2), Illuminant::E), c.real(3)));
  }
}

TEST(Oracle, BandAverageOfATriple) {
  for (const Case& c : readCases("rgb_average")) {
    SCOPED_TRACE(c.where());
    const float floats[]{c.real(0), c.real(1), c.real(2)};
    const SpectrumView spectrum(SpectrumEncoding::Rgb, floats);
    ASSERT_TRUE(c.integer(3) == 0 || c.integer(3) == 4);
    EXPECT_TRUE(
        sameFloat(spectrum.bandAverage(c.real(4), c.real(5), static_cast<Illuminant>(c.integer(3))),
                  c.real(6)));
  }
}

TEST(Oracle, ReconstructionOnTheGrid) {
  std::vector<float> edges;
  for (int i = 0; i <= 61; ++i) edges.push_back(400.0F + 5.0F * static_cast<float>(i));
  for (const Case& c : readCases("reconstruct")) {
    SCOPED_TRACE(c.where());
    const float floats[]{c.real(0), c.real(1), c.real(2)};
    EXPECT_TRUE(sameFloats(SpectrumView(SpectrumEncoding::Rgb, floats).sampleAt(edges), c.list(3)));
  }
}

TEST(Oracle, TripleToXyzAndLuminance) {
  for (const Case& c : readCases("rgb_xyz")) {
    SCOPED_TRACE(c.where());
    const float floats[]{c.real(0), c.real(1), c.real(2)};
    const SpectrumView spectrum(SpectrumEncoding::Rgb, floats);
    for (const Illuminant illuminant : {Illuminant::E, Illuminant::D65}) {
      const Xyz xyz = spectrum.toXyz(illuminant);
      EXPECT_TRUE(sameFloat(xyz.x, c.real(3)));
      EXPECT_TRUE(sameFloat(xyz.y, c.real(4)));
      EXPECT_TRUE(sameFloat(xyz.z, c.real(5)));
      EXPECT_TRUE(sameFloat(spectrum.toLuminance(illuminant), c.real(6)));
    }
  }
}

TEST(Oracle, PairsFromSamples) {
  for (const Case& c : readCases("samples")) {
    SCOPED_TRACE(c.where());
    EXPECT_TRUE(sameFloats(pairsFromSamples(c.list(0), c.list(1)), c.list(2)));
  }
  for (const Case& c : readCases("uniform")) {
    SCOPED_TRACE(c.where());
    EXPECT_TRUE(sameFloats(pairsFromUniformSamples(c.real(0), c.real(1), c.list(2)), c.list(3)));
  }
}

TEST(Oracle, RecordsFromEncodingToEncoding) {
  for (const Case& c : readCases("convert")) {
    SCOPED_TRACE(c.where());
    std::vector<float> in = c.list(1);
    std::vector<float> out = c.list(3);
    const std::vector<float> inBefore = in;
    const vrntSpectrumRec from{static_cast<std::uint32_t>(c.integer(0)),
                               static_cast<std::int32_t>(in.size()), in.data()};
    vrntSpectrumRec to{static_cast<std::uint32_t>(c.integer(2)),
                       static_cast<std::int32_t>(out.size()), out.data()};
    vrntSpectrumConvert(&from, &to, c.integer(4));
    EXPECT_TRUE(sameFloats(out, c.list(5)));
    EXPECT_TRUE(sameFloats(in, inBefore));
  }
}

TEST(Oracle, ValuesToPairs) {
  for (const Case& c : readCases("spd")) {
    SCOPED_TRACE(c.where());
    const std::vector<float> floats = c.list(1);
    const DynamicValue spectrum =
        makeSpectrumValue(static_cast<SpectrumEncoding>(c.integer(0)), floats);
    std::vector<float> pairs = c.list(3);
    const vrntValueView_t view{vrntValueType(spectrum.block()), 0};
    ASSERT_EQ(vrntValueToSPD(spectrum.block(), &view, c.integer(2), pairs.data()), 0);
    EXPECT_TRUE(sameFloats(pairs, c.list(4)));
  }
}

// expf may be off by one unit in the last place: the cases hold the results for that, too.
TEST(Oracle, PlancksLaw) {
  for (const Case& c : readCases("planck")) {
    SCOPED_TRACE(c.where());
    const float radiance = spectralRadiance(c.real(0), c.real(1));
    EXPECT_TRUE(sameFloat(radiance, c.real(2)) || sameFloat(radiance, c.real(4)) ||
                sameFloat(radiance, c.real(5)))
        << std::hexfloat << radiance << " instead of " << c.real(2);
  }
}

TEST(Oracle, BlackBodyColours) {
  for (const Case& c : readCases("blackbody")) {
    SCOPED_TRACE(c.where());
    const Rgb colour = blackBodyColour(c.real(0));
    const float channels[]{colour.r, colour.g, colour.b};
    for (std::size_t i = 0; i < 3; ++i) {
      const float expected = c.real(1 + i);
      if (std::isnan(expected)) {
        EXPECT_TRUE(std::isnan(channels[i]));
      } else {
        EXPECT_NEAR(channels[i], expected, c.decimal(4));
      }
    }
  }
}

}  // namespace
}  // namespace qex::vornath
