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

/// Returns whether the slot at a position is a single one.
template <typename Desc>
constexpr bool isSingle([[maybe_unused]] std::uint32_t position) {
  if constexpr (kSingleSlotCount<Desc> == 0) {
    return false;
  } else {
    return position < kSingleSlotCount<Desc>;
  }
}

/// Returns the size in bytes of all single slots of a class, with which each Desc begins.
inline std::size_t singleReferencesSize(const ClassEntry& owner) {
  return owner.singleSlots * sizeof(std::int32_t);
}

/// The same for the class of a Desc.
template <typename Desc>
inline constexpr std::size_t kSingleReferencesSize = kSingleSlotCount<Desc> * sizeof(std::int32_t);

/// Returns the single slot at a position below kSingleSlotCount.
template <typename Desc>
std::int32_t& singleReferenceAt(Desc& desc, std::uint32_t position) {
  return reinterpret_cast<std::int32_t*>(&desc)[position];
}
template <typename Desc>
std::int32_t singleReferenceAt(const Desc& desc, std::uint32_t position) {
  return reinterpret_cast<const std::int32_t*>(&desc)[position];
}

/// Returns the list at a position; null for a single slot and past the last slot.
template <typename Desc>
const SlotEntry* findList(std::uint32_t position) {
  return isSingle<Desc>(position) ? nullptr : findSlot<Desc>(position);
}

/// The index in the single slot at a position; the length of a list; 0 past the last slot.
template <typename Desc>
std::int32_t referenceOrCount(const Desc& desc, std::uint32_t position) {
  if (isSingle<Desc>(position)) return singleReferenceAt(desc, position);
  const SlotEntry* const list = findSlot<Desc>(position);
  return list ? static_cast<std::int32_t>(referenceList(&desc, *list).size()) : 0;
}

/// The first element of the list at a position; null for an empty one, for a single slot and past
/// the last slot.
template <typename Desc>
std::int32_t* referenceElements(Desc& desc, std::uint32_t position) {
  const SlotEntry* const list = findList<Desc>(position);
  if (!list) return nullptr;
  std::vector<std::int32_t>& words = referenceList(&desc, *list);
  return words.empty() ? nullptr : words.data();
}
template <typename Desc>
const std::int32_t* referenceElements(const Desc& desc, std::uint32_t position) {
  return referenceElements(const_cast<Desc&>(desc), position);
}

}  // namespace vrnt::data

#endif
