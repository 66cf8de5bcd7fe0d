#include "types/text_digest.hpp"

#include <cstring>

namespace qex::vornath {
namespace {

constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::uint64_t kStep = 0xA0761D6478BD642FU;

std::uint64_t wordAt(const char* position) {
  std::uint64_t word;
  std::memcpy(&word, position, sizeof word);
  return word;
}

// A sum of products, each with a key for its place: the products do not wait for each other.
class Sum {
 public:
  explicit Sum(std::size_t length) : length_(length) {}

  void add(std::uint64_t a, std::uint64_t b) {
    sum_ += digestOf(a ^ key_, b);
    key_ += kStep;
  }
  std::uint64_t result() const { return digestOf(sum_, length_); }

 private:
  std::uint64_t sum_ = 0;
  std::uint64_t key_ = 0;
  std::uint64_t length_;
};

}  // namespace

std::uint64_t wholeDigest(std::string_view text) {
  const char* position = text.data();
  std::size_t rest = text.size();
  Sum sum(rest);
  if (rest < kWord) {
    std::uint64_t word = 0;
    if (rest != 0) std::memcpy(&word, position, rest);
    sum.add(word, 0);
    return sum.result();
  }
  for (; rest >= 2 * kWord; position += 2 * kWord, rest -= 2 * kWord) {
    sum.add(wordAt(position), wordAt(position + kWord));
  }
  // The last words, which may overlap what was read.
  const char* const last = text.data() + text.size() - kWord;
  if (rest != 0) sum.add(wordAt(rest >= kWord ? position : last), wordAt(last));
  return sum.result();
}

std::uint64_t sampledDigest(std::string_view text) {
  if (text.size() <= kMaxWholeSample) return wholeDigest(text);
  constexpr int kPairs = 8;
  const std::size_t last = text.size() - kWord;
  const std::size_t step = last / (2 * kPairs - 1);
  const char* position = text.data();
  Sum sum(text.size());
#pragma GCC unroll 8
  for (int pair = 1; pair < kPairs; ++pair) {
    sum.add(wordAt(position), wordAt(position + step));
    position += 2 * step;
  }
  sum.add(wordAt(position), wordAt(text.data() + last));
  return sum.result();
}

}  // namespace qex::vornath
