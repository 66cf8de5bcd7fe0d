/// The words of a VornathValuesAssertionFailure: which function was given what.
#ifndef VORNATH_DATA_DETAIL_WRONG_KIND_HPP
#define VORNATH_DATA_DETAIL_WRONG_KIND_HPP

#include <cstddef>
#include <cstring>
#include <string_view>

#include "vornath_data/result.hpp"

namespace vrnt::detail {

/// How much of a text is shown in words about it: 120 bytes at most, and no character of several
/// bytes in part.
inline std::size_t shownLength(std::string_view text) noexcept {
  constexpr std::size_t kMost = 120;
  if (text.size() <= kMost) return text.size();
  std::size_t length = kMost;
  while (length != 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) --length;
  return length;
}

/// What is thrown in place of a bare VornathValuesAssertionFailure, and caught as one: its what()
/// is "FUNCTION: takes WHAT, was given KIND" and a text, as in "vrntTypeFieldType: takes a struct
/// or a function, was given the enum { A; }". A long text is cut, and "..." stands for the rest.
/// The words lie in the exception itself: they allocate nothing. `kind` ends where the text begins,
/// with a blank in it.
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
