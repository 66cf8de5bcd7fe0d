// Saving scenes.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <ostream>
#include <streambuf>
#include <utility>

#include "check/scene_check.hpp"
#include "file/target.hpp"
#include "foundation/failure.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_toolkit/vrtk_file.h"
#include "vornath_toolkit/vrtk_scene.h"

namespace vrtk {
namespace {

// A stream buffer that collects bytes in a block from malloc(), for the caller to free.
class BlockBuffer final : public std::streambuf {
 public:
  BlockBuffer() = default;
  BlockBuffer(const BlockBuffer&) = delete;
  BlockBuffer& operator=(const BlockBuffer&) = delete;
  ~BlockBuffer() override { std::free(bytes_); }

  std::size_t size() const { return size_; }
  char* release() {
    // Even a block of no bytes is one.
    if (bytes_ == nullptr) reserve(1);
    return std::exchange(bytes_, nullptr);
  }

 protected:
  int_type overflow(int_type c) override {
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
      const char byte = traits_type::to_char_type(c);
      xsputn(&byte, 1);
    }
    return traits_type::not_eof(c);
  }

  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    const auto added = static_cast<std::size_t>(count);
    reserve(size_ + added);
    if (added != 0) std::memcpy(bytes_ + size_, bytes, added);
    size_ += added;
    return count;
  }

 private:
  void reserve(std::size_t size) {
    if (size <= capacity_) return;
    const std::size_t larger = std::max({size, capacity_ + capacity_ / 2, std::size_t{4096}});
    auto* const bytes = static_cast<char*>(std::realloc(bytes_, larger));
    if (bytes == nullptr) throw std::bad_alloc();
    bytes_ = bytes;
    capacity_ = larger;
  }

  char* bytes_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

vrtkSaveOptions optionsOf(const vrtkSaveOptions* given) {
  vrtkSaveOptions options = VRTK_SAVE_OPTIONS_INIT;
  if (given != nullptr) {
    const auto size = std::min<std::uint64_t>(given->structSize, sizeof(options));
    std::memcpy(&options, given, static_cast<std::size_t>(size));
  }
  return options;
}

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkSceneSave(const vrdmScene_t* scene, const char* path,
                            const vrtkSaveOptions* options, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(scene, "vrtkSceneSave", "scene");
    vrtk::requireArgument(path, "vrtkSceneSave", "path");
    vrtk::requireWritable(scene, path);
    vrtk::TargetFile target(path);
    target.write([scene](std::ostream& stream) { vrnt::data::Scene::serialize(*scene, stream); });
    target.commit(vrtk::optionsOf(options).skipSync == 0);
  });
}

std::uint32_t vrtkSceneSaveBytes(const vrdmScene_t* scene, void** bytes, std::uint64_t* size,
                                 vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(scene, "vrtkSceneSaveBytes", "scene");
    vrtk::requireArgument(bytes, "vrtkSceneSaveBytes", "bytes");
    vrtk::requireArgument(size, "vrtkSceneSaveBytes", "size");
    vrtk::requireWritable(scene, "the bytes of the scene");
    vrtk::BlockBuffer buffer;
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::badbit | std::ios::failbit);
    vrnt::data::Scene::serialize(*scene, stream);
    *size = buffer.size();
    *bytes = buffer.release();
  });
}

std::uint32_t vrtkFileSave(const void* bytes, std::uint64_t size, const char* path,
                           const vrtkSaveOptions* options, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    if (size != 0) vrtk::requireArgument(bytes, "vrtkFileSave", "bytes");
    vrtk::requireArgument(path, "vrtkFileSave", "path");
    vrtk::TargetFile target(path);
    target.write([bytes, size](std::ostream& stream) {
      stream.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    });
    target.commit(vrtk::optionsOf(options).skipSync == 0);
  });
}
