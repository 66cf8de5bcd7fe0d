// How the toolkit reports failures inside, and what turns them into error objects at its boundary.
#ifndef VORNATH_TOOLKIT_FOUNDATION_FAILURE_HPP
#define VORNATH_TOOLKIT_FOUNDATION_FAILURE_HPP

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "vornath_toolkit/vrtk_error.h"

namespace vrtk {

/// A failure with a status code and a message: what happened, where, and what to do.
class Failure : public std::exception {
 public:
  Failure(std::uint32_t status, std::string message)
      : status_(status), message_(std::move(message)) {}

  std::uint32_t status() const noexcept { return status_; }
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  std::uint32_t status_;
  std::string message_;
};

/// Turns the exception that is being handled into a status, and into an error object if `error` is
/// not null. To be called in a catch clause.
std::uint32_t reportCaught(vrtkError** error) noexcept;

/// Runs the work of a flat function. Returns VRTK_OK, or the status of what the work threw.
template <typename Work>
std::uint32_t guarded(vrtkError** error, Work&& work) noexcept {
  try {
    std::forward<Work>(work)();
    return VRTK_OK;
  } catch (...) {
    return reportCaught(error);
  }
}

/// Throws VRTK_INVALID_ARGUMENT if a pointer is null. `name` is that of the argument.
void requireArgument(const void* pointer, const char* function, const char* name);

/// Copies a text for the caller, who frees it with vrtkStringDestroy(). Throws std::bad_alloc.
char* copyString(const std::string& text);

}  // namespace vrtk

#endif
