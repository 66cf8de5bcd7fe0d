/// The class UniqueId, without the headers that parsing and printing need. vornath_data/vrdm.h
/// includes this header, to keep it light; a host that calls UniqueId::parse() includes
/// vornath_data/unique_id.hpp.
#ifndef VORNATH_DATA_DETAIL_UNIQUE_ID_CLASS_HPP
#define VORNATH_DATA_DETAIL_UNIQUE_ID_CLASS_HPP

#include <cstddef>
#include <cstdint>
#include <iosfwd>

#include "vornath_data/api.h"

namespace vrnt {

class UniqueId;
template <typename T>
class Result;

/// Returns whether all 16 bytes are equal.
VRNT_API bool operator==(const UniqueId& a, const UniqueId& b) noexcept;

/// Names a scene, an asset or a scene object by 16 bytes: random ones, or a digest of contents. All
/// bytes zero is the null identifier, which names nothing.
/// Threads: any thread may call any function; none takes a lock.
class UniqueId {
 public:
  class Hasher;

  /// Makes the null identifier.
  UniqueId() noexcept = default;
  UniqueId(const UniqueId& other) noexcept = default;
  UniqueId(UniqueId&& other) noexcept = default;
  /// Copies the 16 bytes. A move is a copy.
  VRNT_API UniqueId& operator=(const UniqueId& other) noexcept;
  VRNT_API UniqueId& operator=(UniqueId&& other) noexcept;
  ~UniqueId() = default;

  /// Returns a new random identifier (RFC 4122 version 4) from the operating system's random
  /// service. Never returns the null identifier.
  /// Errors: throws boost::uuids::entropy_error if the service fails.
  VRNT_API static UniqueId generate();

  /// Returns the null identifier.
  VRNT_API static UniqueId null() noexcept;

  /// Returns whether all 16 bytes are zero.
  VRNT_API bool isNull() const noexcept;

  /// Returns the digest of a text: hash(text, size) with the size that strlen() gives. Allocates
  /// nothing after a thread's first call.
  VRNT_API static UniqueId hash(const char* text);

  /// Returns the digest of `size` bytes: BLAKE2b (RFC 7693) with a digest of 16 bytes and the
  /// last-node flag set. The flag makes it differ from the plain BLAKE2b digest of that length.
  VRNT_API static UniqueId hash(const char* data, std::size_t size);

  /// Reads the printed form. Ignores what follows the 32nd character. Reads each pair of characters
  /// as strtol() does in base 16: "a-" is 0x0A, "-a" is 0xF6.
  /// Errors: ParseFailed with "cannot parse unique ID: unexpected end of string" or "cannot parse
  /// unique id: contains non-hex numbers".
  VRNT_API static Result<UniqueId> parse(const char* text);

  /// Returns 16.
  VRNT_API static int size() noexcept;

  /// The 16 bytes as a range, byte 0 first.
  VRNT_API std::uint8_t* begin() noexcept;
  VRNT_API const std::uint8_t* begin() const noexcept;
  VRNT_API std::uint8_t* end() noexcept;
  VRNT_API const std::uint8_t* end() const noexcept;

 private:
  friend bool operator==(const UniqueId& a, const UniqueId& b) noexcept;

  std::uint8_t bytes_[16] = {};
};

/// Returns whether any of the 16 bytes differ.
inline bool operator!=(const UniqueId& a, const UniqueId& b) noexcept { return !(a == b); }

/// Prints 32 hexadecimal digits, byte 0 first, in upper case if the stream is set so. Restores the
/// stream's format state.
VRNT_API std::ostream& operator<<(std::ostream& stream, const UniqueId& id);

/// Computes UniqueId::hash() of contents that arrive in pieces. One hasher computes any number of
/// digests, one after the other.
/// Threads: one thread at a time may use a hasher.
class UniqueId::Hasher {
 public:
  VRNT_API Hasher();
  VRNT_API ~Hasher();
  Hasher(const Hasher&) = delete;
  Hasher& operator=(const Hasher&) = delete;

  /// Adds bytes to the running digest.
  VRNT_API void update(const void* data, std::size_t size);

  /// Returns the digest of the bytes that were added since the last call, and starts a new one.
  VRNT_API UniqueId finalize();

 private:
  struct State;
  State* state_;  // owned
};

}  // namespace vrnt

#endif
