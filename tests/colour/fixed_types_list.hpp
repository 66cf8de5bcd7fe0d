// Every fixed type of colour and material parameters, by the flat function that hands it out.
#ifndef VORNATH_TESTS_COLOUR_FIXED_TYPES_LIST_HPP
#define VORNATH_TESTS_COLOUR_FIXED_TYPES_LIST_HPP

#include <cstdint>

#include "vornath_data/vrnt.h"

namespace vornath_test {

struct FixedType {
  const char* name;
  vrntType_t* (*get)();
};

inline constexpr FixedType kFixedTypes[] = {
    {"spectrum", vrntTypeSpectrum},
    {"light unit", vrntTypeLightUnit},
    {"emission", vrntTypeEmission},
    {"texture", vrntTypeTexture},
    {"UV transformation", vrntTypeUVTransformation},
    {"wrap mode", vrntTypeWrapmode},
    {"material parameter 0", [] { return vrntTypeMaterialParam(0); }},
    {"material parameter 1", [] { return vrntTypeMaterialParam(1); }},
    {"material parameter 2", [] { return vrntTypeMaterialParam(2); }},
    {"material parameter 3", [] { return vrntTypeMaterialParam(3); }},
    {"material parameter 4", [] { return vrntTypeMaterialParam(4); }},
    {"material parameter 5", [] { return vrntTypeMaterialParam(5); }},
    {"sampler 0", [] { return vrntTypeSampler(0); }},
    {"sampler 1", [] { return vrntTypeSampler(1); }},
    {"sampler 2", [] { return vrntTypeSampler(2); }},
    {"sampler 3", [] { return vrntTypeSampler(3); }},
};

}  // namespace vornath_test

#endif
