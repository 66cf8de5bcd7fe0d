/// A depth-first, in-order walk through nested nodes: types, values, copy plans, blocks that refer
/// to others. It has a stack of its own, so that the depth of a nest does not use the call stack.
#ifndef VORNATH_TYPES_WALK_HPP
#define VORNATH_TYPES_WALK_HPP

#include <boost/container/small_vector.hpp>
#include <cstddef>
#include <utility>

namespace qex::vornath {

/// A visitor's answer on entering a node.
class Visit {
 public:
  /// The node has no parts: the walk continues after it.
  static constexpr Visit leaf() { return {kLeaf, 0}; }
  /// Stops the walk.
  static constexpr Visit stop() { return {kStop, 0}; }
  /// The walk visits the parts of the node from `first`, which is at most `count`, and leaves the
  /// node after the last one, also if there is none.
  static constexpr Visit parts(std::size_t count, std::size_t first = 0) { return {first, count}; }

  constexpr bool isStop() const { return first_ == kStop && count_ == 0; }

 private:
  template <typename, bool, std::size_t>
  friend class Walk;

  // In place of a first part, which is never above the count. Two words are passed in registers.
  static constexpr std::size_t kLeaf = 1;
  static constexpr std::size_t kStop = 2;

  constexpr Visit(std::size_t first, std::size_t count) : first_(first), count_(count) {}

  bool isParts() const { return first_ <= count_; }

  std::size_t first_;
  std::size_t count_;
};

/// The walk and its open levels. The visitor has, all public:
///
///     Visit enter(Node& node);                  // on entry; may change the node
///     Node part(Node& node, std::size_t i);     // returns the part with this index
///     void leave(Node& node);                   // after the last part; optional
///
/// part() may skip parts by setting `next` of the last level. Exceptions pass through. With
/// KeepsPath false, a level is closed before its last part is entered, so that a chain of any
/// length needs no memory, and levels() is not the path to a node. Allocates only if more than
/// kInlineLevels levels are open.
template <typename Node, bool KeepsPath = true, std::size_t kInlineLevels = 8>
class Walk {
 public:
  struct Level {
    Node node;
    std::size_t next;
    std::size_t count;

    /// Returns the index of the part that the walk is in.
    std::size_t current() const { return next - 1; }
  };
  using Levels = boost::container::small_vector<
      Level, kInlineLevels, void,
      boost::container::small_vector_options_t<
          boost::container::growth_factor<boost::container::growth_factor_100>>>;

  // Not defaulted: `Walk()` would fill the room for the levels with zeros.
  Walk() {}  // NOLINT(modernize-use-equals-default)

  /// Returns whether the walk visited the whole root. If it was stopped, the levels around the node
  /// at which it stopped stay open.
  template <typename Visitor>
  bool run(Visitor& visitor, Node node) {
    for (;;) {
      const Visit visit = visitor.enter(node);
      if (visit.isStop()) return false;
      if (visit.isParts()) {
        if constexpr (!KeepsPath) {
          if (visit.count_ - visit.first_ == 1) {
            node = visitor.part(node, visit.first_);
            continue;
          }
        }
        levels_.push_back({std::move(node), visit.first_, visit.count_});
      }
      for (;; close(visitor)) {
        if (levels_.empty()) return true;
        if (levels_.back().next != levels_.back().count) break;
      }
      Level& level = levels_.back();
      node = visitor.part(level.node, level.next++);
      if constexpr (!KeepsPath) {
        if (level.next == level.count) close(visitor);
      }
    }
  }

  /// Returns the open levels, the outermost first. In leave(), the last one is that of the node.
  Levels& levels() { return levels_; }
  const Levels& levels() const { return levels_; }

 private:
  template <typename Visitor>
  void close(Visitor& visitor) {
    if constexpr (requires(Node & node) { visitor.leave(node); }) {
      static_assert(KeepsPath, "a node is left behind its last part");
      visitor.leave(levels_.back().node);
    }
    levels_.pop_back();
  }

  Levels levels_;
};

}  // namespace qex::vornath

#endif
