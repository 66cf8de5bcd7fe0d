/// Shapes: geometry with a material, placed in the scene.
#ifndef VORNATH_DATA_CATALOGUE_SHAPE_HPP
#define VORNATH_DATA_CATALOGUE_SHAPE_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "vornath_data/catalogue/decal.hpp"
#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/keyframe.hpp"
#include "vornath_data/catalogue/light.hpp"
#include "vornath_data/catalogue/material.hpp"
#include "vornath_data/catalogue/mesh.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/schema_text.hpp"
#include "vornath_data/catalogue/shared.hpp"
#include "vornath_data/catalogue/slot.hpp"
#include "vornath_data/catalogue/texture.hpp"
#include "vornath_data/catalogue/transformation_group.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

inline constexpr auto kShapeTransformation = vrnt::detail::joinText(
    R"s({ )s", kMatrix,
    R"s( matrix; )s"
    R"s(} @desc="The shape's position, rotation and size in the scene" @name="Transformation")s");

inline constexpr char kShapeGeneral[] =
    R"s({ enum { MESH; RECTANGLE; DISK; SPHERE; CYLINDER; CUBE; } @alias="geometric_representation" @default=MESH : enum { MESH; RECTANGLE; DISK; SPHERE; CYLINDER; CUBE; } @desc="Geometric representation that defines this shape." @name="Geometric representation" geometric_representation; )s"
    R"s(float @default=0.0 @desc="Rounded edge radius in meter. Must be greater equal 0. Set to 0 to disable. Default is 0." @min=0.0 @name="Edge Radius" @soft_max=1.0 edge_radius; )s"
    R"s(float @default=0.0 @desc="Timepoint of the first keyframe. If set to > 0 then the shape will appear at that time." @name="Time start" @soft_max=1.0 @soft_min=0.0 time_start; )s"
    R"s(float @default=1.0 @desc="Timepoint of the last keyframe. If set to < 1 then the shape will disappear at that time." @name="Time end" @soft_max=1.0 @soft_min=0.0 time_end; )s"
    R"s(float @default=0.0 @desc="The maximum edge length of mesh triangles when using displacement mapping. Lower values allow more detailed geometry at increased memory cost. The default edge length of 0 will inherit the scene edge length for this shape." @logscale @name="Subdivision edge length" @soft_max=0.1 @soft_min=0.001 subdivision_edge_length; )s"
    R"s(} @desc="General settings for a shape instance" @name="General")s";
struct ShapeGeneralData {
  EnumCode geometric_representation = 0;  // MESH
  float edge_radius = 0.0F;
  float time_start = 0.0F;
  float time_end = 1.0F;
  float subdivision_edge_length = 0.0F;
};
static_assert(sizeof(ShapeGeneralData) == 20,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kShapeAmbientOcclusion[] =
    R"s({ float @default=1.0 @desc="Multiplies the global t_max set in the render task by the given amount for this shape instance." @max=10000.0 @min=0.0 @name="t_max multiplier" @soft_max=100.0 tmax_multiplier; )s"
    R"s(bool @default=false @desc="If set the shape will appear as a diffuse object, regardless of transparency." @name="Transparent appears diffuse" transparent_appears_diffuse; )s"
    R"s(} @ambient_occlusion @desc="Local settings affecting how this shape instance is rendered into ambient occlusion targets" @hide @legacy_gi @name="Ambient occlusion" @wavefront)s";
struct ShapeAmbientOcclusionData {
  float tmax_multiplier = 1.0F;
  Bool32 transparent_appears_diffuse = kFalse;
};
static_assert(sizeof(ShapeAmbientOcclusionData) == 8,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kShapeCutPlanes[] =
    R"s({ bool @default=false @desc="Enables the rendering of cut plane caps for this shape" @name="Capped" capped; )s"
    R"s(bool[6] @default=[ true, true, true, true, true, true ] @desc="Shape instance is affected by cut planes." @name="Enabled" cut; )s"
    R"s(} @desc="Per-shape-instance settings for cut planes defined in the scene" @name="Cut planes")s";
struct ShapeCutPlanesData {
  Bool32 capped = kFalse;
  Bool32 cut[6] = {kTrue, kTrue, kTrue, kTrue, kTrue, kTrue};
};
static_assert(sizeof(ShapeCutPlanesData) == 28,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kShapeFaceCulling[] =
    R"s({ enum { DISABLED; FRONT; BACK; } @alias="cull_mode" @desc="Face culling mode" @name="Mode" mode; )s"
    R"s(bool @default=true @desc="Limits face culling to primary rays only and ignores culling for reflections and refractions." @name="Only primary rays" only_primary_rays; )s"
    R"s(} @desc="Affects whether individual faces of this shape instance's geometry are visible depending on view direction." @name="Face culling")s";
struct ShapeFaceCullingData {
  EnumCode mode = 0;  // DISABLED
  Bool32 only_primary_rays = kTrue;
};
static_assert(sizeof(ShapeFaceCullingData) == 8,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kShapeMatteObjects[] =
    R"s({ bool @default=false @desc="Shape instance represents a geometry that is already contained in the captured background." @name="Matte" matte; )s"
    R"s(bool @default=false @desc="Shape instance represents the scene's ground. Only one shape instance per scene may be flagged as the ground." @name="Ground" ground; )s"
    R"s(} @desc="Matte object settings for a shape instance" @identifier="matte_objects" @name="Matte objects")s";
struct ShapeMatteObjectsData {
  Bool32 matte = kFalse;
  Bool32 ground = kFalse;
};
static_assert(sizeof(ShapeMatteObjectsData) == 8,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kShapeNestedPriority[] =
    R"s({ int @default=0 @desc="Nested priority" @name="Priority" priority; )s"
    R"s(} @desc="Shapes of higher priority displace shapes with lower priority within an intersection volume." @identifier="nested_priorities" @name="Nested priority")s";
struct ShapeNestedPriorityData {
  std::int32_t priority = 0;
};
static_assert(sizeof(ShapeNestedPriorityData) == 4,
              "its bytes go to scene files: another size is another file version");

inline constexpr auto kShapeProceduralUVs = vrnt::detail::joinText(
    R"s({ )s", kProjectionModes, R"s( @alias="uv_mapping" @default=KEEP : )s", kProjectionModes,
    R"s( @desc="Procedural UV mapping" @name="Mode" mode; )s", kMatrix,
    R"s( uv_transformation; )s"
    R"s(} @desc="Parameters for procedural texture coordinate generation" @name="Procedural UVs")s");
struct ShapeProceduralUVsData {
  EnumCode mode = 0;  // KEEP
  Padding32 padding0[3] = {};
  Matrix uv_transformation;
};
static_assert(sizeof(ShapeProceduralUVsData) == 80,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kShapeRasterizer[] =
    R"s({ { float @default=1.0 @desc="Voxel cone ray epsilon" @min=0.0 @name="Epsilon" @soft_max=2.0 epsilon; )s"
    R"s(float @default=0.5 @desc="Voxel cone maximum ray distance" @min=0.0 @name="Maximum distance" @si_unit="m" @soft_max=1.0 max_distance; )s"
    R"s(} @desc="Settings for voxel-based ambient occlusion" @name="Voxel Ambient Occlusion" voxel_ao; )s"
    R"s(bool @default=false @desc="Enables more accurate reflection and refraction computation for this shape." @name="Accurate reflections" accurate_reflections; )s"
    R"s(} @desc="Rasterizer-specific settings" @hide @name="Rasterizer" @rasterizer)s";
struct ShapeRasterizerData {
  struct VoxelAo {
    float epsilon = 1.0F;
    float max_distance = 0.5F;
  } voxel_ao;
  Bool32 accurate_reflections = kFalse;
};
static_assert(sizeof(ShapeRasterizerData) == 12,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kShapeHemilux[] =
    R"s({ enum { DISABLED; ILLUMINATION; OCCLUSION; } @alias="hemilux_mode" @desc="Defines how a Hemilux texture is interpreted" @name="Hemilux mode" mode; )s"
    R"s({ int index; )s"
    R"s(} @alias="texture_ref" @desc="Hemilux light/shadow map" @name="Texture" texture; )s"
    R"s(bool @desc="Enables the tone mapping texture" @name="Enable tone mapping" enable_tone_mapping; )s"
    R"s({ int index; )s"
    R"s(} @alias="texture_ref" @desc="Reference to a float texture object which is applied as tone mapping to the Hemilux texture." @name="Tone mapping texture" tone_mapping_texture; )s"
    R"s(float @default=0.5 @desc="Modulates shadow border on glossy surfaces." @max=1.0 @min=0.0 @name="Shadow Split Value" split_value; )s"
    R"s(float @default=0.5 @desc="Modulates shadow contrast on glossy surfaces." @max=1.0 @min=0.0 @name="Shadow Split Strength" split_strength; )s"
    R"s(} @desc="Settings for Hemilux shadow/light map baking" @hide @name="Hemilux" @rasterizer @whitted)s";
struct ShapeHemiluxData {
  EnumCode mode = 0;  // DISABLED
  TextureRef texture;
  Bool32 enable_tone_mapping = kFalse;
  TextureRef tone_mapping_texture;
  float split_value = 0.5F;
  float split_strength = 0.5F;
};
static_assert(sizeof(ShapeHemiluxData) == 24,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kShapeSamplingProbability[] =
    R"s({ float @default=1.0 @desc="Multiplier for sampling probability" @min=0.0 @name="Multiplier" multiplier; )s"
    R"s(} @desc="Settings which affect the sampling of emissive shapes" @name="Sampling probability")s";
struct ShapeSamplingProbabilityData {
  float multiplier = 1.0F;
};
static_assert(sizeof(ShapeSamplingProbabilityData) == 4,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kShapeViewSpace[] =
    R"s({ bool @desc="Translate with camera" @name="Translation" translation; )s"
    R"s(bool @desc="Rotate with camera" @name="Rotation" rotation; )s"
    R"s(bool @desc="Fix size on camera sensor" @name="Scaling" scaling; )s"
    R"s(} @desc="View space settings allow fixing certain parts of the shape's transform to the camera." @name="View space")s";
struct ShapeViewSpaceData {
  Bool32 translation = kFalse;
  Bool32 rotation = kFalse;
  Bool32 scaling = kFalse;
};
static_assert(sizeof(ShapeViewSpaceData) == 12,
              "its bytes go to scene files: another size is another file version");

inline constexpr auto kShapeVisibility = vrnt::detail::joinText(
    R"s({ { bool @default=true @desc="Shape instance is visible to camera." @name="Camera" camera; )s",
    kInteractionFields.text,
    R"s(bool @default=true @desc="Shape instance is visible to indirect illumination." @name="Indirect illumination" indirect_illumination; )s"
    R"s(bool @default=true @desc="Shape instance is visible to photons." @name="Photons" photons; )s"
    R"s(bool @default=true @desc="Shape instance casts direct shadows." @name="Direct light" direct_light; )s"
    R"s(bool @default=true @desc="Shape instance is included in bounding box that receives emission from infinite lights." @name="Light Tracing" light_tracing; )s"
    R"s(} @desc="Flags which indicate which interactions a shape is visible to." @name="Visible to" visible_to; )s"
    R"s({ bool @default=true @desc="Shape instance casts direct shadows" @name="Shadow" direct_shadow; )s"
    R"s(bool @default=true @desc="Shape instance casts indirect illumination." @name="Indirect illumination" indirect_illumination; )s"
    R"s(bool @default=true @desc="Shape instance casts caustics." @name="Caustics" caustics; )s"
    R"s(} @desc="Flags which can be used to disable certain interactions with other objects" @name="Cast" cast; )s"
    R"s({ bool @default=true @desc="Shape instance receives direct shadows." @name="Shadow" shadow; )s"
    R"s(bool @default=true @desc="Shape instance receives indirect illumination." @name="Indirect illumination" indirect_illumination; )s"
    R"s(bool @default=true @desc="Shape instance receives caustics." @name="Caustics" caustics; )s"
    R"s(} @desc="Flags which allow to disable other objects interacting with this shape" @name="Receive" receive; )s"
    R"s(} @desc="Visibility flags allow fine-grained control over how a shape interacts with other scene objects." @name="Visibility")s");
struct ShapeVisibilityData {
  struct VisibleTo {
    Bool32 camera = kTrue;
    EnumCode reflection = 1;    // TRUE
    EnumCode refraction = 1;    // TRUE
    EnumCode transmission = 1;  // TRUE
    Bool32 indirect_illumination = kTrue;
    Bool32 photons = kTrue;
    Bool32 direct_light = kTrue;
    Bool32 light_tracing = kTrue;
  } visible_to;
  struct Cast {
    Bool32 direct_shadow = kTrue;
    Bool32 indirect_illumination = kTrue;
    Bool32 caustics = kTrue;
  } cast;
  struct Receive {
    Bool32 shadow = kTrue;
    Bool32 indirect_illumination = kTrue;
    Bool32 caustics = kTrue;
  } receive;
};
static_assert(sizeof(ShapeVisibilityData) == 56,
              "its bytes go to scene files: another size is another file version");

struct ShapeDesc {
  struct Groups {
    TransformationData transformation;
    ShapeGeneralData general;
    TargetData target;
    ShapeAmbientOcclusionData ambientOcclusion;
    ShapeCutPlanesData cutPlanes;
    ShapeFaceCullingData faceCulling;
    ShapeMatteObjectsData matteObjects;
    ShapeNestedPriorityData nestedPriority;
    Padding32 padding0[3] = {};
    ShapeProceduralUVsData proceduralUVs;
    ShapeRasterizerData rasterizer;
    ShapeHemiluxData hemilux;
    ShapeSamplingProbabilityData samplingProbability;
    ShapeViewSpaceData viewSpace;
    ShapeVisibilityData visibility;
    Padding32 padding1 = 0;
  };

  Ref<Instance<MaterialDesc>> material;
  Ref<Asset<vrnt::detail::MeshDesc>> mesh;
  Ref<Instance<LightGroupDesc>> lightGroup;
  Ref<Instance<TransformationGroupDesc>> transformationGroup;
  Ref<Instance<DecalListDesc>> decals;
  Ref<Asset<vrnt::detail::TextureDesc>> hemilux;
  Ref<Asset<vrnt::detail::TextureDesc>> hemiluxTonemapping;
  Ref<Instance<MaterialDesc>> fillingMaterial;
  Ref<Instance<KeyframeListDesc>> keyframes;
  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::Shape;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "Shape";
  static constexpr bool kHasValue = false;
  static constexpr auto kGroups = std::tuple{
      Group{"Transformation", kShapeTransformation, &Groups::transformation},
      Group{"General", kShapeGeneral, &Groups::general},
      Group{"Target", kTarget, &Groups::target},
      Group{"Ambient occlusion", kShapeAmbientOcclusion, &Groups::ambientOcclusion},
      Group{"Cut planes", kShapeCutPlanes, &Groups::cutPlanes},
      Group{"Face culling", kShapeFaceCulling, &Groups::faceCulling},
      Group{"Matte objects", kShapeMatteObjects, &Groups::matteObjects},
      Group{"Nested priority", kShapeNestedPriority, &Groups::nestedPriority},
      Group{"Procedural UVs", kShapeProceduralUVs, &Groups::proceduralUVs},
      Group{"Rasterizer", kShapeRasterizer, &Groups::rasterizer},
      Group{"Hemilux", kShapeHemilux, &Groups::hemilux},
      Group{"Sampling probability", kShapeSamplingProbability, &Groups::samplingProbability},
      Group{"View space", kShapeViewSpace, &Groups::viewSpace},
      Group{"Visibility", kShapeVisibility, &Groups::visibility}};
  static constexpr auto kSlots = std::tuple{
      Slot{"material", ReferenceKind::Required, ObjectClass::Material, &ShapeDesc::material},
      Slot{"mesh", ReferenceKind::Optional, ObjectClass::Mesh, &ShapeDesc::mesh},
      Slot{"lightGroup", ReferenceKind::Optional, ObjectClass::LightGroup, &ShapeDesc::lightGroup},
      Slot{"transformationGroup", ReferenceKind::Optional, ObjectClass::TransformationGroup,
           &ShapeDesc::transformationGroup},
      Slot{"decals", ReferenceKind::Optional, ObjectClass::DecalList, &ShapeDesc::decals},
      Slot{"hemilux", ReferenceKind::Optional, ObjectClass::Texture, &ShapeDesc::hemilux},
      Slot{"hemiluxTonemapping", ReferenceKind::Optional, ObjectClass::Texture,
           &ShapeDesc::hemiluxTonemapping},
      Slot{"fillingMaterial", ReferenceKind::Optional, ObjectClass::Material,
           &ShapeDesc::fillingMaterial},
      Slot{"keyframes", ReferenceKind::Optional, ObjectClass::KeyframeList, &ShapeDesc::keyframes}};
};
static_assert(sizeof(ShapeDesc::Groups) == 416 && std::is_trivially_copyable_v<ShapeDesc::Groups>,
              "its bytes go to scene files: another size is another file version");
static_assert(offsetof(ShapeDesc::Groups, transformation) == 0 &&
                  offsetof(ShapeDesc::Groups, general) == 64 &&
                  offsetof(ShapeDesc::Groups, target) == 84 &&
                  offsetof(ShapeDesc::Groups, ambientOcclusion) == 156 &&
                  offsetof(ShapeDesc::Groups, cutPlanes) == 164 &&
                  offsetof(ShapeDesc::Groups, faceCulling) == 192 &&
                  offsetof(ShapeDesc::Groups, matteObjects) == 200 &&
                  offsetof(ShapeDesc::Groups, nestedPriority) == 208 &&
                  offsetof(ShapeDesc::Groups, proceduralUVs) == 224 &&
                  offsetof(ShapeDesc::Groups, rasterizer) == 304 &&
                  offsetof(ShapeDesc::Groups, hemilux) == 316 &&
                  offsetof(ShapeDesc::Groups, samplingProbability) == 340 &&
                  offsetof(ShapeDesc::Groups, viewSpace) == 344 &&
                  offsetof(ShapeDesc::Groups, visibility) == 356,
              "scene files have the groups at these offsets: others are another file version");

}  // namespace vrnt::data

#endif
