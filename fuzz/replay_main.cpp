// Runs a fuzz target without libFuzzer on the files and folders that are given as arguments.
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
constexpr bool kSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kSanitized = false;
#endif

// Without a sanitizer that bounds each allocation, the whole program is bounded.
void limitMemory() {
  constexpr rlim_t kBytes = rlim_t{2} << 30;
  const rlimit limit{kBytes, kBytes};
  if (!kSanitized) setrlimit(RLIMIT_AS, &limit);
}

}  // namespace

int main(int argc, char** argv) {
  limitMemory();
  std::vector<fs::path> files;
  for (int i = 1; i < argc; ++i) {
    if (!fs::is_directory(argv[i])) {
      files.emplace_back(argv[i]);
      continue;
    }
    for (const auto& entry : fs::recursive_directory_iterator(argv[i])) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());

  for (const fs::path& file : files) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
      std::fprintf(stderr, "Unable to read %s.\n", file.c_str());
      return 1;
    }
    // What ends the program is in the file that was named last.
    std::fprintf(stderr, "%s\n", file.c_str());
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (vornath_fuzz::outdatedInput != nullptr) {
      if (const std::string why = vornath_fuzz::outdatedInput(bytes); !why.empty()) {
        std::fprintf(stderr, "%s\n", why.c_str());
        return 1;
      }
    }
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  }
  std::printf("%zu inputs replayed\n", files.size());
  return files.empty() ? 1 : 0;
}
