// The entry point that libFuzzer and the replay program call, and the memory that one input may
// take.
#include <malloc.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "support/target.hpp"
#include "types/type_factory.hpp"

namespace {

// What one input may hold at a time through `new`. Sizes in texts and streams multiply, and a
// request that is refused is a correct outcome; AddressSanitizer's own `new` would end the program.
// Blocks of values come from malloc, which the sanitizer's max_allocation_size_mb bounds.
constexpr std::size_t kMemoryOfAnInput = std::size_t{64} << 20;

thread_local bool counting = false;
thread_local std::size_t held = 0;

void* allocate(std::size_t size) noexcept {
  if (counting && (size > kMemoryOfAnInput || held > kMemoryOfAnInput - size)) return nullptr;
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (counting && memory != nullptr) held += malloc_usable_size(memory);
  return memory;
}

void release(void* memory) noexcept {
  if (counting && memory != nullptr) {
    const std::size_t size = malloc_usable_size(memory);
    held -= size < held ? size : held;  // it may be from before
  }
  std::free(memory);
}

class CountMemory {
 public:
  CountMemory() {
    held = 0;
    counting = true;
  }
  CountMemory(const CountMemory&) = delete;
  CountMemory& operator=(const CountMemory&) = delete;
  ~CountMemory() { counting = false; }
};

std::size_t liveTypes() { return qex::vornath::Type::get_factory(true)->liveTypes(); }

void run(std::string_view bytes) {
  const CountMemory count;
  try {
    vornath_fuzz::runInput(bytes);
  } catch (const std::bad_alloc&) {
    // Also from the functions that promise it instead of an error object.
  }
}

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }

// The library maps the memory of large containers itself, which the sanitizer does not bound. The
// linker's option --wrap makes the library call these functions.
extern "C" {
void* __real_mmap(void*, std::size_t, int, int, int, off_t);
void* __real_mremap(void*, std::size_t, std::size_t, int, ...);

void* __wrap_mmap(void* place, std::size_t size, int protection, int flags, int file,
                  off_t offset) {
  if (counting && size > kMemoryOfAnInput) {
    errno = ENOMEM;
    return MAP_FAILED;
  }
  return __real_mmap(place, size, protection, flags, file, offset);
}

void* __wrap_mremap(void* place, std::size_t formerSize, std::size_t size, int flags, ...) {
  if (counting && size > kMemoryOfAnInput) {
    errno = ENOMEM;
    return MAP_FAILED;
  }
  if ((flags & MREMAP_FIXED) == 0) return __real_mremap(place, formerSize, size, flags);
  va_list arguments;
  va_start(arguments, flags);
  void* const target = va_arg(arguments, void*);
  va_end(arguments);
  return __real_mremap(place, formerSize, size, flags, target);
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Each level of a nested type holds the text of all those inside.
  constexpr std::size_t kLongestInput = VORNATH_FUZZ_LONGEST_INPUT;
  if (size > kLongestInput) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);

  const std::size_t before = liveTypes();
  run(bytes);
  if (const std::size_t after = liveTypes(); after > before) {
    // Permanent types come once, at their first use; a type that is forgotten comes again.
    run(bytes);
    FUZZ_CHECK_NOTE(liveTypes() == after, "a type is still alive");
  }
  return 0;
}
