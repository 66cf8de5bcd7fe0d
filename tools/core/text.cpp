#include "core/text.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <numeric>

namespace vrn {
namespace {

// Returns the length of the UTF-8 sequence at the start of a text, 0 if it is none.
std::size_t sequence(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  if (first < 0x80) return 1;
  std::size_t length = 0;
  std::uint32_t code = 0;
  if (first >= 0xC2 && first <= 0xDF) {
    length = 2;
    code = first & 0x1FU;
  } else if (first >= 0xE0 && first <= 0xEF) {
    length = 3;
    code = first & 0x0FU;
  } else if (first >= 0xF0 && first <= 0xF4) {
    length = 4;
    code = first & 0x07U;
  }
  if (length == 0 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80) return 0;
    code = code << 6U | (byte(i) & 0x3FU);
  }
  const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  if (overlong || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF) return 0;
  return length;
}

// Returns true for the controls that UTF-8 writes in two bytes, which some terminals obey.
bool isControl(std::string_view sequence) {
  const auto first = static_cast<unsigned char>(sequence[0]);
  if (sequence.size() == 1) return first < 0x20 || first == 0x7F;
  return sequence.size() == 2 && first == 0xC2 && static_cast<unsigned char>(sequence[1]) < 0xA0;
}

std::string escaped(std::string_view text, std::string_view kept) {
  std::string out;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = sequence(text.substr(i));
    const std::string_view part = text.substr(i, std::max<std::size_t>(length, 1));
    i += part.size();
    if (length == 0) {
      out += "\xEF\xBF\xBD";
    } else if (!isControl(part) || kept.find(part) != std::string_view::npos) {
      out += part;
    } else if (part == "\n") {
      out += "\\n";
    } else if (part == "\t") {
      out += "\\t";
    } else if (part == "\r") {
      out += "\\r";
    } else {
      std::array<char, 8> code{};
      std::snprintf(code.data(), code.size(), "\\x%02x",
                    static_cast<unsigned>(static_cast<unsigned char>(part.back())));
      out += code.data();
    }
  }
  return out;
}

// The number of changed, added, left out and exchanged characters between two words.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before(b.size() + 1);
  std::vector<std::size_t> above(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(above.begin(), above.end(), 0U);
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
      row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + change});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        row[j] = std::min(row[j], before[j - 2] + 1);
      }
    }
    before.swap(above);
    above.swap(row);
  }
  return above[b.size()];
}

}  // namespace

std::string oneLine(std::string_view text) { return escaped(text, ""); }

std::string printable(std::string_view text) { return escaped(text, "\n\t"); }

std::string grouped(std::uint64_t number) {
  const std::string digits = std::to_string(number);
  std::string text;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i != 0 && (digits.size() - i) % 3 == 0) text += ',';
    text += digits[i];
  }
  return text;
}

std::string counted(std::uint64_t count, std::string_view noun) {
  return grouped(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::string sizeText(std::uint64_t bytes) {
  constexpr std::array<const char*, 7> kUnits = {"bytes", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  if (bytes == 1) return "1 byte";
  auto value = static_cast<double>(bytes);
  std::size_t unit = 0;
  while (value >= 1023.95 && unit + 1 < kUnits.size()) {
    value /= 1024;
    ++unit;
  }
  if (unit == 0) return std::to_string(bytes) + " bytes";
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f %s", value, kUnits[unit]);
  return text.data();
}

std::string numberText(float value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
  std::array<char, 64> text{};
  char* const last = text.data() + text.size();
  const float magnitude = std::abs(value);
  // The shortest text of 0.0001 would be 1e-04, which takes longer to read.
  const bool plain = magnitude >= 1e-4F && magnitude < 1e9F;
  const char* const end =
      plain ? std::to_chars(text.data(), last, value, std::chars_format::fixed).ptr
            : std::to_chars(text.data(), last, value).ptr;
  return std::string(static_cast<const char*>(text.data()), end);
}

std::string roundedText(double value, int digits) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.*g", digits, value);
  return text.data();
}

std::string jsonNumber(float value) { return std::isfinite(value) ? numberText(value) : "null"; }

std::string jsonString(std::string_view text) {
  std::string out = "\"";
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = sequence(text.substr(i));
    const std::string_view part = text.substr(i, std::max<std::size_t>(length, 1));
    i += part.size();
    const auto first = static_cast<unsigned char>(part[0]);
    if (length == 0) {
      out += "\xEF\xBF\xBD";
    } else if (part == "\"" || part == "\\") {
      out += "\\";
      out += part;
    } else if (part == "\n") {
      out += "\\n";
    } else if (part == "\t") {
      out += "\\t";
    } else if (first < 0x20) {
      std::array<char, 8> code{};
      std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned>(first));
      out += code.data();
    } else {
      out += part;
    }
  }
  return out + "\"";
}

std::string oneLineJson(std::string_view json) {
  std::string out;
  for (std::size_t i = 0; i < json.size(); ++i) {
    // A line feed is never part of a JSON string.
    if (json[i] != '\n') {
      out += json[i];
      continue;
    }
    while (i + 1 < json.size() && json[i + 1] == ' ') ++i;
    if (i + 1 < json.size() && !out.empty() && out.back() != ' ') out += ' ';
  }
  return out;
}

std::size_t width(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
  }));
}

void append(std::string& to, std::initializer_list<std::string_view> parts) {
  for (const std::string_view part : parts) to += part;
}

std::string padded(std::string_view text, std::size_t columns) {
  std::string out(text);
  const std::size_t taken = width(text);
  if (taken < columns) out.append(columns - taken, ' ');
  return out;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t columns) {
  std::vector<std::string> lines;
  std::string line;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t start = text.find_first_not_of(" \n", i);
    if (start == std::string_view::npos) break;
    const std::size_t end = std::min(text.find_first_of(" \n", start), text.size());
    const std::string_view word = text.substr(start, end - start);
    if (!line.empty() && width(line) + 1 + width(word) > columns) {
      lines.push_back(line);
      line.clear();
    }
    if (!line.empty()) line += ' ';
    line += word;
    i = end;
  }
  if (!line.empty()) lines.push_back(line);
  return lines;
}

std::string nearest(std::string_view word, const std::vector<std::string>& words) {
  // A word may be wrong in a third of its characters.
  const std::size_t most = std::max<std::size_t>(word.size() / 3, 1);
  std::string best;
  std::size_t least = 0;
  for (const std::string& candidate : words) {
    const std::size_t apart = distance(word, candidate);
    const bool unfinished = word.size() >= 3 && candidate.compare(0, word.size(), word) == 0;
    if (apart > most && !unfinished) continue;
    if (best.empty() || apart < least) {
      least = apart;
      best = candidate;
    }
  }
  return best;
}

std::string suggestion(std::string_view word, const std::vector<std::string>& words) {
  const std::string near = nearest(word, words);
  return near.empty() ? "" : "; did you mean " + near + "?";
}

std::string shellWord(std::string_view word) {
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_@%+=:,./-";
  if (!word.empty() && word.find_first_not_of(kPlain) == std::string_view::npos) {
    return std::string(word);
  }
  std::string out = "'";
  for (const char c : word) {
    if (c == '\'') out += "'\\'";
    out += c;
  }
  return out + "'";
}

}  // namespace vrn
