/// Decals, and ordered lists of them.
#ifndef VORNATH_DATA_CATALOGUE_DECAL_HPP
#define VORNATH_DATA_CATALOGUE_DECAL_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/material.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/schema_text.hpp"
#include "vornath_data/catalogue/shared.hpp"
#include "vornath_data/catalogue/slot.hpp"
#include "vornath_data/catalogue/transformation_group.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

inline constexpr auto kDecalTransformation = vrnt::detail::joinText(
    R"s({ )s", kMatrix,
    R"s( matrix; )s"
    R"s(} @desc="The decal's position, rotation and size in world space" @name="Transformation")s");

inline constexpr auto kDecalProjection = vrnt::detail::joinText(
    R"s({ )s", kProjectionModes, R"s( @default=PLANAR : )s", kProjectionModes,
    R"s( @desc="Projection mode for decals" @name="Mode" mode; )s"
    R"s(enum { OUTSIDE_IN; INSIDE_OUT; BIDIRECTIONAL; } @default=OUTSIDE_IN : enum { OUTSIDE_IN; INSIDE_OUT; BIDIRECTIONAL; } @desc="The direction in which a decal is projected onto a shape" @name="Direction" direction; )s"
    R"s({ float[3] @default=[ -inf, -inf, -inf ] @desc="Minimal clipping box corner" @name="Minimum" @soft_max=[ 0.5, 0.5, 0.5 ] @soft_min=[ -0.5, -0.5, -0.5 ] min; )s"
    R"s(float[3] @default=[ inf, inf, inf ] @desc="Maximum clipping box corner" @name="Maximum" @soft_max=[ 0.5, 0.5, 0.5 ] @soft_min=[ -0.5, -0.5, -0.5 ] max; )s"
    R"s(} @desc="Axis-aligned clipping box in object space. Limits the effects of the projected decal" @mlcc_keep_alive @name="Clipping box" clipping_box; )s"
    R"s(} @desc="Describes how decals are projected onto surfaces" @name="Projection")s");
struct DecalProjectionData {
  EnumCode mode = 3;       // PLANAR
  EnumCode direction = 0;  // OUTSIDE_IN
  struct ClippingBox {
    float min[3] = {-kInfinity, -kInfinity, -kInfinity};
    float max[3] = {kInfinity, kInfinity, kInfinity};
  } clipping_box;
};
static_assert(sizeof(DecalProjectionData) == 32,
              "its bytes go to scene files: another size is another file version");

struct DecalDesc {
  struct Groups {
    TransformationData transformation;
    DecalProjectionData projection;
  };

  Ref<Instance<MaterialDesc>> frontMaterial;
  Ref<Instance<MaterialDesc>> backMaterial;
  Ref<Instance<TransformationGroupDesc>> transformationGroup;
  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::Decal;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "Decal";
  static constexpr bool kHasValue = false;
  static constexpr auto kGroups =
      std::tuple{Group{"Transformation", kDecalTransformation, &Groups::transformation},
                 Group{"Projection", kDecalProjection, &Groups::projection}};
  static constexpr auto kSlots =
      std::tuple{Slot{"frontMaterial", ReferenceKind::Required, ObjectClass::Material,
                      &DecalDesc::frontMaterial},
                 Slot{"backMaterial", ReferenceKind::Required, ObjectClass::Material,
                      &DecalDesc::backMaterial},
                 Slot{"transformationGroup", ReferenceKind::Optional,
                      ObjectClass::TransformationGroup, &DecalDesc::transformationGroup}};
};
static_assert(sizeof(DecalDesc::Groups) == 96 && std::is_trivially_copyable_v<DecalDesc::Groups>,
              "its bytes go to scene files: another size is another file version");
static_assert(offsetof(DecalDesc::Groups, transformation) == 0 &&
                  offsetof(DecalDesc::Groups, projection) == 64,
              "scene files have the groups at these offsets: others are another file version");

struct DecalListDesc {
  CodedRefList<Instance<DecalDesc>> decals;

  static constexpr ObjectClass kClass = ObjectClass::DecalList;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "DecalList";
  static constexpr bool kHasValue = false;
  static constexpr std::tuple<> kGroups{};
  static constexpr auto kSlots = std::tuple{
      Slot{"decals", ReferenceKind::OrderedDecal, ObjectClass::Decal, &DecalListDesc::decals}};
};

}  // namespace vrnt::data

#endif
