/// The scanner's run over one text. Its state is global to the process, so whoever makes one holds
/// parser_mutex for as long as it lives.
#ifndef VORNATH_LANGUAGE_SCANNER_HPP
#define VORNATH_LANGUAGE_SCANNER_HPP

#include <cstddef>
#include <limits>
#include <string>

namespace qex::vornath {

class Scan {
 public:
  /// The language of a text: its start token is the first one that the scanner answers.
  enum class Language { None, Type, Value };

  /// The generated scanner counts in `int`. A longer text would end early for it, or lose the
  /// length of a name.
  static constexpr std::size_t kLongestText = std::numeric_limits<int>::max() - 2;

  /// Throws std::bad_alloc for a text of a length beyond that: it is as if there were no memory.
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
