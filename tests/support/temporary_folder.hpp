// A folder for a test's files, which goes with them.
#ifndef VORNATH_TESTS_SUPPORT_TEMPORARY_FOLDER_HPP
#define VORNATH_TESTS_SUPPORT_TEMPORARY_FOLDER_HPP

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace vornath_test {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vornath_").string();
    pattern.append(6, 'X');  // mkdtemp() puts a name of its own in their place
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a folder");
    path_ = pattern;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

}  // namespace vornath_test

#endif
