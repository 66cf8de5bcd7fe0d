/// The command line of the program.
#ifndef VRN_RENDER_OPTIONS_HPP
#define VRN_RENDER_OPTIONS_HPP

#include <cstdint>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "film/image_files.hpp"

namespace vrn_render {

enum class Preview { None, Blocks, Sixels };

struct Options {
  std::string scene, output;
  std::vector<std::string> shares;  ///< to assemble
  bool assembles = false;
  int width = 0, height = 0;  ///< 0: from the film of the camera
  std::optional<int> task;
  std::optional<int> bounces;
  std::uint32_t samples = 64;
  std::optional<std::uint32_t> seed;
  int threads = 0;
  float noise = 0, exposure = 0;
  double seconds = 0;
  std::set<Pass> passes;
  Preview preview = Preview::None;
  std::optional<std::pair<int, int>> tiles;
  std::uint64_t maxMemory = 0;  ///< bytes; 0 for no limit
  bool trust = false, json = false;
  bool isQuiet = false, wantsHelp = false, wantsVersion = false, wantsTiles = false;
};

/// A command line that the program does not understand. The message is one line, with what to do.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Errors: throws UsageError.
Options parseOptions(const std::vector<std::string>& arguments);

extern const char kUsage[];

}  // namespace vrn_render

#endif
