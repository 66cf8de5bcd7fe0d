/// What is worked out for types, or pairs of them, from what was worked out for their parts.
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

/// For a type or a pair of them.
struct TypeHash {
  std::size_t operator()(const InternedType* type) const noexcept { return mixed(bits(type)); }
  std::size_t operator()(const TypePair& pair) const noexcept {
    return mixed(bits(pair.first) * 31 + bits(pair.second));
  }

 private:
  static std::uint64_t bits(const InternedType* type) noexcept {
    return reinterpret_cast<std::uintptr_t>(type);
  }
  static std::size_t mixed(std::uint64_t word) noexcept {
    word *= 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(word ^ (word >> 32));
  }
};

/// Works out the outcome of a key, a type or a pair of types, from the outcomes of the keys that it
/// depends on: each once however often it occurs, and without recursion. No key depends on itself.
/// A Maker derives from it and has, public:
///
///     std::optional<Outcome> open(Task& task);  // the outcome, or nothing and task.inner filled
///     Outcome close(const Task& task);          // once outcome(task, i) answers for each inner
///     key
///
/// Note is what open() notes for each inner key, in task.notes, for close() to read.
template <typename Maker, typename Key, typename Outcome, typename Note = std::size_t>
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
    if (std::optional<Outcome> outcome = maker().open(task)) {
      entry->second = *std::move(outcome);
      return Visit::leaf();
    }
    return Visit::parts(task.inner.size());
  }
  Task part(const Task& task, std::size_t i) { return {task.inner[i]}; }
  void leave(const Task& task) { outcomes_.find(task.key)->second = maker().close(task); }

 protected:
  /// Throws what the maker throws, and std::bad_alloc.
  const Outcome& outcomeOf(const Key& key) {
    Walk<Task>().run(*this, {key});
    return outcomes_.find(key)->second;
  }

  /// That of an inner key, while the task is closed.
  const Outcome& outcome(const Task& task, std::size_t i) const {
    return outcomes_.find(task.inner[i])->second;
  }

 private:
  Maker& maker() { return static_cast<Maker&>(*this); }

  std::unordered_map<Key, Outcome, TypeHash> outcomes_;  // an empty one while the task is open
};

}  // namespace qex::vornath

#endif
