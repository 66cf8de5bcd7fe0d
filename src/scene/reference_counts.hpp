// How often objects are referred to, and the changes of references that the counts keep up with.
//
// The first count for a class reads all objects that can refer to it. The scene then keeps the
// counts of each slot that was read, and the functions below keep them up to date. What a host can
// change without a call is read again for each count: a list whose elements were handed out for
// writing, until the next addition to its class, which ends the pointers to them; and all objects
// of a class whose container was handed out for writing.
#ifndef VORNATH_SCENE_REFERENCE_COUNTS_HPP
#define VORNATH_SCENE_REFERENCE_COUNTS_HPP

#include <atomic>
#include <cstdint>
#include <vector>

#include "scene/class_table.hpp"
#include "scene/reference_slots.hpp"
#include "scene/scene_access.hpp"
#include "vornath_data/scene.hpp"

namespace vrnt::data {

/// The single slots and the elements of plain lists of live objects that refer to an object. Coded
/// lists aren't counted, which hosts know: what is used by them alone (lights, decals, shapes in
/// light groups) has a count of 0.
/// Threads: any number of threads may count on one scene that none of them changes.
std::uint32_t countReferences(const Scene& scene, ObjectClass target, std::int32_t index) noexcept;

/// Whether the scene keeps counts: else a change of references needs no more than to be made.
inline bool countsAreKept(const Scene& scene) noexcept {
  return detail::SceneAccess::kept(scene).load(std::memory_order_acquire) != nullptr;
}

namespace detail {

void countAddedObject(const Scene& scene, ObjectClass objectClass, std::int32_t index) noexcept;
void discountRemovedObject(const Scene& scene, ObjectClass objectClass,
                           std::int32_t index) noexcept;
void setCountedReference(Scene& scene, const SlotEntry& slot, std::int32_t index, void* desc,
                         std::uint32_t word);
void discountList(const Scene& scene, const SlotEntry& slot, std::int32_t index,
                  const void* desc) noexcept;

}  // namespace detail

/// To be called after an object became live by an addition, with what it refers to.
inline void noteAddition(Scene& scene, ObjectClass objectClass, std::uint32_t index) noexcept {
  std::uint32_t& additions = detail::SceneAccess::additions(scene, objectClass);
  // 0 stands for a list that was never handed out.
  if (++additions == 0) additions = 1;
  if (countsAreKept(scene)) {
    detail::countAddedObject(scene, objectClass, static_cast<std::int32_t>(index));
  }
}

/// To be called before an object is freed. It may be free already.
inline void noteRemoval(Scene& scene, ObjectClass objectClass, std::int32_t index) noexcept {
  if (countsAreKept(scene)) detail::discountRemovedObject(scene, objectClass, index);
}

/// Stores a word in a single slot of an object, which has the Desc; makes a list that many elements
/// long.
/// Errors: throws std::bad_alloc, with nothing changed.
inline void setReference(Scene& scene, const SlotEntry& slot, std::int32_t index, void* desc,
                         std::uint32_t word) {
  if (slot.form == SlotForm::Single && !countsAreKept(scene)) {
    singleReference(desc, slot) = static_cast<std::int32_t>(word);
  } else {
    detail::setCountedReference(scene, slot, index, desc, word);
  }
}

/// Replaces a plain list of an object, which has the Desc.
void replaceReferenceList(Scene& scene, const SlotEntry& slot, std::int32_t index, void* desc,
                          std::vector<std::int32_t>&& words) noexcept;

/// To be called before the elements of a list are handed out for writing. Nothing is noted for
/// coded lists and empty ones, nor for single slots.
template <typename Desc>
void noteListHandedOut(Scene& scene, const SlotEntry& slot, std::int32_t index) noexcept {
  if constexpr (detail::hasPlainList<Desc>()) {
    Instance<Desc>& object = writable<Desc>(scene).at(index);
    if (slot.form != SlotForm::List || referenceList(&object.desc, slot).empty()) return;
    object.listHandedOut = detail::SceneAccess::additions(scene, slot.owner);
    if (countsAreKept(scene)) detail::discountList(scene, slot, index, &object.desc);
  }
}

}  // namespace vrnt::data

#endif
