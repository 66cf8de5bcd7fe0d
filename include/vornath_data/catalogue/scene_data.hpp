/// The settings of the scene as a whole.
#ifndef VORNATH_DATA_CATALOGUE_SCENE_DATA_HPP
#define VORNATH_DATA_CATALOGUE_SCENE_DATA_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>

#include "vornath_data/catalogue/class_info.hpp"
#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/shared.hpp"

namespace vrnt::data {

// Each row of scene_data.def is a field. Declares the record and the schema of each group,
// kSceneData (a tuple of a Group for each) and SceneData (a struct of all records, whose 320 bytes
// follow the header of a scene file).
#define VRNT_FIELDS "vornath_data/catalogue/scene_data.def"
#define VRNT_BLOCK SceneData
#include "vornath_data/catalogue/declare_groups.inc"

/// Describes the scene-wide groups like those of a class. There is no name, no kind and no slot.
template <>
struct ClassInfo<SceneData> {
  static constexpr ObjectClass kClass = ObjectClass::SceneData;
  static constexpr auto kGroups = kSceneData;
  static constexpr std::tuple<> kSlots{};
};

}  // namespace vrnt::data

#endif
