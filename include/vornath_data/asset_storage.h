/* Storage blocks: the bytes of assets, and functions that create, retain and release them. */
#ifndef VORNATH_DATA_ASSET_STORAGE_H
#define VORNATH_DATA_ASSET_STORAGE_H

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include "vornath_data/api.h"

#ifdef __cplusplus
#define VRNT_INLINE inline
#else
#define VRNT_INLINE static inline
#endif

VRNT_BEGIN_DECLS

/**
 * A storage block: the bytes of an asset. Scenes and hosts share it by reference count; a scene
 * does not copy it. A handle is a pointer to the block and holds one reference. Releasing the last
 * reference calls `release` with the data, if `external` is 1, and then with the block.
 *
 * Threads: the reference count is only changed atomically, so handles to one block may be used on
 * different threads. The other members do not change while there is more than one handle.
 */
typedef struct AssetStorage {
  uint64_t size;          /**< the number of bytes at `data` */
  uint32_t references;    /**< the number of handles to this block */
  uint32_t external;      /**< 1 if `release` is to be called with the data, too; else 0 */
  void* data;             /**< the bytes; null makes the slot of the asset a free slot */
  void (*release)(void*); /**< frees the data (if `external` is 1) and the block */
} AssetStorage;

/** Adds a reference and returns the same block. Null for null. Errors: none. */
VRNT_INLINE AssetStorage* vrdmAssetStorageRetain(AssetStorage* storage) {
  if (storage) __atomic_fetch_add(&storage->references, 1u, __ATOMIC_RELAXED);
  return storage;
}

/**
 * Releases a reference. Releasing the last reference frees the data and the block, as AssetStorage
 * says. Does nothing for null.
 * Errors: none.
 */
VRNT_INLINE void vrdmAssetStorageRelease(AssetStorage* storage) {
  void (*release)(void*);
  if (!storage || __atomic_fetch_sub(&storage->references, 1u, __ATOMIC_ACQ_REL) != 1u) return;
  /* Read before the block is freed. */
  release = storage->release;
  if (storage->external == 1u) release(storage->data);
  release(storage);
}

/**
 * Creates a storage block for `size` bytes that the host already has, without a copy.
 *
 * `release` decides who owns the bytes:
 *
 *  - Not null: the block owns them. When the last reference is released, `release` is called twice:
 *    with the data pointer, then with the block, which this function allocates with malloc(). Pass
 *    `free` for bytes from malloc(). A function of your own must free the bytes when it is called
 *    with the data pointer, and call free() when it is called with any other pointer.
 *  - Null: the block borrows the bytes. They stay the host's and must live until the last reference
 *    is released.
 *
 * Returns a block with one reference, which the caller owns; release it with
 * vrdmAssetStorageRelease(), for example after vrdmAddAsset() has added its own.
 * Errors: null if there is no memory. The bytes are still the host's then.
 */
VRNT_INLINE AssetStorage* vrdmAssetStorageWrap(void* bytes, uint64_t size, void (*release)(void*)) {
  AssetStorage* storage = (AssetStorage*)malloc(sizeof(AssetStorage));
  if (!storage) return storage;
  storage->size = size;
  storage->references = 1u;
  storage->external = release ? 1u : 0u;
  storage->data = bytes;
  storage->release = release ? release : free;
  return storage;
}

/**
 * Creates a storage block with a copy of `size` bytes. `bytes` may be null only if `size` is 0.
 * Returns a block with one reference, which the caller owns; release it with
 * vrdmAssetStorageRelease().
 * Errors: null if there is no memory.
 */
VRNT_INLINE AssetStorage* vrdmAssetStorageCopy(const void* bytes, uint64_t size) {
  AssetStorage* storage;
  if (size > SIZE_MAX - sizeof(AssetStorage)) return (AssetStorage*)0;
  storage = (AssetStorage*)malloc(sizeof(AssetStorage) + (size_t)size);
  if (!storage) return storage;
  storage->size = size;
  storage->references = 1u;
  storage->external = 0u;
  storage->data = storage + 1;
  storage->release = free;
  if (size) memcpy(storage->data, bytes, (size_t)size);
  return storage;
}

VRNT_END_DECLS

#undef VRNT_INLINE

#ifdef __cplusplus
static_assert(sizeof(AssetStorage) == 32, "hosts and library share this layout");

namespace vrnt::data {
using AssetStorage = ::AssetStorage;
}  // namespace vrnt::data
#endif

#endif
