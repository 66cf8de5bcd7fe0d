// Import of a large scene into one of the same size. The yardsticks are to write the same scene to
// a file and read it back, and to import half as many objects.
#include <benchmark/benchmark.h>

#include <string>

#include "scenes.hpp"
#include "scratch_file.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace {

constexpr int kShapes = 100'000;

using vrnt::UniqueScene;

void importScene(benchmark::State& state, int shapes) {
  const UniqueScene source = bench::makeMeshes(shapes);
  for (auto _ : state) {
    state.PauseTiming();
    UniqueScene target = bench::makeMeshes(shapes);
    state.ResumeTiming();
    benchmark::DoNotOptimize(target->import(*source));
    state.PauseTiming();
    bench::destroy(target);
    state.ResumeTiming();
  }
}

void writeAndRead(benchmark::State& state, int shapes) {
  const UniqueScene source = bench::makeMeshes(shapes);
  const bench::ScratchFile file("import");
  for (auto _ : state) {
    state.PauseTiming();
    file.remove();
    state.ResumeTiming();
    vrdmSerialize(source.get(), file.path());
    UniqueScene copy(vrdmDeserialize(file.path()));
    if (!copy) state.SkipWithError("not read");
    state.PauseTiming();
    bench::destroy(copy);
    state.ResumeTiming();
  }
}

void registerPair(const std::string& name, int shapes, const std::string& label,
                  void (*yardstick)(benchmark::State&, int), int yardstickShapes) {
  benchmark::RegisterBenchmark(name.c_str(), importScene, shapes)->MeasureProcessCPUTime();
  benchmark::RegisterBenchmark((name + "/" + label).c_str(), yardstick, yardstickShapes)
      ->MeasureProcessCPUTime();
}

const int registered = [] {
  registerPair("Scene::import of 100,000 shapes", kShapes, "write and read", writeAndRead, kShapes);
  registerPair("Scene::import of twice as many", 2 * kShapes, "100,000 shapes", importScene,
               kShapes);
  return 0;
}();

}  // namespace
