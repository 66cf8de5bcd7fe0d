#include "json/asset_files.hpp"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <ostream>

#include "file/sources.hpp"
#include "file/target.hpp"
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

AssetFiles::~AssetFiles() {
  if (kept_) return;
  for (const std::string& path : made_) unlink(path.c_str());
  if (folderIsOurs_) rmdir(folder_.c_str());
}

void AssetFiles::makeFolder() {
  if (folderIsThere_) return;
  if (mkdir(folder_.c_str(), 0777) == 0) {
    folderIsOurs_ = true;
  } else if (errno != EEXIST) {
    const int reason = errno;
    const bool missing = reason == ENOENT || reason == ENOTDIR;
    const bool full = reason == ENOSPC || reason == EDQUOT;
    throw Failure(missing ? VRTK_SAVE_NO_FOLDER
                  : full  ? VRTK_SAVE_NO_SPACE
                          : VRTK_SAVE_DENIED,
                  fmt::format("{}: the folder for the bytes of assets cannot be made: {}; {}",
                              folder_, std::strerror(reason),
                              missing ? "make the folder above it first" : "export elsewhere"));
  } else {
    struct stat found {};
    if (stat(folder_.c_str(), &found) != 0 || !S_ISDIR(found.st_mode)) {
      throw Failure(VRTK_SAVE_NO_FOLDER,
                    folder_ +
                        ": the bytes of assets go into this folder, but it is a file; move "
                        "it away or export under another name");
    }
  }
  folderIsThere_ = true;
}

void AssetFiles::add(const std::string& digest, const void* bytes, std::size_t size) {
  if (!known_.insert(digest).second) return;
  makeFolder();
  const std::string path = folder_ + "/" + assetFileName(digest);
  if (hasBytes(path, bytes, size)) return;
  const bool wasThere = access(path.c_str(), F_OK) == 0;
  TargetFile target(path);
  target.write([bytes, size](std::ostream& stream) {
    stream.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
  });
  if (!wasThere) made_.push_back(path);
  target.commit(true);
}

}  // namespace vrtk
