// Allocation of asset bytes by the library itself.
#ifndef VORNATH_SCENE_ASSET_BLOCK_HPP
#define VORNATH_SCENE_ASSET_BLOCK_HPP

#include <cstddef>

#include "vornath_data/asset_handle.hpp"

namespace vrnt::data {

/// Allocates an asset block: its five fields, followed by `size` uninitialised bytes.
/// Errors: throws std::bad_alloc.
AssetHandle allocateAsset(std::size_t size);

/// Makes the handle the only owner of its bytes, and copies them if they are shared. The handle
/// must not be null.
/// Result: the bytes, for writing.
/// Errors: throws std::bad_alloc, with nothing changed.
void* makeUnique(AssetHandle& handle);

}  // namespace vrnt::data

#endif
