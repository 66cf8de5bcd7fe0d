#include "geometry/projection.hpp"

#include <algorithm>
#include <cmath>

namespace vrn_render {
namespace {

float around(Vec3 p) { return 0.5F + std::atan2(p.y, p.x) / (2 * kPi); }

// Projects along the axis that is nearest to a direction.
Projected alongAxis(Vec3 p, Vec3 direction) {
  const Vec3 size{std::abs(direction.x), std::abs(direction.y), std::abs(direction.z)};
  if (size.x > size.y && size.x > size.z) {
    const float side = direction.x > 0 ? 1.0F : -1.0F;
    return {{0.5F - side * p.z, 0.5F + p.y}, {side, 0, 0}};
  }
  if (size.y > size.z) {
    const float side = direction.y > 0 ? 1.0F : -1.0F;
    return {{0.5F + p.x, 0.5F - side * p.z}, {0, side, 0}};
  }
  const float side = direction.z > 0 ? 1.0F : -1.0F;
  return {{0.5F + side * p.x, 0.5F + p.y}, {0, 0, side}};
}

}  // namespace

Projected project(Projection projection, Vec3 p, Vec3 normal) {
  switch (projection) {
    case Projection::Box:
      return alongAxis(p, normal);
    case Projection::Cubic:
      return alongAxis(p, p);
    case Projection::Spherical: {
      const float cosine = p.z / std::max(length(p), 1e-20F);
      return {{around(p), std::acos(std::clamp(-cosine, -1.0F, 1.0F)) / kPi}, p};
    }
    case Projection::Cylindrical:
      return {{around(p), p.z + 0.5F}, {p.x, p.y, 0}};
    case Projection::Radial:
      return {{around(p), 2 * std::sqrt(p.x * p.x + p.y * p.y)}, {0, 0, 1}};
    case Projection::Keep:
    case Projection::Planar:
      break;
  }
  return {{p.x + 0.5F, p.y + 0.5F}, {0, 0, 1}};
}

}  // namespace vrn_render
