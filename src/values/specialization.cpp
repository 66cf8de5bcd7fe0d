#include "values/specialization.hpp"

#include <optional>
#include <vector>

#include "types/bottom_up.hpp"
#include "types/extents.hpp"
#include "types/make_type.hpp"
#include "types/parts.hpp"
#include "values/transfer.hpp"

namespace qex::vornath {
namespace {

using Part = Transfer::Part;

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
      if (isNotSpecialized(field)) continue;
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

}  // namespace

DynamicValue buildSpecialization(const ConstView& value, const InternedType& annotated) {
  Transfer transfer;
  const auto [type, part] = Planner(transfer).plan(value.type->stripped(), annotated);
  DynamicValue result{type};
  transfer.run(part, value.data(), blockData(result.block()));
  return result;
}

}  // namespace qex::vornath
