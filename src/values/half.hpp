/// Half-precision numbers. All the library knows of where they come from stands here.
#ifndef VORNATH_VALUES_HALF_HPP
#define VORNATH_VALUES_HALF_HPP

// Without Imath's table of all halves there is no library of Imath's to link.
#define IMATH_HALF_NO_LOOKUP_TABLE
#include <Imath/half.h>

#include <cstdint>

namespace qex::vornath {

/// Sixteen bits; arithmetic gives the nearest half, on a tie the even one.
using Float16 = ::half;
static_assert(sizeof(Float16) == 2);

inline Float16 halfFromBits(std::uint16_t bits) {
  Float16 value;
  value.setBits(bits);
  return value;
}
inline std::uint16_t halfBits(Float16 value) { return value.bits(); }

inline Float16 halfFromFloat(float value) { return Float16(value); }
inline std::uint16_t halfBitsFromFloat(float value) { return Float16(value).bits(); }
inline float halfToFloat(Float16 value) { return static_cast<float>(value); }

}  // namespace qex::vornath

#endif
