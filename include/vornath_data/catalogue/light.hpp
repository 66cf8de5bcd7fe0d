/// Lights, and groups of lights and emissive shapes.
#ifndef VORNATH_DATA_CATALOGUE_LIGHT_HPP
#define VORNATH_DATA_CATALOGUE_LIGHT_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/programs.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/schema_text.hpp"
#include "vornath_data/catalogue/shared.hpp"
#include "vornath_data/catalogue/slot.hpp"
#include "vornath_data/catalogue/texture.hpp"
#include "vornath_data/catalogue/transformation_group.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

struct LightGroupDesc {
  CodedRefList<Emitter> emitters;

  static constexpr ObjectClass kClass = ObjectClass::LightGroup;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "LightGroup";
  static constexpr bool kHasValue = false;
  static constexpr std::tuple<> kGroups{};
  static constexpr auto kSlots = std::tuple{
      Slot{"emitters", ReferenceKind::Emitter, kEmitterTarget, &LightGroupDesc::emitters}};
};

inline constexpr auto kLightTransformation = vrnt::detail::joinText(
    R"s({ )s", kMatrix,
    R"s( matrix; )s"
    R"s(} @desc="The light's position, rotation and size in the scene" @name="Transformation")s");

inline constexpr char kLightGeneral[] =
    R"s({ bool @default=false @desc="Light instance represents a light that is already contained in the captured background. Only supported in wavefront GI for point and spot lights." @name="Matte" matte; )s"
    R"s(bool @default=false @desc="Unused." @name="Unused" unused; )s"
    R"s(} @desc="General settings for a light instance" @name="General")s";
struct LightGeneralData {
  Bool32 matte = kFalse;
  Bool32 unused = kFalse;
};
static_assert(sizeof(LightGeneralData) == 8,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kLightSamplingProbability[] =
    R"s({ float @default=1.0 @desc="Multiplier for sampling probability" @min=0.0 @name="Multiplier" multiplier; )s"
    R"s(} @desc="Settings which affect the sampling of lights" @name="Sampling probability")s";
struct LightSamplingProbabilityData {
  float multiplier = 1.0F;
};
static_assert(sizeof(LightSamplingProbabilityData) == 4,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kLightViewSpace[] =
    R"s({ bool @desc="Translate with camera." @name="Translation" translation; )s"
    R"s(bool @desc="Rotate with camera." @name="Rotation" rotation; )s"
    R"s(} @desc="View space settings allow fixing certain parts of the light's transform to the camera." @name="View space")s";
struct LightViewSpaceData {
  Bool32 translation = kFalse;
  Bool32 rotation = kFalse;
};
static_assert(sizeof(LightViewSpaceData) == 8,
              "its bytes go to scene files: another size is another file version");

inline constexpr auto kLightVisibility = vrnt::detail::joinText(
    R"s({ { bool @default=true @desc="Light instance is visible to camera." @name="Camera" camera; )s",
    kInteractionFields.text,
    R"s(bool @default=true @desc="Interaction with diffuse and glossy" @name="Diffuse and Glossy" @wavefront diffuse_glossy; )s"
    R"s(bool @default=true @desc="Light instance is visible to indirect illumination." @name="Indirect illumination" indirect_illumination; )s"
    R"s(bool @default=true @desc="Light instance casts direct shadows." @name="Direct light" direct_light; )s"
    R"s(} @desc="Flags which indicate which interactions a light is visible to." @name="Visible to" visible_to; )s"
    R"s({ bool @default=true @desc="Light instance casts direct shadows" @name="Shadow" shadow; )s"
    R"s(bool @default=true @desc="Light instance casts caustics" @name="Caustics" caustics; )s"
    R"s(} @desc="Flags which can be used to prevent the light from affecting other objects in certain ways" @name="Cast" cast; )s"
    R"s(} @desc="Visibility flags allow fine-grained control over how a light interacts with other scene objects." @name="Visibility")s");
struct LightVisibilityData {
  struct VisibleTo {
    Bool32 camera = kTrue;
    EnumCode reflection = 1;    // TRUE
    EnumCode refraction = 1;    // TRUE
    EnumCode transmission = 1;  // TRUE
    Bool32 diffuse_glossy = kTrue;
    Bool32 indirect_illumination = kTrue;
    Bool32 direct_light = kTrue;
  } visible_to;
  struct Cast {
    Bool32 shadow = kTrue;
    Bool32 caustics = kTrue;
  } cast;
};
static_assert(sizeof(LightVisibilityData) == 36,
              "its bytes go to scene files: another size is another file version");

struct LightDesc {
  struct Groups {
    TransformationData transformation;
    LightGeneralData general;
    TargetData target;
    LightSamplingProbabilityData samplingProbability;
    LightViewSpaceData viewSpace;
    LightVisibilityData visibility;
  };

  Ref<Program<LightSource>> program;
  Ref<Instance<TransformationGroupDesc>> transformationGroup;
  RefList<Asset<vrnt::detail::TextureDesc>> textures;
  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::Light;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "Light";
  static constexpr bool kHasValue = true;
  static constexpr auto kGroups = std::tuple{
      Group{"Transformation", kLightTransformation, &Groups::transformation},
      Group{"General", kLightGeneral, &Groups::general},
      Group{"Target", kTarget, &Groups::target},
      Group{"Sampling probability", kLightSamplingProbability, &Groups::samplingProbability},
      Group{"View space", kLightViewSpace, &Groups::viewSpace},
      Group{"Visibility", kLightVisibility, &Groups::visibility}};
  static constexpr auto kSlots = std::tuple{
      Slot{"program", ReferenceKind::Required, ObjectClass::LightProgram, &LightDesc::program},
      Slot{"transformationGroup", ReferenceKind::Optional, ObjectClass::TransformationGroup,
           &LightDesc::transformationGroup},
      Slot{"textures", ReferenceKind::List, ObjectClass::Texture, &LightDesc::textures}};
};
static_assert(sizeof(LightDesc::Groups) == 192 && std::is_trivially_copyable_v<LightDesc::Groups>,
              "its bytes go to scene files: another size is another file version");
static_assert(offsetof(LightDesc::Groups, transformation) == 0 &&
                  offsetof(LightDesc::Groups, general) == 64 &&
                  offsetof(LightDesc::Groups, target) == 72 &&
                  offsetof(LightDesc::Groups, samplingProbability) == 144 &&
                  offsetof(LightDesc::Groups, viewSpace) == 148 &&
                  offsetof(LightDesc::Groups, visibility) == 156,
              "scene files have the groups at these offsets: others are another file version");

}  // namespace vrnt::data

#endif
