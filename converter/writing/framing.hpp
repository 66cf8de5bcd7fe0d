// A camera and lights for files that have none.
#ifndef VRN_CONVERT_WRITING_FRAMING_HPP
#define VRN_CONVERT_WRITING_FRAMING_HPP

#include "scene_plan/scene_plan.hpp"

namespace vrn_convert {

/// Returns a camera that sees the whole box from the front, the right and above.
CameraPlan framingCamera(const Box& box);

/// Returns whether a camera looks to where the box is: whether a sphere around it is in the cone of
/// what the camera sees.
bool looksAt(const CameraPlan& camera, const Box& box);

/// Adds a light from above, and a weaker one from everywhere that the camera does not see. A white
/// surface that faces the first has a radiance of about 1.
void addDefaultLights(ScenePlan& plan);

}  // namespace vrn_convert

#endif
