// The types of groups, parsed once and shared.
#include "scene/group_type.hpp"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "../support/allocations.hpp"
#include "../support/flat_handles.hpp"
#include "vornath_data/result.hpp"

namespace {

using namespace vornath_test;
using vrnt::ErrorCode;
using vrnt::data::classEntry;
using vrnt::data::GroupEntry;
using vrnt::data::GroupType;
using vrnt::data::groupType;
using vrnt::data::kGroupTable;
using vrnt::data::kTotalGroupCount;

// First, while no type is there yet.
TEST(groupType, RaisesAFailedAllocationAndTriesAgainAtTheNextCall) {
  const GroupEntry& shape = classEntry<vrnt::data::ShapeDesc>().groups[0];
  bool ranOut = false;
  {
    const FailingAllocations failing;
    try {
      groupType(shape);
    } catch (const std::bad_alloc&) {
      ranOut = true;
    }
  }
  EXPECT_TRUE(ranOut);
  const GroupType type = groupType(shape);
  ASSERT_NE(type.annotated, nullptr);
  EXPECT_STREQ(vrntTypeString(type.annotated), vrnt::data::kShapeTransformation);
}

TEST(groupType, GivesTheSameHandlesAtEachCall) {
  for (std::size_t i = 0; i < kTotalGroupCount; ++i) {
    const GroupType first = groupType(kGroupTable[i]);
    const GroupType second = groupType(kGroupTable[i]);
    EXPECT_EQ(first.annotated, second.annotated) << i;
    EXPECT_EQ(first.plain, second.plain) << i;
  }
}

TEST(groupType, GivesTheTypeThatValuesOfTheGroupHave) {
  for (std::size_t i = 0; i < kTotalGroupCount; ++i) {
    const GroupType type = groupType(kGroupTable[i]);
    const TypeHandle stripped(vrntTypeStripMetadata(type.annotated));
    EXPECT_EQ(type.plain, stripped.get()) << i;
    vrntValuesError_t* error = nullptr;
    const ValueHandle value(vrntValueCreateDefault(type.annotated, &error));
    ASSERT_NE(value, nullptr) << i;
    EXPECT_EQ(vrntValueType(value.get()), type.plain) << i;
  }
}

TEST(groupType, TakesTheGroupsOfAClassByTheirPosition) {
  using namespace vrnt::data;
  EXPECT_STREQ(vrntTypeString(groupType(classEntry<CameraDesc>().groups[3]).annotated),
               kCameraBackplate);
  EXPECT_STREQ(vrntTypeString(groupType(classEntry<SceneData>().groups[3]).annotated),
               kSceneGeneral);
}

TEST(groupType, AgreesAcrossThreads) {
  constexpr std::size_t kThreads = 8;
  std::vector<std::vector<GroupType>> seen(kThreads, std::vector<GroupType>(kTotalGroupCount));
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([&seen, t] {
      // Each begins elsewhere, so that some meet at a group that is new to both.
      for (std::size_t i = 0; i < kTotalGroupCount; ++i) {
        const std::size_t ordinal = (i + t / 2) % kTotalGroupCount;
        seen[t][ordinal] = groupType(kGroupTable[ordinal]);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t t = 1; t < kThreads; ++t) {
    for (std::size_t i = 0; i < kTotalGroupCount; ++i) {
      EXPECT_EQ(seen[t][i].annotated, seen[0][i].annotated) << i;
      EXPECT_EQ(seen[t][i].plain, seen[0][i].plain) << i;
    }
  }
}

}  // namespace
