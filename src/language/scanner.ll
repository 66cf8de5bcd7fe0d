/* The tokens of the type and value texts. Ties between rules of equal length go to the earlier one. */

%option noyywrap nounput noinput never-interactive nodefault 8bit warn noyyrealloc full ecs
%option prefix="vornath_scanner_"

%{
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>
#include <string>
#include <utility>

#include "grammar.hpp"
#include "language/literals.hpp"
#include "language/scanner.hpp"

using qex::vornath::Scan;
using qex::vornath::grammar::parser;

// flex's own answer to a failed allocation is to end the process.
#define YY_FATAL_ERROR(message) throw std::bad_alloc()

#define YY_DECL parser::symbol_type vornath_scanner_lex()

namespace {

// What the first request for a token answers before any text is read.
Scan::Language pendingStart = Scan::Language::None;

parser::symbol_type integer(std::int64_t value) {
  if (value < std::numeric_limits<std::int32_t>::min() ||
      value > std::numeric_limits<std::int32_t>::max()) {
    return parser::make_ADDR(static_cast<std::uint64_t>(value));
  }
  return parser::make_INT(static_cast<std::int32_t>(value));
}

float floatOfBits(std::uint64_t bits) {
  const auto word = static_cast<std::uint32_t>(bits);
  float value;
  static_assert(sizeof value == sizeof word);
  __builtin_memcpy(&value, &word, sizeof value);
  return value;
}

[[noreturn]] void illegal(const char* text, std::size_t length) {
  throw parser::syntax_error("Illegal character: " + std::string(text, length));
}

}  // namespace
%}

D   [0-9]
H   [0-9a-fA-F]
S   [+-]?
X   0[xX]
NC  [A-Za-z0-9_']
E   [eE][+-]?{D}*
N   {S}{D}+("."{D}*)?({E})?

%%

%{
  switch (std::exchange(pendingStart, Scan::Language::None)) {
    case Scan::Language::Type: return parser::make_START_TYPE();
    case Scan::Language::Value: return parser::make_START_VALUE();
    case Scan::Language::None: break;
  }
%}

[ \t]          {}
\r?\n          {}

"("            { return parser::make_LPAREN(); }
")"            { return parser::make_RPAREN(); }
"["            { return parser::make_LBRACKET(); }
"]"            { return parser::make_RBRACKET(); }
"{"            { return parser::make_LBRACE(); }
"}"            { return parser::make_RBRACE(); }
","            { return parser::make_COMMA(); }
";"            { return parser::make_SEMICOLON(); }
":"            { return parser::make_COLON(); }
"="            { return parser::make_EQUALS(); }
"*"            { return parser::make_STAR(); }
"$"            { return parser::make_DOLLAR(); }
"&"            { return parser::make_AMPERSAND(); }
"|"            { return parser::make_BAR(); }
"=>"           { return parser::make_ARROW(); }

"enum"         { return parser::make_ENUM(); }
"bool"         { return parser::make_BOOL1(); }
"bool2"        { return parser::make_BOOL2(); }
"bool3"        { return parser::make_BOOL3(); }
"bool4"        { return parser::make_BOOL4(); }
"int"          { return parser::make_INT1(); }
"int2"         { return parser::make_INT2(); }
"int3"         { return parser::make_INT3(); }
"int4"         { return parser::make_INT4(); }
"float"        { return parser::make_FLOAT1(); }
"float2"       { return parser::make_FLOAT2(); }
"float3"       { return parser::make_FLOAT3(); }
"float4"       { return parser::make_FLOAT4(); }
"void"         { return parser::make_VOID(); }
"char"         { return parser::make_CHAR1(); }
"char2"        { return parser::make_CHAR2(); }
"char3"        { return parser::make_CHAR3(); }
"char4"        { return parser::make_CHAR4(); }
"half"         { return parser::make_HALF1(); }
"half2"        { return parser::make_HALF2(); }
"half3"        { return parser::make_HALF3(); }
"half4"        { return parser::make_HALF4(); }

"true"         { return parser::make_BOOL(1); }
"false"        { return parser::make_BOOL(0); }

{S}{D}+c       {
                 const auto byte = qex::vornath::characterLiteral(yytext);
                 if (!byte) illegal(yytext, yyleng);
                 return parser::make_CHAR(*byte);
               }
{S}{D}+        { return integer(qex::vornath::decimalLiteral(yytext)); }
{N}h           { return parser::make_HALF(qex::vornath::halfLiteral(yytext)); }
{S}infh        { return parser::make_HALF(*yytext == '-' ? 0xFC00 : 0x7C00); }
NaNh           { return parser::make_HALF(0x7FFF); }
{N}            { return parser::make_FLOAT(qex::vornath::floatLiteral(yytext)); }
{S}inf         {
                 constexpr float infinity = std::numeric_limits<float>::infinity();
                 return parser::make_FLOAT(*yytext == '-' ? -infinity : infinity);
               }
NaN            { return parser::make_FLOAT(floatOfBits(0x7FC00000)); }

{X}{H}{2}      {
                 return parser::make_CHAR(
                     static_cast<std::uint8_t>(qex::vornath::hexadecimalLiteral(yytext)));
               }
{X}{H}{8}      {
                 return parser::make_INT(static_cast<std::int32_t>(
                     static_cast<std::uint32_t>(qex::vornath::hexadecimalLiteral(yytext))));
               }
{X}{H}{16}     { return parser::make_ADDR(qex::vornath::hexadecimalLiteral(yytext)); }
{X}{H}{4}"."   {
                 return parser::make_HALF(
                     static_cast<std::uint16_t>(qex::vornath::hexadecimalLiteral(yytext)));
               }
{X}{H}{8}"."   { return parser::make_FLOAT(floatOfBits(qex::vornath::hexadecimalLiteral(yytext))); }

[a-z]{NC}*     { return parser::make_LIDENT(std::string(yytext, yyleng)); }
[A-Z]{NC}*     { return parser::make_UIDENT(std::string(yytext, yyleng)); }
@{NC}*         { return parser::make_METAIDENT(std::string(yytext + 1, yyleng - 1)); }
\"[^\"\0]*\"   { return parser::make_QUOTED_STRING(std::string(yytext + 1, yyleng - 2)); }

.              { illegal(yytext, yyleng); }
<<EOF>>        { return parser::make_END(); }

%%

// flex forgets the former block when it is given null for a larger one.
void* yyrealloc(void* memory, yy_size_t size) {
  void* const larger = std::realloc(memory, size);
  if (larger == nullptr) throw std::bad_alloc();
  return larger;
}

namespace qex::vornath {

void Scan::requireScannable(std::size_t length) {
  if (length > kMaxTextLength) throw std::bad_alloc();
}

Scan::Scan(const std::string& text, Language language) {
  requireScannable(text.size());
  // flex wants two zero bytes behind the text, which it scans in place.
  buffer_.reserve(text.size() + 2);
  buffer_.append(text).append(2, '\0');
  try {
    // First the stack of buffers, which the second call makes large enough: a buffer for which there
    // is no place would be lost.
    yyensure_buffer_stack();
    yyensure_buffer_stack();
    yy_scan_buffer(buffer_.data(), buffer_.size());
  } catch (...) {
    yylex_destroy();
    throw;
  }
  pendingStart = language;
}

Scan::~Scan() {
  // The stack of buffers goes as well, so that a host that unloads the library gets all back.
  yylex_destroy();
  pendingStart = Language::None;
}

}  // namespace qex::vornath
