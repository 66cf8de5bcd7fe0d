/// The texts of numbers in value texts. Each function writes to `out`, which must have room for
/// kMaxNumberText characters, and returns the end of the text. It writes no NUL, and may change
/// the rest of the room. None of them depends on the locale or on the rounding mode.
#ifndef VORNATH_VALUES_NUMBER_TEXT_HPP
#define VORNATH_VALUES_NUMBER_TEXT_HPP

#include <cstddef>
#include <cstdint>

namespace qex::vornath {

inline constexpr std::size_t kMaxNumberText = 32;

/// Writes the shortest decimal that reads back to the same float, with a point: the text of fmt's
/// "{:#}", but "NaN" for every NaN. The exponent has at least two digits and is written for
/// magnitudes below 1e-4 and from 1e16.
char* writeFloat(char* out, float number);

/// Writes a decimal.
char* writeInt(char* out, std::int32_t number);

/// Writes `digits` lower-case hexadecimal digits, with zeros in front. `number` has no more.
char* writeHex(char* out, std::uint64_t number, std::size_t digits);

}  // namespace qex::vornath

#endif
