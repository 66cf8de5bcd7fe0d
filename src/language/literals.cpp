#include "language/literals.hpp"

#include <charconv>
#include <limits>
#include <locale>
#include <new>
#include <sstream>
#include <string>

#include "values/half.hpp"

namespace qex::vornath {
namespace {

// std::from_chars takes no plus sign.
std::string_view withoutPlus(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  return text;
}

float floatFromStream(std::string_view text) {
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  float value = 0;
  stream >> value;
  // The stream keeps what is thrown in it to itself, and that can only be for want of memory: a
  // text that isn't a number, or is too large for one, leaves it failed and not bad.
  if (stream.bad()) throw std::bad_alloc();
  return value;
}

}  // namespace

std::int64_t decimalLiteral(std::string_view text) {
  std::int64_t value = 0;
  const std::string_view digits = withoutPlus(text);
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (result.ec != std::errc::result_out_of_range) return value;
  return digits.starts_with('-') ? std::numeric_limits<std::int64_t>::min()
                                 : std::numeric_limits<std::int64_t>::max();
}

std::optional<std::uint8_t> characterLiteral(std::string_view text) {
  text.remove_suffix(1);
  const std::int64_t value = decimalLiteral(text);
  if (value < 0 || value > std::numeric_limits<std::uint8_t>::max()) return std::nullopt;
  return static_cast<std::uint8_t>(value);
}

std::uint64_t hexadecimalLiteral(std::string_view text) {
  text.remove_prefix(2);
  std::uint64_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value, 16);
  return value;
}

float floatLiteral(std::string_view text) {
  const std::string_view number = withoutPlus(text);
  const char* const end = number.data() + number.size();
  float value = 0;
  const auto result = std::from_chars(number.data(), end, value);
  if (result.ec == std::errc() && result.ptr == end) return value;
  return floatFromStream(text);
}

std::uint16_t halfLiteral(std::string_view text) {
  text.remove_suffix(1);
  return halfBitsFromFloat(floatLiteral(text));
}

}  // namespace qex::vornath
