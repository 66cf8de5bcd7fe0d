// Compares the content of two scenes.
#include <cstring>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "scene/class_table.hpp"
#include "scene/group_type.hpp"
#include "scene/record_comparison.hpp"
#include "scene/reference_slots.hpp"
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

// Returns whether values of the type with equal bytes have the same text, which can be printed
// without failure. This excludes enums, which may hold a code that they do not declare, and
// references, whose text depends on other bytes.
bool printsByBytes(const vrntType_t* type) {
  std::vector<const vrntType_t*> open{type};
  std::unordered_set<const vrntType_t*> seen{type};
  // A type holds references on its parts, so borrowed handles suffice.
  const auto enter = [&](const vrntType_t* part) {
    if (seen.insert(part).second) open.push_back(part);
  };
  while (!open.empty()) {
    const vrntType_t* const next = open.back();
    open.pop_back();
    switch (vrntTypeDescriptor(next)) {
      case VRNT_DESCRIPTOR_BASE:
        if (vrntTypeBasetype(next) != VRNT_BASETYPE_STRUCT) break;
        [[fallthrough]];
      case VRNT_DESCRIPTOR_STRUCT:
        for (std::uint32_t i = 0; i < vrntTypeFieldCount(next); ++i) {
          vrntValueView_t field{};
          enter(vrntValueStructField(&field, next, i)->type);
        }
        break;
      case VRNT_DESCRIPTOR_ARRAY: {
        std::int32_t extents[4] = {};
        vrntTypeArrayShape(next, extents);
        if (extents[0] < 0) return false;
        enter(TypeHandle::adopt(vrntTypeElementType(next)).get());
        break;
      }
      default:
        return false;
    }
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
    if constexpr (ClassInfo<Desc>::kHasValue) return sameText(a.value, b.value);
    return true;
  }

  // Values are equal if they have the same text. Therefore values of different types can be equal,
  // and so can two NaNs with different bits.
  bool sameText(const Value& a, const Value& b) {
    const vrntType_t* const type = a.type();
    if (type == b.type() && byBytes(type) &&
        (a.get() == b.get() || std::memcmp(a.data(), b.data(), vrntTypeSize(type)) == 0)) {
      return true;
    }
    const std::string text = ConstBasicView<const Value*>(&a).text();
    // Two handles on one block have the same text. It is printed anyway, since a failure must be
    // reported.
    return a.get() == b.get() || text == ConstBasicView<const Value*>(&b).text();
  }

  bool byBytes(const vrntType_t* type) {
    const auto known = byBytes_.find(type);
    if (known != byBytes_.end()) return known->second;
    return byBytes_.emplace(type, printsByBytes(type)).first->second;
  }

  const Scene& a_;
  const Scene& b_;
  std::unordered_map<const vrntType_t*, bool>
      byBytes_;  // the results of printsByBytes() for types that the scenes hold
};

}  // namespace

bool Scene::equivalent(const Scene& a, const Scene& b) { return Comparison(a, b).equivalent(); }

}  // namespace vrnt::data
