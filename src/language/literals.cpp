#include "language/literals.hpp"

#include <array>
#include <bit>
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

// Powers of ten that a double holds exactly.
constexpr std::array kPowersOfTen{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Whether sums are rounded to the nearest number. A host may have changed that.
bool roundsToNearest() {
  static const volatile float tiny = std::numeric_limits<float>::min();
  const float small = tiny;
  return small + 1.0F == 1.0F - small;
}

// Returns the number if a double shows which float is the nearest one. Digits and power of ten are
// exact, so that the double is the nearest one to the number. It lies on the same side of each
// midpoint between two floats as the number itself, since midpoints are doubles, or on the
// midpoint; only then the number may lie on either side.
bool floatFromParts(const DecimalNumber& number, float& value) {
  constexpr std::uint64_t kMaxDigits = std::uint64_t{1} << 53;
  constexpr auto kMaxExponent = static_cast<std::int32_t>(kPowersOfTen.size()) - 1;
  if (!number.exact || number.digits > kMaxDigits) return false;
  if (number.exponent < -kMaxExponent || number.exponent > kMaxExponent) return false;
  if (number.digits == 0) {
    value = number.negative ? -0.0F : 0.0F;
    return true;
  }
  const auto digits = static_cast<double>(number.digits);
  const double nearest = number.exponent < 0
                             ? digits / kPowersOfTen[static_cast<std::size_t>(-number.exponent)]
                             : digits * kPowersOfTen[static_cast<std::size_t>(number.exponent)];
  // The bits of a double's fraction that a float has no room for.
  constexpr std::uint64_t kBelowFloat = (std::uint64_t{1} << 29) - 1;
  constexpr std::uint64_t kMidpoint = std::uint64_t{1} << 28;
  if ((std::bit_cast<std::uint64_t>(nearest) & kBelowFloat) == kMidpoint) return false;
  if (nearest < std::numeric_limits<float>::min() || nearest > std::numeric_limits<float>::max()) {
    return false;
  }
  if (!roundsToNearest()) return false;
  value = static_cast<float>(number.negative ? -nearest : nearest);
  return true;
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

float floatLiteral(std::string_view text, const DecimalNumber& number) {
  float value;
  return floatFromParts(number, value) ? value : floatLiteral(text);
}

std::uint16_t halfLiteral(std::string_view text) {
  text.remove_suffix(1);
  return halfBitsFromFloat(floatLiteral(text));
}

}  // namespace qex::vornath
