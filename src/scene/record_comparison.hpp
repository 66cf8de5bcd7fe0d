// Compares the records of objects field by field, according to their types, at the speed of a
// comparison of bytes.
#ifndef VORNATH_SCENE_RECORD_COMPARISON_HPP
#define VORNATH_SCENE_RECORD_COMPARISON_HPP

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vornath_data/types.h"

namespace vrnt::data {

/// How each word of a record of plain data is compared, derived once from the types in the record.
/// Floats are equal as numbers (0 equals -0, a NaN equals nothing), bools by truth, all else bit by
/// bit; bytes that belong to no field are ignored.
/// Threads: any number of threads may compare with one object.
class RecordComparison {
 public:
  /// For records of `size` bytes, a multiple of 4. Nothing is compared yet.
  explicit RecordComparison(std::size_t size);

  /// Adds a value of the type at `offset` to what is compared. The type is concrete, nests no
  /// deeper than a schema of the catalogue, and lies within the record.
  void add(const vrntType_t* type, std::size_t offset);

  /// Whether two records are equal. They need not be aligned.
  bool equal(const void* a, const void* b) const;

 private:
  void addStruct(const vrntType_t* type, std::size_t offset);
  void addArray(const vrntType_t* type, std::size_t offset);
  void addLanes(const vrntType_t* type, std::size_t offset);
  void addBytes(std::size_t offset, std::size_t size);

  // For each word of the record: the bits that are compared exactly, and all ones if it is a float
  // or a bool.
  std::vector<std::uint32_t> exact_;
  std::vector<std::uint32_t> floats_;
  std::vector<std::uint32_t> bools_;
  std::vector<std::size_t> halves_;  // offsets
};

}  // namespace vrnt::data

#endif
