/// The scanner's run over one text. Its state is global to the process, so whoever makes one holds
/// parser_mutex for as long as it lives.
#ifndef VORNATH_LANGUAGE_SCANNER_HPP
#define VORNATH_LANGUAGE_SCANNER_HPP

#include <string>

namespace qex::vornath {

class Scan {
 public:
  /// The language of a text: its start token is the first one that the scanner answers.
  enum class Language { None, Type, Value };

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
