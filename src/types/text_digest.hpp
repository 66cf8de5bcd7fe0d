/// Digests of texts and words, by which the factory's tables find types.
#ifndef VORNATH_TYPES_TEXT_DIGEST_HPP
#define VORNATH_TYPES_TEXT_DIGEST_HPP

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qex::vornath {

/// Up to this length, in characters, sampledDigest() reads all of a text.
inline constexpr std::size_t kMaxWholeSample = 128;

/// Returns the digest of two words.
inline std::uint64_t digestOf(std::uint64_t a, std::uint64_t b) {
  __extension__ using Wide = unsigned __int128;
  const Wide product = Wide{a ^ 0x9E3779B97F4A7C15U} * (b ^ 0xD6E8FEB86659FD93U);
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

/// Returns the digest of a text. Reads all of it.
std::uint64_t wholeDigest(std::string_view text);

/// Returns a digest of the length and of 16 samples of 8 characters, the first and the last ones
/// among them. For texts of up to kMaxWholeSample characters it is wholeDigest().
std::uint64_t sampledDigest(std::string_view text);

}  // namespace qex::vornath

#endif
