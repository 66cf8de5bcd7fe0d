/// The walk through whatever is nested: types, values, plans, blocks that refer to others. Depth
/// first and in order, on a stack of its own, so that the depth of a nest needs no call stack.
#ifndef VORNATH_TYPES_WALK_HPP
#define VORNATH_TYPES_WALK_HPP

#include <boost/container/small_vector.hpp>
#include <cstddef>
#include <utility>

namespace qex::vornath {

/// What a visitor says of a node that the walk has come to.
class Visit {
 public:
  /// There is nothing inside: the walk goes on behind the node.
  static constexpr Visit leaf() { return {Kind::Leaf, 0, 0}; }
  /// The walk ends here.
  static constexpr Visit stop() { return {Kind::Stop, 0, 0}; }
  /// The walk goes on with the parts of the node from `first` on, and leaves it behind the last
  /// one, also if there is none.
  static constexpr Visit parts(std::size_t count, std::size_t first = 0) {
    return {Kind::Parts, first, count};
  }

 private:
  template <typename, bool, std::size_t>
  friend class Walk;

  enum class Kind { Leaf, Stop, Parts };
  constexpr Visit(Kind kind, std::size_t first, std::size_t count)
      : kind_(kind), first_(first), count_(count) {}

  Kind kind_;
  std::size_t first_;
  std::size_t count_;
};

/// The walk and the levels that are open in it. The visitor has, all public:
///
///     Visit enter(Node& node);                  // comes to a node, and may change it
///     Node part(Node& node, std::size_t i);     // the part with this index of an open node
///     void leave(Node& node);                   // behind the last part; may be missing
///
/// What they throw passes through. With KeepsPath false a level is closed when its last part is
/// come to, so that a chain needs no room however long it is, and levels() isn't the path to a
/// node. Nothing is allocated as long as no more than kInPlace levels are open.
template <typename Node, bool KeepsPath = true, std::size_t kInPlace = 8>
class Walk {
 public:
  struct Level {
    Node node;
    std::size_t next;
    std::size_t count;

    /// The index of the part that the walk is at.
    std::size_t current() const { return next - 1; }
  };
  using Levels = boost::container::small_vector<Level, kInPlace>;

  /// Returns whether the walk came to the end of the root. If it was stopped, the levels around the
  /// node at which that happened stay open.
  template <typename Visitor>
  bool run(Visitor& visitor, Node root) {
    if (!come(visitor, root)) return false;
    while (!levels_.empty()) {
      Level& level = levels_.back();
      if (level.next == level.count) {
        close(visitor);
        continue;
      }
      Node part = visitor.part(level.node, level.next++);
      if constexpr (!KeepsPath) {
        if (level.next == level.count) close(visitor);
      }
      if (!come(visitor, part)) return false;
    }
    return true;
  }

  /// The open levels, the outermost first. While the visitor leaves a node, those around it.
  Levels& levels() { return levels_; }
  const Levels& levels() const { return levels_; }

 private:
  template <typename Visitor>
  bool come(Visitor& visitor, Node& node) {
    const Visit visit = visitor.enter(node);
    if (visit.kind_ == Visit::Kind::Parts) {
      levels_.push_back({std::move(node), visit.first_, visit.count_});
    }
    return visit.kind_ != Visit::Kind::Stop;
  }

  template <typename Visitor>
  void close(Visitor& visitor) {
    if constexpr (requires(Node & node) { visitor.leave(node); }) {
      static_assert(KeepsPath, "a node is left behind its last part");
      Node node = std::move(levels_.back().node);
      levels_.pop_back();
      visitor.leave(node);
    } else {
      levels_.pop_back();
    }
  }

  Levels levels_;
};

}  // namespace qex::vornath

#endif
