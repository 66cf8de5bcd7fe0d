// One part of one group of many objects as one array.
#include <fmt/format.h>

#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "foundation/failure.hpp"
#include "vornath_data/catalogue.h"
#include "vornath_data/types.h"
#include "vornath_data/values.h"
#include "vornath_toolkit/vrtk_columns.h"

namespace {

using vrtk::Failure;
using vrtk::guarded;
using vrtk::requireArgument;

struct TypeDeleter {
  void operator()(vrntType_t* type) const { vrntTypeDestroy(type); }
};
using TypeHandle = std::unique_ptr<vrntType_t, TypeDeleter>;

struct ValueDeleter {
  void operator()(vrntValue_t* value) const { vrntValueDestroy(value); }
};
using ValueHandle = std::unique_ptr<vrntValue_t, ValueDeleter>;

[[noreturn]] void refuse(std::string message) {
  throw Failure(VRTK_INVALID_ARGUMENT, std::move(message));
}

// The part of a group that a column consists of.
struct Part {
  const vrdmScene_t* scene;
  std::uint32_t objectClass;
  std::uint32_t group;
  std::uint64_t offset;
  std::uint64_t size;
  const std::int32_t* slots;
  std::uint64_t count;
  const void* bytes;
  std::uint64_t stride;
  TypeHandle type = nullptr;  // Kept, so that the library does not parse it for each object.
  std::uint64_t groupSize = 0;

  // Throws VRTK_INVALID_ARGUMENT for a part that is not in the scene.
  void check(const char* function) {
    requireArgument(scene, function, "scene");
    if (count != 0) {
      requireArgument(slots, function, "slots");
      requireArgument(bytes, function, "bytes");
    }
    if (objectClass >= vrdmObjectTypeCount() || group >= vrdmFieldCount(objectClass)) {
      refuse(fmt::format("{}: the class {} has no group {}", function, objectClass, group));
    }
    type.reset(vrdmFieldType(objectClass, group));
    groupSize = vrntTypeSize(type.get());
    if (offset > groupSize || size > groupSize - offset) {
      refuse(fmt::format("{}: {} bytes at {} are not inside of the group's {} bytes", function,
                         size, offset, groupSize));
    }
    if (stride == 0) stride = size;
    if (stride < size) {
      refuse(fmt::format("{}: the stride {} is smaller than the part's {} bytes", function, stride,
                         size));
    }
    for (std::uint64_t i = 0; i < count; ++i) {
      if (slots[i] < 0 || !vrdmValid(scene, objectClass, slots[i])) {
        refuse(fmt::format("{}: there is no live {} in slot {}", function,
                           vrdmObjectName(objectClass), slots[i]));
      }
    }
  }

  ValueHandle valueOf(std::int32_t slot) const {
    return ValueHandle(vrdmGetDataValue(scene, objectClass, slot, group));
  }

  bool isWhole() const { return size == groupSize; }
};

const char* bytesAt(const ValueHandle& value, std::uint64_t offset) {
  return static_cast<const char*>(vrntValueData(value.get())) + offset;
}

}  // namespace

std::uint32_t vrtkSceneLiveSlots(const vrdmScene_t* scene, std::uint32_t objectClass,
                                 std::int32_t* slots, std::uint64_t capacity, std::uint64_t* count,
                                 vrtkError** error) {
  return guarded(error, [&] {
    requireArgument(scene, "vrtkSceneLiveSlots", "scene");
    requireArgument(count, "vrtkSceneLiveSlots", "count");
    if (capacity != 0) requireArgument(slots, "vrtkSceneLiveSlots", "slots");
    if (objectClass >= vrdmObjectTypeCount()) {
      refuse(fmt::format("vrtkSceneLiveSlots: there is no class {}", objectClass));
    }
    const auto end = static_cast<std::int32_t>(vrdmContainerSize(scene, objectClass));
    std::uint64_t found = 0;
    for (std::int32_t slot = 0; slot < end; ++slot) {
      if (!vrdmValid(scene, objectClass, slot)) continue;
      if (found < capacity) slots[found] = slot;
      ++found;
    }
    *count = found;
  });
}

std::uint32_t vrtkSceneColumnGet(const vrdmScene_t* scene, std::uint32_t objectClass,
                                 std::uint32_t group, std::uint64_t offset, std::uint64_t size,
                                 const std::int32_t* slots, std::uint64_t count, void* bytes,
                                 std::uint64_t stride, vrtkError** error) {
  return guarded(error, [&] {
    Part part{scene, objectClass, group, offset, size, slots, count, bytes, stride};
    part.check("vrtkSceneColumnGet");
    char* target = static_cast<char*>(bytes);
    for (std::uint64_t i = 0; i < count; ++i, target += part.stride) {
      const ValueHandle value = part.valueOf(slots[i]);
      std::memcpy(target, bytesAt(value, offset), size);
    }
  });
}

std::uint32_t vrtkSceneColumnSet(vrdmScene_t* scene, std::uint32_t objectClass, std::uint32_t group,
                                 std::uint64_t offset, std::uint64_t size,
                                 const std::int32_t* slots, std::uint64_t count, const void* bytes,
                                 std::uint64_t stride, vrtkError** error) {
  return guarded(error, [&] {
    Part part{scene, objectClass, group, offset, size, slots, count, bytes, stride};
    part.check("vrtkSceneColumnSet");
    if (count == 0) return;
    const char* source = static_cast<const char*>(bytes);
    // One value carries all groups. It has one reference, so that mapping it allocates nothing, and
    // after the groups are read nothing can fail.
    std::vector<char> before;
    ValueHandle first = part.valueOf(slots[0]);
    if (!part.isWhole()) {
      before.resize(count * part.groupSize);
      for (std::uint64_t i = 0; i < count; ++i) {
        const ValueHandle value = part.valueOf(slots[i]);
        std::memcpy(before.data() + i * part.groupSize, bytesAt(value, 0), part.groupSize);
      }
    }
    vrntValue_t* carrier = first.release();
    const vrntValueView_t whole{vrntValueType(carrier), 0};
    for (std::uint64_t i = 0; i < count; ++i, source += part.stride) {
      vrntValuesError_t* problem = nullptr;
      char* const target = static_cast<char*>(vrntValueMap(&carrier, &whole, &problem));
      if (!part.isWhole()) {
        std::memcpy(target, before.data() + i * part.groupSize, part.groupSize);
      }
      std::memcpy(target + offset, source, size);
      vrntValueUnmap(carrier, &whole);
      vrdmSetDataValue(scene, objectClass, slots[i], group, carrier);
    }
    vrntValueDestroy(carrier);
  });
}
