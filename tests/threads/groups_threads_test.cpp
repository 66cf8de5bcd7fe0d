// The first use of every group of the catalogue, on many threads at once. One case: it needs a
// process in which no group was used yet.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "concurrency.hpp"
#include "support/flat_handles.hpp"
#include "vornath_data/vrdm.h"

namespace {

using vornath_test::check;
using vornath_test::kThreads;
using vornath_test::SceneHandle;
using vornath_test::runConcurrently;
using vornath_test::TypeHandle;
using vornath_test::ValueHandle;

// The types of all groups, and of each group a value that is read and written back.
std::vector<TypeHandle> useAllGroups(vrdmScene_t* scene) {
  std::vector<TypeHandle> types;
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    if (vrdmFieldCount(c) == 0) continue;
    const auto index = static_cast<std::int32_t>(vrdmCreateInstance(scene, c));
    for (std::uint32_t group = 0; group < vrdmFieldCount(c); ++group) {
      types.emplace_back(vrdmFieldType(c, group));
      const ValueHandle value(vrdmGetDataValue(scene, c, index, group));
      check(vrntTypeIsEqual(vrntValueType(value.get()), types.back().get()) != 0);
      check(vrdmSetDataValue(scene, c, index, group, value.get()));
    }
  }
  for (std::uint32_t group = 0; group < vrdmFieldCount(VRDM_CLASS_SCENE_DATA); ++group) {
    types.emplace_back(vrdmFieldType(VRDM_CLASS_SCENE_DATA, group));
    const ValueHandle value(vrdmGetSceneDataValue(scene, group));
    check(vrdmSetSceneDataValue(scene, group, value.get()));
  }
  return types;
}

class GroupsOnThreads : public vornath_test::ThreadsTest {};

}  // namespace

TEST_F(GroupsOnThreads, HaveTheirTypesFromTheirFirstUse) {
  std::array<std::vector<TypeHandle>, kThreads> types;
  runConcurrently([&](int i) {
    const SceneHandle scene(vrdmCreateScene());
    types[static_cast<std::size_t>(i)] = useAllGroups(scene.get());
  });
  ASSERT_EQ(types[0].size(), 54u);
  for (const auto& own : types) {
    ASSERT_EQ(own.size(), types[0].size());
    for (std::size_t i = 0; i < own.size(); ++i) {
      EXPECT_EQ(vrntTypeIsEqual(own[i].get(), types[0][i].get()), 1) << i;
      EXPECT_STREQ(vrntTypeString(own[i].get()), vrntTypeString(types[0][i].get())) << i;
    }
  }
}
