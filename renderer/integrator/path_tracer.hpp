/// Follows light backwards from the camera.
#ifndef VRN_RENDER_INTEGRATOR_PATH_TRACER_HPP
#define VRN_RENDER_INTEGRATOR_PATH_TRACER_HPP

#include <atomic>
#include <cstdint>
#include <vector>

#include "geometry/scene_geometry.hpp"
#include "integrator/sampler.hpp"
#include "lights/lights.hpp"
#include "scene_reading/scene_description.hpp"
#include "shading/surface.hpp"

namespace vrn_render {

/// What one sample of a pixel sees.
struct Seen {
  Spectrum radiance;
  float alpha = 0;  ///< 1 if there is a shape
  bool isHit = false;
  float depth = 0;  ///< metres from the camera
  Vec3 normal;
  Rgb albedo;
  std::uint32_t object = 0;  ///< the index of the shape in the scene, plus 1; 0 for none
  std::uint32_t rays = 0;    ///< how many were traced
};

/// Integrates the light that reaches points of the film. Each band of the grid is carried along
/// each path, so that colours have no noise of their own.
/// Threads: immutable.
class PathTracer {
 public:
  /// The description must outlive this object. `filmHeight` replaces that of the camera, so that
  /// pixels are square.
  PathTracer(const SceneDescription& scene, float filmHeight);

  /// Traces one path from a point of the film: (0, 0) is the bottom left corner.
  Seen trace(Vec2 film, const Sampler& sampler) const;

  /// Casts a ray of the camera.
  Ray cameraRay(Vec2 film, const Sampler& sampler) const;

  const SceneGeometry& geometry() const { return geometry_; }
  const Lights& lights() const { return lights_; }

 private:
  struct Path;

  Transform cameraAt(float time) const;
  void addPassedLights(Path& path, const PassedLights& lights, float farthest) const;
  void addSurroundings(Path& path) const;
  Spectrum background(const Path& path) const;
  void addDirect(Path& path, const SurfacePoint& point, const Surface& surface, std::uint32_t shape,
                 const Sampler& sampler) const;
  float transparencyOf(const Ray& shadow, Path& path) const;
  float opacityAt(std::size_t material, const TextureCoordinates& at) const;
  bool reachesDecal(const DecalUse& use, const SurfacePoint& point, Vec3 view,
                    SurfacePoint& on) const;
  bool chooseDecal(const ShapeDescription& shape, SurfacePoint& point, Vec3 view, float choice,
                   std::size_t& material) const;
  Vec3 mappedNormal(const MaterialDescription& material, const SurfacePoint& point) const;
  Vec3 leave(const SurfacePoint& point, Vec3 direction) const;

  const SceneDescription& scene_;
  SceneGeometry geometry_;
  Lights lights_;
  std::vector<MaterialTables> tables_;
  std::vector<bool> isTransparent_;  // by material
  bool hasTransparency_ = false;
  float filmHeight_;
};

}  // namespace vrn_render

#endif
