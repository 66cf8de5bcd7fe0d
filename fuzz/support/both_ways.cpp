#include "support/both_ways.hpp"

#include <optional>

#include "language/parse_driver.hpp"
#include "language/plan_parser.hpp"
#include "language/plan_runner.hpp"
#include "support/target.hpp"
#include "types/type.hpp"
#include "values/block.hpp"
#include "values/dynamic_value.hpp"
#include "vornath_data/result.hpp"

namespace vornath_fuzz {
namespace {

using namespace qex::vornath;

// The result of one way, which is empty if the text is not of the language or breaks a rule.
template <typename Result>
struct Outcome {
  std::optional<Result> result;
  std::string failure;  // the words of the exception
};

template <typename Result, typename Call>
Outcome<Result> outcomeOf(Call call) {
  try {
    return {call(), {}};
  } catch (const vrnt::Exception& failure) {
    return {std::nullopt, std::to_string(static_cast<int>(failure.code())) + failure.what()};
  }
}

// Compares what both ways have come to; returns whether both have built something.
template <typename Result>
bool sameOutcome(const Outcome<Result>& expected, const Outcome<Result>& actual,
                 const std::string& text) {
  FUZZ_CHECK_NOTE(expected.failure == actual.failure,
                  text + "\n" + expected.failure + "\n" + actual.failure);
  FUZZ_CHECK_NOTE(expected.result.has_value() == actual.result.has_value(), text);
  return expected.result.has_value();
}

bool sameWords(const vrntValue_t* left, const vrntValue_t* right) {
  std::vector<std::pair<const vrntValue_t*, const vrntValue_t*>> pairs{{left, right}};
  while (!pairs.empty()) {
    const auto [a, b] = pairs.back();
    pairs.pop_back();
    const InternedType& type = blockType(a);
    if (&type != &blockType(b) || a->length != b->length || a->refCount != b->refCount)
      return false;
    std::string bytesA(blockData(a), type.size());
    std::string bytesB(blockData(b), type.size());
    for (const std::uint64_t slot : type.refSlots()) {
      const std::uint64_t wordA = loadWord(bytesA.data() + slot * kWordSize);
      const std::uint64_t wordB = loadWord(bytesB.data() + slot * kWordSize);
      if (!isBlockWord(wordA) || !isBlockWord(wordB)) continue;
      pairs.emplace_back(blockOfWord(wordA), blockOfWord(wordB));
      storeWord(bytesA.data() + slot * kWordSize, 0);
      storeWord(bytesB.data() + slot * kWordSize, 0);
    }
    if (bytesA != bytesB) return false;
  }
  return true;
}

}  // namespace

void checkTypeBothWays(const std::string& text) {
  BuildPlan plan;
  const bool planned = planBuild(plan, text, Scan::Language::Type);
  int status = 0;
  const auto expected = outcomeOf<TypePtr>([&] {
    ParseContext context;
    TypePtr type;
    status = parseTypeTextByGrammar(context, text, type);
    return type;
  });
  if (!planned) {
    FUZZ_CHECK_NOTE(status != 0 || !expected.failure.empty(), text);
    return;
  }
  FUZZ_CHECK_NOTE(status == 0, text);
  const auto actual = outcomeOf<TypePtr>([&] { return buildType(plan, text); });
  if (!sameOutcome(expected, actual, text)) return;
  const InternedType& a = **expected.result;
  const InternedType& b = **actual.result;
  FUZZ_CHECK_NOTE(a.text() == b.text(), text + "\n" + a.text() + "\n" + b.text());
  FUZZ_CHECK_NOTE(&a.stripped() == &b.stripped(), text);
  // Only a value in an annotation makes another type.
  if (text.find('=') == std::string::npos) FUZZ_CHECK_NOTE(&a == &b, text);
}

void checkValueBothWays(const std::string& text) {
  BuildPlan plan;
  const bool planned = planBuild(plan, text, Scan::Language::Value);
  int status = 0;
  const auto build = [&](auto call) { return outcomeOf<std::optional<DynamicValue>>(call); };
  const auto expected = build([&] {
    ParseContext context;
    std::optional<DynamicValue> value;
    status = parseValueTextByGrammar(context, text, value);
    return value;
  });
  if (!planned) {
    FUZZ_CHECK_NOTE(status != 0 || !expected.failure.empty(), text);
    return;
  }
  FUZZ_CHECK_NOTE(status == 0, text);
  const auto actual = build([&] { return std::optional(buildValue(plan, text)); });
  if (!sameOutcome(expected, actual, text)) return;
  FUZZ_CHECK_NOTE(sameWords((**expected.result).block(), (**actual.result).block()), text);
}

}  // namespace vornath_fuzz
