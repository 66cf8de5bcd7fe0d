/// What is worked out once for each pair of types that meets in a walk over two types at once.
#ifndef VORNATH_VALUES_PAIR_PLANNER_HPP
#define VORNATH_VALUES_PAIR_PLANNER_HPP

#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include "types/type.hpp"

namespace qex::vornath {

using TypePair = std::pair<const InternedType*, const InternedType*>;

struct TypePairHash {
  std::size_t operator()(const TypePair& pair) const noexcept {
    const auto bits = [](const InternedType* type) {
      return reinterpret_cast<std::uintptr_t>(type);
    };
    const std::uint64_t mixed = (bits(pair.first) * 31 + bits(pair.second)) * 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(mixed ^ (mixed >> 32));
  }
};

template <typename T>
using TypePairMap = std::unordered_map<TypePair, T, TypePairHash>;

/// Decides what becomes of pairs of types from what becomes of the pairs of their parts, each pair
/// once however often it occurs, and without recursion. A Planner derives from it and has
///   open(first, second)   which puts an outcome in outcomes_, or a frame with inner pairs on
///   frames_ close(frame)          which gives the outcome of a frame whose inner pairs all have
///   theirs
/// Field is what a planner notes for each inner pair of a struct.
template <typename Planner, typename Outcome, typename Field>
class PairPlanner {
 protected:
  struct Frame {
    const InternedType* first;
    const InternedType* second;
    std::vector<TypePair> inner;  // what must be known first
    std::vector<Field> fields;    // of structs, one for each inner pair
    std::size_t next = 0;
  };

  Outcome decide(const InternedType& first, const InternedType& second) {
    Planner& planner = static_cast<Planner&>(*this);
    planner.open(first, second);
    while (!frames_.empty()) {
      Frame& frame = frames_.back();
      if (frame.next == frame.inner.size()) {
        Outcome outcome = planner.close(frame);
        outcomes_.emplace(TypePair(frame.first, frame.second), std::move(outcome));
        frames_.pop_back();
        continue;
      }
      const TypePair pair = frame.inner[frame.next];
      if (outcomes_.count(pair) != 0) {
        ++frame.next;
      } else {
        planner.open(*pair.first, *pair.second);
      }
    }
    return outcomes_.at({&first, &second});
  }

  const Outcome& inner(const Frame& frame, std::size_t i) const {
    return outcomes_.find(frame.inner[i])->second;
  }

  std::vector<Frame> frames_;
  TypePairMap<Outcome> outcomes_;
};

}  // namespace qex::vornath

#endif
