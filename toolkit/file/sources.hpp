// The bytes of a scene file, wherever they are: in a file that is opened once, or in memory. And a
// window on them, through which the check reads them.
#ifndef VORNATH_TOOLKIT_FILE_SOURCES_HPP
#define VORNATH_TOOLKIT_FILE_SOURCES_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <streambuf>
#include <string>
#include <vector>

namespace vrtk {

/// Owns a file descriptor.
class FileHandle {
 public:
  FileHandle() noexcept = default;
  explicit FileHandle(int descriptor) noexcept : descriptor_(descriptor) {}
  FileHandle(FileHandle&& other) noexcept;
  FileHandle& operator=(FileHandle&& other) noexcept;
  ~FileHandle() { close(); }

  int get() const noexcept { return descriptor_; }
  explicit operator bool() const noexcept { return descriptor_ >= 0; }
  /// Returns false, with errno, if the system reports an error.
  bool close() noexcept;

 private:
  int descriptor_ = -1;
};

/// Bytes of a known number that can be read in any order.
class ByteSource {
 public:
  virtual ~ByteSource() = default;

  virtual std::uint64_t size() const = 0;

  /// Copies bytes; `offset + size` must not be greater than size(). Throws Failure if the bytes
  /// cannot be read any more.
  virtual void read(std::uint64_t offset, void* to, std::size_t size) = 0;

  /// Returns all bytes if they are in memory, else null.
  virtual const char* inMemory() const { return nullptr; }
};

class MemorySource final : public ByteSource {
 public:
  MemorySource(const void* bytes, std::uint64_t size)
      : bytes_(static_cast<const char*>(bytes)), size_(size) {}

  std::uint64_t size() const override { return size_; }
  void read(std::uint64_t offset, void* to, std::size_t size) override;
  const char* inMemory() const override { return bytes_ != nullptr ? bytes_ : ""; }

 private:
  const char* bytes_;
  std::uint64_t size_;
};

/// A regular file. If it changes while it is open, reading from it fails, as far as the system's
/// clock shows the change.
class FileSource final : public ByteSource {
 public:
  /// Throws Failure with VRTK_FILE_MISSING, VRTK_FILE_UNREADABLE, VRTK_FILE_IS_FOLDER or
  /// VRTK_FILE_NOT_REGULAR.
  explicit FileSource(const std::string& path);

  std::uint64_t size() const override { return state_.size; }
  void read(std::uint64_t offset, void* to, std::size_t size) override;

 private:
  // Not the time of the last change of any kind: a file that loses its name changes, too.
  struct State {
    std::uint64_t size;
    std::int64_t modified[2];
    bool operator==(const State& other) const;
  };
  static State stateOf(int descriptor, const std::string& path);
  [[noreturn]] void failChanged() const;

  std::string path_;
  FileHandle file_;
  State state_;
};

/// A part of a source in memory. Memory sources have no window: their bytes are where they are.
class Window {
 public:
  static constexpr std::size_t kCapacity = std::size_t{1} << 20;

  explicit Window(ByteSource& source, std::size_t capacity = kCapacity);

  std::uint64_t sourceSize() const { return size_; }

  /// Returns `size` bytes, valid until the next call. `size` must not be greater than the capacity,
  /// nor `offset + size` than sourceSize().
  const char* at(std::uint64_t offset, std::size_t size) {
    return has(offset, size) ? bytesAt(offset) : load(offset);
  }

  /// Returns whether at() would not have to read.
  bool has(std::uint64_t offset, std::size_t size) const {
    return direct_ != nullptr ||
           (offset >= start_ && size <= length_ && offset - start_ <= length_ - size);
  }

 private:
  const char* bytesAt(std::uint64_t offset) const {
    return direct_ != nullptr ? direct_ + offset : buffer_.get() + (offset - start_);
  }
  const char* load(std::uint64_t offset);

  ByteSource& source_;
  std::uint64_t size_;
  const char* direct_;
  std::size_t capacity_;
  std::unique_ptr<char[]> buffer_;
  std::uint64_t start_ = 0;
  std::size_t length_ = 0;
};

/// A stream buffer for reading a source from its start to its end.
class SourceBuffer final : public std::streambuf {
 public:
  explicit SourceBuffer(ByteSource& source);

 protected:
  int_type underflow() override;
  std::streamsize xsgetn(char* to, std::streamsize count) override;

 private:
  static constexpr std::size_t kCapacity = std::size_t{1} << 20;

  ByteSource& source_;
  std::uint64_t position_ = 0;  // behind what the buffer holds
  std::unique_ptr<char[]> buffer_;
};

}  // namespace vrtk

#endif
