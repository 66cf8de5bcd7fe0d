// A file for the measurement of a benchmark. Its name is that of the process, since several runs at
// the same time must not share it.
#ifndef VORNATH_BENCH_SCRATCH_FILE_HPP
#define VORNATH_BENCH_SCRATCH_FILE_HPP

#include <unistd.h>

#include <filesystem>
#include <string>

namespace bench {

class ScratchFile {
 public:
  explicit ScratchFile(const std::string& name)
      : path_((std::filesystem::temp_directory_path() /
               ("vornath_bench_" + std::to_string(getpid()) + "_" + name))
                  .string()) {}
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() { remove(); }

  const char* path() const { return path_.c_str(); }
  void remove() const { unlink(path()); }

 private:
  std::string path_;
};

}  // namespace bench

#endif
