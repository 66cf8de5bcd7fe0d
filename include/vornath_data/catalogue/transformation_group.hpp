/// Transformations that several objects can share.
#ifndef VORNATH_DATA_CATALOGUE_TRANSFORMATION_GROUP_HPP
#define VORNATH_DATA_CATALOGUE_TRANSFORMATION_GROUP_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>

#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/shared.hpp"

namespace vrnt::data {

// Each row of transformation_group.def is a field. Declares the record and the schema of each
// group, TransformationGroupGroups (a struct of all records) and kTransformationGroupGroups (a
// tuple of a Group for each).
#define VRNT_FIELDS "vornath_data/catalogue/transformation_group.def"
#define VRNT_BLOCK TransformationGroupGroups
#include "vornath_data/catalogue/declare_groups.inc"

struct TransformationGroupDesc {
  using Groups = TransformationGroupGroups;

  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::TransformationGroup;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "TransformationGroup";
  static constexpr bool kHasValue = false;
  static constexpr auto kGroups = kTransformationGroupGroups;
  static constexpr std::tuple<> kSlots{};
};

}  // namespace vrnt::data

#endif
