/// Shapes: meshes with materials, placed in the scene.
#ifndef VORNATH_DATA_CATALOGUE_SHAPE_HPP
#define VORNATH_DATA_CATALOGUE_SHAPE_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>

#include "vornath_data/catalogue/decal.hpp"
#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/keyframe.hpp"
#include "vornath_data/catalogue/light.hpp"
#include "vornath_data/catalogue/material.hpp"
#include "vornath_data/catalogue/mesh.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/shared.hpp"
#include "vornath_data/catalogue/slot.hpp"
#include "vornath_data/catalogue/texture.hpp"
#include "vornath_data/catalogue/transformation_group.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

// Each row of shape.def is a field. Declares the record and the schema of each group, ShapeGroups
// (a struct of all records) and kShapeGroups (a tuple of a Group for each).
#define VRNT_FIELDS "vornath_data/catalogue/shape.def"
#define VRNT_BLOCK ShapeGroups
#include "vornath_data/catalogue/declare_groups.inc"

struct ShapeDesc {
  using Groups = ShapeGroups;

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
  static constexpr auto kGroups = kShapeGroups;
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

}  // namespace vrnt::data

#endif
