/// Half-precision numbers (IEEE 754 binary16) as they lie in values: their bits, and conversions.
#ifndef VORNATH_VALUES_HALF_HPP
#define VORNATH_VALUES_HALF_HPP

#include <cstdint>

namespace qex::vornath {

/// The sixteen bits of a half. Arithmetic goes through float.
struct Float16 {
  std::uint16_t bits;
};

inline Float16 halfFromBits(std::uint16_t bits) { return {bits}; }
inline std::uint16_t halfBits(Float16 value) { return value.bits; }

/// Returns the half nearest to `value`; of two equally near, the one with an even last bit.
Float16 halfFromFloat(float value) noexcept;
/// Returns the same number, exactly.
float halfToFloat(Float16 value) noexcept;

/// Returns `a` minus `b`, rounded to a half.
float halfDifference(Float16 a, Float16 b) noexcept;

inline bool isInfinite(Float16 value) { return (value.bits & 0x7FFFU) == 0x7C00U; }

inline std::uint16_t halfBitsFromFloat(float value) { return halfFromFloat(value).bits; }

}  // namespace qex::vornath

#endif
