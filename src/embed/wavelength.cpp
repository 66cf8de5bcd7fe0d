#include "embed/wavelength.hpp"

#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

[[noreturn]] void refuse(const char* message) {
  throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, message);
}

}  // namespace

void requireWavelength(float lambda) {
  if (lambda <= 0.0F) refuse("Wavelength lambda must be greater than 0.");
}

void requireWavelengthStep(float deltaLambda) {
  // Hosts compare this message: it has no full stop.
  if (deltaLambda <= 0.0F) refuse("Wavelength delta lambda must be greater than 0");
}

}  // namespace qex::vornath
