/// Samplers: a texture with what its reader does outside of its bounds. Specialization leaves every
/// sampler alone, so that it stays data.
#ifndef VORNATH_COLOUR_SAMPLER_TYPES_HPP
#define VORNATH_COLOUR_SAMPLER_TYPES_HPP

#include <cstdint>

#include "vornath_data/type_library.hpp"
#include "wrap_mode.hpp"

namespace qex::vornath {

/// The samplers that have a number in the flat interface, VRNT_SAMPLER_*.
inline constexpr std::uint32_t kSamplerCount = VRNT_SAMPLER_SPECTRUM_SPHERE + 1;

/// The sampler of a number below kSamplerCount, with the defaults REPEAT. Borrowed.
const Type& samplerType(std::uint32_t number);

/// The number of a sampler, whatever its metadata; -1 if the type is none of them.
std::int32_t samplerNumber(const Type& type);

/// The one without a number. Borrowed.
const Type& floatSphereSamplerType();

/// The spectrum sampler with other default wrap modes: a new type for each call. Throws what the
/// parse throws for a number that is no mode.
TypePtr makeSpectrumSamplerType(WrapMode defaultU, WrapMode defaultV);

/// The float sampler, likewise.
TypePtr makeFloatSamplerType(WrapMode defaultU, WrapMode defaultV);

}  // namespace qex::vornath

#endif
