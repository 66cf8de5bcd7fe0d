/// 128-bit identifiers of scenes, assets and scene objects: random ones, and digests of contents.
#ifndef VORNATH_DATA_UNIQUE_ID_HPP
#define VORNATH_DATA_UNIQUE_ID_HPP

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>

#include "vornath_data/api.h"
#include "vornath_data/result.hpp"

namespace vrnt {

class UniqueId;

/// True when all 16 bytes are equal.
VRNT_API bool operator==(const UniqueId& a, const UniqueId& b) noexcept;

/// An identifier of 16 bytes. All zero is the null identifier: there is no such object.
/// Threads: every operation may be called from any thread and takes no lock.
class UniqueId {
 public:
  class Hasher;

  /// The null identifier.
  UniqueId() noexcept = default;
  UniqueId(const UniqueId& other) noexcept = default;
  UniqueId(UniqueId&& other) noexcept = default;
  /// Copies the 16 bytes; a move is a copy.
  VRNT_API UniqueId& operator=(const UniqueId& other) noexcept;
  VRNT_API UniqueId& operator=(UniqueId&& other) noexcept;
  ~UniqueId() = default;

  /// A new random identifier, RFC 4122 version 4, from the operating system's random service. It is
  /// never null.
  /// Errors: throws boost::uuids::entropy_error if that service fails.
  VRNT_API static UniqueId generate();

  /// The null identifier.
  VRNT_API static UniqueId null() noexcept;

  /// True when all 16 bytes are zero.
  VRNT_API bool isNull() const noexcept;

  /// The identifier of a text: the digest of its bytes up to the first NUL, that one left out.
  /// Allocates nothing after a thread's first call.
  VRNT_API static UniqueId hash(const char* text);

  /// The identifier of `size` bytes, a 16-byte BLAKE2b digest (RFC 7693) with the last-node flag
  /// set, which differs from the plain digest of that length.
  VRNT_API static UniqueId hash(const char* data, std::size_t size);

  /// Reads the printed form; what follows the 32nd character isn't looked at. Each pair of
  /// characters is read as strtol() reads it in base 16, so that "a-" is 0x0A and "-a" is 0xF6.
  /// Errors: ParseFailed with "cannot parse unique ID: unexpected end of string" or with "cannot
  /// parse unique id: contains non-hex numbers".
  VRNT_API static Result<UniqueId> parse(const char* text);

  /// Always 16.
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

/// True when any of the 16 bytes differ.
inline bool operator!=(const UniqueId& a, const UniqueId& b) noexcept { return !(a == b); }

/// The printed form: 32 hexadecimal digits, byte 0 first, in upper case if the stream is set so.
/// The stream's format state is afterwards as it was.
VRNT_API std::ostream& operator<<(std::ostream& stream, const UniqueId& id);

/// UniqueId::hash() of contents that come in pieces. One hasher makes any number of digests in a
/// row. Threads: one object belongs to one thread at a time.
class UniqueId::Hasher {
 public:
  VRNT_API Hasher();
  VRNT_API ~Hasher();
  Hasher(const Hasher&) = delete;
  Hasher& operator=(const Hasher&) = delete;

  /// Adds bytes to the running digest.
  VRNT_API void update(const void* data, std::size_t size);

  /// The digest of what was added since the last call; the next update() begins a new message.
  VRNT_API UniqueId finalize();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace vrnt

#endif
