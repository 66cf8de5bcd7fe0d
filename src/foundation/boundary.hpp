// The catch clauses of the flat vrnt functions. A flat function writes no `try` of its own: it runs
// its work inside the template whose name says what the function's callers get to see. Each takes
// the error location if the function has one, the value to return on failure and the work; a work
// without a result goes without a failure value. On success the location isn't touched.
//
// The templates differ on purpose: which function reports one failure as which kind is part of the
// interface that hosts rely on.
#ifndef VORNATH_FOUNDATION_BOUNDARY_HPP
#define VORNATH_FOUNDATION_BOUNDARY_HPP

#include <exception>
#include <new>
#include <type_traits>
#include <utility>

#include "foundation/error_object.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {

/// Reports a vrnt::Exception as LibraryError with its words, a failed allocation as the
/// out-of-memory object, and anything else as OtherError with "Unknown error.", whatever it says of
/// itself.
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

/// Reports a vrnt::Exception as LibraryError with its words, a failed allocation as the
/// out-of-memory object, another std::exception as OtherError with its words, and anything else as
/// OtherError with "Unknown error.".
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

/// Reports a failed allocation as the out-of-memory object and every other std::exception, a
/// vrnt::Exception among them, as OtherError with its words. Anything else passes through.
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

/// reportOutOfMemoryOrOther() for a work without a result.
template <typename Work>
requires std::is_void_v<std::invoke_result_t<Work>>
void reportOutOfMemoryOrOther(vrntValuesError_t** error, Work&& work) {
  reportOutOfMemoryOrOther(error, false, [&] {
    std::forward<Work>(work)();
    return true;
  });
}

/// Answers `failure` for everything that is thrown: for a function that reports no more than that
/// it failed.
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
