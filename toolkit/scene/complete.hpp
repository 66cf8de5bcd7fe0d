// Objects that lack their values.
#ifndef VORNATH_TOOLKIT_SCENE_COMPLETE_HPP
#define VORNATH_TOOLKIT_SCENE_COMPLETE_HPP

#include "vornath_data/scene.hpp"

namespace vrtk {

/// Throws Failure with VRTK_SCENE_INCOMPLETE if a live Camera, Light or Material has no value,
/// which the library takes for granted when it imports, compares or prints a scene. `what` says
/// what was to be done, such as "be compared".
void requireValues(const vrnt::data::Scene& scene, const char* what);

}  // namespace vrtk

#endif
