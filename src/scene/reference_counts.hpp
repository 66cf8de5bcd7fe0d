// How often objects are referred to. A scene on which somebody counts keeps the counts of each slot
// that was asked about: made by reading all objects once, and kept in step from then on by every
// call of the library that changes references.
//
// What a host can change without a call is read each time: the lists whose elements were handed out
// for writing, up to the next addition to their class, with which the pointers to them end; and the
// classes of which a container was handed out for writing by the scene's C++ members.
#ifndef VORNATH_SCENE_REFERENCE_COUNTS_HPP
#define VORNATH_SCENE_REFERENCE_COUNTS_HPP

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "scene_access.hpp"
#include "vornath_data/scene.hpp"

namespace vrnt::data {

/// A count for each word.
class WordCounts {
 public:
  /// Counts a word once more. Words below `targets`, the number of slots that can be referred to,
  /// take four bytes each; others refer to nothing and take more, and there may be `mostStrangers`
  /// of them. Result: false, with nothing changed, if there are too many.
  /// Errors: throws std::bad_alloc, with nothing changed.
  bool add(std::int32_t word, std::size_t targets, std::size_t mostStrangers);

  /// Counts a word once less. It was added.
  void remove(std::int32_t word) noexcept;

  std::uint32_t count(std::int32_t word) const noexcept;

 private:
  std::uint32_t unset_ = 0;  // of -1, by far the most frequent word
  std::vector<std::uint32_t> counts_;
  // All words that are neither -1 nor within counts_.
  std::unordered_map<std::int32_t, std::uint32_t> strangers_;
};

/// The counts of one slot over all live objects of its class.
struct LinkCounts {
  WordCounts words;
  std::unordered_set<std::int32_t> unread;  ///< the objects whose list isn't in `words`
  std::atomic<bool> wereRead{false};        ///< a count has read these since they were last settled
  bool tooMany = false;                     ///< words that refer to nothing, so that none is kept
};

/// Whether references by such a slot are counted. Coded lists aren't, which hosts know: what is
/// used by them alone (lights, decals, shapes in light groups) has a count of 0.
template <typename Link>
inline constexpr bool kIsCounted = false;
template <typename Target>
inline constexpr bool kIsCounted<Ref<Target>> = true;
template <typename Target>
inline constexpr bool kIsCounted<RefList<Target>> = true;

template <typename Link>
inline constexpr bool kIsPlainList = false;
template <typename Target>
inline constexpr bool kIsPlainList<RefList<Target>> = true;

/// The class whose container stores a T.
template <typename T>
struct DescOfStored;
template <template <typename> class Kind, typename D>
struct DescOfStored<Kind<D>> {
  using Desc = D;
};

namespace detail {

template <std::size_t... Indices>
constexpr std::size_t slotsBefore(std::size_t number, std::index_sequence<Indices...>) {
  return (std::size_t{0} + ... + (Indices < number ? kSlotCount<ClassAt<Indices>> : 0));
}

}  // namespace detail

/// All slots of the catalogue are numbered through, in class order.
template <typename Desc>
inline constexpr std::size_t kFirstSlotOrdinal = detail::slotsBefore(
    static_cast<std::size_t>(ClassInfo<Desc>::kClass), std::make_index_sequence<kClassCount>{});
inline constexpr std::size_t kTotalSlotCount =
    detail::slotsBefore(kClassCount, std::make_index_sequence<kClassCount>{});

/// The counts of a scene, slot by slot; null where nobody has asked yet.
class ReferenceCounts final : public detail::Kept {
 public:
  ~ReferenceCounts() override {
    for (std::atomic<LinkCounts*>& link : links_) delete link.load(std::memory_order_relaxed);
  }

  std::atomic<LinkCounts*>& link(std::size_t slotOrdinal) noexcept { return links_[slotOrdinal]; }

 private:
  std::array<std::atomic<LinkCounts*>, kTotalSlotCount> links_{};
};

/// What stands at a place, made there if nothing does. Of several threads that make it at once, one
/// keeps what it made, and the others take that. Null if `make()` gives null.
template <typename T, typename Make>
T* madeOnce(std::atomic<T*>& place, const Make& make) {
  T* known = place.load(std::memory_order_acquire);
  if (known) return known;
  std::unique_ptr<T> made = make();
  if (made && place.compare_exchange_strong(known, made.get(), std::memory_order_acq_rel,
                                            std::memory_order_acquire)) {
    return made.release();
  }
  return known;
}

/// Whether anybody has counted on the scene: else nothing has to be kept in step.
inline bool countsAreKept(const Scene& scene) noexcept {
  return detail::SceneAccess::kept(scene).load(std::memory_order_acquire) != nullptr;
}

/// A counted slot of a class. All functions that change something are to be called by whoever
/// changes references, so that the counts stay in step; none of them fails. Where there is no
/// memory for counts, they are given up and made anew at the next need.
template <typename Desc, std::size_t Position>
class CountedSlot {
  static constexpr auto kSlot = std::get<Position>(ClassInfo<Desc>::kSlots);

 public:
  using Link = typename decltype(kSlot)::Member;
  using TargetDesc = typename DescOfStored<typename Link::Target>::Desc;

  /// The references from this slot of all live objects to an object of the target class.
  static std::uint32_t count(const Scene& scene, std::int32_t index) noexcept {
    // An unset optional slot refers to nothing; a required one is compared as it stands.
    if (kSlot.kind == ReferenceKind::Optional && index == -1) return 0;
    const auto& objects = scene.container<Desc>().slots;
    std::uint32_t found = 0;
    LinkCounts* const counts = made(scene);
    if (!counts || counts->tooMany) {
      for (const auto& object : objects) {
        if (object.live()) found += countIn(object.desc.*kSlot.member, index);
      }
      return found;
    }
    found = counts->words.count(index);
    if (!counts->unread.empty()) {
      for (const std::int32_t object : counts->unread) {
        found += countIn(objects[static_cast<std::size_t>(object)].desc.*kSlot.member, index);
      }
      counts->wereRead.store(true, std::memory_order_relaxed);
    }
    return found;
  }

  /// After an object became live.
  static void noteAddition(Scene& scene, std::int32_t index) noexcept {
    if (LinkCounts* counts = kept(scene)) addAll(scene, *counts, link(scene, index));
  }

  /// Before an object is freed. It may be free already.
  static void noteRemoval(Scene& scene, std::int32_t index) noexcept {
    LinkCounts* const counts = kept(scene, index);
    if (counts && counts->unread.erase(index) == 0) removeAll(*counts, link(scene, index));
  }

  /// Before the elements of a list are handed out for writing. An empty list has none.
  static void noteHandingOut(Scene& scene, std::int32_t index) noexcept {
    if constexpr (kIsPlainList<Link>) {
      if (link(scene, index).words.empty()) return;
      writable<Desc>(scene).at(index).listHandedOut = detail::SceneAccess::additions<Desc>(scene);
      LinkCounts* const counts = kept(scene, index);
      if (!counts) return;
      try {
        if (counts->unread.insert(index).second) removeAll(*counts, link(scene, index));
      } catch (const std::bad_alloc&) {
        drop(scene);
      }
    }
  }

  /// Stores a word in a single slot; makes a list that many elements long.
  /// Errors: throws std::bad_alloc, with nothing changed.
  static void setWord(Scene& scene, std::int32_t index, std::uint32_t word) {
    if constexpr (!kIsPlainList<Link>) {
      if (!countsAreKept(scene)) {
        link(scene, index).index = static_cast<std::int32_t>(word);
        return;
      }
    }
    setCountedWord(scene, index, word);
  }

  /// Puts another list in the place of a list.
  static void replaceList(Scene& scene, std::int32_t index,
                          std::vector<std::int32_t>&& words) noexcept {
    Link& written = link(scene, index);
    if (LinkCounts* counts = countsOfRead(scene, index)) removeAll(*counts, written);
    written.words = std::move(words);
    noteNewList(scene, index);
    if (LinkCounts* counts = kept(scene, index)) addAll(scene, *counts, written);
  }

  /// Takes into the counts what was read each time but can't be written to any more. It does so
  /// only after a count has read it, so that it costs no more than what that count cost.
  static void settle(Scene& scene) noexcept {
    if constexpr (kIsPlainList<Link>) {
      LinkCounts* const counts = kept(scene);
      if (!counts || !counts->wereRead.load(std::memory_order_relaxed)) return;
      counts->wereRead.store(false, std::memory_order_relaxed);
      const std::uint32_t additions = detail::SceneAccess::additions<Desc>(scene);
      for (auto object = counts->unread.begin(); object != counts->unread.end();) {
        const std::int32_t index = *object;
        if (writable<Desc>(scene).at(index).listHandedOut == additions) {
          ++object;
        } else {
          object = counts->unread.erase(object);
          if (!addAll(scene, *counts, link(scene, index))) return;
        }
      }
    }
  }

 private:
  static constexpr std::size_t kOrdinal = kFirstSlotOrdinal<Desc> + Position;

  // setWord() of a list, or where somebody has counted. Apart from it, so that what is called for
  // each reference of a scene stays small.
  [[gnu::noinline]] static void setCountedWord(Scene& scene, std::int32_t index,
                                               std::uint32_t word) {
    LinkCounts* const counts = countsOfRead(scene, index);
    Link& written = link(scene, index);
    if constexpr (kIsPlainList<Link>) {
      const std::size_t former = written.words.size();
      for (std::size_t i = word; counts && i < former; ++i) counts->words.remove(written.words[i]);
      written.words.resize(word, Link::kNoTarget);
      for (std::size_t i = former; counts && i < word; ++i) {
        if (!add(scene, *counts, Link::kNoTarget)) break;
      }
      if (word == 0) noteNewList(scene, index);
    } else {
      const std::int32_t former = written.index;
      written.index = static_cast<std::int32_t>(word);
      if (!counts || written.index == former) return;
      counts->words.remove(former);
      add(scene, *counts, written.index);
    }
  }

  static Link& link(Scene& scene, std::int32_t index) noexcept {
    return writable<Desc>(scene).at(index).desc.*kSlot.member;
  }

  // Null without memory, and if a host may have changed anything.
  static LinkCounts* made(const Scene& scene) noexcept {
    if (detail::SceneAccess::handedOut<Desc>(scene)) return nullptr;
    detail::Kept* const all = madeOnce(detail::SceneAccess::kept(scene), [] {
      return std::unique_ptr<detail::Kept>(new (std::nothrow) ReferenceCounts);
    });
    if (!all) return nullptr;
    return madeOnce(static_cast<ReferenceCounts*>(all)->link(kOrdinal),
                    [&scene] { return read(scene); });
  }

  // The counts that are to be kept in step; null if there are none.
  static LinkCounts* kept(Scene& scene) noexcept {
    detail::Kept* const all = detail::SceneAccess::kept(scene).load(std::memory_order_relaxed);
    if (!all || detail::SceneAccess::handedOut<Desc>(scene)) return nullptr;
    LinkCounts* const counts =
        static_cast<ReferenceCounts*>(all)->link(kOrdinal).load(std::memory_order_relaxed);
    return counts && !counts->tooMany ? counts : nullptr;
  }
  // Those that an object takes part in.
  static LinkCounts* kept(Scene& scene, std::int32_t index) noexcept {
    LinkCounts* const counts = kept(scene);
    return counts && writable<Desc>(scene).at(index).live() ? counts : nullptr;
  }
  // Those that what an object refers to is in.
  static LinkCounts* countsOfRead(Scene& scene, std::int32_t index) noexcept {
    LinkCounts* const counts = kept(scene, index);
    return counts && counts->unread.count(index) == 0 ? counts : nullptr;
  }

  static void drop(Scene& scene) noexcept {
    detail::Kept* const all = detail::SceneAccess::kept(scene).load(std::memory_order_relaxed);
    delete static_cast<ReferenceCounts*>(all)->link(kOrdinal).exchange(nullptr);
  }

  static void giveUp(LinkCounts& counts) noexcept {
    counts.words = WordCounts();
    counts.unread.clear();
    counts.tooMany = true;
  }

  // Nobody has a pointer to the elements of the list that an object has now.
  static void noteNewList(Scene& scene, std::int32_t index) noexcept {
    writable<Desc>(scene).at(index).listHandedOut = 0;
    if (LinkCounts* counts = kept(scene, index)) counts->unread.erase(index);
  }

  static std::unique_ptr<LinkCounts> read(const Scene& scene) noexcept {
    try {
      auto counts = std::make_unique<LinkCounts>();
      const auto& objects = scene.container<Desc>();
      for (std::uint32_t i = 0; i < objects.size(); ++i) {
        const Instance<Desc>& object = objects.slots[i];
        if (!object.live()) continue;
        const Link& link = object.desc.*kSlot.member;
        if (mayBeWritten(scene, object)) {
          counts->unread.insert(static_cast<std::int32_t>(i));
        } else if (!forEachWord(link,
                                [&](std::int32_t word) { return addWord(scene, *counts, word); })) {
          giveUp(*counts);
          break;
        }
      }
      return counts;
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
  }

  static bool mayBeWritten([[maybe_unused]] const Scene& scene,
                           [[maybe_unused]] const Instance<Desc>& object) noexcept {
    if constexpr (kIsPlainList<Link>) {
      return object.listHandedOut == detail::SceneAccess::additions<Desc>(scene);
    } else {
      return false;
    }
  }

  static bool addWord(const Scene& scene, LinkCounts& counts, std::int32_t word) {
    // More words that refer to nothing than there are objects aren't worth their memory.
    constexpr std::size_t kFewStrangers = 4096;
    return counts.words.add(word, scene.container<TargetDesc>().size(),
                            kFewStrangers + scene.container<Desc>().size());
  }

  // Result: false if there are no counts any more.
  static bool add(Scene& scene, LinkCounts& counts, std::int32_t word) noexcept {
    try {
      if (addWord(std::as_const(scene), counts, word)) return true;
      giveUp(counts);
    } catch (const std::bad_alloc&) {
      drop(scene);
    }
    return false;
  }
  static bool addAll(Scene& scene, LinkCounts& counts, const Link& link) noexcept {
    return forEachWord(link, [&](std::int32_t word) { return add(scene, counts, word); });
  }
  static void removeAll(LinkCounts& counts, const Link& link) noexcept {
    forEachWord(link, [&counts](std::int32_t word) {
      counts.words.remove(word);
      return true;
    });
  }

  // Calls `onWord(word)` until it says no. Result: whether it never did.
  template <typename OnWord>
  static bool forEachWord(const Link& link, const OnWord& onWord) {
    if constexpr (kIsPlainList<Link>) {
      for (const std::int32_t word : link.words) {
        if (!onWord(word)) return false;
      }
      return true;
    } else {
      return onWord(link.index);
    }
  }

  static std::uint32_t countIn(const Link& link, std::int32_t index) noexcept {
    std::uint32_t found = 0;
    forEachWord(link, [&found, index](std::int32_t word) {
      found += word == index ? 1 : 0;
      return true;
    });
    return found;
  }
};

/// Calls `callback(CountedSlot{})` for each slot of a class whose references are counted.
template <typename Desc, typename Callback>
void forEachCountedSlot(Callback&& callback) {
  forEachSlot<Desc>([&callback](const auto& slot, auto position) {
    if constexpr (kIsCounted<typename std::decay_t<decltype(slot)>::Member>) {
      callback(CountedSlot<Desc, decltype(position)::value>());
    }
  });
}

/// Calls `callback(CountedSlot{})` for each slot that refers to a class.
template <typename TargetDesc, typename Callback>
void forEachSlotWithTarget(Callback&& callback) {
  forEachClass([&callback](auto tag) {
    forEachCountedSlot<typename decltype(tag)::Desc>([&callback](auto slot) {
      if constexpr (std::is_same_v<typename decltype(slot)::TargetDesc, TargetDesc>) callback(slot);
    });
  });
}

/// The single slots and the elements of plain lists of live objects that refer to an object of the
/// class.
template <typename TargetDesc>
std::uint32_t countReferences(const Scene& scene, std::int32_t index) noexcept {
  std::uint32_t count = 0;
  forEachSlotWithTarget<TargetDesc>(
      [&](auto slot) { count += decltype(slot)::count(scene, index); });
  return count;
}

/// To be called after an object became live by an addition, with what it refers to.
template <typename Desc>
void noteAddition(Scene& scene, std::uint32_t index) noexcept {
  std::uint32_t& additions = detail::SceneAccess::additions<Desc>(scene);
  // 0 stands for a list that was never handed out.
  if (++additions == 0) additions = 1;
  if (!countsAreKept(scene)) return;
  forEachCountedSlot<Desc>([&scene, index](auto slot) {
    decltype(slot)::noteAddition(scene, static_cast<std::int32_t>(index));
    decltype(slot)::settle(scene);
  });
}

/// To be called before an object is freed. It may be free already.
template <typename Desc>
void noteRemoval(Scene& scene, std::int32_t index) noexcept {
  if (!countsAreKept(scene)) return;
  forEachCountedSlot<Desc>(
      [&scene, index](auto slot) { decltype(slot)::noteRemoval(scene, index); });
  // Hosts count before they remove.
  forEachSlotWithTarget<Desc>([&scene](auto slot) { decltype(slot)::settle(scene); });
}

}  // namespace vrnt::data

#endif
