// Comparison of large scenes. The yardstick is memcmp over the records of both scenes, or over the
// values of their materials.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "vornath_data/handles.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace {

using vrnt::data::Scene;
using vrnt::data::ShapeDesc;
using vrnt::data::TransformationGroupDesc;
using vrnt::detail::MeshDesc;

constexpr std::uint32_t kMaterials = 1'000;
constexpr std::uint32_t kTransformationGroups = 1'000;

constexpr char kMaterialValue[] =
    "{ color = float3(0.5, 0.25, 0.125); roughness = 0.5; metallic = false; layers = [ 1, 2, 3 ]; "
    "wrap = REPEAT : enum { CLAMP; BORDER; REPEAT; MIRROR; }; }";

// Makes a scene that is equivalent to another one of the same size but shares no memory with it.
Scene build(std::uint32_t shapes) {
  Scene scene;
  vrntValuesError_t* error = nullptr;
  for (std::uint32_t i = 0; i < shapes; ++i) {
    const MeshDesc desc{1, 3, 1, 0};
    const std::array<std::uint32_t, 36> bytes{i};
    AssetStorage* storage = vrdmAssetStorageCopy(bytes.data(), desc.size());
    vrdmAddAsset(&scene, VRDM_CLASS_MESH, &desc, &storage);
    vrdmAssetStorageRelease(storage);
  }
  for (std::uint32_t i = 0; i < kMaterials; ++i) {
    const auto material =
        static_cast<std::int32_t>(vrdmCreateInstance(&scene, VRDM_CLASS_MATERIAL));
    const vrnt::UniqueValue value(vrntValueParse(kMaterialValue, &error));
    vrdmSetInstanceValue(&scene, VRDM_CLASS_MATERIAL, material, value.get());
  }
  for (std::uint32_t i = 0; i < kTransformationGroups; ++i) {
    vrdmCreateInstance(&scene, VRDM_CLASS_TRANSFORMATION_GROUP);
  }
  for (std::uint32_t i = 0; i < shapes; ++i) {
    const auto shape = static_cast<std::int32_t>(vrdmCreateInstance(&scene, VRDM_CLASS_SHAPE));
    vrdmSetReference(&scene, VRDM_CLASS_SHAPE, shape, 0, i % kMaterials);
    vrdmSetReference(&scene, VRDM_CLASS_SHAPE, shape, 1, i);
    vrdmSetReference(&scene, VRDM_CLASS_SHAPE, shape, 3, i % kTransformationGroups);
  }
  return scene;
}

void equivalent(benchmark::State& state, std::uint32_t shapes) {
  const Scene a = build(shapes);
  const Scene b = build(shapes);
  for (auto _ : state) {
    if (!Scene::equivalent(a, b)) state.SkipWithError("not equivalent");
  }
}

template <typename Desc>
bool sameBytes(const Scene& a, const Scene& b) {
  const auto& first = a.container<Desc>().slots;
  const auto& second = b.container<Desc>().slots;
  for (std::size_t i = 0; i < first.size(); ++i) {
    if (std::memcmp(&first[i].desc, &second[i].desc, sizeof(Desc)) != 0) return false;
  }
  return true;
}

// Leaves out the materials, whose only records are their lists.
void compareRecords(benchmark::State& state, std::uint32_t shapes) {
  const Scene a = build(shapes);
  const Scene b = build(shapes);
  for (auto _ : state) {
    if (!sameBytes<MeshDesc>(a, b) || !sameBytes<TransformationGroupDesc>(a, b) ||
        !sameBytes<ShapeDesc>(a, b)) {
      state.SkipWithError("not equal");
    }
  }
}

// A scene of materials whose values hold an enum and a reference, and the blocks of these values.
class Materials {
 public:
  Materials() {
    vrntValuesError_t* error = nullptr;
    for (int i = 0; i < 20'000; ++i) {
      const auto material =
          static_cast<std::int32_t>(vrdmCreateInstance(&scene_, VRDM_CLASS_MATERIAL));
      const vrnt::UniqueValue value(vrntValueParse(kValue, &error));
      vrdmSetInstanceValue(&scene_, VRDM_CLASS_MATERIAL, material, value.get());
      values_.emplace_back(vrdmGetInstanceValue(&scene_, VRDM_CLASS_MATERIAL, material));
    }
  }
  const Scene& scene() const { return scene_; }
  const std::vector<vrnt::UniqueValue>& values() const { return values_; }

 private:
  static constexpr char kValue[] =
      "{ color = float3(0.5, 0.25, 0.125); roughness = 0.5; curve = &[ 0.0, 0.25, 1.0 ]; "
      "wrap = REPEAT : enum { CLAMP; BORDER; REPEAT; MIRROR; }; }";
  Scene scene_;
  std::vector<vrnt::UniqueValue> values_;
};

void equivalentMaterials(benchmark::State& state) {
  const Materials a;
  const Materials b;
  for (auto _ : state) {
    if (!Scene::equivalent(a.scene(), b.scene())) state.SkipWithError("not equivalent");
  }
}

// Compares the bytes of the values, which differ in the references.
void compareMaterials(benchmark::State& state) {
  const Materials a;
  const Materials b;
  const std::size_t size = vrntTypeSize(vrntValueType(a.values().front().get()));
  for (auto _ : state) {
    for (std::size_t i = 0; i < a.values().size(); ++i) {
      benchmark::DoNotOptimize(std::memcmp(vrntValueData(a.values()[i].get()),
                                           vrntValueData(b.values()[i].get()), size));
    }
  }
}

const int registered = [] {
  const auto pair = [](const std::string& name, std::uint32_t shapes) {
    benchmark::RegisterBenchmark(name.c_str(), equivalent, shapes);
    benchmark::RegisterBenchmark((name + "/memcmp of the records").c_str(), compareRecords, shapes);
  };
  pair("Scene::equivalent of 100,000 shapes", 100'000);
  pair("Scene::equivalent of 200,000 shapes", 200'000);
  benchmark::RegisterBenchmark("Scene::equivalent of 20,000 materials", equivalentMaterials);
  benchmark::RegisterBenchmark("Scene::equivalent of 20,000 materials/memcmp of the values",
                               compareMaterials);
  return 0;
}();

}  // namespace
