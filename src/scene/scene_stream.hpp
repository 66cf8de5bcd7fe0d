// Where a scene file is written to and read from: a stream of the host, or a file. Both have the
// same operations, so that the file format is written once as a template. A file skips the work of
// a std::ostream and a std::istream on each item, which is most of the work for a small item.
#ifndef VORNATH_SCENE_SCENE_STREAM_HPP
#define VORNATH_SCENE_SCENE_STREAM_HPP

#include <cstddef>
#include <cstring>
#include <fstream>
#include <istream>
#include <memory>
#include <ostream>

#include "platform/huge_pages.hpp"
#include "platform/path.hpp"

namespace vrnt::data {

/// Writes to a stream of the host, each item by one call. Does not check the stream's state.
class StreamWriter {
 public:
  explicit StreamWriter(std::ostream& stream) : stream_(stream) {}

  void write(const void* bytes, std::size_t size) {
    stream_.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
  }

 private:
  std::ostream& stream_;
};

/// Reads from a stream of the host, each item by one call.
class StreamReader {
 public:
  explicit StreamReader(std::istream& stream) : stream_(stream) {}

  /// Reads bytes. Returns how many there were; the others stay as they are.
  std::size_t read(void* bytes, std::size_t size) {
    stream_.read(static_cast<char*>(bytes), static_cast<std::streamsize>(size));
    return static_cast<std::size_t>(stream_.gcount());
  }

  /// Does the same as read(), into new memory.
  std::size_t readIntoNew(void* bytes, std::size_t size) { return read(bytes, size); }

  /// Returns whether a read failed or had fewer bytes than it asked for. No later one reads any.
  bool failed() const { return stream_.fail(); }

  /// Goes back by as many bytes.
  void putBack(std::size_t size) {
    stream_.seekg(-static_cast<std::streamoff>(size), std::ios::cur);
  }

 private:
  std::istream& stream_;
};

/// The size of a file's buffer in bytes. Smaller writes take the system longer for the same bytes,
/// and larger ones do not fit into a processor's second cache.
inline constexpr std::size_t kFileBufferSize = std::size_t{1} << 20;

/// The buffer of a file, as a base class that lives longer than the std::filebuf that uses it.
struct FileBuffer {
  std::unique_ptr<char[]> buffer = std::make_unique_for_overwrite<char[]>(kFileBufferSize + 1);
};

/// Writes a file. After a failed write, writes nothing more.
class FileWriter : private FileBuffer, private std::filebuf {
 public:
  /// Creates the file, or empties it if there is one. The path is UTF-8. A file that cannot be
  /// opened counts as a failed write.
  /// Errors: throws std::bad_alloc, and std::system_error if the path cannot be converted.
  explicit FileWriter(const char* path) {
    // The last byte of the buffer is the one that makes it overflow.
    pubsetbuf(buffer.get(), kFileBufferSize);
    open(vrnt::detail::pathFromUtf8(path), std::ios::binary | std::ios::out | std::ios::trunc);
  }

  // Inline, so that sizes are constants where the format's are.
  [[gnu::always_inline]] void write(const void* bytes, std::size_t size) {
    // Not true for a size of 0, for which the addresses may be null.
    if (size - 1 < static_cast<std::size_t>(epptr() - pptr())) {
      std::memcpy(pptr(), bytes, size);
      pbump(static_cast<int>(size));
    } else {
      writeThroughBuffer(static_cast<const char*>(bytes), size);
    }
  }

 private:
  // Fills the buffer before it is written to the file, so that each write to the file is a whole
  // number of pages.
  void writeThroughBuffer(const char* bytes, std::size_t size);

  bool failed_ = false;
};

/// Reads a file. After a failed read, or one at the end of the file, reads nothing more.
class FileReader : private FileBuffer, private std::filebuf {
 public:
  /// Opens the file. The path is UTF-8. A file that cannot be opened counts as a failed read.
  /// Errors: throws std::bad_alloc, and std::system_error if the path cannot be converted.
  explicit FileReader(const char* path) {
    // Reads use all bytes of the buffer but one.
    pubsetbuf(buffer.get(), kFileBufferSize + 1);
    failed_ = !open(vrnt::detail::pathFromUtf8(path), std::ios::binary | std::ios::in);
  }

  /// As for StreamReader.
  [[gnu::always_inline]] std::size_t read(void* bytes, std::size_t size) {
    if (size - 1 < static_cast<std::size_t>(egptr() - gptr())) {
      std::memcpy(bytes, gptr(), size);
      gbump(static_cast<int>(size));
      return size;
    }
    return readThroughBuffer(static_cast<char*>(bytes), size);
  }
  std::size_t readIntoNew(void* bytes, std::size_t size);
  bool failed() const { return failed_; }
  void putBack(std::size_t) {}

 private:
  std::size_t readThroughBuffer(char* bytes, std::size_t size);

  bool failed_ = false;
};

}  // namespace vrnt::data

#endif
