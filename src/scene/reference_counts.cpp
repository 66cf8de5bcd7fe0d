#include "scene/reference_counts.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace vrnt::data {

namespace {

// The number of occurrences of each word in a slot.
class WordCounts {
 public:
  // Increments the count of a word if that needs no memory. Returns whether it did.
  bool increment(std::int32_t word) noexcept {
    if (word == -1) {
      ++unset_;
    } else if (word >= 0 && static_cast<std::size_t>(word) < counts_.size()) {
      ++counts_[static_cast<std::size_t>(word)];
    } else {
      return false;
    }
    return true;
  }

  // Increments the count of a word for which increment() returned false. `targets` is the size of
  // the container that the slot refers to. Each word below it takes four bytes. Other words refer
  // to nothing and take more memory, so at most `maxInvalid` of them are counted. Returns false,
  // with nothing changed, if there would be more.
  // Errors: throws std::bad_alloc, with nothing changed.
  bool add(std::int32_t word, std::size_t targets, std::size_t maxInvalid);

  // Decrements the count of a word, which must have been counted.
  void remove(std::int32_t word) noexcept;

  std::uint32_t count(std::int32_t word) const noexcept;

 private:
  std::uint32_t unset_ = 0;            // the count of -1, by far the most frequent word
  std::vector<std::uint32_t> counts_;  // the counts of the words from 0 on
  // The counts of all other words: neither -1 nor an index of counts_.
  std::unordered_map<std::int32_t, std::uint32_t> invalid_;
};

bool WordCounts::add(std::int32_t word, std::size_t targets, std::size_t maxInvalid) {
  const auto place = static_cast<std::size_t>(word);
  if (word >= 0 && place < targets) {
    counts_.resize(std::min(targets, std::max(place + 1, 2 * counts_.size())));
    for (auto other = invalid_.begin(); other != invalid_.end();) {
      if (other->first >= 0 && static_cast<std::size_t>(other->first) < counts_.size()) {
        counts_[static_cast<std::size_t>(other->first)] = other->second;
        other = invalid_.erase(other);
      } else {
        ++other;
      }
    }
    ++counts_[place];
    return true;
  }
  const auto known = invalid_.find(word);
  if (known != invalid_.end()) {
    ++known->second;
    return true;
  }
  if (invalid_.size() >= maxInvalid) return false;
  invalid_.emplace(word, 1);
  return true;
}

void WordCounts::remove(std::int32_t word) noexcept {
  if (word == -1) {
    --unset_;
  } else if (word >= 0 && static_cast<std::size_t>(word) < counts_.size()) {
    --counts_[static_cast<std::size_t>(word)];
  } else {
    const auto known = invalid_.find(word);
    if (known != invalid_.end() && --known->second == 0) invalid_.erase(known);
  }
}

std::uint32_t WordCounts::count(std::int32_t word) const noexcept {
  if (word == -1) return unset_;
  if (word >= 0 && static_cast<std::size_t>(word) < counts_.size()) {
    return counts_[static_cast<std::size_t>(word)];
  }
  const auto known = invalid_.find(word);
  return known == invalid_.end() ? 0 : known->second;
}

// The counts of one slot, for all live objects of its class.
struct SlotCounts {
  WordCounts words;
  std::unordered_set<std::int32_t> uncounted;  // the objects whose list is not in `words`
  std::atomic<bool> uncountedWereRead{false};  // by a count, since countUnwritableLists()
  bool givenUp = false;                        // too many words refer to nothing
};

// The counts of a scene, indexed by the ordinals of slots. Null for a slot that no count has read.
class ReferenceCounts final : public detail::Kept {
 public:
  ~ReferenceCounts() override {
    for (std::atomic<SlotCounts*>& counts : slots_) delete counts.load(std::memory_order_relaxed);
  }

  std::atomic<SlotCounts*>& of(const SlotEntry& slot) noexcept { return slots_[slot.ordinal]; }

 private:
  std::array<std::atomic<SlotCounts*>, kTotalSlotCount> slots_{};
};

// Returns what `place` points to. If it is null, creates an object and stores it there. If several
// threads do so at the same time, one stores its object, and all return that one. Returns null if
// `create()` returns null.
template <typename T, typename Create>
T* getOrCreate(std::atomic<T*>& place, const Create& create) {
  T* present = place.load(std::memory_order_acquire);
  if (present) return present;
  std::unique_ptr<T> created = create();
  if (created && place.compare_exchange_strong(present, created.get(), std::memory_order_acq_rel,
                                               std::memory_order_acquire)) {
    return created.release();
  }
  return present;
}

// An object of a class with slots.
struct Referrer {
  const void* desc = nullptr;
  std::uint32_t listHandedOut = 0;  // 0 also for a class without a plain list
  bool live = false;
};

template <typename Desc>
Referrer referrerOf(const Instance<Desc>& object) noexcept {
  std::uint32_t listHandedOut = 0;
  if constexpr (detail::hasPlainList<Desc>()) listHandedOut = object.listHandedOut;
  return {&object.desc, listHandedOut, object.live()};
}

Referrer referrerAt(const Scene& scene, ObjectClass objectClass, std::int32_t index) noexcept {
  return visitClass(
      static_cast<std::uint32_t>(objectClass),
      [&scene, index](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kSlotCount<Desc> == 0) {
          return Referrer{};
        } else {
          return referrerOf(scene.container<Desc>().at(index));
        }
      },
      [] { return Referrer{}; });
}

// Calls `onReferrer(referrer, index)` for each live object of a class, until it returns false.
template <typename OnReferrer>
void forEachLive(const Scene& scene, ObjectClass objectClass, const OnReferrer& onReferrer) {
  visitClass(
      static_cast<std::uint32_t>(objectClass),
      [&](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (kSlotCount<Desc> != 0) {
          std::int32_t index = 0;
          for (const Instance<Desc>& object : scene.container<Desc>().slots) {
            if (object.live() && !onReferrer(referrerOf(object), index)) return;
            ++index;
          }
        }
      },
      [] {});
}

std::uint32_t containerSize(const Scene& scene, ObjectClass objectClass) noexcept {
  return visitClass(
      static_cast<std::uint32_t>(objectClass),
      [&scene](auto tag) { return scene.container<typename decltype(tag)::Desc>().size(); },
      [] { return std::uint32_t{0}; });
}

// Returns whether a host can still write to the elements of an object's list, through a pointer
// that it was given.
bool listMayBeWritten(const Scene& scene, const SlotEntry& slot,
                      const Referrer& referrer) noexcept {
  return slot.form == SlotForm::List &&
         referrer.listHandedOut == detail::SceneAccess::additions(scene, slot.owner);
}

// Calls `onWord(word)` for each word in a slot until it returns false. Returns whether it never
// did.
template <typename OnWord>
bool forEachWord(const void* desc, const SlotEntry& slot, const OnWord& onWord) {
  if (slot.form == SlotForm::Single) return onWord(singleReference(desc, slot));
  for (const std::int32_t word : referenceList(desc, slot)) {
    if (!onWord(word)) return false;
  }
  return true;
}

std::uint32_t countIn(const void* desc, const SlotEntry& slot, std::int32_t index) noexcept {
  std::uint32_t found = 0;
  forEachWord(desc, slot, [&found, index](std::int32_t word) {
    found += word == index ? 1 : 0;
    return true;
  });
  return found;
}

// Does the same as countWord(), for a word that WordCounts::increment() did not count.
[[gnu::noinline]] bool countNewWord(const Scene& scene, const SlotEntry& slot, SlotCounts& counts,
                                    std::int32_t word) {
  // If more words refer to nothing than there are objects, counting them is not worth the memory.
  constexpr std::size_t kFewInvalid = 4096;
  if (counts.words.add(word, containerSize(scene, slot.target),
                       kFewInvalid + containerSize(scene, slot.owner))) {
    return true;
  }
  counts.words = WordCounts();
  counts.uncounted.clear();
  counts.givenUp = true;
  return false;
}

// Increments the count of a word of a slot. If too many words refer to nothing, discards the counts
// for good and returns false.
// Errors: throws std::bad_alloc, with nothing changed.
bool countWord(const Scene& scene, const SlotEntry& slot, SlotCounts& counts, std::int32_t word) {
  return counts.words.increment(word) || countNewWord(scene, slot, counts, word);
}

// Counts the words in a slot of all objects of its class. Returns null if memory runs out.
std::unique_ptr<SlotCounts> readCounts(const Scene& scene, const SlotEntry& slot) noexcept {
  try {
    auto counts = std::make_unique<SlotCounts>();
    forEachLive(scene, slot.owner, [&](const Referrer& referrer, std::int32_t index) {
      if (listMayBeWritten(scene, slot, referrer)) {
        counts->uncounted.insert(index);
        return true;
      }
      return forEachWord(referrer.desc, slot,
                         [&](std::int32_t word) { return countWord(scene, slot, *counts, word); });
    });
    return counts;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

// Returns the counts of a slot, and creates them if necessary. Returns null if memory runs out, or
// if a host may have changed objects without a call.
SlotCounts* countsOf(const Scene& scene, const SlotEntry& slot) noexcept {
  if (detail::SceneAccess::handedOut(scene, slot.owner)) return nullptr;
  detail::Kept* const all = getOrCreate(detail::SceneAccess::kept(scene), [] {
    return std::unique_ptr<detail::Kept>(new (std::nothrow) ReferenceCounts);
  });
  if (!all) return nullptr;
  return getOrCreate(static_cast<ReferenceCounts*>(all)->of(slot),
                     [&] { return readCounts(scene, slot); });
}

// Returns the counts that changes of a class's slots must update; null if there are none.
ReferenceCounts* keptCounts(const Scene& scene, ObjectClass objectClass) noexcept {
  detail::Kept* const all = detail::SceneAccess::kept(scene).load(std::memory_order_relaxed);
  if (!all || detail::SceneAccess::handedOut(scene, objectClass)) return nullptr;
  return static_cast<ReferenceCounts*>(all);
}

// Returns the counts that changes of one slot must update; null if there are none.
SlotCounts* keptCounts(ReferenceCounts* all, const SlotEntry& slot) noexcept {
  SlotCounts* const counts = all ? all->of(slot).load(std::memory_order_relaxed) : nullptr;
  return counts && !counts->givenUp ? counts : nullptr;
}
SlotCounts* keptCounts(const Scene& scene, const SlotEntry& slot) noexcept {
  return keptCounts(keptCounts(scene, slot.owner), slot);
}

// Does the same, but returns null also if the counts do not include the references of a live
// object.
SlotCounts* countsWith(const Scene& scene, const SlotEntry& slot, std::int32_t index) noexcept {
  SlotCounts* const counts = keptCounts(scene, slot);
  if (!counts || counts->uncounted.empty()) return counts;
  return counts->uncounted.count(index) == 0 ? counts : nullptr;
}

// Discards the counts of a slot because memory ran out. The next count creates them again.
void dropCounts(const Scene& scene, const SlotEntry& slot) noexcept {
  delete keptCounts(scene, slot.owner)->of(slot).exchange(nullptr);
}

// Does the same as countWord(), for counts that are kept. Returns false if they were discarded.
bool addWord(const Scene& scene, const SlotEntry& slot, SlotCounts& counts,
             std::int32_t word) noexcept {
  try {
    return countWord(scene, slot, counts, word);
  } catch (const std::bad_alloc&) {
    dropCounts(scene, slot);
    return false;
  }
}

bool addAll(const Scene& scene, const SlotEntry& slot, SlotCounts& counts,
            const void* desc) noexcept {
  return forEachWord(desc, slot,
                     [&](std::int32_t word) { return addWord(scene, slot, counts, word); });
}

void removeAll(const SlotEntry& slot, SlotCounts& counts, const void* desc) noexcept {
  forEachWord(desc, slot, [&counts](std::int32_t word) {
    counts.words.remove(word);
    return true;
  });
}

// Notes that an object has a new list, to whose elements no host has a pointer.
void noteNewList(Scene& scene, const SlotEntry& slot, std::int32_t index) noexcept {
  visitClass(
      static_cast<std::uint32_t>(slot.owner),
      [&scene, index](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (detail::hasPlainList<Desc>()) {
          writable<Desc>(scene).at(index).listHandedOut = 0;
        }
      },
      [] {});
  if (SlotCounts* counts = keptCounts(scene, slot)) counts->uncounted.erase(index);
}

// Counts those uncounted lists of a slot that no host can write to any more. It does so only after
// a count has read these lists, so it costs no more than that count did.
void countUnwritableLists(const Scene& scene, const SlotEntry& slot) noexcept {
  SlotCounts* const counts = keptCounts(scene, slot);
  if (!counts || !counts->uncountedWereRead.load(std::memory_order_relaxed)) return;
  counts->uncountedWereRead.store(false, std::memory_order_relaxed);
  for (auto object = counts->uncounted.begin(); object != counts->uncounted.end();) {
    const Referrer referrer = referrerAt(scene, slot.owner, *object);
    if (listMayBeWritten(scene, slot, referrer)) {
      ++object;
    } else {
      object = counts->uncounted.erase(object);
      if (!addAll(scene, slot, *counts, referrer.desc)) return;
    }
  }
}

// Returns the number of references from one slot of all live objects of its class.
std::uint32_t countReferencesFrom(const Scene& scene, const SlotEntry& slot,
                                  std::int32_t index) noexcept {
  // Unset optional slots do not count; unset required slots count as references to -1.
  if (slot.kind == ReferenceKind::Optional && index == -1) return 0;
  SlotCounts* const counts = countsOf(scene, slot);
  if (!counts || counts->givenUp) {
    std::uint32_t found = 0;
    forEachLive(scene, slot.owner, [&](const Referrer& referrer, std::int32_t) {
      found += countIn(referrer.desc, slot, index);
      return true;
    });
    return found;
  }
  std::uint32_t found = counts->words.count(index);
  if (!counts->uncounted.empty()) {
    for (const std::int32_t object : counts->uncounted) {
      found += countIn(referrerAt(scene, slot.owner, object).desc, slot, index);
    }
    counts->uncountedWereRead.store(true, std::memory_order_relaxed);
  }
  return found;
}

}  // namespace

std::uint32_t countReferences(const Scene& scene, ObjectClass target, std::int32_t index) noexcept {
  std::uint32_t count = 0;
  for (const SlotEntry* const slot : classEntry(target).referrers) {
    count += countReferencesFrom(scene, *slot, index);
  }
  return count;
}

namespace detail {

void countAddedObject(const Scene& scene, ObjectClass objectClass, const void* desc) noexcept {
  ReferenceCounts* const all = keptCounts(scene, objectClass);
  if (!all) return;
  for (const SlotEntry& slot : classEntry(objectClass).slots) {
    if (SlotCounts* counts = keptCounts(all, slot)) addAll(scene, slot, *counts, desc);
    if (slot.form == SlotForm::List) countUnwritableLists(scene, slot);
  }
}

void discountRemovedObject(const Scene& scene, ObjectClass objectClass, std::int32_t index,
                           const void* desc) noexcept {
  const ClassEntry& entry = classEntry(objectClass);
  if (ReferenceCounts* const all = desc ? keptCounts(scene, objectClass) : nullptr) {
    for (const SlotEntry& slot : entry.slots) {
      SlotCounts* const counts = keptCounts(all, slot);
      if (counts && counts->uncounted.erase(index) == 0) removeAll(slot, *counts, desc);
    }
  }
  // Hosts count references before they remove an object.
  for (const SlotEntry* const slot : entry.referrers) {
    if (slot->form == SlotForm::List) countUnwritableLists(scene, *slot);
  }
}

void setCountedReference(Scene& scene, const SlotEntry& slot, std::int32_t index, bool live,
                         void* desc, std::uint32_t word) {
  if (slot.form == SlotForm::CodedList) {
    referenceList(desc, slot).resize(word, CodedRefList<void>::kNoTarget);
    return;
  }
  SlotCounts* const counts = live ? countsWith(scene, slot, index) : nullptr;
  if (slot.form == SlotForm::Single) {
    std::int32_t& stored = singleReference(desc, slot);
    const std::int32_t former = stored;
    stored = static_cast<std::int32_t>(word);
    if (!counts || stored == former) return;
    counts->words.remove(former);
    addWord(scene, slot, *counts, stored);
    return;
  }
  constexpr std::int32_t kNoTarget = RefList<void>::kNoTarget;
  std::vector<std::int32_t>& list = referenceList(desc, slot);
  const std::size_t former = list.size();
  for (std::size_t i = word; counts && i < former; ++i) counts->words.remove(list[i]);
  list.resize(word, kNoTarget);
  for (std::size_t i = former; counts && i < word; ++i) {
    if (!addWord(scene, slot, *counts, kNoTarget)) break;
  }
  if (word == 0) noteNewList(scene, slot, index);
}

void discountList(const Scene& scene, const SlotEntry& slot, std::int32_t index,
                  const void* desc) noexcept {
  SlotCounts* const counts = keptCounts(scene, slot);
  if (!counts) return;
  try {
    if (counts->uncounted.insert(index).second) removeAll(slot, *counts, desc);
  } catch (const std::bad_alloc&) {
    dropCounts(scene, slot);
  }
}

}  // namespace detail

void replaceReferenceList(Scene& scene, const SlotEntry& slot, std::int32_t index, void* desc,
                          std::vector<std::int32_t>&& words) noexcept {
  const bool live = referrerAt(scene, slot.owner, index).live;
  SlotCounts* const counts = live ? countsWith(scene, slot, index) : nullptr;
  if (counts) removeAll(slot, *counts, desc);
  referenceList(desc, slot) = std::move(words);
  noteNewList(scene, slot, index);
  if (!live) return;
  if (SlotCounts* kept = keptCounts(scene, slot)) addAll(scene, slot, *kept, desc);
}

}  // namespace vrnt::data
