// Scaling from one thread to two. Each benchmark runs on one thread and on two, with objects that
// the threads share and with objects of their own. A table below the usual one shows the throughput
// of two threads relative to one. The benchmark of a shared counter gives the upper bound for
// functions whose threads share a reference count.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "vornath_data/handles.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace {

using vrnt::UniqueScene;
using vrnt::UniqueType;
using vrnt::UniqueValue;

// Canonical texts, so that the library finds them in its table while their types are alive.
const char* const kTypeTexts[] = {"{ float3 @default=float3(0.0, 0.0, 0.0) origin; int count; }",
                                  "{ float2[]* points; bool closed; }"};

constexpr std::uint32_t kClass = VRDM_CLASS_SHAPE;

void parseCached(benchmark::State& state, bool shared) {
  const char* const text = kTypeTexts[shared ? 0 : state.thread_index()];
  vrntValuesError_t* error = nullptr;
  const UniqueType held(vrntTypeParse(text, &error));
  for (auto _ : state) {
    vrntType_t* type = vrntTypeParse(text, &error);
    if (type != held.get()) state.SkipWithError("not answered from the table");
    vrntTypeDestroy(type);
  }
  state.SetItemsProcessed(state.iterations());
}

vrntValue_t* sharedValue() {
  static vrntValuesError_t* error = nullptr;
  static const UniqueValue value(vrntValueParse("{ a = 1; b = 2.0; }", &error));
  return value.get();
}

void copyValue(benchmark::State& state, bool shared) {
  const char* const texts[] = {"{ a = 1; b = 2.0; }", "{ c = 1; d = 2.0; }"};
  vrntValuesError_t* error = nullptr;
  const UniqueValue own(vrntValueParse(texts[state.thread_index()], &error));
  const vrntValue_t* const value = shared ? sharedValue() : own.get();
  for (auto _ : state) {
    vrntValue_t* copy = vrntValueCopy(value);
    benchmark::DoNotOptimize(copy);
    vrntValueDestroy(copy);
  }
  state.SetItemsProcessed(state.iterations());
}

UniqueScene makeScene() {
  UniqueScene scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), kClass);
  return scene;
}

// Reads a group. Every read makes a value of the group's fixed type, and all threads share the
// reference count of that type.
void readGroup(benchmark::State& state, bool shared) {
  static const UniqueScene common = makeScene();
  const UniqueScene own = makeScene();
  const vrdmScene_t* const scene = shared ? common.get() : own.get();
  for (auto _ : state) {
    vrntValue_t* value = vrdmGetDataValue(scene, kClass, 0, 0);
    benchmark::DoNotOptimize(value);
    vrntValueDestroy(value);
  }
  state.SetItemsProcessed(state.iterations());
}

void countUpAndDown(benchmark::State& state) {
  static std::atomic<std::uint32_t> count{1};
  for (auto _ : state) {
    count.fetch_add(1, std::memory_order_relaxed);
    benchmark::DoNotOptimize(count.fetch_sub(1, std::memory_order_acq_rel));
  }
  state.SetItemsProcessed(state.iterations());
}

class ScalingReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Aggregate || run.aggregate_name != "median") continue;
      const auto rate = run.counters.find("items_per_second");
      if (rate == run.counters.end()) continue;
      (run.threads == 1 ? alone_ : together_)[run.run_name.function_name] = rate->second.value;
    }
  }

  void Finalize() override {
    std::printf("\n%-36s %14s %14s %8s\n", "median, a second", "one thread", "two threads",
                "ratio");
    for (const auto& [name, rate] : alone_) {
      const auto two = together_.find(name);
      if (two == together_.end()) continue;
      std::printf("%-36s %14.3g %14.3g %8.2f\n", name.c_str(), rate, two->second,
                  two->second / rate);
    }
    std::fflush(stdout);
  }

 private:
  std::map<std::string, double> alone_;
  std::map<std::string, double> together_;
};

template <typename Function, typename... Arguments>
void onOneThreadAndTwo(const char* name, Function function, Arguments... arguments) {
  benchmark::RegisterBenchmark(name, function, arguments...)->Threads(1)->Threads(2)->UseRealTime();
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  onOneThreadAndTwo("a shared counter, up and down", countUpAndDown);
  onOneThreadAndTwo("a cached parse of one text", parseCached, true);
  onOneThreadAndTwo("a cached parse of different texts", parseCached, false);
  onOneThreadAndTwo("a copy of one block", copyValue, true);
  onOneThreadAndTwo("a copy of different blocks", copyValue, false);
  onOneThreadAndTwo("a group of one scene", readGroup, true);
  onOneThreadAndTwo("a group of different scenes", readGroup, false);
  ScalingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
