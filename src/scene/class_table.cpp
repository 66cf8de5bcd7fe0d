#include "scene/class_table.hpp"

#include <type_traits>

namespace vrnt::data {

namespace {

constexpr auto makeGroupTable() {
  std::array<GroupEntry, kTotalGroupCount> table{};
  std::uint32_t ordinal = 0;
  const auto add = [&](auto tag) {
    forEachGroup<typename decltype(tag)::Desc>([&](const auto& group, auto) {
      using Record = typename std::decay_t<decltype(group)>::Record;
      table[ordinal] = {group.name, group.schema, static_cast<std::uint32_t>(group.offset),
                        sizeof(Record), ordinal};
      ++ordinal;
    });
  };
  forEachClass(add);
  add(ClassTag<SceneData>{});
  return table;
}

constexpr std::size_t alignUp(std::size_t offset, std::size_t alignment) {
  return (offset + alignment - 1) / alignment * alignment;
}

template <typename Member>
constexpr SlotForm kFormOf = SlotForm::CodedList;
template <typename Target>
constexpr SlotForm kFormOf<Ref<Target>> = SlotForm::Single;
template <typename Target>
constexpr SlotForm kFormOf<RefList<Target>> = SlotForm::List;

template <typename Target>
constexpr ObjectClass kClassOf = kEmitterTarget;
template <template <typename> class Kind, typename Desc>
constexpr ObjectClass kClassOf<Kind<Desc>> = ClassInfo<Desc>::kClass;

constexpr SlotForm formOf(ReferenceKind kind) {
  switch (kind) {
    case ReferenceKind::Required:
    case ReferenceKind::Optional:
      return SlotForm::Single;
    case ReferenceKind::List:
      return SlotForm::List;
    case ReferenceKind::OrderedDecal:
    case ReferenceKind::Emitter:
      return SlotForm::CodedList;
  }
  throw "a slot has one of these kinds";
}

template <typename Desc>
struct SizeOfGroups {
  static constexpr std::size_t kSize = 0;
  static constexpr std::size_t kAlignment = 1;
};
template <typename Desc>
requires(kGroupCount<Desc> != 0) struct SizeOfGroups<Desc> {
  static constexpr std::size_t kSize = sizeof(typename Desc::Groups);
  static constexpr std::size_t kAlignment = alignof(typename Desc::Groups);
};

// A Desc consists of its slots in order, followed by its groups. The offsets of the slots follow
// from this; offsetof is not used, since lists are not plain bytes. Tests compare the offsets with
// the members.
template <typename Desc, typename OnSlot>
constexpr void forEachSlotOffset(const OnSlot& onSlot) {
  std::size_t end = 0;
  forEachSlot<Desc>([&](const auto& slot, auto) {
    using Member = typename std::decay_t<decltype(slot)>::Member;
    if (formOf(slot.kind) != kFormOf<Member>) throw "a slot's kind is that of its member";
    if (slot.target != kClassOf<typename Member::Target>) {
      throw "a slot's target is that of its member";
    }
    const std::size_t offset = alignUp(end, alignof(Member));
    onSlot(slot, kFormOf<Member>, static_cast<std::uint32_t>(offset));
    end = offset + sizeof(Member);
  });
  end = alignUp(end, SizeOfGroups<Desc>::kAlignment) + SizeOfGroups<Desc>::kSize;
  if (std::is_standard_layout_v<Desc> && alignUp(end, alignof(Desc)) == sizeof(Desc)) return;
  throw "a Desc has other members than its slots in order and its groups";
}

constexpr auto makeSlotTable() {
  std::array<SlotEntry, kTotalSlotCount> table{};
  std::uint32_t ordinal = 0;
  forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    if constexpr (kSlotCount<Desc> != 0) {
      forEachSlotOffset<Desc>([&](const auto& slot, SlotForm form, std::uint32_t offset) {
        table[ordinal] = {slot.name, slot.kind, slot.target, ClassInfo<Desc>::kClass,
                          offset,    ordinal,   form};
        ++ordinal;
      });
    }
  });
  return table;
}

}  // namespace

constexpr std::array<GroupEntry, kTotalGroupCount> kGroupTable = makeGroupTable();
constexpr std::array<SlotEntry, kTotalSlotCount> kSlotTable = makeSlotTable();

namespace {

// The slots whose references are counted, ordered by target.
struct Referrers {
  std::array<const SlotEntry*, kTotalSlotCount> slots{};
  std::array<std::size_t, kClassCount + 1> first{};
};

constexpr Referrers makeReferrers() {
  Referrers referrers;
  std::size_t count = 0;
  for (std::size_t target = 0; target < kClassCount; ++target) {
    referrers.first[target] = count;
    for (const SlotEntry& slot : kSlotTable) {
      const bool counted = slot.form != SlotForm::CodedList;
      if (counted && static_cast<std::size_t>(slot.target) == target) {
        referrers.slots[count++] = &slot;
      }
    }
  }
  referrers.first[kClassCount] = count;
  return referrers;
}

constexpr Referrers kReferrers = makeReferrers();

// Returns the number of single slots, which must be the first members, without gaps: scene files
// contain them as one block.
constexpr std::uint32_t countSingleSlots(std::span<const SlotEntry> slots) {
  std::uint32_t count = 0;
  while (count < slots.size() && slots[count].form == SlotForm::Single) {
    if (slots[count].offset != count * sizeof(std::int32_t)) {
      throw "the single slots of a Desc are its first members";
    }
    ++count;
  }
  for (std::size_t i = count; i < slots.size(); ++i) {
    if (slots[i].form == SlotForm::Single) throw "a class declares its lists last";
  }
  return count;
}

constexpr auto makeClassTable() {
  std::array<ClassEntry, kClassCount + 1> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    const FirstEntry first = kFirstEntries[i];
    const FirstEntry end = kFirstEntries[i + 1];
    table[i].groups = std::span(kGroupTable).subspan(first.group, end.group - first.group);
    table[i].slots = std::span(kSlotTable).subspan(first.slot, end.slot - first.slot);
    table[i].singleSlots = countSingleSlots(table[i].slots);
  }
  forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    using Info = ClassInfo<Desc>;
    ClassEntry& entry = table[kClassIndex<Desc>];
    entry.name = Info::kName;
    entry.kind = Info::kKind;
    entry.hasValue = Info::kHasValue;
    if (entry.singleSlots != kSingleSlotCount<Desc>) throw "single slots have their kinds";
    const std::size_t first = kReferrers.first[kClassIndex<Desc>];
    const std::size_t end = kReferrers.first[kClassIndex<Desc> + 1];
    entry.referrers = std::span(kReferrers.slots).subspan(first, end - first);
  });
  return table;
}

}  // namespace

constexpr std::array<ClassEntry, kClassCount + 1> kClassTable = makeClassTable();

}  // namespace vrnt::data
