/// Lights, and groups of lights and emissive shapes.
#ifndef VORNATH_DATA_CATALOGUE_LIGHT_HPP
#define VORNATH_DATA_CATALOGUE_LIGHT_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>

#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/programs.hpp"
#include "vornath_data/catalogue/record_types.hpp"
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

// Each row of light.def is a field. Declares the record and the schema of each group, LightGroups
// (a struct of all records) and kLightGroups (a tuple of a Group for each).
#define VRNT_FIELDS "vornath_data/catalogue/light.def"
#define VRNT_BLOCK LightGroups
#include "vornath_data/catalogue/declare_groups.inc"

struct LightDesc {
  using Groups = LightGroups;

  Ref<Program<LightSource>> program;
  Ref<Instance<TransformationGroupDesc>> transformationGroup;
  RefList<Asset<vrnt::detail::TextureDesc>> textures;
  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::Light;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "Light";
  static constexpr bool kHasValue = true;
  static constexpr auto kGroups = kLightGroups;
  static constexpr auto kSlots = std::tuple{
      Slot{"program", ReferenceKind::Required, ObjectClass::LightProgram, &LightDesc::program},
      Slot{"transformationGroup", ReferenceKind::Optional, ObjectClass::TransformationGroup,
           &LightDesc::transformationGroup},
      Slot{"textures", ReferenceKind::List, ObjectClass::Texture, &LightDesc::textures}};
};

}  // namespace vrnt::data

#endif
