// Parse of a text whose type is alive: of all schemas of the catalogue, compared with a look-up of
// the same text in a std::map; and of one text, compared with what cannot be avoided: the length of
// the text, a comparison with the text of the type, and a count up and down.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "schemas.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace {

// The schemas of the whole catalogue, from 30 bytes to 16 KiB, with handles on their types.
class Schemas {
 public:
  Schemas() {
    addClass(VRDM_CLASS_SCENE_DATA);
    for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) addClass(c);
  }
  const std::vector<std::string>& texts() const { return texts_; }

 private:
  void addClass(std::uint32_t objectClass) {
    for (std::uint32_t group = 0; group < vrdmFieldCount(objectClass); ++group) {
      types_.emplace_back(vrdmFieldType(objectClass, group));
      texts_.emplace_back(vrntTypeString(types_.back().get()));
    }
  }

  std::vector<vrnt::UniqueType> types_;
  std::vector<std::string> texts_;
};

void parseCached(benchmark::State& state) {
  const Schemas schemas;
  for (auto _ : state) {
    for (const std::string& text : schemas.texts()) {
      vrntValuesError_t* error = nullptr;
      vrntType_t* type = vrntTypeParse(text.c_str(), &error);
      benchmark::DoNotOptimize(type);
      vrntTypeDestroy(type);
    }
  }
}

void lookUpInMap(benchmark::State& state) {
  const Schemas schemas;
  std::map<std::string, int> table;
  for (const std::string& text : schemas.texts()) table.emplace(text, 0);
  for (auto _ : state) {
    for (const std::string& text : schemas.texts()) benchmark::DoNotOptimize(table.find(text));
  }
}

void parseLiving(benchmark::State& state, const bench::Schema& schema) {
  const vrnt::UniqueType held = bench::typeOf(schema, bench::Form::Annotated);
  const std::string text = vrntTypeString(held.get());
  vrntValuesError_t* error = nullptr;
  for (auto _ : state) {
    vrntType_t* type = vrntTypeParse(text.c_str(), &error);
    if (type != held.get()) state.SkipWithError("not the living type");
    vrntTypeDestroy(type);
  }
}

void compareAndCount(benchmark::State& state, const bench::Schema& schema) {
  const std::string text = bench::typeText(schema, bench::Form::Annotated);
  const std::string known = text;
  std::atomic<std::uint32_t> count{1};
  const char* given = text.c_str();
  for (auto _ : state) {
    benchmark::DoNotOptimize(given);
    const std::size_t length = std::strlen(given);
    if (length != known.size() || std::memcmp(given, known.data(), length) != 0) {
      state.SkipWithError("another text");
    }
    count.fetch_add(1, std::memory_order_relaxed);
    benchmark::DoNotOptimize(count.fetch_sub(1, std::memory_order_acq_rel));
  }
}

const int registered = [] {
  for (const bench::Schema* schema : {&bench::schemaXS(), &bench::schemaS(), &bench::schemaL()}) {
    const std::string name = "vrntTypeParse of the living type " + schema->name;
    benchmark::RegisterBenchmark(name.c_str(), parseLiving, *schema);
    benchmark::RegisterBenchmark((name + "/length, compare, count").c_str(), compareAndCount,
                                 *schema);
  }
  benchmark::RegisterBenchmark("vrntTypeParse of living schemas", parseCached);
  benchmark::RegisterBenchmark("vrntTypeParse of living schemas/look-up in a std::map",
                               lookUpInMap);
  return 0;
}();

}  // namespace
