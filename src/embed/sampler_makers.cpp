#include "embed/sampler_makers.hpp"

#include "colour/sampler_types.hpp"
#include "colour/type_construction.hpp"

namespace qex::vornath {

const InternedType& floatSphereSamplerType() {
  static const InternedType& type =
      permanentType(makeSphereSampler(TextureKind::FloatSphere, "float_sphere_texture"));
  return type;
}

TypePtr makeSpectrumSamplerType(WrapMode defaultU, WrapMode defaultV) {
  return makeSpectrumSampler(*makeWrapMode2Type(defaultU, defaultV));
}

TypePtr makeFloatSamplerType(WrapMode defaultU, WrapMode defaultV) {
  return makeFloatSampler(*makeWrapMode2Type(defaultU, defaultV));
}

}  // namespace qex::vornath
