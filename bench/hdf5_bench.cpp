// The yardstick of coercion: HDF5 converts compound types of the same layout, which it also matches
// by the names of their members. Its times are for one of 10,000 values that one call converts.
#include <benchmark/benchmark.h>
#include <hdf5.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "schemas.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/vrnt.h"

namespace {

constexpr std::uint64_t kValues = 10'000;

// The compound type of a struct, or the type of a leaf, with the library's sizes and offsets.
hid_t hdf5Type(const vrntType_t* type) {
  if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_STRUCT) {
    const hid_t compound = H5Tcreate(H5T_COMPOUND, vrntTypeSize(type));
    for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
      vrntValueView_t field;
      vrntValueStructField(&field, type, i);
      const hid_t member = hdf5Type(field.type);
      H5Tinsert(compound, vrntTypeFieldLabel(type, i), field.offset, member);
      H5Tclose(member);
    }
    return compound;
  }
  const std::string text = vrntTypeString(type);
  if (text == "float3") {
    const std::array<hsize_t, 1> lanes = {4};
    return H5Tarray_create2(H5T_NATIVE_FLOAT, 1, lanes.data());
  }
  return H5Tcopy(text == "float" ? H5T_NATIVE_FLOAT : H5T_NATIVE_INT);
}

void convert(benchmark::State& state, const bench::Schema& schema) {
  const vrnt::UniqueType from = bench::typeOf(schema, bench::Form::Plain);
  const vrnt::UniqueType to = bench::typeOf(schema, bench::Form::Moved);
  const hid_t source = hdf5Type(from.get());
  const hid_t target = hdf5Type(to.get());
  std::vector<char> values(kValues * std::max(vrntTypeSize(from.get()), vrntTypeSize(to.get())));
  std::vector<char> background(values.size());
  while (state.KeepRunningBatch(kValues)) {
    if (H5Tconvert(source, target, kValues, values.data(), background.data(), H5P_DEFAULT) < 0) {
      state.SkipWithError("not converted");
    }
  }
  H5Tclose(source);
  H5Tclose(target);
}

const int registered = [] {
  for (const bench::Schema* schema : {&bench::schemaS(), &bench::schemaL()}) {
    const std::string name = "vrntCoerce of " + schema->name + "/HDF5, one of 10,000";
    benchmark::RegisterBenchmark(name.c_str(), convert, *schema);
  }
  return 0;
}();

}  // namespace
