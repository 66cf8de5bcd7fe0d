// A bar on standard error for work that takes longer than a second.
#ifndef VRN_CORE_PROGRESS_HPP
#define VRN_CORE_PROGRESS_HPP

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace vrn {

class Session;

/// Shows a bar while it lives, if standard error is a terminal and a second has passed. How far the
/// work is follows from the bytes that the process has read since.
class Progress {
 public:
  /// The work reads the file `path` `passes` times; 0 if that is unknown.
  Progress(const Session& session, const std::string& path, unsigned passes);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  /// Removes the bar.
  ~Progress();

 private:
  void run();

  std::string title_;
  std::uint64_t expected_ = 0;
  std::uint64_t start_ = 0;
  std::mutex mutex_;
  std::condition_variable end_;
  bool ended_ = false;
  std::thread thread_;
};

}  // namespace vrn

#endif
