// What grows with the number of shapes of a scene, from 10,000 to 1,000,000: to build it, to save
// and load it, to import it, to compare it and to print it. The larger size runs once, since its
// preparation takes long.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <fstream>
#include <ostream>
#include <streambuf>

#include "scenes.hpp"
#include "scratch_file.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"

namespace {

using vrnt::UniqueScene;
using vrnt::data::Scene;

int shapesOf(const benchmark::State& state) { return static_cast<int>(state.range(0)); }

// The memory of the process that is in RAM, in bytes.
double resident() {
  std::ifstream file("/proc/self/statm");
  double pages = 0;
  file >> pages >> pages;
  return pages * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void build(benchmark::State& state) {
  double bytes = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const double before = resident();
    state.ResumeTiming();
    UniqueScene scene = bench::makeShapes(shapesOf(state));
    state.PauseTiming();
    bytes = resident() - before;
    bench::destroy(scene);
    state.ResumeTiming();
  }
  state.counters["bytes per shape"] = bytes / shapesOf(state);
}

void save(benchmark::State& state) {
  const UniqueScene scene = bench::makeShapes(shapesOf(state));
  const bench::ScratchFile file("growth");
  for (auto _ : state) {
    state.PauseTiming();
    file.remove();
    state.ResumeTiming();
    vrdmSerialize(scene.get(), file.path());
  }
}

void load(benchmark::State& state) {
  const bench::ScratchFile file("growth");
  vrdmSerialize(bench::makeShapes(shapesOf(state)).get(), file.path());
  for (auto _ : state) {
    UniqueScene scene(vrdmDeserialize(file.path()));
    if (!scene) state.SkipWithError("not read");
    state.PauseTiming();
    bench::destroy(scene);
    state.ResumeTiming();
  }
}

void import(benchmark::State& state) {
  const UniqueScene source = bench::makeMeshes(shapesOf(state));
  for (auto _ : state) {
    state.PauseTiming();
    UniqueScene target = bench::makeMeshes(shapesOf(state));
    state.ResumeTiming();
    benchmark::DoNotOptimize(target->import(*source));
    state.PauseTiming();
    bench::destroy(target);
    state.ResumeTiming();
  }
}

void compare(benchmark::State& state) {
  const UniqueScene a = bench::makeMeshes(shapesOf(state));
  const UniqueScene b = bench::makeMeshes(shapesOf(state));
  for (auto _ : state) {
    if (!Scene::equivalent(*a, *b)) state.SkipWithError("not equivalent");
  }
}

class NullBuffer : public std::streambuf {
  int_type overflow(int_type character) override { return traits_type::not_eof(character); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

void dump(benchmark::State& state) {
  const UniqueScene scene = bench::makeMeshes(shapesOf(state));
  NullBuffer buffer;
  std::ostream stream(&buffer);
  for (auto _ : state) stream << *scene;
}

const int registered = [] {
  const auto growth = [](const char* name, void (*measure)(benchmark::State&)) {
    benchmark::RegisterBenchmark(name, measure)->Arg(10'000)->MeasureProcessCPUTime();
    benchmark::RegisterBenchmark(name, measure)
        ->Arg(1'000'000)
        ->Iterations(1)
        ->Repetitions(1)
        ->MeasureProcessCPUTime();
  };
  growth("build n shapes", build);
  growth("vrdmSerialize of n shapes", save);
  growth("vrdmDeserialize of n shapes", load);
  growth("Scene::import of n shapes", import);
  growth("Scene::equivalent of n shapes", compare);
  growth("dump of n shapes", dump);
  return 0;
}();

}  // namespace
