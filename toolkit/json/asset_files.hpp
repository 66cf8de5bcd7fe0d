// The files that the bytes of assets are exported to: one for each digest.
#ifndef VORNATH_TOOLKIT_JSON_ASSET_FILES_HPP
#define VORNATH_TOOLKIT_JSON_ASSET_FILES_HPP

#include <cstddef>
#include <string>
#include <unordered_set>
#include <vector>

#include "file/target.hpp"

namespace vrtk {

/// Writes files into a folder, which it makes when it is needed. The files have no names until
/// nameFiles(), so that a process that ends before leaves nothing behind. Each one takes a
/// descriptor; when there are too many, and where the file system does not have such files, they
/// get their names early. Unless keep() is called, the files go when this object is destroyed, and
/// so does the folder if it made it.
class AssetFiles {
 public:
  explicit AssetFiles(std::string folder);
  AssetFiles(const AssetFiles&) = delete;
  AssetFiles& operator=(const AssetFiles&) = delete;
  ~AssetFiles();

  /// Writes bytes for the name of their digest, if there is no such file yet. Throws Failure as
  /// TargetFile does.
  void add(const std::string& digest, const void* bytes, std::size_t size);

  /// Gives the files their names. Throws Failure as TargetFile does.
  void nameFiles();

  void keep() { kept_ = true; }

 private:
  struct Unnamed {
    std::string path;
    TargetFile file;
    bool replaces;  // a file of that name, with other bytes
  };

  TargetFile makeFile(const std::string& path);
  void examineFolder();
  void makeFolder();

  std::string folder_;
  bool folderIsThere_ = false;
  bool folderIsOurs_ = false;
  bool kept_ = false;
  std::size_t mostUnnamed_;
  std::unordered_set<std::string> known_;
  std::vector<Unnamed> unnamed_;
  std::vector<std::string> made_;
};

/// The name of the file of a digest.
std::string assetFileName(const std::string& digest);

}  // namespace vrtk

#endif
