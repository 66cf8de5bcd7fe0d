// Standard output, standard error, and what a terminal shows.
#ifndef VRN_CORE_OUTPUT_HPP
#define VRN_CORE_OUTPUT_HPP

#include <cstddef>
#include <string>
#include <string_view>

namespace vrn {

/// Standard output with a buffer. A command calls finish() at its end, so that no error of the
/// device goes unseen.
class Output {
 public:
  Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Throws Trouble for an error of the device, and ReaderGone for a pipe without a reader.
  void write(std::string_view text);
  Output& operator<<(std::string_view text) {
    write(text);
    return *this;
  }
  /// Writes what is in the buffer. Throws as write().
  void finish();

 private:
  void send(std::string_view bytes);

  std::string buffer_;
};

/// Makes sure that the descriptors 0 to 2 are open, so that no file of this process takes their
/// place. A write to one that was closed reports an error.
void openStandardStreams();

/// Writes to standard error. Errors of it are nobody's concern.
void tell(std::string_view text);

bool isTerminal(int descriptor);

/// Returns the columns of the terminal, 100 if there is none.
std::size_t terminalColumns();

}  // namespace vrn

#endif
