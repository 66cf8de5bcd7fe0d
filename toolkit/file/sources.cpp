#include "file/sources.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "foundation/failure.hpp"

namespace vrtk {

FileHandle::FileHandle(FileHandle&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

bool FileHandle::close() noexcept {
  const int descriptor = std::exchange(descriptor_, -1);
  return descriptor < 0 || ::close(descriptor) == 0;
}

void MemorySource::read(std::uint64_t offset, void* to, std::size_t size) {
  if (size != 0) std::memcpy(to, bytes_ + offset, size);
}

bool FileSource::State::operator==(const State& other) const {
  return size == other.size && std::equal(modified, modified + 2, other.modified);
}

FileSource::State FileSource::stateOf(int descriptor, const std::string& path) {
  struct stat found {};
  if (fstat(descriptor, &found) != 0) {
    throw Failure(VRTK_FILE_UNREADABLE,
                  fmt::format("{}: it cannot be examined: {}", path, std::strerror(errno)));
  }
  if (S_ISDIR(found.st_mode)) {
    throw Failure(VRTK_FILE_IS_FOLDER, path + ": this is a folder; name a file in it");
  }
  if (!S_ISREG(found.st_mode)) {
    throw Failure(VRTK_FILE_NOT_REGULAR,
                  path +
                      ": this is no regular file but a pipe, a socket or a device; copy its "
                      "content to a file first");
  }
  return {static_cast<std::uint64_t>(found.st_size), {found.st_mtim.tv_sec, found.st_mtim.tv_nsec}};
}

FileSource::FileSource(const std::string& path)
    : path_(path),
      // A FIFO without a writer would otherwise keep the call from returning.
      file_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
  if (!file_) {
    const int reason = errno;
    if (reason == ENOENT || reason == ENOTDIR) {
      throw Failure(VRTK_FILE_MISSING, path + ": there is no such file; check the path");
    }
    if (reason == ENXIO) {
      throw Failure(VRTK_FILE_NOT_REGULAR,
                    path + ": this is no regular file; copy its content to a file first");
    }
    throw Failure(VRTK_FILE_UNREADABLE,
                  fmt::format("{}: it cannot be opened: {}; {}", path, std::strerror(reason),
                              reason == EACCES ? "ask for permission to read it"
                                               : "check the path and the device"));
  }
  state_ = stateOf(file_.get(), path_);
  posix_fadvise(file_.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
}

void FileSource::failChanged() const {
  throw Failure(VRTK_FILE_CHANGED,
                path_ + ": it was changed while it was read; try again when its writer is done");
}

void FileSource::read(std::uint64_t offset, void* to, std::size_t size) {
  auto* next = static_cast<char*>(to);
  while (size != 0) {
    const ssize_t count = pread(file_.get(), next, size, static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      throw Failure(VRTK_FILE_UNREADABLE, fmt::format("{}: it cannot be read: {}; check the device",
                                                      path_, std::strerror(errno)));
    }
    if (count == 0) failChanged();
    next += count;
    offset += static_cast<std::uint64_t>(count);
    size -= static_cast<std::size_t>(count);
  }
  if (!(stateOf(file_.get(), path_) == state_)) failChanged();
}

Window::Window(ByteSource& source, std::size_t capacity)
    : source_(source),
      size_(source.size()),
      direct_(source.inMemory()),
      capacity_(capacity) {
  if (direct_ == nullptr) buffer_ = std::make_unique_for_overwrite<char[]>(capacity_);
}

const char* Window::load(std::uint64_t offset) {
  const std::uint64_t rest = size_ - offset;
  const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(rest, capacity_));
  length_ = 0;  // if reading fails
  source_.read(offset, buffer_.get(), length);
  start_ = offset;
  length_ = length;
  return buffer_.get();
}

SourceBuffer::SourceBuffer(ByteSource& source)
    : source_(source), buffer_(std::make_unique_for_overwrite<char[]>(kCapacity)) {
  setg(buffer_.get(), buffer_.get(), buffer_.get());
}

SourceBuffer::int_type SourceBuffer::underflow() {
  if (gptr() != egptr()) return traits_type::to_int_type(*gptr());
  const auto length =
      static_cast<std::size_t>(std::min<std::uint64_t>(source_.size() - position_, kCapacity));
  if (length == 0) return traits_type::eof();
  source_.read(position_, buffer_.get(), length);
  position_ += length;
  setg(buffer_.get(), buffer_.get(), buffer_.get() + length);
  return traits_type::to_int_type(*gptr());
}

std::streamsize SourceBuffer::xsgetn(char* to, std::streamsize count) {
  std::streamsize done = 0;
  while (done < count) {
    const std::streamsize buffered = std::min<std::streamsize>(egptr() - gptr(), count - done);
    if (buffered > 0) {
      std::memcpy(to + done, gptr(), static_cast<std::size_t>(buffered));
      setg(eback(), gptr() + buffered, egptr());
      done += buffered;
      continue;
    }
    // The bytes of large assets go to their place at once.
    const auto wanted = static_cast<std::uint64_t>(count - done);
    if (wanted >= kCapacity) {
      const auto length =
          static_cast<std::size_t>(std::min<std::uint64_t>(source_.size() - position_, wanted));
      if (length == 0) break;
      source_.read(position_, to + done, length);
      position_ += length;
      done += static_cast<std::streamsize>(length);
      continue;
    }
    if (traits_type::eq_int_type(underflow(), traits_type::eof())) break;
  }
  return done;
}

}  // namespace vrtk
