#include "writing/framing.hpp"

#include <algorithm>
#include <cmath>

namespace vrn_convert {
namespace {

// Returns a map whose z axis has a direction, and whose y axis is as far up as it can be.
Transform turnedTo(Vector z) {
  Transform place;
  place.z = normalised(z, {0, 0, 1});
  place.x = normalised(cross({0, 1, 0}, place.z), {1, 0, 0});
  place.y = cross(place.z, place.x);
  return place;
}

}  // namespace

CameraPlan framingCamera(const Box& box) {
  CameraPlan camera;
  const Vector centre = (box.low + box.high) * 0.5;
  double radius = 0.5 * length(box.high - box.low);
  if (!(radius > 0) || !std::isfinite(radius)) radius = 1;
  // The sphere around the box fits into the height of the film, which is smaller than its width.
  const double halfAngle = std::atan(0.5 * camera.filmHeight / camera.focalLength);
  const double distance = 1.02 * radius / std::sin(halfAngle);
  camera.place = turnedTo({0.55, 0.45, 1});
  camera.place.w = centre + camera.place.z * distance;
  return camera;
}

bool looksAt(const CameraPlan& camera, const Box& box) {
  const Vector to = (box.low + box.high) * 0.5 - camera.place.w;
  const double radius = 0.5 * length(box.high - box.low);
  const double distance = length(to);
  if (!(distance > radius)) return true;
  const double depth = -dot(to, camera.place.z);
  const double corner = 0.5 * std::hypot(camera.filmWidth, camera.filmHeight);
  if (camera.isOrthographic) {
    const double aside = std::sqrt(std::max(0.0, distance * distance - depth * depth));
    return depth > -radius && aside <= corner + radius;
  }
  const double angle = std::acos(std::clamp(depth / distance, -1.0, 1.0));
  return angle <= std::atan(corner / camera.focalLength) + std::asin(radius / distance);
}

void addDefaultLights(ScenePlan& plan) {
  LightPlan key;
  key.name = "default light";
  key.kind = LightKind::Directional;
  key.emission = {2.2F, 2.2F, 2.2F};
  // It shines along its +z: down, to the back and to the left.
  key.place = turnedTo({-0.35, -0.8, -0.7});
  plan.lights.push_back(key);
  LightPlan fill;
  fill.name = "default fill light";
  fill.kind = LightKind::Environment;
  fill.emission = {0.3F, 0.3F, 0.3F};
  fill.isSeenByCamera = false;
  plan.lights.push_back(fill);
}

}  // namespace vrn_convert
