/// A scene as the renderer uses it: plain records, with the units and the conventions resolved.
#ifndef VRN_RENDER_SCENE_READING_SCENE_DESCRIPTION_HPP
#define VRN_RENDER_SCENE_READING_SCENE_DESCRIPTION_HPP

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "geometry/projection.hpp"
#include "geometry/vector.hpp"
#include "shading/spectrum.hpp"

namespace vrn_render {

/// Kinds of rays, as bits. A shape or a light is visible to some of them.
enum RayKind : std::uint32_t {
  kCameraRay = 1,
  kReflectionRay = 2,
  kRefractionRay = 4,
  kTransmissionRay = 8,
  kDiffuseRay = 16,
  kShadowRay = 32
};
inline constexpr std::uint32_t kScatteredRays = kReflectionRay | kRefractionRay | kDiffuseRay;

/// How a texture is read outside of its bounds.
enum class Wrap : std::uint8_t { Clamp, Border, Repeat, Mirror };

/// The pixels of a texture, which stay in the scene's block.
struct TextureDescription {
  const unsigned char* bytes = nullptr;
  int width = 0, height = 0, depth = 1;
  int format = 0, layout = 0;
};

/// Where a parameter looks up a texture. A lookup maps the coordinates by the columns x, y and z.
struct TextureLookup {
  int texture = -1;  ///< an index in SceneDescription::textures; -1 for none
  Vec2 x{1, 0}, y{0, 1}, z{0, 0};
  Wrap u = Wrap::Repeat, v = Wrap::Repeat;
  std::array<float, 4> border{0, 0, 0, 1};
  int set = 0;  ///< an index in SceneDescription::coordinateSets
};

/// A colour: `value` times, if there is a texture, the texture times `scale` plus `offset`.
struct ColourParameter {
  Spectrum value{1.0F};
  Spectrum scale{1.0F}, offset{0.0F};
  TextureLookup lookup;
  bool isScaled = false;  ///< whether `scale` and `offset` have an effect
};

/// A number, as ColourParameter. It reads one channel of its texture.
struct NumberParameter {
  float value = 0;
  TextureLookup lookup;
  float scale = 1, offset = 0;
  int channel = 0;
};

struct MaterialDescription {
  ColourParameter reflectance;
  ColourParameter emission;  ///< radiance
  Spectrum indices;          ///< of refraction, for each band
  bool emits = false;
  bool emitsOnBothSides = false;
  NumberParameter roughness, metallic, transmission, opacity;
  float opacityCutoff = -1;  ///< below it a point is invisible, from it on opaque; -1 for none
  bool hasCoat = false;      ///< a smooth or rough dielectric layer on the diffuse ground
  float indexOfRefraction = 1.5F;
  bool isDispersive = false;
  TextureLookup normalMap;
  Vec3 normalScale{1, 1, 1}, normalOffset{0, 0, 0};
};

/// A mesh whose bytes stay in the scene's block: 3 indices a triangle, 9 floats a vertex.
struct MeshDescription {
  const std::uint32_t* indices = nullptr;
  const float* vertices = nullptr;
  const float* coordinates =
      nullptr;  ///< 2 floats for each vertex and set, one set after the other
  std::uint32_t triangles = 0, vertexCount = 0, sets = 1;
  /// Own copies, for meshes with indices that must not be followed.
  std::shared_ptr<std::vector<std::uint32_t>> ownIndices;
  bool isUsable() const { return triangles != 0; }
};

enum class Form : std::uint8_t { Mesh, Rectangle, Disk, Sphere, Cylinder, Cube };
enum class Culling : std::uint8_t { None, Front, Back };

/// The places of an object while the shutter may be open: at equal steps from `start` to `end`. One
/// step is an object that does not move.
struct Motion {
  std::vector<Transform> steps = std::vector<Transform>(1);
  float start = 0, end = 1;
  bool moves() const { return steps.size() > 1; }
};

/// What is laid over the surface of shapes, by a projection.
struct DecalDescription {
  Transform place;  ///< from the space of the projection to the world; it has an inverse
  Transform toLocal;
  Projection projection = Projection::Planar;
  bool fromOutside = true, fromInside = false;  ///< on which sides of surfaces it falls
  Vec3 low, high;  ///< the clipping box, in the space of the projection
  int frontMaterial = 0, backMaterial = 0;
};

/// A decal on a shape. On the front it is seen from there, with its front material; likewise on the
/// back.
struct DecalUse {
  int decal;
  bool isFront;
};

struct ShapeDescription {
  std::uint32_t object = 0;  ///< the index in the scene
  std::string tag;
  Form form = Form::Mesh;
  int mesh = -1;
  int material = 0;
  int lightGroup = -1;  ///< -1: all lights
  Motion motion;
  std::uint32_t visibleTo = ~0U;
  bool castsIndirect = true, castsCaustics = true;
  bool receivesShadow = true, receivesIndirect = true, receivesCaustics = true;
  bool isMatte = false;
  Culling culling = Culling::None;
  bool cullsOnlyCamera = true;
  std::uint32_t cutBy = 0;                   ///< a bit for each cut plane
  std::vector<DecalUse> decals;              ///< a later one covers an earlier one
  Projection projection = Projection::Keep;  ///< of the texture coordinates
  Transform toProjection;                    ///< from the space of the shape
  float samplingMultiplier = 1;
};

enum class LightKind : std::uint8_t {
  Rectangle,
  Disk,
  Sphere,
  Point,
  Spot,
  Directional,
  Environment
};

struct LightDescription {
  /// Radiance of a surface and of the environment, intensity of a point, irradiance of a direction.
  ColourParameter emission;
  std::uint32_t object = 0;
  std::string tag;
  LightKind kind = LightKind::Rectangle;
  Transform place;
  float cosInner = 1, cosOuter = 0;  ///< the cone of a spot light
  std::uint32_t visibleTo = ~0U;
  bool castsShadow = true, castsCaustics = true;
  float samplingMultiplier = 1;
};

/// What lights a shape. Indices of lights and of shapes.
struct LightGroupDescription {
  std::vector<int> lights, shapes;
};

struct CameraDescription {
  Spectrum background;
  Motion motion;
  float focalLength = 0.035F, filmWidth = 0.036F, filmHeight = 0.024F;  ///< metres
  float lensRadius = 0, focusDistance = 1;                              ///< metres
  bool isOrthographic = false;
  float nearDistance = 0;
  float shutterOpen = 0, shutterClose = 0;
  bool hasBackground = false;
  bool hasBackplate = false;
  int backplate = -1;
  TextureLookup backplateLookup;
  float backplateBrightness = 1;
  enum class Fit : std::uint8_t { Size, Width, Height, Manual } backplateFit = Fit::Size;
  Vec2 backplateMin{0, 0}, backplateMax{1, 1};
  bool backplateInReflection = true, backplateInRefraction = false;
};

struct CutPlane {
  Vec3 origin, normal;
};

enum class Wavelengths : std::uint8_t { All, One };

struct TaskDescription {
  int camera = 0;
  Vec2 regionOrigin{0, 0}, regionSize{1, 1};  ///< of the image, from its bottom left corner
  int maxBounces = 32;
  int rouletteStart = 2;
  bool hasFixedRoulette = false;
  float fixedRoulette = 0.1F;
  std::uint32_t seed = 0;
  float brightness = 1;
  float clampValue = std::numeric_limits<float>::infinity();
  bool clampsLuminance = true;
  bool hasTransparentBackground = false;
  bool hasGaussFilter = false;
  float gaussAlpha = 1.7F, gaussRadius = 1.5F;
  Wavelengths wavelengths = Wavelengths::All;
  int band = 0;  ///< for one wavelength
  bool cutsOnlyCamera = false;
};

struct SceneDescription {
  std::vector<TextureDescription> textures;
  std::vector<MaterialDescription> materials;
  std::vector<MeshDescription> meshes;
  std::vector<DecalDescription> decals;
  std::vector<ShapeDescription> shapes;
  std::vector<LightDescription> lights;
  std::vector<LightGroupDescription> lightGroups;
  CameraDescription camera;
  TaskDescription task;
  std::vector<CutPlane> cutPlanes;
  std::vector<int> coordinateSets;  ///< the sets of the meshes' coordinates that lookups use
  float rayEpsilon = 1e-4F;         ///< metres
  bool isRobust = false;
  std::array<unsigned char, 16> id{};
};

}  // namespace vrn_render

#endif
