/// Cameras.
#ifndef VORNATH_DATA_CATALOGUE_CAMERA_HPP
#define VORNATH_DATA_CATALOGUE_CAMERA_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/keyframe.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/programs.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/schema_text.hpp"
#include "vornath_data/catalogue/shared.hpp"
#include "vornath_data/catalogue/slot.hpp"
#include "vornath_data/catalogue/texture.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

inline constexpr auto kCameraTransformation = vrnt::detail::joinText(
    R"s({ )s", kMatrix,
    R"s( matrix; )s"
    R"s(} @desc="The camera's position and rotation in the scene" @name="Transformation")s");

inline constexpr char kCameraGeneral[] =
    R"s({ float @default=0.0 @desc="Near distance offset in meter." @min=0.0 @name="Near Distance" @soft_max=1.0 near_distance; )s"
    R"s(float @default=0.0 @desc="Timepoint when the shutter opens, used for motion blur. Set open and close time to the same value to disable motion blur. If the shutter close time is smaller or equal to the shutter open time, the scene will be rendered at the shutter open time point without motion blur." @max=1.0 @min=0.0 @name="Shutter open time" shutter_open; )s"
    R"s(float @default=0.0 @desc="Timepoint when the shutter closes, used for motion blur. Set open and close time to the same value to disable motion blur. If the shutter close time is smaller or equal to the shutter open time, the scene will be rendered at the shutter open time point without motion blur." @max=1.0 @min=0.0 @name="Shutter close time" shutter_close; )s"
    R"s(float @default=0.0 @desc="Timepoint of the first keyframe of the camera. If chosen within the shutter open time range, the camera will stand still before this point." @name="Time start" @soft_max=1.0 @soft_min=0.0 time_start; )s"
    R"s(float @default=1.0 @desc="Timepoint of the last keyframe of the camera. If chosen within the shutter open time range, the camera will stand still after this point." @name="Time end" @soft_max=1.0 @soft_min=0.0 time_end; )s"
    R"s(} @desc="General settings for a camera instance" @name="General")s";
struct CameraGeneralData {
  float near_distance = 0.0F;
  float shutter_open = 0.0F;
  float shutter_close = 0.0F;
  float time_start = 0.0F;
  float time_end = 1.0F;
};
static_assert(sizeof(CameraGeneralData) == 20,
              "its bytes go to scene files: another size is another file version");

inline constexpr char kCameraBackground[] =
    R"s({ bool @default=false @desc="Background color is visible" @name="Active" active; )s"
    R"s(float @default=0.0 @desc="Red channel of background color" @max=1.0 @min=0.0 @name="Red" red; )s"
    R"s(float @default=0.0 @desc="Green channel of background color" @max=1.0 @min=0.0 @name="Green" green; )s"
    R"s(float @default=0.0 @desc="Blue channel of background color" @max=1.0 @min=0.0 @name="Blue" blue; )s"
    R"s(} @desc="Background color configuration" @name="Background")s";
struct CameraBackgroundData {
  Bool32 active = kFalse;
  float red = 0.0F;
  float green = 0.0F;
  float blue = 0.0F;
};
static_assert(sizeof(CameraBackgroundData) == 16,
              "its bytes go to scene files: another size is another file version");

inline constexpr auto kCameraBackplate = vrnt::detail::joinText(
    R"s({ enum { DISABLED; FIT_SIZE; FIT_WIDTH; FIT_HEIGHT; MANUAL; } @desc="Backplate mode" @name="Mode" mode; )s"
    R"s({ { int index; )s"
    R"s(} @alias="texture_ref" @desc="Reference to a spectrum texture object" @name="Texture" spectrum_texture; )s"
    R"s({ )s",
    kWrapMode,
    R"s( @desc="Describes behavior when sampling outside of texture bounds in u direction" @name="Wrap mode" u; )s",
    kWrapMode,
    R"s( @desc="Describes behavior when sampling outside of texture bounds in v direction" @name="Wrap mode" v; )s"
    R"s(} @alias="wrapmode2" @desc="Describes behavior when sampling outside of texture bounds" wrapmode; )s"
    R"s(float3 @default=float3(0.0, 0.0, 0.0) @desc="The color returned when sampling outside of texture bounds and wrap-mode is set to Border" @name="Border spectrum" border_spectrum; )s"
    R"s(float @default=1.0 @desc="The alpha returned when sampling outside of texture bounds and wrap-mode is set to Border" @max=1.0 @min=0.0 @name="Border alpha" border_alpha; )s"
    R"s(} @alias="spectrum_sampler" @desc="Sampler which can be used to read spectrum and alpha from a texture" @name="Spectrum sampler" @no_specialize image; )s"
    R"s(float @default=1.0 @desc="Brightness multiplier for the backplate image" @min=0.0 @name="Brightness" brightness; )s"
    R"s({ float2 @default=float2(0.0, 0.0) @desc="Relative position of the bottom left corner" @name="Bottom left" min; )s"
    R"s(float2 @default=float2(1.0, 1.0) @desc="Relative position of the top right corner" @name="Top right" max; )s"
    R"s(} @desc="Visible region of the backplate if mode is Manual" @name="Region" region; )s"
    R"s(bool @default=true @desc="If set to false the backplate is not shown in reflections" @name="Visible to Reflection" visible_to_reflection; )s"
    R"s(bool @default=false @desc="If set to false the backplate is not shown in refractions" @name="Visible to Refraction" visible_to_refraction; )s"
    R"s(} @desc="Background image configuration" @name="Backplate")s");
struct CameraBackplateData {
  EnumCode mode = 0;  // DISABLED
  Padding32 padding0[3] = {};
  struct Image {
    TextureRef spectrum_texture;
    struct Wrapmode {
      EnumCode u = 2;  // REPEAT
      EnumCode v = 2;  // REPEAT
    } wrapmode;
    Padding32 padding0 = 0;
    Float3 border_spectrum;
    float border_alpha = 1.0F;
    Padding32 padding1[3] = {};
  } image;
  float brightness = 1.0F;
  Padding32 padding1 = 0;
  struct Region {
    Float2 min;
    Float2 max{1.0F, 1.0F};
  } region;
  Bool32 visible_to_reflection = kTrue;
  Bool32 visible_to_refraction = kFalse;
};
static_assert(sizeof(CameraBackplateData) == 96,
              "its bytes go to scene files: another size is another file version");

struct CameraDesc {
  struct Groups {
    TransformationData transformation;
    CameraGeneralData general;
    CameraBackgroundData background;
    Padding32 padding0[3] = {};
    CameraBackplateData backplate;
  };

  Ref<Program<CameraSource>> program;
  Ref<Asset<vrnt::detail::TextureDesc>> backplate;
  Ref<Instance<KeyframeListDesc>> keyframes;
  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::Camera;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "Camera";
  static constexpr bool kHasValue = true;
  static constexpr auto kGroups =
      std::tuple{Group{"Transformation", kCameraTransformation, &Groups::transformation},
                 Group{"General", kCameraGeneral, &Groups::general},
                 Group{"Background", kCameraBackground, &Groups::background},
                 Group{"Backplate", kCameraBackplate, &Groups::backplate}};
  static constexpr auto kSlots = std::tuple{
      Slot{"program", ReferenceKind::Required, ObjectClass::CameraProgram, &CameraDesc::program},
      Slot{"backplate", ReferenceKind::Optional, ObjectClass::Texture, &CameraDesc::backplate},
      Slot{"keyframes", ReferenceKind::Optional, ObjectClass::KeyframeList,
           &CameraDesc::keyframes}};
};
static_assert(sizeof(CameraDesc::Groups) == 208 && std::is_trivially_copyable_v<CameraDesc::Groups>,
              "its bytes go to scene files: another size is another file version");
static_assert(offsetof(CameraDesc::Groups, transformation) == 0 &&
                  offsetof(CameraDesc::Groups, general) == 64 &&
                  offsetof(CameraDesc::Groups, background) == 84 &&
                  offsetof(CameraDesc::Groups, backplate) == 112,
              "scene files have the groups at these offsets: others are another file version");

}  // namespace vrnt::data

#endif
