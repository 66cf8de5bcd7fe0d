// Defaults, streams, writes and types of n parts. Each should take a time that is proportional to
// n, and a write the same for any n. The sizes are bounded so that a run does not take long.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "vornath_data/handles.hpp"
#include "vornath_data/vrnt.h"

namespace {

vrnt::UniqueType parsedType(const std::string& text) {
  vrntValuesError_t* error = nullptr;
  return vrnt::UniqueType(vrntTypeParse(text.c_str(), &error));
}

// Parses structs that are n levels deep, where each level has a default. The default of a level
// contains those below it, so the text grows by the square of n.
void parseDefaults(benchmark::State& state) {
  std::string text = "float @default=0.5";
  std::string value = "0.5";
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    value.insert(0, "{ x = ").append("; }");
    text.insert(0, "{ ").append(" x; } @default=").append(value);
  }
  for (auto _ : state) {
    const vrnt::UniqueType type = parsedType(text);
    if (!type) state.SkipWithError("not parsed");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

// The first default of a struct that is n levels deep. Each level has a field with a default.
void nestedDefaults(benchmark::State& state) {
  vrntValuesError_t* error = nullptr;
  int number = 0;
  for (auto _ : state) {
    state.PauseTiming();
    std::string text = "float @default=0.5";
    const std::string label = std::string("x").append(std::to_string(++number));
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      text.insert(0, "{ int @default=3 a; ").append(" ").append(label).append("; }");
    }
    vrnt::UniqueType type = parsedType(text);
    state.ResumeTiming();
    vrnt::UniqueValue value(vrntValueCreateDefault(type.get(), &error));
    state.PauseTiming();
    if (!value) state.SkipWithError("no default");
    value.reset();
    type.reset();
    state.ResumeTiming();
  }
}

struct Stream {
  std::vector<char> bytes;
  std::size_t read = 0;
};

void writeTo(const void* bytes, std::uint64_t size, void* user) {
  auto& stream = static_cast<Stream*>(user)->bytes;
  const char* first = static_cast<const char*>(bytes);
  stream.insert(stream.end(), first, first + size);
}

void readFrom(void* bytes, std::uint64_t size, void* user) {
  auto& stream = *static_cast<Stream*>(user);
  std::memcpy(bytes, stream.bytes.data() + stream.read, size);
  stream.read += size;
}

// n structs, each of which refers to the next. The type of each reference has the types of all
// those behind it.
vrnt::UniqueValue chain(std::int64_t n) {
  std::string text = "1";
  for (std::int64_t i = 0; i < n; ++i) text.insert(0, "&{ a = ").append("; b = 2; }");
  vrntValuesError_t* error = nullptr;
  return vrnt::UniqueValue(vrntValueParse(text.c_str(), &error));
}

void writeReferences(benchmark::State& state) {
  const vrnt::UniqueValue value = chain(state.range(0));
  vrntValuesError_t* error = nullptr;
  Stream stream;
  for (auto _ : state) {
    stream.bytes.clear();
    vrntValueSerialize(value.get(), writeTo, &stream, &error);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(stream.bytes.size()));
}

// The types of the stream are not alive when it is read.
void readReferences(benchmark::State& state) {
  vrntValuesError_t* error = nullptr;
  Stream stream;
  vrntValueSerialize(chain(state.range(0)).get(), writeTo, &stream, &error);
  for (auto _ : state) {
    stream.read = 0;
    const vrnt::UniqueValue value(vrntValueDeserialize(readFrom, &stream, &error));
    if (!value) state.SkipWithError("not read");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(stream.bytes.size()));
}

// One write of 8 bytes into an array of n references.
void writeOneOf(benchmark::State& state) {
  vrntValuesError_t* error = nullptr;
  const auto n = static_cast<std::uint64_t>(state.range(0));
  const vrnt::UniqueType type = parsedType("void*[" + std::to_string(n) + "]");
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  const std::uint64_t null = 0;
  std::uint64_t index = 0;
  for (auto _ : state) {
    index = (index + 7919) % n;
    vrntValueWrite(&value, 8 * index, &null, sizeof null, &error);
  }
  vrntValueDestroy(value);
}

// Arrays n deep whose number of elements is far over 64 bits.
void largeExtents(benchmark::State& state) {
  std::string text = "float";
  for (std::int64_t i = 0; i < state.range(0); ++i) text += "[2147483647]";
  vrntValuesError_t* error = nullptr;
  for (auto _ : state) {
    const vrnt::UniqueType type(vrntTypeParse(text.c_str(), &error));
    benchmark::DoNotOptimize(type.get());
  }
}

const int registered = [] {
  benchmark::RegisterBenchmark("vrntTypeParse of a default on each of n levels", parseDefaults)
      ->Arg(100)
      ->Arg(400);
  benchmark::RegisterBenchmark("first default of n nested structs", nestedDefaults)
      ->Arg(1'000)
      ->Arg(6'000)
      ->Iterations(2);
  benchmark::RegisterBenchmark("vrntValueSerialize of references n deep", writeReferences)
      ->Arg(100)
      ->Arg(1'000);
  benchmark::RegisterBenchmark("vrntValueDeserialize of references n deep", readReferences)
      ->Arg(100)
      ->Arg(1'000);
  benchmark::RegisterBenchmark("vrntValueWrite of 8 bytes into n references", writeOneOf)
      ->Arg(1'000)
      ->Arg(1'000'000);
  benchmark::RegisterBenchmark("vrntTypeParse of n arrays of the largest extent", largeExtents)
      ->Arg(100)
      ->Arg(1'000);
  return 0;
}();

}  // namespace
