/// The rough surfaces of the materials: the distribution of Trowbridge and Reitz (GGX).
#ifndef VRN_RENDER_SHADING_MICROFACETS_HPP
#define VRN_RENDER_SHADING_MICROFACETS_HPP

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "geometry/vector.hpp"

namespace vrn_render {

/// Below this width a surface is a perfect mirror.
inline constexpr float kSmoothAlpha = 2e-3F;

/// Returns the fraction that a smooth boundary reflects. `cosine` is that of the incoming side,
/// positive; `eta` is the index of refraction of the other side over that of this side.
float fresnelDielectric(float cosine, float eta);

/// The distribution of normals. Directions are in the frame of the surface, normals have z > 0.
struct Microfacets {
  float alpha;

  float density(Vec3 normal) const;
  float maskedFraction(Vec3 direction) const;  ///< the function Lambda of Smith
  float shadowing(Vec3 a, Vec3 b) const;       ///< of two directions on one side
  float transmissionShadowing(Vec3 a, Vec3 b) const;
  float masking(Vec3 a) const { return 1 / (1 + maskedFraction(a)); }
  /// Samples a normal that is visible from `from`, which has z > 0.
  Vec3 sampleVisible(Vec3 from, Vec2 u) const;
  float visibleDensity(Vec3 from, Vec3 normal) const;
};

/// How much of white light a rough surface reflects or lets through at once, by the cosine of the
/// view and the width of the distribution. What is missing to 1 is light that would be scattered
/// more than once; the materials add it, so that nothing gets lost.
class AlbedoTable {
 public:
  enum class Kind : std::uint8_t {
    Mirror,   ///< a surface that reflects everything
    Coat,     ///< the reflection of a dielectric boundary, seen from outside
    Boundary  ///< reflection and transmission of a dielectric boundary
  };
  /// What of a table is needed. `eta` is as for fresnelDielectric(); 1 for a mirror.
  struct Request {
    Kind kind;
    float eta;
    float narrowest, widest;  ///< the widths of the distribution
  };
  /// Returns a table for each request. Only the rows that are asked for are computed, on all
  /// processors, and kept as long as the program runs.
  static std::vector<std::shared_ptr<const AlbedoTable>> of(const std::vector<Request>& requests);

  float at(float cosine, float alpha) const;
  /// The mean over all directions, weighted by their cosines.
  float mean(float alpha) const;

 private:
  static constexpr int kCosines = 64;
  static constexpr int kWidths = 32;

  static int rowOf(float alpha);
  void fillRow(Kind kind, float eta, int width);

  std::array<std::array<float, kCosines>, kWidths> table_{};
  std::array<float, kWidths> means_{};
  std::uint32_t rows_ = 0;  // a bit for each that is filled
};

}  // namespace vrn_render

#endif
