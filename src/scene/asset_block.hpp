// The blocks of asset bytes that the library allocates itself.
#ifndef VORNATH_SCENE_ASSET_BLOCK_HPP
#define VORNATH_SCENE_ASSET_BLOCK_HPP

#include <cstddef>

#include "vornath_data/asset_handle.hpp"

namespace vrnt::data {

/// Allocates a block of `size` bytes, uninitialised, behind its five fields.
/// Errors: throws std::bad_alloc.
AssetHandle allocateAsset(std::size_t size);

/// Makes the handle, which is not null, the only owner of its bytes, by a copy if they are shared.
/// Result: the bytes, for writing.
/// Errors: throws std::bad_alloc, with nothing changed.
void* makeUnique(AssetHandle& handle);

}  // namespace vrnt::data

#endif
