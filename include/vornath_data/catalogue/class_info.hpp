/// Where generic code reads what the catalogue says of a class.
#ifndef VORNATH_DATA_CATALOGUE_CLASS_INFO_HPP
#define VORNATH_DATA_CATALOGUE_CLASS_INFO_HPP

#include "vornath_data/catalogue/object_class.hpp"

namespace vrnt::data {

/// The class of the objects that are described by a Desc: its number, kind, static name, whether
/// its objects carry a value for their program, its groups (a tuple of Group) and its slots (a
/// tuple of Slot). A Desc says this itself; only descriptors that know nothing of the catalogue
/// have a specialization, which stands in their class's header.
template <typename Desc>
struct ClassInfo {
  static constexpr ObjectClass kClass = Desc::kClass;
  static constexpr ObjectKind kKind = Desc::kKind;
  static constexpr const char* kName = Desc::kName;
  static constexpr bool kHasValue = Desc::kHasValue;
  static constexpr auto kGroups = Desc::kGroups;
  static constexpr auto kSlots = Desc::kSlots;
};

}  // namespace vrnt::data

#endif
