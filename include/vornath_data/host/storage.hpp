/// The bytes of assets: makes AssetStorage blocks from a host's memory or files, without a copy.
#ifndef VORNATH_DATA_HOST_STORAGE_HPP
#define VORNATH_DATA_HOST_STORAGE_HPP

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#if defined(__unix__) || defined(__APPLE__)
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "vornath_data/asset_handle.hpp"
#include "vornath_data/result.hpp"

namespace vrnt::host {

/// A counted handle on the bytes of an asset. The last handle, of a scene or of a host, releases
/// the bytes on the thread that destroys it.
using Storage = data::AssetHandle;

namespace detail {

// A block together with the owner of its bytes, so that one release frees both.
template <typename Owner>
struct OwningBlock : AssetStorage {
  explicit OwningBlock() : AssetStorage{0, 1, 0, this, &OwningBlock::end} {}

  // An asset without a data pointer is a free slot. So an empty asset points to its own block.
  void show(void* bytes, std::size_t count) noexcept {
    size = count;
    if (count != 0) this->data = bytes;
  }

  static void end(void* block) {
    delete static_cast<OwningBlock*>(static_cast<AssetStorage*>(block));
  }

  Owner owner;
};

}  // namespace detail

/// Makes a block with a copy of `size` bytes. `bytes` may be null if `size` is 0.
/// Errors: throws std::bad_alloc.
inline Storage copyBytes(const void* bytes, std::size_t size) {
  Storage storage = Storage::adopt(vrdmAssetStorageCopy(bytes, size));
  if (storage.get() == nullptr) throw std::bad_alloc();
  return storage;
}

/// Makes a block from a vector, without a copy: the vector moves into the block.
/// Errors: throws std::bad_alloc; the vector is unchanged then.
template <typename T>
Storage moveBytes(std::vector<T>&& elements) {
  static_assert(std::is_trivially_copyable_v<T> && !std::is_same_v<T, bool>,
                "the bytes of the elements are the asset's");
  auto* const block = new detail::OwningBlock<std::vector<T>>;
  block->owner = std::move(elements);
  block->show(block->owner.data(), block->owner.size() * sizeof(T));
  return Storage::adopt(block);
}

#if defined(__unix__) || defined(__APPLE__)

namespace detail {

struct Mapping {
  Mapping() noexcept = default;
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;
  ~Mapping() {
    if (address != nullptr) munmap(address, size);
  }

  void* address = nullptr;
  std::size_t size = 0;
};

struct Descriptor {
  explicit Descriptor(int opened) noexcept : number(opened) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number >= 0) ::close(number);
  }

  const int number;
};

[[noreturn]] inline void raiseFileError(const std::string& path, int error) {
  ErrorCode code = ErrorCode::IoError;
  if (error == ENOENT) code = ErrorCode::FileNotFound;
  if (error == EACCES) code = ErrorCode::AccessDenied;
  if (error == ENOMEM) throw std::bad_alloc();
  throw Exception(code, "{}: {}", path, std::generic_category().message(error));
}

}  // namespace detail

/// Makes a block from a file that is mapped into memory; pages are read on first access. A write to
/// the bytes changes the memory only, not the file. If the file is truncated while it is mapped, an
/// access to the missing part ends the process with a signal.
/// Errors: throws Exception of code FileNotFound, AccessDenied or IoError with the path and the
/// system's error message; std::bad_alloc.
inline Storage mapFile(const std::string& path) {
  // O_NONBLOCK: do not wait if the path is not a regular file, for example a pipe without a writer.
  const detail::Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (file.number < 0 || fstat(file.number, &status) != 0) detail::raiseFileError(path, errno);
  if (!S_ISREG(status.st_mode)) {
    detail::raiseFileError(path, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
  }
  using Block = detail::OwningBlock<detail::Mapping>;
  auto* const block = new Block;
  Storage storage = Storage::adopt(block);
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size == 0) return storage;
  // The pages are private and writable, because the only owner of an asset may write to it.
  int flags = MAP_PRIVATE;
#if defined(MAP_NORESERVE)
  flags |= MAP_NORESERVE;
#endif
  void* const address = mmap(nullptr, size, PROT_READ | PROT_WRITE, flags, file.number, 0);
  if (address == MAP_FAILED) detail::raiseFileError(path, errno);
  block->owner.address = address;
  block->owner.size = size;
  block->show(address, size);
  return storage;
}

#endif

}  // namespace vrnt::host

#endif
