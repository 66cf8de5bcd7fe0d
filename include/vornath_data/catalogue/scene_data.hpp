/// The settings of the scene as a whole.
#ifndef VORNATH_DATA_CATALOGUE_SCENE_DATA_HPP
#define VORNATH_DATA_CATALOGUE_SCENE_DATA_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "vornath_data/catalogue/class_info.hpp"
#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/record_types.hpp"

namespace vrnt::data {

inline constexpr char kSceneCutPlanes[] =
    R"s({ { float3 @default=float3(0.0, 0.0, 0.0) @desc="A point in world space that lies on the plane" origin; )s"
    R"s(float3 @default=float3(0.0, 0.0, 1.0) @desc="The normal of the plane in world space" normal; )s"
    R"s(bool @desc="Cut plane is enabled" enabled; )s"
    R"s(}[6] @desc="Fixed amount of available cut planes to use in a scene" @name="Planes" planes; )s"
    R"s(} @desc="Definitions of planes which may cut shape geometry in the scene" @name="Cut planes")s";
struct CutPlanesData {
  struct Plane {
    Float3 origin;
    Float3 normal{0.0F, 0.0F, 1.0F};
    Bool32 enabled = kFalse;
    Padding32 padding0[3] = {};
  } planes[6];
};
static_assert(sizeof(CutPlanesData) == 288,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kSceneRasterizer[] =
    R"s({ int @default=128 @desc="Resolution of the voxel grid" @max=1024 @min=2 @name="Voxel grid resolution" voxel_grid_resolution; )s"
    R"s(bool @desc="Compile shaders with currently instanced lights only" @name="Compile on demand" compile_on_demand; )s"
    R"s(} @desc="Rasterizer-specific settings" @hide @name="Rasterizer" @rasterizer)s";
struct RasterizerData {
  std::int32_t voxel_grid_resolution = 128;
  Bool32 compile_on_demand = kFalse;
};
static_assert(sizeof(RasterizerData) == 8,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kSceneRaytracer[] =
    R"s({ float @default=0.0001 @desc="Position offset for secondary rays to prevent self-intersection." @logscale @min=0.0 @name="Ray epsilon" @si_unit="m" @soft_max=0.1 @soft_min=1.e-06 ray_epsilon; )s"
    R"s(enum { DYNAMIC; STATIC; AUTOMATIC; ROBUST; } @default=AUTOMATIC : enum { DYNAMIC; STATIC; AUTOMATIC; ROBUST; } @desc="Type of bounding volume hierarchy to calculate" @name="BVH mode" bvh_mode; )s"
    R"s(} @desc="Settings used when raytracing the scene" @name="Raytracer")s";
struct RaytracerData {
  float ray_epsilon = 0.0001F;
  EnumCode bvh_mode = 2;  // AUTOMATIC
};
static_assert(sizeof(RaytracerData) == 8,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kSceneGeneral[] =
    R"s({ bool @desc="Scales the ground plane automatically with scene bounds." @name="Infinite ground" infinite_ground; )s"
    R"s(float @default=0.0 @desc="The maximum edge length of mesh triangles when using displacement mapping. Lower values allow more detailed geometry at increased memory cost." @logscale @name="Subdivision edge length" @soft_max=0.1 @soft_min=0.001 subdivision_edge_length; )s"
    R"s(int @default=0 @desc="The maximum amount of memory which should be spend on subdividing geometry." @name="Subdivision memory limit" @soft_max=131072 @soft_min=1024 subdivision_memory_limit; )s"
    R"s(} @desc="Scene settings" @name="General")s";
struct GeneralData {
  Bool32 infinite_ground = kFalse;
  float subdivision_edge_length = 0.0F;
  std::int32_t subdivision_memory_limit = 0;
};
static_assert(sizeof(GeneralData) == 12,
              "its bytes go to scene files: another size is another file version");

/// The scene-wide groups, one after the other: the block of 320 bytes behind a scene file's header.
struct SceneData {
  using Groups = SceneData;

  CutPlanesData cutPlanes;
  RasterizerData rasterizer;
  RaytracerData raytracer;
  GeneralData general;
  Padding32 padding0 = 0;

  static constexpr ObjectClass kClass = ObjectClass::SceneData;
  static constexpr auto kGroups =
      std::tuple{Group{"Cut planes", kSceneCutPlanes, &SceneData::cutPlanes},
                 Group{"Rasterizer", kSceneRasterizer, &SceneData::rasterizer},
                 Group{"Raytracer", kSceneRaytracer, &SceneData::raytracer},
                 Group{"General", kSceneGeneral, &SceneData::general}};
};
static_assert(sizeof(SceneData) == 320 && std::is_trivially_copyable_v<SceneData>,
              "its bytes go to scene files: another size is another file version");
static_assert(offsetof(SceneData, cutPlanes) == 0 && offsetof(SceneData, rasterizer) == 288 &&
                  offsetof(SceneData, raytracer) == 296 && offsetof(SceneData, general) == 304,
              "scene files have the groups at these offsets: others are another file version");

/// The scene-wide groups are read as those of a class, but there is no name, no kind and no slot.
template <>
struct ClassInfo<SceneData> {
  static constexpr ObjectClass kClass = SceneData::kClass;
  static constexpr auto kGroups = SceneData::kGroups;
  static constexpr std::tuple<> kSlots{};
};

}  // namespace vrnt::data

#endif
