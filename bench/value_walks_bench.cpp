// What walks through a whole value: comparison, text, streams and defaults, for values of several
// forms. Where a value is a single run of bytes, the yardstick reads or copies these. For the
// shared schemas S and L it is the least that a new value needs: an allocation and a copy of its
// bytes.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "schemas.hpp"
#include "vornath_data/vrnt.h"

namespace {

// A value that is made once, compared, printed and streamed. It is destroyed after the measurement.
class Sample {
 public:
  explicit Sample(vrntValue_t* value) : value_(value), view_{vrntValueType(value), 0} {}
  Sample(const Sample&) = delete;
  Sample& operator=(const Sample&) = delete;
  ~Sample() { vrntValueDestroy(value_); }

  const vrntValue_t* value() const { return value_; }
  const vrntValueView_t* view() const { return &view_; }
  std::size_t size() const { return vrntTypeSize(vrntValueType(value_)); }

 private:
  vrntValue_t* value_;
  vrntValueView_t view_;
};

vrntValue_t* defaultOf(const std::string& typeText) {
  vrntValuesError_t* error = nullptr;
  vrntType_t* type = vrntTypeParse(typeText.c_str(), &error);
  vrntValue_t* value = vrntValueCreateDefault(type, &error);
  vrntTypeDestroy(type);
  return value;
}

vrntValue_t* parsed(const std::string& text) {
  vrntValuesError_t* error = nullptr;
  return vrntValueParse(text.c_str(), &error);
}

constexpr char kStruct[] =
    "{ int a; float3 b; { float x; int y; bool z; } c; float[4] d; enum { A; B; } e; half h; }";

vrntValue_t* makeStruct() { return defaultOf(kStruct); }
vrntValue_t* makeStructs() { return defaultOf(std::string(kStruct) + "[1000]"); }
vrntValue_t* makeFloats() { return defaultOf("float[10000]"); }
vrntValue_t* makeArrays() { return defaultOf("float[2][5000]"); }
vrntValue_t* makeInts() { return defaultOf("int[100,100]"); }

vrntValue_t* makeReferences() {
  std::string text = "[ &0";
  for (int i = 1; i < 1000; ++i) text += ", &" + std::to_string(i);
  return parsed(text + " ]");
}

// 50 structs, each of which refers to the next.
vrntValue_t* makeChain() {
  std::string text = "1";
  for (int i = 0; i < 50; ++i) text = "&{ a = " + text + "; b = 2; }";
  return parsed(text);
}

vrntValue_t* makeS() { return bench::defaultOf(bench::schemaS()).release(); }
vrntValue_t* makeL() { return bench::defaultOf(bench::schemaL()).release(); }

using Make = vrntValue_t* (*)();

void equal(benchmark::State& state, Make make) {
  const Sample a(make());
  const Sample b(make());
  for (auto _ : state) {
    const std::int32_t same = vrntValueEqual(a.value(), a.view(), b.value(), b.view(), 0, nullptr);
    if (same == 0) state.SkipWithError("two equal values differ");
  }
}

void compareBytes(benchmark::State& state, Make make) {
  const Sample sample(make());
  const std::vector<char> other(sample.size());
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        std::memcmp(vrntValueData(sample.value()), other.data(), other.size()));
  }
}

void print(benchmark::State& state, Make make) {
  const Sample sample(make());
  for (auto _ : state) {
    vrntValuesError_t* error = nullptr;
    char* text = vrntValueString(sample.value(), sample.view(), 0, &error);
    benchmark::DoNotOptimize(text);
    vrntDestroyString(text);
  }
}

// What a block needs beside the bytes of its value.
constexpr std::size_t kBlockHeader = 48;

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

void serialize(benchmark::State& state, Make make) {
  const Sample sample(make());
  Stream stream;
  for (auto _ : state) {
    vrntValuesError_t* error = nullptr;
    stream.bytes.clear();
    vrntValueSerialize(sample.value(), writeTo, &stream, &error);
  }
}

void deserialize(benchmark::State& state, Make make) {
  const Sample sample(make());
  Stream stream;
  vrntValuesError_t* error = nullptr;
  vrntValueSerialize(sample.value(), writeTo, &stream, &error);
  for (auto _ : state) {
    stream.read = 0;
    vrntValue_t* value = vrntValueDeserialize(readFrom, &stream, &error);
    benchmark::DoNotOptimize(value);
    vrntValueDestroy(value);
  }
}

void copyBytes(benchmark::State& state, Make make) {
  const Sample sample(make());
  std::vector<char> copy(sample.size());
  for (auto _ : state) {
    std::memcpy(copy.data(), vrntValueData(sample.value()), copy.size());
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
}

// Reads the text of a type from a stream, compares it with that of a known one, and makes a block
// of the bytes behind it.
void compareAndCopy(benchmark::State& state, Make make) {
  const Sample sample(make());
  const std::string known = vrntTypeString(vrntValueType(sample.value()));
  const std::string stream = known;
  std::string given(known.size(), '\0');
  for (auto _ : state) {
    std::memcpy(given.data(), stream.data(), stream.size());
    benchmark::ClobberMemory();
    if (std::memcmp(given.data(), known.data(), known.size()) != 0) {
      state.SkipWithError("another text");
    }
    void* block = std::malloc(kBlockHeader + sample.size());
    std::memcpy(static_cast<char*>(block) + kBlockHeader, vrntValueData(sample.value()),
                sample.size());
    benchmark::DoNotOptimize(block);
    benchmark::ClobberMemory();
    std::free(block);
  }
}

// Makes a block of known bytes and holds a type for it.
void copyAndCount(benchmark::State& state, Make make) {
  const Sample sample(make());
  std::atomic<std::uint32_t> count{1};
  for (auto _ : state) {
    void* block = std::malloc(kBlockHeader + sample.size());
    std::memcpy(static_cast<char*>(block) + kBlockHeader, vrntValueData(sample.value()),
                sample.size());
    count.fetch_add(1, std::memory_order_relaxed);
    benchmark::DoNotOptimize(block);
    benchmark::ClobberMemory();
    benchmark::DoNotOptimize(count.fetch_sub(1, std::memory_order_acq_rel));
    std::free(block);
  }
}

void createDefaultOf(benchmark::State& state, const bench::Schema& schema) {
  vrntValuesError_t* error = nullptr;
  const vrnt::UniqueType type = bench::typeOf(schema, bench::Form::Annotated);
  for (auto _ : state) {
    vrntValue_t* value = vrntValueCreateDefault(type.get(), &error);
    benchmark::DoNotOptimize(value);
    vrntValueDestroy(value);
  }
}

void createDefault(benchmark::State& state, const char* typeText) {
  vrntValuesError_t* error = nullptr;
  vrntType_t* type = vrntTypeParse(typeText, &error);
  for (auto _ : state) {
    vrntValue_t* value = vrntValueCreateDefault(type, &error);
    benchmark::DoNotOptimize(value);
    vrntValueDestroy(value);
  }
  vrntTypeDestroy(type);
}

// The first default of a type, which works out the bytes that later ones copy; with its parse.
void createFirstDefault(benchmark::State& state) {
  int number = 0;
  for (auto _ : state) {
    const std::string text = "{ int @default=3 a; float @max=1. @min=0. @default=0.5 b" +
                             std::to_string(++number) +
                             "; { float @default=1. x; int y; }[10] c; }[3]";
    vrntValue_t* value = defaultOf(text);
    benchmark::DoNotOptimize(value);
    vrntValueDestroy(value);
  }
}

const int registered = [] {
  const struct {
    const char* name;
    Make make;
  } forms[] = {{"a struct", makeStruct},
               {"1,000 structs", makeStructs},
               {"10,000 floats", makeFloats},
               {"5,000 arrays of 2 floats", makeArrays},
               {"100 x 100 ints", makeInts},
               {"1,000 references", makeReferences},
               {"a chain of 50 references", makeChain},
               {"S", makeS},
               {"L", makeL}};
  const struct {
    const char* name;
    void (*measure)(benchmark::State&, Make);
  } functions[] = {{"vrntValueEqual", equal},
                   {"vrntValueString", print},
                   {"vrntValueSerialize", serialize},
                   {"vrntValueDeserialize", deserialize}};
  for (const auto& function : functions) {
    for (const auto& form : forms) {
      const std::string name = std::string(function.name) + " of " + form.name;
      benchmark::RegisterBenchmark(name.c_str(), function.measure, form.make);
    }
  }
  benchmark::RegisterBenchmark("vrntValueEqual of 100 x 100 ints/memcmp", compareBytes, makeInts);
  benchmark::RegisterBenchmark("vrntValueSerialize of 100 x 100 ints/memcpy", copyBytes, makeInts);
  benchmark::RegisterBenchmark("vrntValueDeserialize of 100 x 100 ints/memcpy", copyBytes,
                               makeInts);

  const auto compareAndCopyOf = [](const char* name, Make make) {
    benchmark::RegisterBenchmark(name, compareAndCopy, make);
  };
  compareAndCopyOf("vrntValueDeserialize of S/compare, malloc, copy", makeS);
  compareAndCopyOf("vrntValueDeserialize of L/compare, malloc, copy", makeL);

  benchmark::RegisterBenchmark("vrntValueCreateDefault of S", createDefaultOf, bench::schemaS());
  benchmark::RegisterBenchmark("vrntValueCreateDefault of S/malloc, copy, count, free",
                               copyAndCount, makeS);
  benchmark::RegisterBenchmark("vrntValueCreateDefault of a plain struct", createDefault, kStruct);
  benchmark::RegisterBenchmark("vrntValueCreateDefault of annotated structs", createDefault,
                               "{ int @default=3 a; float @max=1. @min=0. @default=0.5 b; "
                               "{ float @default=1. x; int y; }[10] c; }[3]");
  benchmark::RegisterBenchmark("first vrntValueCreateDefault of a type", createFirstDefault);
  return 0;
}();

}  // namespace
