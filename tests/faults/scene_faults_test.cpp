// Whole-scene operations in memory that runs out: std::bad_alloc each time, nothing leaks, both
// scenes stay usable, and the operation then succeeds.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <new>
#include <sstream>
#include <string>

#include "support/allocations.hpp"
#include "support/flat_handles.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"

namespace {

using vornath_test::parseValue;
using vornath_test::ValueHandle;
using vrnt::data::Scene;

// The flat handle of a scene is its address.
vrdmScene_t* flat(Scene& scene) { return reinterpret_cast<vrdmScene_t*>(&scene); }

// A scene with something of each kind: programs, shared bytes, lists, coded lists, a value that
// names a texture.
Scene makeScene() {
  Scene scene;
  vrdmScene_t* const handle = flat(scene);
  vrdmAddProgram(handle, VRDM_CLASS_CAMERA_PROGRAM, "camera pinhole()");
  const std::array<char, 16> bytes{"bytes"};
  AssetStorage* const storage = vrdmAssetStorageCopy(bytes.data(), bytes.size());
  const std::array<std::uint64_t, 3> graph{16, 0, 0};
  vrdmAddAsset(handle, VRDM_CLASS_MATERIAL_GRAPH, graph.data(), &storage);
  vrdmAssetStorageRelease(storage);
  const ValueHandle value = parseValue("{ image = { texture_ref = 0; }; name = &[ 1, 2, 3 ]; }");
  for (const std::uint32_t objectClass :
       {VRDM_CLASS_CAMERA, VRDM_CLASS_LIGHT_GROUP, VRDM_CLASS_LIGHT, VRDM_CLASS_MATERIAL,
        VRDM_CLASS_SHAPE}) {
    const auto slot = static_cast<std::int32_t>(vrdmCreateInstance(handle, objectClass));
    if (vrdmHasValue(objectClass)) vrdmSetInstanceValue(handle, objectClass, slot, value.get());
  }
  vrdmSetReferenceCount(handle, VRDM_CLASS_LIGHT_GROUP, 0, 0, 2);
  vrdmModifyReferenceList(handle, VRDM_CLASS_LIGHT_GROUP, 0, 0)[1] = ~0;
  return scene;
}

// Lets each allocation of `work` fail in turn, until it succeeds. Returns how many failed.
template <typename Work>
int failEach(Work work) {
  for (int number = 0; number < 10'000; ++number) {
    try {
      work(static_cast<std::uint64_t>(number));
      return number;
    } catch (const std::bad_alloc&) {
    }
  }
  ADD_FAILURE() << "the operation never succeeded";
  return 0;
}

TEST(SceneImport, RaisesEachFailedAllocationAndLeavesBothScenesUsable) {
  const Scene source = makeScene();
  const int failures = failEach([&](std::uint64_t number) {
    Scene target = makeScene();
    bool finished = false;
    try {
      const vornath_test::FailNthAllocation failure(number);
      target.import(source);
      finished = true;
    } catch (const std::bad_alloc&) {
      // What came so far can be added to and printed.
      target.import(source);
    }
    std::ostringstream text;
    text << target;
    EXPECT_FALSE(text.str().empty());
    if (!finished) throw std::bad_alloc();
    EXPECT_EQ(vrdmContainerSize(flat(target), VRDM_CLASS_SHAPE), 2u);
  });
  EXPECT_GT(failures, 5);
  EXPECT_TRUE(Scene::equivalent(source, makeScene()));
}

TEST(SceneEquivalence, RaisesEachFailedAllocationAndThenAnswers) {
  const Scene a = makeScene();
  const Scene b = makeScene();
  EXPECT_GT(failEach([&](std::uint64_t number) {
              const vornath_test::FailNthAllocation failure(number);
              EXPECT_TRUE(Scene::equivalent(a, b));
            }),
            0);
}

TEST(SceneText, RaisesEachFailedAllocationAndThenPrints) {
  const Scene scene = makeScene();
  std::ostringstream expected;
  expected << scene;
  EXPECT_GT(failEach([&](std::uint64_t number) {
              std::ostringstream text;
              // The stream's own allocations count among these; it swallows them and is left bad.
              {
                const vornath_test::FailNthAllocation failure(number);
                text << scene;
              }
              if (!text) throw std::bad_alloc();
              EXPECT_EQ(text.str(), expected.str());
            }),
            0);
}

}  // namespace
