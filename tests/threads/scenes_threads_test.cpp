// Scenes on threads of their own that share bytes and values, identifiers, and colour; built to run
// under a thread sanitizer too.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <set>
#include <sstream>
#include <string>

#include "concurrency.hpp"
#include "support/flat_handles.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/unique_id.hpp"
#include "vornath_data/vrdm.h"

namespace {

using vornath_test::check;
using vornath_test::kRounds;
using vornath_test::parseValue;
using vornath_test::SceneHandle;
using vornath_test::ThreadsTest;
using vornath_test::runConcurrently;
using vornath_test::ValueHandle;

class ScenesOnThreads : public ThreadsTest {};
class IdsOnThreads : public ThreadsTest {};
class ColoursOnThreads : public ThreadsTest {};

struct MaterialGraph {
  std::uint64_t size, parameters, root;
};

}  // namespace

TEST_F(ScenesOnThreads, ShareTheBytesOfAnAsset) {
  const std::array<char, 64> bytes{"shared"};
  AssetStorage* const storage = vrdmAssetStorageCopy(bytes.data(), bytes.size());
  const MaterialGraph descriptor{64, 0, 0};
  runConcurrently([&](int) {
    for (int round = 0; round < kRounds; ++round) {
      const SceneHandle scene(vrdmCreateScene());
      const auto slot = static_cast<std::int32_t>(
          vrdmAddAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, &descriptor, &storage));
      MaterialGraph read{};
      const AssetStorage* const held =
          *vrdmGetAssetStorage(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, slot, &read);
      check(held == storage && read.size == 64);
      if (round % 2 == 0) check(vrdmRemove(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, slot));
    }
  });
  vrdmAssetStorageRelease(storage);
}

TEST_F(ScenesOnThreads, ShareAValueAndWriteTheirCopies) {
  const ValueHandle value = parseValue("{ gloss = 0.5; names = &[ 1, 2, 3 ]; }");
  runConcurrently([&](int thread) {
    for (int round = 0; round < kRounds; ++round) {
      const SceneHandle scene(vrdmCreateScene());
      const auto slot =
          static_cast<std::int32_t>(vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL));
      check(vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, slot, value.get()));
      vrntValue_t* mine = vrdmGetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, slot);
      check(mine == value.get());
      vrntValuesError_t* error = nullptr;
      const auto gloss = static_cast<float>(thread);
      vrntValueWrite(&mine, 0, &gloss, sizeof(gloss), &error);
      check(error == nullptr && mine != value.get());
      check(vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, slot, mine));
      vrntValueDestroy(mine);
    }
  });
  EXPECT_EQ(vornath_test::textOf(value), "{ gloss = 0.5; names = &[ 1, 2, 3 ]; }");
  EXPECT_EQ(vrntValueBinary(value.get())->refCount, 1u);
}

TEST_F(ScenesOnThreads, AreWrittenReadImportedComparedAndPrintedSideBySide) {
  const SceneHandle shared(vrdmCreateScene());
  const std::array<char, 64> bytes{"shared"};
  AssetStorage* const storage = vrdmAssetStorageCopy(bytes.data(), bytes.size());
  const MaterialGraph descriptor{64, 0, 0};
  vrdmAddAsset(shared.get(), VRDM_CLASS_MATERIAL_GRAPH, &descriptor, &storage);
  vrdmAssetStorageRelease(storage);
  vrdmCreateInstance(shared.get(), VRDM_CLASS_MATERIAL);
  const ValueHandle value = parseValue("{ gloss = 0.5; }");
  vrdmSetInstanceValue(shared.get(), VRDM_CLASS_MATERIAL, 0, value.get());
  std::ostringstream written;
  // A flat handle is the address of the exported class.
  vrnt::data::Scene::serialize(*reinterpret_cast<const vrnt::data::Scene*>(shared.get()), written);
  const std::string file = written.str();

  runConcurrently([&](int) {
    for (int round = 0; round < kRounds / 10; ++round) {
      std::istringstream in(file);
      vrnt::Result<vrnt::data::Scene> read = vrnt::data::Scene::deserialize(in, vrnt::UniqueId());
      check(read.hasValue());
      vrnt::data::Scene copy;
      copy.import(*read);
      check(vrnt::data::Scene::equivalent(*read, copy));
      std::ostringstream text;
      text << copy;
      check(text.str().find("{ gloss = 0.5; }") != std::string::npos);
    }
  });
}

TEST_F(ScenesOnThreads, AreReadSideBySide) {
  // The first to ask make what the scene keeps.
  for (int round = 0; round < kRounds / 10; ++round) {
    const SceneHandle scene(vrdmCreateScene());
    vrdmScene_t* const handle = scene.get();
    for (std::uint32_t i = 0; i < 100; ++i) {
      const auto shape = static_cast<std::int32_t>(vrdmCreateInstance(handle, VRDM_CLASS_SHAPE));
      vrdmSetReference(handle, VRDM_CLASS_SHAPE, shape, 0, i % 10);
      vrdmSetReference(handle, VRDM_CLASS_SHAPE, shape, 1, i);
    }
    vrdmCreateInstance(handle, VRDM_CLASS_BAKE_TASK);
    vrdmSetReferenceCount(handle, VRDM_CLASS_BAKE_TASK, 0, 0, 3);
    vrdmModifyReferenceList(handle, VRDM_CLASS_BAKE_TASK, 0, 0)[1] = 5;
    runConcurrently([&](int) {
      for (std::int32_t i = 0; i < 10; ++i) {
        const ValueHandle group(vrdmGetDataValue(handle, VRDM_CLASS_SHAPE, i, 1));
        check(group != nullptr && vrdmGetReference(handle, VRDM_CLASS_SHAPE, i, 1) == i);
        check(vrdmCountReferences(handle, VRDM_CLASS_MATERIAL, i) == 10);
        check(vrdmCountReferences(handle, VRDM_CLASS_MESH, i) == 1);
        check(vrdmCountReferences(handle, VRDM_CLASS_SHAPE, i) == (i == 5 ? 1U : 0U));
        check(scene->container<vrnt::data::DecalDesc>().size() == 0);
      }
      std::ostringstream stream;
      vrnt::data::Scene::serialize(*scene, stream);
      stream << *scene;
      check(stream.good() && vrnt::data::Scene::equivalent(*scene, *scene));
    });
  }
}

TEST_F(IdsOnThreads, AreAllDifferent) {
  std::mutex mutex;
  std::set<std::string> ids;
  runConcurrently([&](int) {
    std::set<std::string> mine;
    for (int round = 0; round < kRounds; ++round) {
      std::ostringstream text;
      text << vrnt::UniqueId::generate();
      mine.insert(text.str());
    }
    const std::lock_guard guard(mutex);
    ids.insert(mine.begin(), mine.end());
  });
  EXPECT_EQ(ids.size(), static_cast<std::size_t>(vornath_test::kThreads * kRounds));
}

TEST_F(IdsOnThreads, AreTheSameForTheSameBytes) {
  const std::string bytes = "camera pinhole()";
  const vrnt::UniqueId expected = vrnt::UniqueId::hash(bytes.data(), bytes.size());
  runConcurrently([&](int) {
    for (int round = 0; round < kRounds; ++round) {
      check(vrnt::UniqueId::hash(bytes.data(), bytes.size()) == expected);
    }
  });
}

TEST_F(ColoursOnThreads, AreReadFromOneSpectrum) {
  const ValueHandle value = parseValue(
      "{ encoding = SPECTRAL : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &[ 0., 0., 400., 1., "
      "550., 2., 700., 0. ]; }");
  const vrntValueView_t view{vrntValueType(value.get()), 0};
  runConcurrently([&](int) {
    for (int round = 0; round < kRounds; ++round) {
      float rgb[3]{};
      check(vrntValueToRGB(value.get(), &view, 1, rgb) == 0 && std::isfinite(rgb[0]));
      float pairs[]{450, 0, 500, 0};
      check(vrntValueToSPD(value.get(), &view, 4, pairs) == 0 && pairs[1] == 1.0F);
      vrntBlackbodyToRGB(rgb, 6500.0F);
      check(std::isfinite(rgb[0]));
    }
  });
}
