// What the value headers make, unpacked for callers to whom a failed allocation is std::bad_alloc.
#ifndef VORNATH_SCENE_MADE_HPP
#define VORNATH_SCENE_MADE_HPP

#include <new>
#include <utility>

#include "vornath_data/result.hpp"

namespace vrnt::data {

/// The thing itself. Errors: throws std::bad_alloc for MemoryAllocationFailure, else the
/// vrnt::Exception of the result's record.
template <typename T>
T made(Result<T>&& result) {
  if (!result && result.error().code() == ErrorCode::MemoryAllocationFailure) {
    throw std::bad_alloc();
  }
  return std::move(result).value();
}

}  // namespace vrnt::data

#endif
