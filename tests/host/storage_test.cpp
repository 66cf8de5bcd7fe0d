#include "vornath_data/host/storage.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "refusal.hpp"
#include "support/allocations.hpp"
#include "support/temporary_folder.hpp"
#include "vornath_data/vrdm.h"

namespace {

using namespace vrnt::host;
using vornath_test::refusalOf;
using vrnt::ErrorCode;
namespace fs = std::filesystem;

class MappedFile : public testing::Test {
 protected:
  std::string file(const std::string& bytes) const {
    std::ofstream(folder_.file("file"), std::ios::binary) << bytes;
    return folder_.file("file");
  }

  vornath_test::TemporaryFolder folder_;
};

std::string bytesOf(const Storage& storage) {
  return {static_cast<const char*>(storage.get()->data), storage.get()->size};
}

// How many places of this process's memory are the file's.
int mappingsOf(const std::string& path) {
  std::ifstream maps("/proc/self/maps");
  int count = 0;
  for (std::string line; std::getline(maps, line);) {
    if (line.find(path) != std::string::npos) ++count;
  }
  return count;
}

}  // namespace

TEST(MoveBytes, HandsTheVectorOverWithoutACopy) {
  std::vector<float> elements(1000, 1.5F);
  const void* const bytes = elements.data();
  const std::int64_t before = vornath_test::liveAllocations();
  {
    const Storage storage = moveBytes(std::move(elements));
    EXPECT_EQ(storage.get()->data, bytes);
    EXPECT_EQ(storage.get()->size, 4000u);
    EXPECT_EQ(storage.get()->references, 1u);
    const Storage other = storage;
    EXPECT_EQ(storage.get()->references, 2u);
  }
  EXPECT_EQ(vornath_test::liveAllocations(), before - 1) << "the vector's memory and the block";
}

TEST(MoveBytes, OfNoElementsIsAnAssetAllTheSame) {
  const Storage storage = moveBytes(std::vector<char>());
  EXPECT_TRUE(storage.hasData());
  EXPECT_EQ(storage.get()->size, 0u);
}

TEST(MoveBytes, LeavesTheVectorIfThereIsNoMemory) {
  std::vector<int> elements{1, 2, 3};
  {
    const vornath_test::FailingAllocations failing;
    EXPECT_THROW(moveBytes(std::move(elements)), std::bad_alloc);
  }
  EXPECT_EQ(elements, (std::vector<int>{1, 2, 3}));  // NOLINT(bugprone-use-after-move)
}

TEST(MoveBytes, AreSharedWithAScene) {
  vrdmScene_t* const scene = vrdmCreateScene();
  const vrdmMaterialGraphDesc desc{3, 0, 0};
  Storage storage = moveBytes(std::vector<char>{'a', 'b', 'c'});
  AssetStorage* const block = storage.get();
  EXPECT_EQ(vrdmAddAsset(scene, VRDM_CLASS_MATERIAL_GRAPH, &desc, &block), 0u);
  const void* const bytes = block->data;
  storage = Storage();
  AssetStorage** const held = vrdmGetAssetStorage(scene, VRDM_CLASS_MATERIAL_GRAPH, 0, nullptr);
  EXPECT_EQ((*held)->data, bytes);
  EXPECT_EQ((*held)->references, 1u);
  // The scene's is the last handle, and ends on another thread.
  std::thread([scene] { vrdmDestroyScene(scene); }).join();
}

TEST(CopyBytes, IsABlockOfItsOwn) {
  char bytes[] = "abc";
  const Storage storage = copyBytes(bytes, 3);
  bytes[0] = 'x';
  EXPECT_EQ(bytesOf(storage), "abc");
  EXPECT_TRUE(copyBytes(nullptr, 0).hasData());
  if (!vornath_test::kMallocIsCounted) return;
  const vornath_test::FailingAllocations failing;
  EXPECT_THROW(copyBytes(bytes, 3), std::bad_alloc);
}

TEST_F(MappedFile, IsReadAsItStands) {
  const std::string path = file("some bytes");
  Storage storage = mapFile(path);
  EXPECT_EQ(bytesOf(storage), "some bytes");
  EXPECT_EQ(mappingsOf(path), 1);
  storage = Storage();
  EXPECT_EQ(mappingsOf(path), 0);
}

TEST_F(MappedFile, StaysAsItIsWhenItsBytesAreWritten) {
  const std::string path = file("some bytes");
  const Storage storage = mapFile(path);
  static_cast<char*>(storage.get()->data)[0] = 'S';
  EXPECT_EQ(bytesOf(storage), "Some bytes");
  EXPECT_EQ(bytesOf(mapFile(path)), "some bytes");
}

TEST_F(MappedFile, OfNoBytesIsAnAssetAllTheSame) {
  const Storage storage = mapFile(file(""));
  EXPECT_TRUE(storage.hasData());
  EXPECT_EQ(storage.get()->size, 0u);
}

TEST_F(MappedFile, ThatIsNoneIsToldByPathAndReason) {
  const std::string nowhere = folder_.file("nowhere");
  EXPECT_EQ(refusalOf([&] { mapFile(nowhere); }).message, nowhere + ": No such file or directory");
  EXPECT_EQ(refusalOf([&] { mapFile(nowhere); }).code, ErrorCode::FileNotFound);
  EXPECT_EQ(refusalOf([&] { mapFile(folder_.path().string()); }).message,
            folder_.path().string() + ": Is a directory");
  EXPECT_EQ(refusalOf([&] { mapFile(folder_.path().string()); }).code, ErrorCode::IoError);
}

TEST_F(MappedFile, RefusesAPipeWithoutWaitingForAWriter) {
  const std::string pipe = folder_.file("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(refusalOf([&] { mapFile(pipe); }).message, pipe + ": Invalid argument");
}

TEST_F(MappedFile, LeavesNothingOpenOrMappedIfThereIsNoMemory) {
  const std::string path = file("some bytes");
  const auto open = [] {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
  };
  const auto before = open();
  bool raised = false;
  {
    const vornath_test::FailingAllocations failing;
    try {
      mapFile(path);
    } catch (const std::bad_alloc&) {
      raised = true;
    }
  }
  EXPECT_TRUE(raised);
  EXPECT_EQ(open(), before);
  EXPECT_EQ(mappingsOf(path), 0);
}
