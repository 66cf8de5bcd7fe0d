// Import of a large scene into one of the same size. The yardsticks are to write the same scene to
// a file and read it back, and to import half as many objects.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

#include "vornath_data/catalogue/mesh.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/parameters.h"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace {

constexpr int kShapes = 100'000;

using vrnt::UniqueScene;

// Makes a mesh for each shape, and for every hundred shapes a transformation group and a material
// with a texture in its value.
UniqueScene build(int shapes) {
  UniqueScene made(vrdmCreateScene());
  vrdmScene_t* const scene = made.get();
  const int shared = shapes / 100;
  const vrnt::detail::MeshDesc mesh{0, 1, 0, 0};
  const std::array<char, 44> vertex{};
  const std::array<std::int32_t, 5> texture = {1, 1, 1, 2, 0};
  vrntValuesError_t* error = nullptr;
  vrntType_t* const type = vrntTypeMaterialParam(VRNT_MATERIAL_PARAM_COLOUR);
  for (int i = 0; i < shared; ++i) {
    AssetStorage* pixel = vrdmAssetStorageCopy("rgb", 3);
    vrdmAddAsset(scene, VRDM_CLASS_TEXTURE, texture.data(), &pixel);
    vrdmAssetStorageRelease(pixel);
    vrdmCreateInstance(scene, VRDM_CLASS_TRANSFORMATION_GROUP);
    const auto material = static_cast<std::int32_t>(vrdmCreateInstance(scene, VRDM_CLASS_MATERIAL));
    vrntValue_t* const value = vrntValueCreate(type, &error);
    vrdmSetInstanceValue(scene, VRDM_CLASS_MATERIAL, material, value);
    vrntValueDestroy(value);
  }
  vrntTypeDestroy(type);
  for (int i = 0; i < shapes; ++i) {
    AssetStorage* storage = vrdmAssetStorageCopy(vertex.data(), vertex.size());
    const std::uint32_t added = vrdmAddAsset(scene, VRDM_CLASS_MESH, &mesh, &storage);
    vrdmAssetStorageRelease(storage);
    const auto shape = static_cast<std::int32_t>(vrdmCreateInstance(scene, VRDM_CLASS_SHAPE));
    const auto one = static_cast<std::uint32_t>(i % shared);
    vrdmSetReference(scene, VRDM_CLASS_SHAPE, shape, 0, one);
    vrdmSetReference(scene, VRDM_CLASS_SHAPE, shape, 1, added);
    vrdmSetReference(scene, VRDM_CLASS_SHAPE, shape, 3, one);
  }
  return made;
}

void importScene(benchmark::State& state, int shapes) {
  const UniqueScene source = build(shapes);
  for (auto _ : state) {
    state.PauseTiming();
    UniqueScene target = build(shapes);
    state.ResumeTiming();
    benchmark::DoNotOptimize(target->import(*source));
    state.PauseTiming();
    target.reset();
    state.ResumeTiming();
  }
}

void writeAndRead(benchmark::State& state, int shapes) {
  const UniqueScene source = build(shapes);
  const std::string path =
      (std::filesystem::temp_directory_path() / "vornath_bench_import.vrnscene").string();
  for (auto _ : state) {
    state.PauseTiming();
    unlink(path.c_str());
    state.ResumeTiming();
    vrdmSerialize(source.get(), path.c_str());
    UniqueScene copy(vrdmDeserialize(path.c_str()));
    if (!copy) state.SkipWithError("not read");
    state.PauseTiming();
    copy.reset();
    state.ResumeTiming();
  }
  unlink(path.c_str());
}

void registerPair(const std::string& name, int shapes, const std::string& label,
                  void (*yardstick)(benchmark::State&, int), int yardstickShapes) {
  benchmark::RegisterBenchmark(name.c_str(), importScene, shapes)->UseRealTime();
  benchmark::RegisterBenchmark((name + "/" + label).c_str(), yardstick, yardstickShapes)
      ->UseRealTime();
}

const int registered = [] {
  registerPair("Scene::import of 100,000 shapes", kShapes, "write and read", writeAndRead, kShapes);
  registerPair("Scene::import of twice as many", 2 * kShapes, "100,000 shapes", importScene,
               kShapes);
  return 0;
}();

}  // namespace
