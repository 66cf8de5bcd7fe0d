// The rules that hold for a part of a scene, whether it is in a file or in memory.
#ifndef VORNATH_TOOLKIT_CHECK_RULES_HPP
#define VORNATH_TOOLKIT_CHECK_RULES_HPP

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "check/report.hpp"
#include "check/type_plan.hpp"
#include "file/sources.hpp"
#include "vornath_data/catalogue.h"

namespace vrtk {

/// Which slots of a class are live.
class LiveSlots {
 public:
  /// Throws std::bad_alloc.
  void add(bool live) {
    if (slots_ % 64 == 0) words_.push_back(0);
    words_.back() |= std::uint64_t{live} << (slots_ % 64);
    ++slots_;
  }
  std::uint32_t slots() const { return slots_; }
  bool has(std::int64_t index) const {
    if (index < 0 || index >= std::int64_t{slots_}) return false;
    const auto i = static_cast<std::size_t>(index);
    return (words_[i / 64] >> (i % 64) & 1U) != 0;
  }

 private:
  std::uint32_t slots_ = 0;
  std::vector<std::uint64_t> words_;
};

/// The live slots of all classes, as far as they are known.
using AllLiveSlots = std::vector<LiveSlots>;

/// Where a record or a block stands, for messages.
class Place {
 public:
  virtual ~Place() = default;
  /// Returns the address of a byte, which is `offset` bytes behind the start.
  virtual std::string address(std::uint64_t offset) const = 0;
};

/// What the rules report to.
struct RuleContext {
  vrtkReport& report;
  const Place& place;
  std::uint64_t fileOffset;  ///< of the start, or VRTK_NO_OFFSET
  const LiveSlots& textures;
  const char* defaults = nullptr;  ///< the value by default, whose numbers are right; may be null

  std::uint64_t offset(std::uint64_t behind) const {
    return fileOffset == VRTK_NO_OFFSET ? VRTK_NO_OFFSET : fileOffset + behind;
  }
};

/// Applies the operations of a plan to bytes in memory. Returns whether nothing was found.
bool applyRules(const TypePlan& plan, const char* bytes, const RuleContext& context);

/// Does the same for bytes that are read through a window, `context.fileOffset` bytes from its
/// source's start.
bool applyRules(const TypePlan& plan, Window& window, const RuleContext& context);

/// A word in a reference slot that names no live object.
struct SlotFinding {
  Code code;
  std::string message;
};

/// Looks at a word in a single slot or in a list. Returns nothing for a right one, and for one that
/// stands for no object where that is allowed.
std::optional<SlotFinding> checkSlotWord(const vrdmReferenceInfo& slot, std::int32_t word,
                                         const AllLiveSlots& live);

/// Returns whether a word is right; as checkSlotWord(), but without words.
inline bool isRightSlotWord(const vrdmReferenceInfo& slot, std::int32_t word,
                            const AllLiveSlots& live) {
  if (slot.kind == VRDM_REFERENCE_REQUIRED || slot.kind == VRDM_REFERENCE_OPTIONAL ||
      slot.kind == VRDM_REFERENCE_LIST) {
    if (word == -1) return slot.kind != VRDM_REFERENCE_REQUIRED;
    return live[slot.targetClass].has(word);
  }
  return !checkSlotWord(slot, word, live);
}

/// Counts the indices at the start of a mesh's bytes that are not below the limit.
class IndexCheck {
 public:
  explicit IndexCheck(std::uint32_t limit) : limit_(limit) {}

  /// Takes the next `count` indices.
  void add(const char* bytes, std::uint64_t count);

  std::uint64_t wrong() const { return wrong_; }
  std::uint64_t firstWrong() const { return firstWrong_; }  ///< its position
  std::string message() const;

 private:
  std::uint32_t limit_;
  std::uint64_t seen_ = 0;
  std::uint64_t wrong_ = 0;
  std::uint64_t firstWrong_ = 0;
  std::uint32_t firstIndex_ = 0;
};

}  // namespace vrtk

#endif
