/// The types with which values refer to textures and place them.
#ifndef VORNATH_COLOUR_TEXTURE_TYPES_HPP
#define VORNATH_COLOUR_TEXTURE_TYPES_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// What a reader gets from a texture.
enum class TextureKind { Spectrum, SpectrumSphere, Normal, Float, FloatSphere };

/// Returns the type of a texture reference: a struct with one int, the index of a texture of the
/// scene; the default -1 means no texture. Borrowed. The references in the schemas of the
/// catalogue, with a field `index`, have another type.
const InternedType& textureReferenceType();

/// Returns the type of a reference to one kind of texture. The field is named after the kind, and
/// specialization does not change the struct. Borrowed.
const InternedType& textureReferenceType(TextureKind kind);

/// Returns the type of an affine map of texture coordinates: a 2x3 matrix with the three columns
/// `x`, `y` and `z`. Borrowed.
const InternedType& uvTransformationType();

}  // namespace qex::vornath

#endif
