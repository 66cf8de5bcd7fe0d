#include "colour/material_parameter_types.hpp"
#include "colour/sampler_types.hpp"
#include "colour/texture_types.hpp"
#include "colour/wrap_mode.hpp"
#include "types/type_handle.hpp"
#include "vornath_data/parameters.h"

using qex::vornath::allocateType;
using qex::vornath::typeOf;

vrntType_t* vrntTypeWrapmode(void) { return allocateType(qex::vornath::wrapModeType()); }

vrntType_t* vrntTypeTexture(void) { return allocateType(qex::vornath::textureReferenceType()); }

vrntType_t* vrntTypeUVTransformation(void) {
  return allocateType(qex::vornath::uvTransformationType());
}

vrntType_t* vrntTypeMaterialParam(uint32_t number) {
  if (number >= qex::vornath::kMaterialParameterCount) return nullptr;
  return allocateType(qex::vornath::materialParameterType(number));
}

int32_t vrntTypeMaterialParamType(const vrntType_t* type) {
  return qex::vornath::materialParameterCode(typeOf(type));
}

vrntType_t* vrntTypeSampler(uint32_t number) {
  if (number >= qex::vornath::kSamplerCount) return nullptr;
  return allocateType(qex::vornath::samplerType(number));
}

int32_t vrntTypeSamplerType(const vrntType_t* type) {
  return qex::vornath::samplerCode(typeOf(type));
}
