#include "scene/asset_block.hpp"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace vrnt::data {

namespace {

// Large blocks are aligned to huge pages, so that a system that uses huge pages by itself can back
// them with whole pages. The library does not request huge pages: if memory is fragmented, the
// system would compact it first, which was measured to cost several times the read that fills the
// block.
constexpr std::size_t kHugePage = std::size_t{2} << 20;
constexpr std::size_t kLargeBlock = 2 * kHugePage;

void* allocateBytes(std::size_t size) {
#if defined(__unix__) || defined(__APPLE__)
  if (size >= kLargeBlock) {
    void* bytes = nullptr;
    // The block's release function is `free`, which frees this memory as it frees that of malloc.
    return posix_memalign(&bytes, kHugePage, size) == 0 ? bytes : nullptr;
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
