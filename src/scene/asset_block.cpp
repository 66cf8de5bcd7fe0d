#include "scene/asset_block.hpp"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "platform/huge_pages.hpp"

namespace vrnt::data {

namespace {

constexpr std::size_t kLargeBlock = 2 * vrnt::detail::kHugePage;

void* allocateBytes(std::size_t size) {
#if defined(__unix__) || defined(__APPLE__)
  if (size >= kLargeBlock) {
    void* bytes = nullptr;
    // The block's release function is `free`, which frees this memory as it frees that of malloc.
    if (posix_memalign(&bytes, vrnt::detail::kHugePage, size) != 0) return nullptr;
    vrnt::detail::useHugePages(bytes, size);
    return bytes;
  }
#endif
  return std::malloc(size);
}

}  // namespace

AssetHandle allocateAsset(std::size_t size) {
  if (size > std::numeric_limits<std::size_t>::max() - sizeof(AssetStorage)) throw std::bad_alloc();
  void* place = allocateBytes(sizeof(AssetStorage) + size);
  if (!place) throw std::bad_alloc();
  auto* storage = new (place) AssetStorage;
  storage->size = size;
  storage->references = 1;
  storage->external = 0;
  storage->data = storage + 1;
  storage->release = std::free;
  return AssetHandle::adopt(storage);
}

void* makeUnique(AssetHandle& handle) {
  AssetStorage& shared = *handle.get();
  if (__atomic_load_n(&shared.references, __ATOMIC_ACQUIRE) == 1) return shared.data;
  AssetHandle own = allocateAsset(shared.size);
  if (shared.size) std::memcpy(own.get()->data, shared.data, shared.size);
  handle = std::move(own);
  return handle.get()->data;
}

}  // namespace vrnt::data
