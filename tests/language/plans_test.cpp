// Texts that are built from a plan against the same texts built by the generated scanner and
// parser: random sentences of the grammar itself, and texts near them.
#include <gtest/gtest.h>

#include <cfenv>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include "language/grammar_sentences.hpp"
#include "language/lexer.hpp"
#include "language/literals.hpp"
#include "language/parse_driver.hpp"
#include "language/plan_parser.hpp"
#include "language/plan_runner.hpp"
#include "types/base_types.hpp"
#include "types/extents.hpp"
#include "types/type_factory.hpp"
#include "values/block.hpp"
#include "values/fixed_types.hpp"
#include "vornath_data/result.hpp"

namespace {

using namespace qex::vornath;
using vornath_test::below;
using vornath_test::chance;
using vornath_test::Random;
using vornath_test::Sentences;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kSentences = 3000;  // of each kind in each case
constexpr int kNumbers = 100000;
constexpr std::size_t kBuiltDepth = 300;
#else
constexpr int kSentences = 60000;
constexpr int kNumbers = 2000000;
constexpr std::size_t kBuiltDepth = 3000;
#endif

// What a parse has come to.
struct NotOfTheLanguage {};
struct Failure {
  std::string text;  // the exception with its code and its words
};
using Outcome = std::variant<NotOfTheLanguage, Failure, TypePtr, DynamicValue>;

template <typename Call>
Outcome outcomeOf(Call call) {
  try {
    return call();
  } catch (const vrnt::Exception& failure) {
    return Failure{std::to_string(static_cast<int>(failure.code())) + failure.what()};
  } catch (const std::bad_alloc&) {
    return Failure{"std::bad_alloc"};
  }
}

Outcome byGrammar(const std::string& text, Scan::Language language) {
  return outcomeOf([&]() -> Outcome {
    ParseContext context;
    if (language == Scan::Language::Type) {
      TypePtr type;
      if (parseTypeTextByGrammar(context, text, type) != 0) return NotOfTheLanguage{};
      return type;
    }
    std::optional<DynamicValue> value;
    if (parseValueTextByGrammar(context, text, value) != 0) return NotOfTheLanguage{};
    return *std::move(value);
  });
}

// The plan that the library runs under parser_mutex.
Outcome byPlan(const BuildPlan& plan, const std::string& text, Scan::Language language) {
  return outcomeOf([&]() -> Outcome {
    if (language == Scan::Language::Type) return buildType(plan, text);
    return buildValue(plan, text);
  });
}

constexpr std::uint64_t kLargeValue = std::uint64_t{1} << 20;

// The same values: types, counts and bytes, and the same of what they refer to.
bool sameBlocks(const vrntValue_t* left, const vrntValue_t* right) {
  std::vector<std::pair<const vrntValue_t*, const vrntValue_t*>> pairs{{left, right}};
  while (!pairs.empty()) {
    const auto [a, b] = pairs.back();
    pairs.pop_back();
    if (&blockType(a) != &blockType(b) || a->length != b->length || a->refCount != b->refCount) {
      return false;
    }
    const InternedType& type = blockType(a);
    if (type.size() > kLargeValue) continue;
    std::string bytesA(blockData(a), type.size());
    std::string bytesB(blockData(b), type.size());
    for (const std::uint64_t slot : type.refSlots()) {
      const std::uint64_t wordA = loadWord(bytesA.data() + slot * kWordSize);
      const std::uint64_t wordB = loadWord(bytesB.data() + slot * kWordSize);
      if (isBlockWord(wordA) != isBlockWord(wordB)) return false;
      if (!isBlockWord(wordA)) continue;
      pairs.emplace_back(blockOfWord(wordA), blockOfWord(wordB));
      storeWord(bytesA.data() + slot * kWordSize, 0);
      storeWord(bytesB.data() + slot * kWordSize, 0);
    }
    if (bytesA != bytesB) return false;
  }
  return true;
}

bool sameMetadata(const Metadata& a, const Metadata& b) {
  if (a.size() != b.size()) return false;
  for (auto left = a.begin(), right = b.begin(); left != a.end(); ++left, ++right) {
    if (left->first != right->first || left->second.index() != right->second.index()) return false;
    if (const auto* text = std::get_if<std::string>(&left->second)) {
      if (*text != std::get<std::string>(right->second)) return false;
    }
    if (const auto* value = std::get_if<HeapValue<DynamicValue>>(&left->second)) {
      const auto& other = std::get<HeapValue<DynamicValue>>(right->second);
      if (!sameBlocks((**value).block(), (*other).block())) return false;
    }
  }
  return true;
}

bool hasValues(const Metadata& metadata) {
  for (const auto& [key, entry] : metadata) {
    if (std::holds_alternative<HeapValue<DynamicValue>>(entry)) return true;
  }
  return false;
}

// The same object, unless a value in the annotations of one of its parts makes it another one.
bool sameTypes(const InternedType& left, const InternedType& right) {
  bool mayDiffer = false;
  std::vector<std::pair<const InternedType*, const InternedType*>> pairs{{&left, &right}};
  const auto push = [&](const TypePtr& a, const TypePtr& b) {
    if (!a != !b) return false;
    if (a != b) pairs.emplace_back(a.get(), b.get());
    return true;
  };
  while (!pairs.empty()) {
    const auto [a, b] = pairs.back();
    pairs.pop_back();
    if (a == b) continue;
    if (a->text() != b->text() || &a->stripped() != &b->stripped() || a->size() != b->size() ||
        a->alignment() != b->alignment() || a->desc().index() != b->desc().index() ||
        !sameMetadata(a->metadata(), b->metadata())) {
      return false;
    }
    mayDiffer = mayDiffer || hasValues(a->metadata());
    bool same = true;
    if (const auto* structure = a->getIf<Type::TStruct>()) {
      const auto& other = b->get<Type::TStruct>();
      same = structure->offsets == other.offsets;
      for (std::size_t i = 0; same && i < structure->fields.size(); ++i) {
        same = push(structure->fields[i].type, other.fields[i].type);
      }
    } else if (const auto* enumeration = a->getIf<Type::TEnum>()) {
      const auto& other = b->get<Type::TEnum>();
      for (std::size_t i = 0; same && i < enumeration->constructors.size(); ++i) {
        const Type::Constructor& constructor = enumeration->constructors[i];
        const Type::Constructor& twin = other.constructors[i];
        mayDiffer = mayDiffer || hasValues(constructor.metadata);
        same = constructor.name == twin.name && sameMetadata(constructor.metadata, twin.metadata) &&
               constructor.payload.offsets == twin.payload.offsets;
        for (std::size_t field = 0; same && field < constructor.payload.fields.size(); ++field) {
          same = push(constructor.payload.fields[field].type, twin.payload.fields[field].type);
        }
      }
    } else if (const auto* reference = a->getIf<Type::TRef>()) {
      same = push(reference->target, b->get<Type::TRef>().target);
    } else if (const auto* function = a->getIf<Type::TFun>()) {
      const auto& other = b->get<Type::TFun>();
      same = push(function->codomain, other.codomain);
      for (std::size_t i = 0; same && i < function->domain.size(); ++i) {
        same = push(function->domain[i], other.domain[i]);
      }
    } else if (const auto array = arrayDesc(a->desc())) {
      same = push(*array->element, *arrayDesc(b->desc())->element);
    }
    if (!same) return false;
  }
  return &left == &right || mayDiffer;
}

// What is wrong with the second outcome, or nothing.
std::string difference(const Outcome& expected, const Outcome& actual) {
  if (expected.index() != actual.index()) {
    return "another kind of outcome: " + std::to_string(expected.index()) + " and " +
           std::to_string(actual.index());
  }
  if (const auto* failure = std::get_if<Failure>(&expected)) {
    const auto& other = std::get<Failure>(actual);
    return failure->text == other.text ? "" : "another failure: " + failure->text + other.text;
  }
  if (const auto* type = std::get_if<TypePtr>(&expected)) {
    return sameTypes(**type, *std::get<TypePtr>(actual)) ? "" : "another type";
  }
  if (const auto* value = std::get_if<DynamicValue>(&expected)) {
    const bool same = sameBlocks(value->block(), std::get<DynamicValue>(actual).block());
    return same ? "" : "another value";
  }
  return "";
}

struct Counts {
  int ofTheLanguage = 0;
  int built = 0;
};

// Parses the text both ways, in either order.
void expectSame(const std::string& text, Scan::Language language, bool grammarFirst,
                Counts& counts) {
  BuildPlan plan;
  const bool planned = planBuild(plan, text, language);
  Outcome expected;
  Outcome actual;
  if (grammarFirst) expected = byGrammar(text, language);
  if (planned) actual = byPlan(plan, text, language);
  if (!grammarFirst) expected = byGrammar(text, language);
  if (!planned) {
    // The rule that a part of the text breaks may come before what is not of the language.
    ASSERT_TRUE(std::holds_alternative<NotOfTheLanguage>(expected) ||
                std::holds_alternative<Failure>(expected))
        << text;
    return;
  }
  ++counts.ofTheLanguage;
  if (expected.index() > 1) ++counts.built;
  ASSERT_EQ(difference(expected, actual), "") << text;
}

std::string sourceFile(const char* name) {
  return (std::filesystem::path(LANGUAGE_SOURCES) / name).string();
}

Sentences sentences(std::uint32_t seed) {
  return Sentences(sourceFile("grammar.yy"), sourceFile("scanner.ll"), seed);
}

std::size_t liveTypes() { return Type::get_factory(true)->liveTypes(); }

// Base types are permanent from their first use in a value on.
void useBaseTypes() {
  for (std::size_t base = 0; base < kBaseTypes.size(); ++base) {
    baseType(static_cast<Type::TBasetype>(base));
  }
}

constexpr std::pair<Scan::Language, const char*> kLanguages[] = {
    {Scan::Language::Type, "START_TYPE"}, {Scan::Language::Value, "START_VALUE"}};

class Plans : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    useBaseTypes();
    before_ = liveTypes();
  }
  void TearDown() override { EXPECT_EQ(liveTypes(), before_); }

  std::uint32_t seed() const { return static_cast<std::uint32_t>(GetParam()); }

 private:
  std::size_t before_ = 0;
};

}  // namespace

TEST_P(Plans, OfEachSentenceOfTheGrammarBuildWhatTheParserBuilds) {
  Sentences source = sentences(seed());
  for (const auto& [language, start] : kLanguages) {
    Counts counts;
    for (int i = 0; i < kSentences; ++i) {
      expectSame(source.spaced(source.derive(start)), language, i % 2 == 0, counts);
      if (HasFatalFailure()) return;
    }
    EXPECT_EQ(counts.ofTheLanguage, kSentences);
    EXPECT_GT(counts.built, kSentences / 5);
  }
  const auto& rules = source.grammar().rules();
  for (std::size_t i = 0; i < rules.size(); ++i) {
    EXPECT_GT(source.uses()[i], 5u) << rules[i].left << " " << i;
  }
  for (std::size_t i = 0; i < source.scanner().rules().size(); ++i) {
    const auto& rule = source.scanner().rules()[i];
    if (rule.tokens.empty()) continue;
    EXPECT_GT(source.scanner().uses()[i], 5u) << rule.pattern;
  }
}

TEST_P(Plans, OfTextsWithoutBlanksBuildWhatTheParserBuilds) {
  Sentences source = sentences(seed() + 1000);
  for (const auto& [language, start] : kLanguages) {
    Counts counts;
    for (int i = 0; i < kSentences / 2; ++i) {
      expectSame(source.dense(source.derive(start)), language, i % 2 == 0, counts);
      if (HasFatalFailure()) return;
    }
    EXPECT_GT(counts.ofTheLanguage, kSentences / 20);
    EXPECT_LT(counts.ofTheLanguage, kSentences / 2);
  }
}

TEST_P(Plans, AreMadeOfTextsNearTheLanguageJustWhereTheParserTakesThem) {
  Sentences source = sentences(seed() + 2000);
  for (const auto& [language, start] : kLanguages) {
    Counts counts;
    for (int i = 0; i < kSentences; ++i) {
      expectSame(source.mutated(source.derive(start)), language, i % 2 == 0, counts);
      if (HasFatalFailure()) return;
    }
    EXPECT_GT(counts.ofTheLanguage, kSentences / 50);
    EXPECT_LT(counts.ofTheLanguage, kSentences / 2);
  }
}

INSTANTIATE_TEST_SUITE_P(FromSeeds, Plans, testing::Range(1, 5));

namespace {

std::vector<std::string> corpus(const char* file) {
  std::vector<std::string> lines;
  std::ifstream in(std::filesystem::path(LANGUAGE_TESTS) / "corpus" / file, std::ios::binary);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line[0] != '#') lines.push_back(line);
  }
  return lines;
}

std::string repeated(const std::string& text, std::size_t times) {
  std::string all;
  all.reserve(text.size() * times);
  for (; times != 0; --times) all += text;
  return all;
}

}  // namespace

TEST(PlansOfCanonicalTexts, AreMadeWithoutException) {
  Counts counts;
  const std::vector<std::string> types = corpus("types.txt");
  const std::vector<std::string> values = corpus("values.txt");
  ASSERT_GT(types.size() + values.size(), 120u);
  for (const std::string& text : types) expectSame(text, Scan::Language::Type, true, counts);
  for (const std::string& text : values) expectSame(text, Scan::Language::Value, true, counts);
  EXPECT_EQ(counts.built, static_cast<int>(types.size() + values.size()));
}

TEST(PlansOfDeepNests, BuildWhatTheParserBuilds) {
  Counts counts;
  const auto nest = [](const std::string& begin, const std::string& inner, const std::string& end) {
    return repeated(begin, kBuiltDepth) + inner + repeated(end, kBuiltDepth);
  };
  for (const std::string& text :
       {nest("", "int", "*"), nest("", "int", "[1]"), nest("{ ", "int", " a; }"),
        nest("(() => ", "int", ")"), nest("((", "int", ") => int)"),
        nest("enum { A(", "int", " a); }"), nest("int @a=[ : ", "int", " ]"),
        nest("", "float", " @a=1.0 *"), nest("int @a=$(1:", "int", ")")}) {
    expectSame(text, Scan::Language::Type, true, counts);
  }
  for (const std::string& text :
       {nest("&", "1", ""), nest("[ ", "1", " ]"), nest("{ a = ", "1", "; }"),
        nest("&{ b = ", "&1", "; }"), nest("{ c = 2; a = ", "1", "; b = float3(1.0, 2.0, 3.0); }"),
        nest("[ ", "1", ", 1 ]"), nest("[ : int @a=", "[ : int ]", " ]"),
        nest("$(7:int @a=", "1", ")")}) {
    expectSame(text, Scan::Language::Value, true, counts);
  }
  EXPECT_EQ(counts.ofTheLanguage, 17);
  EXPECT_EQ(counts.built, 16);  // an array of an int and of an array has no type
}

TEST(PlansOfDeepNests, NeedNoStack) {
  constexpr std::size_t kDepth = 300000;
  for (const auto& [language, begin, inner, end] :
       {std::tuple(Scan::Language::Type, "{ ", "int", " a; }"),
        std::tuple(Scan::Language::Type, "((", "int", ") => int)"),
        std::tuple(Scan::Language::Type, "enum { A(", "int", " a); }"),
        std::tuple(Scan::Language::Type, "int @a=[ : ", "int", " ]"),
        std::tuple(Scan::Language::Value, "{ a = ", "1", "; }"),
        std::tuple(Scan::Language::Value, "&[ ", "1", " ]"),
        std::tuple(Scan::Language::Value, "[ : int @a=", "1", " ]")}) {
    BuildPlan plan;
    const std::string text = repeated(begin, kDepth) + inner + repeated(end, kDepth);
    EXPECT_TRUE(planBuild(plan, text, language)) << begin;
    EXPECT_GE(plan.steps.size(), kDepth) << begin;
  }
}

TEST(PlansOfArrays, TakeOneStepForLikeScalars) {
  BuildPlan plan;
  ASSERT_TRUE(
      planBuild(plan, "[ 1.0, 2.0, 0x3f800000., inf, 1, [ 2 ], 3 ]", Scan::Language::Value));
  // Four floats, an int, an array of an int, an int, the array.
  EXPECT_EQ(plan.steps.size(), 6u);
  EXPECT_EQ(plan.steps[0].count, 4u);
}

TEST(PlansOfTexts, AreNotMadeWithAZeroByte) {
  for (const std::size_t at : {0, 3, 4, 5, 6}) {
    std::string text = "int @a=\"b\"";
    text.insert(at, 1, '\0');
    BuildPlan plan;
    EXPECT_FALSE(planBuild(plan, text, Scan::Language::Type)) << at;
  }
}

namespace {

std::uint32_t bitsOf(float number) {
  std::uint32_t bits;
  std::memcpy(&bits, &number, sizeof(bits));
  return bits;
}

// Reads the one token of the text, and compares it with the literal's own conversion.
void expectNumber(const std::string& text) {
  Lexer lexer(text);
  const Token token = lexer.advance();
  if (token == Token::Half) {
    ASSERT_EQ(lexer.bits(), halfLiteral(text)) << text;
  } else {
    ASSERT_EQ(token, Token::Float) << text;
    ASSERT_EQ(lexer.bits(), bitsOf(floatLiteral(text))) << text;
  }
  ASSERT_EQ(lexer.advance(), Token::End) << text;
}

std::string digits(Random& random, std::uint32_t most) {
  std::string text;
  for (std::uint32_t count = 1 + below(random, most); count != 0; --count) {
    text += static_cast<char>('0' + below(random, 10));
  }
  return text;
}

// A number with a point or an exponent, or a half.
std::string number(Random& random) {
  char text[64];
  std::uint32_t bits = static_cast<std::uint32_t>(random());
  float value;
  switch (below(random, 6)) {
    case 0:  // any float, as short as it reads back or longer
    case 1:
      bits &= 0xFF7FFFFF;
      std::memcpy(&value, &bits, sizeof(value));
      std::snprintf(text, sizeof(text), "%.*e", static_cast<int>(5 + below(random, 20)),
                    static_cast<double>(value));
      break;
    case 2: {  // around the middle between two floats
      bits = (bits & 0x807FFFFF) | (100 + below(random, 50)) << 23;
      std::memcpy(&value, &bits, sizeof(value));
      double middle = value;
      std::uint64_t wide;
      std::memcpy(&wide, &middle, sizeof(wide));
      wide |= std::uint64_t{1} << 28;
      wide += below(random, 3);
      wide -= 1;
      std::memcpy(&middle, &wide, sizeof(middle));
      std::snprintf(text, sizeof(text), "%.*e", static_cast<int>(14 + below(random, 4)), middle);
      break;
    }
    default: {
      std::string decimal = below(random, 3) == 0 ? "-" : below(random, 2) == 0 ? "+" : "";
      decimal += digits(random, chance(random, 80) ? 8 : 22) + ".";
      if (chance(random, 90)) decimal += digits(random, chance(random, 80) ? 9 : 24);
      if (chance(random, 40)) {
        decimal += below(random, 2) == 0 ? "e" : "E";
        decimal += below(random, 3) == 0 ? "-" : below(random, 2) == 0 ? "+" : "";
        if (chance(random, 95)) decimal += digits(random, chance(random, 90) ? 2 : 8);
      }
      return decimal + (below(random, 4) == 0 ? "h" : "");
    }
  }
  return text + std::string(below(random, 4) == 0 ? "h" : "");
}

class RoundingMode {
 public:
  explicit RoundingMode(int mode) { std::fesetround(mode); }
  ~RoundingMode() { std::fesetround(FE_TONEAREST); }
};

}  // namespace

TEST(NumbersOfPlans, HaveTheBitsOfTheLiteral) {
  Random random(7);
  for (int i = 0; i < kNumbers; ++i) {
    expectNumber(number(random));
    if (HasFatalFailure()) return;
  }
}

TEST(NumbersOfPlans, HaveTheBitsOfTheLiteralAtTheEdges) {
  for (const char* text : {"0.0",
                           "-0.0",
                           "+0.0",
                           "0e0",
                           "-0e22",
                           "0e-23",
                           "-0h",
                           "1e",
                           "1e+",
                           "-1.e-",
                           "1eh",
                           "1e22",
                           "1e23",
                           "1e-22",
                           "1e-23",
                           "3.4028235e38",
                           "3.4028236e38",
                           "3.4e39",
                           "1e999999999",
                           "1e-999999999",
                           "1e000000001",
                           "1e0000000001",
                           "16777217.0",
                           "16777219.0",
                           "9007199254740992.0",
                           "9007199254740993.0",
                           "9007199254740995.0",
                           "1.1754944e-38",
                           "1.17549428e-38",
                           "0.000000000000000000000000000000000000011754943",
                           "1e-45",
                           "7e-46",
                           "0.0000000000000000000001",
                           "1.00000017881393432617187499",
                           "1.00000017881393432617187500",
                           "1.00000017881393432617187501",
                           "65504h",
                           "65519.9h",
                           "65520h",
                           "6e-8h",
                           "2.9e-8h",
                           "18446744073709551615.0",
                           "18446744073709551616.0",
                           "99999999999999999999.9",
                           "1152921504606846976.0e1",
                           "340282346638528859811704183484516925440.0",
                           "1h",
                           "000000000000000000001.5"}) {
    expectNumber(text);
  }
}

TEST(NumbersOfPlans, HaveTheBitsOfTheLiteralHoweverTheHostRounds) {
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    const RoundingMode rounding(mode);
    Random random(8);
    for (int i = 0; i < kNumbers / 20; ++i) {
      expectNumber(number(random));
      if (HasFatalFailure()) return;
    }
  }
}
