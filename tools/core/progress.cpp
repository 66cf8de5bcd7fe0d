#include "core/progress.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include "core/output.hpp"
#include "core/session.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

using Clock = std::chrono::steady_clock;

// Returns the bytes that the process has read, 0 if the system does not tell.
std::uint64_t bytesRead() {
  std::ifstream counters("/proc/self/io");
  std::string name;
  std::uint64_t count = 0;
  while (counters >> name >> count) {
    if (name == "rchar:") return count;
  }
  return 0;
}

std::string barOf(double part) {
  constexpr int kCells = 30;
  const int full = static_cast<int>(std::clamp(part, 0.0, 1.0) * kCells);
  return "[" + std::string(static_cast<std::size_t>(full), '#') +
         std::string(static_cast<std::size_t>(kCells - full), '.') + "]";
}

}  // namespace

Progress::Progress(const Session& session, const std::string& path, unsigned passes)
    : title_("vrn " + session.command() + ": " + nameOf(path)) {
  const char* const terminal = std::getenv("TERM");
  if (!isTerminal(STDERR_FILENO) || terminal == nullptr || std::string(terminal) == "dumb") return;
  struct stat status {};
  if (passes != 0 && !isStream(path) && stat(path.c_str(), &status) == 0) {
    expected_ = static_cast<std::uint64_t>(status.st_size) * passes;
  }
  start_ = bytesRead();
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    // The work goes on without a bar.
  }
}

Progress::~Progress() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ended_ = true;
  }
  end_.notify_one();
  thread_.join();
}

void Progress::run() {
  const Clock::time_point begin = Clock::now();
  std::unique_lock<std::mutex> lock(mutex_);
  if (end_.wait_for(lock, std::chrono::seconds(1), [this] { return ended_; })) return;
  do {
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    char figures[64];
    std::string bar;
    if (expected_ != 0 && bytesRead() > start_) {
      // The last part of the work may be other than reading.
      const double part = std::min(
          static_cast<double>(bytesRead() - start_) / static_cast<double>(expected_), 0.99);
      bar = barOf(part);
      std::snprintf(figures, sizeof figures, " %3d %%  %.0f s", static_cast<int>(part * 100),
                    seconds);
    } else {
      bar = barOf(seconds / 3 - static_cast<double>(static_cast<int>(seconds / 3)));
      std::snprintf(figures, sizeof figures, "  %.0f s", seconds);
    }
    tell("\r" + title_ + "  " + bar + figures + "\x1b[K");
  } while (!end_.wait_for(lock, std::chrono::milliseconds(100), [this] { return ended_; }));
  tell("\r\x1b[K");
}

}  // namespace vrn
