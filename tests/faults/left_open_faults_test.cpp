// What is seen of calls that have no way to tell that memory ran out, or of which the caller might
// expect another one: docs/guarantees.md lists them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <new>
#include <sstream>
#include <string>

#include "all_classes.hpp"
#include "support/allocations.hpp"
#include "support/flat_handles.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"

namespace {

using namespace vornath_test;
using vrnt::data::Scene;
using vrnt::data::SceneVersions;

enum class Ending { Success, Thrown };

// Makes `work` on what `make` gives with each allocation failing in turn, until none does; shows
// `look` each ending that an allocation was missing for. Returns how many allocations failed.
template <typename Make, typename Work, typename Look>
int failEach(Make make, Work work, Look look) {
  for (int number = 0; number < 10'000; ++number) {
    auto subject = make();
    Ending ending = Ending::Success;
    bool struck;
    {
      const FailNthAllocation failure(static_cast<std::uint64_t>(number));
      try {
        work(*subject);
      } catch (const std::bad_alloc&) {
        ending = Ending::Thrown;
      }
      struck = failure.triggered();
    }
    if (!struck) {
      EXPECT_EQ(ending, Ending::Success);
      return number;
    }
    SCOPED_TRACE(number);
    look(*subject, ending);
  }
  ADD_FAILURE() << "it never succeeded";
  return 0;
}

std::unique_ptr<Scene> filled() {
  auto scene = std::make_unique<Scene>(vrnt::UniqueId::hash("a scene"));
  fillAllClasses(flat(*scene));
  return scene;
}

std::uint32_t ofClass(const SceneVersions& versions, std::uint32_t objectClass) {
  return versions.classes[objectClass];
}

// Nothing of the scene but its counters, and a free slot at the end of a class, is another.
void expectSameObjects(const Scene& scene) { EXPECT_TRUE(Scene::equivalent(scene, *filled())); }

// A change that fails: std::bad_alloc, the scene as it was, and the counters of scene and class
// risen by `risen` at the most.
void expectUnchanged(std::uint32_t objectClass, std::uint32_t risen,
                     const std::function<void(vrdmScene_t*)>& work) {
  const SceneVersions before = filled()->versions;
  std::uint32_t most = 0;
  const int failures = failEach(
      filled, [&](Scene& scene) { work(flat(scene)); },
      [&](Scene& scene, Ending ending) {
        EXPECT_EQ(ending, Ending::Thrown);
        expectSameObjects(scene);
        const std::uint32_t rise = scene.versions.version - before.version;
        EXPECT_EQ(ofClass(scene.versions, objectClass) - ofClass(before, objectClass), rise);
        EXPECT_LE(rise, risen);
        most = std::max(most, rise);
      });
  if (kMallocIsCounted) {
    EXPECT_GT(failures, 0);
    EXPECT_EQ(most, risen);
  }
}

TEST(LeftOpen, WriteStoresAnErrorAndWritesNothing) {
  struct Subject {
    ValueHandle other = parseValue("{ a = 1; b = &[ 1, 2 ]; }");
    vrntValue_t* handle = vrntValueCopy(other.get());
    vrntValuesError_t* error = nullptr;
    ~Subject() { vrntValueDestroy(handle); }
  };
  const int failures =
      failEach([] { return std::make_unique<Subject>(); },
               [](Subject& subject) {
                 const std::int32_t five = 5;
                 vrntValueWrite(&subject.handle, 0, &five, sizeof(five), &subject.error);
               },
               [](Subject& subject, Ending ending) {
                 EXPECT_EQ(ending, Ending::Success);
                 ASSERT_NE(subject.error, nullptr);
                 EXPECT_STREQ(vrntValuesErrorMessage(subject.error), "Out of memory.");
                 EXPECT_EQ(subject.handle, subject.other.get());
                 EXPECT_EQ(textOf(subject.handle), "{ a = 1; b = &[ 1, 2 ]; }");
               });
  EXPECT_EQ(failures, kMallocIsCounted ? 2 : 0);  // the copy of the block, and its shadow array
}

TEST(LeftOpen, SetReferenceStoresAnErrorAndHoldsNoTarget) {
  struct Subject {
    ValueHandle other = parseValue("&[ 1, 2 ]");
    ValueHandle target = parseValue("[ 3, 4 ]");
    vrntValue_t* handle = vrntValueCopy(other.get());
    vrntValuesError_t* error = nullptr;
    ~Subject() { vrntValueDestroy(handle); }
  };
  const int failures = failEach(
      [] { return std::make_unique<Subject>(); },
      [](Subject& subject) {
        const vrntValueView_t view{vrntValueType(subject.handle), 0};
        vrntValueSetReference(&subject.handle, &view, subject.target.get(), &subject.error);
      },
      [](Subject& subject, Ending ending) {
        EXPECT_EQ(ending, Ending::Success);
        ASSERT_NE(subject.error, nullptr);
        EXPECT_EQ(vrntValuesErrorCode(subject.error), std::uint32_t{VRNT_OUT_OF_MEMORY});
        EXPECT_EQ(subject.handle, subject.other.get());
        EXPECT_EQ(subject.target->refCount, 1u);
        EXPECT_EQ(textOf(subject.handle), "&[ 1, 2 ]");
      });
  EXPECT_EQ(failures, kMallocIsCounted ? 2 : 0);
}

// The class has counted the addition before it looks for a slot.
TEST(LeftOpen, AddProgramRaisesAndCounts) {
  const auto full = [](vrdmScene_t* scene) {
    vrdmAddProgram(scene, VRDM_CLASS_LIGHT_PROGRAM, "program b()");
    vrdmAddProgram(scene, VRDM_CLASS_LIGHT_PROGRAM, "program c()");
  };
  const SceneVersions before = filled()->versions;
  bool counted = false;
  const int failures = failEach(
      filled, [&](Scene& scene) { full(flat(scene)); },
      [&](Scene& scene, Ending ending) {
        EXPECT_EQ(ending, Ending::Thrown);
        vrdmScene_t* const handle = flat(scene);
        EXPECT_EQ(vrdmContainerSize(handle, VRDM_CLASS_LIGHT_PROGRAM), 2u);
        const std::uint32_t added = vrdmValid(handle, VRDM_CLASS_LIGHT_PROGRAM, 1) ? 1 : 0;
        const std::uint32_t rise = scene.versions.version - before.version;
        EXPECT_TRUE(rise == added || rise == added + 1);
        counted = counted || rise == added + 1;
      });
  EXPECT_EQ(failures, kMallocIsCounted ? 3 : 0);  // two texts and the slots
  EXPECT_EQ(counted, kMallocIsCounted);
}

TEST(LeftOpen, AddAssetRaisesAndCounts) {
  AssetStorage* const storage = vrdmAssetStorageCopy("bytes", 5);
  const SceneVersions before = Scene(vrnt::UniqueId()).versions;
  const int failures =
      failEach([] { return std::make_unique<Scene>(); },
               [&](Scene& scene) {
                 const std::uint64_t desc[3]{5, 0, 0};
                 vrdmAddAsset(flat(scene), VRDM_CLASS_MATERIAL_GRAPH, desc, &storage);
               },
               [&](Scene& scene, Ending ending) {
                 EXPECT_EQ(ending, Ending::Thrown);
                 EXPECT_EQ(storage->references, 1u);
                 EXPECT_EQ(vrdmContainerSize(flat(scene), VRDM_CLASS_MATERIAL_GRAPH), 0u);
                 EXPECT_EQ(scene.versions.version, before.version + 1);
               });
  EXPECT_EQ(failures, kMallocIsCounted ? 1 : 0);
  EXPECT_EQ(storage->references, 1u);
  vrdmAssetStorageRelease(storage);
}

TEST(LeftOpen, CreateInstanceRaisesAndChangesNothing) {
  const int failures =
      failEach([] { return std::make_unique<Scene>(); },
               [](Scene& scene) { vrdmCreateInstance(flat(scene), VRDM_CLASS_SHAPE); },
               [](Scene& scene, Ending ending) {
                 EXPECT_EQ(ending, Ending::Thrown);
                 EXPECT_EQ(vrdmContainerSize(flat(scene), VRDM_CLASS_SHAPE), 0u);
                 EXPECT_EQ(scene.versions.version, 0u);
               });
  EXPECT_EQ(failures, kMallocIsCounted ? 1 : 0);
}

TEST(LeftOpen, UpdateAssetRaisesAndChangesNothing) {
  expectUnchanged(VRDM_CLASS_MATERIAL_GRAPH, 0, [](vrdmScene_t* scene) {
    const std::uint64_t desc[3]{3, 0, 0};
    vrdmUpdateAsset(scene, VRDM_CLASS_MATERIAL_GRAPH, 0, desc, "new");
  });
}

TEST(LeftOpen, SetReferenceOfASceneRaisesAndCountsForTheClass) {
  expectUnchanged(VRDM_CLASS_LIGHT_GROUP, 1, [](vrdmScene_t* scene) {
    vrdmSetReferenceCount(scene, VRDM_CLASS_LIGHT_GROUP, 0, 0, 300);
  });
}

TEST(LeftOpen, UpdateTextureReferencesRaisesAndCountsForTheClass) {
  expectUnchanged(VRDM_CLASS_MATERIAL, 1, [](vrdmScene_t* scene) {
    vrdmUpdateTextureReferences(scene, VRDM_CLASS_MATERIAL, 0);
  });
}

// A file is left alone where there is no memory to open it, which isn't told; and cut off where
// there is none for a value on its way.
TEST(LeftOpen, SerializeLeavesTheFileAloneOrCutOff) {
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("vornath_left_open_" + std::to_string(static_cast<long>(getpid()))))
                               .string();
  const std::unique_ptr<Scene> scene = filled();
  std::ostringstream whole;
  Scene::serialize(*scene, whole);
  int untold = 0;
  int cutOff = 0;
  const int failures = failEach(
      [&path] {
        std::ofstream(path, std::ios::binary) << "before";
        return std::make_unique<std::string>(path);
      },
      [&scene](const std::string& file) { vrdmSerialize(flat(*scene), file.c_str()); },
      [&](const std::string& file, Ending ending) {
        std::ifstream stream(file, std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(stream), {});
        if (ending == Ending::Success) {
          EXPECT_EQ(bytes, "before");
          ++untold;
        } else if (bytes != "before") {
          EXPECT_LT(bytes.size(), whole.str().size());
          EXPECT_EQ(bytes, whole.str().substr(0, bytes.size()));
          ++cutOff;
        }
      });
  EXPECT_GT(failures, 3);
  EXPECT_EQ(untold, kMallocIsCounted ? 1 : 0);
  EXPECT_GT(cutOff, 0);
  std::remove(path.c_str());
}

TEST(LeftOpen, DeserializeRaisesOrGivesNull) {
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("vornath_left_open_" + std::to_string(static_cast<long>(getpid()))))
                               .string();
  vrdmSerialize(flat(*filled()), path.c_str());
  int nulls = 0;
  const int failures = failEach([] { return std::make_unique<vrdmScene_t*>(nullptr); },
                                [&path](vrdmScene_t*& scene) {
                                  scene = vrdmDeserialize(path.c_str());
                                  if (scene != nullptr) vrdmDestroyScene(scene);
                                },
                                [&](vrdmScene_t*& scene, Ending ending) {
                                  EXPECT_EQ(scene, nullptr);
                                  if (ending == Ending::Success) ++nulls;
                                });
  EXPECT_GT(failures, 10);
  EXPECT_EQ(nulls, kMallocIsCounted ? 1 : 0);
  std::remove(path.c_str());
}

// What the stream itself lacks memory for leaves it bad; what the library lacks it for is raised.
TEST(LeftOpen, PrintingASceneRaisesOrLeavesTheStreamBad) {
  const std::unique_ptr<Scene> scene = filled();
  int bad = 0;
  int raised = 0;
  failEach([] { return std::make_unique<std::ostringstream>(); },
           [&scene](std::ostringstream& stream) { stream << *scene; },
           [&](std::ostringstream& stream, Ending ending) {
             EXPECT_EQ(stream.bad(), ending == Ending::Success);
             ++(ending == Ending::Success ? bad : raised);
           });
  EXPECT_GT(bad, 0);
  EXPECT_GT(raised, 0);
}

}  // namespace
