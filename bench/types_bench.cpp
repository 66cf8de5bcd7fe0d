// Parse of a text whose type is alive, compared with a look-up of the same text in a std::map.
#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

#include "ratio_reporter.hpp"
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

const int registered = [] {
  benchmark::RegisterBenchmark("vrntTypeParse of living schemas", parseCached);
  benchmark::RegisterBenchmark("vrntTypeParse of living schemas/yardstick", lookUpInMap);
  bench::aim("vrntTypeParse of living schemas", 4);
  return 0;
}();

}  // namespace
