/// A counted handle on the bytes of an asset.
#ifndef VORNATH_DATA_ASSET_HANDLE_HPP
#define VORNATH_DATA_ASSET_HANDLE_HPP

#include <type_traits>
#include <utility>

#include "vornath_data/asset_storage.h"

namespace vrnt::data {

/// Owns one reference on an AssetStorage block, or is empty. A copy shares the block.
/// Threads: use one handle on one thread at a time. Handles on the same block may be used on
/// different threads.
class AssetHandle {
 public:
  AssetHandle() noexcept = default;

  /// Takes over the caller's reference on `storage`, which may be null.
  static AssetHandle adopt(AssetStorage* storage) noexcept {
    AssetHandle handle;
    handle.storage_ = storage;
    return handle;
  }

  /// Adds a reference to `storage`, which may be null. The caller keeps its own reference.
  static AssetHandle share(AssetStorage* storage) noexcept {
    return adopt(vrdmAssetStorageRetain(storage));
  }

  AssetHandle(const AssetHandle& other) noexcept
      : storage_(vrdmAssetStorageRetain(other.storage_)) {}
  AssetHandle(AssetHandle&& other) noexcept : storage_(std::exchange(other.storage_, nullptr)) {}
  AssetHandle& operator=(AssetHandle other) noexcept {
    std::swap(storage_, other.storage_);
    return *this;
  }
  ~AssetHandle() { vrdmAssetStorageRelease(storage_); }

  /// Returns the block, or null if the handle is empty. The handle keeps its reference.
  AssetStorage* get() const noexcept { return storage_; }

  /// Returns true if the handle is not empty and the block's data pointer is not null.
  bool hasData() const noexcept { return storage_ && storage_->data; }

  /// Returns the address of the block pointer, for the flat functions, which take no const handles.
  /// A caller that writes to it is responsible for the reference counts.
  AssetStorage** place() const noexcept { return const_cast<AssetStorage**>(&storage_); }

 private:
  AssetStorage* storage_ = nullptr;
};

static_assert(sizeof(AssetHandle) == sizeof(AssetStorage*) &&
                  std::is_standard_layout_v<AssetHandle>,
              "the flat interface hands out a handle as a pointer to a block");

}  // namespace vrnt::data

#endif
