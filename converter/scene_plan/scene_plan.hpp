// A scene between a file and vornath_data: what the readers find, in the terms of the scene that is
// written. Lengths are in metres.
#ifndef VRN_CONVERT_SCENE_PLAN_SCENE_PLAN_HPP
#define VRN_CONVERT_SCENE_PLAN_SCENE_PLAN_HPP

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "scene_plan/transform.hpp"
#include "vornath_data/asset_records.h"

namespace vrn_convert {

using Colour = std::array<float, 3>;  ///< linear RGB

/// Bytes from malloc(), so that a scene takes them over without a copy.
struct FreeDeleter {
  void operator()(void* bytes) const { std::free(bytes); }
};
using Bytes = std::unique_ptr<unsigned char, FreeDeleter>;

/// A mesh as a scene stores it.
struct MeshPlan {
  std::string name;
  vrdmMeshDesc desc{};
  Bytes bytes;
  std::size_t size = 0;
  Box box;  ///< of the vertices
};

/// An image of a file, still encoded, or pixels of 4 bytes (R, G, B, A) if `width` is not 0. Its
/// bytes belong to the plan's owner.
struct ImagePlan {
  std::string name;
  const unsigned char* data = nullptr;  ///< null for an image that was not found
  std::size_t size = 0;
  int width = 0, height = 0;
};

/// What the pixels of an image mean.
enum class PixelUse : std::uint8_t {
  Colours,  ///< sRGB, except for images of floats
  Data,     ///< numbers
  Normal    ///< a normal map
};

enum class Wrap : std::uint8_t { Clamp, Repeat, Mirror };

/// An image in a material.
struct TexturePlan {
  int image = -1;
  PixelUse use = PixelUse::Colours;
  int channel = 0;  ///< of R, G, B, A, for a number
  Wrap u = Wrap::Repeat, v = Wrap::Repeat;
  int set = 0;  ///< of texture coordinates
  /// The map of texture coordinates: the images of u and v, and of the origin.
  std::array<float, 6> map{1, 0, 0, 1, 0, 0};
  bool isMapped = false;
};

/// A material. Fields without a value are left out of the scene.
struct MaterialPlan {
  std::string name;
  Colour baseColour{1, 1, 1};
  std::optional<TexturePlan> baseTexture;
  std::optional<float> roughness, metallic;
  std::optional<TexturePlan> roughnessTexture, metallicTexture;
  Colour emission{0, 0, 0};
  float emissionStrength = 1;
  std::optional<TexturePlan> emissionTexture;
  std::optional<TexturePlan> normalTexture;
  float normalScale = 1;
  std::optional<float> transmission, indexOfRefraction;
  float opacity = 1;
  std::optional<TexturePlan> opacityTexture;
  std::optional<float> opacityCutoff;
  bool isDoubleSided = false;
  bool hidesBack = false;  ///< the camera does not see back faces

  bool emits() const {
    return emissionStrength > 0 && (emission[0] > 0 || emission[1] > 0 || emission[2] > 0);
  }
};

struct GroupPlan {
  std::string name;
  Transform place;
};

struct ShapePlan {
  std::string name;
  int mesh = -1;
  int material = -1;
  int group = -1;  ///< -1: the mesh is in the world
};

enum class LightKind : std::uint8_t { Point, Spot, Directional, Rectangle, Environment };

struct LightPlan {
  std::string name;
  LightKind kind = LightKind::Point;
  /// Candela for a point and a spot, lux for a direction, nits for a rectangle and an environment.
  Colour emission{1, 1, 1};
  float innerConeAngle = 0, outerConeAngle = 0.7853981634F;  ///< radians from the axis
  Transform place;  ///< the light shines along +z; a rectangle has the size of the axes
  bool isSeenByCamera = true;
};

struct CameraPlan {
  std::string name;
  Transform place;  ///< without a scale. The camera looks along -z, with y up
  bool isOrthographic = false;
  float filmWidth = 0.036F, filmHeight = 0.024F;
  float focalLength = 0.035F;
  float nearDistance = 0;
};

struct ScenePlan {
  std::vector<ImagePlan> images;
  std::vector<MaterialPlan> materials;
  std::vector<MeshPlan> meshes;
  std::vector<GroupPlan> groups;
  std::vector<ShapePlan> shapes;
  std::vector<LightPlan> lights;
  std::vector<CameraPlan> cameras;
  std::shared_ptr<const void> owner;  ///< of the bytes of images

  bool hasLight() const {
    for (const LightPlan& light : lights) {
      if (light.emission[0] > 0 || light.emission[1] > 0 || light.emission[2] > 0) return true;
    }
    for (const ShapePlan& shape : shapes) {
      if (materials[static_cast<std::size_t>(shape.material)].emits()) return true;
    }
    return false;
  }
  /// The box of all shapes in the world.
  Box box() const {
    Box all;
    for (const ShapePlan& shape : shapes) {
      all.add(meshes[static_cast<std::size_t>(shape.mesh)].box,
              shape.group < 0 ? Transform{} : groups[static_cast<std::size_t>(shape.group)].place);
    }
    return all;
  }
};

}  // namespace vrn_convert

#endif
