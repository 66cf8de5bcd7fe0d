// Scene files by their path. docs/scene_format.md has the layout of what Scene::serialize() writes.
#ifndef VORNATH_SCENE_SCENE_FILE_HPP
#define VORNATH_SCENE_SCENE_FILE_HPP

#include <memory>

#include "vornath_data/scene.hpp"

namespace vrnt::data {

/// Writes a scene to a file, in place of a file that exists. The path is UTF-8. A file that can't
/// be opened or written isn't reported: the host finds out by reading it. Errors: as
/// Scene::serialize().
void writeSceneFile(const Scene& scene, const char* path);

/// Reads a scene from a file, with the id that is stored there. The path is UTF-8.
/// Result: null if Scene::deserialize() reports an error.
/// Errors: as Scene::deserialize() throws.
std::unique_ptr<Scene> readSceneFile(const char* path);

}  // namespace vrnt::data

#endif
