#include "json/text.hpp"

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace vrtk {
namespace {

// Returns the length of the UTF-8 sequence that the text starts with, or 0 if it starts with none.
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [text](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  const auto follows = [&byte](std::size_t i, unsigned low = 0x80, unsigned high = 0xBF) {
    return byte(i) >= low && byte(i) <= high;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) return follows(1) ? 2 : 0;
  if (first >= 0xE0 && first <= 0xEF) {
    const bool second = first == 0xE0   ? follows(1, 0xA0)
                        : first == 0xED ? follows(1, 0x80, 0x9F)
                                        : follows(1);
    return second && follows(2) ? 3 : 0;
  }
  if (first >= 0xF0 && first <= 0xF4) {
    const bool second = first == 0xF0   ? follows(1, 0x90)
                        : first == 0xF4 ? follows(1, 0x80, 0x8F)
                                        : follows(1);
    return second && follows(2) && follows(3) ? 4 : 0;
  }
  return 0;
}

}  // namespace

void appendJsonString(std::string& out, std::string_view text, LineFeeds lineFeeds) {
  out += '"';
  while (!text.empty()) {
    const char c = text.front();
    const std::size_t length = sequenceLength(text);
    if (length == 0) {
      out += "\xEF\xBF\xBD";
    } else if (length > 1) {
      out += text.substr(0, length);
    } else if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (lineFeeds == LineFeeds::Short && (c == '\n' || c == '\t' || c == '\r')) {
      out += c == '\n' ? "\\n" : c == '\t' ? "\\t" : "\\r";
    } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      fmt::format_to(std::back_inserter(out), "\\u{:04x}", static_cast<unsigned>(c));
    } else {
      out += c;
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  out += '"';
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    // Most texts are ASCII.
    while (text.size() >= sizeof(std::uint64_t)) {
      std::uint64_t word = 0;
      std::memcpy(&word, text.data(), sizeof(word));
      if ((word & 0x8080808080808080U) != 0) break;
      text.remove_prefix(sizeof(word));
    }
    if (text.empty()) break;
    const std::size_t length = sequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace vrtk
