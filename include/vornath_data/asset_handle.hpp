/// The counted handle on an asset's bytes.
#ifndef VORNATH_DATA_ASSET_HANDLE_HPP
#define VORNATH_DATA_ASSET_HANDLE_HPP

#include <type_traits>
#include <utility>

#include "vornath_data/asset_storage.h"

namespace vrnt::data {

/// Owns one reference on an AssetStorage, or none. A copy shares the block.
/// Threads: one handle belongs to one thread; handles on one block may live on different threads.
class AssetHandle {
 public:
  AssetHandle() noexcept = default;

  /// Takes over a reference that the caller has on `storage`, which may be null.
  static AssetHandle adopt(AssetStorage* storage) noexcept {
    AssetHandle handle;
    handle.storage_ = storage;
    return handle;
  }

  /// Adds a reference of its own on `storage`, which may be null.
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

  /// The block, which stays this handle's; null if it is empty.
  AssetStorage* get() const noexcept { return storage_; }

  /// Whether there are bytes: the handle is set, and so is the block's data pointer.
  bool hasData() const noexcept { return storage_ && storage_->data; }

  /// The place where the block's address stands, for the flat interface, which has no const
  /// handles. Whoever writes there answers for the references.
  AssetStorage** place() const noexcept { return const_cast<AssetStorage**>(&storage_); }

 private:
  AssetStorage* storage_ = nullptr;
};

static_assert(sizeof(AssetHandle) == sizeof(AssetStorage*) &&
                  std::is_standard_layout_v<AssetHandle>,
              "the flat interface hands out a handle as a pointer to a block");

}  // namespace vrnt::data

#endif
