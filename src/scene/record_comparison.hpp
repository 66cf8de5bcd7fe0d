// Comparing the records of objects field by field, as their types say, at the speed of a comparison
// of bytes.
#ifndef VORNATH_SCENE_RECORD_COMPARISON_HPP
#define VORNATH_SCENE_RECORD_COMPARISON_HPP

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vornath_data/types.h"

namespace vrnt::data {

/// What counts as equal in each word of a record of plain data, worked out once from the types of
/// what stands in the record. Floats are equal as numbers (0 is -0, a NaN is equal to nothing),
/// bools by truth, all else bit by bit; bytes that belong to no field aren't looked at.
/// Threads: any number of threads may compare by one object.
class RecordComparison {
 public:
  /// For records of that many bytes, a multiple of 4, of which nothing is compared yet.
  explicit RecordComparison(std::size_t size);

  /// Compares also what a value of the type holds that stands at `offset`. The type is concrete, as
  /// deep as a schema of the catalogue at most, and lies within the record.
  void add(const vrntType_t* type, std::size_t offset);

  /// Whether two records are equal. They are read as bytes, wherever they lie.
  bool equal(const void* a, const void* b) const;

 private:
  void addStruct(const vrntType_t* type, std::size_t offset);
  void addArray(const vrntType_t* type, std::size_t offset);
  void addLanes(const vrntType_t* type, std::size_t offset);
  void addBytes(std::size_t offset, std::size_t size);

  // Each word of the record has a mask of the bits that are compared exactly; and is all ones among
  // the floats or the bools if it is one.
  std::vector<std::uint32_t> exact_;
  std::vector<std::uint32_t> floats_;
  std::vector<std::uint32_t> bools_;
  std::vector<std::size_t> halves_;  // offsets
};

}  // namespace vrnt::data

#endif
