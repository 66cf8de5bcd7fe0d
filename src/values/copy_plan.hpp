/// A plan that copies the bytes of values of one type into values of another: built once for the
/// two types, then run for each value without looking at types or labels.
#ifndef VORNATH_VALUES_COPY_PLAN_HPP
#define VORNATH_VALUES_COPY_PLAN_HPP

#include <cstdint>
#include <functional>
#include <variant>
#include <vector>

#include "types/type.hpp"

namespace qex::vornath {

/// A plan, built from the innermost parts outwards. It omits steps that do nothing and levels with
/// one step, and merges adjacent copies, so that a run costs no more than the bytes and references
/// that it copies. The types that it was built from must outlive it. Building throws
/// std::bad_alloc.
class CopyPlan {
 public:
  static constexpr std::int32_t kNothing = -1;
  static constexpr std::int32_t kShortCopy = -2;

  /// What to do with one part, and its offsets in the source and in the target, in bytes. A
  /// default-constructed step does nothing.
  struct Step {
    std::int32_t node = kNothing;
    std::uint32_t bytes = 0;  // of a step that needs no node: a short copy without references
    std::uint64_t from = 0;
    std::uint64_t to = 0;

    bool empty() const { return node == kNothing; }
    Step at(std::uint64_t source, std::uint64_t target) const {
      return {node, bytes, from + source, to + target};
    }
  };

  /// Any other operation on the bytes of one part. It may throw.
  using Action = std::function<void(const char* from, char* to)>;

  /// Adds a step that copies a value of the type. It releases what the references of the target
  /// refer to and adds references for those that it copies.
  Step copy(const InternedType& type);
  /// `bytes` is the memory that the action refers to and owns, for bytes().
  Step act(Action action, std::size_t bytes = 0);
  /// Adds a step that runs the steps in order.
  Step sequence(const std::vector<Step>& steps);
  /// Adds a step that runs the step `count` times, advancing by the strides, in bytes.
  Step repeat(const Step& step, std::uint64_t count, std::uint64_t fromStride,
              std::uint64_t toStride);

  /// Runs the step. The caller must own the target exclusively. The target is a whole value after
  /// each part, so an action may throw. Does not recurse.
  void run(const Step& step, const char* from, char* to) const;

  /// Releases memory that was reserved for more steps.
  void shrink();
  /// Returns the memory that the plan takes beside the object itself, in bytes.
  std::size_t bytes() const;

 private:
  class Run;

  struct Copy {
    std::uint64_t bytes;
    const InternedType* counted;  // the bytes repeat this type; null without references
  };
  struct Sequence {
    std::size_t first;  // in steps_
    std::size_t count;
    bool flat;  // no sequence or repetition among them
  };
  struct Repeat {
    Step step;
    std::uint64_t count;
    std::uint64_t fromStride;
    std::uint64_t toStride;
  };
  using Node = std::variant<Copy, Action, Sequence, Repeat>;

  template <typename Kind>
  const Kind* getIf(const Step& step) const {
    return step.node < 0 ? nullptr
                         : std::get_if<Kind>(&nodes_[static_cast<std::size_t>(step.node)]);
  }
  Step copyOf(std::uint64_t bytes, const InternedType* counted);
  std::uint64_t plainBytes(const Step& step) const;
  Step add(Node node);
  bool isFlat(const Step& step) const;
  void runLeaf(const Step& step, const char* from, char* to) const;
  void runFlat(const Step& step, const char* from, char* to, const Repeat& times) const;
  static void exchangeReferences(const Copy& copy, const char* from, const char* to);

  std::vector<Node> nodes_;
  std::vector<Step> steps_;
  std::size_t actionBytes_ = 0;
};

}  // namespace qex::vornath

#endif
