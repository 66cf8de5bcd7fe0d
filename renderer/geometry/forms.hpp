/// The forms of shapes that have no mesh, in their own space: each fits the cube from -0.5 to 0.5.
#ifndef VRN_RENDER_GEOMETRY_FORMS_HPP
#define VRN_RENDER_GEOMETRY_FORMS_HPP

#include <embree3/rtcore.h>

#include "scene_reading/scene_description.hpp"

namespace vrn_render {

/// Returns the mesh of a flat form: a rectangle, which lies in z = 0 and whose front is +z, or a
/// cube. Null for the others.
const MeshDescription* meshOfForm(Form form);

/// Adds the functions for a curved form to a user geometry: a disk in z = 0 whose front is +z, a
/// sphere, or a cylinder along z with its two ends.
void setFormFunctions(RTCGeometry geometry, Form form);

/// Returns the texture coordinates of a point on a curved form.
Vec2 formCoordinates(Form form, Vec3 point);

}  // namespace vrn_render

#endif
