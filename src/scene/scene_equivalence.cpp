// Compares the content of two scenes.
#include <cstring>
#include <type_traits>
#include <vector>

#include "scene/class_table.hpp"
#include "scene/group_type.hpp"
#include "scene/record_comparison.hpp"
#include "scene/reference_slots.hpp"
#include "scene/text_comparison.hpp"
#include "vornath_data/scene.hpp"

namespace vrnt::data {

namespace {

// Returns the comparison for all groups of a class, which are compared as one block of memory.
RecordComparison compareGroups(const ClassEntry& owner, std::size_t size) {
  RecordComparison comparison(size);
  for (const GroupEntry& group : owner.groups) {
    comparison.add(groupType(group).plain, group.offset);
  }
  return comparison;
}

template <typename Desc>
const RecordComparison& groupComparison() {
  static const RecordComparison comparison =
      compareGroups(classEntry<Desc>(), sizeof(typename Desc::Groups));
  return comparison;
}

bool sameReferences(const ClassEntry& owner, const void* a, const void* b) {
  if (std::memcmp(a, b, singleReferencesSize(owner)) != 0) return false;
  for (const SlotEntry& slot : owner.slots.subspan(owner.singleSlots)) {
    if (referenceList(a, slot) != referenceList(b, slot)) return false;
  }
  return true;
}

class Comparison {
 public:
  Comparison(const Scene& a, const Scene& b) : a_(a), b_(b) {}

  bool equivalent() {
    bool equal = groupComparison<SceneData>().equal(&a_.data, &b_.data);
    forEachClass([&](auto tag) { equal = equal && sameObjects<typename decltype(tag)::Desc>(); });
    return equal;
  }

 private:
  template <typename Desc>
  bool sameObjects() {
    const auto& a = a_.container<Desc>();
    const auto& b = b_.container<Desc>();
    if (a.size() != b.size()) return false;
    for (std::uint32_t i = 0; i < a.size(); ++i) {
      if (a.slots[i].live() != b.slots[i].live()) return false;
      if (a.slots[i].live() && !same(a.slots[i], b.slots[i])) return false;
    }
    return true;
  }

  // Ids and change counters are not compared.

  template <typename Source>
  bool same(const Program<Source>& a, const Program<Source>& b) {
    return std::strcmp(a.source(), b.source()) == 0;
  }

  template <typename Desc>
  bool same(const Asset<Desc>& a, const Asset<Desc>& b) {
    static_assert(std::has_unique_object_representations_v<Desc>);
    if (std::memcmp(&a.desc, &b.desc, sizeof(Desc)) != 0) return false;
    const AssetStorage* const first = a.storage.get();
    const AssetStorage* const second = b.storage.get();
    return first == second || (first->size == second->size &&
                               std::memcmp(first->data, second->data, first->size) == 0);
  }

  template <typename Desc>
  bool same(const Instance<Desc>& a, const Instance<Desc>& b) {
    if constexpr (kGroupCount<Desc> != 0) {
      if (!groupComparison<Desc>().equal(&a.desc.groups, &b.desc.groups)) return false;
    }
    if constexpr (kSlotCount<Desc> != 0) {
      if (!sameReferences(classEntry<Desc>(), &a.desc, &b.desc)) return false;
    }
    // Values are equal if they have the same text. Therefore values of different types can be
    // equal, and so can two NaNs with different bits.
    if constexpr (ClassInfo<Desc>::kHasValue) return texts_.sameText(a.value, b.value);
    return true;
  }

  const Scene& a_;
  const Scene& b_;
  TextComparison texts_;
};

}  // namespace

bool Scene::equivalent(const Scene& a, const Scene& b) { return Comparison(a, b).equivalent(); }

}  // namespace vrnt::data
