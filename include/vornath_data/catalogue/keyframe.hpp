/// Transformations at points in time, and lists of them.
#ifndef VORNATH_DATA_CATALOGUE_KEYFRAME_HPP
#define VORNATH_DATA_CATALOGUE_KEYFRAME_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>

#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/shared.hpp"
#include "vornath_data/catalogue/slot.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

// Each row of keyframe.def is a field. Declares the record and the schema of each group,
// KeyframeGroups (a struct of all records) and kKeyframeGroups (a tuple of a Group for each).
#define VRNT_FIELDS "vornath_data/catalogue/keyframe.def"
#define VRNT_BLOCK KeyframeGroups
#include "vornath_data/catalogue/declare_groups.inc"

struct KeyframeDesc {
  using Groups = KeyframeGroups;

  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::Keyframe;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "Keyframe";
  static constexpr bool kHasValue = false;
  static constexpr auto kGroups = kKeyframeGroups;
  static constexpr std::tuple<> kSlots{};
};

struct KeyframeListDesc {
  RefList<Instance<KeyframeDesc>> keyframes;

  static constexpr ObjectClass kClass = ObjectClass::KeyframeList;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "KeyframeList";
  static constexpr bool kHasValue = false;
  static constexpr std::tuple<> kGroups{};
  static constexpr auto kSlots = std::tuple{
      Slot{"keyframes", ReferenceKind::List, ObjectClass::Keyframe, &KeyframeListDesc::keyframes}};
};

}  // namespace vrnt::data

#endif
