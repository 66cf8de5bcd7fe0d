// Counts the references to objects, and keeps the counts up to date when references change.
//
// The first count for a class reads all objects that can refer to it. The scene then keeps the
// counts of each slot that was read, and the functions below keep them up to date. What a host can
// change without a call is read again for each count: a list whose elements were handed out for
// writing, until the next addition to its class invalidates the pointers to them; and all objects
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

/// Returns the number of references to an object: from single slots, and from elements of plain
/// lists, of live objects. References from coded lists are not counted, and hosts rely on this:
/// objects that only coded lists refer to (lights, decals, shapes in light groups) have a count
/// of 0.
/// Threads: any number of threads may count on one scene that none of them changes.
std::uint32_t countReferences(const Scene& scene, ObjectClass target, std::int32_t index) noexcept;

/// Returns whether the scene keeps counts. If not, a change of references has no counts to update.
inline bool countsAreKept(const Scene& scene) noexcept {
  return detail::SceneAccess::kept(scene).load(std::memory_order_acquire) != nullptr;
}

namespace detail {

void countAddedObject(const Scene& scene, ObjectClass objectClass, const void* desc) noexcept;
// The Desc is null for a free slot, and for a class without slots.
void discountRemovedObject(const Scene& scene, ObjectClass objectClass, std::int32_t index,
                           const void* desc) noexcept;
void setCountedReference(Scene& scene, const SlotEntry& slot, std::int32_t index, bool live,
                         void* desc, std::uint32_t word);
void discountList(const Scene& scene, const SlotEntry& slot, std::int32_t index,
                  const void* desc) noexcept;

}  // namespace detail

/// Updates the counts for a new object. Call it after the object became live with its references.
template <typename Desc>
void noteAddition(Scene& scene, const Instance<Desc>& object) noexcept {
  std::uint32_t& additions = detail::SceneAccess::additions(scene, ClassInfo<Desc>::kClass);
  // 0 means that a list was never handed out.
  if (++additions == 0) additions = 1;
  if constexpr (kSlotCount<Desc> != 0) {
    if (countsAreKept(scene)) {
      detail::countAddedObject(scene, ClassInfo<Desc>::kClass, &object.desc);
    }
  }
}

/// Updates the counts for an object of any class that is being removed. Call it before the slot is
/// freed. The slot may be free already.
template <typename Desc>
void noteRemoval(Scene& scene, const Stored<Desc>& object, std::int32_t index) noexcept {
  if (!countsAreKept(scene)) return;
  const void* desc = nullptr;
  if constexpr (kSlotCount<Desc> != 0) desc = object.live() ? &object.desc : nullptr;
  detail::discountRemovedObject(scene, ClassInfo<Desc>::kClass, index, desc);
}

/// Stores `word` in the single slot at a position below kSlotCount. If the slot is a list, changes
/// its length to `word` instead.
/// Errors: throws std::bad_alloc, with nothing changed.
template <typename Desc>
void setReference(Scene& scene, Instance<Desc>& object, std::int32_t index, std::uint32_t position,
                  std::uint32_t word) {
  if (isSingle<Desc>(position) && !countsAreKept(scene)) {
    singleReferenceAt(object.desc, position) = static_cast<std::int32_t>(word);
  } else {
    detail::setCountedReference(scene, *findSlot<Desc>(position), index, object.live(),
                                &object.desc, word);
  }
}

/// Replaces a plain list of an object. `desc` is the object's Desc.
void replaceReferenceList(Scene& scene, const SlotEntry& slot, std::int32_t index, void* desc,
                          std::vector<std::int32_t>&& words) noexcept;

/// Notes that a host can write to the elements of a list. Call it before they are handed out. Does
/// nothing for single slots, coded lists and empty lists.
template <typename Desc>
void noteListHandedOut(Scene& scene, Instance<Desc>& object, std::int32_t index,
                       std::uint32_t position) noexcept {
  if constexpr (detail::hasPlainList<Desc>()) {
    const SlotEntry* const list = findList<Desc>(position);
    if (!list || list->form != SlotForm::List) return;
    if (referenceList(&object.desc, *list).empty()) return;
    object.listHandedOut = detail::SceneAccess::additions(scene, ClassInfo<Desc>::kClass);
    if (object.live() && countsAreKept(scene)) {
      detail::discountList(scene, *list, index, &object.desc);
    }
  }
}

}  // namespace vrnt::data

#endif
