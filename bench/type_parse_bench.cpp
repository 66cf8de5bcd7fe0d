// Parse of type texts whose type is not alive, so that each is scanned, parsed and built. The
// yardstick is a bare scan of the same bytes.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "schemas.hpp"
#include "token_scan.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/vrnt.h"

namespace {

void parseOnce(benchmark::State& state, const char* text) {
  vrntValuesError_t* error = nullptr;
  vrntType_t* type = vrntTypeParse(text, &error);
  if (type == nullptr) state.SkipWithError("not parsed");
  benchmark::DoNotOptimize(type);
  vrntTypeDestroy(type);
}

void parseNew(benchmark::State& state, const bench::Schema& schema) {
  bench::NewTypeTexts texts(schema);
  for (auto _ : state) parseOnce(state, texts.next());
}

void scan(benchmark::State& state, const bench::Schema& schema) {
  bench::NewTypeTexts texts(schema);
  std::string room;
  for (auto _ : state) {
    texts.next();
    benchmark::DoNotOptimize(bench::countTokens(texts.current(), room));
  }
}

std::string structOf(std::int64_t fields) {
  std::string text = "{";
  for (std::int64_t i = 0; i < fields; ++i) text += " float field_" + std::to_string(i) + ";";
  return text + " }";
}

void parseFields(benchmark::State& state) {
  const std::string text = structOf(state.range(0));
  for (auto _ : state) parseOnce(state, text.c_str());
}

constexpr int kLivingTypes = 1'000'000;

// Parses small structs while `living` other types are alive. They are made and destroyed outside
// the measurement.
void parseBeside(benchmark::State& state, int living) {
  std::vector<vrnt::UniqueType> types;
  types.reserve(static_cast<std::size_t>(living));
  for (int i = 0; i < living; ++i) {
    types.emplace_back(vrtnTypeFloatArray(static_cast<std::uint64_t>(i) + 1));
  }
  int number = 0;
  std::string text;
  for (auto _ : state) {
    text.assign("{ float a_").append(std::to_string(++number)).append("; int3 b; }");
    parseOnce(state, text.c_str());
  }
}

const int registered = [] {
  for (const bench::Schema* schema : {&bench::schemaS(), &bench::schemaL()}) {
    const std::string name = "vrntTypeParse of a new type " + schema->name;
    benchmark::RegisterBenchmark(name.c_str(), parseNew, *schema);
    benchmark::RegisterBenchmark((name + "/flex scan").c_str(), scan, *schema);
  }
  benchmark::RegisterBenchmark("vrntTypeParse of n fields", parseFields)->Arg(1'000)->Arg(10'000);
  // The number of iterations is set, since the preparation of each attempt takes long.
  constexpr int iterations = 20'000;
  benchmark::RegisterBenchmark("vrntTypeParse beside a million types", parseBeside, kLivingTypes)
      ->Iterations(iterations);
  benchmark::RegisterBenchmark("vrntTypeParse beside a million types/beside none", parseBeside, 0)
      ->Iterations(iterations);
  return 0;
}();

}  // namespace
