// The files that the bytes of assets are exported to: one for each digest.
#ifndef VORNATH_TOOLKIT_JSON_ASSET_FILES_HPP
#define VORNATH_TOOLKIT_JSON_ASSET_FILES_HPP

#include <cstddef>
#include <string>
#include <unordered_set>
#include <vector>

namespace vrtk {

/// Writes files into a folder, which it makes when it is needed. Unless keep() is called, its files
/// go when it is destroyed, and so does the folder if it made it.
class AssetFiles {
 public:
  explicit AssetFiles(std::string folder) : folder_(std::move(folder)) {}
  AssetFiles(const AssetFiles&) = delete;
  AssetFiles& operator=(const AssetFiles&) = delete;
  ~AssetFiles();

  /// Writes bytes under the name of their digest, if there is no such file yet. Throws Failure as
  /// TargetFile does.
  void add(const std::string& digest, const void* bytes, std::size_t size);

  void keep() { kept_ = true; }

 private:
  void makeFolder();

  std::string folder_;
  bool folderIsThere_ = false;
  bool folderIsOurs_ = false;
  bool kept_ = false;
  std::unordered_set<std::string> known_;
  std::vector<std::string> made_;
};

/// The name of the file of a digest.
std::string assetFileName(const std::string& digest);

}  // namespace vrtk

#endif
