// Coercion and specialization of large arrays. The yardstick is the least work that any solution
// needs: to allocate the result and pass over its bytes once.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "vornath_data/handles.hpp"
#include "vornath_data/vrnt.h"

namespace {

constexpr std::uint64_t kElements = 1000000;

class Case {
 public:
  Case(const std::string& valueType, const std::string& type)
      : valueType_(vrntTypeParse(valueType.c_str(), &error_)),
        type_(vrntTypeParse(type.c_str(), &error_)),
        value_(vrntValueCreate(valueType_.get(), &error_)) {}

  template <typename Operation>
  void run(benchmark::State& state, Operation operation) {
    for (auto _ : state) {
      vrntValue_t* result = operation(type_.get(), value_.get(), &error_);
      benchmark::DoNotOptimize(result);
      vrntValueDestroy(result);
    }
  }

 private:
  vrntValuesError_t* error_ = nullptr;
  vrnt::UniqueType valueType_;
  vrnt::UniqueType type_;
  vrnt::UniqueValue value_;
};

void coerceToAnotherExtent(benchmark::State& state) {
  Case("float[1000000]", "float[1000001]").run(state, vrntCoerce);
}

void copyFloats(benchmark::State& state) {
  void* const source = std::calloc(kElements, 4);
  for (auto _ : state) {
    void* const result = std::calloc(kElements + 1, 4);
    std::memcpy(result, source, kElements * 4);
    benchmark::DoNotOptimize(result);
    std::free(result);
  }
  std::free(source);
}

void coerceStructs(benchmark::State& state) {
  Case("{ float3 a; int b; enum { A; B; } e; }[1000000]",
       "{ float3 a; enum { B; A; } e; float c; }[1000000]")
      .run(state, vrntCoerce);
}

void specializeStructs(benchmark::State& state) {
  Case("{ float3 a; int b; float c; }[1000000]",
       "{ float3 a; int @no_specialize b; float c; }[1000000]")
      .run(state, vrntBuildSpecializationParameters);
}

// Copies the same bytes to places known at compile time: 16 and 4 of every 32 bytes.
void moveStructs(benchmark::State& state) {
  char* const source = static_cast<char*>(std::calloc(kElements, 32));
  for (auto _ : state) {
    char* const result = static_cast<char*>(std::calloc(kElements, 32));
    for (std::uint64_t i = 0; i < kElements; ++i) {
      std::memcpy(result + 32 * i, source + 32 * i, 16);
      std::memcpy(result + 32 * i + 16, source + 32 * i + 20, 4);
    }
    benchmark::DoNotOptimize(result);
    std::free(result);
  }
  std::free(source);
}

void coerceSmall(benchmark::State& state) {
  Case("{ int a; float b; }", "{ float b; int @default=7 c; }").run(state, vrntCoerce);
}

const int registered = [] {
  benchmark::RegisterBenchmark("vrntCoerce of a million floats", coerceToAnotherExtent);
  benchmark::RegisterBenchmark("vrntCoerce of a million floats/calloc and memcpy", copyFloats);
  benchmark::RegisterBenchmark("vrntCoerce of a million structs", coerceStructs);
  benchmark::RegisterBenchmark("vrntCoerce of a million structs/calloc and moves", moveStructs);
  benchmark::RegisterBenchmark("vrntBuildSpecializationParameters of a million structs",
                               specializeStructs);
  benchmark::RegisterBenchmark(
      "vrntBuildSpecializationParameters of a million structs/calloc and moves", moveStructs);
  benchmark::RegisterBenchmark("vrntCoerce of a small struct", coerceSmall);
  return 0;
}();

}  // namespace
