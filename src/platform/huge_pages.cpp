#include "platform/huge_pages.hpp"

#include <algorithm>
#include <charconv>
#include <cstdint>

#if defined(__linux__)
#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
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
  advise(static_cast<char*>(begin) + (first - address), pages * kHugePage, MADV_HUGEPAGE);
}

void provideMemory(void* begin, std::size_t size) noexcept {
#if defined(MADV_POPULATE_WRITE)
  if (size == 0 || !hasUsualPages()) return;
  const auto address = reinterpret_cast<std::uintptr_t>(begin);
  const std::uintptr_t first = address / kPage * kPage;
  advise(static_cast<char*>(begin) - (address - first), alignUp(address + size, kPage) - first,
         MADV_POPULATE_WRITE);
#else
  static_cast<void>(begin);
  static_cast<void>(size);
#endif
}

void* allocatePages(std::size_t size) noexcept {
  if (size > SIZE_MAX / 2) return nullptr;
  size = alignUp(size, kPage);
  const std::size_t wanted = alignUp(size, kHugePage) / kHugePage;
  if (hugePagesAtHand(wanted) < wanted) return nullptr;
  void* const place = reserveAligned(size, PROT_READ | PROT_WRITE);
  // Huge pages lie within the memory. So its last bytes are in usual pages.
  if (place) advise(place, size, MADV_HUGEPAGE);
  return place;
}

void* resizePages(void* place, std::size_t formerSize, std::size_t size) noexcept {
  if (size > SIZE_MAX / 2) return nullptr;
  formerSize = alignUp(formerSize, kPage);
  size = alignUp(size, kPage);
  if (size > formerSize) {
    const std::size_t wanted = alignUp(size - formerSize, kHugePage) / kHugePage;
    const bool huge = hugePagesAtHand(wanted) == wanted;
    // One advice for all of the memory: the system moves only memory with equal properties.
    advise(place, formerSize, huge ? MADV_HUGEPAGE : MADV_NOHUGEPAGE);
  }
  void* moved = mremap(place, formerSize, size, 0);
  if (moved != MAP_FAILED) return moved;
  // Only memory that stays aligned is moved in huge pages.
  void* const target = reserveAligned(size, PROT_NONE);
  if (!target) return nullptr;
  moved = mremap(place, formerSize, size, MREMAP_MAYMOVE | MREMAP_FIXED, target);
  if (moved != MAP_FAILED) return moved;
  munmap(target, size);
  return nullptr;
}

void releasePages(void* place, std::size_t size) noexcept { munmap(place, alignUp(size, kPage)); }

#else

std::size_t hugePagesAtHand(std::size_t) noexcept { return 0; }
void useHugePages(void*, std::size_t) noexcept {}
void provideMemory(void*, std::size_t) noexcept {}
void* allocatePages(std::size_t) noexcept { return nullptr; }
void* resizePages(void*, std::size_t, std::size_t) noexcept { return nullptr; }
void releasePages(void*, std::size_t) noexcept {}

#endif

}  // namespace vrnt::detail
