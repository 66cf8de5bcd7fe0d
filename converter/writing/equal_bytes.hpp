// Finds equal blocks of bytes.
#ifndef VRN_CONVERT_WRITING_EQUAL_BYTES_HPP
#define VRN_CONVERT_WRITING_EQUAL_BYTES_HPP

#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace vrn_convert {

/// Returns a digest of bytes. Equal bytes have equal digests; others mostly do not.
inline std::uint64_t digestOf(const unsigned char* bytes, std::size_t size) {
  constexpr std::uint64_t kPrime = 0x9e3779b97f4a7c15ULL;
  std::uint64_t lanes[4] = {size, kPrime, ~kPrime, kPrime >> 1};
  const auto mix = [](std::uint64_t lane, std::uint64_t word) {
    lane = (lane ^ word) * kPrime;
    return lane ^ (lane >> 29);
  };
  std::size_t at = 0;
  for (; at + 32 <= size; at += 32) {
    for (std::size_t lane = 0; lane < 4; ++lane) {
      std::uint64_t word;
      std::memcpy(&word, bytes + at + 8 * lane, sizeof word);
      lanes[lane] = mix(lanes[lane], word);
    }
  }
  for (; at < size; ++at) lanes[0] = mix(lanes[0], bytes[at]);
  return mix(mix(mix(lanes[0], lanes[1]), lanes[2]), lanes[3]);
}

/// A set of blocks of bytes, each with a key that must be equal, too. The bytes must outlive it.
/// Digests are computed only for blocks that share their key and size with another.
template <typename Key>
class EqualBytes {
 public:
  /// Adds a block, or finds the block that is equal to it. Returns the number of that block, which
  /// the caller gave with it.
  int add(const Key& key, const unsigned char* bytes, std::size_t size, int number) {
    std::vector<Block>& blocks = blocks_[{key, size}];
    Block added{bytes, number, std::nullopt};
    for (Block& block : blocks) {
      if (digest(block, size) == digest(added, size) &&
          (size == 0 || std::memcmp(block.bytes, bytes, size) == 0)) {
        return block.number;
      }
    }
    blocks.push_back(added);
    return number;
  }

 private:
  struct Block {
    const unsigned char* bytes;
    int number;
    std::optional<std::uint64_t> digest;
  };
  static std::uint64_t digest(Block& block, std::size_t size) {
    if (!block.digest) block.digest = digestOf(block.bytes, size);
    return *block.digest;
  }
  std::map<std::pair<Key, std::size_t>, std::vector<Block>> blocks_;
};

}  // namespace vrn_convert

#endif
