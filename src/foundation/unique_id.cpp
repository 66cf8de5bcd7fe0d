#include "vornath_data/unique_id.hpp"

#include <cryptopp/blake2.h>

#include <algorithm>
#include <boost/uuid/random_generator.hpp>
#include <cstdlib>
#include <cstring>
#include <ios>
#include <new>
#include <ostream>

namespace vrnt {
namespace {

constexpr std::size_t kSize = 16;

// The initial state of a digest. Tree mode sets the last-node flag in the last block. All stored
// identifiers depend on this flag: a plain BLAKE2b of this length gives other digests. The
// constructor of BLAKE2b allocates and its copy constructor does not, so each digest starts as a
// copy of this one. It is never destroyed, since identifiers may be created while the process
// exits; it holds no memory.
union FreshDigest {
  FreshDigest() { new (&blake) CryptoPP::BLAKE2b(true, kSize); }
  FreshDigest(const FreshDigest&) = delete;
  FreshDigest& operator=(const FreshDigest&) = delete;
  ~FreshDigest() {}

  CryptoPP::BLAKE2b blake;
};

const CryptoPP::BLAKE2b& freshDigest() {
  static const FreshDigest fresh;
  return fresh.blake;
}

class Digest {
 public:
  void update(const void* data, std::size_t size) {
    if (size != 0) blake_.Update(static_cast<const CryptoPP::byte*>(data), size);
  }
  // Resets the digest to its initial state.
  UniqueId finalize() {
    UniqueId id;
    blake_.Final(id.begin());
    return id;
  }

 private:
  CryptoPP::BLAKE2b blake_{freshDigest()};
};

class FormatGuard {
 public:
  explicit FormatGuard(std::ostream& stream)
      : stream_(stream), flags_(stream.flags()), width_(stream.width()), fill_(stream.fill()) {}
  FormatGuard(const FormatGuard&) = delete;
  FormatGuard& operator=(const FormatGuard&) = delete;
  ~FormatGuard() {
    stream_.flags(flags_);
    stream_.width(width_);
    stream_.fill(fill_);
  }

 private:
  std::ostream& stream_;
  std::ios_base::fmtflags flags_;
  std::streamsize width_;
  char fill_;
};

}  // namespace

UniqueId& UniqueId::operator=(const UniqueId& other) noexcept {
  if (this != &other) std::memcpy(bytes_, other.bytes_, kSize);
  return *this;
}

UniqueId& UniqueId::operator=(UniqueId&& other) noexcept {
  std::memmove(bytes_, other.bytes_, kSize);
  return *this;
}

UniqueId UniqueId::generate() {
  // One for each call: two threads must not use the provider at the same time.
  const boost::uuids::uuid uuid = boost::uuids::random_generator_pure()();
  UniqueId id;
  std::copy(uuid.begin(), uuid.end(), id.begin());
  return id;
}

UniqueId UniqueId::null() noexcept { return UniqueId(); }

bool UniqueId::isNull() const noexcept {
  static constexpr std::uint8_t kNull[kSize] = {};
  return std::memcmp(bytes_, kNull, kSize) == 0;
}

UniqueId UniqueId::hash(const char* text) { return hash(text, std::strlen(text)); }

UniqueId UniqueId::hash(const char* data, std::size_t size) {
  // Not thread_local: if the C library has no memory to register the destructor of a thread's
  // object, it terminates the process.
  Digest digest;
  digest.update(data, size);
  return digest.finalize();
}

Result<UniqueId> UniqueId::parse(const char* text) {
  UniqueId id;
  for (std::uint8_t& byte : id) {
    if (text[0] == '\0' || text[1] == '\0') {
      return Result<UniqueId>(ErrorCode::ParseFailed,
                              "cannot parse unique ID: unexpected end of string");
    }
    const char pair[3] = {text[0], text[1], '\0'};
    char* end = nullptr;
    const long number = std::strtol(pair, &end, 16);
    if (end == pair) {
      return Result<UniqueId>(ErrorCode::ParseFailed,
                              "cannot parse unique id: contains non-hex numbers");
    }
    byte = static_cast<std::uint8_t>(number & 0xFF);
    text += 2;
  }
  return id;
}

int UniqueId::size() noexcept { return static_cast<int>(kSize); }

std::uint8_t* UniqueId::begin() noexcept { return bytes_; }
const std::uint8_t* UniqueId::begin() const noexcept { return bytes_; }
std::uint8_t* UniqueId::end() noexcept { return bytes_ + kSize; }
const std::uint8_t* UniqueId::end() const noexcept { return bytes_ + kSize; }

bool operator==(const UniqueId& a, const UniqueId& b) noexcept {
  return std::memcmp(a.bytes_, b.bytes_, kSize) == 0;
}

std::ostream& operator<<(std::ostream& stream, const UniqueId& id) {
  const FormatGuard guard(stream);
  stream.fill('0');
  stream.setf(std::ios_base::hex, std::ios_base::basefield);
  for (const std::uint8_t byte : id) {
    stream.width(2);
    stream << static_cast<int>(byte);
  }
  return stream;
}

struct UniqueId::Hasher::State {
  Digest digest;
};

UniqueId::Hasher::Hasher() : state_(new State) {}
UniqueId::Hasher::~Hasher() { delete state_; }

void UniqueId::Hasher::update(const void* data, std::size_t size) {
  state_->digest.update(data, size);
}

UniqueId UniqueId::Hasher::finalize() { return state_->digest.finalize(); }

}  // namespace vrnt
