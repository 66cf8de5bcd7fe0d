#include "film/save.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "vornath_toolkit/vrtk.h"

namespace vrn_render {

namespace {

// Returns what is wrong; empty if the file is written.
std::string trySave(const std::string& path, std::string_view bytes,
                    const vrtkSaveOptions* options) {
  vrtkError* error = nullptr;
  if (vrtkFileSave(bytes.data(), bytes.size(), path.c_str(), options, &error) == VRTK_OK) return {};
  const std::unique_ptr<vrtkError, void (*)(vrtkError*)> owner(error, vrtkErrorDestroy);
  return error != nullptr ? vrtkErrorMessage(error) : path + ": it cannot be written";
}

}  // namespace

void requireTarget(const std::string& path) {
  if (path == "-") return;
  namespace fs = std::filesystem;
  vrtkSaveOptions options = VRTK_SAVE_OPTIONS_INIT;
  options.skipSync = 1;
  std::error_code failure;
  const fs::file_status found = fs::status(path, failure);
  const bool isNew = found.type() == fs::file_type::not_found && path.back() != '/';
  const bool isOld = found.type() == fs::file_type::regular && access(path.c_str(), W_OK) == 0;
  if (!isNew && !isOld) {
    // It will be refused, so nothing is written here.
    const std::string problem = trySave(path, {}, &options);
    if (!problem.empty()) throw std::runtime_error(problem);
    return;
  }
  // Another file beside the target, which stays as it is.
  const fs::path target = isOld ? fs::canonical(path, failure) : fs::path(path);
  const std::string probe =
      (target.parent_path() / (".vrn-render-" + std::to_string(getpid()) + ".tmp")).string();
  std::string problem = trySave(probe, {}, &options);
  if (problem.empty()) {
    unlink(probe.c_str());
    return;
  }
  if (problem.compare(0, probe.size(), probe) == 0) problem.replace(0, probe.size(), path);
  throw std::runtime_error(problem);
}

void saveBytes(const std::string& path, std::string_view bytes) {
  if (path != "-") {
    const std::string problem = trySave(path, bytes, nullptr);
    if (problem.empty()) return;
    throw std::runtime_error(problem);
  }
  while (!bytes.empty()) {
    const ssize_t written = write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) {
      throw std::runtime_error(std::string("standard output: it cannot be written: ") +
                               std::strerror(errno) + "; check where it goes");
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace vrn_render
