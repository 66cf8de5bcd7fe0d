#include "integrator/path_tracer.hpp"

#include <cmath>

namespace vrn_render {
namespace {

// How often a ray may go straight on through surfaces that are not opaque.
constexpr int kMostPasses = 256;
constexpr float kLeastRoulette = 0.05F;

float balanced(float a, float b) { return a * a / (a * a + b * b); }

}  // namespace

// The state of a path between two of its points.
struct PathTracer::Path {
  explicit Path(Spectrum& sum) : radiance(sum) {}

  Ray ray;
  Spectrum throughput{1.0F};
  Spectrum& radiance;
  // How the last direction was chosen. Without a density, sampling of lights could not choose it.
  float density = 0;
  bool isSingular = true;
  std::uint32_t shape = Hit::kNone;  // that the ray comes from
  int band = -1;                     // the only one that is left, or all
  Vec2 film;
  bool isDirect = true;  // whether nothing has scattered it
  bool wasDiffuse = false;
  bool receivesCaustics = true;
  bool isCaustic = false, allowsCaustic = true;
  std::uint32_t rays = 0;
  std::uint32_t point = 0;  // how many rays have been followed before this one
  // Where on a light, and where to go on, at this point.
  Vec2 onLight, direction;
};

PathTracer::PathTracer(const SceneDescription& scene, float filmHeight)
    : scene_(scene),
      geometry_(scene),
      lights_(scene, geometry_),
      tables_(makeMaterialTables(scene)),
      filmHeight_(filmHeight) {
  for (const MaterialDescription& material : scene.materials) {
    const bool is = material.opacity.lookup.texture >= 0 || material.opacity.value < 1;
    isTransparent_.push_back(is);
    hasTransparency_ |= is;
  }
}

Transform PathTracer::cameraAt(float time) const {
  const Motion& motion = scene_.camera.motion;
  if (!motion.moves()) return motion.steps.front();
  const auto last = static_cast<float>(motion.steps.size() - 1);
  const float at =
      std::clamp((time - motion.start) / (motion.end - motion.start), 0.0F, 1.0F) * last;
  const auto step = std::min(static_cast<std::size_t>(at), motion.steps.size() - 2);
  const Transform& a = motion.steps[step];
  const Transform& b = motion.steps[step + 1];
  const float t = at - static_cast<float>(step);
  const auto mix = [t](Vec3 from, Vec3 to) { return from * (1 - t) + to * t; };
  return {mix(a.x, b.x), mix(a.y, b.y), mix(a.z, b.z), mix(a.w, b.w)};
}

Ray PathTracer::cameraRay(Vec2 film, const Sampler& sampler) const {
  const CameraDescription& camera = scene_.camera;
  Vec2 lens;
  float time = 0;
  if (camera.lensRadius > 0) lens = sampler.two(Choice::Lens);
  if (camera.shutterClose > camera.shutterOpen) time = sampler.one(Choice::Time);
  Ray ray;
  ray.kind = kCameraRay;
  ray.time = camera.shutterOpen + time * (camera.shutterClose - camera.shutterOpen);
  const Vec3 on{(film.x - 0.5F) * camera.filmWidth, (film.y - 0.5F) * filmHeight_,
                -camera.focalLength};
  Vec3 origin{0, 0, 0};
  Vec3 direction = on;
  if (camera.isOrthographic) {
    origin = {on.x, on.y, 0};
    direction = {0, 0, -1};
  } else if (camera.lensRadius > 0) {
    const float radius = camera.lensRadius * std::sqrt(lens.x);
    const Vec3 focus = on * (camera.focusDistance / camera.focalLength);
    const Vec2 around = turnedBy(lens.y);
    origin = {radius * around.x, radius * around.y, 0};
    direction = focus - origin;
  }
  direction = normalised(direction, {0, 0, -1});
  const Transform place = cameraAt(ray.time);
  ray.origin = place.point(origin);
  ray.direction = normalised(place.vector(direction), {0, 0, -1});
  if (camera.nearDistance > 0) {
    // That of a plane, in metres of the scene.
    const Vec3 axis = normalised(place.normal({0, 0, -1}));
    ray.near = camera.nearDistance / std::max(dot(ray.direction, axis), 1e-4F);
  }
  return ray;
}

// Starts a ray a little above the surface, so that it does not meet the surface again.
Vec3 PathTracer::leave(const SurfacePoint& point, Vec3 direction) const {
  const Vec3& p = point.position;
  const float size = std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z)});
  const float step = std::max(scene_.rayEpsilon, size * 4e-7F);
  const bool isFront = dot(direction, point.geometricNormal) > 0;
  return p + point.geometricNormal * (isFront ? step : -step);
}

float PathTracer::opacityAt(std::size_t index, const TextureCoordinates& at) const {
  const MaterialDescription& material = scene_.materials[index];
  const float opacity = std::clamp(evaluate(scene_, material.opacity, at), 0.0F, 1.0F);
  if (material.opacityCutoff >= 0) return opacity < material.opacityCutoff ? 0.0F : 1.0F;
  return opacity;
}

// Returns whether a decal covers a point, with the point as the decal's material sees it.
bool PathTracer::reachesDecal(const DecalUse& use, const SurfacePoint& point, Vec3 view,
                              SurfacePoint& on) const {
  if ((dot(point.geometricNormal, view) > 0) != use.isFront) return false;
  const DecalDescription& decal = scene_.decals[static_cast<std::size_t>(use.decal)];
  const Vec3 local = decal.toLocal.point(point.position);
  const Vec3& low = decal.low;
  const Vec3& high = decal.high;
  if (!(local.x >= low.x && local.y >= low.y && local.z >= low.z && local.x <= high.x &&
        local.y <= high.y && local.z <= high.z)) {
    return false;
  }
  on = point;
  if (decal.projection == Projection::Keep) return true;
  const Vec3 normal = decal.toLocal.normal(point.geometricNormal);
  const Projected found = project(decal.projection, local, normal);
  if (!(dot(normal, found.outward) > 0 ? decal.fromOutside : decal.fromInside)) return false;
  on.coordinates.sets.fill(found.coordinates);
  on.tangent = decal.place.x;
  return true;
}

// Chooses the uppermost decal, by the chance of its opacity, or one that is below it. Returns false
// if a ray meets the shape's own material.
bool PathTracer::chooseDecal(const ShapeDescription& shape, SurfacePoint& point, Vec3 view,
                             float choice, std::size_t& material) const {
  for (auto use = shape.decals.rbegin(); use != shape.decals.rend(); ++use) {
    SurfacePoint on;
    if (!reachesDecal(*use, point, view, on)) continue;
    const DecalDescription& decal = scene_.decals[static_cast<std::size_t>(use->decal)];
    const auto over =
        static_cast<std::size_t>(use->isFront ? decal.frontMaterial : decal.backMaterial);
    const float opacity = opacityAt(over, on.coordinates);
    if (choice < opacity) {
      point = on;
      material = over;
      return true;
    }
    choice = std::min((choice - opacity) / (1 - opacity), 0x1.fffffep-1F);
  }
  return false;
}

Vec3 PathTracer::mappedNormal(const MaterialDescription& material,
                              const SurfacePoint& point) const {
  if (material.normalMap.texture < 0) return point.normal;
  const TextureDescription& texture =
      scene_.textures[static_cast<std::size_t>(material.normalMap.texture)];
  if (texture.bytes == nullptr) return point.normal;
  const int set = std::min(material.normalMap.set, TextureCoordinates::kMostSets - 1);
  const Texel texel = sampleFlat(texture, material.normalMap,
                                 point.coordinates.sets[static_cast<std::size_t>(set)]);
  Vec3 n{texel[0], texel[1], texel[2]};
  // Normals of floats are stored as they are, the others as 0 to 1.
  const int family = texture.format % 12;
  if (texture.format < 12 || texture.format >= 36 || (family != 6 && family != 7)) {
    n = n * 2 - Vec3{1, 1, 1};
  }
  n = {n.x * material.normalScale.x + material.normalOffset.x,
       n.y * material.normalScale.y + material.normalOffset.y,
       n.z * material.normalScale.z + material.normalOffset.z};
  const Vec3 tangent = normalised(point.tangent - point.normal * dot(point.tangent, point.normal),
                                  Frame(point.normal).tangent);
  const Vec3 bitangent = cross(point.normal, tangent);
  const Vec3 mapped =
      normalised(n.x * tangent + n.y * bitangent + n.z * point.normal, point.normal);
  return dot(mapped, point.geometricNormal) > 0 ? mapped : point.normal;
}

void PathTracer::addPassedLights(Path& path, const PassedLights& lights, float farthest) const {
  for (const PassedLights::Passed& passed : lights) {
    if (passed.distance > farthest) continue;
    const LightDescription& light = scene_.lights[passed.light];
    if (path.isCaustic && !(path.allowsCaustic && light.castsCaustics)) continue;
    float weight = 1;
    if (path.shape != Hit::kNone) {
      if (!lights_.shinesOn(path.shape, passed.light, true)) continue;
      if (!path.isSingular) {
        if (lights_.isOnlySampled(passed.light)) continue;
        weight = balanced(path.density, lights_.densityOfLight(path.shape, passed.light, path.ray,
                                                               passed.distance));
      }
    }
    Spectrum scratch{Spectrum::Unset()};
    path.radiance.addProduct(path.throughput, lights_.radianceOf(passed.light, scratch), weight);
  }
}

Spectrum PathTracer::background(const Path& path) const {
  const CameraDescription& camera = scene_.camera;
  if (!camera.hasBackplate) return camera.background;
  Vec2 film = path.film;
  if (!path.isDirect) {
    const Vec3 local = inverse(cameraAt(path.ray.time)).vector(path.ray.direction);
    if (local.z >= 0) return Spectrum();
    const float scale = camera.focalLength / -local.z;
    film = {0.5F + local.x * scale / camera.filmWidth, 0.5F + local.y * scale / filmHeight_};
  }
  const TextureDescription& texture = scene_.textures[static_cast<std::size_t>(camera.backplate)];
  Vec2 low{0, 0}, high{1, 1};
  const float image = texture.height > 0
                          ? static_cast<float>(texture.width) / static_cast<float>(texture.height)
                          : 1;
  const float plate = camera.filmWidth / filmHeight_;
  using Fit = CameraDescription::Fit;
  if (camera.backplateFit == Fit::Width) {
    low.y = 0.5F - 0.5F * plate / image;
    high.y = 0.5F + 0.5F * plate / image;
  } else if (camera.backplateFit == Fit::Height) {
    low.x = 0.5F - 0.5F * image / plate;
    high.x = 0.5F + 0.5F * image / plate;
  } else if (camera.backplateFit == Fit::Manual) {
    low = camera.backplateMin;
    high = camera.backplateMax;
  }
  // The first row of the image is at the top.
  const Vec2 at{(film.x - low.x) / (high.x - low.x), 1 - (film.y - low.y) / (high.y - low.y)};
  if (!std::isfinite(at.x + at.y)) return Spectrum();
  const Texel texel = sampleFlat(texture, camera.backplateLookup, at);
  Spectrum result = Colours::get().background(
      {std::max(texel[0], 0.0F), std::max(texel[1], 0.0F), std::max(texel[2], 0.0F)});
  result *= camera.backplateBrightness * texel[3];
  if (camera.hasBackground) result.add(camera.background, 1 - texel[3]);
  return result;
}

// A ray has left the scene.
void PathTracer::addSurroundings(Path& path) const {
  const CameraDescription& camera = scene_.camera;
  if (path.isDirect && (camera.hasBackground || camera.hasBackplate)) {
    if (!scene_.task.hasTransparentBackground) {
      path.radiance.addProduct(path.throughput, background(path), 1);
    }
    return;
  }
  if (path.isDirect && scene_.task.hasTransparentBackground) return;
  if (camera.hasBackplate && path.isSingular &&
      ((path.ray.kind == kReflectionRay && camera.backplateInReflection) ||
       (path.ray.kind == kRefractionRay && camera.backplateInRefraction))) {
    path.radiance.addProduct(path.throughput, background(path), 1);
    return;
  }
  for (const std::uint32_t light : lights_.environments()) {
    const LightDescription& environment = scene_.lights[light];
    if (!(environment.visibleTo & path.ray.kind)) continue;
    if (path.isCaustic && !(path.allowsCaustic && environment.castsCaustics)) continue;
    float weight = 1;
    if (path.shape != Hit::kNone) {
      if (!lights_.shinesOn(path.shape, light, true)) continue;
      if (!path.isSingular) {
        if (lights_.isOnlySampled(light)) continue;
        weight = balanced(path.density,
                          lights_.densityOfEnvironment(path.shape, light, path.ray.direction));
      }
    }
    Spectrum scratch{Spectrum::Unset()};
    path.radiance.addProduct(path.throughput,
                             lights_.environment(light, path.ray.direction, scratch), weight);
  }
}

// Returns how much of the light on a shadow ray comes through.
float PathTracer::transparencyOf(const Ray& shadow, Path& path) const {
  if (!hasTransparency_) {
    ++path.rays;
    return geometry_.isOccluded(shadow) ? 0.0F : 1.0F;
  }
  Ray ray = shadow;
  float through = 1;
  PassedLights ignored;
  for (int pass = 0; pass < kMostPasses; ++pass) {
    ++path.rays;
    const Hit hit = geometry_.intersect(ray, ignored);
    if (!hit.exists()) return through;
    const auto material = static_cast<std::size_t>(scene_.shapes[hit.shape].material);
    if (!isTransparent_[material]) return 0;
    const SurfacePoint point = geometry_.pointAt(ray, hit);
    through *= 1 - opacityAt(material, point.coordinates);
    for (const DecalUse& use : scene_.shapes[hit.shape].decals) {
      SurfacePoint on;
      if (!reachesDecal(use, point, -ray.direction, on)) continue;
      const DecalDescription& decal = scene_.decals[static_cast<std::size_t>(use.decal)];
      const int over = use.isFront ? decal.frontMaterial : decal.backMaterial;
      through *= 1 - opacityAt(static_cast<std::size_t>(over), on.coordinates);
    }
    if (through <= 0) return 0;
    const Vec3 next = leave(point, ray.direction);
    ray.far -= dot(next - ray.origin, ray.direction);
    ray.origin = next;
    ray.near = 0;
    if (!(ray.far > 0)) return through;
  }
  return 0;
}

void PathTracer::addDirect(Path& path, const SurfacePoint& point, const Surface& surface,
                           std::uint32_t shape, const Sampler& sampler) const {
  if (lights_.empty() || surface.isSingular()) return;
  const float choice = lights_.hasChoice(shape) ? sampler.one(Choice::Light, path.point) : 0.0F;
  LightSample light;
  if (!lights_.sample(shape, point.position, path.ray.time, choice, path.onLight, light)) return;
  Scattering scattered;
  const std::uint32_t kinds = light.visibleTo & kScatteredRays;
  const float density = surface.evaluate(light.direction, kinds, scattered);
  if (scattered.isZero()) return;
  float weight = light.scale / light.density;
  if (!light.isSingular && light.isFound) weight *= balanced(light.density, density);

  Ray shadow;
  shadow.kind = kShadowRay;
  shadow.time = path.ray.time;
  shadow.origin = leave(point, light.direction);
  shadow.direction = light.direction;
  if (std::isfinite(light.distance)) {
    // The way from the moved origin, without the emitter itself.
    const Vec3 end = point.position + light.direction * light.distance;
    const Vec3 way = end - shadow.origin;
    const float distance = length(way);
    shadow.direction = distance > 0 ? way * (1 / distance) : light.direction;
    shadow.far = distance * (1 - 1e-4F) - scene_.rayEpsilon;
  }
  float through = 1;
  if (light.castsShadow && scene_.shapes[shape].receivesShadow && shadow.far > 0) {
    through = transparencyOf(shadow, path);
  }
  if (through <= 0) return;
  scattered *= weight * through;
  path.radiance.addScattered(path.throughput, *light.radiance, surface.reflectance(), scattered);
}

Seen PathTracer::trace(Vec2 film, const Sampler& sampler) const {
  const TaskDescription& task = scene_.task;
  Seen seen;
  Path path(seen.radiance);
  path.film = film;
  path.ray = cameraRay(film, sampler);
  if (task.wavelengths == Wavelengths::One) {
    path.throughput = Spectrum();
    path.throughput[task.band] = 1;
    path.band = task.band;
  }
  const Vec3 eye = path.ray.origin;
  PassedLights passed;
  int passes = 0;
  for (int bounce = 0;; ++path.point) {
    ++path.rays;
    const Hit hit = geometry_.intersect(path.ray, passed);
    addPassedLights(path, passed,
                    hit.exists() ? hit.distance : std::numeric_limits<float>::infinity());
    if (!hit.exists()) {
      addSurroundings(path);
      break;
    }
    // The processor computes these while it waits for the bytes of the mesh.
    if (lights_.hasExtent()) path.onLight = sampler.two(Choice::OnLight, path.point);
    // From the last point, the path could only find what shines by itself.
    const bool goesOn = bounce + 1 < task.maxBounces || lights_.canBeFound();
    if (goesOn) path.direction = sampler.two(Choice::Direction, path.point);
    const ShapeDescription& shape = scene_.shapes[hit.shape];
    auto materialIndex = static_cast<std::size_t>(shape.material);
    const bool hasDecals = !shape.decals.empty();
    SurfacePoint point =
        geometry_.pointAt(path.ray, hit, hasDecals || tables_[materialIndex].usesCoordinates);
    const bool isDecal =
        hasDecals && chooseDecal(shape, point, -path.ray.direction,
                                 sampler.one(Choice::Decal, path.point), materialIndex);
    const MaterialDescription& material = scene_.materials[materialIndex];
    if (!isDecal && isTransparent_[materialIndex] &&
        sampler.one(Choice::Pass, path.point) >= opacityAt(materialIndex, point.coordinates) &&
        ++passes < kMostPasses) {
      path.ray.origin = leave(point, path.ray.direction);
      path.ray.near = 0;
      if (path.ray.kind == kCameraRay) path.ray.kind = kTransmissionRay;
      continue;
    }
    if (path.isDirect && shape.isMatte) {
      if (!task.hasTransparentBackground) {
        path.radiance.addProduct(path.throughput, background(path), 1);
      }
      break;
    }
    if (path.ray.kind == kDiffuseRay && !shape.castsIndirect) break;

    const Vec3 view = -path.ray.direction;
    if (path.isDirect) seen.alpha = 1;
    if (material.emits && !(path.isCaustic && !(path.allowsCaustic && shape.castsCaustics)) &&
        (path.shape == Hit::kNone || lights_.shinesOn(path.shape, hit.shape, false))) {
      float weight = 1;
      if (path.shape != Hit::kNone && !path.isSingular) {
        weight = balanced(path.density, lights_.densityOfShape(path.shape, path.ray, hit, point));
      }
      Spectrum scratch{Spectrum::Unset()};
      path.radiance.addProduct(path.throughput, lights_.radianceOf(material, point, view, scratch),
                               weight);
    }

    const Surface surface(scene_, material, tables_[materialIndex], point.coordinates,
                          mappedNormal(material, point), point.geometricNormal, view);
    if (path.isDirect) {
      seen.isHit = true;
      seen.depth = length(point.position - eye);
      seen.normal = surface.normal();
      seen.albedo = surface.colour();
      seen.object = shape.object + 1;
    }
    if (bounce >= task.maxBounces) break;
    addDirect(path, point, surface, hit.shape, sampler);
    if (!goesOn) break;

    const float lobe = surface.hasChoice() ? sampler.one(Choice::Lobe, path.point) : 0.0F;
    const Scattered next = surface.sample(lobe, path.direction, path.band);
    if (next.kind == 0) break;
    if (next.kind == kDiffuseRay && !shape.receivesIndirect) break;
    if (next.band >= 0) {
      path.band = next.band;
      const float kept =
          path.throughput[next.band] * next.weight.at(surface.reflectance()[next.band]);
      path.throughput = Spectrum();
      path.throughput[next.band] = kept;
    } else {
      path.throughput.scatter(surface.reflectance(), next.weight);
    }
    path.density = next.density;
    path.isSingular = next.isSingular;
    path.isDirect = false;
    path.shape = hit.shape;
    if (next.kind == kDiffuseRay) {
      path.wasDiffuse = true;
      path.receivesCaustics = shape.receivesCaustics;
      path.isCaustic = false;
    } else if (path.wasDiffuse) {
      path.allowsCaustic =
          (path.isCaustic ? path.allowsCaustic : path.receivesCaustics) && shape.castsCaustics;
      path.isCaustic = true;
    }
    path.ray.origin = leave(point, next.direction);
    path.ray.direction = next.direction;
    path.ray.near = 0;
    path.ray.kind = static_cast<RayKind>(next.kind);
    ++bounce;

    if (bounce > task.rouletteStart) {
      const float survival = sampler.one(Choice::Roulette, path.point);
      const float strength = path.throughput.largest();
      const float kept = task.hasFixedRoulette ? 1 - task.fixedRoulette
                                               : std::clamp(strength, kLeastRoulette, 1.0F);
      if (!(strength > 0) || survival >= kept) break;
      path.throughput *= 1 / kept;
    }
  }
  seen.rays = path.rays;
  return seen;
}

}  // namespace vrn_render
