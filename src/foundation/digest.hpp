// The digest with which people compare asset bytes with the contents of files.
#ifndef VORNATH_FOUNDATION_DIGEST_HPP
#define VORNATH_FOUNDATION_DIGEST_HPP

#include <cstddef>
#include <string>

namespace vrnt {

/// Returns the SHA-256 digest of `size` bytes as 64 lowercase hexadecimal digits.
/// Errors: throws std::bad_alloc. Threads: any.
std::string sha256Text(const void* bytes, std::size_t size);

}  // namespace vrnt

#endif
