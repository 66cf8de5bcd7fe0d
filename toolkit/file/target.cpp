#include "file/target.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <random>
#include <streambuf>

#include "foundation/failure.hpp"

namespace vrtk {
namespace {

// While one lives, a write that exceeds the limit on the size of files fails, instead of ending the
// process.
class NoSizeSignal {
 public:
  NoSizeSignal() {
    sigemptyset(&signal_);
    sigaddset(&signal_, SIGXFSZ);
    sigset_t pending;
    wasPending_ = sigpending(&pending) == 0 && sigismember(&pending, SIGXFSZ) == 1;
    active_ = pthread_sigmask(SIG_BLOCK, &signal_, &before_) == 0;
  }
  NoSizeSignal(const NoSizeSignal&) = delete;
  NoSizeSignal& operator=(const NoSizeSignal&) = delete;
  ~NoSizeSignal() {
    if (!active_) return;
    const timespec now{};
    if (!wasPending_) {
      while (sigtimedwait(&signal_, nullptr, &now) < 0 && errno == EINTR) {
      }
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

 private:
  sigset_t signal_{};
  sigset_t before_{};
  bool wasPending_ = false;
  bool active_ = false;
};

// Thrown into the library when a write fails; what failed is in the buffer.
struct WriteFailed : std::exception {
  const char* what() const noexcept override { return "the file cannot be written"; }
};

// A stream buffer for writing a file from its start to its end.
class FileBuffer final : public std::streambuf {
 public:
  explicit FileBuffer(int file)
      : file_(file), buffer_(std::make_unique_for_overwrite<char[]>(kCapacity)) {
    setp(buffer_.get(), buffer_.get() + kCapacity);
  }

  // The reason why a write failed, or 0.
  int reason() const { return reason_; }

  void flush() {
    put(pbase(), static_cast<std::size_t>(pptr() - pbase()));
    setp(buffer_.get(), buffer_.get() + kCapacity);
  }

 protected:
  int_type overflow(int_type c) override {
    flush();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
      *pptr() = traits_type::to_char_type(c);
      pbump(1);
    }
    return traits_type::not_eof(c);
  }

  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    const auto size = static_cast<std::size_t>(count);
    if (size == 0) return 0;  // The bytes of an empty list are at a null address.
    if (size >= static_cast<std::size_t>(epptr() - pptr())) {
      flush();
      if (size >= kCapacity) {
        put(bytes, size);
        return count;
      }
    }
    std::memcpy(pptr(), bytes, size);
    pbump(static_cast<int>(count));
    return count;
  }

  int sync() override {
    flush();
    return 0;
  }

 private:
  static constexpr std::size_t kCapacity = std::size_t{1} << 20;

  void put(const char* bytes, std::size_t size) {
    while (size != 0) {
      // The system writes at most this much in one call.
      constexpr std::size_t kMost = std::size_t{1} << 30;
      const ssize_t written = reason_ != 0 ? -1 : ::write(file_, bytes, std::min(size, kMost));
      if (written < 0) {
        if (reason_ == 0 && errno == EINTR) continue;
        if (reason_ == 0) reason_ = errno;
        throw WriteFailed();
      }
      bytes += written;
      size -= static_cast<std::size_t>(written);
    }
  }

  int file_;
  int reason_ = 0;
  std::unique_ptr<char[]> buffer_;
};

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// The path of an open file, by which it can get a name.
std::string pathOfDescriptor(int descriptor) { return fmt::format("/proc/self/fd/{}", descriptor); }

}  // namespace

TargetFile::TargetFile(const std::string& path, Name name) : path_(path), target_(path) {
  if (path.empty()) throw Failure(VRTK_SAVE_NO_FOLDER, "the path is empty; name a file");
  resolve();
  name_ = nameOf(target_);
  if (name_.empty()) {
    throw Failure(VRTK_FILE_IS_FOLDER, path_ + ": this names a folder; name a file in it");
  }
  const std::string folder = folderOf(target_);
  folder_ = FileHandle(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // A folder in which one may write, but which one may not list.
  if (!folder_ && errno == EACCES) {
    folder_ = FileHandle(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  }
  if (!folder_) {
    const int reason = errno;
    if (reason == ENOENT || reason == ENOTDIR) {
      throw Failure(VRTK_SAVE_NO_FOLDER,
                    fmt::format("{}: the folder {} does not exist; make it first", path_, folder));
    }
    fail("its folder cannot be opened", reason);
  }
  openTemporary(name);
}

TargetFile::~TargetFile() {
  if (!temporary_.empty()) unlinkat(folder_.get(), temporary_.c_str(), 0);
}

void TargetFile::fail(const char* what, int reason) const {
  std::uint32_t status = VRTK_SAVE_FAILED;
  const char* advice = "check the device";
  switch (reason) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      status = VRTK_SAVE_NO_SPACE;
      advice = "make room, or save elsewhere";
      break;
    case EACCES:
    case EPERM:
    case EROFS:
      status = VRTK_SAVE_DENIED;
      advice = "ask for permission, or save elsewhere";
      break;
    case ENOENT:
    case ENOTDIR:
      status = VRTK_SAVE_NO_FOLDER;
      advice = "make the folder first";
      break;
    case ENAMETOOLONG:
    case ELOOP:
      advice = "check the path";
      break;
    default:
      break;
  }
  throw Failure(status, fmt::format("{}: {}: {}; {}; what was there stands as it was", path_, what,
                                    std::strerror(reason), advice));
}

// Finds the file that the path leads to, which need not exist yet.
void TargetFile::resolve() {
  constexpr int kMostLinks = 40;
  for (int links = 0;; ++links) {
    struct stat found {};
    if (lstat(target_.c_str(), &found) != 0) {
      if (errno == ENOENT) return;
      fail("it cannot be examined", errno);
    }
    if (S_ISLNK(found.st_mode)) {
      char to[PATH_MAX];
      const ssize_t length = readlink(target_.c_str(), to, sizeof(to));
      if (length < 0) fail("it cannot be examined", errno);
      if (links == kMostLinks || length == static_cast<ssize_t>(sizeof(to))) {
        fail("it cannot be examined", ELOOP);
      }
      const std::string next(to, static_cast<std::size_t>(length));
      target_ = !next.empty() && next.front() == '/' ? next : folderOf(target_) + "/" + next;
      continue;
    }
    if (S_ISDIR(found.st_mode)) {
      throw Failure(VRTK_FILE_IS_FOLDER, path_ + ": this is a folder; name a file in it");
    }
    if (!S_ISREG(found.st_mode)) {
      throw Failure(VRTK_FILE_NOT_REGULAR,
                    path_ +
                        ": this is no regular file but a pipe, a socket or a device; name a "
                        "file");
    }
    // Renaming does not ask, but who made the file read-only wants it to stay.
    if (faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0) {
      fail("it is not to be written", errno);
    }
    existing_ = Existing{found.st_mode & 07777U, found.st_uid, found.st_gid};
    return;
  }
}

void TargetFile::openTemporary(Name name) {
  // Nobody else reads the bytes of a file that may be private before it has its permissions.
  const mode_t mode = existing_ ? 0600 : 0666;
  if (name == Name::NoneIfPossible) {
    file_ = FileHandle(openat(folder_.get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode));
  }
  if (name == Name::Always) {
    // Goes on below.
  } else if (file_) {
    if (access(pathOfDescriptor(file_.get()).c_str(), F_OK) == 0) return;
    file_.close();  // it could not get a name
  } else if (errno == EACCES || errno == EROFS || errno == ENOSPC || errno == EDQUOT) {
    fail("no file can be made beside it", errno);
  }
  std::random_device random;
  for (;;) {
    std::string own = fmt::format(".vrtk-{:08x}{:08x}.tmp", random(), random());
    file_ = FileHandle(
        openat(folder_.get(), own.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode));
    if (file_) {
      temporary_ = std::move(own);
      return;
    }
    if (errno != EEXIST) fail("no file can be made beside it", errno);
  }
}

void TargetFile::write(const std::function<void(std::ostream&)>& write) {
  const NoSizeSignal noSignal;
  FileBuffer buffer(file_.get());
  try {
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::badbit | std::ios::failbit);
    write(stream);
    buffer.flush();
  } catch (...) {
    // On its way through the library, the exception may have become another.
    if (buffer.reason() != 0) fail("it cannot be written", buffer.reason());
    throw;
  }
}

void TargetFile::setPermissions() {
  if (!existing_) return;
  // Who may not give the file away saves it as his own.
  if (fchown(file_.get(), existing_->owner, existing_->group) != 0 &&
      fchown(file_.get(), static_cast<uid_t>(-1), existing_->group) != 0) {
    errno = 0;
  }
  if (fchmod(file_.get(), existing_->mode) != 0) fail("its permissions cannot be kept", errno);
  keepAccessList();
}

// Where the file system has lists of access rights, the one of the target stays.
void TargetFile::keepAccessList() {
  constexpr const char* kName = "system.posix_acl_access";
  char list[4096];
  const ssize_t size = getxattr(target_.c_str(), kName, list, sizeof(list));
  if (size <= 0) return;
  if (fsetxattr(file_.get(), kName, list, static_cast<std::size_t>(size), 0) != 0) {
    fail("its permissions cannot be kept", errno);
  }
}

void TargetFile::commit(bool sync) {
  setPermissions();
  if (sync && fsync(file_.get()) != 0) fail("it cannot be written", errno);
  if (temporary_.empty()) {
    const std::string from = pathOfDescriptor(file_.get());
    const auto link = [&](const std::string& name) {
      return linkat(AT_FDCWD, from.c_str(), folder_.get(), name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    };
    if (!existing_ && link(name_)) {
      if (sync) fsync(folder_.get());
      return;
    }
    if (!existing_ && errno != EEXIST) fail("it cannot be named", errno);
    std::random_device random;
    std::string name;
    do {
      name = fmt::format(".vrtk-{:08x}{:08x}.tmp", random(), random());
      errno = 0;
    } while (!link(name) && errno == EEXIST);
    if (errno != 0) fail("no file can be made beside it", errno);
    temporary_ = std::move(name);
  }
  if (!file_.close()) fail("it cannot be written", errno);
  if (renameat(folder_.get(), temporary_.c_str(), folder_.get(), name_.c_str()) != 0) {
    fail("it cannot be replaced", errno);
  }
  temporary_.clear();
  if (sync) fsync(folder_.get());
}

}  // namespace vrtk
