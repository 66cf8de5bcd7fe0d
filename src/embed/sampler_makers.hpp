/// Sampler types that no flat function offers.
#ifndef VORNATH_EMBED_SAMPLER_MAKERS_HPP
#define VORNATH_EMBED_SAMPLER_MAKERS_HPP

#include "colour/wrap_mode.hpp"
#include "types/type.hpp"

namespace qex::vornath {

/// Returns the sampler of float sphere textures, the one without a number. Borrowed.
const InternedType& floatSphereSamplerType();

/// Returns the spectrum sampler with other default wrap modes: a new type for each call. Throws
/// what the parse throws for a number that is no mode.
TypePtr makeSpectrumSamplerType(WrapMode defaultU, WrapMode defaultV);

/// Returns the float sampler with other default wrap modes, as makeSpectrumSamplerType() does.
TypePtr makeFloatSamplerType(WrapMode defaultU, WrapMode defaultV);

}  // namespace qex::vornath

#endif
