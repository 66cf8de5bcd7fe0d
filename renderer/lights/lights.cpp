#include "lights/lights.hpp"

#include <cmath>

#include "shading/texture.hpp"

namespace vrn_render {
namespace {

const Spectrum kDark;

constexpr std::uint32_t kNone = ~0U;

// True for a map that keeps all angles, so that a sphere stays a sphere.
bool keepsAngles(const Transform& m) {
  const float xx = dot(m.x, m.x);
  const auto near = [xx](float a, float b) { return std::abs(a - b) <= 1e-4F * xx; };
  return near(dot(m.y, m.y), xx) && near(dot(m.z, m.z), xx) && near(dot(m.x, m.y), 0) &&
         near(dot(m.x, m.z), 0) && near(dot(m.y, m.z), 0);
}

float areaOf(LightKind kind, const Transform& place) {
  const float square = length(cross(place.x, place.y));
  if (kind == LightKind::Disk) return square * kPi / 4;
  return kind == LightKind::Sphere ? square * kPi : square;
}

float triangleArea(const std::array<Vec3, 3>& p) {
  return 0.5F * length(cross(p[1] - p[0], p[2] - p[0]));
}

// The mean of an emission, for the choice of an emitter.
float meanOf(const SceneDescription& scene, const ColourParameter& emission) {
  float mean = emission.value.mean();
  if (emission.lookup.texture >= 0) {
    const TextureDescription& texture =
        scene.textures[static_cast<std::size_t>(emission.lookup.texture)];
    if (texture.bytes != nullptr) {
      constexpr int kSteps = 16;
      float sum = 0;
      for (int y = 0; y < kSteps; ++y) {
        for (int x = 0; x < kSteps; ++x) {
          const Texel t =
              texelAt(texture, x * texture.width / kSteps, y * texture.height / kSteps, 0);
          sum += (t[0] + t[1] + t[2]) / 3;
        }
      }
      mean *=
          std::max(sum / (kSteps * kSteps) * emission.scale.mean() + emission.offset.mean(), 1e-4F);
    }
  }
  return mean;
}

float luminanceOf(const Spectrum& s) { return s.mean(); }

float smoothStep(float low, float high, float at) {
  if (high <= low) return at >= high ? 1.0F : 0.0F;
  const float t = std::clamp((at - low) / (high - low), 0.0F, 1.0F);
  return t * t * (3 - 2 * t);
}

}  // namespace

Lights::Lights(const SceneDescription& scene, const SceneGeometry& geometry)
    : scene_(scene),
      geometry_(geometry),
      emitterOfLight_(scene.lights.size(), kNone),
      emitterOfShape_(scene.shapes.size(), kNone),
      panoramas_(scene.lights.size()),
      onlySampled_(scene.lights.size(), false),
      places_(scene.lights.size()),
      inverses_(scene.lights.size()) {
  radius_ = std::max(0.5F * length(geometry.high() - geometry.low()), 1e-3F);
  for (std::uint32_t i = 0; i < scene.lights.size(); ++i) addLight(i);
  for (std::uint32_t i = 0; i < scene.shapes.size(); ++i) addShape(i);
  canBeFound_ = scene.camera.hasBackplate;
  for (const LightDescription& light : scene.lights) {
    hasExtent_ |= light.kind != LightKind::Point && light.kind != LightKind::Spot &&
                  light.kind != LightKind::Directional;
  }
  for (const Emitter& emitter : emitters_) hasExtent_ |= !emitter.isLight;
  canBeFound_ |= hasExtent_;
  // Also those of decals.
  for (const MaterialDescription& material : scene.materials) canBeFound_ |= material.emits;

  std::vector<std::uint32_t> all(emitters_.size());
  for (std::uint32_t i = 0; i < all.size(); ++i) all[i] = i;
  sets_.push_back(makeSet(all));
  // Light groups name the objects of the scene; some of these are left out of the description.
  std::vector<std::uint32_t> lightOf, shapeOf;
  const auto inverted = [](const auto& objects) {
    std::vector<std::uint32_t> result;
    for (std::uint32_t i = 0; i < objects.size(); ++i) {
      if (result.size() <= objects[i].object) result.resize(objects[i].object + 1, kNone);
      result[objects[i].object] = i;
    }
    return result;
  };
  lightOf = inverted(scene.lights);
  shapeOf = inverted(scene.shapes);
  const auto known = [](const std::vector<int>& objects,
                        const std::vector<std::uint32_t>& indices) {
    std::vector<std::uint32_t> result;
    for (const int object : objects) {
      const auto at = static_cast<std::size_t>(object);
      if (at < indices.size() && indices[at] != kNone) result.push_back(indices[at]);
    }
    std::sort(result.begin(), result.end());
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
  };
  for (const LightGroupDescription& group : scene.lightGroups) {
    lightsOfGroup_.push_back(known(group.lights, lightOf));
    shapesOfGroup_.push_back(known(group.shapes, shapeOf));
    std::vector<std::uint32_t> emitters;
    for (const std::uint32_t light : lightsOfGroup_.back()) {
      if (emitterOfLight_[light] != kNone) emitters.push_back(emitterOfLight_[light]);
    }
    for (const std::uint32_t shape : shapesOfGroup_.back()) {
      if (emitterOfShape_[shape] != kNone) emitters.push_back(emitterOfShape_[shape]);
    }
    std::sort(emitters.begin(), emitters.end());
    sets_.push_back(makeSet(emitters));
  }
}

Lights::Set Lights::makeSet(const std::vector<std::uint32_t>& emitters) const {
  std::vector<float> weights;
  weights.reserve(emitters.size());
  for (const std::uint32_t emitter : emitters) weights.push_back(emitters_[emitter].power);
  return {emitters, Distribution(weights)};
}

void Lights::addLight(std::uint32_t index) {
  const LightDescription& light = scene_.lights[index];
  float power = meanOf(scene_, light.emission);
  if (light.kind == LightKind::Environment) {
    environments_.push_back(index);
    Transform turn = light.place;
    turn.w = {};
    if (!canBeEntered(turn)) turn = Transform();
    places_[index] = turn;
    inverses_[index] = inverse(turn);
    if (light.emission.lookup.texture >= 0) {
      Panorama& panorama = panoramas_[index];
      std::vector<float> rows;
      for (int row = 0; row < Panorama::kRows; ++row) {
        std::vector<float> cells;
        const float v = (static_cast<float>(row) + 0.5F) / Panorama::kRows;
        float sum = 0;
        for (int column = 0; column < Panorama::kColumns; ++column) {
          const float u = (static_cast<float>(column) + 0.5F) / Panorama::kColumns;
          const Vec3 local = latLongDirection({u, v}, false);
          // A cell may be darker in its middle than elsewhere, so each gets a share of the mean.
          Spectrum scratch;
          cells.push_back(
              luminanceOf(environment(index, normalised(places_[index].vector(local)), scratch)) +
              0.02F * power);
          sum += cells.back();
        }
        rows.push_back(sum * std::sin(kPi * v));
        panorama.columns.emplace_back(cells);
      }
      panorama.rows = Distribution(rows);
      if (panorama.rows.empty()) return;
    }
    power *= kPi * kPi * radius_ * radius_;
  } else if (light.kind == LightKind::Directional) {
    power *= kPi * radius_ * radius_;
  } else if (light.kind == LightKind::Point) {
    power *= 4 * kPi;
  } else if (light.kind == LightKind::Spot) {
    power *= 2 * kPi * (1 - 0.5F * (light.cosInner + light.cosOuter));
  } else {
    places_[index] = SceneGeometry::surfacePlace(light);
    if (!canBeEntered(places_[index])) return;
    inverses_[index] = inverse(places_[index]);
    power *= kPi * areaOf(light.kind, places_[index]);
  }
  // A light that scattered rays do not all see is left to sampling alone, and so is one whose light
  // passes through shapes.
  onlySampled_[index] = (light.visibleTo & kScatteredRays) != kScatteredRays || !light.castsShadow;
  power *= light.samplingMultiplier;
  if (!(power > 0) || !std::isfinite(power)) return;
  emitterOfLight_[index] = static_cast<std::uint32_t>(emitters_.size());
  emitters_.push_back({true, index, power, {}});
}

void Lights::addShape(std::uint32_t index) {
  const ShapeDescription& shape = scene_.shapes[index];
  const MaterialDescription& material = scene_.materials[static_cast<std::size_t>(shape.material)];
  if (!material.emits || shape.isMatte || !shape.castsIndirect || !shape.decals.empty()) return;
  // Rays that scatter find the curved forms, and what decals may cover; sampling is for meshes.
  const MeshDescription* const mesh = geometry_.meshOf(index);
  if (mesh == nullptr || (shape.visibleTo & kScatteredRays) != kScatteredRays) return;
  const Transform place = geometry_.placeAt(index, shape.motion.start);
  std::vector<float> areas(mesh->triangles);
  for (std::uint32_t i = 0; i < mesh->triangles; ++i) {
    std::array<Vec3, 3> p = SceneGeometry::corners(*mesh, i);
    for (Vec3& corner : p) corner = place.point(corner);
    const float area = triangleArea(p);
    areas[i] = std::isfinite(area) ? area : 0;
  }
  Distribution triangles(areas);
  if (triangles.empty()) return;
  float power = meanOf(scene_, material.emission) * kPi * static_cast<float>(triangles.total()) *
                shape.samplingMultiplier;
  if (material.emitsOnBothSides) power *= 2;
  if (!(power > 0) || !std::isfinite(power)) return;
  emitterOfShape_[index] = static_cast<std::uint32_t>(emitters_.size());
  emitters_.push_back({false, index, power, std::move(triangles)});
}

const Lights::Set& Lights::setOf(std::uint32_t shape) const {
  return sets_[static_cast<std::size_t>(scene_.shapes[shape].lightGroup) + 1];
}

bool Lights::contains(const std::vector<std::uint32_t>& sorted, std::uint32_t index) {
  return std::binary_search(sorted.begin(), sorted.end(), index);
}

float Lights::probability(std::uint32_t shape, std::uint32_t emitter) const {
  if (emitter == kNone) return 0;
  const Set& set = setOf(shape);
  const auto found = std::lower_bound(set.emitters.begin(), set.emitters.end(), emitter);
  if (found == set.emitters.end() || *found != emitter || set.choice.empty()) return 0;
  return set.choice.probability(static_cast<std::size_t>(found - set.emitters.begin()));
}

bool Lights::shinesOn(std::uint32_t shape, std::uint32_t index, bool isLight) const {
  const int group = scene_.shapes[shape].lightGroup;
  if (group < 0) return true;
  return contains((isLight ? lightsOfGroup_ : shapesOfGroup_)[static_cast<std::size_t>(group)],
                  index);
}

bool Lights::hasChoice(std::uint32_t shape) const {
  const Set& set = setOf(shape);
  return set.emitters.size() != 1 || !emitters_[set.emitters.front()].isLight;
}

bool Lights::sample(std::uint32_t shape, Vec3 point, float time, float choice, Vec2 u,
                    LightSample& out) const {
  const Set& set = setOf(shape);
  if (set.choice.empty()) return false;
  const bool isOnly = set.emitters.size() == 1;
  const std::size_t chosen = isOnly ? 0 : set.choice.choose(choice);
  const Emitter& emitter = emitters_[set.emitters[chosen]];
  const bool isLit = emitter.isLight ? sampleLight(emitter.index, point, u, out)
                                     : sampleShape(emitter, point, time, choice, u, out);
  if (!isLit || !(out.density > 0)) return false;
  if (!isOnly) out.density *= set.choice.probability(chosen);
  return true;
}

bool Lights::sampleLight(std::uint32_t index, Vec3 point, Vec2 u, LightSample& out) const {
  const LightDescription& light = scene_.lights[index];
  out.castsShadow = light.castsShadow;
  out.visibleTo = light.visibleTo;
  out.isFound = !onlySampled_[index];
  if (light.kind == LightKind::Environment) {
    out.distance = std::numeric_limits<float>::infinity();
    const Panorama& panorama = panoramas_[index];
    Vec3 local;
    if (panorama.columns.empty()) {
      const float z = 1 - 2 * u.x;
      const float radius = std::sqrt(std::max(0.0F, 1 - z * z));
      const Vec2 around = turnedBy(u.y);
      local = {radius * around.x, radius * around.y, z};
    } else {
      const std::size_t row = panorama.rows.choose(u.y);
      const std::size_t column = panorama.columns[row].choose(u.x);
      local = latLongDirection({(static_cast<float>(column) + u.x) / Panorama::kColumns,
                                (static_cast<float>(row) + u.y) / Panorama::kRows},
                               false);
    }
    out.direction = normalised(places_[index].vector(local));
    out.density = panoramaDensity(index, out.direction);
    out.radiance = &environment(index, out.direction, out.scratch);
    return true;
  }
  if (light.kind == LightKind::Directional) {
    out.direction = -normalised(light.place.vector({0, 0, 1}));
    out.distance = std::numeric_limits<float>::infinity();
    out.radiance = &light.emission.value;
    out.density = 1;
    out.isSingular = true;
    return true;
  }
  if (light.kind == LightKind::Point || light.kind == LightKind::Spot) {
    const Vec3 way = light.place.w - point;
    const float distance2 = dot(way, way);
    if (!(distance2 > 0)) return false;
    out.distance = std::sqrt(distance2);
    out.direction = way * (1 / out.distance);
    float scale = 1 / distance2;
    if (light.kind == LightKind::Spot) {
      const Vec3 axis = normalised(light.place.vector({0, 0, 1}));
      scale *= smoothStep(light.cosOuter, light.cosInner, -dot(axis, out.direction));
    }
    out.radiance = &light.emission.value;
    out.scale = scale;
    out.density = scale > 0 ? 1.0F : 0.0F;
    out.isSingular = true;
    return true;
  }

  const Transform& place = places_[index];
  Vec3 on;
  if (light.kind == LightKind::Sphere && keepsAngles(place)) {
    const float radius = 0.5F * length(place.x);
    const Vec3 way = place.w - point;
    const float distance2 = dot(way, way);
    if (distance2 <= radius * radius) return false;
    const float distance = std::sqrt(distance2);
    const float sine2 = radius * radius / distance2;
    const float cosMost = std::sqrt(std::max(0.0F, 1 - sine2));
    const float less = sine2 / (1 + cosMost);  // 1 - cosMost
    const float rest = u.x * less;             // 1 - cosine
    const float cosine = 1 - rest;
    const float sine = std::sqrt(std::max(0.0F, rest * (2 - rest)));
    const Vec2 around = turnedBy(u.y);
    out.direction = Frame(way * (1 / distance)).toWorld({sine * around.x, sine * around.y, cosine});
    const float inside = std::max(0.0F, radius * radius - distance2 * sine * sine);
    out.distance = distance * cosine - std::sqrt(inside);
    out.density = 1 / (2 * kPi * less);
    out.radiance = &radianceOf(index, out.scratch);
    return out.distance > 0;
  }
  if (light.kind == LightKind::Rectangle) {
    on = {u.x - 0.5F, u.y - 0.5F, 0};
  } else if (light.kind == LightKind::Disk) {
    const float radius = 0.5F * std::sqrt(u.x);
    const Vec2 around = turnedBy(u.y);
    on = {radius * around.x, radius * around.y, 0};
  } else {
    const float z = 1 - 2 * u.x;
    const float radius = std::sqrt(std::max(0.0F, 1 - z * z));
    const Vec2 around = turnedBy(u.y);
    on = 0.5F * Vec3{radius * around.x, radius * around.y, z};
  }
  const Vec3 way = place.point(on) - point;
  out.distance = length(way);
  if (!(out.distance > 0)) return false;
  out.direction = way * (1 / out.distance);
  out.density = surfaceDensity(index, point, out.direction, out.distance);
  out.radiance = &radianceOf(index, out.scratch);
  return out.density > 0;
}

float Lights::surfaceDensity(std::uint32_t index, Vec3 origin, Vec3 direction,
                             float distance) const {
  const LightDescription& light = scene_.lights[index];
  const Transform& place = places_[index];
  if (light.kind == LightKind::Sphere) {
    if (keepsAngles(place)) {
      const float radius = 0.5F * length(place.x);
      const Vec3 way = place.w - origin;
      const float sine2 = radius * radius / dot(way, way);
      if (sine2 >= 1) return 0;
      return (1 + std::sqrt(1 - sine2)) / (2 * kPi * sine2);
    }
    const Vec3 local = normalised(inverses_[index].point(origin + distance * direction));
    const Vec3 stretched = place.normal(local);
    const float size = length(stretched);
    const float cosine = -dot(stretched, direction) / size;
    return cosine > 0 ? distance * distance / (cosine * kPi * size) : 0;
  }
  const float cosine = -dot(normalised(place.normal({0, 0, 1})), direction);
  if (!(cosine > 1e-6F)) return 0;
  return distance * distance / (cosine * areaOf(light.kind, place));
}

bool Lights::sampleShape(const Emitter& emitter, Vec3 point, float time, float choice, Vec2 u,
                         LightSample& out) const {
  const ShapeDescription& shape = scene_.shapes[emitter.index];
  if (shape.motion.moves() && (time < shape.motion.start || time > shape.motion.end)) return false;
  const MeshDescription& mesh = *geometry_.meshOf(emitter.index);
  const std::size_t triangle = emitter.triangles.choose(choice);
  // Even over the triangle.
  const float root = std::sqrt(u.x);
  Hit hit;
  hit.shape = emitter.index;
  hit.primitive = static_cast<std::uint32_t>(triangle);
  hit.u = root * (1 - u.y);
  hit.v = root * u.y;
  Ray ray;
  ray.time = time;
  const SurfacePoint on = geometry_.pointAt(ray, hit);
  const Vec3 way = on.position - point;
  out.distance = length(way);
  if (!(out.distance > 0)) return false;
  out.direction = way * (1 / out.distance);
  ray.origin = point;
  ray.direction = out.direction;
  hit.distance = out.distance;
  const float cosine = std::abs(dot(on.geometricNormal, out.direction));
  if (!(cosine > 1e-6F)) return false;
  const Transform place = geometry_.placeAt(emitter.index, time);
  std::array<Vec3, 3> p = SceneGeometry::corners(mesh, hit.primitive);
  for (Vec3& corner : p) corner = place.point(corner);
  const float area = triangleArea(p);
  if (!(area > 0)) return false;
  out.density =
      emitter.triangles.probability(triangle) * out.distance * out.distance / (cosine * area);
  const MaterialDescription& material = scene_.materials[static_cast<std::size_t>(shape.material)];
  out.radiance = &radianceOf(material, on, -out.direction, out.scratch);
  out.visibleTo = shape.visibleTo;
  return !out.radiance->isZero();
}

const Spectrum& Lights::radianceOf(std::uint32_t light, Spectrum& scratch) const {
  const ColourParameter& emission = scene_.lights[light].emission;
  return evaluate(scene_, emission, TextureCoordinates(), false, scratch);
}

const Spectrum& Lights::radianceOf(const MaterialDescription& material, const SurfacePoint& point,
                                   Vec3 view, Spectrum& scratch) const {
  if (!material.emits) return kDark;
  if (!material.emitsOnBothSides && dot(point.geometricNormal, view) <= 0) return kDark;
  return evaluate(scene_, material.emission, point.coordinates, false, scratch);
}

Vec3 Lights::toEnvironment(std::uint32_t light, Vec3 direction) const {
  return normalised(inverses_[light].vector(direction));
}

const Spectrum& Lights::environment(std::uint32_t index, Vec3 direction, Spectrum& scratch) const {
  const ColourParameter& emission = scene_.lights[index].emission;
  if (emission.lookup.texture < 0) return emission.value;
  const TextureDescription& texture =
      scene_.textures[static_cast<std::size_t>(emission.lookup.texture)];
  const Texel texel = sampleSphere(texture, toEnvironment(index, direction));
  scratch = Colours::get().factor(
      {std::max(texel[0], 0.0F), std::max(texel[1], 0.0F), std::max(texel[2], 0.0F)});
  if (emission.isScaled) {
    scratch *= emission.scale;
    scratch += emission.offset;
  }
  return scratch *= emission.value;
}

float Lights::panoramaDensity(std::uint32_t light, Vec3 direction) const {
  const Panorama& panorama = panoramas_[light];
  if (panorama.columns.empty()) return 1 / (4 * kPi);
  const Vec2 at = latLongPoint(toEnvironment(light, direction), false);
  const auto cell = [](float place, int count) {
    return static_cast<std::size_t>(
        std::clamp(static_cast<int>(place * static_cast<float>(count)), 0, count - 1));
  };
  const std::size_t row = cell(at.y, Panorama::kRows);
  const std::size_t column = cell(at.x - std::floor(at.x), Panorama::kColumns);
  const float sine = std::sin(kPi * at.y);
  if (!(sine > 1e-6F)) return 0;
  return panorama.rows.probability(row) * panorama.columns[row].probability(column) *
         static_cast<float>(Panorama::kRows * Panorama::kColumns) / (2 * kPi * kPi * sine);
}

float Lights::densityOfLight(std::uint32_t shape, std::uint32_t light, const Ray& ray,
                             float distance) const {
  const float chosen = probability(shape, emitterOfLight_[light]);
  return chosen > 0 ? chosen * surfaceDensity(light, ray.origin, ray.direction, distance) : 0;
}

float Lights::densityOfEnvironment(std::uint32_t shape, std::uint32_t light, Vec3 direction) const {
  const float chosen = probability(shape, emitterOfLight_[light]);
  return chosen > 0 ? chosen * panoramaDensity(light, direction) : 0;
}

float Lights::densityOfShape(std::uint32_t shape, const Ray& ray, const Hit& hit,
                             const SurfacePoint& point) const {
  const std::uint32_t index = emitterOfShape_[hit.shape];
  const float chosen = probability(shape, index);
  if (!(chosen > 0)) return 0;
  const Emitter& emitter = emitters_[index];
  const float cosine = std::abs(dot(point.geometricNormal, ray.direction));
  const Transform place = geometry_.placeAt(hit.shape, ray.time);
  std::array<Vec3, 3> p = SceneGeometry::corners(*geometry_.meshOf(hit.shape), hit.primitive);
  for (Vec3& corner : p) corner = place.point(corner);
  const float area = triangleArea(p);
  if (!(cosine > 1e-6F) || !(area > 0)) return 0;
  return chosen * emitter.triangles.probability(hit.primitive) * hit.distance * hit.distance /
         (cosine * area);
}

}  // namespace vrn_render
