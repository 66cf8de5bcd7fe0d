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

constexpr int kCells = 30;

std::string cells(int count, char cell) {
  return std::string(static_cast<std::size_t>(std::max(count, 0)), cell);
}

std::string barOf(double part) {
  const int full = static_cast<int>(std::clamp(part, 0.0, 1.0) * kCells);
  return "[" + cells(full, '#') + cells(kCells - full, '.') + "]";
}

// A block that goes to and fro, for work of unknown length.
std::string movingBar(double seconds) {
  constexpr int kBlock = 6;
  constexpr int kWay = kCells - kBlock;
  int at = static_cast<int>(seconds * 20) % (2 * kWay);
  if (at > kWay) at = 2 * kWay - at;
  return "[" + cells(at, '.') + cells(kBlock, '#') + cells(kWay - at, '.') + "]";
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
    const std::uint64_t done = expected_ != 0 ? bytesRead() - start_ : 0;
    const double part =
        expected_ != 0 ? static_cast<double>(done) / static_cast<double>(expected_) : 1;
    if (part < 0.99) {
      bar = barOf(part);
      std::snprintf(figures, sizeof figures, " %3d %%  %.0f s", static_cast<int>(part * 100),
                    seconds);
    } else {
      bar = movingBar(seconds);
      std::snprintf(figures, sizeof figures, "  %.0f s", seconds);
    }
    tell("\r" + title_ + "  " + bar + figures + "\x1b[K");
  } while (!end_.wait_for(lock, std::chrono::milliseconds(100), [this] { return ended_; }));
  tell("\r\x1b[K");
}

}  // namespace vrn
