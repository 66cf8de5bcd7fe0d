/// The textures that a value names.
#ifndef VORNATH_DATA_TEXTURE_REFERENCES_HPP
#define VORNATH_DATA_TEXTURE_REFERENCES_HPP

#include <vector>

#include "vornath_data/api.h"
#include "vornath_data/elements.hpp"
#include "vornath_data/ref.hpp"
#include "vornath_data/value.hpp"

namespace vrnt::data {

/// The textures that a value names, in the order of its fields, each as often as it is named. They
/// are named by structs of one int field, which is called `texture_ref`, `spectrum_texture`,
/// `spectrum_sphere_texture`, `normal_texture`, `float_texture` or `float_sphere_texture`; a
/// negative number names none. The value may be such a struct itself, or a struct that has one at
/// any depth. Arrays aren't looked into, nor is what references lead to.
/// Argument: not empty.
/// Errors: std::bad_alloc. Threads: may be called from any thread; reads the value.
VRNT_API std::vector<Ref<Asset<vrnt::detail::TextureDesc>>> extractTextureReferences(
    const Value& value);

}  // namespace vrnt::data

#endif
