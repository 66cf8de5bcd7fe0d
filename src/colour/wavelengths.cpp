#include "colour/wavelengths.hpp"

#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

[[noreturn]] void refuse(const char* message) {
  throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, message);
}

}  // namespace

void requireWavelengths(std::span<const float> lambdas) {
  if (lambdas.size() < 2) refuse("Wavelength lambda array must contain at least 2 elements.");
  if (lambdas[0] <= 0.0F) refuse("Wavelength lambda[0] must be greater than 0.");
  for (std::size_t i = 1; i < lambdas.size(); ++i) {
    if (!(lambdas[i] > lambdas[i - 1])) {
      refuse("Wavelength lambdas must increase strictly monotonic.");
    }
  }
}

}  // namespace qex::vornath
