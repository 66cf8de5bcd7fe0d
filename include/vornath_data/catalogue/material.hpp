/// Materials.
#ifndef VORNATH_DATA_CATALOGUE_MATERIAL_HPP
#define VORNATH_DATA_CATALOGUE_MATERIAL_HPP

#include <tuple>

#include "vornath_data/catalogue/material_graph.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/programs.hpp"
#include "vornath_data/catalogue/slot.hpp"
#include "vornath_data/catalogue/texture.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

// The behaviour of a material comes from a program or from a graph. Therefore its program is
// optional, unlike that of a camera or a light.
struct MaterialDesc {
  Ref<Program<MaterialSource>> program;
  Ref<Asset<MaterialGraphDesc>> graph;
  RefList<Asset<vrnt::detail::TextureDesc>> textures;

  static constexpr ObjectClass kClass = ObjectClass::Material;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "Material";
  static constexpr bool kHasValue = true;
  static constexpr std::tuple<> kGroups{};
  static constexpr auto kSlots = std::tuple{
      Slot{"program", ReferenceKind::Optional, ObjectClass::MaterialProgram,
           &MaterialDesc::program},
      Slot{"graph", ReferenceKind::Optional, ObjectClass::MaterialGraph, &MaterialDesc::graph},
      Slot{"textures", ReferenceKind::List, ObjectClass::Texture, &MaterialDesc::textures}};
};

}  // namespace vrnt::data

#endif
