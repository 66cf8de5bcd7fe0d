// Requests for a type that is alive, by its parts instead of a text. The yardstick is to hash the
// parts, to find them in a hash table, and to count.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>
#include <unordered_map>

#include "vornath_data/handles.hpp"
#include "vornath_data/vrnt.h"

namespace {

constexpr std::uint64_t kCount = 7;

void floatArray(benchmark::State& state) {
  const vrnt::UniqueType held(vrtnTypeFloatArray(kCount));
  for (auto _ : state) {
    vrntType_t* type = vrtnTypeFloatArray(kCount);
    if (type != held.get()) state.SkipWithError("not the living type");
    vrntTypeDestroy(type);
  }
}

void findAndCount(benchmark::State& state) {
  std::unordered_map<std::uint64_t, std::atomic<std::uint32_t>> table;
  for (std::uint64_t i = 0; i < 1'000; ++i) table[i] = 1;
  std::uint64_t count = kCount;
  for (auto _ : state) {
    benchmark::DoNotOptimize(count);
    std::atomic<std::uint32_t>& references = table.find(count)->second;
    references.fetch_add(1, std::memory_order_relaxed);
    benchmark::DoNotOptimize(references.fetch_sub(1, std::memory_order_acq_rel));
  }
}

const int registered = [] {
  benchmark::RegisterBenchmark("vrtnTypeFloatArray of a living type", floatArray);
  benchmark::RegisterBenchmark("vrtnTypeFloatArray of a living type/find and count", findAndCount);
  return 0;
}();

}  // namespace
