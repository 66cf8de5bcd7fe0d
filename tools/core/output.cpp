#include "core/output.hpp"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "core/trouble.hpp"

namespace vrn {
namespace {

constexpr std::size_t kBufferSize = 64 * 1024;

// Returns 0 or the number of the error.
int writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return count == 0 ? EIO : errno;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

const char* remedyOf(int reason) {
  switch (reason) {
    case ENOSPC:
    case EDQUOT:
      return "make room and run the command again";
    case EBADF:
      return "it is closed; redirect it to a file or to /dev/null";
    default:
      return "check where it leads to";
  }
}

}  // namespace

void Output::write(std::string_view text) {
  if (buffer_.size() + text.size() < kBufferSize) {
    buffer_ += text;
    return;
  }
  const std::string held = std::move(buffer_);
  buffer_.clear();
  send(held);
  if (text.size() < kBufferSize) {
    buffer_ = text;
  } else {
    send(text);
  }
}

void Output::finish() {
  const std::string held = std::move(buffer_);
  buffer_.clear();
  send(held);
}

void Output::send(std::string_view bytes) {
  const int reason = writeAll(STDOUT_FILENO, bytes);
  if (reason == EPIPE) throw ReaderGone{};
  if (reason != 0) {
    throw Trouble(std::string("standard output: it cannot be written: ") + std::strerror(reason) +
                  "; " + remedyOf(reason));
  }
}

void openStandardStreams() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) continue;
    // The wrong direction on purpose: using it is an error. The lowest free descriptor is this one.
    open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

void tell(std::string_view text) { writeAll(STDERR_FILENO, text); }

bool isTerminal(int descriptor) { return isatty(descriptor) == 1; }

std::size_t terminalColumns() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col >= 40) return size.ws_col;
  return 100;
}

}  // namespace vrn
