// One part of one group of many objects as one array.
#include <fmt/format.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

#include "foundation/failure.hpp"
#include "vornath_data/catalogue.h"
#include "vornath_data/scene.hpp"
#include "vornath_toolkit/vrtk_columns.h"

namespace {

using vrnt::data::kGroupCount;
using vrtk::Failure;
using vrtk::guarded;
using vrtk::requireArgument;

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
  const char* function;
  // Where the record of the group is in the records of all groups of an object.
  std::uint64_t groupOffset = 0;
  std::uint64_t groupSize = 0;

  // Throws VRTK_INVALID_ARGUMENT for a part that is not in the class.
  void check() {
    requireArgument(scene, function, "scene");
    if (count != 0) {
      requireArgument(slots, function, "slots");
      requireArgument(bytes, function, "bytes");
    }
    if (objectClass >= vrdmObjectTypeCount() || group >= vrdmFieldCount(objectClass)) {
      refuse(fmt::format("{}: the class {} has no group {}", function, objectClass, group));
    }
    vrnt::data::visitClass(
        objectClass,
        [this](auto tag) {
          using Desc = typename decltype(tag)::Desc;
          vrnt::data::forEachGroup<Desc>([this](const auto& found, auto position) {
            if (position != group) return;
            groupOffset = found.offset;
            groupSize = sizeof(typename std::decay_t<decltype(found)>::Record);
          });
          return true;
        },
        [] { return false; });
    if (offset > groupSize || size > groupSize - offset) {
      refuse(fmt::format("{}: {} bytes at {} are not inside of the group's {} bytes", function,
                         size, offset, groupSize));
    }
    if (stride == 0) stride = size;
    if (stride < size) {
      refuse(fmt::format("{}: the stride {} is smaller than the part's {} bytes", function, stride,
                         size));
    }
  }

  // Calls `work` with the position in the column and the object, for each object. Throws
  // VRTK_INVALID_ARGUMENT at a slot without a live object.
  template <typename Work>
  void forEachObject(Work&& work) const {
    vrnt::data::visitClass(
        objectClass,
        [&](auto tag) {
          using Desc = typename decltype(tag)::Desc;
          if constexpr (kGroupCount<Desc> != 0) {
            const auto& objects = scene->container<Desc>();
            for (std::uint64_t i = 0; i < count; ++i) {
              if (!objects.valid(slots[i])) {
                refuse(fmt::format("{}: there is no live {} in slot {}", function,
                                   vrdmObjectName(objectClass), slots[i]));
              }
              work(i, objects.at(slots[i]));
            }
          }
          return true;
        },
        [] { return false; });
  }

  // The place of the part in an object, in bytes from the start of its groups.
  std::uint64_t place() const { return groupOffset + offset; }
};

}  // namespace

std::uint32_t vrtkSceneLiveSlots(const vrdmScene_t* scene, std::uint32_t objectClass,
                                 std::int32_t* slots, std::uint64_t capacity, std::uint64_t* count,
                                 vrtkError** error) {
  return guarded(error, [&] {
    requireArgument(scene, "vrtkSceneLiveSlots", "scene");
    requireArgument(count, "vrtkSceneLiveSlots", "count");
    if (capacity != 0) requireArgument(slots, "vrtkSceneLiveSlots", "slots");
    const bool known = vrnt::data::visitClass(
        objectClass,
        [&](auto tag) {
          const auto& objects = scene->container<typename decltype(tag)::Desc>();
          const auto end = static_cast<std::int32_t>(objects.size());
          std::uint64_t found = 0;
          for (std::int32_t slot = 0; slot < end; ++slot) {
            if (!objects.at(slot).live()) continue;
            if (found < capacity) slots[found] = slot;
            ++found;
          }
          *count = found;
          return true;
        },
        [] { return false; });
    if (!known) refuse(fmt::format("vrtkSceneLiveSlots: there is no class {}", objectClass));
  });
}

std::uint32_t vrtkSceneColumnGet(const vrdmScene_t* scene, std::uint32_t objectClass,
                                 std::uint32_t group, std::uint64_t offset, std::uint64_t size,
                                 const std::int32_t* slots, std::uint64_t count, void* bytes,
                                 std::uint64_t stride, vrtkError** error) {
  return guarded(error, [&] {
    Part part{scene, objectClass, group, offset, size,
              slots, count,       bytes, stride, "vrtkSceneColumnGet"};
    part.check();
    char* const target = static_cast<char*>(bytes);
    part.forEachObject([&](std::uint64_t i, const auto& object) {
      std::memcpy(target + i * part.stride,
                  reinterpret_cast<const char*>(&object.desc.groups) + part.place(), size);
    });
  });
}

std::uint32_t vrtkSceneColumnSet(vrdmScene_t* scene, std::uint32_t objectClass, std::uint32_t group,
                                 std::uint64_t offset, std::uint64_t size,
                                 const std::int32_t* slots, std::uint64_t count, const void* bytes,
                                 std::uint64_t stride, vrtkError** error) {
  return guarded(error, [&] {
    Part part{scene, objectClass, group, offset, size,
              slots, count,       bytes, stride, "vrtkSceneColumnSet"};
    part.check();
    if (count == 0) return;
    part.forEachObject([](std::uint64_t, const auto&) {});  // Refuses before anything is written.
    const char* const source = static_cast<const char*>(bytes);
    part.forEachObject([&](std::uint64_t i, const auto& found) {
      // The container was taken for reading, since the scene counts references anew on each call
      // once it was taken for writing. A group has no references.
      auto& object = const_cast<std::decay_t<decltype(found)>&>(found);
      std::memcpy(reinterpret_cast<char*>(&object.desc.groups) + part.place(),
                  source + i * part.stride, size);
      ++object.groupVersions[group];
      ++object.version;
    });
    scene->versions.classes[objectClass] += static_cast<std::uint32_t>(count);
    scene->versions.version += static_cast<std::uint32_t>(count);
  });
}

std::uint32_t vrtkSceneGroupSet(const vrtkGroupPlace* place) {
  return guarded(nullptr, [&] {
    bool stored = false;
    if (place != nullptr && place->scene != nullptr && place->value != nullptr) {
      if (place->objectClass == VRDM_CLASS_SCENE_DATA) {
        stored = vrdmSetSceneDataValue(place->scene, place->group, place->value);
      } else if (vrdmValid(place->scene, place->objectClass, place->index)) {
        stored = vrdmSetDataValue(place->scene, place->objectClass, place->index, place->group,
                                  place->value);
      }
    }
    // Without a message: the caller gets the status alone.
    if (!stored) refuse(std::string());
  });
}
