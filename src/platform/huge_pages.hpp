// Memory in huge pages. Each first write to a page of 4 KiB interrupts the program, and for large
// blocks these interrupts cost more than filling the memory. A huge page needs one for 2 MiB.
#ifndef VORNATH_PLATFORM_HUGE_PAGES_HPP
#define VORNATH_PLATFORM_HUGE_PAGES_HPP

#include <cstddef>
#include <string_view>

namespace vrnt::detail {

/// The size and the alignment of a huge page, in bytes.
inline constexpr std::size_t kHugePage = std::size_t{2} << 20;

/// From this size on, malloc() gets memory from the system for each block and never uses freed
/// memory again. So a block from allocatePages() costs no more page faults.
inline constexpr std::size_t kNeverReused = std::size_t{32} << 20;

/// Returns the number of huge pages that the system can provide without effort, for at most
/// `wanted`. 0 where this is unknown, and for a short time after a huge page took longer than small
/// pages take. It is much less than the free memory if that is fragmented.
std::size_t hugePagesAtHand(std::size_t wanted) noexcept;

/// Returns the number of huge pages that are free on a node, in the zone that has most of them,
/// except for a reserve that the system keeps. `report` is the content of /proc/buddyinfo: for each
/// zone, the numbers of free blocks of 1, 2, 4, ... pages of 4 KiB.
std::size_t freeHugePages(std::string_view report, unsigned node) noexcept;

/// Asks the system to use huge pages for the part of a range that it has huge pages at hand for.
/// The range's memory should not have been written yet. Memory outside whole huge pages of the
/// range stays as it is, so this takes no more memory if the whole range is filled. Provides the
/// first huge page; if that takes longer than small pages, the others become small pages.
void useHugePages(void* begin, std::size_t size) noexcept;

/// Provides the first `size` bytes of a range with memory at once, which takes less time than a
/// page fault for each page. Changes no bytes. Does nothing where the system cannot do it.
/// If it takes longer than small pages, the rest of the range, up to `end`, gets small pages.
void provideMemory(void* begin, std::size_t size, void* end) noexcept;

/// Allocates zeroed memory that is aligned to kHugePage and uses huge pages, as useHugePages()
/// does. Release it with releasePages().
/// Result: null if there is no memory, if there are not enough huge pages at hand, or where the
/// system does not provide them.
void* allocatePages(std::size_t size) noexcept;

/// Changes the size of memory from allocatePages() and keeps its contents. Moves pages instead of
/// copying their bytes. The added memory uses huge pages, as useHugePages() does, if there are
/// enough at hand.
/// Result: the memory, maybe in another place. Null with nothing changed if there is no memory.
void* resizePages(void* place, std::size_t formerSize, std::size_t size) noexcept;

/// Releases memory from allocatePages() or resizePages().
void releasePages(void* place, std::size_t size) noexcept;

}  // namespace vrnt::detail

#endif
