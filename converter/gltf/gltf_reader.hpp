// Scene plans from glTF 2.0.
#ifndef VRN_CONVERT_GLTF_GLTF_READER_HPP
#define VRN_CONVERT_GLTF_GLTF_READER_HPP

#include "scene_plan/conversion.hpp"
#include "scene_plan/notices.hpp"
#include "scene_plan/scene_plan.hpp"

namespace vrn_convert {

/// Reads a glTF 2.0 file: its default scene, or the first one. The plan owns all that it refers to.
/// Throws Refused with the reason, and std::bad_alloc.
ScenePlan readGltf(const Source& source, Notices& notices);

}  // namespace vrn_convert

#endif
