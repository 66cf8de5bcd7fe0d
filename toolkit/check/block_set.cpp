#include "check/block_set.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>

namespace vrtk {
namespace {

constexpr std::size_t kSmallTable = 16;
constexpr std::size_t kLargestTable = std::size_t{1} << 17;
constexpr std::uint16_t kOpen = 0xFFFF;

// A one-to-one map that spreads addresses over all 64 bits.
std::uint64_t mixed(std::uint64_t word) {
  word = (word ^ (word >> 30U)) * 0xBF58476D1CE4E5B9U;
  word = (word ^ (word >> 27U)) * 0x94D049BB133111EBU;
  return word ^ (word >> 31U);
}

// Numbers from 0 to 2^63 in 16 bits: six for the exponent, ten for the fraction. A number between
// two of these is rounded up or down, by a random bit, so that the errors of a long sum balance.
std::uint16_t packed(double number, std::uint64_t random) {
  constexpr double kLargest = 9.2e18;
  number = std::clamp(number, 1.0, kLargest);
  int exponent = 0;
  const double fraction = std::frexp(number, &exponent);  // from 0.5 to below 1
  const double scaled = (fraction - 0.5) * 2048;          // from 0 to below 1024
  auto steps = static_cast<std::uint32_t>(scaled);
  const double rest = scaled - static_cast<double>(steps);
  if (static_cast<double>(random >> 40U) < rest * 16777216.0) ++steps;
  const std::uint32_t bits = static_cast<std::uint32_t>(exponent - 1) * 1024U + steps;
  return static_cast<std::uint16_t>(std::min<std::uint32_t>(bits, kOpen - 1));
}

double unpacked(std::uint16_t bits) {
  return std::ldexp(1.0 + static_cast<double>(bits % 1024U) / 1024.0, bits / 1024);
}

}  // namespace

// Sorted lists, one for each value of the highest 16 bits. The other 48 bits are six bytes.
class BlockSet::Segments {
 public:
  Segments() : segments_(kCount) {}
  Segments(const Segments&) = delete;
  Segments& operator=(const Segments&) = delete;
  ~Segments() {
    for (const Segment& segment : segments_) std::free(segment.bytes);
  }

  std::uint16_t* find(std::uint64_t key) {
    const Segment& segment = segments_[key >> kKeyBits];
    const std::uint32_t at = position(segment, key & kKeyMask);
    if (at == segment.count || keyAt(segment, at) != (key & kKeyMask)) return nullptr;
    return numbers(segment) + at;
  }

  std::uint16_t* insert(std::uint64_t key) {
    Segment& segment = segments_[key >> kKeyBits];
    if (segment.count == segment.capacity) enlarge(segment);
    const std::uint64_t low = key & kKeyMask;
    const std::uint32_t at = position(segment, low);
    const std::size_t behind = segment.count - at;
    std::uint16_t* const number = numbers(segment) + at;
    std::memmove(number + 1, number, behind * sizeof(std::uint16_t));
    unsigned char* const place = keys(segment) + std::size_t{at} * kKeySize;
    std::memmove(place + kKeySize, place, behind * kKeySize);
    std::memcpy(place, &low, kKeySize);
    ++segment.count;
    return number;
  }

  std::size_t memory() const {
    std::size_t bytes = segments_.capacity() * sizeof(Segment);
    for (const Segment& segment : segments_) {
      bytes += std::size_t{segment.capacity} * (kKeySize + 2);
    }
    return bytes;
  }

 private:
  static constexpr std::size_t kCount = std::size_t{1} << 16;
  static constexpr unsigned kKeyBits = 48;
  static constexpr std::uint64_t kKeyMask = (std::uint64_t{1} << kKeyBits) - 1;
  static constexpr std::size_t kKeySize = 6;

  // The numbers, then the keys.
  struct Segment {
    unsigned char* bytes = nullptr;
    std::uint32_t count = 0;
    std::uint32_t capacity = 0;
  };

  static std::uint16_t* numbers(const Segment& segment) {
    return reinterpret_cast<std::uint16_t*>(segment.bytes);
  }
  static unsigned char* keys(const Segment& segment) {
    return segment.bytes + std::size_t{segment.capacity} * sizeof(std::uint16_t);
  }
  static std::uint64_t keyAt(const Segment& segment, std::uint32_t at) {
    std::uint64_t key = 0;
    std::memcpy(&key, keys(segment) + std::size_t{at} * kKeySize, kKeySize);
    return key;
  }

  static std::uint32_t position(const Segment& segment, std::uint64_t key) {
    std::uint32_t low = 0;
    std::uint32_t high = segment.count;
    while (low != high) {
      const std::uint32_t middle = low + (high - low) / 2;
      if (keyAt(segment, middle) < key) {
        low = middle + 1;
      } else {
        high = middle;
      }
    }
    return low;
  }

  static void enlarge(Segment& segment) {
    const std::uint32_t capacity = segment.capacity + std::max(segment.capacity / 8, 3U);
    auto* const bytes = static_cast<unsigned char*>(std::malloc(std::size_t{capacity} * 8));
    if (bytes == nullptr) throw std::bad_alloc();
    Segment larger{bytes, segment.count, capacity};
    if (segment.count != 0) {
      std::memcpy(numbers(larger), numbers(segment), segment.count * sizeof(std::uint16_t));
      std::memcpy(keys(larger), keys(segment), segment.count * kKeySize);
    }
    std::free(segment.bytes);
    segment = larger;
  }

  std::vector<Segment> segments_;
};

BlockSet::BlockSet() : table_(kSmallTable) {}
BlockSet::~BlockSet() = default;

void BlockSet::clear() {
  segments_.reset();
  if (table_.size() == kSmallTable) {
    if (count_ != 0) std::fill(table_.begin(), table_.end(), Entry{});
  } else {
    std::vector<Entry>(kSmallTable).swap(table_);
  }
  count_ = 0;
}

// The entry of a key, or the free one where it would be.
BlockSet::Entry* BlockSet::slotOf(std::uint64_t key) const {
  const std::size_t mask = table_.size() - 1;
  std::size_t at = static_cast<std::size_t>(key) & mask;
  while (table_[at].used && table_[at].key != key) at = (at + 1) & mask;
  return &table_[at];
}

std::uint16_t* BlockSet::numberOf(std::uint64_t key) const {
  if (segments_) return segments_->find(key);
  Entry* const entry = slotOf(key);
  return entry->used ? &entry->number : nullptr;
}

BlockSet::State BlockSet::find(std::uint64_t word, double& parts) const {
  const std::uint16_t* const number = numberOf(mixed(word));
  if (number == nullptr) return State::Unknown;
  if (*number == kOpen) return State::Open;
  parts = unpacked(*number);
  return State::Closed;
}

void BlockSet::grow() {
  if (table_.size() < kLargestTable) {
    std::vector<Entry> larger(table_.size() * 2);
    larger.swap(table_);
    for (const Entry& entry : larger) {
      if (entry.used) *slotOf(entry.key) = entry;
    }
    return;
  }
  auto segments = std::make_unique<Segments>();
  for (const Entry& entry : table_) {
    if (entry.used) *segments->insert(entry.key) = entry.number;
  }
  segments_ = std::move(segments);
  std::vector<Entry>().swap(table_);
}

void BlockSet::open(std::uint64_t word) {
  const std::uint64_t key = mixed(word);
  if (!segments_ && count_ * 2 >= table_.size()) grow();
  ++count_;
  if (segments_) {
    *segments_->insert(key) = kOpen;
  } else {
    *slotOf(key) = {key, kOpen, true};
  }
}

void BlockSet::close(std::uint64_t word, double parts) {
  const std::uint64_t key = mixed(word);
  *numberOf(key) = packed(parts, mixed(key));
}

std::size_t BlockSet::memory() const {
  return table_.capacity() * sizeof(Entry) + (segments_ ? segments_->memory() : 0);
}

}  // namespace vrtk
