#include "fixed_struct_types.hpp"
#include "light_types.hpp"
#include "type_handle.hpp"
#include "universal_spectrum.hpp"
#include "vornath_data/colour.h"

using qex::vornath::allocateType;
using qex::vornath::typeHandle;
using qex::vornath::typeOf;

vrntType_t* vrntTypeSpectrum(void) { return allocateType(qex::vornath::spectrumType()); }

vrntType_t* vrntTypeLightUnit(void) { return allocateType(qex::vornath::lightUnitType()); }

vrntType_t* vrntTypeEmission(void) { return allocateType(qex::vornath::emissionType()); }

vrntType_t* vrntTypeToUniversalSpectrum(const vrntType_t* type) {
  return typeHandle(*qex::vornath::toUniversalSpectrum(typeOf(type)).detach());
}
