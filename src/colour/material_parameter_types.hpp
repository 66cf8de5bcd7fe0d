/// The shapes that a parameter of a material or light program has: a fixed value, or a texture that
/// is looked up. They carry no metadata.
#ifndef VORNATH_COLOUR_MATERIAL_PARAMETER_TYPES_HPP
#define VORNATH_COLOUR_MATERIAL_PARAMETER_TYPES_HPP

#include <cstdint>

#include "types/type.hpp"
#include "vornath_data/parameters.h"

namespace qex::vornath {

/// The numbers are those of the flat interface, VRNT_MATERIAL_PARAM_*.
inline constexpr std::uint32_t kMaterialParameterCount = VRNT_MATERIAL_PARAM_SIMPLE_NORMAL + 1;

/// The type of a number below kMaterialParameterCount. Borrowed.
const InternedType& materialParameterType(std::uint32_t code);

/// The number of a parameter type, whatever its metadata; -1 if the type is none of them.
std::int32_t materialParameterCode(const InternedType& type);

}  // namespace qex::vornath

#endif
