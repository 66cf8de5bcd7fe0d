// References to storage blocks as functions of the library.
#include "vornath_toolkit/vrtk_storage.h"

AssetStorage* vrtkStorageRetain(AssetStorage* storage) { return vrdmAssetStorageRetain(storage); }

void vrtkStorageRelease(AssetStorage* storage) { vrdmAssetStorageRelease(storage); }
