/// Texture coordinates that follow from the place of a point: those of decals, and those of shapes
/// that do not keep the coordinates of their meshes.
#ifndef VRN_RENDER_GEOMETRY_PROJECTION_HPP
#define VRN_RENDER_GEOMETRY_PROJECTION_HPP

#include <cstdint>

#include "geometry/vector.hpp"

namespace vrn_render {

/// How a point gets its coordinates. The catalogue has variants of some, which are one here.
enum class Projection : std::uint8_t { Keep, Box, Cubic, Planar, Spherical, Cylindrical, Radial };

struct Projected {
  Vec2 coordinates;
  Vec3 outward;  ///< against the direction of the projection at this point, not of length 1
};

/// Projects a point onto the unit form of a projection, whose size is 1 around the origin:
///  - Planar: along z, onto a square; u along x, v along y.
///  - Box and Cubic: along the axis that is nearest to the normal, or to the point.
///  - Spherical: towards the origin; u around z, v from the bottom to the top.
///  - Cylindrical: towards the axis z; u around it, v along it.
///  - Radial: along z; u around it, v by the distance from it, 1 at half the size.
/// `normal` is that of the surface. Keep must not be asked for.
Projected project(Projection projection, Vec3 point, Vec3 normal);

}  // namespace vrn_render

#endif
