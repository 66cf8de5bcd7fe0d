// Adds, changes and removes objects. Each operation is written once for all classes; its template
// parameter is the Desc of the class.
#ifndef VORNATH_SCENE_OBJECT_OPERATIONS_HPP
#define VORNATH_SCENE_OBJECT_OPERATIONS_HPP

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "scene/asset_block.hpp"
#include "scene/class_table.hpp"
#include "scene/reference_counts.hpp"
#include "scene/scene_access.hpp"
#include "scene/slot_memory.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/texture_references.hpp"

namespace vrnt::data {

template <typename Desc>
inline constexpr bool kIsProgram = ClassInfo<Desc>::kKind == ObjectKind::Program;
template <typename Desc>
inline constexpr bool kIsAsset = ClassInfo<Desc>::kKind == ObjectKind::Asset;
template <typename Desc>
inline constexpr bool kIsInstance = ClassInfo<Desc>::kKind == ObjectKind::Instance;

/// Increments the change counters of the class and of the scene. Called when an object is added,
/// removed or changed.
template <typename Desc>
void countClassChange(Scene& scene) {
  ++scene.versions.classes[static_cast<std::size_t>(ClassInfo<Desc>::kClass)];
  ++scene.versions.version;
}

/// Increments the object's change counter and its counter of reference changes.
template <typename Desc>
void countReferenceChange(Instance<Desc>& object) {
  ++object.referencesVersion;
  ++object.version;
}

/// Increments all change counters of the object.
template <typename Desc>
void countWholeChange(Instance<Desc>& object) {
  ++object.version;
  if constexpr (kSlotCount<Desc> != 0) ++object.referencesVersion;
  if constexpr (kGroupCount<Desc> != 0) {
    for (std::uint32_t& groupVersion : object.groupVersions) ++groupVersion;
  }
}

/// Allocates zeroed memory for a program's text and its terminating NUL.
/// Errors: throws std::bad_alloc.
inline char* allocateText(std::size_t length) {
  auto* text = static_cast<char*>(std::calloc(length + 1, 1));
  if (!text) throw std::bad_alloc();
  return text;
}

/// Adds a program with a copy of the text. Returns its index.
template <typename Source>
std::uint32_t addProgram(Scene& scene, const char* text, std::size_t length) {
  Program<Source> added;
  added.text = allocateText(length);
  if (length != 0) std::memcpy(added.text, text, length);
  added.length = length;
  added.id = UniqueId::hash(text, length);
  countClassChange<Source>(scene);
  auto& container = writable<Source>(scene);
  const std::uint32_t index = allocateSlot(container);
  container.slots[index] = std::move(added);
  return index;
}

/// Adds an asset that shares the bytes. Returns its index.
template <typename Desc>
std::uint32_t addAsset(Scene& scene, const Desc& desc, AssetHandle storage) {
  const UniqueId id = UniqueId::generate();
  countClassChange<Desc>(scene);
  auto& container = writable<Desc>(scene);
  const std::uint32_t index = allocateSlot(container);
  container.slots[index] = Asset<Desc>{id, desc, std::move(storage)};
  if (!container.slots[index].live()) container.leftFree(index);
  return index;
}

/// Replaces an asset's descriptor, and replaces its bytes by a copy of `bytes`, whose size follows
/// from the new descriptor. Does not check whether the slot is live: a free slot becomes live.
/// Errors: throws std::bad_alloc, with nothing changed.
template <typename Desc>
void updateAsset(Scene& scene, std::int32_t index, const Desc& desc, const void* bytes) {
  const std::size_t size = desc.size();
  AssetHandle storage = allocateAsset(size);
  if (size != 0) std::memcpy(storage.get()->data, bytes, size);
  Asset<Desc>& asset = writable<Desc>(scene).at(index);
  asset.desc = desc;
  asset.storage = std::move(storage);
  countClassChange<Desc>(scene);
}

/// Adds an object with the defaults of its class. Returns its index. If the slot was used before,
/// the new object keeps the value of the former object, and its change counters continue.
template <typename Desc>
std::uint32_t createInstance(Scene& scene) {
  auto& container = writable<Desc>(scene);
  const std::uint32_t index = allocateSlot(container);
  Instance<Desc>& created = container.slots[index];
  created.deleted = false;
  created.desc = Desc();
  noteAddition(scene, created);
  countWholeChange(created);
  countClassChange<Desc>(scene);
  return index;
}

/// Removes an object and frees its slot. References to the object do not change.
template <typename Desc>
void removeObject(Scene& scene, std::int32_t index) {
  countClassChange<Desc>(scene);
  auto& container = writable<Desc>(scene);
  auto& object = container.at(index);
  noteRemoval<Desc>(scene, object, index);
  object.markFree();
  container.freed(index);
}

/// Replaces the list "textures" of an object by the textures that its value refers to, if the class
/// has such a list. Increments no change counter.
/// Errors: throws std::bad_alloc, with nothing changed.
template <typename Desc>
void updateTextureReferences(Scene& scene, std::int32_t index) {
  Instance<Desc>& object = writable<Desc>(scene).at(index);
  for (const SlotEntry& slot : classEntry<Desc>().slots) {
    if (slot.form != SlotForm::List || slot.target != ObjectClass::Texture) continue;
    std::vector<std::int32_t> words;
    if (object.value) {
      for (const auto texture : extractTextureReferences(object.value)) {
        words.push_back(texture.index);
      }
    }
    replaceReferenceList(scene, slot, index, &object.desc, std::move(words));
  }
}

}  // namespace vrnt::data

#endif
