#include "language/parse_driver.hpp"

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/mutex.hpp>

#include "grammar.hpp"
#include "language/scanner.hpp"
#include "types/type_parser.hpp"
#include "values/value_parser.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {

boost::mutex parser_mutex;

namespace {

int run(ParseContext& context, const std::string& text, Scan::Language language) {
  const boost::lock_guard<boost::mutex> lock(parser_mutex);
  const Scan scan(text, language);
  grammar::parser parser(context);
  return parser.parse();
}

[[noreturn]] void fail(const char* format, const std::string& text, const std::string& error) {
  throw vrnt::Exception(vrnt::ErrorCode::ParseFailed, format, text, error);
}

}  // namespace

int parseTypeText(ParseContext& context, const std::string& text, TypePtr& out) {
  const int status = run(context, text, Scan::Language::Type);
  if (status == 0) out = context.type;
  return status;
}

int parseValueText(ParseContext& context, const std::string& text,
                   std::optional<DynamicValue>& out) {
  const int status = run(context, text, Scan::Language::Value);
  if (status == 0) out = context.value;
  return status;
}

TypePtr parseUncachedType(const std::string& text) {
  ParseContext context;
  TypePtr type;
  if (parseTypeText(context, text, type) != 0) {
    fail("Unable to parse type: {}.\n{}", text, context.error);
  }
  return type;
}

DynamicValue parseValue(const std::string& text) {
  ParseContext context;
  std::optional<DynamicValue> value;
  if (parseValueText(context, text, value) != 0) {
    fail("Unable to parse value: {}.\n{}", text, context.error);
  }
  return std::move(value).value();
}

}  // namespace qex::vornath
