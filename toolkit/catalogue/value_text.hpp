// Values of fields as texts of JSON: defaults and limits.
#ifndef VORNATH_TOOLKIT_CATALOGUE_VALUE_TEXT_HPP
#define VORNATH_TOOLKIT_CATALOGUE_VALUE_TEXT_HPP

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vornath_data/types.h"
#include "vornath_data/values.h"

namespace vrtk {

/// Returns a value as JSON on one line, as scenes in JSON have it: numbers in the fewest digits,
/// enums by their labels. References are null.
std::string valueJson(const vrntType_t* type, const char* bytes);
std::string valueJson(const vrntValue_t* value);

/// The numbers in a value, and what they are.
struct Numbers {
  std::uint32_t family;  ///< VRNT_BASETYPE_*
  std::uint32_t lanes;   ///< of a vector, 1 for a scalar
  std::uint32_t size;    ///< bytes of a lane
};

/// Returns what a scalar or a vector is made of; nothing for another type, a spectrum included.
std::optional<Numbers> numbersOf(const vrntType_t* type);

/// Returns a lane as a number.
double laneNumber(const Numbers& numbers, const char* bytes, std::uint32_t lane);

/// Returns a lane as JSON.
std::string laneJson(const Numbers& numbers, const char* bytes, std::uint32_t lane);

/// Returns a number as a scene in JSON has it, a not-a-number or an infinity as a string.
std::string floatJson(float number);

}  // namespace vrtk

#endif
