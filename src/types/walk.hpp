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
  static constexpr Visit leaf() { return {kLeaf, 0}; }
  /// The walk ends here.
  static constexpr Visit stop() { return {kStop, 0}; }
  /// The walk goes on with the parts of the node from `first` on, which is `count` at most, and
  /// leaves it behind the last one, also if there is none.
  static constexpr Visit parts(std::size_t count, std::size_t first = 0) { return {first, count}; }

  constexpr bool isStop() const { return first_ == kStop && count_ == 0; }

 private:
  template <typename, bool, std::size_t>
  friend class Walk;

  // In the place of a first part, which is never beyond the count. Two words go in registers.
  static constexpr std::size_t kLeaf = 1;
  static constexpr std::size_t kStop = 2;

  constexpr Visit(std::size_t first, std::size_t count) : first_(first), count_(count) {}

  bool isParts() const { return first_ <= count_; }

  std::size_t first_;
  std::size_t count_;
};

/// The walk and the levels that are open in it. The visitor has, all public:
///
///     Visit enter(Node& node);                  // comes to a node, and may change it
///     Node part(Node& node, std::size_t i);     // the part with this index of an open node
///     void leave(Node& node);                   // behind the last part; may be missing
///
/// part() may pass over parts by setting the last level's `next`. What they throw passes through.
/// With KeepsPath false a level is closed when its last part is come to, so that a chain needs no
/// room however long it is, and levels() isn't the path to a node. Nothing is allocated as long as
/// no more than kInPlace levels are open.
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
  using Levels = boost::container::small_vector<
      Level, kInPlace, void,
      boost::container::small_vector_options_t<
          boost::container::growth_factor<boost::container::growth_factor_100>>>;

  // Not defaulted: `Walk()` would fill the room for the levels with zeros.
  Walk() {}  // NOLINT(modernize-use-equals-default)

  /// Returns whether the walk came to the end of the root. If it was stopped, the levels around the
  /// node at which that happened stay open.
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

  /// The open levels, the outermost first. That of a node which the visitor leaves is the last.
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
