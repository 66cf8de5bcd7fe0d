// Turns the error of a result into an exception; a failed allocation becomes std::bad_alloc.
#ifndef VORNATH_SCENE_VALUE_OR_THROW_HPP
#define VORNATH_SCENE_VALUE_OR_THROW_HPP

#include <new>
#include <utility>

#include "vornath_data/result.hpp"

namespace vrnt::data {

/// Returns the value of a result.
/// Errors: throws std::bad_alloc for MemoryAllocationFailure, else the vrnt::Exception of the
/// result's error record.
template <typename T>
T valueOrThrow(Result<T>&& result) {
  if (!result && result.error().code() == ErrorCode::MemoryAllocationFailure) {
    throw std::bad_alloc();
  }
  return std::move(result).value();
}

}  // namespace vrnt::data

#endif
