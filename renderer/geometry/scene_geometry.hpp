/// The shapes and the surfaces of lights of a scene, and what rays meet of them.
#ifndef VRN_RENDER_GEOMETRY_SCENE_GEOMETRY_HPP
#define VRN_RENDER_GEOMETRY_SCENE_GEOMETRY_HPP

#include <embree3/rtcore.h>

#include <array>
#include <limits>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "scene_reading/scene_description.hpp"
#include "shading/texture.hpp"

namespace vrn_render {

struct Ray {
  Vec3 origin, direction;  ///< the direction has length 1
  float near = 0, far = std::numeric_limits<float>::infinity();
  float time = 0;
  RayKind kind = kCameraRay;
};

/// What a ray meets first.
struct Hit {
  static constexpr std::uint32_t kNone = ~0U;
  std::uint32_t shape = kNone;
  std::uint32_t primitive = 0;
  float distance = 0;
  float u = 0, v = 0;
  Vec3 localNormal;
  bool exists() const { return shape != kNone; }
};

/// The lit sides of lights that a ray passes on its way, which do not stop it.
class PassedLights {
 public:
  struct Passed {
    std::uint32_t light;
    float distance;
  };
  void clear() {
    count_ = 0;
    many_.clear();
  }
  /// Notes a light once, at its nearest distance.
  void add(std::uint32_t light, float distance);
  const Passed* begin() const { return many_.empty() ? few_.data() : many_.data(); }
  const Passed* end() const { return begin() + count_; }

 private:
  static constexpr std::size_t kFew = 32;
  std::array<Passed, kFew> few_;
  std::vector<Passed> many_;  // all of them, once there is no room in few_
  std::size_t count_ = 0;
};

/// A point of a surface. Normals have length 1 and lie on the front of the shape.
struct SurfacePoint {
  Vec3 position;
  Vec3 geometricNormal, normal;
  Vec3 tangent;  ///< the direction in which u increases; zero if the mesh has none
  TextureCoordinates coordinates;
};

/// The geometry of a scene description, which must outlive it. Meshes are not copied.
/// Threads: after construction, any number of threads may use it at the same time.
class SceneGeometry {
 public:
  /// Errors: throws std::runtime_error with Embree's words, and std::bad_alloc.
  explicit SceneGeometry(const SceneDescription& scene);
  ~SceneGeometry();
  SceneGeometry(const SceneGeometry&) = delete;
  SceneGeometry& operator=(const SceneGeometry&) = delete;

  /// Finds what a ray meets. Lights that it passes before go to `lights`.
  Hit intersect(const Ray& ray, PassedLights& lights) const;
  /// Returns whether something stops a ray between its ends.
  bool isOccluded(const Ray& ray) const;

  /// Returns the point that a ray met. The tangent and the texture coordinates are only there if
  /// they are asked for.
  SurfacePoint pointAt(const Ray& ray, const Hit& hit, bool wantsCoordinates = true) const;
  /// Returns where a shape is at a time.
  Transform placeAt(std::uint32_t shape, float time) const;
  /// Returns the corners of a triangle of a mesh, in the mesh's own space.
  static std::array<Vec3, 3> corners(const MeshDescription& mesh, std::uint32_t triangle);
  /// Returns the mesh of a shape: its own, or that of its form; null for a curved form. placeAt()
  /// maps it to the world.
  const MeshDescription* meshOf(std::uint32_t shape) const;

  /// Returns the place of the surface of a light, which has an inverse.
  static Transform surfacePlace(const LightDescription& light);

  Vec3 low() const { return low_; }
  Vec3 high() const { return high_; }

 private:
  struct Attached {
    std::uint32_t shape = Hit::kNone;  ///< or a light
    std::uint32_t light = Hit::kNone;
  };

  void addProjection(std::uint32_t shape, Vec3 local, Vec3 normal, SurfacePoint& point) const;
  void attachShape(std::uint32_t index);
  void attachLight(std::uint32_t index);
  const MeshDescription& flatten(std::uint32_t shape, const MeshDescription& mesh);
  RTCScene partScene(const MeshDescription* mesh, Form form, bool isFiltered);
  RTCGeometry makeMesh(const MeshDescription& mesh) const;
  RTCGeometry makeForm(Form form) const;
  RTCGeometry makeInstance(RTCScene part, const Motion& motion) const;
  void attach(RTCGeometry geometry, std::uint32_t mask, Attached record);
  void setFlags(RTCScene scene, std::uint64_t triangles) const;
  void setFilter(RTCGeometry geometry) const;
  bool needsFilter(const ShapeDescription& shape) const;
  void check() const;

  static void filter(const RTCFilterFunctionNArguments* arguments);

  const SceneDescription& scene_;
  RTCDevice device_ = nullptr;
  RTCScene top_ = nullptr;
  std::uint64_t direct_ = 0;        // triangles that are in top_ and not in an instance
  std::vector<Attached> attached_;  // by the geometry id in top_
  // The scenes that instances share, by mesh or form, and by whether they have a filter.
  std::map<std::pair<const void*, bool>, RTCScene> parts_;
  // Copies in the world, of meshes that a transformation makes flat, so that rays cannot enter
  // their space.
  struct Flattened {
    std::vector<float> vertices;
    MeshDescription mesh;
  };
  std::vector<std::unique_ptr<Flattened>> flattened_;  // by shape; null for the others
  std::vector<char> isInWorld_;  // by shape: whether its mesh has the coordinates of the world
  Vec3 low_, high_;
};

}  // namespace vrn_render

#endif
