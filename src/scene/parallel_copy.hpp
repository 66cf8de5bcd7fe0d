/// The copy of large plain containers by several threads. Values are never copied by it.
#ifndef VORNATH_SCENE_PARALLEL_COPY_HPP
#define VORNATH_SCENE_PARALLEL_COPY_HPP

#include <cstddef>
#include <functional>

namespace qex::vornath {

/// Copies `size` bytes between ranges that do not overlap. Splits copies from 1 MiB on into at most
/// 16 pieces, which tasks of oneTBB copy; the calling thread runs no other task while it waits.
void parallelMemcpy(void* destination, const void* source, std::size_t size);

/// Calls `copy` for each piece that parallelMemcpy() copies, on the thread that takes the piece:
/// its offset and length in bytes.
void forEachCopyPiece(std::size_t size,
                      const std::function<void(std::size_t start, std::size_t length)>& copy);

}  // namespace qex::vornath

#endif
