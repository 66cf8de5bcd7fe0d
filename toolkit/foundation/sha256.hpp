// SHA-256 digests.
#ifndef VORNATH_TOOLKIT_FOUNDATION_SHA256_HPP
#define VORNATH_TOOLKIT_FOUNDATION_SHA256_HPP

#include <cstddef>
#include <string>

namespace vrtk {

/// Returns the SHA-256 digest of bytes as 64 lower-case hexadecimal digits.
std::string sha256Hex(const void* bytes, std::size_t size);

}  // namespace vrtk

#endif
