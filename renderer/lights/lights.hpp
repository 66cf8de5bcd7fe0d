/// The light of a scene: which lights and shapes emit, how to sample them, and what they emit.
#ifndef VRN_RENDER_LIGHTS_LIGHTS_HPP
#define VRN_RENDER_LIGHTS_LIGHTS_HPP

#include <optional>
#include <vector>

#include "geometry/scene_geometry.hpp"
#include "lights/distribution.hpp"
#include "scene_reading/scene_description.hpp"

namespace vrn_render {

/// A way for light to a point.
struct LightSample {
  Spectrum scratch{Spectrum::Unset()};
  Vec3 direction;
  float distance = 0;  ///< infinite for light from everywhere
  /// The radiance is `scale` times `radiance`, which lasts as long as the lights, or is `scratch`.
  const Spectrum* radiance = &scratch;
  float scale = 1;
  /// The probability density per solid angle, with the probability of the emitter. For a light
  /// without an extent, the probability alone.
  float density = 0;
  bool isSingular = false;
  /// Whether rays that scatter on surfaces may find the emitter, too.
  bool isFound = true;
  bool castsShadow = true;
  std::uint32_t visibleTo = ~0U;  ///< the kinds of rays that see the emitter

  LightSample() = default;
  LightSample(const LightSample&) = delete;
  LightSample& operator=(const LightSample&) = delete;
};

/// Threads: after construction, any number of threads may use it at the same time.
class Lights {
 public:
  /// The arguments must outlive this object.
  Lights(const SceneDescription& scene, const SceneGeometry& geometry);

  bool empty() const { return emitters_.empty(); }

  /// Samples a way for light to a point of a shape. `choice` selects the emitter. Returns false if
  /// no light comes from the sampled place.
  bool sample(std::uint32_t shape, Vec3 point, float time, float choice, Vec2 u,
              LightSample& out) const;
  /// Returns whether sample() looks at its `choice` for a shape.
  bool hasChoice(std::uint32_t shape) const;
  /// Returns whether sample() looks at its `u` for some shape: not if all lights are points or far
  /// away.
  bool hasExtent() const { return hasExtent_; }
  /// Returns whether rays that scatter on surfaces may find light.
  bool canBeFound() const { return canBeFound_; }

  // The results of these are constant, or `scratch`.
  /// The radiance of a light against the direction of a ray that passes its lit side.
  const Spectrum& radianceOf(std::uint32_t light, Spectrum& scratch) const;
  /// The radiance of a material at a point, to the side that `view` leads to.
  const Spectrum& radianceOf(const MaterialDescription& material, const SurfacePoint& point,
                             Vec3 view, Spectrum& scratch) const;
  /// The radiance of an environment from a direction.
  const Spectrum& environment(std::uint32_t light, Vec3 direction, Spectrum& scratch) const;
  /// The lights that surround the scene, as indices of lights.
  const std::vector<std::uint32_t>& environments() const { return environments_; }

  /// Return the density with which sample() chooses a place that a ray from `origin` met; 0 if it
  /// never does. `shape` is the shape that the ray comes from.
  float densityOfLight(std::uint32_t shape, std::uint32_t light, const Ray& ray,
                       float distance) const;
  float densityOfShape(std::uint32_t shape, const Ray& ray, const Hit& hit,
                       const SurfacePoint& point) const;
  float densityOfEnvironment(std::uint32_t shape, std::uint32_t light, Vec3 direction) const;

  /// Returns whether the light or shape shines on a shape, by the shape's light group.
  bool shinesOn(std::uint32_t shape, std::uint32_t emitterLight, bool isLight) const;
  /// Returns whether sample() chooses it for a shape, and rays that scatter leave it out.
  bool isOnlySampled(std::uint32_t light) const { return onlySampled_[light]; }

 private:
  struct Emitter {
    bool isLight;
    std::uint32_t index;  // of the light or the shape
    float power;          // the weight of the choice
    Distribution triangles;
  };
  // An image of an environment in cells of equal angles.
  struct Panorama {
    static constexpr int kColumns = 256;
    static constexpr int kRows = 128;
    Distribution rows;
    std::vector<Distribution> columns;
  };
  struct Set {
    std::vector<std::uint32_t> emitters;  // ascending
    Distribution choice;
  };

  void addLight(std::uint32_t index);
  void addShape(std::uint32_t index);
  Set makeSet(const std::vector<std::uint32_t>& emitters) const;
  const Set& setOf(std::uint32_t shape) const;
  float probability(std::uint32_t shape, std::uint32_t emitter) const;
  static bool contains(const std::vector<std::uint32_t>& sorted, std::uint32_t index);
  bool sampleLight(std::uint32_t light, Vec3 point, Vec2 u, LightSample& out) const;
  bool sampleShape(const Emitter& emitter, Vec3 point, float time, float choice, Vec2 u,
                   LightSample& out) const;
  float surfaceDensity(std::uint32_t light, Vec3 origin, Vec3 direction, float distance) const;
  float panoramaDensity(std::uint32_t light, Vec3 direction) const;
  Vec3 toEnvironment(std::uint32_t light, Vec3 direction) const;

  const SceneDescription& scene_;
  const SceneGeometry& geometry_;
  std::vector<Emitter> emitters_;
  std::vector<std::uint32_t> emitterOfLight_, emitterOfShape_;  // ~0 for none
  std::vector<std::uint32_t> environments_;
  std::vector<Panorama> panoramas_;  // by light; empty for the others
  std::vector<bool> onlySampled_;
  bool canBeFound_ = false, hasExtent_ = false;
  std::vector<Set> sets_;  // the first has all emitters, the others are those of the light groups
  std::vector<std::vector<std::uint32_t>> lightsOfGroup_, shapesOfGroup_;  // ascending
  std::vector<Transform> places_;  // of the surfaces of lights
  std::vector<Transform> inverses_;
  float radius_ = 1;  // of the scene
};

}  // namespace vrn_render

#endif
