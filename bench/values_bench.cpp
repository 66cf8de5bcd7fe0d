// Copies of values, compared with the atomic operations that a copy needs.
#include <benchmark/benchmark.h>

#include <atomic>

#include "vornath_data/vrnt.h"

namespace {

void copyAndDestroy(benchmark::State& state) {
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueParse("{ a = 1; b = 2.0; }", &error);
  for (auto _ : state) {
    vrntValue_t* copy = vrntValueCopy(value);
    benchmark::DoNotOptimize(copy);
    vrntValueDestroy(copy);
  }
  vrntValueDestroy(value);
}

void atomicPair(benchmark::State& state) {
  std::atomic<std::uint32_t> block{1};
  std::atomic<std::uint32_t> type{1};
  for (auto _ : state) {
    block.fetch_add(1, std::memory_order_relaxed);
    type.fetch_add(1, std::memory_order_relaxed);
    benchmark::DoNotOptimize(block.fetch_sub(1, std::memory_order_acq_rel));
    benchmark::DoNotOptimize(type.fetch_sub(1, std::memory_order_acq_rel));
  }
}

void mapAndUnmap(benchmark::State& state) {
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueParse("{ a = 1; b = 2.0; }", &error);
  const vrntValueView_t view{vrntValueType(value), 0};
  for (auto _ : state) {
    benchmark::DoNotOptimize(vrntValueMap(&value, &view, &error));
    vrntValueUnmap(value, &view);
  }
  vrntValueDestroy(value);
}

const int registered = [] {
  benchmark::RegisterBenchmark("vrntValueCopy and vrntValueDestroy", copyAndDestroy);
  benchmark::RegisterBenchmark("vrntValueCopy and vrntValueDestroy/atomic pairs", atomicPair);
  benchmark::RegisterBenchmark("vrntValueMap and vrntValueUnmap", mapAndUnmap);
  return 0;
}();

}  // namespace
