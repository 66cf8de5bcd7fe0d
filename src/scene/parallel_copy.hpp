/// Copies large containers of plain data on several threads. It never copies values.
#ifndef VORNATH_SCENE_PARALLEL_COPY_HPP
#define VORNATH_SCENE_PARALLEL_COPY_HPP

#include <cstddef>
#include <functional>

namespace qex::vornath {

/// Copies `size` bytes between ranges that do not overlap. Splits a copy of 1 MiB or more into at
/// most 16 pieces, which tasks of oneTBB copy. The calling thread runs no other task while it
/// waits.
void parallelMemcpy(void* destination, const void* source, std::size_t size);

/// Calls `copy` with the offset and the length in bytes of each piece that parallelMemcpy() copies,
/// on the thread that copies the piece.
void forEachCopyPiece(std::size_t size,
                      const std::function<void(std::size_t start, std::size_t length)>& copy);

}  // namespace qex::vornath

#endif
