#include "step_function.hpp"

#include "vornath_data/result.hpp"
#include "wavelengths.hpp"

namespace qex::vornath {
namespace {

void require(bool condition, const char* message) {
  if (!condition) throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, message);
}

void append(std::vector<float>& pairs, float wavelength, float amplitude) {
  pairs.push_back(wavelength);
  pairs.push_back(amplitude);
}

std::vector<float> openPairs(std::size_t samples) {
  std::vector<float> pairs;
  pairs.reserve(2 * samples + 4);
  append(pairs, 0.0F, 0.0F);
  return pairs;
}

}  // namespace

std::vector<float> pairsFromSamples(std::span<const float> lambdas,
                                    std::span<const float> amplitudes) {
  requireWavelengths(lambdas);
  require(amplitudes.size() == lambdas.size() - 1, "amplitudes.size() must be lambdas.size() - 1.");
  std::vector<float> pairs = openPairs(amplitudes.size());
  for (std::size_t i = 0; i < amplitudes.size(); ++i) append(pairs, lambdas[i], amplitudes[i]);
  append(pairs, lambdas.back(), 0.0F);
  return pairs;
}

std::vector<float> pairsFromUniformSamples(float lambda0, float deltaLambda,
                                           std::span<const float> amplitudes) {
  requireWavelength(lambda0);
  requireWavelengthStep(deltaLambda);
  std::vector<float> pairs = openPairs(amplitudes.size());
  float lambda = lambda0;
  for (const float amplitude : amplitudes) {
    append(pairs, lambda, amplitude);
    lambda += deltaLambda;
  }
  append(pairs, lambda, 0.0F);
  return pairs;
}

std::vector<float> pairsFromBand(float lambda, float deltaLambda, float amplitude) {
  return {0.0F, 0.0F, lambda, amplitude, lambda + deltaLambda, 0.0F};
}

void validatePairs(std::span<const float> floats) {
  require(floats.size() >= 7, "At least 7 spectral values must be specified.");
  require(floats.size() % 2 == 0, "Number of spectral values must be even.");
  // A NaN is neither zero nor an increase.
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

float StepFunctionAverager::average(float lambda, float deltaLambda) noexcept {
  const std::size_t size = pairs_.size();
  const float end = lambda + deltaLambda;

  while (first_ < size && !(pairs_.wavelength(first_) >= lambda)) ++first_;
  const std::size_t p = first_;

  // The first pair is (0, 0), so that there is one before p. Pairs that begin later by mistake have
  // no interval before p, and none before the band's end either if q is 0 as well.
  float sum = 0.0F;
  std::size_t k = p == 0 ? 0 : p - 1;
  std::size_t q = p;
  while (q < size && !(pairs_.wavelength(q) >= end)) ++q;
  for (; k < q && k + 1 < size; ++k) {
    sum += pairs_.amplitude(k) * (pairs_.wavelength(k + 1) - pairs_.wavelength(k));
  }
  if (p != 0) sum -= pairs_.amplitude(p - 1) * (lambda - pairs_.wavelength(p - 1));
  if (q != size && q != 0) sum -= pairs_.amplitude(q - 1) * (pairs_.wavelength(q) - end);
  return sum / deltaLambda;
}

}  // namespace qex::vornath
