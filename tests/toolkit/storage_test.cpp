// References to storage blocks.
#include <gtest/gtest.h>

#include <cstdlib>

#include "vornath_toolkit/vrtk_storage.h"

namespace vornath_test {
namespace {

int released = 0;

void countRelease(void* block) {
  ++released;
  std::free(block);
}

TEST(vrtkStorageRelease, ReleasesTheBytesWithTheLastReference) {
  released = 0;
  AssetStorage* const storage = vrdmAssetStorageWrap(std::malloc(8), 8, countRelease);
  EXPECT_EQ(vrtkStorageRetain(storage), storage);
  EXPECT_EQ(storage->references, 2U);
  vrtkStorageRelease(storage);
  EXPECT_EQ(released, 0);
  vrtkStorageRelease(storage);
  EXPECT_EQ(released, 2) << "once with the data and once with the block";
}

TEST(vrtkStorageRelease, DoesNothingForNull) { vrtkStorageRelease(nullptr); }

TEST(vrtkStorageRetain, ReturnsNullForNull) { EXPECT_EQ(vrtkStorageRetain(nullptr), nullptr); }

}  // namespace
}  // namespace vornath_test
