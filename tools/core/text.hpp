// Texts for people, and strings of JSON documents.
#ifndef VRN_CORE_TEXT_HPP
#define VRN_CORE_TEXT_HPP

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace vrn {

/// Returns a text that takes one line and moves no cursor: control characters are escaped as in
/// `\n`.
std::string oneLine(std::string_view text);

/// Returns a text whose control characters other than line feeds and tabs are escaped.
std::string printable(std::string_view text);

/// Returns a count with its noun: "1 object", "12,345 objects".
std::string counted(std::uint64_t count, std::string_view noun);

/// Returns a number with commas between groups of three digits.
std::string grouped(std::uint64_t number);

/// Returns a size of bytes, such as "13.3 KiB".
std::string sizeText(std::uint64_t bytes);

/// Returns the shortest decimal that reads back as the same float; "nan", "inf" and "-inf".
std::string numberText(float value);

/// Returns a number with `digits` significant digits and no trailing zeros.
std::string roundedText(double value, int digits);

/// Returns a number as JSON has it: null for what no JSON number can hold.
std::string jsonNumber(float value);

/// Returns a JSON string in quotes. Bytes that are no UTF-8 become U+FFFD.
std::string jsonString(std::string_view text);

/// Returns a JSON text without line feeds and the spaces that follow them.
std::string oneLineJson(std::string_view json);

/// Returns how many columns of a terminal a text takes: one for each code point.
std::size_t width(std::string_view text);

/// Appends texts, one after another.
void append(std::string& to, std::initializer_list<std::string_view> parts);

/// Returns a text with spaces up to a width.
std::string padded(std::string_view text, std::size_t columns);

/// Breaks a paragraph into lines of at most `columns`.
std::vector<std::string> wrapped(std::string_view text, std::size_t columns);

/// Returns the word that is nearest to `word`, if it is near enough to have been meant; else an
/// empty string.
std::string nearest(std::string_view word, const std::vector<std::string>& words);

/// Returns `; did you mean WORD?` if a word is near, else an empty string.
std::string suggestion(std::string_view word, const std::vector<std::string>& words);

/// Returns a word as an argument of a shell.
std::string shellWord(std::string_view word);

}  // namespace vrn

#endif
