// The error object of the flat vrnt functions, and the ways into it. The way back to an exception
// is in vornath_data/detail/raise_error.hpp, for hosts and library alike.
#ifndef VORNATH_FOUNDATION_ERROR_OBJECT_HPP
#define VORNATH_FOUNDATION_ERROR_OBJECT_HPP

#include <cstdint>
#include <string>

#include "vornath_data/errors.h"

/// What a flat function stores in its error location. `kind` says what was caught, and isn't a
/// vrnt::ErrorCode.
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

/// The one object for every failed allocation, so that reporting one allocates nothing. It is never
/// written and never ends: any number of threads may hold it.
extern vrntValuesError_t& outOfMemoryError;

/// Allocates an error object and moves `message` into it. Throws std::bad_alloc.
/// Ownership: the caller's, ended with vrntValuesErrorDestroy().
vrntValuesError_t* makeError(std::uint32_t kind, std::string message);

/// Stores a new error object in `location`, or the out-of-memory object if there is no memory for
/// one.
void storeError(vrntValuesError_t** location, std::uint32_t kind, const char* message) noexcept;

}  // namespace qex::vornath

#endif
