#include "core/session.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "core/progress.hpp"
#include "core/report.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ > STDERR_FILENO) close(number_);
  }
  int get() const { return number_; }

 private:
  int number_;
};

[[noreturn]] void raise(const std::string& path, const std::string& what, int reason,
                        const char* remedy) {
  throw Trouble(nameOf(path) + ": " + what + ": " + std::strerror(reason) + "; " + remedy);
}

std::string readDescriptor(int descriptor, const std::string& path, std::uint64_t expected) {
  std::string bytes;
  bytes.resize(static_cast<std::size_t>(expected) + 1);
  std::size_t length = 0;
  for (;;) {
    if (length == bytes.size()) bytes.resize(bytes.size() + bytes.size() / 2 + 64 * 1024);
    const ssize_t count = read(descriptor, bytes.data() + length, bytes.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) raise(path, "it cannot be read", errno, "check where it comes from");
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  bytes.resize(length);
  return bytes;
}

// Reads without a check. What the library says is null.
vrdmScene_t* readTrusted(const std::string& path) {
  if (!isStream(path)) return vrdmDeserialize(path.c_str());
  const std::string bytes = readAll(path);
  const Descriptor memory(memfd_create("scene", MFD_CLOEXEC));
  if (memory.get() < 0) raise(path, "it cannot be kept", errno, "write it to a file first");
  for (std::size_t written = 0; written < bytes.size();) {
    const ssize_t count = write(memory.get(), bytes.data() + written, bytes.size() - written);
    if (count < 0) raise(path, "it cannot be kept", errno, "write it to a file first");
    written += static_cast<std::size_t>(count);
  }
  return vrdmDeserialize(("/proc/self/fd/" + std::to_string(memory.get())).c_str());
}

// Throws if there is no such file, or if it is one that reading would wait for.
void requireFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    raise(path, "it cannot be opened", errno, "check the path");
  }
  if (S_ISDIR(status.st_mode)) throw Trouble(path + ": it is a folder; give a file");
  if (!S_ISREG(status.st_mode)) {
    throw Trouble(path + ": it is no regular file; to read a stream, give - and redirect it");
  }
}

}  // namespace

bool isStream(const std::string& path) {
  return path == "-" || path == "/dev/stdin" || path.compare(0, 8, "/dev/fd/") == 0 ||
         path.compare(0, 14, "/proc/self/fd/") == 0;
}

std::string nameOf(const std::string& path) {
  return path == "-" ? "standard input" : oneLine(path);
}

std::string readAll(const std::string& path) {
  if (path == "-") return readDescriptor(STDIN_FILENO, path, 0);
  if (!isStream(path)) requireFile(path);
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.get() < 0) raise(path, "it cannot be opened", errno, "check the path");
  struct stat status {};
  if (fstat(file.get(), &status) != 0) raise(path, "it cannot be read", errno, "check the path");
  const bool regular = S_ISREG(status.st_mode);
  return readDescriptor(file.get(), path, regular ? static_cast<std::uint64_t>(status.st_size) : 0);
}

Session::Session(std::string command, const CommonOptions& options)
    : command_(std::move(command)), options_(options), colours_(options.color, STDOUT_FILENO) {}

std::size_t Session::columns() const { return isTerminal(STDOUT_FILENO) ? terminalColumns() : 100; }

std::size_t Session::wrapColumns() const {
  return isTerminal(STDOUT_FILENO) ? std::max<std::size_t>(terminalColumns(), 60) : 1000000;
}

void Session::tell(std::string_view message) const {
  vrn::tell("vrn " + command_ + ": " + oneLine(message) + "\n");
}

Report Session::check(const std::string& path, std::uint64_t maxMessages) const {
  vrtkLimits limits = VRTK_LIMITS_INIT;
  limits.maxMemory = options_.maxMemory;
  limits.maxMessages = maxMessages;
  vrtkReport* report = nullptr;
  const Progress progress(*this, path, 1);
  if (isStream(path)) {
    const std::string bytes = readAll(path);
    require([&](vrtkError** error) {
      return vrtkCheckBytes(bytes.data(), bytes.size(), &limits, &report, error);
    });
  } else {
    require(
        [&](vrtkError** error) { return vrtkCheckFile(path.c_str(), &limits, &report, error); });
  }
  return Report(report);
}

vrnt::UniqueScene Session::open(const std::string& path) const {
  const Progress progress(*this, path, options_.trust ? 1 : 2);
  vrdmScene_t* scene = nullptr;
  if (options_.trust) {
    if (!isStream(path)) requireFile(path);
    scene = readTrusted(path);
    if (scene == nullptr) {
      throw Trouble(nameOf(path) + ": it is no scene file of this version; run vrn check " +
                    shellWord(path));
    }
    return vrnt::UniqueScene(scene);
  }
  vrtkLimits limits = VRTK_LIMITS_INIT;
  limits.maxMemory = options_.maxMemory;
  vrtkReport* found = nullptr;
  ErrorOut error;
  std::uint32_t status = VRTK_OK;
  if (isStream(path)) {
    const std::string bytes = readAll(path);
    status = vrtkSceneOpenBytes(bytes.data(), bytes.size(), &limits, &scene, &found, error);
  } else {
    status = vrtkSceneOpen(path.c_str(), &limits, &scene, &found, error);
  }
  const Report report(found);
  if (status != VRTK_OK) {
    throw Trouble(report && !vrtkReportValid(report.get()) ? refusalOf(path, report.get())
                                                           : error.message());
  }
  return vrnt::UniqueScene(scene);
}

void Session::save(const vrdmScene_t* scene, const std::string& path) {
  if (path != "-") {
    const Progress progress(*this, path, 0);
    require([&](vrtkError** error) { return vrtkSceneSave(scene, path.c_str(), nullptr, error); });
    return;
  }
  if (isTerminal(STDOUT_FILENO)) {
    throw Trouble("standard output: a scene file is nothing for a terminal; give -o FILE");
  }
  void* bytes = nullptr;
  std::uint64_t size = 0;
  require([&](vrtkError** error) { return vrtkSceneSaveBytes(scene, &bytes, &size, error); });
  const std::unique_ptr<void, void (*)(void*)> owner(bytes, vrtkBytesDestroy);
  out_.write({static_cast<const char*>(bytes), static_cast<std::size_t>(size)});
}

void Session::saveBytes(std::string_view bytes, const std::string& path) {
  if (path == "-") {
    out_.write(bytes);
    return;
  }
  require([&](vrtkError** error) {
    return vrtkFileSave(bytes.data(), bytes.size(), path.c_str(), nullptr, error);
  });
}

std::string ErrorOut::message() const {
  return error_ != nullptr ? vrtkErrorMessage(error_) : "the toolkit reported no reason";
}

}  // namespace vrn
