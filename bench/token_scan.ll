/* The yardstick of the parsers: a scanner with the tokens of the type and value texts that only
   counts them, or also converts the numbers. Its tables are not
   compressed, which makes it two to three times as fast. */

%option full ecs noyywrap nounput noinput never-interactive nodefault 8bit
%option prefix="bench_tokens_"

%{
#include <charconv>
#include <cstdint>

#include "token_scan.hpp"

#define YY_DECL static int nextToken()
%}

D   [0-9]
H   [0-9a-fA-F]
S   [+-]?
X   0[xX]
NC  [A-Za-z0-9_']
E   [eE][+-]?{D}*
N   {S}{D}+("."{D}*)?({E})?

%%

[ \t]          {}
\r?\n          {}

"("            { return '('; }
")"            { return ')'; }
"["            { return '['; }
"]"            { return ']'; }
"{"            { return '{'; }
"}"            { return '}'; }
","            { return ','; }
";"            { return ';'; }
":"            { return ':'; }
"="            { return '='; }
"*"            { return '*'; }
"$"            { return '$'; }
"&"            { return '&'; }
"|"            { return '|'; }
"=>"           { return bench::kArrow; }

"enum"         { return bench::kKeyword; }
"bool"         { return bench::kKeyword; }
"bool2"        { return bench::kKeyword; }
"bool3"        { return bench::kKeyword; }
"bool4"        { return bench::kKeyword; }
"int"          { return bench::kKeyword; }
"int2"         { return bench::kKeyword; }
"int3"         { return bench::kKeyword; }
"int4"         { return bench::kKeyword; }
"float"        { return bench::kKeyword; }
"float2"       { return bench::kKeyword; }
"float3"       { return bench::kKeyword; }
"float4"       { return bench::kKeyword; }
"void"         { return bench::kKeyword; }
"char"         { return bench::kKeyword; }
"char2"        { return bench::kKeyword; }
"char3"        { return bench::kKeyword; }
"char4"        { return bench::kKeyword; }
"half"         { return bench::kKeyword; }
"half2"        { return bench::kKeyword; }
"half3"        { return bench::kKeyword; }
"half4"        { return bench::kKeyword; }

"true"         { return bench::kBool; }
"false"        { return bench::kBool; }

{S}{D}+c       { return bench::kChar; }
{S}{D}+        { return bench::kInt; }
{N}h           { return bench::kHalf; }
{S}infh        { return bench::kHalf; }
NaNh           { return bench::kHalf; }
{N}            { return bench::kFloat; }
{S}inf         { return bench::kFloat; }
NaN            { return bench::kFloat; }

{X}{H}{2}      { return bench::kChar; }
{X}{H}{8}      { return bench::kHexadecimal; }
{X}{H}{16}     { return bench::kHexadecimal; }
{X}{H}{4}"."   { return bench::kHexadecimal; }
{X}{H}{8}"."   { return bench::kHexadecimal; }

[a-z]{NC}*     { return bench::kName; }
[A-Z]{NC}*     { return bench::kName; }
@{NC}*         { return bench::kName; }
\"[^\"\0]*\"   { return bench::kText; }

.              { return bench::kIllegal; }
<<EOF>>        { return 0; }

%%

namespace bench {
namespace {

// Scans a copy of the text, as the library must: flex wants two zero bytes behind it.
template <typename OnToken>
std::uint64_t scan(std::string_view text, std::string& room, OnToken onToken) {
  room.assign(text).append(2, '\0');
  const YY_BUFFER_STATE buffer = yy_scan_buffer(room.data(), room.size());
  std::uint64_t sum = 0;
  while (const int token = nextToken()) sum += onToken(token);
  yy_delete_buffer(buffer);
  return sum;
}

}  // namespace

std::uint64_t countTokens(std::string_view text, std::string& room) {
  return scan(text, room, [](int) { return std::uint64_t{1}; });
}

std::uint64_t convertNumbers(std::string_view text, std::string& room) {
  return scan(text, room, [](int token) {
    if (token == kFloat) {
      float number = 0;
      std::from_chars(yytext, yytext + yyleng, number);
      return static_cast<std::uint64_t>(number != 0);
    }
    if (token == kInt) {
      int number = 0;
      std::from_chars(yytext, yytext + yyleng, number);
      return static_cast<std::uint64_t>(number != 0);
    }
    return std::uint64_t{1};
  });
}

}  // namespace bench
