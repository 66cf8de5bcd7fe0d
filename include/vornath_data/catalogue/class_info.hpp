/// The catalogue's description of a class, for generic code.
#ifndef VORNATH_DATA_CATALOGUE_CLASS_INFO_HPP
#define VORNATH_DATA_CATALOGUE_CLASS_INFO_HPP

#include "vornath_data/catalogue/object_class.hpp"

namespace vrnt::data {

/// Describes the class of a Desc: its code, its kind, its name (a static string), whether its
/// objects have a value for their program, its groups (a tuple of Group) and its slots (a tuple of
/// Slot). A Desc declares these members itself. A descriptor that does not depend on the catalogue
/// has a specialization instead, in the header of its class.
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
