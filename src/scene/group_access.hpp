// Group records in and out as values of the group's type.
#ifndef VORNATH_SCENE_GROUP_ACCESS_HPP
#define VORNATH_SCENE_GROUP_ACCESS_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "group_type.hpp"
#include "made.hpp"
#include "vornath_data/value.hpp"

namespace vrnt::data {

/// Calls `onRecord(record, position)` with the record of a group among the groups of a Desc, and
/// `otherwise()` past the last group.
template <typename Desc, typename Groups, typename OnRecord, typename Otherwise>
auto visitRecord(Groups& groups, std::uint32_t group, OnRecord&& onRecord, Otherwise&& otherwise)
    -> decltype(otherwise()) {
  return visitGroup<Desc>(
      group,
      [&](const auto& declared, auto position) -> decltype(otherwise()) {
        return onRecord(groups.*declared.member, position);
      },
      std::forward<Otherwise>(otherwise));
}

/// A new value of the group's type with a copy of the record.
/// Errors: std::bad_alloc.
template <typename Desc, typename Record>
Value groupValue(std::size_t position, const Record& record) {
  Value value = made(Value::create(groupType<Desc>(position).plain, false));
  // A new value's block isn't shared, so that the write has nothing to fail at.
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(value.address(), 0, &record, sizeof(Record), &error);
  return value;
}

/// Whether the value may be written over the group's record: its type is the group's.
template <typename Desc>
bool hasGroupType(std::size_t position, const vrntValue_t* value) {
  // A value's type has no metadata, and types without are equal only if they are one.
  const vrntType_t* type = vrntValueType(value);
  const GroupType group = groupType<Desc>(position);
  return type == group.plain || vrntTypeIsEqual(type, group.annotated) != 0;
}

/// Copies the value, which has the group's type, over the record.
template <typename Record>
void storeGroup(Record& record, const vrntValue_t* value) {
  std::memcpy(&record, vrntValueData(value), sizeof(Record));
}

}  // namespace vrnt::data

#endif
