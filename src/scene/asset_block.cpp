#include "asset_block.hpp"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace vrnt::data {

namespace {

#if defined(__linux__)
// A fresh block of this size or more is worth asking for huge pages: its first write then faults
// once for 2 MiB instead of once for 4 KiB.
constexpr std::size_t kHugePage = std::size_t{2} << 20;
constexpr std::size_t kLargeBlock = 2 * kHugePage;

void* allocateBytes(std::size_t size) {
  if (size < kLargeBlock) return std::malloc(size);
  void* bytes = nullptr;
  // Like memory from malloc, this is given back by `free`, as the block's release promises.
  if (posix_memalign(&bytes, kHugePage, size) != 0) return nullptr;
  // Only advice: without huge pages the block is as good, so the answer doesn't matter.
  (void)madvise(bytes, size / kHugePage * kHugePage, MADV_HUGEPAGE);
  return bytes;
}
#else
void* allocateBytes(std::size_t size) { return std::malloc(size); }
#endif

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
