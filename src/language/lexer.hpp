/// Reads the tokens of a text one after the other, as views, without the generated scanner.
///
/// It reads each token as the rules of scanner.ll do: the longest match, of two equally long ones
/// the earlier rule. At what no rule matches it stops for good, with Token::Other: only the
/// generated scanner reports errors.
#ifndef VORNATH_LANGUAGE_LEXER_HPP
#define VORNATH_LANGUAGE_LEXER_HPP

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "types/type.hpp"

namespace qex::vornath {

enum class Token : std::uint8_t {
  End,
  Other,  ///< not a token, or one that cannot be converted
  LeftParenthesis,
  RightParenthesis,
  LeftBracket,
  RightBracket,
  LeftBrace,
  RightBrace,
  Comma,
  Semicolon,
  Colon,
  Equals,
  Star,
  Dollar,
  Ampersand,
  Bar,
  Arrow,
  Enum,
  Void,
  Base,   ///< a keyword of a scalar or short vector
  Label,  ///< LIDENT
  Name,   ///< UIDENT
  Key,    ///< METAIDENT
  Quoted,
  Bool,
  Char,
  Int,
  Address,
  Half,
  Float
};

/// The text must outlive the lexer, must not contain a zero byte, and must be followed by one.
class Lexer {
 public:
  explicit Lexer(const char* text) : text_(text), next_(text) {}

  /// Reads the next token and returns it. After End and Other, returns the same again.
  Token advance() {
    for (;;) {
      while (isBlank(*next_)) ++next_;
      if (*next_ != '\r' || next_[1] != '\n') break;
      next_ += 2;
    }
    return token_ = read();
  }

  Token token() const { return token_; }
  /// Returns the base type of a Base.
  Type::TBasetype base() const { return base_; }
  /// Returns a Label, a Name, a Key without its "@", or a Quoted without its quotes.
  std::string_view text() const { return view_; }
  /// Returns the offset of text() in the whole text.
  std::uint32_t textOffset() const { return static_cast<std::uint32_t>(view_.data() - text_); }
  /// Returns the number of a literal: its bits as a value stores them, 32 bits of ones for true.
  std::uint64_t bits() const { return bits_; }

 private:
  enum CharacterClass : std::uint8_t { kBlank = 1, kNameCharacter = 2, kDigit = 4 };

  static constexpr std::array<std::uint8_t, 256> kClasses = [] {
    std::array<std::uint8_t, 256> classes{};
    for (const char c : {' ', '\t', '\n'}) classes[static_cast<unsigned char>(c)] = kBlank;
    for (int c = 'a'; c <= 'z'; ++c) classes[static_cast<std::size_t>(c)] = kNameCharacter;
    for (int c = 'A'; c <= 'Z'; ++c) classes[static_cast<std::size_t>(c)] = kNameCharacter;
    for (int c = '0'; c <= '9'; ++c) {
      classes[static_cast<std::size_t>(c)] = kNameCharacter | kDigit;
    }
    classes['_'] = classes['\''] = kNameCharacter;
    return classes;
  }();

  static bool is(char c, CharacterClass set) {
    return (kClasses[static_cast<unsigned char>(c)] & set) != 0;
  }
  static bool isBlank(char c) { return is(c, kBlank); }
  static bool isDigit(char c) { return is(c, kDigit); }

  Token mark(Token token) {
    ++next_;
    return token;
  }

  // Reads name characters; the text of the token starts at `from`.
  void readNameCharacters(const char* from) {
    while (is(*next_, kNameCharacter)) ++next_;
    view_ = {from, static_cast<std::size_t>(next_ - from)};
  }

  Token read();
  Token readLowerCaseWord();
  Token readUpperCaseWord();
  Token readQuoted();
  Token readInfinity(bool negative);
  Token readNumber();
  Token readHexadecimal();
  Token integer(std::int64_t number);
  Token singlePrecision(float number);
  Token halfPrecision(float number);
  bool baseKeyword(std::string_view stem, Type::TBasetype scalar);

  const char* text_;
  const char* next_;
  Token token_ = Token::Other;
  Type::TBasetype base_{};
  std::string_view view_;
  std::uint64_t bits_ = 0;
};

}  // namespace qex::vornath

#endif
