// Numbers of 16 bits.
#ifndef VORNATH_TOOLKIT_FOUNDATION_HALF_HPP
#define VORNATH_TOOLKIT_FOUNDATION_HALF_HPP

#include <cmath>
#include <cstdint>
#include <limits>

namespace vrtk {

/// Returns the number that the bits of a half stand for.
inline float halfToFloat(std::uint16_t bits) {
  const unsigned exponent = (bits >> 10U) & 0x1FU;
  const unsigned fraction = bits & 0x3FFU;
  float magnitude = 0;
  if (exponent == 0x1F) {
    magnitude = fraction != 0 ? std::numeric_limits<float>::quiet_NaN()
                              : std::numeric_limits<float>::infinity();
  } else if (exponent == 0) {
    magnitude = std::ldexp(static_cast<float>(fraction), -24);
  } else {
    magnitude = std::ldexp(static_cast<float>(fraction + 0x400U), static_cast<int>(exponent) - 25);
  }
  return (bits & 0x8000U) != 0 ? -magnitude : magnitude;
}

}  // namespace vrtk

#endif
