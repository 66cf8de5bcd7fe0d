#include "embed/specialization_difference.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "types/bottom_up.hpp"
#include "types/extents.hpp"
#include "types/make_type.hpp"
#include "types/parts.hpp"
#include "types/relations.hpp"
#include "types/walk.hpp"
#include "values/equality.hpp"
#include "values/specialization.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

// The walk through two values at once.
class Difference {
 public:
  struct Node {
    ConstView a, b;
    const InternedType* annotated;
    bool skipped = false;  // a field that specialization takes away
  };

  bool found(const ConstView& a, const ConstView& b, const InternedType& annotated) {
    return !Walk<Node, false>().run(*this, {a, b, &annotated});
  }

  Visit enter(const Node& node) {
    if (node.skipped) return Visit::leaf();
    return std::visit([&](const auto& desc) { return begin(node, desc); }, node.annotated->desc());
  }

  Node part(const Node& node, std::size_t i) {
    if (const auto* structure = node.annotated->getIf<Type::TStruct>()) {
      const InternedType& field = *structure->fields[i].type;
      return {node.a.field(i), node.b.field(i), &field, isNotSpecialized(field)};
    }
    const InternedType* const element = Parts::of(*node.annotated)[i].type;
    return {elementOf(node.a, i), elementOf(node.b, i), element};
  }

 private:
  static ConstView elementOf(const ConstView& array, std::size_t i) {
    const auto [element, offset] = Parts::of(*array.type)[i];
    return {element, array.offset + offset, array.owner};
  }

  Visit begin(const Node&, const Type::TStruct& structure) {
    return Visit::parts(structure.fields.size());
  }

  template <typename D>
  Visit begin(const Node& node, const Type::TArrayND<D>& array) {
    const D& extents = std::get<Type::TArrayND<D>>(node.a.type->desc()).shape.value();
    if (!(extents == std::get<Type::TArrayND<D>>(node.b.type->desc()).shape.value())) {
      return Visit::stop();
    }
    const std::size_t count = Extents(extents).elements();
    if (count == 0) return Visit::leaf();
    // Elements without parts are compared all at once, which says the same.
    return hasParts(*array.element) ? Visit::parts(count) : compare(node);
  }

  template <typename Leaf>
  Visit begin(const Node& node, const Leaf&) {
    return compare(node);
  }

  static Visit compare(const Node& node) {
    return valuesEqual(node.a, node.b, 0) ? Visit::leaf() : Visit::stop();
  }

  static bool hasParts(const InternedType& type) {
    return type.getIf<Type::TStruct>() != nullptr || arrayDesc(type.desc());
  }
};

// What of one type, the first of a pair, another doesn't cover.
class Remainder : public BottomUp<Remainder, TypePair, TypePtr> {
 public:
  // The other has something that the type lacks.
  struct Exception {};

  Remainder() : empty_(makeType(Type::TStruct())) {}

  TypePtr of(const InternedType& full, const InternedType& covered) {
    return outcomeOf({&full, &covered});
  }

  // That one struct relates to another needs no question: then no field of it leaves anything over.
  std::optional<TypePtr> open(Task& task) {
    const auto [full, covered] = task.key;
    const auto* const all = full->getIf<Type::TStruct>();
    const auto* const some = covered->getIf<Type::TStruct>();
    if (all == nullptr || some == nullptr) {
      if (isSubType(*covered, *full)) return empty_;
      throw Exception();
    }
    if (&full->stripped() == &covered->stripped()) return empty_;

    std::unordered_map<std::string_view, const InternedType*> coveredFields;
    coveredFields.reserve(some->fields.size());
    for (const Type::Field& field : some->fields) {
      coveredFields.emplace(field.label, field.type.get());
    }
    for (std::size_t i = 0; i < all->fields.size(); ++i) {
      const auto found = coveredFields.find(all->fields[i].label);
      if (found == coveredFields.end()) continue;
      task.inner.emplace_back(all->fields[i].type.get(), found->second);
      task.notes.push_back(i);
    }
    if (task.inner.size() != some->fields.size()) throw Exception();
    return std::nullopt;
  }

  TypePtr close(const Task& task) {
    const auto& fields = task.key.first->getIf<Type::TStruct>()->fields;
    std::vector<Type::Field> kept;
    std::size_t next = 0;  // of the fields that are covered
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (next == task.notes.size() || task.notes[next] != i) {
        kept.push_back(fields[i]);
      } else if (const TypePtr& rest = outcome(task, next++); rest != empty_) {
        kept.emplace_back(rest, fields[i].label);
      }
    }
    if (kept.empty()) return empty_;
    return makeType(Type::TStruct(std::move(kept)), task.key.first->metadata());
  }

 private:
  TypePtr empty_;
};

}  // namespace

bool specializationDiffers(const ConstView& a, const ConstView& b, const InternedType& annotated) {
  return !isNotSpecialized(annotated) && Difference().found(a, b, annotated);
}

TypePtr specializationRemainder(const InternedType& full, const InternedType& specialized) {
  try {
    return Remainder().of(full, specialized);
  } catch (const Remainder::Exception&) {
    throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments,
                          "Incompatible type for specialization: {}",
                          checkSubType(specialized, full).value_or(std::string()));
  }
}

}  // namespace qex::vornath
