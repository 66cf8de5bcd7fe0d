// The flat functions that write and read scene files.
#include <cstddef>
#include <fstream>
#include <memory>
#include <utility>

#include "path.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/scene_interface.h"

using vrnt::data::Scene;

namespace {

// A scene is written and read item by item, most of them small.
constexpr std::size_t kBufferSize = std::size_t{1} << 20;

// Gives a stream that isn't open yet its buffer, which must outlive it.
template <typename Stream>
void openBuffered(Stream& stream, char* buffer, const char* path, std::ios::openmode mode) {
  stream.rdbuf()->pubsetbuf(buffer, static_cast<std::streamsize>(kBufferSize));
  stream.open(vrnt::detail::pathFromUtf8(path), mode);
}

}  // namespace

void vrdmSerialize(const Scene* scene, const char* path) {
  const auto buffer = std::make_unique_for_overwrite<char[]>(kBufferSize);
  std::ofstream stream;
  openBuffered(stream, buffer.get(), path, std::ios::binary | std::ios::out | std::ios::trunc);
  // Not tested: a file that can't be opened or written is the host's to find out.
  Scene::serialize(*scene, stream);
}

Scene* vrdmDeserialize(const char* path) {
  const auto buffer = std::make_unique_for_overwrite<char[]>(kBufferSize);
  std::ifstream stream;
  openBuffered(stream, buffer.get(), path, std::ios::binary | std::ios::in);
  auto read = Scene::deserialize(stream, vrnt::UniqueId::null());
  return read ? new Scene(std::move(*read)) : nullptr;
}
