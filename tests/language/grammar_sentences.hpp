// Random sentences of the grammar and spellings of its tokens, both read from the sources of the
// generated parser and scanner: whoever adds a rule there has its sentences here.
#ifndef VORNATH_TESTS_LANGUAGE_GRAMMAR_SENTENCES_HPP
#define VORNATH_TESTS_LANGUAGE_GRAMMAR_SENTENCES_HPP

#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace vornath_test {

using Random = std::mt19937;

inline std::uint32_t below(Random& random, std::uint32_t end) {
  return static_cast<std::uint32_t>(random()) % end;
}
inline bool chance(Random& random, std::uint32_t percent) { return below(random, 100) < percent; }

// One regular expression of flex: what the scanner's rules use of them.
class Pattern {
 public:
  using Definitions = std::map<std::string, std::string>;

  // Throws std::runtime_error for what it does not know.
  Pattern(const std::string& text, const Definitions& definitions);
  ~Pattern();
  Pattern(Pattern&&) noexcept;

  void generate(Random& random, std::string& out) const;

 private:
  struct Piece;
  std::vector<Piece> pieces_;

  static std::vector<Piece> parse(const std::string& text, std::size_t& at, bool inGroup,
                                  const Definitions& definitions);
  static void generate(const std::vector<Piece>& pieces, Random& random, std::string& out);
};

// The rules of scanner.ll that read tokens.
class ScannerRules {
 public:
  explicit ScannerRules(const std::string& file);

  struct Rule {
    std::string pattern;
    std::vector<std::string> tokens;  // names that its action makes; none for what is skipped
    Pattern generator;
  };
  const std::vector<Rule>& rules() const { return rules_; }

  // A spelling that the scanner reads as this token, or an empty text if there is no such rule.
  std::string spelling(const std::string& token, Random& random);
  // What separates tokens, at least one blank.
  std::string blanks(Random& random) const;

  // How often each rule has given a spelling.
  const std::vector<std::size_t>& uses() const { return uses_; }

 private:
  std::vector<Rule> rules_;
  std::vector<std::size_t> uses_;
  std::set<std::string> words_;  // those that are no names
};

// The rules of grammar.yy.
class GrammarRules {
 public:
  explicit GrammarRules(const std::string& file);

  struct Rule {
    std::string left;
    std::vector<std::string> right;  // names of terminals and nonterminals
    std::size_t depth = 0;           // of its flattest derivation
  };
  const std::vector<Rule>& rules() const { return rules_; }
  const std::set<std::string>& terminals() const { return terminals_; }
  const std::string& start() const { return start_; }

  // The indices of the rules of a nonterminal.
  const std::vector<std::size_t>& rulesOf(const std::string& left) const {
    return byLeft_.at(left);
  }
  bool isTerminal(const std::string& symbol) const { return terminals_.count(symbol) != 0; }

 private:
  void readTokens(const std::string& declarations);
  void readRules(const std::string& text);
  void computeDepths();

  std::vector<Rule> rules_;
  std::map<std::string, std::vector<std::size_t>> byLeft_;
  std::set<std::string> terminals_;
  std::map<std::string, std::string> names_;  // of the tokens that are written in quotes
  std::string start_;
};

// Spelled tokens of one sentence.
using Sentence = std::vector<std::string>;

class Sentences {
 public:
  Sentences(const std::string& grammarFile, const std::string& scannerFile, std::uint32_t seed);

  // A sentence behind START_TYPE or START_VALUE.
  Sentence derive(const std::string& startToken);
  // The same with blanks between all tokens.
  std::string spaced(const Sentence& sentence);
  // The same with blanks in some places, which may join tokens to others.
  std::string dense(const Sentence& sentence);
  // A text near the sentence that need not be of the language.
  std::string mutated(Sentence sentence);

  Random& random() { return random_; }
  const GrammarRules& grammar() const { return grammar_; }
  const ScannerRules& scanner() const { return scanner_; }
  const std::vector<std::size_t>& uses() const { return uses_; }

 private:
  void derive(const std::string& symbol, std::size_t depth, bool extents, Sentence& out);
  void deriveRule(std::size_t rule, std::size_t depth, Sentence& out);
  std::string token(const std::string& terminal, bool extent);

  GrammarRules grammar_;
  ScannerRules scanner_;
  Random random_;
  std::vector<std::size_t> uses_;  // of each rule of the grammar
};

}  // namespace vornath_test

#endif
