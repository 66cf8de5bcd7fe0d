// A bare scanner of the texts of types and values, the yardstick of their parsers.
#ifndef VORNATH_BENCH_TOKEN_SCAN_HPP
#define VORNATH_BENCH_TOKEN_SCAN_HPP

#include <cstdint>
#include <string>
#include <string_view>

namespace bench {

// The tokens that are not a single character.
enum Token {
  kArrow = 256,
  kKeyword,
  kBool,
  kChar,
  kInt,
  kHalf,
  kFloat,
  kHexadecimal,
  kName,
  kText,
  kIllegal
};

/// Returns the number of tokens of a text. The scan works on a copy in `room`.
std::uint64_t countTokens(std::string_view text, std::string& room);

/// Scans a text in the same way, and converts each decimal number by std::from_chars.
std::uint64_t convertNumbers(std::string_view text, std::string& room);

}  // namespace bench

#endif
