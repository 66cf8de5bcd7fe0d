// Where the parts of a value are, for code that reads whole values.
#ifndef VORNATH_TOOLKIT_VALUES_VALUE_LAYOUT_HPP
#define VORNATH_TOOLKIT_VALUES_VALUE_LAYOUT_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "vornath_data/types.h"

namespace vrtk {

enum class RunKind : std::uint8_t {
  Bool,
  Int,
  Char,
  Enum,
  Float,
  Half,
  Word,  ///< a reference, or one of the two words of a function
  Loop   ///< the runs up to `end`, for each of the elements of an array
};

/// `count` parts of one kind, each `stride` bytes behind the one before.
struct LayoutRun {
  RunKind kind;
  std::uint32_t end = 0;     ///< of a loop: the run behind its last one
  std::uint64_t offset = 0;  ///< bytes from the start of the value, or of the loop's element
  std::uint64_t count = 1;
  std::uint64_t stride = 0;
  std::uint32_t size = 0;  ///< bytes of each

  bool contiguous() const { return stride == size; }
};

/// The parts of the values of a type in the order of their offsets. What lies between is padding.
class ValueLayout {
 public:
  /// The type must be concrete, and must live as long as the layout. Throws std::bad_alloc.
  explicit ValueLayout(const vrntType_t* type);

  const vrntType_t* type() const { return type_; }
  std::uint64_t size() const { return size_; }
  const std::vector<LayoutRun>& runs() const { return runs_; }
  bool hasWords() const { return hasWords_; }

  /// Calls `visit(run, offset)` for each run, where `offset` is that from the start of the value;
  /// for a run in a loop, once for each element. Stops and returns false if `visit` does.
  template <typename Visit>
  bool forEachRun(Visit&& visit) const {
    struct Open {
      std::uint32_t run;
      std::uint64_t element;
      std::uint64_t base;
    };
    std::vector<Open> loops;
    std::uint64_t base = 0;
    for (std::uint32_t i = 0;;) {
      while (!loops.empty() && i == runs_[loops.back().run].end) {
        Open& open = loops.back();
        const LayoutRun& loop = runs_[open.run];
        if (++open.element < loop.count) {
          base = open.base + loop.offset + open.element * loop.stride;
          i = open.run + 1;
        } else {
          base = open.base;
          loops.pop_back();
        }
      }
      if (i == runs_.size()) return true;
      const LayoutRun& run = runs_[i];
      if (run.kind == RunKind::Loop) {
        loops.push_back({i, 0, base});
        base += run.offset;
      } else if (!visit(run, base + run.offset)) {
        return false;
      }
      ++i;
    }
  }

 private:
  friend class LayoutBuilder;

  const vrntType_t* type_;
  std::uint64_t size_;
  bool hasWords_ = false;
  std::vector<LayoutRun> runs_;
};

/// Layouts by types. The types must live as long as this object.
class ValueLayouts {
 public:
  const ValueLayout& of(const vrntType_t* type) {
    if (type == last_) return *lastLayout_;
    auto& layout = layouts_[type];
    if (!layout) layout = std::make_unique<ValueLayout>(type);
    last_ = type;
    lastLayout_ = layout.get();
    return *layout;
  }

 private:
  const vrntType_t* last_ = nullptr;
  const ValueLayout* lastLayout_ = nullptr;
  std::unordered_map<const vrntType_t*, std::unique_ptr<ValueLayout>> layouts_;
};

/// A leaf of a value: a number, a vector, an enum, a reference or a function.
struct LeafPlace {
  const vrntType_t* type;  ///< borrowed from the type of the value
  std::uint64_t offset;    ///< bytes from the start of the value
};

/// Returns the leaf that a byte of a value belongs to. Appends its path, such as "/matrix/x", to
/// `path`, unless that is null. A path that nobody can read is cut.
LeafPlace leafAt(const vrntType_t* type, std::uint64_t offset, std::string* path);

}  // namespace vrtk

#endif
