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

void countAddedObject(const Scene& scene, ObjectClass objectClass, const void* desc) noexcept;
// The Desc is null for a free slot, and for a class without slots.
void discountRemovedObject(const Scene& scene, ObjectClass objectClass, std::int32_t index,
                           const void* desc) noexcept;
void setCountedReference(Scene& scene, const SlotEntry& slot, std::int32_t index, bool live,
                         void* desc, std::uint32_t word);
void discountList(const Scene& scene, const SlotEntry& slot, std::int32_t index,
                  const void* desc) noexcept;

}  // namespace detail

/// To be called after an object became live by an addition, with what it refers to.
template <typename Desc>
void noteAddition(Scene& scene, const Instance<Desc>& object) noexcept {
  std::uint32_t& additions = detail::SceneAccess::additions(scene, ClassInfo<Desc>::kClass);
  // 0 stands for a list that was never handed out.
  if (++additions == 0) additions = 1;
  if constexpr (kSlotCount<Desc> != 0) {
    if (countsAreKept(scene)) {
      detail::countAddedObject(scene, ClassInfo<Desc>::kClass, &object.desc);
    }
  }
}

/// To be called before an object, of any kind of class, is freed. It may be free already.
template <typename Desc>
void noteRemoval(Scene& scene, const Stored<Desc>& object, std::int32_t index) noexcept {
  if (!countsAreKept(scene)) return;
  const void* desc = nullptr;
  if constexpr (kSlotCount<Desc> != 0) desc = object.live() ? &object.desc : nullptr;
  detail::discountRemovedObject(scene, ClassInfo<Desc>::kClass, index, desc);
}

/// Stores a word in the single slot of an object at a position; makes a list that many elements
/// long. There is such a slot.
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

/// Replaces a plain list of an object, which has the Desc.
void replaceReferenceList(Scene& scene, const SlotEntry& slot, std::int32_t index, void* desc,
                          std::vector<std::int32_t>&& words) noexcept;

/// To be called before the elements of an object's list are handed out for writing. Nothing is
/// noted for coded lists and empty ones, nor for single slots.
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
