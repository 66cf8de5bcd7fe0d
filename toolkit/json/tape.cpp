#include "json/tape.hpp"

#include <fmt/format.h>

namespace vrtk {
namespace {

struct TapeEvents {
  Tape& tape;

  void value(Token token, std::uint64_t offset, std::string_view text, bool isInDocument) {
    addToken(tape, token, offset, text, isInDocument);
  }
  void start(Token token, std::uint64_t offset) { tape.open(token, offset); }
  void end(std::uint64_t parts) { tape.close(parts); }
};

std::string foundAt(std::string_view document, std::uint64_t offset) {
  if (offset >= document.size()) return "the end of the document";
  const auto c = static_cast<unsigned char>(document[offset]);
  if (c < 0x20 || c >= 0x7F) return fmt::format("the byte 0x{:02x}", c);
  return fmt::format("'{}'", document[offset]);
}

}  // namespace

std::optional<std::uint32_t> Tape::member(std::uint32_t object, std::string_view key) const {
  const std::uint32_t end = nodes_[object].next;
  for (std::uint32_t i = object + 1; i < end; i = nodes_[i + 1].next) {
    if (nodes_[i].view() == key) return i + 1;
  }
  return std::nullopt;
}

std::string syntaxWords(rapid::ParseErrorCode code, std::string_view document,
                        std::uint64_t offset) {
  const std::string found = foundAt(document, offset);
  switch (code) {
    case rapid::kParseErrorDocumentEmpty:
      return "the document is empty; expected a JSON value";
    case rapid::kParseErrorDocumentRootNotSingular:
      return fmt::format("found {} behind the value; expected the end of the document", found);
    case rapid::kParseErrorObjectMissName:
      return fmt::format("found {}; expected a key in quotes, without a comma before '}}'", found);
    case rapid::kParseErrorObjectMissColon:
      return fmt::format("found {}; expected a colon behind the key", found);
    case rapid::kParseErrorObjectMissCommaOrCurlyBracket:
      return fmt::format("found {}; expected a comma or '}}' behind the member", found);
    case rapid::kParseErrorArrayMissCommaOrSquareBracket:
      return fmt::format("found {}; expected a comma or ']' behind the element", found);
    case rapid::kParseErrorStringUnicodeEscapeInvalidHex:
      return "expected four hexadecimal digits behind \\u";
    case rapid::kParseErrorStringUnicodeSurrogateInvalid:
      return "a \\u escape has one half of a surrogate pair; expected both";
    case rapid::kParseErrorStringEscapeInvalid:
      return "there is no such escape; expected one of \\\" \\\\ \\/ \\b \\f \\n \\r \\t \\u";
    case rapid::kParseErrorStringMissQuotationMark:
      return "the string does not end; expected a quotation mark";
    case rapid::kParseErrorStringInvalidEncoding:
      return fmt::format("found {} in a string; expected UTF-8 without control characters", found);
    case rapid::kParseErrorNumberTooBig:
      return "the number is too large";
    case rapid::kParseErrorNumberMissFraction:
      return fmt::format("found {}; expected digits behind the point", found);
    case rapid::kParseErrorNumberMissExponent:
      return fmt::format("found {}; expected digits of the exponent", found);
    default:
      return fmt::format("found {}; expected a JSON value", found);
  }
}

std::optional<SyntaxFault> readTape(std::string_view document, Tape& tape) {
  tape.clear();
  TapeEvents events{tape};
  return readJson(document, events);
}

}  // namespace vrtk
