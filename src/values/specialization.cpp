#include "values/specialization.hpp"

#include <optional>
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
#include "values/transfer.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

using Part = Transfer::Part;

bool isMarked(const InternedType& type) { return type.metadata().count("no_specialize") != 0; }

// Works out what becomes of a value's type under the marks of an annotated one, and how the bytes
// get there. Elements all have one type, so that this is done once for all of them.
struct Outcome {
  TypePtr type;
  Part part;
};

class Planner : public BottomUp<Planner, TypePair, Outcome> {
 public:
  explicit Planner(Transfer& transfer) : transfer_(transfer) {}

  // The value's type is without metadata.
  Outcome plan(const InternedType& value, const InternedType& annotated) {
    return outcomeOf({&value, &annotated});
  }

  std::optional<Outcome> open(Task& task) {
    return std::visit([&](const auto& desc) { return open(task, desc); }, task.key.second->desc());
  }

  Outcome close(const Task& task) {
    return std::visit([&](const auto& desc) { return close(task, desc); }, task.key.second->desc());
  }

 private:
  // The notes are the indices of the fields that stay.
  static std::optional<Outcome> open(Task& task, const Type::TStruct& structure) {
    for (std::size_t i = 0; i < structure.fields.size(); ++i) {
      const InternedType& field = *structure.fields[i].type;
      if (isMarked(field)) continue;
      task.inner.emplace_back(fieldPlace(*task.key.first, i).type, &field);
      task.notes.push_back(i);
    }
    return std::nullopt;
  }

  template <typename D>
  static std::optional<Outcome> open(Task& task, const Type::TArrayND<D>& array) {
    const auto& own = std::get<Type::TArrayND<D>>(task.key.first->desc());
    // The elements to visit are those of the type that is passed.
    if (!array.shape || !own.shape) throw std::bad_optional_access();
    task.inner.emplace_back(own.element.get(), array.element.get());
    return std::nullopt;
  }

  template <typename Leaf>
  std::optional<Outcome> open(Task& task, const Leaf&) {
    const InternedType& value = *task.key.first;
    return Outcome{TypePtr(&value), transfer_.copy(value)};
  }

  Outcome close(const Task& task, const Type::TStruct& structure) {
    std::vector<Type::Field> fields;
    fields.reserve(task.notes.size());
    for (std::size_t i = 0; i < task.notes.size(); ++i) {
      fields.emplace_back(outcome(task, i).type, structure.fields[task.notes[i]].label);
    }
    TypePtr type = makeType(Type::TStruct(std::move(fields)));
    const Parts to = Parts::of(*type);
    std::vector<Part> parts;
    parts.reserve(task.notes.size());
    for (std::size_t i = 0; i < task.notes.size(); ++i) {
      const std::uint64_t from = fieldPlace(*task.key.first, task.notes[i]).offset;
      parts.push_back(outcome(task, i).part.at(from, to[i].offset));
    }
    return {std::move(type), transfer_.sequence(parts)};
  }

  template <typename D>
  Outcome close(const Task& task, const Type::TArrayND<D>&) {
    const auto& own = *task.key.first->getIf<Type::TArrayND<D>>();
    const Outcome& element = outcome(task, 0);
    TypePtr type = makeType(Type::TArrayND<D>(element.type, own.shape));
    const Part part = transfer_.repeat(element.part, Extents(own).elements(), own.element->size(),
                                       element.type->size());
    return {std::move(type), part};
  }

  template <typename Leaf>
  Outcome close(const Task&, const Leaf&) {
    return {};  // is never open
  }

  Transfer& transfer_;
};

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
      return {node.a.field(i), node.b.field(i), &field, isMarked(field)};
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

DynamicValue buildSpecialization(const ConstView& value, const InternedType& annotated) {
  Transfer transfer;
  const auto [type, part] = Planner(transfer).plan(value.type->stripped(), annotated);
  DynamicValue result{type};
  transfer.run(part, value.data(), blockData(result.block()));
  return result;
}

bool specializationDiffers(const ConstView& a, const ConstView& b, const InternedType& annotated) {
  return !isMarked(annotated) && Difference().found(a, b, annotated);
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
