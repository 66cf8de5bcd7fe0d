#include "json/numbers.hpp"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <system_error>

#include "foundation/half.hpp"

namespace vrtk {
namespace {

constexpr std::uint32_t kFloatNan = 0x7FC00000;
constexpr std::uint16_t kHalfNan = 0x7E00;

char* append(char* out, std::string_view text) {
  std::memcpy(out, text.data(), text.size());
  return out + text.size();
}

char* appendHex(char* out, std::uint32_t bits, int digits) {
  for (int i = digits; i-- > 0;) *out++ = "0123456789abcdef"[(bits >> (4 * i)) & 15U];
  return out;
}

std::optional<std::uint32_t> readHex(std::string_view text, std::size_t digits) {
  if (text.size() != digits) return std::nullopt;
  std::uint32_t bits = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), bits, 16);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  return bits;
}

// Adds ".0" to a text without a point and an exponent.
char* withPoint(char* start, char* end) {
  for (const char* c = start; c != end; ++c) {
    if (*c == '.' || *c == 'e') return end;
  }
  return append(end, ".0");
}

// The power of ten of the first digit that is not zero; a large negative number if all are.
std::int64_t magnitude(std::string_view text) {
  constexpr std::int64_t kZero = std::numeric_limits<std::int64_t>::min() / 2;
  const std::size_t e = text.find_first_of("eE");
  const std::string_view mantissa = text.substr(0, e);
  std::int64_t exponent = 0;
  if (e != std::string_view::npos) {
    std::string_view digits = text.substr(e + 1);
    if (!digits.empty() && digits.front() == '+') digits.remove_prefix(1);
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
    if (result.ec != std::errc()) exponent = digits.front() == '-' ? kZero / 2 : -(kZero / 2);
  }
  const std::size_t first = mantissa.find_first_of("123456789");
  if (first == std::string_view::npos) return kZero;
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  return exponent + static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first) -
         (first < point ? 1 : 0);
}

std::uint32_t bitsOf(float number) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &number, sizeof(bits));
  return bits;
}

// Rounds to the nearest half, ties to even. Nothing if it is too large.
std::optional<std::uint16_t> toHalf(double number) {
  const bool negative = std::signbit(number);
  const double magnitude = std::fabs(number);
  // Halves below 2^-14 have steps of 2^-24, others of 2^-10 of their power of two.
  int exponent = 0;
  std::frexp(magnitude, &exponent);
  const int power = magnitude < std::ldexp(1.0, -14) ? -24 : exponent - 11;
  const double steps = std::nearbyint(std::ldexp(magnitude, -power));
  const double rounded = std::ldexp(steps, power);
  if (rounded > 65504.0) return std::nullopt;
  std::uint16_t bits = 0;
  if (rounded < std::ldexp(1.0, -14)) {
    bits = static_cast<std::uint16_t>(std::ldexp(rounded, 24));
  } else {
    const double fraction = std::frexp(rounded, &exponent);  // 0.5 up to 1
    bits = static_cast<std::uint16_t>(((exponent + 14) << 10) +
                                      static_cast<int>(std::ldexp(fraction, 11)) - 0x400);
  }
  return static_cast<std::uint16_t>(negative ? bits | 0x8000U : bits);
}

}  // namespace

char* writeFloat(char* out, std::uint32_t bits) {
  float number = 0;
  std::memcpy(&number, &bits, sizeof(number));
  if ((bits & 0x7F800000U) == 0x7F800000U) {
    if (bits == kFloatNan) return append(out, "\"nan\"");
    if ((bits & 0x7FFFFFU) == 0) return append(out, number < 0 ? "\"-inf\"" : "\"inf\"");
    return append(appendHex(append(out, "\"nan:"), bits, 8), "\"");
  }
  // Small whole numbers are frequent.
  if (std::fabs(number) < 100000.0F && bits != 0x80000000U) {
    const auto whole = static_cast<std::int32_t>(number);
    if (static_cast<float>(whole) == number) return append(writeInt(out, whole), ".0");
  }
  return withPoint(out, std::to_chars(out, out + kLongestNumber, number).ptr);
}

char* writeHalf(char* out, std::uint16_t bits) {
  if ((bits & 0x7C00U) == 0x7C00U) {
    if (bits == kHalfNan) return append(out, "\"nan\"");
    if ((bits & 0x3FFU) == 0) return append(out, (bits & 0x8000U) != 0 ? "\"-inf\"" : "\"inf\"");
    return append(appendHex(append(out, "\"nan:"), bits, 4), "\"");
  }
  const float number = halfToFloat(bits);
  constexpr int kMostDigits = 5;
  for (int digits = 1;; ++digits) {
    char* const end =
        std::to_chars(out, out + kLongestNumber, number, std::chars_format::general, digits).ptr;
    std::uint16_t back = 0;
    if (digits == kMostDigits ||
        (readHalf({out, static_cast<std::size_t>(end - out)}, back) == NumberFault::None &&
         back == bits)) {
      return withPoint(out, end);
    }
  }
}

char* writeInt(char* out, std::int32_t number) {
  return std::to_chars(out, out + kLongestNumber, number).ptr;
}

char* writeUnsigned(char* out, std::uint64_t number) {
  return std::to_chars(out, out + kLongestNumber, number).ptr;
}

char* writeBool(char* out, std::uint32_t word) {
  if (word == 0) return append(out, "false");
  if (word == std::numeric_limits<std::uint32_t>::max()) return append(out, "true");
  return append(appendHex(append(out, "\"bool:"), word, 8), "\"");
}

NumberFault readFloat(std::string_view text, std::uint32_t& bits) {
  float number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec == std::errc::result_out_of_range) {
    if (magnitude(text) > 0) return NumberFault::OutOfRange;
    number = text.front() == '-' ? -0.0F : 0.0F;
  } else if (result.ec != std::errc()) {
    return NumberFault::WrongKind;
  }
  if (std::isinf(number)) return NumberFault::OutOfRange;
  bits = bitsOf(number);
  return NumberFault::None;
}

NumberFault readHalf(std::string_view text, std::uint16_t& bits) {
  double number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec == std::errc::result_out_of_range) {
    if (magnitude(text) > 0) return NumberFault::OutOfRange;
    number = text.front() == '-' ? -0.0 : 0.0;
  } else if (result.ec != std::errc()) {
    return NumberFault::WrongKind;
  }
  const auto half = toHalf(number);
  if (!half) return NumberFault::OutOfRange;
  bits = *half;
  return NumberFault::None;
}

NumberFault readInt(std::string_view text, std::int64_t min, std::int64_t max,
                    std::int64_t& number) {
  if (text.find_first_of(".eE") != std::string_view::npos) return NumberFault::WrongKind;
  std::int64_t read = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), read);
  if (result.ec == std::errc::result_out_of_range) return NumberFault::OutOfRange;
  if (result.ec != std::errc()) return NumberFault::WrongKind;
  if (read < min || read > max) return NumberFault::OutOfRange;
  number = read;
  return NumberFault::None;
}

NumberFault readUnsigned(std::string_view text, std::uint64_t& number) {
  if (text.find_first_of(".eE") != std::string_view::npos) return NumberFault::WrongKind;
  if (text.front() == '-')
    return text == "-0" ? (number = 0, NumberFault::None) : NumberFault::OutOfRange;
  std::uint64_t read = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), read);
  if (result.ec == std::errc::result_out_of_range) return NumberFault::OutOfRange;
  if (result.ec != std::errc()) return NumberFault::WrongKind;
  number = read;
  return NumberFault::None;
}

bool readFloatText(std::string_view text, std::uint32_t& bits) {
  if (text == "nan") {
    bits = kFloatNan;
  } else if (text == "inf") {
    bits = 0x7F800000U;
  } else if (text == "-inf") {
    bits = 0xFF800000U;
  } else {
    if (text.substr(0, 4) != "nan:") return false;
    const auto hex = readHex(text.substr(4), 8);
    if (!hex || (*hex & 0x7F800000U) != 0x7F800000U || (*hex & 0x7FFFFFU) == 0) return false;
    bits = *hex;
  }
  return true;
}

bool readHalfText(std::string_view text, std::uint16_t& bits) {
  if (text == "nan") {
    bits = kHalfNan;
  } else if (text == "inf") {
    bits = 0x7C00U;
  } else if (text == "-inf") {
    bits = 0xFC00U;
  } else {
    if (text.substr(0, 4) != "nan:") return false;
    const auto hex = readHex(text.substr(4), 4);
    if (!hex || (*hex & 0x7C00U) != 0x7C00U || (*hex & 0x3FFU) == 0) return false;
    bits = static_cast<std::uint16_t>(*hex);
  }
  return true;
}

bool readBoolText(std::string_view text, std::uint32_t& word) {
  if (text.substr(0, 5) != "bool:") return false;
  const auto hex = readHex(text.substr(5), 8);
  if (!hex) return false;
  word = *hex;
  return true;
}

}  // namespace vrtk
