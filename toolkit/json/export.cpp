// Exporting scenes.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <ostream>
#include <string>

#include "file/target.hpp"
#include "foundation/failure.hpp"
#include "json/scene_writer.hpp"
#include "vornath_toolkit/vrtk_json.h"

namespace vrtk {
namespace {

vrtkExportOptions optionsOf(const vrtkExportOptions* given) {
  vrtkExportOptions options = VRTK_EXPORT_OPTIONS_INIT;
  if (given != nullptr) {
    const auto size = std::min<std::uint64_t>(given->structSize, sizeof(options));
    std::memcpy(&options, given, static_cast<std::size_t>(size));
  }
  return options;
}

WriteOptions writeOptionsOf(const vrtkExportOptions& options) {
  WriteOptions write;
  write.full = options.full != 0;
  if (options.inlineAssets != 0) {
    write.assets = AssetBytes::Inline;
  } else if (options.assetPrefix != nullptr || options.assetFolder != nullptr) {
    write.assets = AssetBytes::File;
    if (options.assetPrefix != nullptr) write.prefix = options.assetPrefix;
  }
  return write;
}

void writeDocument(const vrdmScene_t* scene, const WriteOptions& options, Output::Sink sink) {
  Output out(std::move(sink));
  Catalogue catalogue;
  SceneWriter(scene, out, options, catalogue).document();
  out.flush();
}

// Exports to a function, with the files that the options ask for.
void exportScene(const vrdmScene_t* scene, const vrtkExportOptions& options, Output::Sink sink) {
  WriteOptions write = writeOptionsOf(options);
  std::optional<AssetFiles> files;
  if (options.inlineAssets == 0 && options.assetFolder != nullptr) {
    files.emplace(options.assetFolder);
    write.files = &*files;
  }
  writeDocument(scene, write, std::move(sink));
  if (files) files->keep();
}

// Grows a block from malloc(), for the caller to free.
class StringSink {
 public:
  StringSink() = default;
  StringSink(const StringSink&) = delete;
  StringSink& operator=(const StringSink&) = delete;
  ~StringSink() { std::free(bytes_); }

  void add(const char* bytes, std::size_t size) {
    if (capacity_ - size_ <= size) {
      const std::size_t larger = std::max(size_ + size + 1, capacity_ + capacity_ / 2);
      auto* const moved = static_cast<char*>(std::realloc(bytes_, larger));
      if (moved == nullptr) throw std::bad_alloc();
      bytes_ = moved;
      capacity_ = larger;
    }
    std::memcpy(bytes_ + size_, bytes, size);
    size_ += size;
  }

  std::size_t size() const { return size_; }
  char* release() {
    bytes_[size_] = '\0';
    return std::exchange(bytes_, nullptr);
  }

 private:
  char* bytes_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

// "box.json" has its assets in "box.assets".
std::string assetFolderOf(const std::string& path) {
  constexpr std::string_view kEnding = ".json";
  const bool ends = path.size() > kEnding.size() &&
                    path.compare(path.size() - kEnding.size(), kEnding.size(), kEnding) == 0;
  return (ends ? path.substr(0, path.size() - kEnding.size()) : path) + ".assets";
}

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkSceneExport(const vrdmScene_t* scene, const vrtkExportOptions* options,
                              vrtkWriteFunction write, void* context, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(scene, "vrtkSceneExport", "scene");
    vrtk::requireArgument(reinterpret_cast<const void*>(write), "vrtkSceneExport", "write");
    vrtk::exportScene(scene, vrtk::optionsOf(options),
                      [write, context](const char* bytes, std::size_t size) {
                        if (write(bytes, size, context) == 0) return;
                        throw vrtk::Failure(VRTK_WRITE_STOPPED,
                                            "the export was stopped by the function that takes "
                                            "the document; what it took is a part of it");
                      });
  });
}

std::uint32_t vrtkSceneExportString(const vrdmScene_t* scene, const vrtkExportOptions* options,
                                    char** json, std::uint64_t* size, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(scene, "vrtkSceneExportString", "scene");
    vrtk::requireArgument(json, "vrtkSceneExportString", "json");
    vrtk::StringSink text;
    vrtk::exportScene(scene, vrtk::optionsOf(options),
                      [&text](const char* bytes, std::size_t count) { text.add(bytes, count); });
    if (size != nullptr) *size = text.size();
    *json = text.release();
  });
}

std::uint32_t vrtkSceneExportFile(const vrdmScene_t* scene, const char* path,
                                  const vrtkExportOptions* options, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(scene, "vrtkSceneExportFile", "scene");
    vrtk::requireArgument(path, "vrtkSceneExportFile", "path");
    vrtkExportOptions chosen = vrtk::optionsOf(options);
    const std::string folder = vrtk::assetFolderOf(path);
    const std::string prefix = folder.substr(folder.rfind('/') + 1) + "/";
    chosen.assetFolder = nullptr;
    chosen.assetPrefix = prefix.c_str();
    vrtk::WriteOptions write = vrtk::writeOptionsOf(chosen);
    vrtk::AssetFiles files(folder);
    if (chosen.inlineAssets == 0) write.files = &files;
    vrtk::TargetFile target(path);
    target.write([&](std::ostream& stream) {
      vrtk::writeDocument(scene, write, [&stream](const char* bytes, std::size_t size) {
        stream.write(bytes, static_cast<std::streamsize>(size));
      });
    });
    target.commit(true);
    files.keep();
  });
}
