#include "embed/spectral_pairs.hpp"

#include <utility>

#include "colour/step_function.hpp"
#include "embed/wavelength.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

void require(bool condition, const char* message) {
  if (!condition) throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, message);
}

}  // namespace

std::vector<float> pairsFromUniformSamples(float lambda0, float deltaLambda,
                                           std::span<const float> amplitudes) {
  requireWavelength(lambda0);
  requireWavelengthStep(deltaLambda);
  PairsBuilder pairs(amplitudes.size());
  float lambda = lambda0;
  for (const float amplitude : amplitudes) {
    pairs.append(lambda, amplitude);
    lambda += deltaLambda;
  }
  return std::move(pairs).close(lambda);
}

std::vector<float> pairsFromBand(float lambda, float deltaLambda, float amplitude) {
  return {0.0F, 0.0F, lambda, amplitude, lambda + deltaLambda, 0.0F};
}

void validatePairs(std::span<const float> floats) {
  require(floats.size() >= 7, "At least 7 spectral values must be specified.");
  require(floats.size() % 2 == 0, "Number of spectral values must be even.");
  // A NaN fails each comparison below: it is neither zero nor an increase.
  require(floats[0] == 0.0F && floats[1] == 0.0F,
          "The first wave length and amplitude of the spectral value need to be zero.");
  const SpectralPairs pairs(floats);
  for (std::size_t pair = 1; pair < pairs.size(); ++pair) {
    require(pairs.wavelength(pair) > pairs.wavelength(pair - 1),
            "Lambdas must increase strictly monotonical.");
  }
  require(pairs.amplitude(pairs.size() - 1) == 0.0F,
          "The last amplitude of the spectral value must be zero.");
}

}  // namespace qex::vornath
