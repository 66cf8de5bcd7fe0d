#include "values/half.hpp"

// Without the table of all halves there is no library to link.
#define IMATH_HALF_NO_LOOKUP_TABLE
#include <Imath/half.h>

namespace qex::vornath {
namespace {

Imath::half load(Float16 value) {
  Imath::half half;
  half.setBits(value.bits);
  return half;
}

}  // namespace

Float16 halfFromFloat(float value) noexcept { return {Imath::half(value).bits()}; }

float halfToFloat(Float16 value) noexcept { return load(value); }

float halfDifference(Float16 a, Float16 b) noexcept {
  return Imath::half(static_cast<float>(load(a)) - static_cast<float>(load(b)));
}

}  // namespace qex::vornath
