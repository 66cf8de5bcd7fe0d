/// The values of numeric literals. The texts are tokens that the scanner has matched.
#ifndef VORNATH_LANGUAGE_LITERALS_HPP
#define VORNATH_LANGUAGE_LITERALS_HPP

#include <cstdint>
#include <optional>
#include <string_view>

namespace qex::vornath {

/// A decimal integer with an optional sign; beyond 64 bits it stays at the nearest end.
std::int64_t decimalLiteral(std::string_view text);

/// Decimal digits and a final "c"; nothing outside 0 to 255.
std::optional<std::uint8_t> characterLiteral(std::string_view text);

/// "0x" and hexadecimal digits; a final point is allowed and ignored.
std::uint64_t hexadecimalLiteral(std::string_view text);

/// A number as a single, whatever the process's locale. Where the text isn't quite a number (an
/// exponent without digits) or is out of range, the value is what a stream extraction leaves.
float floatLiteral(std::string_view text);

/// A number and a final "h", read as a single and rounded to the bits of a half.
std::uint16_t halfLiteral(std::string_view text);

}  // namespace qex::vornath

#endif
