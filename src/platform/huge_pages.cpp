#include "platform/huge_pages.hpp"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <limits>

#if defined(__linux__)
#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>
#endif

namespace vrnt::detail {

namespace {

constexpr std::size_t kPage = 4096;  // the only page size for which huge pages are used

// Below this much free memory, the system takes memory away from others before it provides more.
constexpr std::size_t kReserve = (std::size_t{128} << 20) / kHugePage;

constexpr std::size_t alignUp(std::size_t size, std::size_t alignment) {
  return (size + alignment - 1) / alignment * alignment;
}

std::string_view takeWord(std::string_view& line) {
  const std::size_t begin = std::min(line.find_first_not_of(' '), line.size());
  const std::size_t end = std::min(line.find(' ', begin), line.size());
  const std::string_view word = line.substr(begin, end - begin);
  line.remove_prefix(end);
  return word;
}

std::size_t toNumber(std::string_view digits) {
  std::size_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

}  // namespace

// A line is "Node 0, zone   Normal   12   3 ...": the numbers of free blocks, by order.
std::size_t freeHugePages(std::string_view report, unsigned node) noexcept {
  std::size_t most = 0;
  while (!report.empty()) {
    const std::size_t end = std::min(report.find('\n'), report.size());
    std::string_view line = report.substr(0, end);
    report.remove_prefix(std::min(end + 1, report.size()));
    if (takeWord(line) != "Node" || toNumber(takeWord(line)) != node) continue;
    takeWord(line);  // "zone"
    takeWord(line);  // its name
    std::size_t blockSize = kPage;
    std::size_t pages = 0;
    for (std::string_view count = takeWord(line); !count.empty(); count = takeWord(line)) {
      if (blockSize >= kHugePage) pages += toNumber(count) * (blockSize / kHugePage);
      blockSize *= 2;
    }
    most = std::max(most, pages);
  }
  return most > kReserve ? most - kReserve : 0;
}

#if defined(__linux__)

namespace {

bool hasUsualPages() noexcept {
  static const bool usual = sysconf(_SC_PAGESIZE) == static_cast<long>(kPage);
  return usual;
}

void advise(void* begin, std::size_t size, int advice) noexcept {
  // If the system does not know the advice, nothing changes.
  [[maybe_unused]] const int refused = madvise(begin, size, advice);
}

// A virtual machine may have given its free huge pages back to its host. The first write to one
// then makes the host provide it in small pages, which takes some 6 ms instead of the 0.1 ms of
// clearing it. 2 MiB of small pages take about 1 ms.
constexpr std::int64_t kSlow = 1'500'000;

// For how long no huge page is tried after a slow one: less than a hundredth of the time is lost.
constexpr std::int64_t kPause = 600'000'000;

std::atomic<std::int64_t> pauseEnd = std::numeric_limits<std::int64_t>::min();

std::int64_t nanoseconds(clockid_t clock) noexcept {
  timespec time{};
  if (clock_gettime(clock, &time) != 0) return 0;
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

#if defined(MADV_POPULATE_WRITE)
// Provides memory. Returns whether one of its pages was slow. Time in which the thread does not run
// does not count.
bool populate(void* begin, std::size_t size) noexcept {
  const std::int64_t start = nanoseconds(CLOCK_THREAD_CPUTIME_ID);
  advise(begin, size, MADV_POPULATE_WRITE);
  const bool slow = nanoseconds(CLOCK_THREAD_CPUTIME_ID) - start > kSlow;
  if (slow) {
    pauseEnd.store(nanoseconds(CLOCK_MONOTONIC_COARSE) + kPause, std::memory_order_relaxed);
  }
  return slow;
}
#else
bool populate(void*, std::size_t) noexcept { return false; }
#endif

// Uses huge pages for memory that begins with a whole one, unless that one is slow.
void tryHugePages(char* first, std::size_t size) noexcept {
  advise(first, size, MADV_HUGEPAGE);
  if (size < kHugePage || !populate(first, kPage)) return;
  advise(first + kHugePage, size - kHugePage, MADV_NOHUGEPAGE);
}

void* reserve(std::size_t size, int protection) noexcept {
  void* const place = mmap(nullptr, size, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return place == MAP_FAILED ? nullptr : place;
}

// Reserves addresses that are aligned to kHugePage.
void* reserveAligned(std::size_t size, int protection) noexcept {
  if (size > SIZE_MAX - kHugePage) return nullptr;
  auto* const place = static_cast<char*>(reserve(size + kHugePage, protection));
  if (!place) return nullptr;
  const std::size_t before =
      (kHugePage - reinterpret_cast<std::uintptr_t>(place) % kHugePage) % kHugePage;
  if (before != 0) munmap(place, before);
  if (before != kHugePage) munmap(place + before + size, kHugePage - before);
  return place + before;
}

}  // namespace

std::size_t hugePagesAtHand(std::size_t wanted) noexcept {
  if (wanted == 0 || !hasUsualPages()) return 0;
  if (nanoseconds(CLOCK_MONOTONIC_COARSE) < pauseEnd.load(std::memory_order_relaxed)) return 0;
  const int file = open("/proc/buddyinfo", O_RDONLY | O_CLOEXEC);
  if (file < 0) return 0;
  char report[8192];
  std::size_t size = 0;
  for (;;) {
    const ssize_t count = read(file, report + size, sizeof(report) - size);
    if (count <= 0) break;
    size += static_cast<std::size_t>(count);
  }
  close(file);
  unsigned cpu = 0;
  unsigned node = 0;
  if (getcpu(&cpu, &node) != 0) return 0;
  return std::min(freeHugePages(std::string_view(report, size), node), wanted);
}

void useHugePages(void* begin, std::size_t size) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(begin);
  const std::uintptr_t first = alignUp(address, kHugePage);
  const std::uintptr_t end = (address + size) / kHugePage * kHugePage;
  if (first >= end) return;
  const std::size_t pages = hugePagesAtHand((end - first) / kHugePage);
  if (pages == 0) return;
  tryHugePages(static_cast<char*>(begin) + (first - address), pages * kHugePage);
}

void provideMemory(void* begin, std::size_t size, void* end) noexcept {
  if (size == 0 || !hasUsualPages()) return;
  const auto address = reinterpret_cast<std::uintptr_t>(begin);
  const std::uintptr_t first = address / kPage * kPage;
  const std::uintptr_t last = alignUp(address + size, kPage);
  if (!populate(static_cast<char*>(begin) - (address - first), last - first)) return;
  const std::uintptr_t rest = alignUp(last, kHugePage);
  const std::uintptr_t restEnd = reinterpret_cast<std::uintptr_t>(end) / kHugePage * kHugePage;
  if (rest < restEnd) {
    advise(static_cast<char*>(begin) + (rest - address), restEnd - rest, MADV_NOHUGEPAGE);
  }
}

void* allocatePages(std::size_t size) noexcept {
  if (size > SIZE_MAX / 2) return nullptr;
  size = alignUp(size, kPage);
  const std::size_t wanted = alignUp(size, kHugePage) / kHugePage;
  if (hugePagesAtHand(wanted) < wanted) return nullptr;
  void* const place = reserveAligned(size, PROT_READ | PROT_WRITE);
  // Huge pages lie within the memory. So its last bytes are in usual pages.
  if (place) tryHugePages(static_cast<char*>(place), size);
  return place;
}

void* resizePages(void* place, std::size_t formerSize, std::size_t size) noexcept {
  if (size > SIZE_MAX / 2) return nullptr;
  formerSize = alignUp(formerSize, kPage);
  size = alignUp(size, kPage);
  bool huge = false;
  if (size > formerSize) {
    const std::size_t wanted = alignUp(size - formerSize, kHugePage) / kHugePage;
    huge = hugePagesAtHand(wanted) == wanted;
    // One advice for all of the memory: the system moves only memory with equal properties.
    advise(place, formerSize, huge ? MADV_HUGEPAGE : MADV_NOHUGEPAGE);
  }
  void* moved = mremap(place, formerSize, size, 0);
  if (moved == MAP_FAILED) {
    // Only memory that stays aligned is moved in huge pages.
    void* const target = reserveAligned(size, PROT_NONE);
    if (!target) return nullptr;
    moved = mremap(place, formerSize, size, MREMAP_MAYMOVE | MREMAP_FIXED, target);
    if (moved == MAP_FAILED) {
      // Without memory, the system may have unmapped the target already, and another thread may
      // have memory there.
      if (errno != ENOMEM) munmap(target, size);
      return nullptr;
    }
  }
  const std::size_t added = alignUp(formerSize, kHugePage);
  if (huge && added < size) tryHugePages(static_cast<char*>(moved) + added, size - added);
  return moved;
}

void releasePages(void* place, std::size_t size) noexcept { munmap(place, alignUp(size, kPage)); }

#else

std::size_t hugePagesAtHand(std::size_t) noexcept { return 0; }
void useHugePages(void*, std::size_t) noexcept {}
void provideMemory(void*, std::size_t, void*) noexcept {}
void* allocatePages(std::size_t) noexcept { return nullptr; }
void* resizePages(void*, std::size_t, std::size_t) noexcept { return nullptr; }
void releasePages(void*, std::size_t) noexcept {}

#endif

}  // namespace vrnt::detail
