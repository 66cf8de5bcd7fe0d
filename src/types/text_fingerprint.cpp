#include "types/text_fingerprint.hpp"

#include <cstdint>
#include <string_view>

namespace qex::vornath {
namespace {

// The digest of a text is its characters as the digits of a number, modulo a prime.
constexpr std::uint64_t kPrime = (std::uint64_t{1} << 61) - 1;
constexpr std::uint64_t kBase = 0x0B4F0E7C5A3D9B21U;

__extension__ using Wide = unsigned __int128;

std::uint64_t multiplyModulo(std::uint64_t a, std::uint64_t b) {
  const Wide wide = Wide{a} * b;
  const std::uint64_t folded =
      static_cast<std::uint64_t>(wide & kPrime) + static_cast<std::uint64_t>(wide >> 61);
  return folded >= kPrime ? folded - kPrime : folded;
}

std::uint64_t addModulo(std::uint64_t a, std::uint64_t b) {
  const std::uint64_t added = a + b;
  return added >= kPrime ? added - kPrime : added;
}

}  // namespace

void TextFingerprint::add(std::string_view piece) noexcept {
  for (const char character : piece) {
    digest = addModulo(multiplyModulo(digest, kBase), static_cast<unsigned char>(character) + 1U);
    shift = multiplyModulo(shift, kBase);
  }
  length += piece.size();
}

void TextFingerprint::add(const TextFingerprint& text) noexcept {
  digest = addModulo(multiplyModulo(digest, text.shift), text.digest);
  shift = multiplyModulo(shift, text.shift);
  length += text.length;
}

}  // namespace qex::vornath
