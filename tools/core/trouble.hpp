// What keeps a command from doing its work.
#ifndef VRN_CORE_TROUBLE_HPP
#define VRN_CORE_TROUBLE_HPP

#include <exception>
#include <string>
#include <utility>

namespace vrn {

/// What a command found, as exit codes. `Same` also stands for done.
enum ExitCode : int { kSame = 0, kFound = 1, kTrouble = 2 };

/// Ends a command with exit code 2. The message is one line, `FILE: what happened; what to do`.
class Trouble : public std::exception {
 public:
  explicit Trouble(std::string message) : message_(std::move(message)) {}
  /// As above, with lines that follow the message on standard error.
  Trouble(std::string message, std::string more)
      : message_(std::move(message)), more_(std::move(more)) {}
  const char* what() const noexcept override { return message_.c_str(); }
  const std::string& more() const noexcept { return more_; }

 private:
  std::string message_;
  std::string more_;
};

/// Thrown when the reader of standard output has gone, as `head` does. The command ends quietly.
struct ReaderGone {};

}  // namespace vrn

#endif
