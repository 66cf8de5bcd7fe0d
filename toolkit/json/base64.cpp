#include "json/base64.hpp"

#include <array>
#include <cstdint>

namespace vrtk {
namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNone = 0xFF;

constexpr std::array<std::uint8_t, 256> kValues = [] {
  std::array<std::uint8_t, 256> values{};
  for (std::uint8_t& value : values) value = kNone;
  for (std::uint8_t i = 0; i < 64; ++i) values[static_cast<unsigned char>(kDigits[i])] = i;
  return values;
}();

std::uint32_t valueOf(char c) { return kValues[static_cast<unsigned char>(c)]; }

std::size_t paddingOf(std::string_view text) {
  return text.empty() || text.back() != '=' ? 0 : text[text.size() - 2] == '=' ? 2 : 1;
}

// Wide enough to be shifted.
std::uint32_t byteAt(const unsigned char* bytes, std::size_t i) { return bytes[i]; }

}  // namespace

char* writeBase64(char* out, const void* bytes, std::size_t size) {
  const auto* from = static_cast<const unsigned char*>(bytes);
  for (; size >= 3; size -= 3, from += 3) {
    const std::uint32_t word = byteAt(from, 0) << 16U | byteAt(from, 1) << 8U | byteAt(from, 2);
    *out++ = kDigits[word >> 18U];
    *out++ = kDigits[word >> 12U & 63U];
    *out++ = kDigits[word >> 6U & 63U];
    *out++ = kDigits[word & 63U];
  }
  if (size == 0) return out;
  const std::uint32_t word = byteAt(from, 0) << 16U | (size == 2 ? byteAt(from, 1) << 8U : 0U);
  *out++ = kDigits[word >> 18U];
  *out++ = kDigits[word >> 12U & 63U];
  *out++ = size == 2 ? kDigits[word >> 6U & 63U] : '=';
  *out++ = '=';
  return out;
}

std::optional<std::size_t> base64Size(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  const std::size_t padding = paddingOf(text);
  std::uint32_t all = 0;
  for (const char c : text.substr(0, text.size() - padding)) all |= valueOf(c);
  if (all > 63) return std::nullopt;
  // The bits behind the last byte are zero: each text stands for other bytes.
  if (padding != 0) {
    const std::uint32_t last = valueOf(text[text.size() - padding - 1]);
    if ((last & (padding == 2 ? 15U : 3U)) != 0) return std::nullopt;
  }
  return text.size() / 4 * 3 - padding;
}

void readBase64(std::string_view text, void* bytes) {
  auto* to = static_cast<unsigned char*>(bytes);
  const std::size_t padding = paddingOf(text);
  for (std::size_t i = 0; i < text.size(); i += 4) {
    const bool isLast = i + 4 == text.size();
    const std::size_t left = isLast ? 3 - padding : 3;
    const std::uint32_t word = valueOf(text[i]) << 18U | valueOf(text[i + 1]) << 12U |
                               (left > 1 ? valueOf(text[i + 2]) << 6U : 0U) |
                               (left > 2 ? valueOf(text[i + 3]) : 0U);
    *to++ = static_cast<unsigned char>(word >> 16U);
    if (left > 1) *to++ = static_cast<unsigned char>(word >> 8U & 0xFFU);
    if (left > 2) *to++ = static_cast<unsigned char>(word & 0xFFU);
  }
}

}  // namespace vrtk
