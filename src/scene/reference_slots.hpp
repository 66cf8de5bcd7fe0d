// Access to the contents of an object's reference slots. `desc` is the address of the object's
// Desc, and `slot` is an entry in the table of its class.
#ifndef VORNATH_SCENE_REFERENCE_SLOTS_HPP
#define VORNATH_SCENE_REFERENCE_SLOTS_HPP

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "scene/class_table.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

// These functions access the word of a single slot and the vector of a list directly, whatever
// class they refer to.
static_assert(std::is_standard_layout_v<Ref<void>> && sizeof(Ref<void>) == sizeof(std::int32_t) &&
                  std::is_standard_layout_v<RefList<void>> &&
                  std::is_standard_layout_v<CodedRefList<void>>,
              "a slot begins with the one thing that it holds");

/// Returns the index in a single slot.
inline std::int32_t& singleReference(void* desc, const SlotEntry& slot) {
  return *reinterpret_cast<std::int32_t*>(static_cast<char*>(desc) + slot.offset);
}
inline std::int32_t singleReference(const void* desc, const SlotEntry& slot) {
  return *reinterpret_cast<const std::int32_t*>(static_cast<const char*>(desc) + slot.offset);
}

/// Returns the words of a list, plain or coded.
inline std::vector<std::int32_t>& referenceList(void* desc, const SlotEntry& slot) {
  return *reinterpret_cast<std::vector<std::int32_t>*>(static_cast<char*>(desc) + slot.offset);
}
inline const std::vector<std::int32_t>& referenceList(const void* desc, const SlotEntry& slot) {
  return *reinterpret_cast<const std::vector<std::int32_t>*>(static_cast<const char*>(desc) +
                                                             slot.offset);
}

/// Returns the size in bytes of all single slots of a class, with which each Desc begins.
inline std::size_t singleReferencesSize(const ClassEntry& owner) {
  return owner.singleSlots * sizeof(std::int32_t);
}

/// Returns the index in a single slot, or the length of a list.
inline std::int32_t referenceOrCount(const void* desc, const SlotEntry& slot) {
  if (slot.form == SlotForm::Single) return singleReference(desc, slot);
  return static_cast<std::int32_t>(referenceList(desc, slot).size());
}

/// Returns a pointer to the first element of a list; null for an empty list and a single slot.
inline std::int32_t* referenceElements(void* desc, const SlotEntry& slot) {
  if (slot.form == SlotForm::Single) return nullptr;
  std::vector<std::int32_t>& list = referenceList(desc, slot);
  return list.empty() ? nullptr : list.data();
}
inline const std::int32_t* referenceElements(const void* desc, const SlotEntry& slot) {
  return referenceElements(const_cast<void*>(desc), slot);
}

}  // namespace vrnt::data

#endif
