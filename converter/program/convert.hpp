// A conversion from a file to a scene file.
#ifndef VRN_CONVERT_PROGRAM_CONVERT_HPP
#define VRN_CONVERT_PROGRAM_CONVERT_HPP

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "program/options.hpp"

namespace vrn_convert {

/// What a conversion has to tell.
struct Outcome {
  std::shared_ptr<const void> scene;  ///< destroying it takes time, which a process may save
  std::vector<std::string> notices;
  bool hasLoss = false;  ///< something of the file is not carried
  std::string report;    ///< as JSON
};

/// A failure whose message names its file.
class Trouble : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the input and writes the output. A scene for standard output goes to the descriptor
/// `standardOutput`. Throws Refused, Trouble and std::bad_alloc; no file is changed then.
Outcome convert(const Options& options, int standardOutput);

}  // namespace vrn_convert

#endif
