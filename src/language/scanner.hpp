/// Points the scanner at one text. The scanner's state is global to the process: hold parser_mutex
/// for the lifetime of a Scan.
#ifndef VORNATH_LANGUAGE_SCANNER_HPP
#define VORNATH_LANGUAGE_SCANNER_HPP

#include <cstddef>
#include <limits>
#include <string>

namespace qex::vornath {

class Scan {
 public:
  /// The language of a text, which determines the first token that the scanner returns.
  enum class Language { None, Type, Value };

  /// The generated scanner counts in `int`. It would stop early in a longer text, or overflow the
  /// length of a name.
  static constexpr std::size_t kMaxTextLength = std::numeric_limits<int>::max() - 2;

  /// Throws std::bad_alloc for a length above kMaxTextLength, as if there were no memory.
  static void requireScannable(std::size_t length);

  /// Copies the text. Throws std::bad_alloc.
  Scan(const std::string& text, Language language);
  Scan(const Scan&) = delete;
  Scan& operator=(const Scan&) = delete;
  ~Scan();

 private:
  std::string buffer_;
};

}  // namespace qex::vornath

#endif
