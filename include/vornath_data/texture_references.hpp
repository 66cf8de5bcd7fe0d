/// Search for the textures that a value refers to.
#ifndef VORNATH_DATA_TEXTURE_REFERENCES_HPP
#define VORNATH_DATA_TEXTURE_REFERENCES_HPP

#include <vector>

#include "vornath_data/api.h"
#include "vornath_data/elements.hpp"
#include "vornath_data/ref.hpp"
#include "vornath_data/value.hpp"

namespace vrnt::data {

/// Returns the textures that a value refers to, in the order of its fields, one entry for each
/// reference. A texture reference is a struct with a single int field named `texture_ref`,
/// `spectrum_texture`, `spectrum_sphere_texture`, `normal_texture`, `float_texture` or
/// `float_sphere_texture`; a negative index refers to nothing and is left out. The value may be
/// such a struct, or a struct that contains one at any depth. The search does not enter arrays and
/// does not follow references. The value must not be empty.
/// Errors: throws std::bad_alloc.
/// Threads: may be called from any thread; reads the value.
VRNT_API std::vector<Ref<Asset<vrnt::detail::TextureDesc>>> extractTextureReferences(
    const Value& value);

}  // namespace vrnt::data

#endif
