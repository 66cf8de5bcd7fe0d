#include <cstdint>

#include "colour/black_body.hpp"
#include "colour/light_types.hpp"
#include "colour/spectrum_reading.hpp"
#include "colour/spectrum_record.hpp"
#include "colour/universal_spectrum.hpp"
#include "foundation/boundary.hpp"
#include "types/fixed_struct_types.hpp"
#include "types/type_handle.hpp"
#include "values/block.hpp"
#include "vornath_data/colour.h"

namespace qex::vornath {
namespace {

Illuminant illuminantOf(std::int32_t colourSpace) {
  return colourSpace == VRNT_COLOUR_SPACE_D65 ? Illuminant::D65 : Illuminant::E;
}

SpectrumView spectrumAt(const vrntValue_t* value, const vrntValueView_t* view) {
  return readSpectrum(typeOf(view->type), blockData(value) + view->offset);
}

}  // namespace
}  // namespace qex::vornath

using namespace qex::vornath;  // NOLINT(google-build-using-namespace): the file is its flat face

extern "C" {

vrntType_t* vrntTypeSpectrum(void) { return allocateType(spectrumType()); }

vrntType_t* vrntTypeLightUnit(void) { return allocateType(lightUnitType()); }

vrntType_t* vrntTypeEmission(void) { return allocateType(emissionType()); }

vrntType_t* vrntTypeToUniversalSpectrum(const vrntType_t* type) {
  return typeHandle(*toUniversalSpectrum(typeOf(type)).detach());
}

void vrntBlackbodyToRGB(float* rgb, float temperature) {
  const Rgb colour = blackBodyColour(temperature);
  rgb[0] = colour.r;
  rgb[1] = colour.g;
  rgb[2] = colour.b;
}

float vrntPlancksLaw(float wavelength, float temperature) {
  return spectralRadiance(wavelength, temperature);
}

void vrntSpectrumConvert(const vrntSpectrumRec* in, vrntSpectrumRec* out, int32_t colourSpace) {
  convertRecord(*in, *out, illuminantOf(colourSpace));
}

int32_t vrntValueToRGB(const vrntValue_t* value, const vrntValueView_t* view, int32_t colourSpace,
                       float* rgb) {
  return reportFailureAs(-1, [&] {
    const Rgb colour = spectrumAt(value, view).toRgb(illuminantOf(colourSpace));
    rgb[0] = colour.r;
    rgb[1] = colour.g;
    rgb[2] = colour.b;
    return 0;
  });
}

int32_t vrntValueToSPD(const vrntValue_t* value, const vrntValueView_t* view, int32_t count,
                       float* pairs) {
  return reportFailureAs(-1, [&] {
    fillPairs(spectrumAt(value, view), pairs, count / 2);
    return 0;
  });
}

}  // extern "C"
