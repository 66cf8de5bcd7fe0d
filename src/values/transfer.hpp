/// How the bytes of values of one type go into values of another: worked out once for the two
/// types, then followed for each value, without a look at a type or a label on the way.
#ifndef VORNATH_VALUES_TRANSFER_HPP
#define VORNATH_VALUES_TRANSFER_HPP

#include <cstdint>
#include <functional>
#include <variant>
#include <vector>

#include "types/type.hpp"

namespace qex::vornath {

/// A plan, built from the innermost parts outwards. Parts that leave the target as it is vanish,
/// levels that hold one part only are passed over, and copies that lie side by side become one, so
/// that following the plan costs no more than the bytes and references that it carries. The types
/// that it was built from must outlive it. Building throws std::bad_alloc.
class Transfer {
 public:
  /// What is to be done with one part, and where it starts in the source and in the target. A
  /// default one does nothing.
  struct Part {
    std::int32_t node = -1;
    std::uint64_t from = 0;
    std::uint64_t to = 0;

    bool empty() const { return node < 0; }
    Part at(std::uint64_t source, std::uint64_t target) const {
      return {node, from + source, to + target};
    }
  };

  /// Anything else that is done with the bytes of one part. It may throw.
  using Action = std::function<void(const char* from, char* to)>;

  /// Copies a value of the type. What the target's references led to is given back, and what they
  /// lead to now is counted.
  Part copy(const InternedType& type);
  Part act(Action action);
  /// One part after the other.
  Part sequence(const std::vector<Part>& parts);
  /// The part `count` times, each time so many bytes further on.
  Part repeat(const Part& part, std::uint64_t count, std::uint64_t fromStride,
              std::uint64_t toStride);

  /// Does it, in order. The target belongs to the caller alone; it is a whole value after each
  /// part, so that whatever an action throws may pass through. Doesn't recurse.
  void run(const Part& part, const char* from, char* to) const;

 private:
  class Run;

  struct Copy {
    std::uint64_t bytes;
    const InternedType* counted;  // what lies in the bytes again and again; null without references
  };
  struct Sequence {
    std::size_t first;  // in parts_
    std::size_t count;
    bool flat;  // no sequence or repetition among them
  };
  struct Repeat {
    Part part;
    std::uint64_t count;
    std::uint64_t fromStride;
    std::uint64_t toStride;
  };
  using Node = std::variant<Copy, Action, Sequence, Repeat>;

  template <typename Kind>
  const Kind* getIf(const Part& part) const {
    return std::get_if<Kind>(&nodes_[static_cast<std::size_t>(part.node)]);
  }
  Part add(Node node);
  bool isFlat(const Part& part) const;
  void runLeaf(const Part& part, const char* from, char* to) const;
  void runFlat(const Part& part, const char* from, char* to, const Repeat& times) const;
  static void recount(const Copy& copy, const char* from, const char* to);

  std::vector<Node> nodes_;
  std::vector<Part> parts_;
};

}  // namespace qex::vornath

#endif
