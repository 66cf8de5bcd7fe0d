/// How a texture is read outside of its bounds: the modes, their names and their types.
#ifndef VORNATH_COLOUR_WRAP_MODE_HPP
#define VORNATH_COLOUR_WRAP_MODE_HPP

#include <cstdint>

#include "types/type.hpp"
#include "vornath_data/parameters.h"

namespace qex::vornath {

/// The numbers are the enum's codes, and those of the flat interface.
enum class WrapMode : std::int32_t {
  Clamp = VRNT_WRAP_MODE_CLAMP,
  Border = VRNT_WRAP_MODE_BORDER,
  Repeat = VRNT_WRAP_MODE_REPEAT,
  Mirror = VRNT_WRAP_MODE_MIRROR
};

/// "CLAMP", "BORDER", "REPEAT" or "MIRROR"; "INVALID_WRAPMODE" for any other number.
const char* toString(WrapMode mode);

/// The wrap mode enum whose default is REPEAT. Borrowed.
const InternedType& wrapModeType();

/// The wrap mode enum with another default: a new type for each call. Throws what the parse throws
/// for a number that is no mode.
TypePtr makeWrapModeType(WrapMode defaultMode);

/// The modes of both directions, the fields `u` and `v`, each with the default REPEAT. Borrowed.
const InternedType& wrapMode2Type();

/// The modes of both directions with these defaults; otherwise as makeWrapModeType().
TypePtr makeWrapMode2Type(WrapMode defaultU, WrapMode defaultV);

}  // namespace qex::vornath

#endif
