/// A copy of many bytes by several threads.
#ifndef VORNATH_DATA_CONTAINER_COPY_HPP
#define VORNATH_DATA_CONTAINER_COPY_HPP

#include <cstdint>

#include "vornath_data/api.h"

namespace vrnt::data::detail {

/// Copies `size` bytes of a trivially copyable container's storage. From 1 MiB on several threads
/// share the work, and the caller returns when all is copied; below it is a plain copy, which with
/// a size of 0 does nothing. Where the task scheduler lacks memory or threads the caller copies
/// alone. Source and destination don't overlap. Errors: none.
VRNT_API void trivialContainerCopy(void* destination, const void* source, std::uint64_t size);

}  // namespace vrnt::data::detail

#endif
