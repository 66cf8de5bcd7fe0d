#include "types/text_fingerprint.hpp"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qex::vornath {
namespace {

// The digest of a text is its characters as the digits of a number, the first one the highest,
// modulo a prime. The base is odd and fits into 8 bits, so that the number of 8 characters is below
// 2^64 and takes three multiplications, in lanes of 16 and 32 bits.
constexpr std::uint64_t kPrime = (std::uint64_t{1} << 61) - 1;
constexpr std::uint64_t kBase = 251;

__extension__ using Wide = unsigned __int128;

constexpr std::uint64_t reduce(Wide number) {
  // 2^61 is 1 modulo the prime. The number is below 2^127.
  const std::uint64_t folded = static_cast<std::uint64_t>(number & kPrime) +
                               static_cast<std::uint64_t>((number >> 61) & kPrime) +
                               static_cast<std::uint64_t>(number >> 122);
  const std::uint64_t once = folded >= kPrime ? folded - kPrime : folded;
  return once >= kPrime ? once - kPrime : once;
}

// kBase to the power of 2^i.
constexpr std::array<std::uint64_t, 64> kSquares = [] {
  std::array<std::uint64_t, 64> squares{kBase};
  for (std::size_t i = 1; i < squares.size(); ++i) {
    squares[i] = reduce(Wide{squares[i - 1]} * squares[i - 1]);
  }
  return squares;
}();

constexpr std::uint64_t power(std::uint64_t exponent) {
  std::uint64_t product = 1;
  for (std::size_t i = 0; exponent != 0; ++i, exponent >>= 1) {
    if ((exponent & 1) != 0) product = reduce(Wide{product} * kSquares[i]);
  }
  return product;
}

constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::size_t kBlock = 4 * kWord;
constexpr std::array<std::uint64_t, 5> kWordPowers{power(0), power(kWord), power(2 * kWord),
                                                   power(3 * kWord), power(4 * kWord)};
constexpr std::array<std::uint64_t, kWord> kSmallPowers{power(0), power(1), power(2), power(3),
                                                        power(4), power(5), power(6), power(7)};

// Returns the number of 8 characters.
std::uint64_t numberOf(const char* characters) {
  std::uint64_t word;
  std::memcpy(&word, characters, sizeof word);
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  // The earlier of two neighbours is in the lower bits.
  constexpr std::uint64_t kBytes = 0x00FF00FF00FF00FFU;
  constexpr std::uint64_t kHalves = 0x0000FFFF0000FFFFU;
  constexpr std::uint64_t kLow = 0xFFFFFFFFU;
  constexpr std::uint64_t kBase2 = kBase * kBase;
  constexpr std::uint64_t kBase4 = kBase2 * kBase2;
  const std::uint64_t pairs = (word & kBytes) * kBase + ((word >> 8) & kBytes);
  const std::uint64_t quads = (pairs & kHalves) * kBase2 + ((pairs >> 16) & kHalves);
  return (quads & kLow) * kBase4 + (quads >> 32);
}

}  // namespace

void TextFingerprint::add(std::string_view piece) noexcept {
  const char* position = piece.data();
  std::size_t rest = piece.size();
  length += rest;
  for (; rest >= kBlock; position += kBlock, rest -= kBlock) {
    // Each product is below 2^125.
    digest = reduce(Wide{digest} * kWordPowers[4] + Wide{numberOf(position)} * kWordPowers[3] +
                    Wide{numberOf(position + kWord)} * kWordPowers[2] +
                    Wide{numberOf(position + 2 * kWord)} * kWordPowers[1] +
                    numberOf(position + 3 * kWord));
  }
  for (; rest >= kWord; position += kWord, rest -= kWord) {
    digest = reduce(Wide{digest} * kWordPowers[1] + numberOf(position));
  }
  if (rest == 0) return;
  // Zeros in front of a number do not change it.
  std::array<char, kWord> characters{};
  std::memcpy(characters.data() + (kWord - rest), position, rest);
  digest = reduce(Wide{digest} * kSmallPowers[rest] + numberOf(characters.data()));
}

void TextFingerprint::add(const TextFingerprint& text) noexcept {
  digest = reduce(Wide{digest} * power(text.length) + text.digest);
  length += text.length;
}

}  // namespace qex::vornath
