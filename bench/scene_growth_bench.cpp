// What grows with the number of shapes of a scene, from 10,000 to 1,000,000: to build it, to save
// and load it, to import it, to compare it and to print it. The larger size runs once, since its
// preparation takes long.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <streambuf>
#include <string>

#include "scenes.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"

namespace {

using vrnt::UniqueScene;
using vrnt::data::Scene;

int shapesOf(const benchmark::State& state) { return static_cast<int>(state.range(0)); }

void build(benchmark::State& state) {
  for (auto _ : state) {
    UniqueScene scene = bench::makeShapes(shapesOf(state));
    state.PauseTiming();
    scene.reset();
    state.ResumeTiming();
  }
}

class File {
 public:
  File() : path_((std::filesystem::temp_directory_path() / "vornath_bench_growth").string()) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { remove(); }

  const char* path() const { return path_.c_str(); }
  void remove() const { unlink(path()); }

 private:
  std::string path_;
};

void save(benchmark::State& state) {
  const UniqueScene scene = bench::makeShapes(shapesOf(state));
  const File file;
  for (auto _ : state) {
    state.PauseTiming();
    file.remove();
    state.ResumeTiming();
    vrdmSerialize(scene.get(), file.path());
  }
}

void load(benchmark::State& state) {
  const File file;
  vrdmSerialize(bench::makeShapes(shapesOf(state)).get(), file.path());
  for (auto _ : state) {
    UniqueScene scene(vrdmDeserialize(file.path()));
    if (!scene) state.SkipWithError("not read");
    state.PauseTiming();
    scene.reset();
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
    target.reset();
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
