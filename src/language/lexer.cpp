#include "language/lexer.hpp"

#include <bit>
#include <cstring>
#include <limits>

#include "language/literals.hpp"
#include "values/half.hpp"

namespace qex::vornath {
namespace {

using Base = Type::TBasetype;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr std::uint16_t kHalfInfinity = 0x7C00;
constexpr std::uint16_t kHalfSign = 0x8000;
constexpr std::uint16_t kHalfNan = 0x7FFF;
constexpr std::uint32_t kSingleNan = 0x7FC00000;

bool isHexadecimal(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

}  // namespace

Token Lexer::read() {
  const char first = *next_;
  if (isDigit(first)) return readNumber();
  if (first >= 'a' && first <= 'z') return readLowerCaseWord();
  if (first >= 'A' && first <= 'Z') return readUpperCaseWord();
  switch (first) {
    case '\0':
      return Token::End;
    case '=':
      ++next_;
      if (*next_ != '>') return Token::Equals;
      ++next_;
      return Token::Arrow;
    case '@':
      ++next_;
      readNameCharacters(next_);
      return Token::Key;
    case '"':
      return readQuoted();
    case '+':
    case '-':
      return isDigit(next_[1]) ? readNumber() : readInfinity(first == '-');
    default:
      return Token::Other;
  }
}

bool Lexer::baseKeyword(std::string_view stem, Base scalar) {
  if (view_.size() < stem.size() || view_.size() > stem.size() + 1 || !view_.starts_with(stem)) {
    return false;
  }
  int lanes = 1;
  if (view_.size() > stem.size()) {
    lanes = view_.back() - '0';
    if (lanes < 2 || lanes > 4) return false;
  }
  base_ = static_cast<Base>(static_cast<int>(scalar) + lanes - 1);
  return true;
}

Token Lexer::readLowerCaseWord() {
  readNameCharacters(next_);
  constexpr std::size_t kLongestKeyword = 6;  // float2
  if (view_.size() > kLongestKeyword) return Token::Label;
  switch (view_.front()) {
    case 'b':
      if (baseKeyword("bool", Base::Bool)) return Token::Base;
      break;
    case 'c':
      if (baseKeyword("char", Base::Char)) return Token::Base;
      break;
    case 'e':
      if (view_ == "enum") return Token::Enum;
      break;
    case 'f':
      if (baseKeyword("float", Base::Float)) return Token::Base;
      if (view_ == "false") {
        bits_ = 0;
        return Token::Bool;
      }
      break;
    case 'h':
      if (baseKeyword("half", Base::Half)) return Token::Base;
      break;
    case 'i':
      if (baseKeyword("int", Base::Int)) return Token::Base;
      if (view_ == "inf") return singlePrecision(kInfinity);
      if (view_ == "infh") {
        bits_ = kHalfInfinity;
        return Token::Half;
      }
      break;
    case 't':
      if (view_ == "true") {
        bits_ = 0xFFFFFFFF;
        return Token::Bool;
      }
      break;
    case 'v':
      if (view_ == "void") return Token::Void;
      break;
    default:
      break;
  }
  return Token::Label;
}

Token Lexer::readUpperCaseWord() {
  readNameCharacters(next_);
  if (view_ == "NaN") {
    bits_ = kSingleNan;
    return Token::Float;
  }
  if (view_ == "NaNh") {
    bits_ = kHalfNan;
    return Token::Half;
  }
  return Token::Name;
}

Token Lexer::readQuoted() {
  const char* const begin = next_ + 1;
  const char* const end = std::strchr(begin, '"');
  if (end == nullptr) return Token::Other;
  view_ = {begin, static_cast<std::size_t>(end - begin)};
  next_ = end + 1;
  return Token::Quoted;
}

// The word after a sign, which no name character needs to end.
Token Lexer::readInfinity(bool negative) {
  if (std::strncmp(next_ + 1, "inf", 3) != 0) return Token::Other;
  next_ += 4;
  if (*next_ != 'h') return singlePrecision(negative ? -kInfinity : kInfinity);
  ++next_;
  bits_ = negative ? kHalfInfinity | kHalfSign : kHalfInfinity;
  return Token::Half;
}

Token Lexer::singlePrecision(float number) {
  bits_ = std::bit_cast<std::uint32_t>(number);
  return Token::Float;
}

Token Lexer::halfPrecision(float number) {
  bits_ = halfBitsFromFloat(number);
  return Token::Half;
}

Token Lexer::integer(std::int64_t number) {
  const auto narrow = static_cast<std::int32_t>(number);
  bits_ = static_cast<std::uint64_t>(number);
  if (number != narrow) return Token::Address;
  bits_ = static_cast<std::uint32_t>(narrow);
  return Token::Int;
}

// The forms differ in the number of digits, and in a point after four or eight of them.
Token Lexer::readHexadecimal() {
  const char* const digits = next_ + 2;
  std::size_t count = 0;
  while (count < 16 && isHexadecimal(digits[count])) ++count;
  const auto take = [&](Token token, std::size_t used, std::size_t point) {
    bits_ = hexadecimalLiteral({next_, used + 2});
    next_ = digits + used + point;
    return token;
  };
  if (count == 16) return take(Token::Address, 16, 0);
  if (count >= 8) return digits[8] == '.' ? take(Token::Float, 8, 1) : take(Token::Int, 8, 0);
  if (count >= 4 && digits[4] == '.') return take(Token::Half, 4, 1);
  if (count >= 2) return take(Token::Char, 2, 0);
  // A zero, and a name behind it.
  ++next_;
  return integer(0);
}

// Appends the digits from `at` on to a number, and returns where they end.
const char* Lexer::readDigits(const char* at, std::uint64_t& digits) const {
  std::uint64_t number = digits;
  // Eight digits at a time: the pairs, then fours, then all of them as one number.
  if constexpr (std::endian::native == std::endian::little) {
    while (end_ - at >= 8) {
      std::uint64_t eight;
      std::memcpy(&eight, at, sizeof(eight));
      constexpr std::uint64_t kHighHalves = 0xF0F0F0F0F0F0F0F0U;
      const std::uint64_t above = (eight + 0x0606060606060606U) & kHighHalves;
      if ((eight & kHighHalves) != 0x3030303030303030U || above != 0x3030303030303030U) break;
      eight -= 0x3030303030303030U;
      eight = eight * 10 + (eight >> 8);
      constexpr std::uint64_t kPairs = 0x000000FF000000FFU;
      eight = ((eight & kPairs) * (100 + (std::uint64_t{1000000} << 32)) +
               ((eight >> 16) & kPairs) * (1 + (std::uint64_t{10000} << 32))) >>
              32;
      number = number * 100000000 + eight;
      at += 8;
    }
  }
  while (isDigit(*at)) number = number * 10 + static_cast<std::uint64_t>(*at++ - '0');
  digits = number;
  return at;
}

Token Lexer::readNumber() {
  const char* const begin = next_;
  const bool negative = *begin == '-';
  const char* at = negative || *begin == '+' ? begin + 1 : begin;
  if (at == begin && *at == '0' && (at[1] == 'x' || at[1] == 'X')) return readHexadecimal();

  // The digits as one number, as long as 64 bits hold it.
  std::uint64_t digits = 0;
  const char* const firstDigit = at;
  while (isDigit(*at)) digits = digits * 10 + static_cast<std::uint64_t>(*at++ - '0');
  auto digitCount = static_cast<std::size_t>(at - firstDigit);
  const auto textTo = [begin](const char* end) {
    return std::string_view(begin, static_cast<std::size_t>(end - begin));
  };

  if (*at == 'c') {
    next_ = at + 1;
    const auto byte = characterLiteral(textTo(next_));
    if (!byte) return Token::Other;
    bits_ = *byte;
    return Token::Char;
  }
  const bool hasPoint = *at == '.';
  if (!hasPoint && *at != 'e' && *at != 'E' && *at != 'h') {
    next_ = at;
    constexpr std::size_t kDigitsOfInteger = 18;  // always fit 64 bits with a sign
    if (digitCount > kDigitsOfInteger) return integer(decimalLiteral(textTo(at)));
    const auto number = static_cast<std::int64_t>(digits);
    return integer(negative ? -number : number);
  }

  DecimalNumber number{0, 0, negative, true};
  if (hasPoint) {
    const char* const fraction = ++at;
    at = readDigits(at, digits);
    digitCount += static_cast<std::size_t>(at - fraction);
    number.exponent = -static_cast<std::int32_t>(at - fraction);
  }
  if (*at == 'e' || *at == 'E') {
    ++at;
    const bool negativeExponent = *at == '-';
    if (*at == '-' || *at == '+') ++at;
    const char* const firstExponentDigit = at;
    std::int32_t exponent = 0;
    while (isDigit(*at)) {
      if (at - firstExponentDigit < 6) exponent = exponent * 10 + (*at - '0');
      ++at;
    }
    number.exponent += negativeExponent ? -exponent : exponent;
    number.exact = at != firstExponentDigit && at - firstExponentDigit <= 6;
  }
  constexpr std::size_t kDigitsOfNumber = 19;  // always fit 64 bits
  number.digits = digits;
  number.exact = number.exact && digitCount <= kDigitsOfNumber;
  const float value = floatLiteral(textTo(at), number);
  next_ = at;
  if (*at != 'h') return singlePrecision(value);
  ++next_;
  return halfPrecision(value);
}

}  // namespace qex::vornath
