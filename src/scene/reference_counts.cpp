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

// A count for each word that a slot can hold.
class WordCounts {
 public:
  // Counts a word once more, if that takes no memory. Result: whether it was counted.
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

  // Counts a word once more that increment() didn't. Words below `targets`, the size of the
  // container that is referred to, take four bytes each. Others refer to nothing and take more:
  // there are at most `maxInvalid`. Result: false, with nothing changed, if there would be more.
  // Errors: throws std::bad_alloc, with nothing changed.
  bool add(std::int32_t word, std::size_t targets, std::size_t maxInvalid);

  // Counts a word once less. It was counted.
  void remove(std::int32_t word) noexcept;

  std::uint32_t count(std::int32_t word) const noexcept;

 private:
  std::uint32_t unset_ = 0;            // of -1, by far the most frequent word
  std::vector<std::uint32_t> counts_;  // of the words from 0
  // Of all words that are neither -1 nor indices of counts_.
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

// The counts of one slot over all live objects of its class.
struct SlotCounts {
  WordCounts words;
  std::unordered_set<std::int32_t> uncounted;  // the objects whose list isn't in `words`
  std::atomic<bool> uncountedWereRead{false};  // by a count, since they were last looked through
  bool givenUp = false;                        // too many words that refer to nothing
};

// The counts of a scene, by the ordinals of slots; null for a slot that nobody has asked about.
class ReferenceCounts final : public detail::Kept {
 public:
  ~ReferenceCounts() override {
    for (std::atomic<SlotCounts*>& counts : slots_) delete counts.load(std::memory_order_relaxed);
  }

  std::atomic<SlotCounts*>& of(const SlotEntry& slot) noexcept { return slots_[slot.ordinal]; }

 private:
  std::array<std::atomic<SlotCounts*>, kTotalSlotCount> slots_{};
};

// What a place points to, created if that is nothing. Of several threads that create it at once,
// one stores what it made, and the others take that. Null if `create()` gives null.
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

// An object of a class that has slots.
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

// Whether a host may write to the elements of an object's list, by a pointer that it was given.
bool listMayBeWritten(const Scene& scene, const SlotEntry& slot,
                      const Referrer& referrer) noexcept {
  return slot.form == SlotForm::List &&
         referrer.listHandedOut == detail::SceneAccess::additions(scene, slot.owner);
}

// Calls `onWord(word)` for what a slot holds until it returns false. Result: whether it never did.
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

// countWord() for a word that WordCounts::increment() didn't count.
[[gnu::noinline]] bool countNewWord(const Scene& scene, const SlotEntry& slot, SlotCounts& counts,
                                    std::int32_t word) {
  // More words that refer to nothing than there are objects aren't worth their memory.
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

// Counts a word of a slot once more. Result: false if there are too many words that refer to
// nothing; the counts are then given up.
// Errors: throws std::bad_alloc, with nothing changed.
bool countWord(const Scene& scene, const SlotEntry& slot, SlotCounts& counts, std::int32_t word) {
  return counts.words.increment(word) || countNewWord(scene, slot, counts, word);
}

// Reads all objects of the slot's class. Null without memory.
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

// The counts of a slot, made if need be. Null without memory, and if a host may have changed any
// object unseen.
SlotCounts* countsOf(const Scene& scene, const SlotEntry& slot) noexcept {
  if (detail::SceneAccess::handedOut(scene, slot.owner)) return nullptr;
  detail::Kept* const all = getOrCreate(detail::SceneAccess::kept(scene), [] {
    return std::unique_ptr<detail::Kept>(new (std::nothrow) ReferenceCounts);
  });
  if (!all) return nullptr;
  return getOrCreate(static_cast<ReferenceCounts*>(all)->of(slot),
                     [&] { return readCounts(scene, slot); });
}

// The counts of a class's slots that changes must keep up to date; null if there are none.
ReferenceCounts* keptCounts(const Scene& scene, ObjectClass objectClass) noexcept {
  detail::Kept* const all = detail::SceneAccess::kept(scene).load(std::memory_order_relaxed);
  if (!all || detail::SceneAccess::handedOut(scene, objectClass)) return nullptr;
  return static_cast<ReferenceCounts*>(all);
}

// Those of one slot.
SlotCounts* keptCounts(ReferenceCounts* all, const SlotEntry& slot) noexcept {
  SlotCounts* const counts = all ? all->of(slot).load(std::memory_order_relaxed) : nullptr;
  return counts && !counts->givenUp ? counts : nullptr;
}
SlotCounts* keptCounts(const Scene& scene, const SlotEntry& slot) noexcept {
  return keptCounts(keptCounts(scene, slot.owner), slot);
}

// Those that include what a live object refers to.
SlotCounts* countsWith(const Scene& scene, const SlotEntry& slot, std::int32_t index) noexcept {
  SlotCounts* const counts = keptCounts(scene, slot);
  if (!counts || counts->uncounted.empty()) return counts;
  return counts->uncounted.count(index) == 0 ? counts : nullptr;
}

// Without the memory to keep them, the counts of a slot are made anew at the next need.
void dropCounts(const Scene& scene, const SlotEntry& slot) noexcept {
  delete keptCounts(scene, slot.owner)->of(slot).exchange(nullptr);
}

// countWord() for kept counts. Result: false if there are no counts any more.
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

// Nobody has a pointer to the elements of the list that an object has now.
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

// Counts the lists of a slot again that can't be written to any more. It does so only after a count
// has read them, so that it costs no more than that count did.
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

// The references from one slot of all live objects of its class.
std::uint32_t countReferencesFrom(const Scene& scene, const SlotEntry& slot,
                                  std::int32_t index) noexcept {
  // An unset optional slot refers to nothing; a required one is compared as it stands.
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
  // Hosts count before they remove.
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
