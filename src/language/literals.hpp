/// Converts numeric literals, the tokens that the scanner has matched, to values.
#ifndef VORNATH_LANGUAGE_LITERALS_HPP
#define VORNATH_LANGUAGE_LITERALS_HPP

#include <cstdint>
#include <optional>
#include <string_view>

namespace qex::vornath {

/// Returns a decimal integer with an optional sign, clamped to 64 bits.
std::int64_t decimalLiteral(std::string_view text);

/// Returns the value of decimal digits and a final "c", or nothing outside 0 to 255.
std::optional<std::uint8_t> characterLiteral(std::string_view text);

/// Returns the value of "0x" and hexadecimal digits; ignores a final point.
std::uint64_t hexadecimalLiteral(std::string_view text);

/// Returns the value of a number as a float, whatever the process's locale. For a malformed number
/// (an exponent without digits) or one out of range, returns what a stream extraction stores.
float floatLiteral(std::string_view text);

/// The parts of a number in decimal notation: digits * 10^exponent, with a sign.
struct DecimalNumber {
  std::uint64_t digits;
  std::int32_t exponent;
  bool negative;
  bool exact;  ///< whether `digits` and `exponent` are those of the text, and none has run over
};

/// Returns the same for a text whose parts are known, sooner where a division or a product of two
/// exact numbers gives the result.
float floatLiteral(std::string_view text, const DecimalNumber& number);

/// Returns the bits of a half for a number and a final "h", parsed as a float and then rounded.
std::uint16_t halfLiteral(std::string_view text);

}  // namespace qex::vornath

#endif
