// Writes and reads scene files by their path. docs/scene_format.md describes their format.
#ifndef VORNATH_SCENE_SCENE_FILE_HPP
#define VORNATH_SCENE_SCENE_FILE_HPP

#include <memory>

#include "vornath_data/scene.hpp"

namespace vrnt::data {

/// Writes a scene to a file, and replaces an existing file. The path is UTF-8. Does not report that
/// a file cannot be opened or written: to find out, the host reads the file.
/// Errors: throws as Scene::serialize() does.
void writeSceneFile(const Scene& scene, const char* path);

/// Reads a scene from a file, with the id that the file contains. The path is UTF-8.
/// Result: null if Scene::deserialize() reports an error.
/// Errors: throws as Scene::deserialize() does.
std::unique_ptr<Scene> readSceneFile(const char* path);

}  // namespace vrnt::data

#endif
