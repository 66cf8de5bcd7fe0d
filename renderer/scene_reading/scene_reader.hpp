/// Makes the renderer's description of a scene. Uses the flat functions only.
#ifndef VRN_RENDER_SCENE_READING_SCENE_READER_HPP
#define VRN_RENDER_SCENE_READING_SCENE_READER_HPP

#include <optional>

#include "scene_reading/notices.hpp"
#include "scene_reading/scene_description.hpp"
#include "vornath_data/vrdm.h"

namespace vrn_render {

/// Describes a scene for one image task. `task` is the index of an image task; without one, the
/// first task is used, or the first camera if there are no tasks. A scene without a camera is seen
/// from in front of its shapes.
///
/// The description refers to the bytes of the scene's meshes and textures: the scene must outlive
/// it, and must not change. What cannot be used goes to `notices`, and what depends on it becomes
/// neutral.
/// Errors: throws std::out_of_range if there is no such task, and std::bad_alloc.
SceneDescription readScene(const vrdmScene_t* scene, std::optional<int> task, Notices& notices);

}  // namespace vrn_render

#endif
