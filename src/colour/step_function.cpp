#include "colour/step_function.hpp"

#include "colour/wavelengths.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
PairsBuilder::PairsBuilder(std::size_t samples) {
  pairs_.reserve(2 * samples + 4);
  append(0.0F, 0.0F);
}

void PairsBuilder::append(float wavelength, float amplitude) {
  pairs_.push_back(wavelength);
  pairs_.push_back(amplitude);
}

std::vector<float> PairsBuilder::close(float wavelength) && {
  append(wavelength, 0.0F);
  return std::move(pairs_);
}

std::vector<float> pairsFromSamples(std::span<const float> lambdas,
                                    std::span<const float> amplitudes) {
  requireWavelengths(lambdas);
  if (amplitudes.size() != lambdas.size() - 1) {
    throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments,
                          "amplitudes.size() must be lambdas.size() - 1.");
  }
  PairsBuilder pairs(amplitudes.size());
  for (std::size_t i = 0; i < amplitudes.size(); ++i) pairs.append(lambdas[i], amplitudes[i]);
  return std::move(pairs).close(lambdas.back());
}

float StepFunctionAverager::average(float lambda, float deltaLambda) noexcept {
  const std::size_t size = pairs_.size();
  const float end = lambda + deltaLambda;

  while (first_ < size && !(pairs_.wavelength(first_) >= lambda)) ++first_;
  const std::size_t p = first_;

  // The first pair should be (0, 0), so there is a pair before p. If it is not, there is no
  // interval before p, and if q is 0 as well, none before the end of the band.
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
