/// Samplers: a texture with what its reader does outside of its bounds. Specialization leaves every
/// sampler alone, so that it stays data.
#ifndef VORNATH_COLOUR_SAMPLER_TYPES_HPP
#define VORNATH_COLOUR_SAMPLER_TYPES_HPP

#include <cstdint>

#include "colour/texture_types.hpp"
#include "colour/wrap_mode.hpp"
#include "types/type.hpp"

namespace qex::vornath {

/// The samplers that have a number in the flat interface, VRNT_SAMPLER_*.
inline constexpr std::uint32_t kSamplerCount = VRNT_SAMPLER_SPECTRUM_SPHERE + 1;

/// The sampler of a number below kSamplerCount, with the defaults REPEAT. Borrowed.
const InternedType& samplerType(std::uint32_t code);

/// The number of a sampler, whatever its metadata; -1 if the type is none of them.
std::int32_t samplerCode(const InternedType& type);

/// The sampler of a texture with other wrap modes: a new type for each call.
TypePtr makeSpectrumSampler(const InternedType& wrapMode);
TypePtr makeFloatSampler(const InternedType& wrapMode);

/// The sampler of a sphere texture, which has no wrap modes.
TypePtr makeSphereSampler(TextureKind kind, const char* label);

}  // namespace qex::vornath

#endif
