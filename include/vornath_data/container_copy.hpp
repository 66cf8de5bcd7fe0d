/// A memory copy that uses several threads.
#ifndef VORNATH_DATA_CONTAINER_COPY_HPP
#define VORNATH_DATA_CONTAINER_COPY_HPP

#include <cstdint>

#include "vornath_data/api.h"

namespace vrnt::data::detail {

/// Copies `size` bytes of the storage of a trivially copyable container. For sizes of 1 MiB or
/// more, several threads share the work, and the function returns when all bytes are copied. For
/// smaller sizes it is a plain copy; a size of 0 copies nothing. If the task scheduler has no
/// memory or no threads, the calling thread copies everything. `source` and `destination` must not
/// overlap.
/// Errors: none.
VRNT_API void trivialContainerCopy(void* destination, const void* source, std::uint64_t size);

}  // namespace vrnt::data::detail

#endif
