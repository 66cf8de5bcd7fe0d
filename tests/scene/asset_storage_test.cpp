// The block that holds an asset's bytes, as hosts make it and as the library does.
#include "vornath_data/asset_storage.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "scene/asset_block.hpp"
#include "vornath_data/asset_handle.hpp"

namespace {

using vrnt::data::AssetHandle;

// What a host's release function was called on, in order.
std::vector<void*> released;

void noteAndFree(void* place) {
  released.push_back(place);
  std::free(place);
}

// For bytes that aren't from malloc: it tells them from the block by their address.
char hostBytes[] = "host's own bytes";
void freeAllButHostBytes(void* place) {
  released.push_back(place);
  if (place != hostBytes) std::free(place);
}

TEST(AssetStorage, HasTheLayoutThatHostsShare) {
  static_assert(sizeof(AssetStorage) == 32);
  static_assert(offsetof(AssetStorage, size) == 0);
  static_assert(offsetof(AssetStorage, references) == 8);
  static_assert(offsetof(AssetStorage, external) == 12);
  static_assert(offsetof(AssetStorage, data) == 16);
  static_assert(offsetof(AssetStorage, release) == 24);
  static_assert(std::is_same_v<AssetStorage, vrnt::data::AssetStorage>);
}

TEST(vrdmAssetStorageWrap, GivesBytesThenBlockToTheHostsRelease) {
  released.clear();
  void* bytes = std::malloc(3);
  AssetStorage* storage = vrdmAssetStorageWrap(bytes, 3, noteAndFree);
  ASSERT_NE(storage, nullptr);
  EXPECT_EQ(storage->size, 3U);
  EXPECT_EQ(storage->references, 1U);
  EXPECT_EQ(storage->external, 1U);
  EXPECT_EQ(storage->data, bytes);
  EXPECT_EQ(vrdmAssetStorageRetain(storage), storage);
  EXPECT_EQ(storage->references, 2U);
  vrdmAssetStorageRelease(storage);
  EXPECT_TRUE(released.empty());
  vrdmAssetStorageRelease(storage);
  EXPECT_EQ(released, (std::vector<void*>{bytes, storage}));
}

TEST(vrdmAssetStorageWrap, TakesBytesThatAreNotFromMalloc) {
  released.clear();
  AssetStorage* storage = vrdmAssetStorageWrap(hostBytes, sizeof(hostBytes), freeAllButHostBytes);
  vrdmAssetStorageRelease(storage);
  EXPECT_EQ(released, (std::vector<void*>{hostBytes, storage}));
}

TEST(vrdmAssetStorageWrap, WithFreeNeedsNothingElse) {
  AssetStorage* storage = vrdmAssetStorageWrap(std::malloc(100), 100, std::free);
  EXPECT_EQ(storage->external, 1U);
  vrdmAssetStorageRelease(storage);
}

TEST(vrdmAssetStorageWrap, BorrowsBytesWithoutARelease) {
  const char bytes[] = "static";
  AssetStorage* storage = vrdmAssetStorageWrap(const_cast<char*>(bytes), 6, nullptr);
  EXPECT_EQ(storage->external, 0U);
  EXPECT_EQ(storage->data, bytes);
  vrdmAssetStorageRelease(storage);
  EXPECT_STREQ(bytes, "static");
}

TEST(vrdmAssetStorageCopy, HoldsACopyInOneBlock) {
  std::string bytes = "bytes";
  AssetStorage* storage = vrdmAssetStorageCopy(bytes.data(), bytes.size());
  bytes = "other";
  ASSERT_NE(storage, nullptr);
  EXPECT_EQ(storage->size, 5U);
  EXPECT_EQ(storage->references, 1U);
  EXPECT_EQ(storage->external, 0U);
  EXPECT_EQ(storage->data, storage + 1);
  EXPECT_EQ(std::memcmp(storage->data, "bytes", 5), 0);
  vrdmAssetStorageRelease(storage);
}

TEST(vrdmAssetStorageCopy, TakesNoBytes) {
  AssetStorage* storage = vrdmAssetStorageCopy(nullptr, 0);
  ASSERT_NE(storage, nullptr);
  EXPECT_EQ(storage->size, 0U);
  EXPECT_NE(storage->data, nullptr);
  vrdmAssetStorageRelease(storage);
}

TEST(vrdmAssetStorageCopy, IsNullForASizeThatNoBlockCanHave) {
  EXPECT_EQ(vrdmAssetStorageCopy(hostBytes, UINT64_MAX), nullptr);
  EXPECT_EQ(vrdmAssetStorageCopy(hostBytes, UINT64_MAX - 31), nullptr);
}

TEST(vrdmAssetStorageRelease, TakesNull) {
  vrdmAssetStorageRelease(nullptr);
  EXPECT_EQ(vrdmAssetStorageRetain(nullptr), nullptr);
}

TEST(vrdmAssetStorageRelease, CountsOnSeveralThreads) {
  released.clear();
  void* bytes = std::malloc(1);
  AssetStorage* storage = vrdmAssetStorageWrap(bytes, 1, noteAndFree);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    vrdmAssetStorageRetain(storage);
    threads.emplace_back([storage] {
      for (int j = 0; j < 10000; ++j) {
        vrdmAssetStorageRelease(vrdmAssetStorageRetain(storage));
      }
      vrdmAssetStorageRelease(storage);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(storage->references, 1U);
  vrdmAssetStorageRelease(storage);
  EXPECT_EQ(released, (std::vector<void*>{bytes, storage}));
}

TEST(AssetHandle, HoldsOneReference) {
  AssetStorage* storage = vrdmAssetStorageCopy("bytes", 5);
  {
    AssetHandle adopted = AssetHandle::adopt(vrdmAssetStorageRetain(storage));
    EXPECT_EQ(storage->references, 2U);
    AssetHandle shared = AssetHandle::share(storage);
    EXPECT_EQ(storage->references, 3U);
    const AssetHandle copy = shared;
    EXPECT_EQ(storage->references, 4U);
    const AssetHandle moved = std::move(shared);
    EXPECT_EQ(storage->references, 4U);
    EXPECT_EQ(shared.get(), nullptr);
    adopted = AssetHandle();
    EXPECT_EQ(storage->references, 3U);
    EXPECT_EQ(*copy.place(), storage);
  }
  EXPECT_EQ(storage->references, 1U);
  vrdmAssetStorageRelease(storage);
}

TEST(allocateAsset, MakesOneBlockOfFieldsAndBytes) {
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1}, std::size_t{100000}, (std::size_t{4} << 20) - 32,
        std::size_t{4} << 20, (std::size_t{7} << 20) + 5}) {
    AssetHandle handle = vrnt::data::allocateAsset(size);
    AssetStorage* storage = handle.get();
    ASSERT_NE(storage, nullptr);
    EXPECT_EQ(storage->size, size);
    EXPECT_EQ(storage->references, 1U);
    EXPECT_EQ(storage->external, 0U);
    EXPECT_EQ(storage->data, storage + 1);
    EXPECT_EQ(storage->release, &std::free);
    // All of it is there.
    if (size != 0) std::memset(storage->data, 0x5A, size);
  }
}

TEST(allocateAsset, ThrowsForASizeThatNoBlockCanHave) {
  for (const std::size_t size : {SIZE_MAX, SIZE_MAX - 31, SIZE_MAX - 32, SIZE_MAX / 2}) {
    EXPECT_THROW(vrnt::data::allocateAsset(size), std::bad_alloc);
  }
}

TEST(makeUnique, LeavesAnOnlyOwnersBlockWhereItIs) {
  AssetHandle handle = AssetHandle::adopt(vrdmAssetStorageCopy("bytes", 5));
  AssetStorage* const storage = handle.get();
  EXPECT_EQ(vrnt::data::makeUnique(handle), storage->data);
  EXPECT_EQ(handle.get(), storage);
}

TEST(makeUnique, CopiesASharedBlock) {
  AssetHandle handle = AssetHandle::adopt(vrdmAssetStorageCopy("bytes", 5));
  const AssetHandle other = handle;
  auto* bytes = static_cast<char*>(vrnt::data::makeUnique(handle));
  EXPECT_NE(handle.get(), other.get());
  EXPECT_EQ(bytes, handle.get()->data);
  EXPECT_EQ(handle.get()->size, 5U);
  EXPECT_EQ(handle.get()->references, 1U);
  EXPECT_EQ(other.get()->references, 1U);
  EXPECT_EQ(std::memcmp(bytes, "bytes", 5), 0);
  bytes[0] = 'B';
  EXPECT_EQ(std::memcmp(other.get()->data, "bytes", 5), 0);
}

}  // namespace
