/// Sampler types that no flat function offers.
#ifndef VORNATH_EMBED_SAMPLER_MAKERS_HPP
#define VORNATH_EMBED_SAMPLER_MAKERS_HPP

#include "colour/wrap_mode.hpp"
#include "types/type.hpp"

namespace qex::vornath {

/// Returns the sampler of float sphere textures, the only one without a VRNT_SAMPLER_* code.
/// Borrowed.
const InternedType& floatSphereSamplerType();

/// Returns the spectrum sampler with other default wrap modes. Each call makes a new type.
/// Errors: throws the exception of the parse for an invalid mode.
TypePtr makeSpectrumSamplerType(WrapMode defaultU, WrapMode defaultV);

/// Does the same as makeSpectrumSamplerType() for the float sampler.
TypePtr makeFloatSamplerType(WrapMode defaultU, WrapMode defaultV);

}  // namespace qex::vornath

#endif
