#include "language/parse_driver.hpp"

#include <boost/thread/mutex.hpp>

#include "grammar.hpp"
#include "language/plan_parser.hpp"
#include "language/plan_runner.hpp"
#include "language/scanner.hpp"
#include "types/type_parser.hpp"
#include "values/value_parser.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {

boost::mutex parser_mutex;

namespace {

// Tells the processor that this thread only waits for another one.
void pauseBriefly() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

// Holds parser_mutex. Most parses take a few microseconds, and to be woken after a sleep takes ten
// times as long: the lock is tried for about the time of a short parse first.
class ParserLock {
 public:
  ParserLock() {
    constexpr int kTries = 200;
    for (int i = 0; i < kTries; ++i) {
      if (parser_mutex.try_lock()) return;
      for (int pause = 0; pause < 4; ++pause) pauseBriefly();
    }
    parser_mutex.lock();
  }
  ParserLock(const ParserLock&) = delete;
  ParserLock& operator=(const ParserLock&) = delete;
  ~ParserLock() { parser_mutex.unlock(); }
};

int runGrammar(ParseContext& context, const std::string& text, Scan::Language language) {
  const Scan scan(text, language);
  grammar::parser parser(context);
  return parser.parse();
}

[[noreturn]] void fail(const char* format, const std::string& text, const std::string& error) {
  throw vrnt::Exception(vrnt::ErrorCode::ParseFailed, format, text, error);
}

}  // namespace

int parseTypeText(ParseContext& context, const std::string& text, TypePtr& out) {
  BuildPlan plan;
  if (!planBuild(plan, text, Scan::Language::Type)) {
    return parseTypeTextByGrammar(context, text, out);
  }
  const ParserLock lock;
  context.type = buildType(plan, text);
  out = context.type;
  return 0;
}

int parseValueText(ParseContext& context, const std::string& text,
                   std::optional<DynamicValue>& out) {
  BuildPlan plan;
  if (!planBuild(plan, text, Scan::Language::Value)) {
    return parseValueTextByGrammar(context, text, out);
  }
  const ParserLock lock;
  context.value = buildValue(plan, text);
  out = context.value;
  return 0;
}

int parseTypeTextByGrammar(ParseContext& context, const std::string& text, TypePtr& out) {
  const ParserLock lock;
  const int status = runGrammar(context, text, Scan::Language::Type);
  if (status == 0) out = context.type;
  return status;
}

int parseValueTextByGrammar(ParseContext& context, const std::string& text,
                            std::optional<DynamicValue>& out) {
  const ParserLock lock;
  const int status = runGrammar(context, text, Scan::Language::Value);
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
