// Values of fields as texts of JSON: defaults and limits.
#ifndef VORNATH_TOOLKIT_CATALOGUE_VALUE_TEXT_HPP
#define VORNATH_TOOLKIT_CATALOGUE_VALUE_TEXT_HPP

#include <cstdint>
#include <string>
#include <vector>

#include "types/type_queries.hpp"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

namespace vrtk {

/// Returns a value as JSON on one line, as scenes in JSON have it: numbers in the fewest digits,
/// enums by their labels. References are null.
std::string valueJson(const vrntType_t* type, const char* bytes);
std::string valueJson(const vrntValue_t* value);

/// Returns a lane as JSON.
std::string laneJson(const LaneType& numbers, const char* bytes, std::uint32_t lane);

/// Returns a number as a scene in JSON has it, a not-a-number or an infinity as a string.
std::string floatJson(float number);

}  // namespace vrtk

#endif
