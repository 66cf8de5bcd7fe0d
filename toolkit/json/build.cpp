// Building scenes from JSON.
#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "file/sources.hpp"
#include "foundation/failure.hpp"
#include "json/scene_reader.hpp"

namespace vrtk {
namespace {

vrtkBuildOptions optionsOf(const vrtkBuildOptions* given) {
  vrtkBuildOptions options = VRTK_BUILD_OPTIONS_INIT;
  if (given != nullptr) {
    const auto size = std::min<std::uint64_t>(given->structSize, sizeof(options));
    std::memcpy(&options, given, static_cast<std::size_t>(size));
  }
  return options;
}

std::uint64_t memoryFor(std::uint64_t limit, std::uint64_t size) {
  if (limit != 0) return limit;
  constexpr std::uint64_t kBase = std::uint64_t{1} << 30;
  constexpr std::uint64_t kForEachByte = 64;
  return kBase + kForEachByte * size;
}

// `name` stands before the words of an error; it may be null.
void build(std::string_view document, const vrtkBuildOptions& options,
           std::optional<std::string> folder, const char* name, vrdmScene_t** scene,
           vrtkJsonReport** report) {
  ReadOptions read;
  read.assetFolder = std::move(folder);
  if (options.assetFolder != nullptr) read.assetFolder = options.assetFolder;
  Problems problems(options.maxMessages);
  vrnt::UniqueScene built =
      buildScene(document, read, memoryFor(options.maxMemory, document.size()), problems);
  if (built) {
    *scene = built.release();
    return;
  }
  auto made = reportOf(problems, document);
  std::string words = errorWords(*made);
  if (name != nullptr) words = std::string(name) + ": " + words;
  Failure failure(VRTK_JSON_INVALID, std::move(words));
  if (report != nullptr) *report = made.release();
  throw std::move(failure);
}

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkSceneBuild(const char* json, std::uint64_t size, const vrtkBuildOptions* options,
                             vrdmScene_t** scene, vrtkJsonReport** report, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    if (size != 0) vrtk::requireArgument(json, "vrtkSceneBuild", "json");
    vrtk::requireArgument(scene, "vrtkSceneBuild", "scene");
    vrtk::build({json != nullptr ? json : "", static_cast<std::size_t>(size)},
                vrtk::optionsOf(options), std::nullopt, nullptr, scene, report);
  });
}

std::uint32_t vrtkSceneBuildFile(const char* path, const vrtkBuildOptions* options,
                                 vrdmScene_t** scene, vrtkJsonReport** report, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(path, "vrtkSceneBuildFile", "path");
    vrtk::requireArgument(scene, "vrtkSceneBuildFile", "scene");
    vrtk::FileSource source(path);
    const auto size = static_cast<std::size_t>(source.size());
    const auto text = std::make_unique_for_overwrite<char[]>(size);
    source.read(0, text.get(), size);
    const std::string folder(path);
    const std::size_t slash = folder.rfind('/');
    vrtk::build({text.get(), size}, vrtk::optionsOf(options),
                slash == std::string::npos ? std::string(".") : folder.substr(0, slash), path,
                scene, report);
  });
}
