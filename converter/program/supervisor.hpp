// Work in a process of its own, so that a crash, a hang or a lack of memory ends only that.
#ifndef VRN_CONVERT_PROGRAM_SUPERVISOR_HPP
#define VRN_CONVERT_PROGRAM_SUPERVISOR_HPP

#include <cstdint>
#include <functional>
#include <string>

namespace vrn_convert {

struct Limits {
  double seconds = 0;        ///< 0 for no limit
  std::uint64_t memory = 0;  ///< bytes of addresses; 0 for no limit
};

/// How the work ended.
struct Ending {
  bool isWhole = false;  ///< the work came to its end
  std::string message;   ///< what it returned, or else what happened
};

/// Runs `work` in a child process and returns what it returns. What the child writes to standard
/// output or standard error is dropped; it gets the descriptor of the real standard output. While
/// it runs, `wait` is called about ten times a second with the seconds since the start.
Ending runSupervised(const Limits& limits, const std::function<std::string(int)>& work,
                     const std::function<void(double)>& wait);

}  // namespace vrn_convert

#endif
