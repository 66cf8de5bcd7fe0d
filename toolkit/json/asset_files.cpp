#include "json/asset_files.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <ostream>

#include "file/sources.hpp"
#include "foundation/failure.hpp"
#include "foundation/sha256.hpp"

namespace vrtk {
namespace {

// Whether a file has exactly these bytes. A file that cannot be read has not.
bool hasBytes(const std::string& path, const void* bytes, std::size_t size) {
  try {
    FileSource source(path);
    if (source.size() != size) return false;
    constexpr std::size_t kPiece = std::size_t{1} << 20;
    const auto piece = std::make_unique_for_overwrite<char[]>(kPiece);
    for (std::size_t at = 0; at < size; at += kPiece) {
      const std::size_t count = std::min(kPiece, size - at);
      source.read(at, piece.get(), count);
      if (std::memcmp(piece.get(), static_cast<const char*>(bytes) + at, count) != 0) return false;
    }
    return true;
  } catch (const Failure&) {
    return false;
  }
}

}  // namespace

std::string assetFileName(const std::string& digest) { return digest + ".bin"; }

AssetFiles::AssetFiles(std::string folder) : folder_(std::move(folder)) {
  // The process needs the other descriptors itself.
  rlimit limit{};
  const bool known = getrlimit(RLIMIT_NOFILE, &limit) == 0;
  mostUnnamed_ = known ? static_cast<std::size_t>(limit.rlim_cur / 4) : 16;
}

AssetFiles::~AssetFiles() {
  if (kept_) return;
  for (const std::string& path : made_) unlink(path.c_str());
  if (folderIsOurs_) rmdir(folder_.c_str());
}

// Finds out whether the folder is there.
void AssetFiles::examineFolder() {
  if (folderIsThere_) return;
  struct stat found {};
  if (stat(folder_.c_str(), &found) != 0) return;
  if (!S_ISDIR(found.st_mode)) {
    throw Failure(VRTK_SAVE_NO_FOLDER,
                  folder_ +
                      ": the bytes of assets go into this folder, but it is a file; move "
                      "it away or export under another name");
  }
  folderIsThere_ = true;
}

void AssetFiles::makeFolder() {
  examineFolder();
  if (folderIsThere_) return;
  if (mkdir(folder_.c_str(), 0777) != 0) {
    const int reason = errno;
    const bool missing = reason == ENOENT || reason == ENOTDIR;
    const bool full = reason == ENOSPC || reason == EDQUOT;
    throw Failure(missing ? VRTK_SAVE_NO_FOLDER
                  : full  ? VRTK_SAVE_NO_SPACE
                          : VRTK_SAVE_DENIED,
                  fmt::format("{}: the folder for the bytes of assets cannot be made: {}; {}",
                              folder_, std::strerror(reason),
                              missing ? "make the folder above it first" : "export elsewhere"));
  }
  folderIsThere_ = true;
  folderIsOurs_ = true;
}

// A file without a name if there can be one, else one in the folder.
TargetFile AssetFiles::makeFile(const std::string& path) {
  if (unnamed_.size() < mostUnnamed_) {
    const std::size_t slash = folder_.rfind('/');
    const std::string above = slash == std::string::npos ? "."
                              : slash == 0               ? "/"
                                                         : folder_.substr(0, slash);
    TargetFile file(path, folderIsThere_ ? folder_ : above);
    if (file.isStaged()) return file;
  }
  makeFolder();
  return TargetFile(path);
}

void AssetFiles::add(const std::string& digest, const void* bytes, std::size_t size) {
  if (!known_.insert(digest).second) return;
  examineFolder();
  const std::string path = folder_ + "/" + assetFileName(digest);
  if (folderIsThere_ && hasBytes(path, bytes, size)) return;
  const bool replaces = folderIsThere_ && access(path.c_str(), F_OK) == 0;
  if (unnamed_.size() >= mostUnnamed_) nameFiles();
  unnamed_.push_back({path, makeFile(path), replaces});
  TargetFile& file = unnamed_.back().file;
  try {
    file.write([bytes, size](std::ostream& stream) {
      stream.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    });
    file.sync();
  } catch (...) {
    unnamed_.pop_back();
    throw;
  }
}

void AssetFiles::nameFiles() {
  if (unnamed_.empty()) return;
  makeFolder();
  made_.reserve(made_.size() + unnamed_.size());
  for (Unnamed& file : unnamed_) {
    file.file.commit(false);
    if (!file.replaces) made_.push_back(std::move(file.path));
  }
  unnamed_.clear();
  const FileHandle folder(open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder) fsync(folder.get());
}

}  // namespace vrtk
