// Into which pieces a large copy is split, and that threads share them.
#include "scene/parallel_copy.hpp"

#include <gtest/gtest.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace {

using qex::vornath::forEachCopyPiece;

constexpr std::size_t kMebibyte = 0x100000;
constexpr int kThreads = 4;

using Pieces = std::vector<std::pair<std::size_t, std::size_t>>;  // start and length

// The pieces in order, taken by as many threads as there may be, whatever the machine has.
Pieces piecesOf(std::size_t size) {
  const tbb::global_control threads(tbb::global_control::max_allowed_parallelism, kThreads);
  Pieces pieces;
  std::mutex lock;
  tbb::task_arena(kThreads).execute([&] {
    forEachCopyPiece(size, [&](std::size_t start, std::size_t length) {
      const std::lock_guard<std::mutex> guard(lock);
      pieces.emplace_back(start, length);
    });
  });
  std::sort(pieces.begin(), pieces.end());
  return pieces;
}

TEST(ParallelCopy, OfLessThanAMebibyteIsOnePiece) {
  for (const std::size_t size : {std::size_t{1}, std::size_t{4096}, kMebibyte - 1}) {
    EXPECT_EQ(piecesOf(size), (Pieces{{0, size}})) << size;
  }
}

// Whoever copies a container in a task of its own that is cancelled relies on the copy.
TEST(ParallelCopy, IsWholeInATaskThatIsCancelled) {
  const std::vector<char> source(8 * kMebibyte, 'x');
  std::vector<char> copy(source.size());
  tbb::task_group_context context;
  tbb::parallel_for(
      0, 1,
      [&](int) {
        context.cancel_group_execution();
        qex::vornath::parallelMemcpy(copy.data(), source.data(), source.size());
      },
      tbb::auto_partitioner(), context);
  EXPECT_EQ(copy, source);
}

TEST(ParallelCopy, FromAMebibyteOnIsSplitIntoPiecesSideBySide) {
  for (const std::size_t size : {kMebibyte, kMebibyte + 1, 16 * kMebibyte + 7, 1000 * kMebibyte}) {
    SCOPED_TRACE(size);
    const Pieces pieces = piecesOf(size);
    EXPECT_GT(pieces.size(), 1u);
    EXPECT_LE(pieces.size(), 16u);
    std::size_t end = 0;
    for (const auto& [start, length] : pieces) {
      EXPECT_EQ(start, end);
      end = start + length;
    }
    EXPECT_EQ(end, size);
  }
}

// A piece waits until another thread has one: a copy that stayed on one thread would wait in vain.
TEST(ParallelCopy, IsSharedByThreads) {
  const tbb::global_control threads(tbb::global_control::max_allowed_parallelism, kThreads);
  std::set<std::thread::id> takers;
  std::mutex lock;
  std::condition_variable joined;
  tbb::task_arena(kThreads).execute([&] {
    forEachCopyPiece(kMebibyte, [&](std::size_t, std::size_t) {
      std::unique_lock<std::mutex> guard(lock);
      takers.insert(std::this_thread::get_id());
      joined.notify_all();
      joined.wait_for(guard, std::chrono::seconds(60), [&] { return takers.size() > 1; });
    });
  });
  EXPECT_GT(takers.size(), 1u);
}

TEST(ParallelCopy, OfASmallSizeStaysOnItsThread) {
  std::thread::id taker;
  forEachCopyPiece(kMebibyte - 1,
                   [&](std::size_t, std::size_t) { taker = std::this_thread::get_id(); });
  EXPECT_EQ(taker, std::this_thread::get_id());
}

}  // namespace
