// The tables of the catalogue, held against the members of the classes' records.
#include "scene/class_table.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <type_traits>
#include <vector>

#include "scene/reference_slots.hpp"
#include "vornath_data/elements.hpp"

namespace {

using namespace vrnt::data;

template <typename Groups, typename Record>
std::size_t offsetOf(const Groups& groups, Record Groups::*member) {
  return static_cast<std::size_t>(reinterpret_cast<const char*>(&(groups.*member)) -
                                  reinterpret_cast<const char*>(&groups));
}

// Holds the table's groups of a class against what its header declares.
template <typename Desc>
void checkGroups() {
  const ClassEntry& entry = classEntry<Desc>();
  EXPECT_EQ(entry.groups.size(), kGroupCount<Desc>);
  if constexpr (kGroupCount<Desc> != 0) {
    const typename Desc::Groups groups{};
    forEachGroup<Desc>([&](const auto& group, auto position) {
      using Record = typename std::decay_t<decltype(group)>::Record;
      const GroupEntry& found = entry.groups[position];
      EXPECT_STREQ(found.name, group.name);
      EXPECT_EQ(std::string_view(found.schema), group.schema) << group.name;
      EXPECT_EQ(found.offset, offsetOf(groups, group.member)) << group.name;
      EXPECT_EQ(found.size, sizeof(Record)) << group.name;
      EXPECT_EQ(&kGroupTable[found.ordinal], &found) << group.name;
    });
  }
}

TEST(ClassTable, HasTheGroupsOfEachClassAtTheOffsetsOfTheirMembers) {
  forEachClass([](auto tag) { checkGroups<typename decltype(tag)::Desc>(); });
  checkGroups<SceneData>();
}

TEST(ClassTable, NumbersTheGroupsThroughInClassOrder) {
  EXPECT_EQ(classEntry<KeyframeDesc>().groups[0].ordinal, 0U);
  EXPECT_EQ(classEntry<CameraDesc>().groups[0].ordinal, 1U);
  EXPECT_EQ(classEntry<TransformationGroupDesc>().groups[0].ordinal, 5U);
  EXPECT_EQ(classEntry<LightDesc>().groups[0].ordinal, 6U);
  EXPECT_EQ(classEntry<DecalDesc>().groups[0].ordinal, 12U);
  EXPECT_EQ(classEntry<ShapeDesc>().groups[0].ordinal, 14U);
  EXPECT_EQ(classEntry<ImageTaskDesc>().groups[0].ordinal, 28U);
  EXPECT_EQ(classEntry<BakeTaskDesc>().groups[0].ordinal, 39U);
  EXPECT_EQ(classEntry<SceneData>().groups[0].ordinal, 50U);
}

TEST(ClassTable, HasTheSlotsOfEachClassAtTheOffsetsOfTheirMembers) {
  std::uint32_t ordinal = 0;
  forEachClass([&ordinal](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    const ClassEntry& entry = classEntry<Desc>();
    EXPECT_EQ(entry.slots.size(), kSlotCount<Desc>);
    if constexpr (kSlotCount<Desc> != 0) {
      Desc desc;
      std::int32_t word = 100;
      forEachSlot<Desc>([&](const auto& slot, auto position) {
        using Member = typename std::decay_t<decltype(slot)>::Member;
        const SlotEntry& found = entry.slots[position];
        SCOPED_TRACE(slot.name);
        EXPECT_STREQ(found.name, slot.name);
        EXPECT_EQ(found.kind, slot.kind);
        EXPECT_EQ(found.target, slot.target);
        EXPECT_EQ(found.owner, ClassInfo<Desc>::kClass);
        EXPECT_EQ(found.offset, offsetOf(desc, slot.member));
        EXPECT_EQ(&kSlotTable[ordinal++], &found);
        ++word;
        if constexpr (std::is_same_v<Member, vrnt::Ref<typename Member::Target>>) {
          singleReference(&desc, found) = word;
          EXPECT_EQ((desc.*slot.member).index, word);
        } else {
          referenceList(&desc, found).assign(2, word);
          EXPECT_EQ((desc.*slot.member).words, std::vector<std::int32_t>(2, word));
        }
      });
    }
  });
  EXPECT_EQ(ordinal, kTotalSlotCount);
}

TEST(ClassTable, TellsWhatAClassIs) {
  forEachClass([](auto tag) {
    using Info = ClassInfo<typename decltype(tag)::Desc>;
    const ClassEntry* const entry = findClass(static_cast<std::uint32_t>(Info::kClass));
    ASSERT_EQ(entry, &classEntry<typename decltype(tag)::Desc>());
    EXPECT_STREQ(entry->name, Info::kName);
    EXPECT_EQ(entry->kind, Info::kKind);
    EXPECT_EQ(entry->hasValue, Info::kHasValue);
  });
}

TEST(ClassTable, HasNoEntryForOtherNumbers) {
  EXPECT_EQ(findClass(kClassCount), nullptr);
  EXPECT_EQ(findClass(UINT32_MAX), nullptr);
  EXPECT_EQ(findClassOrSceneData(kClassCount), nullptr);
  EXPECT_EQ(findClassOrSceneData(UINT32_MAX - 1), nullptr);
  EXPECT_EQ(findClassOrSceneData(UINT32_MAX), &classEntry<SceneData>());
  EXPECT_EQ(findGroup(classEntry<CameraDesc>(), 4), nullptr);
  EXPECT_EQ(findSlot(classEntry<CameraDesc>(), 3), nullptr);
}

TEST(ClassTable, ListsTheSlotsThatReferToAClassButForCodedLists) {
  std::vector<const SlotEntry*> expected(kTotalSlotCount);
  std::transform(kSlotTable.begin(), kSlotTable.end(), expected.begin(),
                 [](const SlotEntry& slot) { return &slot; });
  forEachClass([&expected](auto tag) {
    for (const SlotEntry* const slot : classEntry<typename decltype(tag)::Desc>().referrers) {
      EXPECT_EQ(slot->target, ClassInfo<typename decltype(tag)::Desc>::kClass) << slot->name;
      const auto found = std::find(expected.begin(), expected.end(), slot);
      ASSERT_NE(found, expected.end()) << slot->name;
      expected.erase(found);
    }
  });
  ASSERT_EQ(expected.size(), 2U);
  EXPECT_STREQ(expected[0]->name, "emitters");
  EXPECT_STREQ(expected[1]->name, "decals");
}

}  // namespace
