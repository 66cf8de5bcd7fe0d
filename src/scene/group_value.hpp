// Reads and writes the record of a group as a value of the group's type. `groups` points to the
// records of an object, or to the scene-wide records.
#ifndef VORNATH_SCENE_GROUP_VALUE_HPP
#define VORNATH_SCENE_GROUP_VALUE_HPP

#include <cstring>

#include "scene/class_table.hpp"
#include "scene/group_type.hpp"
#include "vornath_data/value.hpp"

namespace vrnt::data {

/// Returns a new value of the group's type with a copy of the group's record.
/// Errors: throws std::bad_alloc, and as groupType() does.
Value groupValue(const void* groups, const GroupEntry& group);

/// Returns whether a value has the group's type, so that it can be written to the group.
/// Errors: throws as groupType() does.
inline bool hasGroupType(const vrntValue_t* value, const GroupEntry& group) {
  return isGroupType(vrntValueType(value), group);
}

/// Copies a value over the group's record. The value must have the group's type.
inline void storeGroupValue(void* groups, const GroupEntry& group, const vrntValue_t* value) {
  std::memcpy(static_cast<char*>(groups) + group.offset, vrntValueData(value), group.size);
}

}  // namespace vrnt::data

#endif
