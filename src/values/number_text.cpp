#include "values/number_text.hpp"

#include <fmt/compile.h>

#include <array>
#include <bit>
#include <charconv>
#include <cstring>

namespace qex::vornath {
namespace {

// The parts of a float's bits.
constexpr std::uint32_t kMagnitudeBits = 0x7FFFFFFF;
constexpr std::uint32_t kInfinity = 0x7F800000;
constexpr std::uint32_t kFractionBits = 0x007FFFFF;
constexpr std::uint32_t kImplicitBit = 0x00800000;
constexpr int kFractionWidth = 23;
constexpr int kBias = 127;

constexpr std::array<char, 200> kPairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

char* put(char* out, const char* characters, std::size_t count) {
  std::memcpy(out, characters, count);
  return out + count;
}

constexpr std::size_t kEight = 8;

// Writes a number below 10^8 as eight digits.
void writeEightDigits(char* out, std::uint32_t number) {
  const std::uint32_t high = number / 10000;
  const std::uint32_t low = number % 10000;
  std::memcpy(out, &kPairs[high / 100 * 2], 2);
  std::memcpy(out + 2, &kPairs[high % 100 * 2], 2);
  std::memcpy(out + 4, &kPairs[low / 100 * 2], 2);
  std::memcpy(out + 6, &kPairs[low % 100 * 2], 2);
}

// Returns how many of eight digits are zeros, counted from the last one.
std::size_t trailingZeros(const char* digits) {
  static_assert(std::endian::native == std::endian::little);
  std::uint64_t word = 0;
  std::memcpy(&word, digits, sizeof(word));
  return static_cast<std::size_t>(std::countl_zero(word ^ 0x3030303030303030U)) / 8;
}

char* writeWhole(char* out, std::uint32_t number) {
  if (number < 10) {
    *out = static_cast<char>('0' + number);
    return out + 1;
  }
  return std::to_chars(out, out + kMaxNumberText / 2, number).ptr;
}

// Decimals of up to six digits, which are most of the numbers that people write, are found by
// rounding the float to a multiple of a power of ten. Such decimals are further apart than floats,
// so no two of them round to the same float: one that does is the shortest, without its last zeros.
// Whole numbers below 2^23 are found in the same way: they are exact.
struct Scale {
  std::uint32_t power;   // of ten: no float of the binade times this is above 10^6, unless it is 1
  std::uint32_t digits;  // its zeros
};

// The binades from 2^-13, which is above 1e-4, to 2^23.
constexpr int kFirstBinade = -13;
constexpr int kEndBinade = 23;

constexpr std::array<Scale, kEndBinade - kFirstBinade> kScales = [] {
  constexpr std::uint64_t kMost = 1'000'000;
  std::array<Scale, kEndBinade - kFirstBinade> scales{};
  for (int binade = kFirstBinade; binade < kEndBinade; ++binade) {
    const auto fits = [above = binade + 1](std::uint64_t power) {
      return above >= 0 ? power << above <= kMost : power <= kMost << -above;
    };
    Scale& scale = scales[static_cast<std::size_t>(binade - kFirstBinade)];
    scale = {1, 0};
    while (fits(std::uint64_t{scale.power} * 10)) scale = {scale.power * 10, scale.digits + 1};
  }
  return scales;
}();
static_assert(kScales[0].digits == 9);

// Writes a positive float if it is such a decimal, else returns null. Computes with integers only,
// so that neither the host's rounding mode nor its treatment of small numbers matters.
char* writeShortDecimal(char* out, std::uint32_t magnitude) {
  constexpr std::uint32_t kFirst = kBias + kFirstBinade;
  const std::uint32_t exponent = magnitude >> kFractionWidth;
  if (exponent - kFirst >= kScales.size()) return nullptr;

  const auto [power, digits] = kScales[exponent - kFirst];
  // The number is significand / 2^shift.
  const std::uint64_t significand = (magnitude & kFractionBits) | kImplicitBit;
  const std::uint32_t shift = kBias + kFractionWidth - exponent;
  const std::uint64_t scaled = significand * power;
  const std::uint64_t rounded = (scaled + (std::uint64_t{1} << (shift - 1))) >> shift;

  // The decimal rounds to the float if it is less than half a step away. The step below a power of
  // two is half of that above it.
  const auto distance = static_cast<std::int64_t>(scaled - (rounded << shift));
  const std::uint64_t twice = 2 * static_cast<std::uint64_t>(distance < 0 ? -distance : distance);
  const bool powerOfTwo = (magnitude & kFractionBits) == 0;
  if ((powerOfTwo ? 2 * twice : twice) >= power) return nullptr;

  // No decimal on the other side of a whole number rounds to the float: the whole number is a
  // float.
  const std::uint64_t whole = significand >> shift;
  const auto fraction = static_cast<std::uint32_t>(rounded - whole * power);
  out = writeWhole(out, static_cast<std::uint32_t>(whole));
  *out++ = '.';
  if (fraction == 0) {
    *out++ = '0';
    return out;
  }
  std::size_t count = digits;
  if (count > kEight) {
    *out++ = '0';
    count = kEight;
  }
  char eight[kEight];
  writeEightDigits(eight, fraction);
  std::memcpy(out, eight + (kEight - count), count);
  return out + count - trailingZeros(eight);
}

}  // namespace

char* writeFloat(char* out, float number) {
  const auto bits = std::bit_cast<std::uint32_t>(number);
  const std::uint32_t magnitude = bits & kMagnitudeBits;
  if (magnitude > kInfinity) return put(out, "NaN", 3);
  char* const unsignedOut = out + (bits != magnitude ? 1 : 0);
  *out = '-';
  if (magnitude == 0) return put(unsignedOut, "0.0", 3);
  if (char* const end = writeShortDecimal(unsignedOut, magnitude)) return end;
  return fmt::format_to(out, FMT_COMPILE("{:#}"), number);
}

char* writeInt(char* out, std::int32_t number) {
  return std::to_chars(out, out + kMaxNumberText, number).ptr;
}

char* writeHex(char* out, std::uint64_t number, std::size_t digits) {
  for (std::size_t i = digits; i-- > 0; number >>= 4) out[i] = "0123456789abcdef"[number & 0xF];
  return out + digits;
}

}  // namespace qex::vornath
