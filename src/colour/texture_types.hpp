/// How values name a texture and place it: references of each kind, and the map of coordinates.
#ifndef VORNATH_COLOUR_TEXTURE_TYPES_HPP
#define VORNATH_COLOUR_TEXTURE_TYPES_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// What is read from a texture.
enum class TextureKind { Spectrum, SpectrumSphere, Normal, Float, FloatSphere };

/// A struct of one int, the index of a texture of the scene; -1, its default, is no texture. A
/// schema's own reference, with a field `index`, is another type. Borrowed.
const InternedType& textureReferenceType();

/// The same for one kind of texture: the field is named after the kind, and specialization leaves
/// the struct alone. Borrowed.
const InternedType& textureReferenceType(TextureKind kind);

/// An affine map of texture coordinates, a 2x3 matrix in three columns `x`, `y` and `z`. Borrowed.
const InternedType& uvTransformationType();

}  // namespace qex::vornath

#endif
