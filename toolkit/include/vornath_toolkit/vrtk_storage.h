/*
 * References to storage blocks for hosts that cannot call the inline functions of
 * vornath_data/asset_storage.h, such as those in other languages. vrtk.h has the rules for all
 * functions.
 *
 * Threads: the reference count is changed atomically. Any thread may call these functions.
 */
#ifndef VORNATH_TOOLKIT_STORAGE_H
#define VORNATH_TOOLKIT_STORAGE_H

#include "vornath_data/asset_storage.h"
#include "vornath_toolkit/vrtk_api.h"

VRNT_BEGIN_DECLS

/** Calls vrdmAssetStorageRetain(): adds a reference and returns the same block. Errors: none. */
VRTK_API AssetStorage* vrtkStorageRetain(AssetStorage* storage);

/**
 * Calls vrdmAssetStorageRelease(): releases a reference, and with the last one the bytes. Does
 * nothing for null.
 * Errors: none.
 */
VRTK_API void vrtkStorageRelease(AssetStorage* storage);

VRNT_END_DECLS

#endif
