#include "group_value.hpp"

#include <cstring>

#include "group_type.hpp"
#include "value_or_throw.hpp"

namespace vrnt::data {

Value groupValue(const void* groups, const GroupEntry& group) {
  Value value = valueOrThrow(Value::create(groupType(group).plain, false));
  // A new value's block isn't shared, so the write can't fail.
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(value.address(), 0, static_cast<const char*>(groups) + group.offset, group.size,
                 &error);
  return value;
}

bool hasGroupType(const vrntValue_t* value, const GroupEntry& group) {
  // A value's type has no metadata, and two types without metadata are equal only if they are one.
  const vrntType_t* type = vrntValueType(value);
  const GroupType expected = groupType(group);
  return type == expected.plain || vrntTypeIsEqual(type, expected.annotated) != 0;
}

void storeGroupValue(void* groups, const GroupEntry& group, const vrntValue_t* value) {
  std::memcpy(static_cast<char*>(groups) + group.offset, vrntValueData(value), group.size);
}

}  // namespace vrnt::data
