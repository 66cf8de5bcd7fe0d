// Gives large pages to the large arrays of the libraries that read files, too. The other forms of
// new and delete call these, or free().
#include <new>

#include "scene_plan/large_memory.hpp"

void* operator new(std::size_t size) {
  for (;;) {
    void* const block = vrn_convert::allocateLarge(size == 0 ? 1 : size);
    if (block != nullptr) return block;
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }
