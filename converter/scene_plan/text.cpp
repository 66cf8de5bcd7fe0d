#include "scene_plan/text.hpp"

#include <cstdint>
#include <cstdio>

namespace vrn_convert {
namespace {

// The bytes of the character at a place; 0 if there is none.
std::size_t characterAt(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) {
    return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0U;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  const std::size_t length = first >= 0xc2 && first < 0xe0   ? 2
                             : first >= 0xe0 && first < 0xf0 ? 3
                             : first >= 0xf0 && first < 0xf5 ? 4
                                                             : 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0U) != 0x80U) return 0;
  }
  const unsigned second = byte(1);
  // Longer forms than needed, surrogates, and what is behind U+10FFFF.
  if ((first == 0xe0 && second < 0xa0) || (first == 0xed && second >= 0xa0) ||
      (first == 0xf0 && second < 0x90) || (first == 0xf4 && second >= 0x90)) {
    return 0;
  }
  return length;
}

}  // namespace

std::string asUtf8(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = characterAt(text, at);
    if (length == 0) {
      result += "\xef\xbf\xbd";
      ++at;
    } else {
      result += text.substr(at, length);
      at += length;
    }
  }
  return result;
}

std::string jsonString(std::string_view text) {
  std::string result = "\"";
  for (const char c : asUtf8(text)) {
    if (c == '"' || c == '\\') {
      result += '\\';
      result += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
      result += escaped;
    } else {
      result += c;
    }
  }
  return result + "\"";
}

}  // namespace vrn_convert
