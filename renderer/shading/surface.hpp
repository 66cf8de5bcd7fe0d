/// How a point of a surface scatters light.
#ifndef VRN_RENDER_SHADING_SURFACE_HPP
#define VRN_RENDER_SHADING_SURFACE_HPP

#include <memory>
#include <vector>

#include "scene_reading/scene_description.hpp"
#include "shading/microfacets.hpp"
#include "shading/texture.hpp"

namespace vrn_render {

/// What of a material is computed once.
struct MaterialTables {
  std::shared_ptr<const AlbedoTable> coat, outside, inside, mirror;
  float ground = 0;  ///< the mean reflectance, if no texture decides it
  Rgb colour;        ///< for the pass "albedo", if no texture decides it
  bool usesCoordinates = false;
  bool isDiffuse = false;  ///< whether there is the diffuse ground alone
};
std::vector<MaterialTables> makeMaterialTables(const SceneDescription& scene);

/// A direction in which light goes on.
struct Scattered {
  Vec3 direction;          ///< in the world
  Scattering weight;       ///< the scattered part times the cosine, over the probability density
  float density = 0;       ///< per solid angle; 0 for a mirror or a smooth boundary
  std::uint32_t kind = 0;  ///< a RayKind; 0 if the light ends here
  bool isSingular = false;
  int band = -1;  ///< the only band that goes on, after a boundary that splits colours
};

/// The material at a point, seen from one side.
///
/// A surface is a mix of a metal, by `metallic`, and of the rest. The rest is a mix of a boundary
/// that light goes through, by `transmission`, and of a diffuse ground, which may have a coat. Each
/// of them reflects all white light if its reflectance is 1.
class Surface {
 public:
  /// `normal` is the normal for shading and `geometric` that of the geometry, both of length 1 and
  /// on the front; `view` leads away from the point.
  Surface(const SceneDescription& scene, const MaterialDescription& material,
          const MaterialTables& tables, const TextureCoordinates& coordinates, Vec3 normal,
          Vec3 geometric, Vec3 view);

  /// Evaluates the lobes whose rays are of these kinds: the scattered part times the cosine goes to
  /// `value`. Returns the probability density with which sample() chooses the direction.
  float evaluate(Vec3 direction, std::uint32_t kinds, Scattering& value) const;

  /// Samples a direction. `choice` selects a lobe. `band` is the only band that light still has, or
  /// -1 for all.
  Scattered sample(float choice, Vec2 u, int band = -1) const;
  /// Returns whether sample() looks at its `choice`.
  bool hasChoice() const { return shares_[kDiffuse] != 1; }

  /// The normal on the side of the view.
  Vec3 normal() const { return frame_.normal; }
  Vec3 geometricNormal() const { return geometric_; }
  const Spectrum& reflectance() const { return *reflectance_; }
  /// The colour for the pass "albedo".
  Rgb colour() const;
  bool isSingular() const { return isSmooth_ && shares_[kDiffuse] <= 0; }

 private:
  enum Lobe : std::size_t { kDiffuse, kCoat, kMetal, kBoundary, kLobes };

  Scattered sampleBoundary(Vec3 view, float choice, Vec2 u, int band) const;
  float evaluateLobes(Vec3 view, Vec3 direction, std::uint32_t kinds, Scattering& value) const;

  Spectrum scratch_{Spectrum::Unset()};
  const MaterialDescription& material_;
  const MaterialTables& tables_;
  const Spectrum* reflectance_ = nullptr;
  Frame frame_;
  Vec3 geometric_, view_;
  float alpha_ = 0, eta_ = 1;
  std::array<float, kLobes> weights_{};  ///< of the mix
  std::array<float, kLobes> shares_{};   ///< the probabilities of the lobes
  bool isInside_;
  bool isSmooth_ = false;
};

}  // namespace vrn_render

#endif
