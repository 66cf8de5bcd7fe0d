// Compares the records of objects field by field, according to their types, as fast as a
// comparison of bytes.
#ifndef VORNATH_SCENE_RECORD_COMPARISON_HPP
#define VORNATH_SCENE_RECORD_COMPARISON_HPP

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vornath_data/types.h"

namespace vrnt::data {

/// The way to compare each word of a record of plain data, derived once from the types in the
/// record. Floats are compared as numbers (0 equals -0, and a NaN equals nothing), bools as true or
/// false, and all else bit by bit. Bytes that belong to no field are ignored.
/// Threads: any number of threads may compare with one object.
class RecordComparison {
 public:
  /// Creates a comparison of records of `size` bytes, a multiple of 4. It compares nothing until
  /// types are added.
  explicit RecordComparison(std::size_t size);

  /// Adds a value of the type at `offset` to the comparison. The type must be concrete, must not
  /// nest deeper than the schemas of the catalogue, and must lie within the record.
  void add(const vrntType_t* type, std::size_t offset);

  /// Returns whether two records are equal. They need not be aligned.
  bool equal(const void* a, const void* b) const;

 private:
  void addStruct(const vrntType_t* type, std::size_t offset);
  void addArray(const vrntType_t* type, std::size_t offset);
  void addLanes(const vrntType_t* type, std::size_t offset);
  void addBytes(std::size_t offset, std::size_t size);

  // For each word of the record: the bits that are compared exactly; all ones if it is a float; all
  // ones if it is a bool.
  std::vector<std::uint32_t> exact_;
  std::vector<std::uint32_t> floats_;
  std::vector<std::uint32_t> bools_;
  std::vector<std::size_t> halves_;  // offsets
};

}  // namespace vrnt::data

#endif
