// The merged limits of a type, and the leaves of a value that are outside of them.
#ifndef VORNATH_TOOLKIT_VALUES_BOUNDS_HPP
#define VORNATH_TOOLKIT_VALUES_BOUNDS_HPP

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "values/value_layout.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/types.h"

namespace vrtk {

/// Throws Failure with VRTK_INVALID_ARGUMENT if there are no values of a type.
void requireConcrete(const vrntType_t* type, const char* function);

/// Throws Failure with VRTK_VALUE_TYPE if a value is not of a type, whatever its metadata.
void requireType(const vrntType_t* type, const vrntValue_t* value);

/// Limits as the bytes of values of the type. Words of references are 0.
struct BoundsBytes {
  /// The type must be concrete. Throws std::bad_alloc.
  explicit BoundsBytes(const vrntType_t* type);

  vrnt::UniqueValue defaults;
  std::vector<char> min, max, softMin, softMax;
};

/// A leaf outside its limits, or a lane of it.
struct Outside {
  std::uint64_t offset;
  RunKind kind;
  const char* found;    ///< in the value
  const char* nearest;  ///< what it is to become
  enum class Fault { Below, Above, NoNumber, NoChoice, NoBool } fault;
};

/// Calls `visit` for each number, bool or enum of a value that is outside its limits, in the order
/// of the offsets.
void findOutside(const ValueLayout& layout, const BoundsBytes& bounds, const char* data,
                 const std::function<void(const Outside&)>& visit);

/// The words for a leaf outside its limits, such as "2.5 is above the maximum, 1.0".
std::string outsideText(const Outside& outside);

/// The text of one number of a kind, as the JSON form has it.
std::string numberText(RunKind kind, const char* at);

}  // namespace vrtk

#endif
