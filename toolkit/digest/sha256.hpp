// SHA-256.
#ifndef VORNATH_TOOLKIT_DIGEST_SHA256_HPP
#define VORNATH_TOOLKIT_DIGEST_SHA256_HPP

#include <cryptopp/sha.h>

#include <array>
#include <cstddef>
#include <string>

namespace vrtk {

using Sha256 = std::array<unsigned char, CryptoPP::SHA256::DIGESTSIZE>;

inline Sha256 finish(CryptoPP::SHA256& hash) {
  Sha256 digest;
  hash.Final(digest.data());
  return digest;
}

inline Sha256 sha256(const void* bytes, std::size_t size) {
  Sha256 digest;
  CryptoPP::SHA256().CalculateDigest(digest.data(), static_cast<const CryptoPP::byte*>(bytes),
                                     size);
  return digest;
}

/// Returns the 64 hexadecimal digits, in lower case.
inline std::string hexText(const Sha256& digest) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * digest.size());
  for (const unsigned char byte : digest) {
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0xFU];
  }
  return text;
}

}  // namespace vrtk

#endif
