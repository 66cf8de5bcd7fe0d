#include "scene/group_value.hpp"

#include "scene/value_or_throw.hpp"

namespace vrnt::data {

Value groupValue(const void* groups, const GroupEntry& group) {
  Value value = valueOrThrow(Value::create(groupType(group).plain, false));
  // The block of a new value is not shared, so the write cannot fail.
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(value.address(), 0, static_cast<const char*>(groups) + group.offset, group.size,
                 &error);
  return value;
}

}  // namespace vrnt::data
