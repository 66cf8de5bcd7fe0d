// How the toolkit reports failures inside, and what turns them into error objects at its boundary.
#ifndef VORNATH_TOOLKIT_FOUNDATION_FAILURE_HPP
#define VORNATH_TOOLKIT_FOUNDATION_FAILURE_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "vornath_toolkit/vrtk_error.h"

namespace vrtk {

/// A failure with a status code and a message: what happened, where, and what to do.
class Failure : public std::exception {
 public:
  Failure(std::uint32_t status, std::string message)
      : status_(status), message_(std::move(message)) {}
  Failure(std::uint32_t status, std::string message, const vrtkTextPlace& place)
      : status_(status), message_(std::move(message)), place_(place) {}

  std::uint32_t status() const noexcept { return status_; }
  const std::optional<vrtkTextPlace>& place() const noexcept { return place_; }
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  std::uint32_t status_;
  std::string message_;
  std::optional<vrtkTextPlace> place_;
};

/// Returns the place of a byte in a text. `offset` is at most the text's length.
vrtkTextPlace placeIn(std::string_view text, std::size_t offset);

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

/// Copies the options that a caller of this or of another version gave over the default ones.
template <typename Options>
void readOptions(const Options* given, Options& options) {
  if (given == nullptr) return;
  const std::uint64_t size = given->structSize;
  std::memcpy(&options, given,
              size < sizeof(options) ? static_cast<std::size_t>(size) : sizeof(options));
}

/// Throws VRTK_INVALID_ARGUMENT if a pointer is null. `name` is that of the argument.
void requireArgument(const void* pointer, const char* function, const char* name);

/// Copies a text for the caller, who frees it with vrtkStringDestroy(). Throws std::bad_alloc.
char* copyString(const std::string& text);

}  // namespace vrtk

#endif
