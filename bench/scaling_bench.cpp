// Scaling from one thread to two. Each benchmark runs on one thread and on two, with objects that
// the threads share and with objects of their own. A shared count is the upper bound for functions
// whose threads share a reference count.
#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <string>

#include "ratio_reporter.hpp"
#include "schemas.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace {

using vrnt::UniqueScene;
using vrnt::UniqueType;
using vrnt::UniqueValue;

constexpr std::uint32_t kClass = VRDM_CLASS_SHAPE;

// Types of 2.3 KB of text, which stay alive: threads that parsed one of them at the same time would
// make two.
const vrntType_t* livingType(int index) {
  static const auto types = [] {
    vrntValuesError_t* error = nullptr;
    bench::NewTypeTexts texts(bench::schemaS());
    return std::array{UniqueType(vrntTypeParse(texts.next(), &error)),
                      UniqueType(vrntTypeParse(texts.next(), &error))};
  }();
  return types[static_cast<std::size_t>(index)].get();
}

void parseCached(benchmark::State& state, bool shared) {
  const vrntType_t* const held = livingType(shared ? 0 : state.thread_index());
  const std::string text = vrntTypeString(held);
  vrntValuesError_t* error = nullptr;
  for (auto _ : state) {
    vrntType_t* type = vrntTypeParse(text.c_str(), &error);
    if (type != held) state.SkipWithError("not answered from the table");
    vrntTypeDestroy(type);
  }
}

void parseValue(benchmark::State& state) {
  const std::string text = bench::valueText(bench::schemaS());
  vrntValuesError_t* error = nullptr;
  for (auto _ : state) {
    vrntValue_t* value = vrntValueParse(text.c_str(), &error);
    benchmark::DoNotOptimize(value);
    vrntValueDestroy(value);
  }
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
}

void countUpAndDown(benchmark::State& state) {
  static std::atomic<std::uint32_t> count{1};
  for (auto _ : state) {
    count.fetch_add(1, std::memory_order_relaxed);
    benchmark::DoNotOptimize(count.fetch_sub(1, std::memory_order_acq_rel));
  }
}

// The yardstick is the same on one thread. Times are those of one operation, over all threads, so
// that a ratio of 0.5 is twice the throughput.
template <typename Function, typename... Arguments>
std::string onTwoThreads(const std::string& name, Function function, Arguments... arguments) {
  const std::string row = name + " on two threads";
  benchmark::RegisterBenchmark(row.c_str(), function, arguments...)->Threads(2)->UseRealTime();
  benchmark::RegisterBenchmark((row + "/on one thread").c_str(), function, arguments...)
      ->Threads(1)
      ->UseRealTime();
  return row;
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  onTwoThreads("a shared count", countUpAndDown);
  const std::string oneText = onTwoThreads("a cached parse of one text", parseCached, true);
  benchmark::RegisterBenchmark((oneText + "/a shared count").c_str(), countUpAndDown)
      ->Threads(2)
      ->UseRealTime();
  onTwoThreads("a cached parse of different texts", parseCached, false);
  onTwoThreads("a parse of value texts", parseValue);
  onTwoThreads("a copy of one block", copyValue, true);
  onTwoThreads("a copy of different blocks", copyValue, false);
  onTwoThreads("a group of one scene", readGroup, true);
  onTwoThreads("a group of different scenes", readGroup, false);
  bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
