/// Schema fragments and records that several classes share.
#ifndef VORNATH_DATA_CATALOGUE_SHARED_HPP
#define VORNATH_DATA_CATALOGUE_SHARED_HPP

#include <limits>

#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/schema_text.hpp"

namespace vrnt::data {

/// The default of a clamp that doesn't clamp.
inline constexpr float kInfinity = std::numeric_limits<float>::infinity();

// A 4x4 matrix with its rows' defaults: the type of a field, without the label.
inline constexpr char kMatrix[] =
    R"s({ float4 @default=float4(1.0, 0.0, 0.0, 0.0) x; )s"
    R"s(float4 @default=float4(0.0, 1.0, 0.0, 0.0) y; )s"
    R"s(float4 @default=float4(0.0, 0.0, 1.0, 0.0) z; )s"
    R"s(float4 @default=float4(0.0, 0.0, 0.0, 1.0) w; )s"
    R"s(} @desc="4x4 matrix storing translation, rotation and scaling" @name="Matrix")s";
struct Matrix {
  Float4 x{1.0F, 0.0F, 0.0F, 0.0F};
  Float4 y{0.0F, 1.0F, 0.0F, 0.0F};
  Float4 z{0.0F, 0.0F, 1.0F, 0.0F};
  Float4 w{0.0F, 0.0F, 0.0F, 1.0F};
};
static_assert(sizeof(Matrix) == 64,
              "its bytes go to scene files: another size is another file version");

// The "Transformation" groups have one record; each class's schema has its own description.
struct TransformationData {
  Matrix matrix;
};
static_assert(sizeof(TransformationData) == 64,
              "its bytes go to scene files: another size is another file version");

// How texture coordinates outside of a texture are read, up to the description of the field.
inline constexpr char kWrapMode[] =
    R"s(enum { CLAMP @name="Clamp"; BORDER @name="Border"; REPEAT @name="Repeat"; MIRROR @name="Mirror"; })s"
    R"s( @default=REPEAT : enum { CLAMP; BORDER; REPEAT; MIRROR; })s";

// The modes by which a surface gets coordinates from a projection.
inline constexpr char kProjectionModes[] = R"s(enum { )s"
                                           R"s(KEEP; )s"
                                           R"s(BOX; )s"
                                           R"s(CUBIC; )s"
                                           R"s(PLANAR; )s"
                                           R"s(SPHERICAL; )s"
                                           R"s(SPHERICAL_NORMALIZED; )s"
                                           R"s(SPHERICAL_LATLONG; )s"
                                           R"s(CYLINDRICAL; )s"
                                           R"s(CYLINDRICAL_INFINITE; )s"
                                           R"s(CYLINDRICAL_INFINITE_NORMALIZED; )s"
                                           R"s(CYLINDRICAL_INFINITE_ANGLE_PRESERVING; )s"
                                           R"s(CYLINDRICAL_LATLONG; )s"
                                           R"s(RADIAL; )s"
                                           R"s(})s";

// Whether a light or shape is seen by rays of the three kinds.
inline constexpr char kInteraction[] =
    R"s(enum { )s"
    R"s(FALSE @desc="Not visible to interaction" @name="False"; )s"
    R"s(TRUE @desc="Visible to last interaction" @name="True"; )s"
    R"s(ALL @desc="Visible to any interaction" @name="All"; )s"
    R"s(} @default=TRUE : enum { FALSE; TRUE; ALL; })s";
inline constexpr auto kInteractionFields = vrnt::detail::joinText(
    kInteraction, R"s( @desc="Interaction with reflections" @name="Reflection" reflection; )s",
    kInteraction, R"s( @desc="Interaction with refractions" @name="Refraction" refraction; )s",
    kInteraction,
    R"s( @desc="Interaction with transmissions" @name="Transmission" transmission; )s");

// "Target", one schema for lights and shapes.
inline constexpr char kTarget[] =
    R"s({ char[64] @desc="Tag string for use in light path expressions" @name="Tag" @string tag; )s"
    R"s(int @desc="32 bits of custom data rendered by the custom data target." @name="Custom data" custom_data; )s"
    R"s(bool @default=true @desc="If set to false is no longer visible, but still occludes." @name="Is visible in mask" visible_in_mask; )s"
    R"s(} @desc="Render target related data attached to this instance." @name="Target")s";
struct TargetData {
  char tag[64] = {};
  std::int32_t custom_data = 0;
  Bool32 visible_in_mask = kTrue;
};
static_assert(sizeof(TargetData) == 72,
              "its bytes go to scene files: another size is another file version");

}  // namespace vrnt::data

#endif
