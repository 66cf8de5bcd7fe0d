// The flat functions over the objects of a scene. Each goes from a class number to the class's Desc
// by visitClass() and says there, kind by kind, what the class allows; nothing is caught.
#include "vornath_data/scene_interface.h"

#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "group_access.hpp"
#include "links.hpp"
#include "object_operations.hpp"
#include "reference_counts.hpp"
#include "scene_access.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/texture_references.hpp"

using vrnt::Value;
using vrnt::data::AssetHandle;
using vrnt::data::ClassInfo;
using vrnt::data::CountedSlot;
using vrnt::data::kGroupCount;
using vrnt::data::kIsAsset;
using vrnt::data::kIsCounted;
using vrnt::data::kIsInstance;
using vrnt::data::kIsProgram;
using vrnt::data::kSlotCount;
using vrnt::data::Scene;
using vrnt::data::SceneData;
using vrnt::data::visitClass;
using vrnt::data::visitLink;
using vrnt::data::visitRecord;
using vrnt::data::visitSlot;

namespace {

/// Not a slot number: nothing was added.
constexpr std::uint32_t kNothingAdded = UINT32_MAX;

constexpr auto kFalse = [] { return false; };

template <typename T>
constexpr T* null() {
  return nullptr;
}

// A host's descriptor: its bytes, wherever they lie.
template <typename Desc>
Desc readDesc(const void* bytes) {
  Desc desc;
  std::memcpy(&desc, bytes, sizeof(Desc));
  return desc;
}

// What a value names becomes the whole of the object's textures.
template <typename Desc>
void replaceTextures(Scene& scene, std::int32_t index) {
  using Texture = vrnt::data::Asset<vrnt::detail::TextureDesc>;
  vrnt::data::forEachCountedSlot<Desc>([&scene, index](auto slot) {
    if constexpr (std::is_same_v<typename decltype(slot)::Link, vrnt::RefList<Texture>>) {
      const Value& value = vrnt::data::writable<Desc>(scene).at(index).value;
      std::vector<std::int32_t> words;
      if (value) {
        for (const auto texture : vrnt::data::extractTextureReferences(value)) {
          words.push_back(texture.index);
        }
      }
      decltype(slot)::replaceList(scene, index, std::move(words));
    }
  });
}

}  // namespace

Scene* vrdmCreateScene() { return new (std::nothrow) Scene(); }

void vrdmDestroyScene(Scene* scene) { delete scene; }

const vrnt::UniqueId* vrdmSceneId(const Scene* scene) { return &scene->id; }

vrntValue_t* vrdmGetSceneDataValue(const Scene* scene, std::uint32_t group) {
  return visitRecord<SceneData>(
      scene->data, group,
      [](const auto& record, auto position) {
        return vrnt::data::groupValue<SceneData>(position, record).release();
      },
      null<vrntValue_t>);
}

bool vrdmSetSceneDataValue(Scene* scene, std::uint32_t group, const vrntValue_t* value) {
  return visitRecord<SceneData>(
      scene->data, group,
      [=](auto& record, auto position) {
        // Unlike for the groups of an object, nothing counts before the check.
        if (!vrnt::data::hasGroupType<SceneData>(position, value)) return false;
        ++scene->versions.groups[position];
        ++scene->versions.version;
        vrnt::data::storeGroup(record, value);
        return true;
      },
      kFalse);
}

std::uint32_t vrdmContainerSize(const Scene* scene, std::uint32_t objectClass) {
  return visitClass(
      objectClass,
      [scene](auto tag) { return scene->container<typename decltype(tag)::Desc>().size(); },
      [] { return std::uint32_t{0}; });
}

bool vrdmValid(const Scene* scene, std::uint32_t objectClass, std::int32_t index) {
  return visitClass(
      objectClass,
      [=](auto tag) { return scene->container<typename decltype(tag)::Desc>().valid(index); },
      kFalse);
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
      null<const vrnt::UniqueId>);
}

bool vrdmRemove(Scene* scene, std::uint32_t objectClass, std::int32_t index) {
  return visitClass(
      objectClass,
      [=](auto tag) {
        vrnt::data::removeObject<typename decltype(tag)::Desc>(*scene, index);
        return true;
      },
      kFalse);
}

std::uint32_t vrdmCountReferences(const Scene* scene, std::uint32_t objectClass,
                                  std::int32_t index) {
  return visitClass(
      objectClass,
      [=](auto tag) {
        return vrnt::data::countReferences<typename decltype(tag)::Desc>(*scene, index);
      },
      [] { return std::uint32_t{0}; });
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
      // Hosts know that an addition past the last class looks like slot 0.
      [] { return std::uint32_t{0}; });
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
      null<const char>);
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
      [] { return std::uint32_t{0}; });
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
      null<AssetStorage*>);
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
      kFalse);
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
      [] { return std::uint32_t{0}; });
}

vrntValue_t* vrdmGetDataValue(const Scene* scene, std::uint32_t objectClass, std::int32_t index,
                              std::uint32_t group) {
  return visitClass(
      objectClass,
      [=](auto tag) -> vrntValue_t* {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kGroupCount<Desc> == 0) {
          return nullptr;
        } else {
          return visitRecord<Desc>(
              scene->container<Desc>().at(index).desc.groups, group,
              [](const auto& record, auto position) {
                return vrnt::data::groupValue<Desc>(position, record).release();
              },
              null<vrntValue_t>);
        }
      },
      null<vrntValue_t>);
}

bool vrdmSetDataValue(Scene* scene, std::uint32_t objectClass, std::int32_t index,
                      std::uint32_t group, const vrntValue_t* value) {
  return visitClass(
      objectClass,
      [=](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        // The class counts the attempt: only the object's own counters wait for the check.
        if constexpr (kIsInstance<Desc>) vrnt::data::countClassChange<Desc>(*scene);
        if constexpr (kGroupCount<Desc> == 0) {
          return false;
        } else {
          auto& object = vrnt::data::writable<Desc>(*scene).at(index);
          return visitRecord<Desc>(
              object.desc.groups, group,
              [&object, value](auto& record, auto position) {
                if (!vrnt::data::hasGroupType<Desc>(position, value)) return false;
                ++object.groupVersions[position];
                ++object.version;
                vrnt::data::storeGroup(record, value);
                return true;
              },
              kFalse);
        }
      },
      kFalse);
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
      null<vrntValue_t>);
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
        // An instance without a value takes note of nothing, and still says yes.
        return kIsInstance<Desc>;
      },
      kFalse);
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
          return visitLink(
              scene->container<Desc>().at(index), slot,
              [](const auto& link) { return vrnt::data::linkWord(link); },
              [] { return std::int32_t{0}; });
        }
      },
      [] { return std::int32_t{0}; });
}

// Hosts link to both names of each pair; the kind of slot alone decides what is meant.
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
          auto& object = vrnt::data::writable<Desc>(*scene).at(index);
          return visitSlot<Desc>(
              slot,
              [=, &object](const auto& declared, auto position) {
                using Link = typename std::decay_t<decltype(declared)>::Member;
                if constexpr (kIsCounted<Link>) {
                  CountedSlot<Desc, decltype(position)::value>::setWord(*scene, index, word);
                } else {
                  (object.desc.*declared.member).words.resize(word, Link::kNoTarget);
                }
                vrnt::data::countReferenceChange(object);
                return true;
              },
              kFalse);
        }
      },
      kFalse);
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
          return visitLink(
              scene->container<Desc>().at(index), slot,
              [](const auto& link) { return vrnt::data::linkElements(link); },
              null<const std::int32_t>);
        }
      },
      null<const std::int32_t>);
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
          auto& object = vrnt::data::writable<Desc>(*scene).at(index);
          return visitSlot<Desc>(
              slot,
              [=, &object](const auto& declared, auto position) {
                using Link = typename std::decay_t<decltype(declared)>::Member;
                if constexpr (kIsCounted<Link>) {
                  CountedSlot<Desc, decltype(position)::value>::noteHandingOut(*scene, index);
                }
                // Also for a single slot: a host may call this just to record a change.
                vrnt::data::countReferenceChange(object);
                return vrnt::data::linkElements(object.desc.*declared.member);
              },
              null<std::int32_t>);
        }
      },
      null<std::int32_t>);
}

void vrdmUpdateTextureReferences(Scene* scene, std::uint32_t objectClass, std::int32_t index) {
  visitClass(
      objectClass,
      [=](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kIsInstance<Desc>) vrnt::data::countClassChange<Desc>(*scene);
        if constexpr (kSlotCount<Desc> != 0) {
          auto& object = vrnt::data::writable<Desc>(*scene).at(index);
          if constexpr (ClassInfo<Desc>::kHasValue) replaceTextures<Desc>(*scene, index);
          vrnt::data::countReferenceChange(object);
        }
      },
      [] {});
}
