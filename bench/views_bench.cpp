// Reads and writes of fields through views, compared with the flat functions that a view must call.
#include <benchmark/benchmark.h>

#include <cstring>

#include "vornath_data/host/field.hpp"
#include "vornath_data/value.hpp"
#include "vornath_data/vrnt.h"

namespace {

using vrnt::BasicView;
using vrnt::ConstBasicView;
using vrnt::Value;

Value makeValue() {
  vrntValuesError_t* error = nullptr;
  return Value::adopt(
      vrntValueParse("{ a = 1; b = 2.0; c = { d = float3(1.0, 2.0, 3.0); e = 5.0; }; }", &error));
}

void readPlace(benchmark::State& state) {
  const Value value = makeValue();
  const auto field = ConstBasicView<const Value*>(&value).field(1);
  for (auto _ : state) benchmark::DoNotOptimize(field.read<float>());
}

// Finds and reads the place without a check of its type.
void readPlaceFlat(benchmark::State& state) {
  const Value value = makeValue();
  const vrntType_t* const type = value.type();
  for (auto _ : state) {
    if (vrntTypeFieldCount(type) < 2) state.SkipWithError("no such field");
    vrntValueView_t place;
    vrntValueStructField(&place, type, 1);
    float number;
    std::memcpy(&number, static_cast<const char*>(value.data()) + place.offset, sizeof number);
    benchmark::DoNotOptimize(number);
  }
}

void readNested(benchmark::State& state) {
  const Value value = makeValue();
  for (auto _ : state) {
    const ConstBasicView<const Value*> view(&value);
    benchmark::DoNotOptimize(view.field("c").field("e").read<float>());
  }
}

void writePlace(benchmark::State& state) {
  Value value = makeValue();
  const auto field = BasicView<Value*>(&value).field(1);
  for (auto _ : state) field.write(2.5F);
  benchmark::DoNotOptimize(value.data());
}

void writePlaceFlat(benchmark::State& state) {
  Value value = makeValue();
  const float number = 2.5F;
  for (auto _ : state) {
    vrntValueView_t place;
    vrntValueStructField(&place, value.type(), 1);
    vrntValuesError_t* error = nullptr;
    std::memcpy(vrntValueMap(value.address(), &place, &error), &number, sizeof number);
    vrntValueUnmap(value.get(), &place);
  }
  benchmark::DoNotOptimize(value.data());
}

void readField(benchmark::State& state) {
  const Value value = makeValue();
  const vrnt::host::Field<float> field(value.type(), "c.e");
  for (auto _ : state) benchmark::DoNotOptimize(field.get(value));
}

void writeField(benchmark::State& state) {
  Value value = makeValue();
  const vrnt::host::Field<float> field(value.type(), "c.e");
  float number = 2.5F;
  for (auto _ : state) {
    benchmark::DoNotOptimize(number);
    field.set(value, number);
    benchmark::ClobberMemory();
  }
}

// Uses a pointer whose value the compiler cannot know.
void copyFloat(benchmark::State& state) {
  Value value = makeValue();
  const void* bytes = value.data();
  for (auto _ : state) {
    benchmark::DoNotOptimize(bytes);
    float number;
    std::memcpy(&number, bytes, sizeof number);
    benchmark::DoNotOptimize(number);
  }
}

const int registered = [] {
  benchmark::RegisterBenchmark("view read", readPlace);
  benchmark::RegisterBenchmark("view read/flat functions", readPlaceFlat);
  benchmark::RegisterBenchmark("view read of a nested field by labels", readNested);
  benchmark::RegisterBenchmark("view write", writePlace);
  benchmark::RegisterBenchmark("view write/flat functions", writePlaceFlat);
  benchmark::RegisterBenchmark("field read", readField);
  benchmark::RegisterBenchmark("field read/copy of a float", copyFloat);
  benchmark::RegisterBenchmark("field write", writeField);
  benchmark::RegisterBenchmark("field write/copy of a float", copyFloat);
  return 0;
}();

}  // namespace
