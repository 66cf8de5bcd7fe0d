#include "language/grammar_sentences.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>
#include <optional>
#include <regex>
#include <stdexcept>

namespace vornath_test {
namespace {

std::string readFile(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + file);
  return {std::istreambuf_iterator<char>(in), {}};
}

// The parts before, between and behind the lines "%%".
std::array<std::string, 2> declarationsAndRules(const std::string& text) {
  const std::size_t first = text.find("\n%%\n");
  if (first == std::string::npos) throw std::runtime_error("no rules");
  const std::size_t second = text.find("\n%%\n", first + 3);
  return {text.substr(0, first + 1), text.substr(first + 4, second - first - 3)};
}

bool isWordCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

}  // namespace

// Patterns.

struct Pattern::Piece {
  std::string characters;      // one of these
  std::vector<Piece> group{};  // or, if there are none, all of these
  std::uint32_t least = 1;
  std::uint32_t most = 1;
};

Pattern::Pattern(const std::string& text, const Definitions& definitions) {
  std::size_t at = 0;
  pieces_ = parse(text, at, false, definitions);
}

Pattern::~Pattern() = default;
Pattern::Pattern(Pattern&&) noexcept = default;

namespace {

char escaped(const std::string& text, std::size_t& at) {
  switch (const char c = text.at(at++)) {
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case '0':
      return '\0';
    default:
      return c;
  }
}

// The characters of a class, which stands from behind its bracket on.
std::string classCharacters(const std::string& text, std::size_t& at) {
  const bool negated = text.at(at) == '^';
  if (negated) ++at;
  std::set<unsigned char> listed;
  while (text.at(at) != ']') {
    char low = text.at(at++);
    if (low == '\\') low = escaped(text, at);
    char high = low;
    if (text.at(at) == '-' && text.at(at + 1) != ']') {
      ++at;
      high = text.at(at++);
    }
    for (int c = static_cast<unsigned char>(low); c <= static_cast<unsigned char>(high); ++c) {
      listed.insert(static_cast<unsigned char>(c));
    }
  }
  ++at;
  std::string characters;
  for (int c = 0; c < 256; ++c) {
    if ((listed.count(static_cast<unsigned char>(c)) != 0) != negated) {
      characters += static_cast<char>(c);
    }
  }
  return characters;
}

}  // namespace

std::vector<Pattern::Piece> Pattern::parse(const std::string& text, std::size_t& at, bool inGroup,
                                           const Definitions& definitions) {
  std::vector<Piece> pieces;
  while (at < text.size()) {
    const char c = text[at++];
    if (inGroup && c == ')') return pieces;
    switch (c) {
      case '[':
        pieces.push_back({classCharacters(text, at)});
        break;
      case '"':
        while (text.at(at) != '"') pieces.push_back({std::string(1, text[at++])});
        ++at;
        break;
      case '\\':
        pieces.push_back({std::string(1, escaped(text, at))});
        break;
      case '(':
        pieces.push_back({"", parse(text, at, true, definitions)});
        break;
      case '*':
        pieces.back().least = 0;
        pieces.back().most = 12;
        break;
      case '+':
        pieces.back().most = 12;
        break;
      case '?':
        pieces.back().least = 0;
        break;
      case '{': {
        const std::size_t end = text.find('}', at);
        const std::string name = text.substr(at, end - at);
        at = end + 1;
        if (std::isdigit(static_cast<unsigned char>(name.at(0)))) {
          pieces.back().least = pieces.back().most = static_cast<std::uint32_t>(std::stoul(name));
        } else {
          std::size_t start = 0;
          pieces.push_back({"", parse(definitions.at(name), start, false, definitions)});
        }
        break;
      }
      case '|':
      case '.':
      case '/':
      case '^':
      case '<':
        throw std::runtime_error("a pattern with " + std::string(1, c) + ": " + text);
      default:
        pieces.push_back({std::string(1, c)});
        break;
    }
  }
  return pieces;
}

void Pattern::generate(Random& random, std::string& out) const { generate(pieces_, random, out); }

void Pattern::generate(const std::vector<Piece>& pieces, Random& random, std::string& out) {
  for (const Piece& piece : pieces) {
    std::uint32_t times = piece.least;
    while (times < piece.most && chance(random, 60)) ++times;
    for (; times != 0; --times) {
      if (piece.characters.empty()) {
        generate(piece.group, random, out);
      } else {
        out += piece.characters[below(random, static_cast<std::uint32_t>(piece.characters.size()))];
      }
    }
  }
}

// The scanner.

ScannerRules::ScannerRules(const std::string& file) {
  const auto [declarations, rules] = declarationsAndRules(readFile(file));
  Pattern::Definitions definitions;
  const std::regex definition("\n([A-Z]+)[ \t]+(\\S+)(?=\n)");
  for (std::sregex_iterator i(declarations.begin(), declarations.end(), definition), end; i != end;
       ++i) {
    definitions[(*i)[1]] = (*i)[2];
  }

  std::size_t at = 0;
  while (at < rules.size()) {
    if (rules.compare(at, 2, "%{") == 0) {
      at = rules.find("%}", at) + 2;
      continue;
    }
    if (std::isspace(static_cast<unsigned char>(rules[at]))) {
      ++at;
      continue;
    }
    // A pattern ends at a blank outside of a class or quotes, its action at the next line that
    // starts with something else than a blank.
    const std::size_t start = at;
    for (char around = ' '; around != ' ' || !std::isspace(static_cast<unsigned char>(rules[at]));
         ++at) {
      if (rules[at] == '\\') {
        ++at;
      } else if (around == ' ') {
        if (rules[at] == '[' || rules[at] == '"') around = rules[at] == '[' ? ']' : '"';
      } else if (rules[at] == around) {
        around = ' ';
      }
    }
    const std::string pattern = rules.substr(start, at - start);
    const std::size_t action = at;
    for (at = rules.find('\n', at); at != std::string::npos && at + 1 < rules.size() &&
                                    std::isspace(static_cast<unsigned char>(rules[at + 1]));) {
      at = rules.find('\n', at + 1);
    }
    at = at == std::string::npos ? rules.size() : at + 1;
    const std::string code = rules.substr(action, at - action);
    if (pattern == "." || pattern == "<<EOF>>") continue;

    Rule rule{pattern, {}, Pattern(pattern, definitions)};
    const std::regex made("make_([A-Z0-9_]+)");
    for (std::sregex_iterator i(code.begin(), code.end(), made), end; i != end; ++i) {
      rule.tokens.push_back((*i)[1]);
    }
    if (code.find("integer(") != std::string::npos) rule.tokens = {"INT", "ADDR"};
    if (rule.tokens.empty() && code.find("{}") == std::string::npos) {
      throw std::runtime_error("an action that makes no token: " + pattern + code);
    }
    rules_.push_back(std::move(rule));
  }
  uses_.resize(rules_.size());

  Random random;
  for (const Rule& rule : rules_) {
    if (rule.tokens == std::vector<std::string>{"LIDENT"}) break;
    for (int i = 0; i < 50; ++i) {
      std::string word;
      rule.generator.generate(random, word);
      words_.insert(word);
    }
  }
}

std::string ScannerRules::spelling(const std::string& token, Random& random) {
  std::vector<std::size_t> possible;
  for (std::size_t i = 0; i < rules_.size(); ++i) {
    const auto& tokens = rules_[i].tokens;
    if (std::find(tokens.begin(), tokens.end(), token) != tokens.end()) possible.push_back(i);
  }
  if (possible.empty()) return {};
  for (;;) {
    const std::size_t rule = possible[below(random, static_cast<std::uint32_t>(possible.size()))];
    std::string text;
    rules_[rule].generator.generate(random, text);
    const bool isHexadecimal = text.size() > 1 && (text[1] == 'x' || text[1] == 'X');
    // What the text alone doesn't decide.
    if (!isHexadecimal && (token == "INT" || token == "ADDR")) {
      const long long number = std::strtoll(text.c_str(), nullptr, 10);
      const bool fits = number >= std::numeric_limits<std::int32_t>::min() &&
                        number <= std::numeric_limits<std::int32_t>::max();
      if (fits != (token == "INT")) continue;
    }
    if (!isHexadecimal && token == "CHAR") {
      const long long number = std::strtoll(text.c_str(), nullptr, 10);
      if (number < 0 || number > 255) continue;
    }
    // A number without a point and an exponent is an INT.
    if (token == "FLOAT" && text.find_first_not_of("+-0123456789") == std::string::npos) continue;
    if ((token == "LIDENT" || token == "UIDENT") && words_.count(text) != 0) continue;
    ++uses_[rule];
    return text;
  }
}

std::string ScannerRules::blanks(Random& random) const {
  std::string text;
  do {
    for (const Rule& rule : rules_) {
      if (rule.tokens.empty() && chance(random, 30)) rule.generator.generate(random, text);
    }
  } while (text.empty());
  return text;
}

// The grammar.

GrammarRules::GrammarRules(const std::string& file) {
  const auto [declarations, rules] = declarationsAndRules(readFile(file));
  readTokens(declarations);
  const std::size_t start = declarations.find("%start ");
  start_ = declarations.substr(start + 7, declarations.find('\n', start) - start - 7);
  readRules(rules);
  computeDepths();
}

void GrammarRules::readTokens(const std::string& declarations) {
  for (std::size_t at = declarations.find("%token"); at != std::string::npos;
       at = declarations.find("%token", at + 1)) {
    std::size_t end = declarations.find("\n%", at);
    std::string list = declarations.substr(at + 6, end - at - 6);
    list = std::regex_replace(list, std::regex("<[^>]*>"), "");
    const std::regex entry("([A-Z][A-Z0-9_]*)(\\s+\"([^\"]*)\")?");
    for (std::sregex_iterator i(list.begin(), list.end(), entry), last; i != last; ++i) {
      terminals_.insert((*i)[1]);
      if ((*i)[3].matched) names_[(*i)[3]] = (*i)[1];
    }
  }
}

void GrammarRules::readRules(const std::string& text) {
  Rule rule;
  bool isComplete = true;
  std::size_t at = 0;
  const auto endRule = [&] {
    if (isComplete) return;
    byLeft_[rule.left].push_back(rules_.size());
    rules_.push_back(rule);
    rule.right.clear();
    isComplete = true;
  };
  while (at < text.size()) {
    const char c = text[at];
    if (std::isspace(static_cast<unsigned char>(c))) {
      ++at;
    } else if (text.compare(at, 2, "/*") == 0) {
      at = text.find("*/", at) + 2;
    } else if (c == '{') {
      std::size_t depth = 0;
      do {
        if (text[at] == '{') ++depth;
        if (text[at] == '}') --depth;
        ++at;
      } while (depth != 0);
    } else if (c == '"') {
      const std::size_t end = text.find('"', at + 1);
      rule.right.push_back(names_.at(text.substr(at + 1, end - at - 1)));
      at = end + 1;
    } else if (c == '|') {
      endRule();
      isComplete = false;
      ++at;
    } else if (c == ';') {
      endRule();
      ++at;
    } else if (text.compare(at, 6, "%empty") == 0) {
      at += 6;
    } else if (isWordCharacter(c)) {
      std::size_t end = at;
      while (isWordCharacter(text[end])) ++end;
      const std::string word = text.substr(at, end - at);
      at = text.find_first_not_of(" \t\n", end);
      if (at != std::string::npos && text[at] == ':') {
        rule.left = word;
        isComplete = false;
        ++at;
      } else {
        rule.right.push_back(word);
      }
    } else {
      throw std::runtime_error("in the grammar: " + text.substr(at, 20));
    }
  }
  for (const Rule& each : rules_) {
    for (const std::string& symbol : each.right) {
      if (!isTerminal(symbol) && byLeft_.count(symbol) == 0) {
        throw std::runtime_error("no rule for " + symbol);
      }
    }
  }
}

void GrammarRules::computeDepths() {
  constexpr std::size_t kUnknown = 1000000;
  for (Rule& rule : rules_) rule.depth = kUnknown;
  for (bool changed = true; changed;) {
    changed = false;
    for (Rule& rule : rules_) {
      std::size_t depth = 1;
      for (const std::string& symbol : rule.right) {
        if (isTerminal(symbol)) continue;
        std::size_t least = kUnknown;
        for (const std::size_t i : rulesOf(symbol)) least = std::min(least, rules_[i].depth);
        depth = std::max(depth, least + 1);
      }
      if (depth < rule.depth) {
        rule.depth = depth;
        changed = true;
      }
    }
  }
}

// Sentences.

Sentences::Sentences(const std::string& grammarFile, const std::string& scannerFile,
                     std::uint32_t seed)
    : grammar_(grammarFile), scanner_(scannerFile), random_(seed) {
  uses_.resize(grammar_.rules().size());
}

Sentence Sentences::derive(const std::string& startToken) {
  Sentence sentence;
  for (const std::size_t i : grammar_.rulesOf(grammar_.start())) {
    const GrammarRules::Rule& rule = grammar_.rules()[i];
    if (rule.right.at(0) != startToken) continue;
    ++uses_[i];
    const std::size_t depth = 4 + below(random_, 12);
    for (std::size_t symbol = 1; symbol < rule.right.size(); ++symbol) {
      derive(rule.right[symbol], depth, false, sentence);
    }
  }
  return sentence;
}

void Sentences::derive(const std::string& symbol, std::size_t depth, bool extents, Sentence& out) {
  if (grammar_.isTerminal(symbol)) {
    out.push_back(token(symbol, extents));
    return;
  }
  std::vector<std::size_t> possible;
  std::size_t least = std::numeric_limits<std::size_t>::max();
  for (const std::size_t i : grammar_.rulesOf(symbol)) {
    const std::size_t needed = grammar_.rules()[i].depth;
    if (needed <= depth) possible.push_back(i);
    least = std::min(least, needed);
  }
  if (possible.empty()) {
    for (const std::size_t i : grammar_.rulesOf(symbol)) {
      if (grammar_.rules()[i].depth == least) possible.push_back(i);
    }
  }
  const std::size_t rule = possible[below(random_, static_cast<std::uint32_t>(possible.size()))];
  ++uses_[rule];
  deriveRule(rule, depth == 0 ? 0 : depth - 1, out);
}

void Sentences::deriveRule(std::size_t index, std::size_t depth, Sentence& out) {
  const GrammarRules::Rule& rule = grammar_.rules()[index];
  // Where a bracket stands the numbers are extents, which need to be small.
  const bool extents =
      std::find(rule.right.begin(), rule.right.end(), "LBRACKET") != rule.right.end();
  // Lists of like items are what most of the checks of a list let pass.
  const bool isList = !rule.right.empty() && rule.right.front() == rule.left;
  const std::size_t start = out.size();
  for (const std::string& symbol : rule.right) {
    const bool repeats = isList && &symbol == &rule.right.back() && !grammar_.isTerminal(symbol);
    if (repeats && chance(random_, 70)) {
      // The last item is all that stands behind the last comma of this list, if it has only one.
      const std::size_t comma = out.size() - 1;
      if (std::find(out.begin() + static_cast<std::ptrdiff_t>(start), out.end() - 1, ",") ==
          out.end() - 1) {
        const Sentence item(out.begin() + static_cast<std::ptrdiff_t>(start),
                            out.begin() + static_cast<std::ptrdiff_t>(comma));
        out.insert(out.end(), item.begin(), item.end());
        continue;
      }
    }
    derive(symbol, depth, extents, out);
  }
}

std::string Sentences::token(const std::string& terminal, bool extent) {
  if (extent && terminal == "INT" && !chance(random_, 3)) {
    return std::to_string(below(random_, chance(random_, 90) ? 4 : 10));
  }
  // Names that occur again are among the errors of the language.
  if ((terminal == "LIDENT" || terminal == "UIDENT") && chance(random_, 20)) {
    std::string name(1, static_cast<char>((terminal == "LIDENT" ? 'a' : 'A') + below(random_, 3)));
    return name;
  }
  std::string text = scanner_.spelling(terminal, random_);
  if (extent && terminal == "INT" && text.size() > 6) text = "7";
  if (text.empty()) throw std::runtime_error("no spelling of " + terminal);
  return text;
}

std::string Sentences::spaced(const Sentence& sentence) {
  std::string text;
  if (chance(random_, 30)) text += scanner_.blanks(random_);
  for (const std::string& word : sentence) text += word + scanner_.blanks(random_);
  if (chance(random_, 50)) text.erase(text.find_last_not_of(" \t\r\n") + 1);
  return text;
}

std::string Sentences::dense(const Sentence& sentence) {
  std::string text;
  for (const std::string& word : sentence) {
    text += word;
    if (chance(random_, 40)) text += scanner_.blanks(random_);
  }
  return text;
}

std::string Sentences::mutated(Sentence sentence) {
  const auto anywhere = [&](std::size_t size) {
    return below(random_, static_cast<std::uint32_t>(size));
  };
  const auto place = [&] {
    return sentence.begin() + static_cast<std::ptrdiff_t>(anywhere(sentence.size()));
  };
  for (std::uint32_t times = 1 + below(random_, 2); times != 0 && !sentence.empty(); --times) {
    switch (below(random_, 5)) {
      case 0:
        sentence.erase(place());
        break;
      case 1: {
        const std::string again = *place();
        sentence.insert(place(), again);
        break;
      }
      case 2:
        std::swap(*place(), *place());
        break;
      default: {
        std::string other;
        while (other.empty()) {
          auto terminal = grammar_.terminals().begin();
          std::advance(terminal, anywhere(grammar_.terminals().size()));
          other = scanner_.spelling(*terminal, random_);
        }
        *place() = other;
        break;
      }
    }
  }
  std::string text = chance(random_, 50) ? spaced(sentence) : dense(sentence);
  if (text.empty() || chance(random_, 50)) return text;
  constexpr char kCharacters[] = "\0\r\n\"?.+-_/\x80\xff=>@'0xXec{}[]|";
  const std::string odd(kCharacters, sizeof(kCharacters) - 1);
  switch (below(random_, 3)) {
    case 0:
      text.erase(anywhere(text.size()), 1 + below(random_, 3));
      break;
    case 1:
      text.insert(text.begin() + static_cast<std::ptrdiff_t>(anywhere(text.size())),
                  odd[anywhere(odd.size())]);
      break;
    default:
      text.resize(anywhere(text.size()));
      break;
  }
  return text;
}

}  // namespace vornath_test
