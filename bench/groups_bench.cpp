// Get and set of a group of an object, compared with one malloc of its size and two copies of it.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "vornath_data/handles.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace {

void getAndSet(benchmark::State& state, std::uint32_t objectClass, std::uint32_t group) {
  const vrnt::UniqueScene scene(vrdmCreateScene());
  const auto index = static_cast<std::int32_t>(vrdmCreateInstance(scene.get(), objectClass));
  for (auto _ : state) {
    vrntValue_t* value = vrdmGetDataValue(scene.get(), objectClass, index, group);
    benchmark::DoNotOptimize(vrdmSetDataValue(scene.get(), objectClass, index, group, value));
    vrntValueDestroy(value);
  }
}

void allocateAndCopyTwice(benchmark::State& state, std::size_t size) {
  std::vector<char> record(size);
  for (auto _ : state) {
    void* block = std::malloc(size);
    std::memcpy(block, record.data(), size);
    benchmark::DoNotOptimize(block);
    benchmark::ClobberMemory();
    std::memcpy(record.data(), block, size);
    benchmark::ClobberMemory();
    std::free(block);
  }
}

// Registers all groups of 124 to 400 bytes in the catalogue.
const int registered = [] {
  for (std::uint32_t objectClass = 0; objectClass < vrdmObjectTypeCount(); ++objectClass) {
    for (std::uint32_t group = 0; group < vrdmFieldCount(objectClass); ++group) {
      vrntType_t* type = vrdmFieldType(objectClass, group);
      const std::size_t size = vrntTypeSize(type);
      vrntTypeDestroy(type);
      if (size < 124 || size > 400) continue;
      const std::string name = "get and set " + std::string(vrdmObjectName(objectClass)) + " " +
                               vrdmFieldName(objectClass, group) + ", " + std::to_string(size) +
                               " bytes";
      benchmark::RegisterBenchmark(name.c_str(), getAndSet, objectClass, group);
      benchmark::RegisterBenchmark((name + "/malloc and two copies").c_str(), allocateAndCopyTwice,
                                   size);
    }
  }
  return 0;
}();

}  // namespace
