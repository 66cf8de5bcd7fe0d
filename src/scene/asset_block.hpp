// Asset blocks that the library makes itself.
#ifndef VORNATH_SCENE_ASSET_BLOCK_HPP
#define VORNATH_SCENE_ASSET_BLOCK_HPP

#include <cstddef>

#include "vornath_data/asset_handle.hpp"

namespace vrnt::data {

/// A block with room for `size` bytes, which are not initialised, behind its five fields.
/// Errors: throws std::bad_alloc.
AssetHandle allocateAsset(std::size_t size);

/// Makes the handle, which is set, the only owner of its bytes, by a copy if they are shared, and
/// returns them for writing.
/// Errors: throws std::bad_alloc, with nothing changed.
void* makeUnique(AssetHandle& handle);

}  // namespace vrnt::data

#endif
