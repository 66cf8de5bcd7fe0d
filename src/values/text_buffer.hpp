/// A text under construction, in one buffer.
#ifndef VORNATH_VALUES_TEXT_BUFFER_HPP
#define VORNATH_VALUES_TEXT_BUFFER_HPP

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <string_view>

namespace qex::vornath {

/// A text that grows at its end. A short one lies in the object itself, a long one in memory from
/// malloc, so that a host can free it. Functions that make room throw std::bad_alloc.
class TextBuffer {
 public:
  TextBuffer() {}  // NOLINT(modernize-use-equals-default): `TextBuffer()` would fill short_
  TextBuffer(const TextBuffer&) = delete;
  TextBuffer& operator=(const TextBuffer&) = delete;
  ~TextBuffer() {
    if (begin_ != short_) std::free(begin_);
  }

  /// Returns the end of the text, behind which `size` more characters can be written. They become
  /// part of the text with setEnd().
  char* room(std::size_t size) {
    if (size > static_cast<std::size_t>(limit_ - end_)) grow(size);
    return end_;
  }
  void setEnd(char* end) { end_ = end; }

  void append(std::string_view text) {
    std::memcpy(room(text.size()), text.data(), text.size());
    end_ += text.size();
  }
  void append(std::size_t count, char character) {
    std::memset(room(count), character, count);
    end_ += count;
  }

  std::string_view text() const { return {begin_, static_cast<std::size_t>(end_ - begin_)}; }

  /// Returns the text as a string that std::free() frees, in no more memory than it needs, and
  /// leaves this empty.
  char* releaseString() {
    *room(1) = '\0';
    const std::size_t size = text().size() + 1;
    auto* const string =
        static_cast<char*>(std::realloc(begin_ == short_ ? nullptr : begin_, size));
    if (string == nullptr) throw std::bad_alloc();
    if (begin_ == short_) std::memcpy(string, short_, size);
    begin_ = end_ = short_;
    limit_ = short_ + sizeof(short_);
    return string;
  }

 private:
  void grow(std::size_t size) {
    const std::size_t used = text().size();
    const auto capacity = static_cast<std::size_t>(limit_ - begin_);
    if (size > kMaxSize - used) throw std::bad_alloc();
    const std::size_t wanted = std::max(used + size, capacity * 2);
    void* const grown = std::realloc(begin_ == short_ ? nullptr : begin_, wanted);
    if (grown == nullptr) throw std::bad_alloc();
    // All of it: the compiler knows that size.
    if (begin_ == short_) std::memcpy(grown, short_, sizeof(short_));
    begin_ = static_cast<char*>(grown);
    end_ = begin_ + used;
    limit_ = begin_ + wanted;
  }

  static constexpr std::size_t kMaxSize = std::numeric_limits<std::ptrdiff_t>::max() / 2;

  char* begin_ = short_;
  char* end_ = short_;
  char* limit_ = short_ + sizeof(short_);
  char short_[1000];
};

}  // namespace qex::vornath

#endif
