// The catch clauses of the flat vrnt functions. A flat function has no `try` of its own: it runs
// its work inside one of these templates, whose name says what the callers of the function get to
// see. Each template takes the error out-parameter, if the function has one, the value to return on
// failure, and the work. Work without a result needs no value for failure. On success, the error
// out-parameter is left unchanged.
//
// The templates differ on purpose: which function reports a failure as which kind of error is part
// of the interface that hosts rely on.
#ifndef VORNATH_FOUNDATION_BOUNDARY_HPP
#define VORNATH_FOUNDATION_BOUNDARY_HPP

#include <exception>
#include <new>
#include <type_traits>
#include <utility>

#include "foundation/error_object.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {

/// Reports a vrnt::Exception as LibraryError with its message, a failed allocation as the
/// out-of-memory object, and anything else as OtherError with "Unknown error.", even if it has a
/// message of its own.
template <typename Work>
std::invoke_result_t<Work> reportLibraryErrorsOrUnknown(vrntValuesError_t** error,
                                                        std::invoke_result_t<Work> failure,
                                                        Work&& work) {
  try {
    return std::forward<Work>(work)();
  } catch (const vrnt::Exception& caught) {
    storeError(error, LibraryError, caught.what());
  } catch (const std::bad_alloc&) {
    *error = &outOfMemoryError;
  } catch (...) {
    storeError(error, OtherError, "Unknown error.");
  }
  return failure;
}

/// Reports a vrnt::Exception as LibraryError with its message, a failed allocation as the
/// out-of-memory object, another std::exception as OtherError with its message, and anything else
/// as OtherError with "Unknown error.".
template <typename Work>
std::invoke_result_t<Work> reportEveryError(vrntValuesError_t** error,
                                            std::invoke_result_t<Work> failure, Work&& work) {
  try {
    return std::forward<Work>(work)();
  } catch (const vrnt::Exception& caught) {
    storeError(error, LibraryError, caught.what());
  } catch (const std::bad_alloc&) {
    *error = &outOfMemoryError;
  } catch (const std::exception& caught) {
    storeError(error, OtherError, caught.what());
  } catch (...) {
    storeError(error, OtherError, "Unknown error.");
  }
  return failure;
}

/// Reports a failed allocation as the out-of-memory object, and every other std::exception,
/// including vrnt::Exception, as OtherError with its message. Anything else passes through.
template <typename Work>
std::invoke_result_t<Work> reportOutOfMemoryOrOther(vrntValuesError_t** error,
                                                    std::invoke_result_t<Work> failure,
                                                    Work&& work) {
  try {
    return std::forward<Work>(work)();
  } catch (const std::bad_alloc&) {
    *error = &outOfMemoryError;
  } catch (const std::exception& caught) {
    storeError(error, OtherError, caught.what());
  }
  return failure;
}

/// Does the same for work without a result.
template <typename Work>
requires std::is_void_v<std::invoke_result_t<Work>>
void reportOutOfMemoryOrOther(vrntValuesError_t** error, Work&& work) {
  reportOutOfMemoryOrOther(error, false, [&] {
    std::forward<Work>(work)();
    return true;
  });
}

/// Returns `failure` if anything is thrown. For functions that report only that they failed.
template <typename Work>
std::invoke_result_t<Work> reportFailureAs(std::invoke_result_t<Work> failure,
                                           Work&& work) noexcept {
  try {
    return std::forward<Work>(work)();
  } catch (...) {
    return failure;
  }
}

}  // namespace qex::vornath

#endif
