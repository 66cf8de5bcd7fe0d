// The error object of the flat vrnt functions, and the functions that create it. The conversion
// back to an exception is in vornath_data/detail/raise_error.hpp, for hosts and for the library.
#ifndef VORNATH_FOUNDATION_ERROR_OBJECT_HPP
#define VORNATH_FOUNDATION_ERROR_OBJECT_HPP

#include <cstdint>
#include <string>

#include "vornath_data/errors.h"

/// The object that a flat function stores in its error out-parameter. `kind` says what was caught;
/// it is not a vrnt::ErrorCode.
struct vrntValuesError_t {
  std::uint32_t kind;
  std::string message;
};

namespace qex::vornath {

/// The kinds of an error object, as vrntValuesErrorCode() returns them.
enum ErrorKind : std::uint32_t {
  LibraryError = VRNT_LIBRARY_ERROR,
  OutOfMemory = VRNT_OUT_OF_MEMORY,
  OtherError = VRNT_OTHER_ERROR
};

/// The one object for all failed allocations, so that reporting one allocates nothing. It is never
/// written and never destroyed, so any number of threads may hold it.
extern vrntValuesError_t& outOfMemoryError;

/// Allocates an error object and moves `message` into it.
/// Ownership: the caller releases the object with vrntValuesErrorDestroy().
/// Errors: throws std::bad_alloc.
vrntValuesError_t* makeError(std::uint32_t kind, std::string message);

/// Stores a new error object in `location`, or the out-of-memory object if memory runs out.
void storeError(vrntValuesError_t** location, std::uint32_t kind, const char* message) noexcept;

}  // namespace qex::vornath

#endif
