// Opening scenes: the check, and then the library's own reader on what was checked.
#include <fmt/format.h>

#include <istream>
#include <memory>
#include <utility>

#include "check/file_check.hpp"
#include "check/report.hpp"
#include "file/sources.hpp"
#include "foundation/failure.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_toolkit/vrtk_scene.h"

namespace vrtk {
namespace {

using Scene = vrnt::data::Scene;

std::uint32_t statusOf(Code code) {
  switch (code) {
    case Code::FILE_HEADER:
      return VRTK_FILE_NO_SCENE;
    case Code::FILE_VERSION:
      return VRTK_FILE_VERSION;
    case Code::MEMORY_EXCEEDED:
      return VRTK_FILE_TOO_LARGE;
    default:
      return VRTK_FILE_DAMAGED;
  }
}

std::string textOf(const vrtkReport::Kept& error) {
  std::string text = codeName(error.code);
  if (error.offset != VRTK_NO_OFFSET) text += fmt::format(" at byte {}", error.offset);
  if (!error.address.empty()) text += ", " + error.address;
  return text + ": " + error.message;
}

Scene readScene(ByteSource& source) {
  SourceBuffer buffer(source);
  std::istream stream(&buffer);
  // What the source throws is to come through.
  stream.exceptions(std::ios::badbit);
  auto result = Scene::deserialize(stream, vrnt::UniqueId::null());
  return std::move(result).value();
}

// Checks and reads. On success, sets the scene; sets the report also if the check found errors.
void openSource(ByteSource& source, const char* name, const vrtkLimits* limits, vrdmScene_t** scene,
                vrtkReport** report) {
  const vrtkLimits chosen = limitsOf(limits);
  auto made = std::make_unique<vrtkReport>(chosen);
  if (name != nullptr) {
    made->file = name;
    made->hasFile = true;
  }
  checkSource(source, chosen, *made);
  if (const auto& error = made->firstError()) {
    Failure failure(statusOf(error->code),
                    fmt::format("{}: it must not be read: {}",
                                name != nullptr ? name : "the bytes of the scene", textOf(*error)));
    if (report != nullptr) *report = made.release();
    throw std::move(failure);
  }
  auto read = std::make_unique<Scene>(readScene(source));
  *scene = read.release();
  if (report != nullptr) *report = made.release();
}

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkSceneOpen(const char* path, const vrtkLimits* limits, vrdmScene_t** scene,
                            vrtkReport** report, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(path, "vrtkSceneOpen", "path");
    vrtk::requireArgument(scene, "vrtkSceneOpen", "scene");
    vrtk::FileSource source(path);
    vrtk::openSource(source, path, limits, scene, report);
  });
}

std::uint32_t vrtkOpenFile(const char* path, const vrtkLimits* limits, vrdmScene_t** scene,
                           vrtkReport** report, vrtkError** error) {
  return vrtkSceneOpen(path, limits, scene, report, error);
}

std::uint32_t vrtkSceneOpenBytes(const void* bytes, std::uint64_t size, const vrtkLimits* limits,
                                 vrdmScene_t** scene, vrtkReport** report, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    if (size != 0) vrtk::requireArgument(bytes, "vrtkSceneOpenBytes", "bytes");
    vrtk::requireArgument(scene, "vrtkSceneOpenBytes", "scene");
    vrtk::MemorySource source(bytes, size);
    vrtk::openSource(source, nullptr, limits, scene, report);
  });
}
