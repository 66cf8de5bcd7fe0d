#include "foundation/sha256.hpp"

#include <cryptopp/sha.h>

namespace vrtk {

static_assert(CryptoPP::SHA256::DIGESTSIZE == sizeof(Sha256));

Sha256 sha256(const void* bytes, std::size_t size) {
  Sha256 digest;
  CryptoPP::SHA256 hash;
  // Crypto++ takes no null pointer.
  if (size != 0) hash.Update(static_cast<const CryptoPP::byte*>(bytes), size);
  hash.Final(digest.data());
  return digest;
}

std::string hexText(const Sha256& digest) {
  std::string text;
  text.reserve(2 * digest.size());
  for (const unsigned char byte : digest) {
    text += "0123456789abcdef"[byte >> 4U];
    text += "0123456789abcdef"[byte & 15U];
  }
  return text;
}

std::string sha256Hex(const void* bytes, std::size_t size) { return hexText(sha256(bytes, size)); }

}  // namespace vrtk
