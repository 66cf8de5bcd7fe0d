// Prints the bits that the colour arithmetic answers for many inputs: two builds of it must print
// the same. It takes the arithmetic's sources, not the library.
#include <bit>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "colour/black_body.hpp"
#include "colour/spectrum_view.hpp"
#include "colour/step_function.hpp"
#include "embed/spectral_pairs.hpp"

namespace {

using namespace qex::vornath;  // NOLINT(google-build-using-namespace): a program of its own

// A generator whose numbers are the same everywhere.
class Random {
 public:
  float between(float low, float high) {
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return low + (high - low) * (static_cast<float>(state_ >> 40) / 16777216.0F);
  }

 private:
  std::uint64_t state_ = 2026;
};

// A NaN's sign and payload are not part of a result.
void print(float value) {
  std::printf("%08x\n", value == value ? std::bit_cast<std::uint32_t>(value) : 0x7FC00000U);
}

void print(const Rgb& colour) {
  print(colour.r);
  print(colour.g);
  print(colour.b);
}

void printReadings(const SpectrumView& spectrum, Random& random) {
  for (const Illuminant illuminant : {Illuminant::E, Illuminant::D65}) {
    print(spectrum.toRgb(illuminant));
    print(spectrum.toLuminance(illuminant));
    const float lambda = random.between(300.0F, 800.0F);
    print(spectrum.bandAverage(lambda, random.between(0.1F, 200.0F), illuminant));
  }
  for (const float band : spectrum.sampleUniform(random.between(350.0F, 450.0F), 7.3F, 40)) {
    print(band);
  }
}

}  // namespace

int main() {
  Random random;
  for (int round = 0; round < 200; ++round) {
    std::vector<float> lambdas{random.between(1.0F, 500.0F)};
    std::vector<float> amplitudes;
    for (int i = 0; i < round; ++i) {
      lambdas.push_back(lambdas.back() + random.between(0.5F, 9.0F));
      amplitudes.push_back(random.between(0.0F, 2.0F));
    }
    if (round > 0) {
      const auto pairs = pairsFromSamples(lambdas, amplitudes);
      printReadings({SpectrumEncoding::Spectral, pairs}, random);
      for (const float value : pairsFromUniformSamples(lambdas[0], 0.7F, amplitudes)) print(value);
    }
    const std::vector<float> triple{random.between(-0.2F, 1.2F), random.between(-0.2F, 1.2F),
                                    random.between(-0.2F, 1.2F)};
    printReadings({SpectrumEncoding::Rgb, triple}, random);
    const float kelvin = random.between(100.0F, 30000.0F);
    print(blackBodyColour(kelvin));
    print(spectralRadiance(random.between(1.0F, 10000.0F), kelvin));
  }
  return 0;
}
