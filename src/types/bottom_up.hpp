/// Computes a result for a type, or for a pair of types, from the results for its parts.
#ifndef VORNATH_TYPES_BOTTOM_UP_HPP
#define VORNATH_TYPES_BOTTOM_UP_HPP

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "types/type.hpp"
#include "types/walk.hpp"

namespace qex::vornath {

using TypePair = std::pair<const InternedType*, const InternedType*>;

/// Hashes a type, or a pair of types, by address.
struct TypeHash {
  std::size_t operator()(const InternedType* type) const noexcept { return mix(bits(type)); }
  std::size_t operator()(const TypePair& pair) const noexcept {
    return mix(bits(pair.first) * 31 + bits(pair.second));
  }

 private:
  static std::uint64_t bits(const InternedType* type) noexcept {
    return reinterpret_cast<std::uintptr_t>(type);
  }
  static std::size_t mix(std::uint64_t word) noexcept {
    word *= 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(word ^ (word >> 32));
  }
};

/// Computes the outcome of a key, a type or a pair of types, from the outcomes of the keys that it
/// depends on. Computes each outcome once, however often the key occurs, and does not recurse. No
/// key may depend on itself. The class that derives from this one has, public:
///
///     std::optional<Outcome> open(Task& task);  // the outcome, or nothing and task.inner filled
///     Outcome close(const Task& task);          // outcome(task, i) is known for each inner key
///
/// open() may store a Note for each inner key in task.notes, which close() reads.
template <typename Derived, typename Key, typename Outcome, typename Note = std::size_t>
class BottomUp {
 public:
  struct Task {
    Key key;
    std::vector<Key> inner{};
    std::vector<Note> notes{};
  };

  // The visits of the walk.

  Visit enter(Task& task) {
    const auto [entry, isNew] = outcomes_.try_emplace(task.key);
    if (!isNew) return Visit::leaf();
    if (std::optional<Outcome> outcome = derived().open(task)) {
      entry->second = *std::move(outcome);
      return Visit::leaf();
    }
    return Visit::parts(task.inner.size());
  }
  Task part(const Task& task, std::size_t i) { return {task.inner[i]}; }
  void leave(const Task& task) { outcomes_.find(task.key)->second = derived().close(task); }

 protected:
  /// Returns the outcome of a key. Throws what open() and close() throw, and std::bad_alloc.
  const Outcome& outcomeOf(const Key& key) {
    Walk<Task>().run(*this, {key});
    return outcomes_.find(key)->second;
  }

  /// Returns the outcome of an inner key; for close().
  const Outcome& outcome(const Task& task, std::size_t i) const {
    return outcomes_.find(task.inner[i])->second;
  }

 private:
  Derived& derived() { return static_cast<Derived&>(*this); }

  std::unordered_map<Key, Outcome, TypeHash> outcomes_;  // an empty one while the task is open
};

}  // namespace qex::vornath

#endif
