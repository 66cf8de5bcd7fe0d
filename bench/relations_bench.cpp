// Questions about two types: whether one is a subtype of the other, and why not; and the extents of
// arrays.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "vornath_data/vrnt.h"

namespace {

vrntType_t* parsed(const char* text) {
  vrntValuesError_t* error = nullptr;
  return vrntTypeParse(text, &error);
}

void isSubType(benchmark::State& state, const char* textOfA, const char* textOfB, bool expected) {
  vrntType_t* a = parsed(textOfA);
  vrntType_t* b = parsed(textOfB);
  for (auto _ : state) {
    const bool answer = vrntTypeIsSubType(a, b) != 0;
    if (answer != expected) state.SkipWithError("a wrong answer");
  }
  vrntTypeDestroy(a);
  vrntTypeDestroy(b);
}

void checkSubType(benchmark::State& state, const char* textOfA, const char* textOfB) {
  vrntType_t* a = parsed(textOfA);
  vrntType_t* b = parsed(textOfB);
  for (auto _ : state) {
    vrntValuesError_t* error = nullptr;
    char* reason = vrntTypeCheckSubType(a, b, &error);
    benchmark::DoNotOptimize(reason);
    vrntDestroyString(reason);
  }
  vrntTypeDestroy(a);
  vrntTypeDestroy(b);
}

void arrayShape(benchmark::State& state, const char* text) {
  vrntType_t* type = parsed(text);
  std::int32_t shape[4];
  for (auto _ : state) {
    vrntTypeArrayShape(type, shape);
    benchmark::DoNotOptimize(shape);
  }
  vrntTypeDestroy(type);
}

constexpr char kStruct[] =
    "{ int a; float3 b; { float x; int y; bool z; } c; float[4] d; enum { A; B; } e; half h; }";
constexpr char kSuperStruct[] =
    "{ int a; float3 b; { float x; int y; bool z; } c; float[4] d; int e; half h; }";
constexpr char kOtherStruct[] =
    "{ int a; float3 b; { float x; int y; bool z; } c; float[4] d; float e; half h; }";

const int registered = [] {
  benchmark::RegisterBenchmark("vrntTypeIsSubType of the same struct", isSubType, kStruct, kStruct,
                               true);
  benchmark::RegisterBenchmark("vrntTypeIsSubType of structs", isSubType, kStruct, kSuperStruct,
                               true);
  benchmark::RegisterBenchmark("vrntTypeIsSubType of other structs", isSubType, kStruct,
                               kOtherStruct, false);
  benchmark::RegisterBenchmark("vrntTypeIsSubType of references", isSubType, "float[3]*",
                               "float[]*", true);
  benchmark::RegisterBenchmark("vrntTypeCheckSubType of other structs", checkSubType, kStruct,
                               kOtherStruct);
  benchmark::RegisterBenchmark("vrntTypeArrayShape of 1 dimension", arrayShape, "float[10]");
  benchmark::RegisterBenchmark("vrntTypeArrayShape of 3 dimensions", arrayShape, "float[10,20,30]");
  return 0;
}();

}  // namespace
