// The flat functions for scenes. Each calls visitClass() to get the Desc of a class code, and then
// distinguishes what the kind of class allows. Groups and slots are looked up in the class's table.
// No exception is caught.
#include <cstring>
#include <new>

#include "scene/class_table.hpp"
#include "scene/group_value.hpp"
#include "scene/object_operations.hpp"
#include "scene/reference_counts.hpp"
#include "scene/reference_slots.hpp"
#include "scene/scene_access.hpp"
#include "scene/scene_file.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/scene_interface.h"

using vrnt::Value;
using vrnt::data::AssetHandle;
using vrnt::data::ClassEntry;
using vrnt::data::ClassInfo;
using vrnt::data::findClass;
using vrnt::data::findGroup;
using vrnt::data::GroupEntry;
using vrnt::data::kGroupCount;
using vrnt::data::kIsAsset;
using vrnt::data::kIsInstance;
using vrnt::data::kIsProgram;
using vrnt::data::kSlotCount;
using vrnt::data::Scene;
using vrnt::data::SceneData;
using vrnt::data::visitClass;

namespace {

/// Returned instead of an index if nothing was added.
constexpr std::uint32_t kNothingAdded = UINT32_MAX;

// The results for an invalid class code.
constexpr auto answerFalse = [] { return false; };
constexpr auto answerZero = [] { return std::uint32_t{0}; };
template <typename T>
constexpr T* answerNull() {
  return nullptr;
}

// Copies a host's descriptor, which need not be aligned.
template <typename Desc>
Desc readDesc(const void* bytes) {
  Desc desc;
  std::memcpy(&desc, bytes, sizeof(Desc));
  return desc;
}

// Returns the records of an object's groups; null for a class without groups.
const void* groupsOf(const Scene& scene, std::uint32_t objectClass, std::int32_t index) {
  return visitClass(
      objectClass,
      [&scene, index](auto tag) -> const void* {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kGroupCount<Desc> == 0) {
          return nullptr;
        } else {
          return &scene.container<Desc>().at(index).desc.groups;
        }
      },
      answerNull<const void>);
}

}  // namespace

Scene* vrdmCreateScene() { return new (std::nothrow) Scene(); }

void vrdmDestroyScene(Scene* scene) { delete scene; }

const vrnt::UniqueId* vrdmSceneId(const Scene* scene) { return &scene->id; }

void vrdmSerialize(const Scene* scene, const char* path) {
  vrnt::data::writeSceneFile(*scene, path);
}

Scene* vrdmDeserialize(const char* path) { return vrnt::data::readSceneFile(path).release(); }

vrntValue_t* vrdmGetSceneDataValue(const Scene* scene, std::uint32_t group) {
  const GroupEntry* const found = findGroup<SceneData>(group);
  return found ? vrnt::data::groupValue(&scene->data, *found).release() : nullptr;
}

bool vrdmSetSceneDataValue(Scene* scene, std::uint32_t group, const vrntValue_t* value) {
  const GroupEntry* const found = findGroup<SceneData>(group);
  // Unlike vrdmSetDataValue(), increments no counter before the check.
  if (!found || !vrnt::data::hasGroupType(value, *found)) return false;
  ++scene->versions.groups[group];
  ++scene->versions.version;
  vrnt::data::storeGroupValue(&scene->data, *found, value);
  return true;
}

std::uint32_t vrdmContainerSize(const Scene* scene, std::uint32_t objectClass) {
  return visitClass(
      objectClass,
      [scene](auto tag) { return scene->container<typename decltype(tag)::Desc>().size(); },
      answerZero);
}

bool vrdmValid(const Scene* scene, std::uint32_t objectClass, std::int32_t index) {
  return visitClass(
      objectClass,
      [=](auto tag) { return scene->container<typename decltype(tag)::Desc>().valid(index); },
      answerFalse);
}

const vrnt::UniqueId* vrdmGetUniqueId(const Scene* scene, std::uint32_t objectClass,
                                      std::int32_t index) {
  return visitClass(
      objectClass,
      [=](auto tag) -> const vrnt::UniqueId* {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kIsInstance<Desc>) {
          return nullptr;
        } else {
          return &scene->container<Desc>().at(index).id;
        }
      },
      answerNull<const vrnt::UniqueId>);
}

bool vrdmRemove(Scene* scene, std::uint32_t objectClass, std::int32_t index) {
  return visitClass(
      objectClass,
      [=](auto tag) {
        vrnt::data::removeObject<typename decltype(tag)::Desc>(*scene, index);
        return true;
      },
      answerFalse);
}

std::uint32_t vrdmCountReferences(const Scene* scene, std::uint32_t objectClass,
                                  std::int32_t index) {
  if (!findClass(objectClass)) return 0;
  return vrnt::data::countReferences(
      *scene, vrnt::data::ObjectClass{static_cast<std::int32_t>(objectClass)}, index);
}

std::uint32_t vrdmAddProgram(Scene* scene, std::uint32_t objectClass, const char* text) {
  return visitClass(
      objectClass,
      [=](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kIsProgram<Desc>) {
          return vrnt::data::addProgram<Desc>(*scene, text, std::strlen(text));
        } else {
          return kNothingAdded;
        }
      },
      // Hosts rely on this: the result for an invalid class code looks like index 0.
      answerZero);
}

const char* vrdmGetProgramSource(const Scene* scene, std::uint32_t objectClass,
                                 std::int32_t index) {
  return visitClass(
      objectClass,
      [=](auto tag) -> const char* {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kIsProgram<Desc>) {
          return scene->container<Desc>().at(index).source();
        } else {
          return nullptr;
        }
      },
      answerNull<const char>);
}

std::uint32_t vrdmAddAsset(Scene* scene, std::uint32_t objectClass, const void* desc,
                           AssetStorage* const* storage) {
  return visitClass(
      objectClass,
      [=](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kIsAsset<Desc>) {
          return vrnt::data::addAsset(*scene, readDesc<Desc>(desc), AssetHandle::share(*storage));
        } else {
          return kNothingAdded;
        }
      },
      answerZero);
}

AssetStorage** vrdmGetAssetStorage(const Scene* scene, std::uint32_t objectClass,
                                   std::int32_t index, void* desc) {
  return visitClass(
      objectClass,
      [=](auto tag) -> AssetStorage** {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kIsAsset<Desc>) {
          const auto& asset = scene->container<Desc>().at(index);
          if (desc) std::memcpy(desc, &asset.desc, sizeof(Desc));
          return asset.storage.place();
        } else {
          return nullptr;
        }
      },
      answerNull<AssetStorage*>);
}

bool vrdmUpdateAsset(Scene* scene, std::uint32_t objectClass, std::int32_t index, const void* desc,
                     const void* bytes) {
  return visitClass(
      objectClass,
      [=](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kIsAsset<Desc>) {
          vrnt::data::updateAsset(*scene, index, readDesc<Desc>(desc), bytes);
          return true;
        } else {
          return false;
        }
      },
      answerFalse);
}

std::uint32_t vrdmCreateInstance(Scene* scene, std::uint32_t objectClass) {
  return visitClass(
      objectClass,
      [scene](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kIsInstance<Desc>) {
          return vrnt::data::createInstance<Desc>(*scene);
        } else {
          return kNothingAdded;
        }
      },
      answerZero);
}

vrntValue_t* vrdmGetDataValue(const Scene* scene, std::uint32_t objectClass, std::int32_t index,
                              std::uint32_t group) {
  const ClassEntry* const owner = findClass(objectClass);
  const GroupEntry* const found = owner ? findGroup(*owner, group) : nullptr;
  if (!found) return nullptr;
  return vrnt::data::groupValue(groupsOf(*scene, objectClass, index), *found).release();
}

bool vrdmSetDataValue(Scene* scene, std::uint32_t objectClass, std::int32_t index,
                      std::uint32_t group, const vrntValue_t* value) {
  return visitClass(
      objectClass,
      [=](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        // The counters of class and scene count the attempt; those of the object only a success.
        if constexpr (kIsInstance<Desc>) vrnt::data::countClassChange<Desc>(*scene);
        if constexpr (kGroupCount<Desc> == 0) {
          return false;
        } else {
          const GroupEntry* const found = findGroup<Desc>(group);
          if (!found || !vrnt::data::hasGroupType(value, *found)) return false;
          auto& object = vrnt::data::writable<Desc>(*scene).at(index);
          ++object.groupVersions[group];
          ++object.version;
          vrnt::data::storeGroupValue(&object.desc.groups, *found, value);
          return true;
        }
      },
      answerFalse);
}

vrntValue_t* vrdmGetInstanceValue(const Scene* scene, std::uint32_t objectClass,
                                  std::int32_t index) {
  return visitClass(
      objectClass,
      [=](auto tag) -> vrntValue_t* {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (ClassInfo<Desc>::kHasValue) {
          return Value(scene->container<Desc>().at(index).value).release();
        } else {
          return nullptr;
        }
      },
      answerNull<vrntValue_t>);
}

bool vrdmSetInstanceValue(Scene* scene, std::uint32_t objectClass, std::int32_t index,
                          const vrntValue_t* value) {
  return visitClass(
      objectClass,
      [=](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (ClassInfo<Desc>::kHasValue) {
          auto& object = vrnt::data::writable<Desc>(*scene).at(index);
          object.value = Value::share(value);
          ++object.version;
          vrnt::data::countClassChange<Desc>(*scene);
        }
        // An instance of a class without values stays as it is, and the result is still true.
        return kIsInstance<Desc>;
      },
      answerFalse);
}

std::int32_t vrdmGetReference(const Scene* scene, std::uint32_t objectClass, std::int32_t index,
                              std::uint32_t slot) {
  return visitClass(
      objectClass,
      [=](auto tag) -> std::int32_t {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (!kIsInstance<Desc>) {
          return -1;
        } else if constexpr (kSlotCount<Desc> == 0) {
          return 0;
        } else {
          return vrnt::data::referenceOrCount(scene->container<Desc>().at(index).desc, slot);
        }
      },
      [] { return std::int32_t{0}; });
}

// Hosts link to both names of each pair. The two do the same: the slot decides what is accessed.
std::int32_t vrdmGetReferenceCount(const Scene* scene, std::uint32_t objectClass,
                                   std::int32_t index, std::uint32_t slot) {
  return vrdmGetReference(scene, objectClass, index, slot);
}

bool vrdmSetReference(Scene* scene, std::uint32_t objectClass, std::int32_t index,
                      std::uint32_t slot, std::uint32_t word) {
  return visitClass(
      objectClass,
      [=](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kIsInstance<Desc>) vrnt::data::countClassChange<Desc>(*scene);
        if constexpr (kSlotCount<Desc> == 0) {
          return false;
        } else {
          if (slot >= kSlotCount<Desc>) return false;
          auto& object = vrnt::data::writable<Desc>(*scene).at(index);
          vrnt::data::setReference(*scene, object, index, slot, word);
          vrnt::data::countReferenceChange(object);
          return true;
        }
      },
      answerFalse);
}

bool vrdmSetReferenceCount(Scene* scene, std::uint32_t objectClass, std::int32_t index,
                           std::uint32_t slot, std::uint32_t word) {
  return vrdmSetReference(scene, objectClass, index, slot, word);
}

const std::int32_t* vrdmGetReferenceList(const Scene* scene, std::uint32_t objectClass,
                                         std::int32_t index, std::uint32_t slot) {
  return visitClass(
      objectClass,
      [=](auto tag) -> const std::int32_t* {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kSlotCount<Desc> == 0) {
          return nullptr;
        } else {
          return vrnt::data::referenceElements(scene->container<Desc>().at(index).desc, slot);
        }
      },
      answerNull<const std::int32_t>);
}

std::int32_t* vrdmModifyReferenceList(Scene* scene, std::uint32_t objectClass, std::int32_t index,
                                      std::uint32_t slot) {
  return visitClass(
      objectClass,
      [=](auto tag) -> std::int32_t* {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kIsInstance<Desc>) vrnt::data::countClassChange<Desc>(*scene);
        if constexpr (kSlotCount<Desc> == 0) {
          return nullptr;
        } else {
          if (slot >= kSlotCount<Desc>) return nullptr;
          auto& object = vrnt::data::writable<Desc>(*scene).at(index);
          vrnt::data::noteListHandedOut(*scene, object, index, slot);
          // Counts also for a single slot: a host may call this only to record a change.
          vrnt::data::countReferenceChange(object);
          return vrnt::data::referenceElements(object.desc, slot);
        }
      },
      answerNull<std::int32_t>);
}

void vrdmUpdateTextureReferences(Scene* scene, std::uint32_t objectClass, std::int32_t index) {
  visitClass(
      objectClass,
      [=](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kIsInstance<Desc>) vrnt::data::countClassChange<Desc>(*scene);
        if constexpr (kSlotCount<Desc> != 0) {
          if constexpr (ClassInfo<Desc>::kHasValue) {
            vrnt::data::updateTextureReferences<Desc>(*scene, index);
          }
          vrnt::data::countReferenceChange(vrnt::data::writable<Desc>(*scene).at(index));
        }
      },
      [] {});
}
