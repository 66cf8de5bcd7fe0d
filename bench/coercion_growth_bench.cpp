// The first coercion between two types of n parts, which works out how the parts correspond. Each
// iteration has a new pair of types, made outside the measurement.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "vornath_data/handles.hpp"
#include "vornath_data/vrnt.h"

namespace {

struct Texts {
  std::string from;
  std::string to;
};

// Makes two texts with n parts. The prefix is new for each pair, and each label may begin with it.
using MakeTexts = Texts (*)(std::int64_t n, const std::string& prefix);

std::string numbered(const std::string& prefix, std::int64_t i) {
  return prefix + "_" + std::to_string(i);
}

Texts fieldsInAnotherOrder(std::int64_t n, const std::string& prefix) {
  Texts texts{"{", "{"};
  for (std::int64_t i = 0; i < n; ++i) {
    texts.from += " float " + numbered(prefix, i) + ";";
    texts.to += " float " + numbered(prefix, n - 1 - i) + ";";
  }
  return {texts.from + " }", texts.to + " }"};
}

// Every second field of the result is missing in the value.
Texts missingFields(std::int64_t n, const std::string& prefix) {
  Texts texts{"{", "{"};
  for (std::int64_t i = 0; i < n; ++i) {
    const std::string field = " float " + numbered(prefix, i) + ";";
    if (i % 2 == 0) texts.from += field;
    texts.to += field;
  }
  return {texts.from + " }", texts.to + " }"};
}

Texts constructorsInAnotherOrder(std::int64_t n, const std::string& prefix) {
  Texts texts{"enum {", "enum {"};
  for (std::int64_t i = 0; i < n; ++i) {
    texts.from += " E" + numbered(prefix, i) + ";";
    texts.to += " E" + numbered(prefix, n - 1 - i) + ";";
  }
  return {texts.from + " }", texts.to + " }"};
}

// The two fields of each level change places, and the result has one more.
Texts nestedStructs(std::int64_t n, const std::string& prefix) {
  Texts texts{"float", "float"};
  for (std::int64_t i = 0; i < n; ++i) {
    texts.from.insert(0, "{ int a; ").append(" ").append(prefix).append("; }");
    texts.to.insert(0, "{ ").append(" ").append(prefix).append("; int a; float @default=1.0 b; }");
  }
  return texts;
}

// Only the innermost elements differ.
Texts nestedArrays(std::int64_t n, const std::string& prefix) {
  Texts texts{"{ int a; float " + prefix + "; }", "{ float " + prefix + "; int a; }"};
  for (std::int64_t i = 0; i < n; ++i) {
    texts.from += "[1]";
    texts.to += "[1]";
  }
  return texts;
}

void coerceFirst(benchmark::State& state, MakeTexts make) {
  vrntValuesError_t* error = nullptr;
  int number = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const Texts texts = make(state.range(0), std::string("x").append(std::to_string(++number)));
    vrnt::UniqueType from(vrntTypeParse(texts.from.c_str(), &error));
    vrnt::UniqueType to(vrntTypeParse(texts.to.c_str(), &error));
    vrnt::UniqueValue value(vrntValueCreate(from.get(), &error));
    state.ResumeTiming();
    vrnt::UniqueValue result(vrntCoerce(to.get(), value.get(), &error));
    state.PauseTiming();
    if (!result) state.SkipWithError("not coerced");
    result.reset();
    value.reset();
    from.reset();
    to.reset();
    state.ResumeTiming();
  }
}

const int registered = [] {
  // The number of iterations is set, since most of the time goes into the types.
  const auto growth = [](const char* name, MakeTexts make, std::int64_t small, std::int64_t large) {
    benchmark::RegisterBenchmark(name, coerceFirst, make)->Arg(small)->Arg(large)->Iterations(2);
  };
  growth("first vrntCoerce of n fields in another order", fieldsInAnotherOrder, 10'000, 100'000);
  growth("first vrntCoerce to n fields of which half are missing", missingFields, 10'000, 100'000);
  growth("first vrntCoerce of an enum of n in another order", constructorsInAnotherOrder, 10'000,
         100'000);
  growth("first vrntCoerce of structs n deep", nestedStructs, 1'000, 8'000);
  growth("first vrntCoerce of arrays n deep", nestedArrays, 1'000, 8'000);
  return 0;
}();

}  // namespace
