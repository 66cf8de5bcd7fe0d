/// Decals, and ordered lists of them.
#ifndef VORNATH_DATA_CATALOGUE_DECAL_HPP
#define VORNATH_DATA_CATALOGUE_DECAL_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>

#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/material.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/shared.hpp"
#include "vornath_data/catalogue/slot.hpp"
#include "vornath_data/catalogue/transformation_group.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

// Each row of decal.def is a field. Declares the record and the schema of each group, DecalGroups
// (a struct of all records) and kDecalGroups (a tuple of a Group for each).
#define VRNT_FIELDS "vornath_data/catalogue/decal.def"
#define VRNT_BLOCK DecalGroups
#include "vornath_data/catalogue/declare_groups.inc"

struct DecalDesc {
  using Groups = DecalGroups;

  Ref<Instance<MaterialDesc>> frontMaterial;
  Ref<Instance<MaterialDesc>> backMaterial;
  Ref<Instance<TransformationGroupDesc>> transformationGroup;
  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::Decal;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "Decal";
  static constexpr bool kHasValue = false;
  static constexpr auto kGroups = kDecalGroups;
  static constexpr auto kSlots =
      std::tuple{Slot{"frontMaterial", ReferenceKind::Required, ObjectClass::Material,
                      &DecalDesc::frontMaterial},
                 Slot{"backMaterial", ReferenceKind::Required, ObjectClass::Material,
                      &DecalDesc::backMaterial},
                 Slot{"transformationGroup", ReferenceKind::Optional,
                      ObjectClass::TransformationGroup, &DecalDesc::transformationGroup}};
};

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
