#include "foundation/digest.hpp"

#include <cryptopp/sha.h>

namespace vrnt {

std::string sha256Text(const void* bytes, std::size_t size) {
  CryptoPP::byte digest[CryptoPP::SHA256::DIGESTSIZE];
  CryptoPP::SHA256().CalculateDigest(digest, static_cast<const CryptoPP::byte*>(bytes), size);
  std::string text;
  text.reserve(2 * sizeof(digest));
  for (const CryptoPP::byte byte : digest) {
    constexpr char kDigits[] = "0123456789abcdef";
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

}  // namespace vrnt
