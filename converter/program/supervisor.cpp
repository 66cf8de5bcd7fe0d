#include "program/supervisor.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>

#if defined(__SANITIZE_ADDRESS__)
#define VRN_CONVERT_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VRN_CONVERT_SANITIZED 1
#endif
#endif

namespace vrn_convert {
namespace {

#if defined(VRN_CONVERT_SANITIZED)
constexpr bool kIsSanitized = true;  // it needs all addresses, and reports on standard error
#else
constexpr bool kIsSanitized = false;
#endif

void limit(int resource, std::uint64_t amount) {
  rlimit limits{};
  if (getrlimit(static_cast<__rlimit_resource>(resource), &limits) != 0) return;
  limits.rlim_cur = std::min<rlim_t>(limits.rlim_max, static_cast<rlim_t>(amount));
  setrlimit(static_cast<__rlimit_resource>(resource), &limits);
}

// Sends a text behind a byte that says that it is whole.
void send(int pipe, const std::string& text) {
  const std::string message = text + '\0';
  std::size_t sent = 0;
  while (sent < message.size()) {
    const ssize_t count = write(pipe, message.data() + sent, message.size() - sent);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    sent += static_cast<std::size_t>(count);
  }
}

[[noreturn]] void runChild(int pipe, pid_t parent, const Limits& limits,
                           const std::function<std::string(int)>& work) {
  // The child ends with its parent, and leaves no dump behind.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(1);
  limit(RLIMIT_CORE, 0);
  if (limits.memory != 0 && !kIsSanitized) limit(RLIMIT_AS, limits.memory);
  const int standardOutput = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nothing >= 0) {
    dup2(nothing, STDOUT_FILENO);
    if (!kIsSanitized) dup2(nothing, STDERR_FILENO);
  }
  send(pipe, work(standardOutput));
  // No destructor of a library that has read a damaged file needs to run. A sanitizer looks for
  // leaks when the process exits.
  if (kIsSanitized) std::exit(0);
  _exit(0);
}

std::string signalText(int number) {
  switch (number) {
    case SIGSEGV:
    case SIGBUS:
    case SIGILL:
    case SIGFPE:
    case SIGABRT:
      return std::string("the reader of such files crashed (") + strsignal(number) +
             "); the file is damaged, or has something that the reader cannot take";
    case SIGKILL:
      return "the conversion was killed, perhaps for want of memory; try --max-memory";
    default:
      return std::string("the conversion was ended by a signal (") + strsignal(number) + ")";
  }
}

}  // namespace

Ending runSupervised(const Limits& limits, const std::function<std::string(int)>& work,
                     const std::function<void(double)>& wait) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    return {false, std::string("no process can be started: ") + std::strerror(errno)};
  }
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) {
    close(ends[0]);
    close(ends[1]);
    return {false, std::string("no process can be started: ") + std::strerror(errno)};
  }
  if (child == 0) {
    close(ends[0]);
    runChild(ends[1], parent, limits, work);
  }
  close(ends[1]);

  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  std::string message;
  bool isLate = false;
  for (;;) {
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    wait(seconds);
    if (limits.seconds > 0 && seconds > limits.seconds) {
      isLate = true;
      kill(child, SIGKILL);
      break;
    }
    pollfd waiting{ends[0], POLLIN, 0};
    constexpr int kTick = 100;  // milliseconds
    const double left = limits.seconds > 0 ? (limits.seconds - seconds) * 1000 + 1 : kTick;
    if (poll(&waiting, 1, static_cast<int>(std::min<double>(kTick, left))) <= 0) continue;
    char bytes[4096];
    const ssize_t count = read(ends[0], bytes, sizeof bytes);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    message.append(bytes, static_cast<std::size_t>(count));
  }
  close(ends[0]);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (isLate) {
    return {false, "it takes longer than the time limit; give more with --time-limit"};
  }
  if (WIFSIGNALED(status)) return {false, signalText(WTERMSIG(status))};
  const bool isWhole = !message.empty() && message.back() == '\0';
  if (!isWhole || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    return {false,
            "the reader of such files ended the process; the file is damaged, or has "
            "something that the reader cannot take"};
  }
  message.pop_back();
  return {true, std::move(message)};
}

}  // namespace vrn_convert
