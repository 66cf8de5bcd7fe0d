// The options of vrn-convert.
#ifndef VRN_CONVERT_PROGRAM_OPTIONS_HPP
#define VRN_CONVERT_PROGRAM_OPTIONS_HPP

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vrn_convert {

struct Options {
  std::string input, output;  ///< - for standard input and output
  std::string format;         ///< the extension that stands for the format; empty: that of the file
  std::string names;          ///< the file to write the names of objects to
  double scale = 1;           ///< metres of a unit of the file
  bool isZUp = false;
  bool addsCamera = true, addsLight = true;
  bool framesCamera = false, addsLightAlways = false;
  bool isStrict = false, isJson = false, isQuiet = false;
  double seconds = 600;         ///< the time limit; 0 for none
  std::uint64_t maxMemory = 0;  ///< bytes; 0 for as many as the machine has
  bool wantsHelp = false, wantsVersion = false, wantsFormats = false;
};

/// The words on the command line are wrong. The message says what and what to do.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws UsageError.
Options parseOptions(const std::vector<std::string>& arguments);

/// The text of --help.
extern const char kHelp[];

}  // namespace vrn_convert

#endif
