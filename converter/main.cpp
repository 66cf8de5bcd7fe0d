// vrn-convert: converts files of other kinds to scene files.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "assimp/assimp_reader.hpp"
#include "program/convert.hpp"
#include "program/options.hpp"
#include "program/supervisor.hpp"
#include "scene_plan/notices.hpp"
#include "scene_plan/text.hpp"
#include "vornath_data/version.h"

namespace vrn_convert {
namespace {

enum ExitCode : int { kDone = 0, kFound = 1, kTrouble = 2 };

std::string shown(const std::string& path) { return path == "-" ? "standard input" : path; }

void tell(const std::string& text) {
  std::fprintf(stderr, "vrn convert: %s\n", oneLine(asUtf8(text)).c_str());
}

// A bar on a terminal for work that takes longer than a second.
class Bar {
 public:
  explicit Bar(const Options& options)
      : title_("vrn convert: " + oneLine(asUtf8(shown(options.input)))) {
    const char* const terminal = std::getenv("TERM");
    mayShow_ = !options.isQuiet && isatty(STDERR_FILENO) != 0 && terminal != nullptr &&
               std::strcmp(terminal, "dumb") != 0;
  }
  void operator()(double seconds) {
    if (!mayShow_ || seconds < 1) return;
    constexpr int kCells = 30;
    constexpr int kBlock = 6;
    constexpr int kWay = kCells - kBlock;
    int at = static_cast<int>(seconds * 20) % (2 * kWay);
    if (at > kWay) at = 2 * kWay - at;
    std::string cells(kCells, '.');
    std::fill_n(cells.begin() + at, kBlock, '#');
    std::fprintf(stderr, "\r%s  [%s]  %.0f s\x1b[K", title_.c_str(), cells.c_str(), seconds);
    isShown_ = true;
  }
  void end() {
    if (isShown_) std::fputs("\r\x1b[K", stderr);
    isShown_ = false;
  }

 private:
  std::string title_;
  bool mayShow_ = false;
  bool isShown_ = false;
};

std::uint64_t machineMemory() {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long size = sysconf(_SC_PAGESIZE);
  return pages > 0 && size > 0
             ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(size)
             : 0;
}

// What the child tells: t or r with a message about trouble or the input, or d (done) or l (done
// with a loss) with the number of notices, the notices, a line each, and the report.
std::string work(const Options& options, int standardOutput) {
  try {
    // The process ends behind this, which frees the memory of the scene faster than the library.
    static Outcome outcome;
    outcome = convert(options, standardOutput);
    std::string text = outcome.hasLoss ? "l" : "d";
    text += std::to_string(outcome.notices.size()) + "\n";
    for (const std::string& notice : outcome.notices) text += notice + "\n";
    return text + outcome.report;
  } catch (const Trouble& trouble) {
    return std::string("t") + trouble.what();
  } catch (const Refused& refused) {
    return std::string("r") + refused.what();
  } catch (const std::bad_alloc&) {
    return "rit needs more memory than there is; give more with --max-memory, or split the file";
  } catch (const std::exception& error) {
    return std::string("r") + error.what();
  }
}

// Prints a text on standard output. A reader that leaves is no trouble.
int print(const std::string& text) {
  errno = 0;
  if ((std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0) || errno == EPIPE) {
    return kDone;
  }
  tell(std::string("standard output: it cannot be written: ") + std::strerror(errno) +
       "; make room and run the command again");
  return kTrouble;
}

int run(const Options& options) {
  if (options.wantsHelp) return print(kHelp);
  if (options.wantsVersion) {
    return print("vrn-convert " + std::to_string(VORNATH_DATA_VERSION_MAJOR) + "." +
                 std::to_string(VORNATH_DATA_VERSION_MINOR) + "." +
                 std::to_string(VORNATH_DATA_VERSION_PATCH) + "\n");
  }
  if (options.wantsFormats) return print(formatsText());
  Limits limits;
  limits.seconds = options.seconds;
  limits.memory = options.maxMemory != 0 ? options.maxMemory : machineMemory();
  Bar bar(options);
  const Ending ending = runSupervised(
      limits, [&options](int standardOutput) { return work(options, standardOutput); },
      [&bar](double seconds) { bar(seconds); });
  bar.end();
  if (!ending.isWhole) {
    tell(shown(options.input) + ": " + ending.message);
    return kTrouble;
  }
  const std::string& text = ending.message;
  if (text[0] != 'd' && text[0] != 'l') {
    tell((text[0] == 'r' ? shown(options.input) + ": " : "") + text.substr(1));
    return kTrouble;
  }
  std::size_t at = text.find('\n') + 1;
  const std::size_t count = std::strtoul(text.c_str() + 1, nullptr, 10);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t end = text.find('\n', at);
    if (!options.isQuiet) tell(shown(options.input) + ": " + text.substr(at, end - at));
    at = end + 1;
  }
  if (options.isJson && print(text.substr(at)) != kDone) return kTrouble;
  return options.isStrict && text[0] == 'l' ? kFound : kDone;
}

}  // namespace
}  // namespace vrn_convert

int main(int count, char** words) {
  // Where a standard stream is closed, no file may take its number.
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) < 0) static_cast<void>(open("/dev/null", O_RDWR));
  }
  // A write to a pipe without a reader then reports an error, which ends the program quietly.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return vrn_convert::run(vrn_convert::parseOptions({words + std::min(count, 1), words + count}));
  } catch (const std::exception& error) {
    vrn_convert::tell(error.what());
    return vrn_convert::kTrouble;
  }
}
