// Memory for large arrays.
#ifndef VRN_CONVERT_SCENE_PLAN_LARGE_MEMORY_HPP
#define VRN_CONVERT_SCENE_PLAN_LARGE_MEMORY_HPP

#include <sys/mman.h>

#include <cstddef>
#include <cstdlib>

namespace vrn_convert {

/// Allocates memory that free() frees; null if there is none. A large block gets large pages where
/// the system has them: a conversion touches each byte once or twice, so that most of its time
/// would go into getting small pages.
inline void* allocateLarge(std::size_t size) {
  constexpr std::size_t kPage = std::size_t{2} << 20;
  constexpr std::size_t kLeast = 4 * kPage;
  if (size < kLeast || size > ~std::size_t{0} - kPage) return std::malloc(size);
  const std::size_t whole = (size + kPage - 1) / kPage * kPage;
  void* const block = std::aligned_alloc(kPage, whole);
  if (block != nullptr) madvise(block, whole, MADV_HUGEPAGE);
  return block;
}

}  // namespace vrn_convert

#endif
