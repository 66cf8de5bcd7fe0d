// Parse of value texts. The yardstick is a bare scan of the same bytes that converts each number by
// std::from_chars.
#include <benchmark/benchmark.h>

#include <charconv>
#include <string>
#include <vector>

#include "schemas.hpp"
#include "token_scan.hpp"
#include "vornath_data/vrnt.h"

namespace {

void parseText(benchmark::State& state, const std::string& text) {
  vrntValuesError_t* error = nullptr;
  for (auto _ : state) {
    vrntValue_t* value = vrntValueParse(text.c_str(), &error);
    if (value == nullptr) state.SkipWithError("not parsed");
    benchmark::DoNotOptimize(value);
    vrntValueDestroy(value);
  }
}

void scanText(benchmark::State& state, const std::string& text) {
  std::string room;
  for (auto _ : state) benchmark::DoNotOptimize(bench::convertNumbers(text, room));
}

// 10,000 floats of up to seven digits, as a text of one array.
constexpr int kFloats = 10'000;

std::string floatsText() {
  std::string text = "[ ";
  for (int i = 0; i < kFloats; ++i) {
    if (i > 0) text += ", ";
    text += std::to_string(i % 100) + "." + std::to_string(10'000 + 7919 * i % 90'000);
  }
  return text + " ]";
}

// Converts the same numbers one after the other, and nothing else.
void convertFloats(benchmark::State& state, const std::string& text) {
  std::vector<float> floats(kFloats);
  for (auto _ : state) {
    const char* at = text.data() + 2;
    for (float& number : floats)
      at = std::from_chars(at, text.data() + text.size(), number).ptr + 2;
    benchmark::DoNotOptimize(floats.data());
    benchmark::ClobberMemory();
  }
}

void perFloat(benchmark::State& state, void (*measure)(benchmark::State&, const std::string&)) {
  measure(state, floatsText());
  state.counters["per float"] = benchmark::Counter(
      kFloats, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

const int registered = [] {
  for (const bench::Schema* schema : {&bench::schemaS(), &bench::schemaL()}) {
    const std::string name = "vrntValueParse of " + schema->name;
    const std::string text = bench::valueText(*schema);
    benchmark::RegisterBenchmark(name.c_str(), parseText, text);
    benchmark::RegisterBenchmark((name + "/scan and from_chars").c_str(), scanText, text);
  }
  benchmark::RegisterBenchmark("vrntValueParse of 10,000 floats", perFloat, parseText);
  benchmark::RegisterBenchmark("vrntValueParse of 10,000 floats/from_chars", perFloat,
                               convertFloats);
  return 0;
}();

}  // namespace
