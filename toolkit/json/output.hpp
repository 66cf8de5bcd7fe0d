// Where a document is written: a buffer that is passed on when it is full.
#ifndef VORNATH_TOOLKIT_JSON_OUTPUT_HPP
#define VORNATH_TOOLKIT_JSON_OUTPUT_HPP

#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vrtk {

class Output {
 public:
  using Sink = std::function<void(const char* bytes, std::size_t size)>;

  explicit Output(Sink sink)
      : sink_(std::move(sink)),
        buffer_(std::make_unique_for_overwrite<char[]>(kCapacity)),
        next_(buffer_.get()),
        end_(buffer_.get() + kCapacity) {}

  /// Makes room for `size` bytes, at most kMostRoom, and returns where they go. Call wrote() with
  /// their end.
  char* room(std::size_t size) {
    if (static_cast<std::size_t>(end_ - next_) < size) flush();
    return next_;
  }
  void wrote(char* end) { next_ = end; }

  void put(char c) {
    if (next_ == end_) flush();
    *next_++ = c;
  }

  void put(std::string_view text) {
    if (static_cast<std::size_t>(end_ - next_) < text.size()) [[unlikely]] {
      flush();
      if (text.size() > kCapacity) {
        sink_(text.data(), text.size());
        return;
      }
    }
    if (!text.empty()) std::memcpy(next_, text.data(), text.size());
    next_ += text.size();
  }

  /// Ends a line, and starts one that is indented by `depth` steps.
  void line(std::size_t depth) {
    char* const at = room(kLongestIndent);
    wrote(startLine(at, depth));
  }

  /// Starts the next part of an object or an array on a line of its own. `key` stands before it as
  /// it is; it is short.
  void part(bool isFirst, std::size_t depth, std::string_view key) {
    if (key.size() > kMostRoom - kLongestIndent - 1) {
      if (!isFirst) put(',');
      line(depth);
      put(key);
      return;
    }
    char* at = room(key.size() + kLongestIndent + 1);
    *at = ',';
    at = startLine(at + (isFirst ? 0 : 1), depth);
    if (!key.empty()) std::memcpy(at, key.data(), key.size());
    wrote(at + key.size());
  }

  void flush() {
    if (next_ != buffer_.get()) {
      sink_(buffer_.get(), static_cast<std::size_t>(next_ - buffer_.get()));
    }
    next_ = buffer_.get();
  }

  static constexpr std::size_t kMostRoom = std::size_t{1} << 12;

 private:
  static constexpr std::size_t kCapacity = std::size_t{1} << 18;
  // Deeper lines are not indented any further: a document is to grow with its content only.
  static constexpr std::size_t kDeepestIndent = 64;
  static constexpr std::size_t kLongestIndent = 2 * kDeepestIndent + 1;

  static char* startLine(char* at, std::size_t depth) {
    const std::size_t blanks = 2 * (depth < kDeepestIndent ? depth : kDeepestIndent);
    *at = '\n';
    std::memset(at + 1, ' ', blanks);
    return at + 1 + blanks;
  }

  Sink sink_;
  std::unique_ptr<char[]> buffer_;
  char* next_;
  char* end_;
};

}  // namespace vrtk

#endif
