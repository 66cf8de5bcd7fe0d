/// Wrap modes, which say how a texture is read outside its bounds: codes, names and types.
#ifndef VORNATH_COLOUR_WRAP_MODE_HPP
#define VORNATH_COLOUR_WRAP_MODE_HPP

#include <cstdint>

#include "types/type.hpp"
#include "vornath_data/parameters.h"

namespace qex::vornath {

/// The codes are those of the enum type and of the flat interface.
enum class WrapMode : std::int32_t {
  Clamp = VRNT_WRAP_MODE_CLAMP,
  Border = VRNT_WRAP_MODE_BORDER,
  Repeat = VRNT_WRAP_MODE_REPEAT,
  Mirror = VRNT_WRAP_MODE_MIRROR
};

/// Returns "CLAMP", "BORDER", "REPEAT" or "MIRROR"; "INVALID_WRAPMODE" for any other code.
const char* toString(WrapMode mode);

/// Returns the wrap mode enum whose default is REPEAT. Borrowed.
const InternedType& wrapModeType();

/// Makes the wrap mode enum with another default. Each call makes a new type.
/// Errors: throws the exception of the parse for an invalid mode.
TypePtr makeWrapModeType(WrapMode defaultMode);

/// Returns the type of the modes of both directions: a struct with the fields `u` and `v`, each
/// with the default REPEAT. Borrowed.
const InternedType& wrapMode2Type();

/// Makes the type of the modes of both directions with other defaults, as makeWrapModeType() does.
TypePtr makeWrapMode2Type(WrapMode defaultU, WrapMode defaultV);

}  // namespace qex::vornath

#endif
