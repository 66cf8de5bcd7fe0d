/// A copy of many bytes by several threads, for those who copy large plain containers. Nothing in
/// the value layer calls it: a value is copied by the thread that asks for it.
#ifndef VORNATH_VALUES_PARALLEL_COPY_HPP
#define VORNATH_VALUES_PARALLEL_COPY_HPP

#include <cstddef>
#include <functional>

namespace qex::vornath {

/// Copies `size` bytes between places that don't overlap. From 1 MiB on the copy is split in pieces
/// of at least a sixteenth; the calling thread picks up no other work while it waits for them.
void parallelMemcpy(void* destination, const void* source, std::size_t size);

/// Calls for each piece that parallelMemcpy() copies: where it starts and how long it is, on the
/// thread that takes it.
void forEachCopyPiece(std::size_t size,
                      const std::function<void(std::size_t start, std::size_t length)>& copy);

}  // namespace qex::vornath

#endif
