// Half-precision numbers, all of them.
#include "values/half.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace qex::vornath {
namespace {

// What sixteen bits stand for: a sign, five bits of exponent, ten of fraction.
double meaning(unsigned bits) {
  const double sign = (bits >> 15U) == 0 ? 1.0 : -1.0;
  const int exponent = static_cast<int>((bits >> 10U) & 31U);
  const double fraction = static_cast<double>(bits & 1023U) / 1024.0;
  if (exponent == 31) {
    return fraction == 0.0 ? sign * std::numeric_limits<double>::infinity()
                           : std::numeric_limits<double>::quiet_NaN();
  }
  if (exponent == 0) return sign * std::ldexp(fraction, -14);
  return sign * std::ldexp(1.0 + fraction, exponent - 15);
}

TEST(Half, IsExactlyTheFloatOfItsBitsAndBack) {
  for (unsigned bits = 0; bits < 65536; ++bits) {
    const float value = halfToFloat(halfFromBits(static_cast<std::uint16_t>(bits)));
    const double expected = meaning(bits);
    if (std::isnan(expected)) {
      ASSERT_TRUE(std::isnan(value)) << bits;
    } else {
      ASSERT_EQ(static_cast<double>(value), expected) << bits;
      ASSERT_EQ(std::signbit(value), std::signbit(expected)) << bits;
      ASSERT_EQ(halfBitsFromFloat(value), bits);
    }
  }
}

TEST(Half, IsTheNearestToAFloatAndOnATieTheEvenOne) {
  // Between each finite half and the next one of its sign.
  for (unsigned bits = 0; bits < 0x7bff; ++bits) {
    const auto low = static_cast<float>(meaning(bits)),
               high = static_cast<float>(meaning(bits + 1));
    const float middle = low + (high - low) / 2.0F;
    ASSERT_EQ(halfBitsFromFloat(middle), bits % 2 == 0 ? bits : bits + 1);
    ASSERT_EQ(halfBitsFromFloat(std::nextafter(middle, low)), bits);
    ASSERT_EQ(halfBitsFromFloat(std::nextafter(middle, high)), bits + 1);
  }
}

}  // namespace
}  // namespace qex::vornath
