/// Conversion of error objects of the flat functions to C++: to an exception, or to the record of a
/// failed Result. Each function here destroys the error object that it takes.
#ifndef VORNATH_DATA_DETAIL_RAISE_ERROR_HPP
#define VORNATH_DATA_DETAIL_RAISE_ERROR_HPP

#include <memory>
#include <new>

#include "vornath_data/errors.h"
#include "vornath_data/result.hpp"

namespace vrnt::detail {

struct ErrorDeleter {
  void operator()(vrntValuesError_t* error) const noexcept { vrntValuesErrorDestroy(error); }
};
struct StringDeleter {
  void operator()(char* string) const noexcept { vrntDestroyString(string); }
};
using OwnedError = std::unique_ptr<vrntValuesError_t, ErrorDeleter>;

/// Throws the error of a read or write of a value: std::bad_alloc if an allocation failed, else an
/// Exception of code UnknownError with the message of the error object.
[[noreturn]] inline void raiseError(vrntValuesError_t* error) {
  const OwnedError owned(error);
  if (vrntValuesErrorCode(error) == VRNT_OUT_OF_MEMORY) throw std::bad_alloc();
  throw Exception(ErrorCode::UnknownError, vrntValuesErrorMessage(error));
}

/// Returns the error of the creation of a value: MemoryAllocationFailure without a message if an
/// allocation failed, else InternalError with the message of the error object.
inline ErrorRecord creationFailure(vrntValuesError_t* error) {
  const OwnedError owned(error);
  if (vrntValuesErrorCode(error) == VRNT_OUT_OF_MEMORY) {
    return ErrorRecord(ErrorCode::MemoryAllocationFailure);
  }
  return ErrorRecord(ErrorCode::InternalError, vrntValuesErrorMessage(error));
}

/// Returns the error of the parse of a type: ParseFailed with the message of the error object if
/// the library itself raised it, else as creationFailure().
inline ErrorRecord typeParseFailure(vrntValuesError_t* error) {
  if (vrntValuesErrorCode(error) != VRNT_LIBRARY_ERROR) return creationFailure(error);
  const OwnedError owned(error);
  return ErrorRecord(ErrorCode::ParseFailed, vrntValuesErrorMessage(error));
}

}  // namespace vrnt::detail

#endif
