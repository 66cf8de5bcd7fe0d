/// Lookups in textures. Pixels stay in the scene's bytes, in their own format.
#ifndef VRN_RENDER_SHADING_TEXTURE_HPP
#define VRN_RENDER_SHADING_TEXTURE_HPP

#include <array>
#include <cstdint>
#include <string>

#include "scene_reading/scene_description.hpp"

namespace vrn_render {

using Texel = std::array<float, 4>;

/// Returns why a texture cannot be read from `size` bytes; empty if it can.
std::string textureProblem(const TextureDescription& texture, std::uint64_t size);

/// Returns one pixel: linear channels, luminances in the first three. `x`, `y` and `slice` must be
/// inside of the texture. A texture without bytes is neutral grey.
Texel texelAt(const TextureDescription& texture, int x, int y, int slice);

/// Looks up a flat texture, with linear interpolation. The first row of pixels is at v = 0.
Texel sampleFlat(const TextureDescription& texture, const TextureLookup& lookup, Vec2 uv);

/// Looks up a texture of directions, latitude-longitude or a cube map: +y is up, and the middle of
/// a latitude-longitude image is at -z. A flat texture is taken as latitude-longitude.
Texel sampleSphere(const TextureDescription& texture, Vec3 direction);

/// Returns the direction of a point of a latitude-longitude image, and the point of a direction.
Vec3 latLongDirection(Vec2 uv, bool isDirectX);
Vec2 latLongPoint(Vec3 direction, bool isDirectX);

/// True for the layouts whose images go round the other way.
bool isDirectX(const TextureDescription& texture);
bool isCube(const TextureDescription& texture);
/// True if each slice of the texture is the amplitude at one wavelength.
bool isSpectral(const TextureDescription& texture);

/// A surface's point of texture coordinates, for each of SceneDescription::coordinateSets.
struct TextureCoordinates {
  static constexpr int kMostSets = 8;
  std::array<Vec2, kMostSets> sets{};
};

/// Evaluates a colour parameter. A reflectance stays within 0 to 1. `scratch` holds the result if
/// there is a texture.
const Spectrum& evaluateTexture(const SceneDescription& scene, const ColourParameter& parameter,
                                const TextureCoordinates& at, bool isReflectance,
                                Spectrum& scratch);
float evaluateTexture(const SceneDescription& scene, const NumberParameter& parameter,
                      const TextureCoordinates& at);
inline const Spectrum& evaluate(const SceneDescription& scene, const ColourParameter& parameter,
                                const TextureCoordinates& at, bool isReflectance,
                                Spectrum& scratch) {
  if (parameter.lookup.texture < 0) return parameter.value;
  return evaluateTexture(scene, parameter, at, isReflectance, scratch);
}
inline float evaluate(const SceneDescription& scene, const NumberParameter& parameter,
                      const TextureCoordinates& at) {
  return parameter.lookup.texture < 0 ? parameter.value : evaluateTexture(scene, parameter, at);
}

}  // namespace vrn_render

#endif
