#include "program/input.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "scene_plan/notices.hpp"

namespace vrn_convert {
namespace {

struct Descriptor {
  explicit Descriptor(int opened) : number(opened) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number > STDERR_FILENO) close(number);
  }
  const int number;
};

}  // namespace

Input::Input(const std::string& path) {
  const bool isStandard = path == "-";
  const Descriptor file(isStandard ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.number < 0) {
    if (errno == ENOENT) throw Refused("there is no such file; check the path");
    throw Refused(std::string("it cannot be opened: ") + std::strerror(errno) +
                  "; check its permissions");
  }
  struct stat status {};
  if (fstat(file.number, &status) != 0) {
    throw Refused(std::string("it cannot be read: ") + std::strerror(errno));
  }
  if (S_ISDIR(status.st_mode)) throw Refused("it is a folder; give a file");
  if (S_ISREG(status.st_mode) && !isStandard) {
    size_ = static_cast<std::size_t>(status.st_size);
    if (size_ == 0) throw Refused("it is empty");
    map_ = mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, file.number, 0);
    if (map_ != MAP_FAILED) {
      bytes_ = static_cast<const unsigned char*>(map_);
      return;
    }
    map_ = nullptr;
  }
  readAll(file.number);
  if (size_ == 0) throw Refused("it is empty");
}

void Input::readAll(int descriptor) {
  constexpr std::size_t kPiece = std::size_t{1} << 20;
  std::size_t filled = 0;
  for (;;) {
    if (read_.size() - filled < kPiece) read_.resize(std::max(2 * read_.size(), 2 * kPiece));
    const ssize_t count = read(descriptor, read_.data() + filled, read_.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw Refused(std::string("it cannot be read: ") + std::strerror(errno));
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  read_.resize(filled);
  bytes_ = read_.data();
  size_ = filled;
}

Input::~Input() {
  if (map_ != nullptr) munmap(map_, size_);
}

}  // namespace vrn_convert
