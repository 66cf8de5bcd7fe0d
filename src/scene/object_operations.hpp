// Adding and removing objects, written once for all classes. A class is named by its
// Desc.
#ifndef VORNATH_SCENE_OBJECT_OPERATIONS_HPP
#define VORNATH_SCENE_OBJECT_OPERATIONS_HPP

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "asset_block.hpp"
#include "reference_counts.hpp"
#include "scene_access.hpp"
#include "vornath_data/scene.hpp"

namespace vrnt::data {

template <typename Desc>
inline constexpr bool kIsProgram = ClassInfo<Desc>::kKind == ObjectKind::Program;
template <typename Desc>
inline constexpr bool kIsAsset = ClassInfo<Desc>::kKind == ObjectKind::Asset;
template <typename Desc>
inline constexpr bool kIsInstance = ClassInfo<Desc>::kKind == ObjectKind::Instance;

/// Raises the counters that say that an object of the class was added, removed or changed.
template <typename Desc>
void countClassChange(Scene& scene) {
  ++scene.versions.classes[static_cast<std::size_t>(ClassInfo<Desc>::kClass)];
  ++scene.versions.version;
}

/// Raises the counters that say that a slot of the object changed.
template <typename Desc>
void countReferenceChange(Instance<Desc>& object) {
  ++object.referencesVersion;
  ++object.version;
}

/// Raises every counter of the object.
template <typename Desc>
void countWholeChange(Instance<Desc>& object) {
  ++object.version;
  if constexpr (kSlotCount<Desc> != 0) ++object.referencesVersion;
  if constexpr (kGroupCount<Desc> != 0) {
    for (std::uint32_t& groupVersion : object.groupVersions) ++groupVersion;
  }
}

/// Room for a program's text and its terminator, all zero. Errors: throws std::bad_alloc.
inline char* allocateText(std::size_t length) {
  auto* text = static_cast<char*>(std::calloc(length + 1, 1));
  if (!text) throw std::bad_alloc();
  return text;
}

/// Adds a program with a copy of the text.
template <typename Source>
std::uint32_t addProgram(Scene& scene, const char* text, std::size_t length) {
  Program<Source> added;
  added.text = allocateText(length);
  if (length != 0) std::memcpy(added.text, text, length);
  added.length = length;
  added.id = UniqueId::hash(text, length);
  countClassChange<Source>(scene);
  auto& container = writable<Source>(scene);
  const std::uint32_t index = container.allocate();
  container.slots[index] = std::move(added);
  return index;
}

/// Adds an asset that shares the bytes.
template <typename Desc>
std::uint32_t addAsset(Scene& scene, const Desc& desc, AssetHandle storage) {
  const UniqueId id = UniqueId::generate();
  countClassChange<Desc>(scene);
  auto& container = writable<Desc>(scene);
  const std::uint32_t index = container.allocate();
  container.slots[index] = Asset<Desc>{id, desc, std::move(storage)};
  if (!container.slots[index].live()) container.leftFree(index);
  return index;
}

/// Replaces an asset's descriptor, and its bytes by a copy of as many as the new one says. The slot
/// isn't checked for being live, so that this can bring a free one to life.
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

/// Adds an object with the class's defaults. A value that the slot's former object left stays, and
/// so do the counts.
template <typename Desc>
std::uint32_t createInstance(Scene& scene) {
  auto& container = writable<Desc>(scene);
  const std::uint32_t index = container.allocate();
  Instance<Desc>& created = container.slots[index];
  created.deleted = false;
  created.desc = Desc();
  noteAddition<Desc>(scene, index);
  countWholeChange(created);
  countClassChange<Desc>(scene);
  return index;
}

/// Frees a slot. No reference to the object is looked for.
template <typename Desc>
void removeObject(Scene& scene, std::int32_t index) {
  countClassChange<Desc>(scene);
  auto& container = writable<Desc>(scene);
  noteRemoval<Desc>(scene, index);
  container.at(index).markFree();
  container.freed(index);
}

}  // namespace vrnt::data

#endif
