// Coercion and specialization, of large arrays and of one value of the shared schemas. The
// yardstick is the least work that any solution needs: to allocate the result and to copy its bytes
// once, in runs that are known before.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "schemas.hpp"
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

// Bytes that lie in one piece in both types.
struct Run {
  std::uint64_t from;
  std::uint64_t to;
  std::uint64_t size;
};

// Adds the runs of the fields of `to`, each from the field of `from` that has its label.
void addRuns(std::vector<Run>& runs, const vrntValueView_t& from, const vrntValueView_t& to) {
  if (vrntTypeDescriptor(to.type) != VRNT_DESCRIPTOR_STRUCT) {
    const Run run{from.offset, to.offset, vrntTypeSize(to.type)};
    // The padding between two runs may be copied with them.
    if (!runs.empty() && runs.back().from < run.from &&
        run.from - runs.back().from == run.to - runs.back().to) {
      runs.back().size = run.from - runs.back().from + run.size;
    } else {
      runs.push_back(run);
    }
    return;
  }
  for (std::uint32_t t = 0; t < vrntTypeFieldCount(to.type); ++t) {
    const std::string_view label = vrntTypeFieldLabel(to.type, t);
    for (std::uint32_t f = 0; f < vrntTypeFieldCount(from.type); ++f) {
      if (label != vrntTypeFieldLabel(from.type, f)) continue;
      vrntValueView_t source;
      vrntValueView_t target;
      vrntValueStructField(&source, from.type, f);
      vrntValueStructField(&target, to.type, t);
      source.offset += from.offset;
      target.offset += to.offset;
      addRuns(runs, source, target);
    }
  }
}

using Operation = vrntValue_t* (*)(const vrntType_t*, const vrntValue_t*, vrntValuesError_t**);

// The default of a schema, as a value of its plain type.
void oneValue(benchmark::State& state, const bench::Schema& schema, Operation operation,
              bench::Form form) {
  const vrnt::UniqueValue value = bench::defaultOf(schema);
  const vrnt::UniqueType type = bench::typeOf(schema, form);
  vrntValuesError_t* error = nullptr;
  for (auto _ : state) {
    vrntValue_t* result = operation(type.get(), value.get(), &error);
    if (result == nullptr) state.SkipWithError("no result");
    benchmark::DoNotOptimize(result);
    vrntValueDestroy(result);
  }
}

void allocateAndCopyRuns(benchmark::State& state, const bench::Schema& schema, Operation operation,
                         bench::Form form) {
  constexpr std::uint64_t header = sizeof(vrntValue_t);
  const vrnt::UniqueValue value = bench::defaultOf(schema);
  const vrnt::UniqueType type = bench::typeOf(schema, form);
  vrntValuesError_t* error = nullptr;
  const vrnt::UniqueValue result(operation(type.get(), value.get(), &error));
  std::vector<Run> runs;
  addRuns(runs, {vrntValueType(value.get()), 0}, {vrntValueType(result.get()), 0});
  const char* const source = static_cast<const char*>(vrntValueData(value.get()));
  const std::uint64_t size = vrntTypeSize(vrntValueType(result.get()));
  for (auto _ : state) {
    char* const block = static_cast<char*>(std::malloc(header + size));
    for (const Run& run : runs) {
      std::memcpy(block + header + run.to, source + run.from, run.size);
    }
    benchmark::DoNotOptimize(block);
    benchmark::ClobberMemory();
    std::free(block);
  }
}

const int registered = [] {
  const auto ofOneValue = [](const std::string& function, Operation operation, bench::Form form) {
    for (const bench::Schema* schema : {&bench::schemaS(), &bench::schemaL()}) {
      const std::string name = function + " of " + schema->name;
      benchmark::RegisterBenchmark(name.c_str(), oneValue, *schema, operation, form);
      benchmark::RegisterBenchmark((name + "/malloc and memcpy of runs").c_str(),
                                   allocateAndCopyRuns, *schema, operation, form);
    }
  };
  ofOneValue("vrntCoerce", vrntCoerce, bench::Form::Moved);
  ofOneValue("vrntBuildSpecializationParameters", vrntBuildSpecializationParameters,
             bench::Form::Specialized);
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
