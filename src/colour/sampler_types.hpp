/// Types of samplers: a texture, and how it is read outside its bounds. Specialization does not
/// change samplers, so they stay data.
#ifndef VORNATH_COLOUR_SAMPLER_TYPES_HPP
#define VORNATH_COLOUR_SAMPLER_TYPES_HPP

#include <cstdint>

#include "colour/texture_types.hpp"
#include "colour/wrap_mode.hpp"
#include "types/type.hpp"

namespace qex::vornath {

/// The number of samplers with a code in the flat interface, VRNT_SAMPLER_*.
inline constexpr std::uint32_t kSamplerCount = VRNT_SAMPLER_SPECTRUM_SPHERE + 1;

/// Returns the sampler with `code`, which must be below kSamplerCount. The default wrap
/// modes are REPEAT. Borrowed.
const InternedType& samplerType(std::uint32_t code);

/// Returns the code of a sampler, whatever its metadata; -1 for other types.
std::int32_t samplerCode(const InternedType& type);

/// Makes the sampler of a texture with other wrap modes. Each call makes a new type.
TypePtr makeSpectrumSampler(const InternedType& wrapMode);
TypePtr makeFloatSampler(const InternedType& wrapMode);

/// Makes the sampler of a sphere texture, which has no wrap modes.
TypePtr makeSphereSampler(TextureKind kind, const char* label);

}  // namespace qex::vornath

#endif
