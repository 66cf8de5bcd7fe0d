// Differences between blocks of data: groups and values.
#ifndef VORNATH_TOOLKIT_DIFF_VALUE_DIFF_HPP
#define VORNATH_TOOLKIT_DIFF_VALUE_DIFF_HPP

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "diff/diff.hpp"
#include "json/type_tree.hpp"
#include "values/value_layout.hpp"
#include "vornath_data/values.h"

namespace vrtk {

/// Compares data, and reports what differs. Keeps what it learns about types, which must live as
/// long as it.
class ValueDiff {
 public:
  ValueDiff(const vrtkDiffOptions& options, vrtkDiff& diff) : tolerance_(options), diff_(diff) {}

  /// Compares two blocks of one type that contain no references. `address` returns the address of
  /// the block.
  void groups(const vrntType_t* type, const char* a, const char* b,
              const std::function<std::string()>& address);

  /// Compares two values with all that they refer to. `address` is that of the value's object, with
  /// "/value" behind it.
  void values(const vrntValue_t* a, const vrntValue_t* b,
              const std::function<std::string()>& address);

 private:
  // Two blocks whose data is to be compared.
  struct Pair {
    const vrntValue_t* a;
    const vrntValue_t* b;
    std::string path;  // of the data
    std::string typePath;
  };
  using Words = std::pair<const vrntValue_t*, const vrntValue_t*>;
  struct WordsHash {
    std::size_t operator()(const Words& words) const noexcept {
      return std::hash<const void*>()(words.first) * 31 + std::hash<const void*>()(words.second);
    }
  };
  // Two parts of two types.
  struct Parts {
    const vrntType_t* typeA;
    const vrntType_t* typeB;
    const char* a;
    const char* b;
    std::string path;
  };

  void blocks(const Pair& pair);
  void sameType(const vrntType_t* type, const char* a, const char* b, const std::string& path);
  void otherTypes(Parts parts);
  void structs(const Parts& parts, std::vector<Parts>& open);
  void arrays(const Parts& parts, std::vector<Parts>& open);
  void word(std::uint64_t a, std::uint64_t b, const vrntType_t* leafA, const vrntType_t* leafB,
            const std::string& path);
  bool equal(const LayoutRun& run, const char* a, const char* b) const;
  void report(std::uint32_t kind, const std::string& address, const vrntType_t* typeA,
              const char* a, const vrntType_t* typeB, const char* b);
  std::string textOf(const vrntType_t* type, const char* at);
  std::string wordText(std::uint64_t word, const vrntType_t* leaf);

  Tolerance tolerance_;
  vrtkDiff& diff_;
  ValueLayouts layouts_;
  TypeTrees trees_;
  std::vector<Pair> open_;
  std::unordered_set<Words, WordsHash> seen_;
};

}  // namespace vrtk

#endif
