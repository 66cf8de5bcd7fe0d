// Access to fixed types, compared with the atomic operations that a counted handle needs.
#include <benchmark/benchmark.h>

#include <atomic>
#include <string>

#include "vornath_data/vrnt.h"

namespace {

template <typename Get>
void getAndDestroy(benchmark::State& state, Get get) {
  for (auto _ : state) {
    vrntType_t* type = get();
    benchmark::DoNotOptimize(type);
    vrntTypeDestroy(type);
  }
}

void atomicPair(benchmark::State& state) {
  std::atomic<std::uint32_t> count{1};
  for (auto _ : state) {
    count.fetch_add(1, std::memory_order_relaxed);
    benchmark::DoNotOptimize(count.fetch_sub(1, std::memory_order_acq_rel));
  }
}

// Recognises a type that is the last of its kind, so that all others are compared first.
void recognise(benchmark::State& state, vrntType_t* type,
               std::int32_t (*number)(const vrntType_t*)) {
  for (auto _ : state) benchmark::DoNotOptimize(number(type));
  vrntTypeDestroy(type);
}

template <typename Get>
void compare(const std::string& name, Get get) {
  const std::string title = name + " and vrntTypeDestroy";
  benchmark::RegisterBenchmark(title.c_str(), [get](auto& state) { getAndDestroy(state, get); });
  benchmark::RegisterBenchmark((title + "/atomic pair").c_str(), atomicPair);
}

const int registered = [] {
  compare("vrntTypeSpectrum", vrntTypeSpectrum);
  compare("vrntTypeEmission", vrntTypeEmission);
  compare("vrntTypeLightUnit", vrntTypeLightUnit);
  compare("vrntTypeWrapmode", vrntTypeWrapmode);
  compare("vrntTypeMaterialParam", [] { return vrntTypeMaterialParam(5); });
  compare("vrntTypeSampler", [] { return vrntTypeSampler(0); });
  benchmark::RegisterBenchmark("vrntTypeMaterialParamType of the last", [](auto& state) {
    recognise(state, vrntTypeMaterialParam(5), vrntTypeMaterialParamType);
  });
  benchmark::RegisterBenchmark("vrntTypeMaterialParamType of none", [](auto& state) {
    recognise(state, vrntTypeSpectrum(), vrntTypeMaterialParamType);
  });
  return 0;
}();

}  // namespace
