// Tells whether values have the same text, without printing them where their bytes tell.
#ifndef VORNATH_SCENE_TEXT_COMPARISON_HPP
#define VORNATH_SCENE_TEXT_COMPARISON_HPP

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "vornath_data/value.hpp"

namespace vrnt::data {

/// Compares the texts of values. Two values of one type have the same text if their bytes are the
/// same, apart from bytes that the text does not show: padding, the bits of a NaN or of a true
/// bool, and the addresses of blocks that have the same text themselves. Only what this does not
/// settle is printed: values that differ, values of different types, and values that have no text.
///
/// Keeps what it has learnt about types, so what it has compared must stay alive as long as it.
/// Threads: one at a time.
class TextComparison {
 public:
  /// Returns whether two values have the same text. They must not be empty.
  /// Errors: throws std::bad_alloc, and an Exception of code UnknownError with the message of
  /// vrntValueString() if a value has no text, also if both values are the same block.
  bool sameText(const Value& a, const Value& b);

  /// Returns true if the values have texts, and the texts are the same. Prints nothing, and returns
  /// false if that were needed to tell.
  /// Errors: throws std::bad_alloc.
  bool sameByStructure(const Value& a, const Value& b);

 private:
  enum class Kind { Bytes, Bool, Float, Half, Enum, Reference };

  // Parts of one kind, at equal distances.
  struct Run {
    Kind kind;
    std::uint64_t offset;
    std::uint64_t count;
    std::uint64_t stride;
    std::uint64_t size;  // bytes of each part; for Enum, the number of its constructors instead
  };

  struct Bytes {
    std::uint64_t offset;
    std::uint64_t size;
  };

  // How values of a type are compared.
  struct Plan {
    std::uint64_t size;
    bool plain;     // whether equal bytes are enough: no enum, no reference, no unknown extents
    bool complete;  // whether the lists are, which those of a type of very many parts are not
    std::vector<Run> shown;        // what the text shows, apart from enums and references
    std::vector<Run> checked;      // enums, which may have codes without a name, and references
    std::vector<Bytes> unchecked;  // all bytes but those of references, if these are few
  };

  class PlanMaker;

  using Blocks = std::pair<const vrntValue_t*, const vrntValue_t*>;
  struct BlocksHash {
    std::size_t operator()(const Blocks& blocks) const noexcept;
  };

  const Plan& plan(const vrntType_t* type);
  bool sameBlocks(const Blocks& blocks);
  static bool sameShown(const Run& run, const char* a, const char* b);
  bool sameChecked(const Run& run, const char* a, const char* b);
  void enqueue(const Blocks& blocks);

  std::unordered_map<const vrntType_t*, Plan> plans_;
  const vrntType_t* lastType_ = nullptr;
  const Plan* lastPlan_ = nullptr;

  // The pairs of blocks that the compared values lead to, each once.
  std::vector<Blocks> queue_;
  std::unordered_set<Blocks, BlocksHash> known_;  // the same, if the queue is long
};

}  // namespace vrnt::data

#endif
