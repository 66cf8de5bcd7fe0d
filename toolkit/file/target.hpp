// A file that is written whole or not at all.
#ifndef VORNATH_TOOLKIT_FILE_TARGET_HPP
#define VORNATH_TOOLKIT_FILE_TARGET_HPP

#include <sys/types.h>

#include <functional>
#include <optional>
#include <ostream>
#include <string>

#include "file/sources.hpp"

namespace vrtk {

/// Replaces a file, or makes a new one. The bytes go to a file without a name in the target's
/// folder, or where the file system has no such files, to one with a name of its own. It takes the
/// target's place when it is complete; until then it goes with this object or with the process.
class TargetFile {
 public:
  /// Whether the file is to have no name. Some file systems do not have such files.
  enum class Name { NoneIfPossible, Always };

  /// Throws Failure with VRTK_SAVE_NO_FOLDER, VRTK_SAVE_DENIED, VRTK_SAVE_FAILED,
  /// VRTK_FILE_IS_FOLDER or VRTK_FILE_NOT_REGULAR.
  explicit TargetFile(const std::string& path, Name name = Name::NoneIfPossible);

  /// A file without a name that is made in the folder `stage`; the target's folder need not exist
  /// before commit(). Both folders must be in one file system. Throws as above; isStaged() says
  /// whether the file system has such files. If it has none, nothing can be written.
  TargetFile(const std::string& path, const std::string& stage);
  bool isStaged() const { return static_cast<bool>(file_); }

  TargetFile(TargetFile&& other) noexcept;
  TargetFile(const TargetFile&) = delete;
  TargetFile& operator=(const TargetFile&) = delete;
  ~TargetFile();

  /// Calls `write` with a stream to the file. Throws what `write` throws, and Failure with
  /// VRTK_SAVE_NO_SPACE or VRTK_SAVE_FAILED for what the system reports.
  void write(const std::function<void(std::ostream&)>& write);

  /// Waits until the device has the bytes.
  void sync();

  /// Puts the file in the target's place. If `sync`, waits for the device before and after.
  void commit(bool sync);

 private:
  struct Existing {
    mode_t mode;
    uid_t owner;
    gid_t group;
  };

  void resolve();
  void followLinks();
  void openFolder();
  mode_t modeOfNew() const;
  bool openUnnamed(int folder);
  void openTemporary(Name name);
  void keepAccessList();
  void setPermissions();
  [[noreturn]] void fail(const char* what, int reason) const;

  std::string path_;    // as it was given
  std::string target_;  // behind all symbolic links
  std::string name_;    // of the target in its folder
  FileHandle folder_;
  FileHandle file_;
  std::string temporary_;  // the name of the file in the folder, if it has one
  std::optional<Existing> existing_;
};

}  // namespace vrtk

#endif
