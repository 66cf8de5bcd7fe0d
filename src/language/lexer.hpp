/// Reads the tokens of a text one after the other, as views, without the generated scanner.
///
/// It reads each token as the rules of scanner.ll do: the longest match, of two equally long ones
/// the earlier rule. What no rule matches is Token::Other: only the generated scanner reports
/// errors.
#ifndef VORNATH_LANGUAGE_LEXER_HPP
#define VORNATH_LANGUAGE_LEXER_HPP

#include <array>
#include <cstdint>
#include <string>
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

/// The text must outlive the lexer and must not contain a zero byte.
class Lexer {
 public:
  explicit Lexer(const std::string& text)
      : text_(text.c_str()), end_(text_ + text.size()), next_(text_) {}

  /// Reads the next token and returns it. After End, returns it again; after Other, do not call it.
  Token advance() {
    for (;;) {
      const std::uint8_t entry = kCharacters[static_cast<unsigned char>(*next_)];
      if ((entry & kBlank) != 0) {
        ++next_;
      } else if ((entry & kMark) != 0) {
        ++next_;
        return token_ = static_cast<Token>(entry & kMarkToken);
      } else if (*next_ == '\r' && next_[1] == '\n') {
        next_ += 2;
      } else {
        return token_ = read();
      }
    }
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
  // What a character is: one of these, or a mark with its token.
  static constexpr std::uint8_t kBlank = 0x20;
  static constexpr std::uint8_t kNameCharacter = 0x40;
  static constexpr std::uint8_t kMark = 0x80;
  static constexpr std::uint8_t kMarkToken = 0x1F;
  static constexpr std::array<std::uint8_t, 256> kCharacters = [] {
    std::array<std::uint8_t, 256> characters{};
    const auto set = [&](char c, std::uint8_t entry) {
      characters[static_cast<unsigned char>(c)] = entry;
    };
    for (const char c : {' ', '\t', '\n'}) set(c, kBlank);
    for (int c = 'a'; c <= 'z'; ++c) set(static_cast<char>(c), kNameCharacter);
    for (int c = 'A'; c <= 'Z'; ++c) set(static_cast<char>(c), kNameCharacter);
    for (int c = '0'; c <= '9'; ++c) set(static_cast<char>(c), kNameCharacter);
    for (const char c : {'_', '\''}) set(c, kNameCharacter);
    const auto mark = [&](char c, Token token) {
      set(c, static_cast<std::uint8_t>(kMark | static_cast<std::uint8_t>(token)));
    };
    mark('(', Token::LeftParenthesis);
    mark(')', Token::RightParenthesis);
    mark('[', Token::LeftBracket);
    mark(']', Token::RightBracket);
    mark('{', Token::LeftBrace);
    mark('}', Token::RightBrace);
    mark(',', Token::Comma);
    mark(';', Token::Semicolon);
    mark(':', Token::Colon);
    mark('*', Token::Star);
    mark('$', Token::Dollar);
    mark('&', Token::Ampersand);
    mark('|', Token::Bar);
    return characters;
  }();

  static bool isNameCharacter(char c) {
    return (kCharacters[static_cast<unsigned char>(c)] & kNameCharacter) != 0;
  }
  static bool isDigit(char c) { return static_cast<unsigned char>(c - '0') < 10; }

  // Reads name characters; the text of the token starts at `from`.
  void readNameCharacters(const char* from) {
    while (isNameCharacter(*next_)) ++next_;
    view_ = {from, static_cast<std::size_t>(next_ - from)};
  }

  Token read();
  Token readLowerCaseWord();
  Token readUpperCaseWord();
  Token readQuoted();
  Token readInfinity(bool negative);
  Token readNumber();
  Token readHexadecimal();
  const char* readDigits(const char* at, std::uint64_t& digits) const;
  Token integer(std::int64_t number);
  Token singlePrecision(float number);
  Token halfPrecision(float number);
  bool baseKeyword(std::string_view stem, Type::TBasetype scalar);

  const char* text_;
  const char* end_;
  const char* next_;
  Token token_ = Token::Other;
  Type::TBasetype base_{};
  std::string_view view_;
  std::uint64_t bits_ = 0;
};

}  // namespace qex::vornath

#endif
