#include "foundation/sha256.hpp"

#include <cryptopp/sha.h>

namespace vrtk {

std::string sha256Hex(const void* bytes, std::size_t size) {
  CryptoPP::byte digest[CryptoPP::SHA256::DIGESTSIZE];
  CryptoPP::SHA256 hash;
  // Crypto++ takes no null pointer.
  if (size != 0) hash.Update(static_cast<const CryptoPP::byte*>(bytes), size);
  hash.Final(digest);
  std::string text;
  text.reserve(2 * sizeof(digest));
  for (const CryptoPP::byte byte : digest) {
    text += "0123456789abcdef"[byte >> 4U];
    text += "0123456789abcdef"[byte & 15U];
  }
  return text;
}

}  // namespace vrtk
