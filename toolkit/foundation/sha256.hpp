// SHA-256 digests.
#ifndef VORNATH_TOOLKIT_FOUNDATION_SHA256_HPP
#define VORNATH_TOOLKIT_FOUNDATION_SHA256_HPP

#include <array>
#include <cstddef>
#include <string>

namespace vrtk {

using Sha256 = std::array<unsigned char, 32>;

Sha256 sha256(const void* bytes, std::size_t size);

/// Returns a digest as 64 lower-case hexadecimal digits.
std::string hexText(const Sha256& digest);

/// Returns the digest of bytes as 64 lower-case hexadecimal digits.
std::string sha256Hex(const void* bytes, std::size_t size);

}  // namespace vrtk

#endif
