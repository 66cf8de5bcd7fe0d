/// The types of the parameters of material and light programs. Each holds a fixed value or refers
/// to a texture. The types have no metadata.
#ifndef VORNATH_COLOUR_MATERIAL_PARAMETER_TYPES_HPP
#define VORNATH_COLOUR_MATERIAL_PARAMETER_TYPES_HPP

#include <cstdint>

#include "types/type.hpp"
#include "vornath_data/parameters.h"

namespace qex::vornath {

/// The number of parameter types. Their codes are VRNT_MATERIAL_PARAM_* of the flat interface.
inline constexpr std::uint32_t kMaterialParameterCount = VRNT_MATERIAL_PARAM_SIMPLE_NORMAL + 1;

/// Returns the type with `code`, which must be below kMaterialParameterCount. Borrowed.
const InternedType& materialParameterType(std::uint32_t code);

/// Returns the code of a parameter type, whatever its metadata; -1 for other types.
std::int32_t materialParameterCode(const InternedType& type);

}  // namespace qex::vornath

#endif
