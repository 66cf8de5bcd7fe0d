/// The twenty scalars and short vectors: their spellings, sizes, families and lanes.
#ifndef VORNATH_TYPES_BASE_TYPES_HPP
#define VORNATH_TYPES_BASE_TYPES_HPP

#include <array>
#include <cstdint>

#include "types/type.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {

/// The codes are those of the flat interface.
enum class BaseFamily : std::uint32_t {
  Char = VRNT_BASETYPE_CHAR,
  Half = VRNT_BASETYPE_HALF,
  Bool = VRNT_BASETYPE_BOOL,
  Int = VRNT_BASETYPE_INT,
  Float = VRNT_BASETYPE_FLOAT
};

struct BaseTypeInfo {
  const char* spelling;
  BaseFamily family;
  std::uint32_t lanes;
  std::uint64_t size;      ///< bytes; the alignment is the same. Three lanes take the room of four
  std::uint64_t laneSize;  ///< bytes
};

/// Indexed by TBasetype.
inline constexpr std::array<BaseTypeInfo, 20> kBaseTypes{{
    {"bool", BaseFamily::Bool, 1, 4, 4},     {"bool2", BaseFamily::Bool, 2, 8, 4},
    {"bool3", BaseFamily::Bool, 3, 16, 4},   {"bool4", BaseFamily::Bool, 4, 16, 4},
    {"int", BaseFamily::Int, 1, 4, 4},       {"int2", BaseFamily::Int, 2, 8, 4},
    {"int3", BaseFamily::Int, 3, 16, 4},     {"int4", BaseFamily::Int, 4, 16, 4},
    {"float", BaseFamily::Float, 1, 4, 4},   {"float2", BaseFamily::Float, 2, 8, 4},
    {"float3", BaseFamily::Float, 3, 16, 4}, {"float4", BaseFamily::Float, 4, 16, 4},
    {"char", BaseFamily::Char, 1, 1, 1},     {"char2", BaseFamily::Char, 2, 2, 1},
    {"char3", BaseFamily::Char, 3, 4, 1},    {"char4", BaseFamily::Char, 4, 4, 1},
    {"half", BaseFamily::Half, 1, 2, 2},     {"half2", BaseFamily::Half, 2, 4, 2},
    {"half3", BaseFamily::Half, 3, 8, 2},    {"half4", BaseFamily::Half, 4, 8, 2},
}};

/// Throws vrnt::Exception "Illegal base type." for a code outside the enumeration.
inline const BaseTypeInfo& baseTypeInfo(Type::TBasetype base) {
  const auto code = static_cast<std::uint32_t>(base);
  if (code >= kBaseTypes.size()) {
    throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, "Illegal base type.");
  }
  return kBaseTypes[code];
}

}  // namespace qex::vornath

#endif
