// Numbers in JSON documents: the shortest decimals that read back as the same bits, and strings for
// what JSON has no numbers for.
#ifndef VORNATH_TOOLKIT_JSON_NUMBERS_HPP
#define VORNATH_TOOLKIT_JSON_NUMBERS_HPP

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vrtk {

/// The most characters that a function below writes.
inline constexpr std::size_t kLongestNumber = 32;

/// Write a number and return the end of its text. The value is given by its bits. A float always
/// has a point or an exponent. A number that is not finite is a string: "nan", "inf", "-inf", or
/// "nan:7fc00001" for another NaN than the usual one.
char* writeFloat(char* out, std::uint32_t bits);
char* writeHalf(char* out, std::uint16_t bits);
char* writeInt(char* out, std::int32_t number);
char* writeUnsigned(char* out, std::uint64_t number);
/// Writes true or false, or a string such as "bool:00000001" for a word that is neither 0 nor all
/// ones.
char* writeBool(char* out, std::uint32_t word);

/// How the reading of a number went.
enum class NumberFault { None, WrongKind, OutOfRange };

/// Read a number of JSON's grammar. A number too small for the type becomes zero.
NumberFault readFloat(std::string_view text, std::uint32_t& bits);
NumberFault readHalf(std::string_view text, std::uint16_t& bits);
/// Takes only numbers without a fraction and an exponent. WrongKind for others.
NumberFault readInt(std::string_view text, std::int64_t min, std::int64_t max,
                    std::int64_t& number);
NumberFault readUnsigned(std::string_view text, std::uint64_t& number);

/// Read the content of a string that stands for a number or a bool. Return false for another text.
bool readFloatText(std::string_view text, std::uint32_t& bits);
bool readHalfText(std::string_view text, std::uint16_t& bits);
bool readBoolText(std::string_view text, std::uint32_t& word);

}  // namespace vrtk

#endif
