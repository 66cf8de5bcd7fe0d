/* The block that holds an asset's bytes, and what a host needs to make one of its own. */
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
 * The bytes of an asset, shared by count between scenes and hosts and never copied by a scene. A
 * handle is a pointer to such a block and holds one reference. The handle that takes the count from
 * 1 to 0 calls `release` on the data if `external` is 1, and then calls `release` on the block.
 *
 * Threads: the count is changed atomically only, so that handles on one block may live on different
 * threads; the other fields are constant while there is more than one handle.
 */
typedef struct AssetStorage {
  uint64_t size;       /**< bytes at `data` */
  uint32_t references; /**< handles on this block */
  uint32_t external;   /**< 1: data lies outside the block and is released apart; 0: it doesn't */
  void* data;          /**< the bytes; null makes the asset's slot a free one */
  void (*release)(void*); /**< gives back the data (if external) and the block */
} AssetStorage;

/**
 * Adds a reference and returns the block that it was given. Null is allowed and gives null.
 * Errors: none.
 */
VRNT_INLINE AssetStorage* vrdmAssetStorageRetain(AssetStorage* storage) {
  if (storage) __atomic_fetch_add(&storage->references, 1u, __ATOMIC_RELAXED);
  return storage;
}

/**
 * Drops a reference; the last one gives the block back. Null is allowed.
 * Errors: none.
 */
VRNT_INLINE void vrdmAssetStorageRelease(AssetStorage* storage) {
  void (*release)(void*);
  if (!storage || __atomic_fetch_sub(&storage->references, 1u, __ATOMIC_ACQ_REL) != 1u) return;
  /* The block holds the pointer, and the block goes last. */
  release = storage->release;
  if (storage->external == 1u) release(storage->data);
  release(storage);
}

/**
 * Makes a block around `size` bytes that the host already has, without copying them.
 * With a `release` the bytes go over to the block: the last handle calls `release` on the bytes and
 * then on the block itself, which this function takes from malloc. `free` does for bytes from
 * malloc; a function of the host's own must end the bytes when it is given the bytes, and `free`
 * what it is given otherwise. A null `release` borrows the bytes: they stay the host's and must
 * outlive every handle.
 * Result: a block with one reference, the caller's, ended with vrdmAssetStorageRelease() once a
 * scene has taken its own; null if there is no memory, and the bytes are then still the host's.
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
 * Makes a block with a copy of `size` bytes. `bytes` may be null only if `size` is 0.
 * Result: as vrdmAssetStorageWrap(); null if there is no memory.
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
