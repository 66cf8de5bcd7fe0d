/// The way back from an error object of the flat interface to C++: an exception, or the record of a
/// failed Result. Each function here ends the error object that it is given.
#ifndef VORNATH_DATA_DETAIL_RAISE_ERROR_HPP
#define VORNATH_DATA_DETAIL_RAISE_ERROR_HPP

#include <memory>
#include <new>

#include "vornath_data/errors.h"
#include "vornath_data/result.hpp"

namespace vrnt::detail {

struct ErrorDestroyer {
  void operator()(vrntValuesError_t* error) const noexcept { vrntValuesErrorDestroy(error); }
};
struct StringDestroyer {
  void operator()(char* words) const noexcept { vrntDestroyString(words); }
};
using OwnedError = std::unique_ptr<vrntValuesError_t, ErrorDestroyer>;

/// What reading and writing a value makes of an error: throws std::bad_alloc if an allocation
/// failed, else an Exception of code UnknownError with the object's message.
[[noreturn]] inline void raiseError(vrntValuesError_t* error) {
  const OwnedError owned(error);
  if (vrntValuesErrorCode(error) == VRNT_OUT_OF_MEMORY) throw std::bad_alloc();
  throw Exception(ErrorCode::UnknownError, vrntValuesErrorMessage(error));
}

/// What the creation of a value makes of an error: MemoryAllocationFailure without a message, or
/// InternalError with the object's.
inline ErrorRecord creationFailure(vrntValuesError_t* error) {
  const OwnedError owned(error);
  if (vrntValuesErrorCode(error) == VRNT_OUT_OF_MEMORY) {
    return ErrorRecord(ErrorCode::MemoryAllocationFailure);
  }
  return ErrorRecord(ErrorCode::InternalError, vrntValuesErrorMessage(error));
}

/// What the parse of a type makes of an error: as creationFailure(), but ParseFailed with the
/// object's message for what the library raised itself.
inline ErrorRecord typeParseFailure(vrntValuesError_t* error) {
  if (vrntValuesErrorCode(error) != VRNT_LIBRARY_ERROR) return creationFailure(error);
  const OwnedError owned(error);
  return ErrorRecord(ErrorCode::ParseFailed, vrntValuesErrorMessage(error));
}

}  // namespace vrnt::detail

#endif
