// Imports one scene into another. Objects refer to each other by index, so an import copies the
// containers and translates all indices.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "scene/class_table.hpp"
#include "scene/object_operations.hpp"
#include "scene/reference_counts.hpp"
#include "scene/reference_slots.hpp"
#include "scene/scene_access.hpp"
#include "scene/slot_memory.hpp"
#include "scene/texture_references.hpp"
#include "vornath_data/scene.hpp"

namespace vrnt::data {

namespace {

using RefMaps = detail::TupleOfClass<RefMap>;

// Returns whether a slot is a list of lights and shapes. Such lists are filled after all classes
// were imported, since their own class comes before the lights and the shapes.
bool isLate(const SlotEntry& slot) { return slot.target == kEmitterTarget; }

bool hasLateSlot(const ClassEntry& owner) {
  return std::any_of(owner.slots.begin(), owner.slots.end(), isLate);
}

template <typename Element>
std::vector<std::int32_t> liveSlots(const Container<Element>& container) {
  std::vector<std::int32_t> live;
  for (std::uint32_t i = 0; i < container.size(); ++i) {
    if (container.slots[i].live()) live.push_back(static_cast<std::int32_t>(i));
  }
  return live;
}

// Up to so many programs are searched for one by one, since a table of all programs of the target
// would cost more.
constexpr std::size_t kFewPrograms = 8;

// Returns the first live slot with the id; -1 if there is none.
template <typename Container>
std::int32_t firstOfId(const Container& container, const UniqueId& id) {
  for (std::uint32_t i = 0; i < container.size(); ++i) {
    if (container.slots[i].live() && container.slots[i].id == id) {
      return static_cast<std::int32_t>(i);
    }
  }
  return -1;
}

// The id of a program is a digest, so any part of it is a good hash.
struct IdHash {
  std::size_t operator()(const UniqueId& id) const noexcept {
    std::size_t part = 0;
    std::memcpy(&part, id.begin(), sizeof(part));
    return part;
  }
};

// One import. The classes are imported in file order, in which the targets of references precede
// the objects that refer to them, except for late slots. Source and target may be the same scene,
// which then gets a second copy of its objects. Therefore no pointer into the source is kept while
// the target grows, and slots that the import adds are not read.
class ImportObjects {
 public:
  ImportObjects(const Scene& source, Scene& target)
      : source_(source), target_(target), textureWords_(importedTextureWords()) {}

  // Imports the objects of a class, without their late slots.
  template <typename Desc>
  void objects() {
    if constexpr (kIsProgram<Desc>) {
      programs<Desc>();
    } else if constexpr (kIsAsset<Desc>) {
      assets<Desc>();
    } else {
      instances<Desc>();
    }
  }

  // Fills the late slots of the imported objects of a class.
  template <typename Desc>
  void lateSlots();

  RefMaps takeMaps() { return std::move(maps_); }

 private:
  template <typename Source>
  void programs();
  template <typename Desc>
  void assets();
  template <typename Desc>
  void instances();
  template <typename Desc>
  void copy(const Instance<Desc>& from, Instance<Desc>& to);

  void translate(const SlotEntry& slot, const void* from, void* to) const;
  void translateIndices(ObjectClass target, const std::int32_t* from, std::int32_t* to,
                        std::size_t count) const;
  void translateComplements(ObjectClass target, const std::int32_t* from, std::int32_t* to,
                            std::size_t count) const;

  // Calls `onMap(map)` with the RefMap of a class.
  template <typename OnMap>
  void visitMap(ObjectClass objectClass, const OnMap& onMap) const {
    visitClass(
        static_cast<std::uint32_t>(objectClass),
        [&](auto tag) { onMap(maps_.template get<typename decltype(tag)::Desc>()); }, [] {});
  }

  const Scene& source_;
  Scene& target_;
  RefMaps maps_;
  TextureWords textureWords_;
};

// A program that both scenes contain is not added: references to it are translated to the first
// program of the target with the same id.
template <typename Source>
void ImportObjects::programs() {
  const std::vector<std::int32_t> live = liveSlots(source_.container<Source>());
  if (live.empty()) return;
  std::unordered_map<UniqueId, std::int32_t, IdHash> first;
  if (live.size() <= kFewPrograms) {
    for (const std::int32_t slot : live) {
      const UniqueId& id = source_.container<Source>().at(slot).id;
      const std::int32_t found = firstOfId(writable<Source>(target_), id);
      if (found >= 0) first.emplace(id, found);
    }
  } else {
    first.reserve(writable<Source>(target_).size());
    for (const std::int32_t slot : liveSlots(writable<Source>(target_))) {
      first.emplace(writable<Source>(target_).at(slot).id, slot);
    }
  }
  for (const std::int32_t slot : live) {
    const Program<Source>& program = source_.container<Source>().at(slot);
    const auto known = first.find(program.id);
    if (known != first.end()) {
      maps_.template get<Source>().add(slot, known->second);
      continue;
    }
    // A text from a file can contain a NUL. It is cut there, and the program gets another id.
    const char* text = program.source();
    const auto added =
        static_cast<std::int32_t>(addProgram<Source>(target_, text, std::strlen(text)));
    maps_.template get<Source>().add(slot, added);
    const auto entry = first.emplace(writable<Source>(target_).at(added).id, added).first;
    // The new program may be in a free slot before the first program with its id.
    if (added < entry->second) entry->second = added;
  }
}

template <typename Desc>
void ImportObjects::assets() {
  for (const std::int32_t slot : liveSlots(source_.container<Desc>())) {
    auto& container = writable<Desc>(target_);
    const std::uint32_t added = allocateSlot(container);
    const Asset<Desc>& asset = source_.container<Desc>().at(slot);
    container.slots[added] = Asset<Desc>{asset.id, asset.desc, asset.storage};
    countClassChange<Desc>(target_);
    maps_.template get<Desc>().add(slot, static_cast<std::int32_t>(added));
  }
}

// The container grows by the number of slots of the source: first the live objects, then as many
// free slots as the source has.
template <typename Desc>
void ImportObjects::instances() {
  const auto& from = source_.container<Desc>();
  auto& to = writable<Desc>(target_);
  const std::uint32_t count = from.size();
  const std::uint32_t size = to.size() + count;
  // A large import reserves exactly what it needs. For many small ones, the container's own growth
  // is faster.
  if (count >= to.size()) reserveSlots(to, size);
  SlotsAhead ahead(to, count >= to.size() ? size : 0);
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!from.slots[i].live()) continue;
    const std::uint32_t added = to.size();
    ahead.provide(added);
    appendSlot(to);
    Instance<Desc>& object = to.slots[added];
    copy(from.slots[i], object);
    object.deleted = false;
    to.occupied(added);
    noteAddition(target_, object);
    countWholeChange(object);
    countClassChange<Desc>(target_);
    maps_.template get<Desc>().add(static_cast<std::int32_t>(i), static_cast<std::int32_t>(added));
  }
  while (to.size() < size) appendSlot(to);
}

template <typename Desc>
void ImportObjects::copy(const Instance<Desc>& from, Instance<Desc>& to) {
  if constexpr (kGroupCount<Desc> != 0) to.desc.groups = from.desc.groups;
  if constexpr (ClassInfo<Desc>::kHasValue) {
    Value value = from.value;
    if (value)
      remapValueTextures(value, maps_.template get<vrnt::detail::TextureDesc>(), textureWords_);
    to.value = std::move(value);
  }
  for (const SlotEntry& slot : classEntry<Desc>().slots) {
    if (!isLate(slot)) translate(slot, &from.desc, &to.desc);
  }
}

template <typename Desc>
void ImportObjects::lateSlots() {
  for (const auto& [source, target] : maps_.template get<Desc>().pairs()) {
    const Instance<Desc>& from = source_.container<Desc>().at(source);
    Instance<Desc>& to = writable<Desc>(target_).at(target);
    countReferenceChange(to);
    countClassChange<Desc>(target_);
    for (const SlotEntry& slot : classEntry<Desc>().slots) {
      if (isLate(slot)) translate(slot, &from.desc, &to.desc);
    }
  }
}

void ImportObjects::translate(const SlotEntry& slot, const void* from, void* to) const {
  if (slot.form == SlotForm::Single) {
    const std::int32_t index = singleReference(from, slot);
    if (index < 0) return;  // the new slot is unset as well
    translateIndices(slot.target, &index, &singleReference(to, slot), 1);
    return;
  }
  const std::vector<std::int32_t>& words = referenceList(from, slot);
  std::vector<std::int32_t>& translated = referenceList(to, slot);
  translated.assign(words.size(), -1);
  const bool emitters = slot.target == kEmitterTarget;
  translateIndices(emitters ? ObjectClass::Shape : slot.target, words.data(), translated.data(),
                   words.size());
  if (slot.form == SlotForm::CodedList) {
    translateComplements(emitters ? ObjectClass::Light : slot.target, words.data(),
                         translated.data(), words.size());
  }
}

// Translates the words that are not negative: indices. For other words, does not change `to`.
void ImportObjects::translateIndices(ObjectClass target, const std::int32_t* from, std::int32_t* to,
                                     std::size_t count) const {
  visitMap(target, [=](const auto& map) {
    for (std::size_t i = 0; i < count; ++i) {
      if (from[i] >= 0) to[i] = map.lookup(from[i]);
    }
  });
}

// Translates the words that are complements of indices: each becomes the complement of the new
// index. If there is no new index, the result is the complement of -1, which is the word 0: index 0
// of the other target. The same happens to the word for no target. Hosts rely on this.
void ImportObjects::translateComplements(ObjectClass target, const std::int32_t* from,
                                         std::int32_t* to, std::size_t count) const {
  visitMap(target, [=](const auto& map) {
    for (std::size_t i = 0; i < count; ++i) {
      if (from[i] < 0) to[i] = ~map.lookup(~from[i]);
    }
  });
}

}  // namespace

RefMaps Scene::import(const Scene& source) {
  ImportObjects imported(source, *this);
  forEachClass([&](auto tag) { imported.objects<typename decltype(tag)::Desc>(); });
  forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    if constexpr (kSlotCount<Desc> != 0) {
      if (hasLateSlot(classEntry<Desc>())) imported.lateSlots<Desc>();
    }
  });
  return imported.takeMaps();
}

}  // namespace vrnt::data
