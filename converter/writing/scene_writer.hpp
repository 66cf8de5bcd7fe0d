// Scenes from plans.
#ifndef VRN_CONVERT_WRITING_SCENE_WRITER_HPP
#define VRN_CONVERT_WRITING_SCENE_WRITER_HPP

#include <map>
#include <string>
#include <vector>

#include "scene_plan/notices.hpp"
#include "scene_plan/scene_plan.hpp"
#include "vornath_data/handles.hpp"

namespace vrn_convert {

/// A scene and what goes with it.
struct WrittenScene {
  vrnt::UniqueScene scene;
  /// The names of the objects of a class, by slot; empty for objects without one.
  std::map<std::string, std::vector<std::string>> names;
  std::uint64_t triangles = 0;  ///< of the meshes, each counted once
  std::uint64_t vertices = 0;
};

/// Makes a scene of a plan, whose meshes and images go into it without a copy. Equal meshes, equal
/// images and equal materials become one object. Images are decoded on all processors.
/// Throws what vornath_data throws.
WrittenScene writeScene(ScenePlan&& plan, Notices& notices);

}  // namespace vrn_convert

#endif
