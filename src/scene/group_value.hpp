// Reading and writing the record of a group as a value of the group's type. The groups of an
// object, or those of a scene as a whole, are given as plain memory.
#ifndef VORNATH_SCENE_GROUP_VALUE_HPP
#define VORNATH_SCENE_GROUP_VALUE_HPP

#include <cstring>

#include "scene/class_table.hpp"
#include "scene/group_type.hpp"
#include "vornath_data/value.hpp"

namespace vrnt::data {

/// A new value of the group's type with a copy of the group's record.
/// Errors: std::bad_alloc.
Value groupValue(const void* groups, const GroupEntry& group);

/// Whether a value may be written to the group: its type is the group's.
/// Errors: as groupType().
inline bool hasGroupType(const vrntValue_t* value, const GroupEntry& group) {
  return isGroupType(vrntValueType(value), group);
}

/// Copies a value, which has the group's type, over the group's record.
inline void storeGroupValue(void* groups, const GroupEntry& group, const vrntValue_t* value) {
  std::memcpy(static_cast<char*>(groups) + group.offset, vrntValueData(value), group.size);
}

}  // namespace vrnt::data

#endif
