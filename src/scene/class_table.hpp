// The catalogue as constant tables, for code that is the same for all classes and looks classes,
// groups and slots up by index. The tables are derived from the headers of the classes. For the C++
// types of a class, use visitClass().
#ifndef VORNATH_SCENE_CLASS_TABLE_HPP
#define VORNATH_SCENE_CLASS_TABLE_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "vornath_data/catalogue/class_list.hpp"

namespace vrnt::data {

/// A group of a class, or of SceneData.
struct GroupEntry {
  const char* name;       ///< static
  const char* schema;     ///< static, in canonical text
  std::uint32_t offset;   ///< offset of the record in the class's Groups, in bytes
  std::uint32_t size;     ///< size of the record, in bytes
  std::uint32_t ordinal;  ///< index in kGroupTable
};

/// How a Desc stores a slot.
enum class SlotForm : std::uint8_t {
  Single,    ///< a Ref
  List,      ///< a RefList
  CodedList  ///< a CodedRefList
};

/// A reference slot of a class.
struct SlotEntry {
  const char* name;  ///< static
  ReferenceKind kind;
  ObjectClass target;     ///< a class, or kEmitterTarget
  ObjectClass owner;      ///< the class that has the slot
  std::uint32_t offset;   ///< offset in the class's Desc, in bytes
  std::uint32_t ordinal;  ///< index in kSlotTable
  SlotForm form;
};

/// A class, or SceneData, which has only groups.
struct ClassEntry {
  const char* name;  ///< static; null for SceneData
  ObjectKind kind;
  bool hasValue;
  std::uint32_t singleSlots;  ///< number of single slots; they come first, and lists follow
  std::span<const GroupEntry> groups;
  std::span<const SlotEntry> slots;
  /// The slots of all classes that refer to objects of this class, without coded lists.
  std::span<const SlotEntry* const> referrers;
};

/// The indices at which the groups and slots of a class begin in the tables of all groups and
/// slots. The last class is followed by SceneData, and SceneData by the sizes of the tables.
struct FirstEntry {
  std::size_t group;
  std::size_t slot;
};
inline constexpr std::array<FirstEntry, kClassCount + 2> kFirstEntries = [] {
  std::array<FirstEntry, kClassCount + 2> first{};
  std::size_t next = 0;
  const auto add = [&](std::size_t groups, std::size_t slots) {
    first[next + 1] = {first[next].group + groups, first[next].slot + slots};
    ++next;
  };
  forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    add(kGroupCount<Desc>, kSlotCount<Desc>);
  });
  add(kGroupCount<SceneData>, 0);
  return first;
}();
inline constexpr std::size_t kTotalSlotCount = kFirstEntries.back().slot;

/// All groups in class order, those of SceneData last.
extern const std::array<GroupEntry, kTotalGroupCount> kGroupTable;
/// All slots in class order.
extern const std::array<SlotEntry, kTotalSlotCount> kSlotTable;
/// All classes in order, SceneData last.
extern const std::array<ClassEntry, kClassCount + 1> kClassTable;

/// Returns the entry of a class.
inline const ClassEntry& classEntry(ObjectClass objectClass) {
  return kClassTable[static_cast<std::size_t>(objectClass)];
}

/// The index of a Desc's class in kClassTable.
template <typename Desc>
inline constexpr std::size_t kClassIndex = static_cast<std::size_t>(ClassInfo<Desc>::kClass);
template <>
inline constexpr std::size_t kClassIndex<SceneData> = kClassCount;

/// Returns the entry of a Desc's class.
template <typename Desc>
const ClassEntry& classEntry() {
  return kClassTable[kClassIndex<Desc>];
}

/// Returns the entry of the class with the code `number`; null if no class has it.
inline const ClassEntry* findClass(std::uint32_t number) {
  return number < kClassCount ? &kClassTable[number] : nullptr;
}

/// Does the same as findClass(), but returns the entry of SceneData if all bits are set.
inline const ClassEntry* findClassOrSceneData(std::uint32_t number) {
  if (number == static_cast<std::uint32_t>(ObjectClass::SceneData)) return &classEntry<SceneData>();
  return findClass(number);
}

/// Returns the group of a class with the index `position`; null if there is none.
inline const GroupEntry* findGroup(const ClassEntry& owner, std::uint32_t position) {
  return position < owner.groups.size() ? &owner.groups[position] : nullptr;
}
template <typename Desc>
const GroupEntry* findGroup(std::uint32_t position) {
  if (position >= kGroupCount<Desc>) return nullptr;
  return &kGroupTable[kFirstEntries[kClassIndex<Desc>].group + position];
}

/// The number of single slots of a Desc. They are its first slots; the others are lists.
template <typename Desc>
inline constexpr std::uint32_t kSingleSlotCount = [] {
  std::uint32_t count = 0;
  forEachSlot<Desc>([&count](const auto& slot, auto) {
    if (slot.kind == ReferenceKind::Required || slot.kind == ReferenceKind::Optional) ++count;
  });
  return count;
}();

/// Returns the slot of a class with the index `position`; null if there is none.
inline const SlotEntry* findSlot(const ClassEntry& owner, std::uint32_t position) {
  return position < owner.slots.size() ? &owner.slots[position] : nullptr;
}
template <typename Desc>
const SlotEntry* findSlot(std::uint32_t position) {
  if (position >= kSlotCount<Desc>) return nullptr;
  return &kSlotTable[kFirstEntries[kClassIndex<Desc>].slot + position];
}

}  // namespace vrnt::data

#endif
