// What the toolkit asks of types beyond the library's queries.
#ifndef VORNATH_TOOLKIT_TYPES_TYPE_QUERIES_HPP
#define VORNATH_TOOLKIT_TYPES_TYPE_QUERIES_HPP

#include <cstdint>
#include <optional>

#include "vornath_data/types.h"

namespace vrtk {

/// Returns whether a type is a struct. Unlike vrntTypeDescriptor(), it counts a spectrum as one.
bool isStruct(const vrntType_t* type);

/// Returns the number of elements that an array has in memory, and so in a text.
std::uint64_t elementCount(const vrntType_t* arrayType);

/// Calls `visit` with each index of an element of an array, the outermost first. `element` counts
/// the elements in the order of their offsets.
template <typename Visit>
void forEachIndex(const vrntType_t* arrayType, std::uint64_t element, Visit&& visit) {
  std::int32_t shape[4] = {1, 1, 1, 1};
  vrntTypeArrayShape(arrayType, shape);
  const std::uint32_t rank = vrntTypeArrayDimension(arrayType);
  // The last dimension, which runs slowest, is the outermost array.
  std::uint64_t indices[4] = {};
  for (std::uint32_t d = 0; d < rank; ++d) {
    const auto extent = static_cast<std::uint64_t>(shape[d] > 1 ? shape[d] : 1);
    indices[d] = d + 1 == rank ? element : element % extent;
    element /= extent;
  }
  for (std::uint32_t d = rank; d-- > 0;) visit(indices[d]);
}

/// The numbers of a scalar or a vector.
struct LaneType {
  std::uint32_t family;  ///< VRNT_BASETYPE_*
  std::uint32_t lanes;   ///< of a vector, 1 for a scalar
  std::uint32_t size;    ///< bytes of a lane
};

/// Returns what a scalar or a vector is made of; nothing for another type, a spectrum included.
std::optional<LaneType> laneType(const vrntType_t* type);

/// Returns the number of a lane. A bool is its bits as an int.
double laneNumber(const LaneType& type, const char* bytes, std::uint32_t lane);

/// Returns "struct", "array", "reference", "enum" or "function"; null for a base type.
const char* compoundName(const vrntType_t* type);

}  // namespace vrtk

#endif
