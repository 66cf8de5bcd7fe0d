#include "film/save.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "vornath_toolkit/vrtk.h"

namespace vrn_render {

void saveBytes(const std::string& path, std::string_view bytes) {
  if (path != "-") {
    vrtkError* error = nullptr;
    if (vrtkFileSave(bytes.data(), bytes.size(), path.c_str(), nullptr, &error) == VRTK_OK) return;
    const std::unique_ptr<vrtkError, void (*)(vrtkError*)> owner(error, vrtkErrorDestroy);
    throw std::runtime_error(error != nullptr ? vrtkErrorMessage(error)
                                              : path + ": it cannot be written");
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
