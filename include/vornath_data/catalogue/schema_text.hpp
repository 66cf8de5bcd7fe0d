/// Schema texts that are joined from fragments at compile time.
#ifndef VORNATH_DATA_CATALOGUE_SCHEMA_TEXT_HPP
#define VORNATH_DATA_CATALOGUE_SCHEMA_TEXT_HPP

#include <cstddef>

namespace vrnt::detail {

/// A text of a fixed length with its terminating NUL.
template <std::size_t Length>
struct SchemaText {
  char text[Length + 1] = {};

  constexpr operator const char*() const { return text; }  // NOLINT(google-explicit-constructor)
};

template <std::size_t Length, std::size_t Size>
constexpr void appendText(SchemaText<Length>& joined, std::size_t& end, const char (&part)[Size]) {
  for (std::size_t i = 0; i + 1 < Size; ++i) joined.text[end++] = part[i];
}

/// Joins literals and fragments, all of them arrays that end in a NUL.
template <std::size_t... Sizes>
constexpr auto joinText(const char (&... parts)[Sizes]) {
  SchemaText<(0 + ... + (Sizes - 1))> joined;
  std::size_t end = 0;
  (appendText(joined, end, parts), ...);
  return joined;
}

}  // namespace vrnt::detail

#endif
