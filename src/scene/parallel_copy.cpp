#include "scene/parallel_copy.hpp"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/partitioner.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>

#include <atomic>
#include <cstring>

#include "vornath_data/container_copy.hpp"

namespace qex::vornath {
namespace {

constexpr std::size_t kParallelFrom = 0x100000;  // bytes
constexpr std::size_t kPieces = 16;

// If the scheduler runs out of memory while it starts, each call to it waits for ever, even a call
// that was made during the start. Therefore one thread starts it, and after a failure it is not
// called again.
std::atomic<bool> schedulerFailed{false};

bool schedulerRuns() {
  static const bool started = [] {
    try {
      tbb::this_task_arena::isolate([] {});
      return true;
    } catch (...) {
      return false;
    }
  }();
  return started && !schedulerFailed.load(std::memory_order_relaxed);
}

void shareOut(std::size_t size,
              const std::function<void(std::size_t start, std::size_t length)>& copy) {
  tbb::this_task_arena::isolate([&] {
    // With a context of its own, the copy is completed even if the host cancels the calling task.
    tbb::task_group_context context(tbb::task_group_context::isolated);
    tbb::parallel_for(
        tbb::blocked_range<std::size_t>(0, size, (kPieces - 1 + size) / kPieces),
        [&](const tbb::blocked_range<std::size_t>& piece) { copy(piece.begin(), piece.size()); },
        tbb::auto_partitioner(), context);
  });
}

}  // namespace

void forEachCopyPiece(std::size_t size,
                      const std::function<void(std::size_t start, std::size_t length)>& copy) {
  if (size >= kParallelFrom && schedulerRuns()) {
    try {
      shareOut(size, copy);
      return;
    } catch (...) {
      // When the scheduler gives up, no task of the copy is left.
      schedulerFailed.store(true, std::memory_order_relaxed);
    }
  }
  copy(0, size);
}

void parallelMemcpy(void* destination, const void* source, std::size_t size) {
  // If the size is 0, the pointers may be null, which memcpy does not allow.
  if (size == 0) return;
  forEachCopyPiece(size, [=](std::size_t start, std::size_t length) {
    std::memcpy(static_cast<char*>(destination) + start, static_cast<const char*>(source) + start,
                length);
  });
}

}  // namespace qex::vornath

namespace vrnt::data::detail {

void trivialContainerCopy(void* destination, const void* source, std::uint64_t size) {
  qex::vornath::parallelMemcpy(destination, source, size);
}

}  // namespace vrnt::data::detail
