/// The message of a VornathValuesAssertionFailure, which names the function and what it was given.
#ifndef VORNATH_DATA_DETAIL_WRONG_KIND_HPP
#define VORNATH_DATA_DETAIL_WRONG_KIND_HPP

#include <cstddef>
#include <cstring>
#include <string_view>

#include "vornath_data/result.hpp"

namespace vrnt::detail {

/// Returns how many bytes of a text a message shows: at most 120, without splitting a multibyte
/// character.
inline std::size_t shownLength(std::string_view text) noexcept {
  constexpr std::size_t kMost = 120;
  if (text.size() <= kMost) return text.size();
  std::size_t length = kMost;
  while (length != 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) --length;
  return length;
}

/// The exception that the library throws as a VornathValuesAssertionFailure. what() returns
/// "FUNCTION: takes WHAT, was given KIND" followed by a text, for example "vrntTypeFieldType: takes
/// a struct or a function, was given the enum { A; }". A long text is cut and ends with "...". The
/// message is stored in the exception itself, so no memory is allocated. The text follows
/// `kind` directly, so `kind` must include the space between them.
class WrongKind final : public VornathValuesAssertionFailure {
 public:
  WrongKind(std::string_view function, std::string_view takes, std::string_view kind,
            std::string_view text) noexcept {
    add(function);
    add(": takes ");
    add(takes);
    add(", was given ");
    add(kind);
    add(text.substr(0, shownLength(text)));
    if (shownLength(text) < text.size()) add("...");
  }

  const char* what() const noexcept override { return words_; }

 private:
  void add(std::string_view piece) noexcept {
    const std::size_t room = sizeof(words_) - 1 - length_;
    const std::size_t added = piece.size() < room ? piece.size() : room;
    if (added != 0) std::memcpy(words_ + length_, piece.data(), added);
    length_ += added;
  }

  std::size_t length_ = 0;
  char words_[320] = {};
};

}  // namespace vrnt::detail

#endif
