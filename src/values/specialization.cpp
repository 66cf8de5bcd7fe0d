#include "values/specialization.hpp"

#include <optional>
#include <vector>

#include "types/bottom_up.hpp"
#include "types/extents.hpp"
#include "types/make_type.hpp"
#include "types/parts.hpp"
#include "values/copy_plan.hpp"
#include "values/kept_plans.hpp"

namespace qex::vornath {
namespace {

using Step = CopyPlan::Step;

// Works out what becomes of a value's type under the marks of an annotated one, and how the bytes
// get there. Elements all have one type, so that this is done once for all of them.
struct Outcome {
  TypePtr type;
  Step step;
};

class Planner : public BottomUp<Planner, TypePair, Outcome> {
 public:
  explicit Planner(CopyPlan& plan) : plan_(plan) {}

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
      task.inner.emplace_back(fieldPart(*task.key.first, i).type, &field);
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
    return Outcome{TypePtr(&value), plan_.copy(value)};
  }

  Outcome close(const Task& task, const Type::TStruct& structure) {
    std::vector<Type::Field> fields;
    fields.reserve(task.notes.size());
    for (std::size_t i = 0; i < task.notes.size(); ++i) {
      fields.emplace_back(outcome(task, i).type, structure.fields[task.notes[i]].label);
    }
    TypePtr type = makeType(Type::TStruct(std::move(fields)));
    const Parts to = Parts::of(*type);
    std::vector<Step> steps;
    steps.reserve(task.notes.size());
    for (std::size_t i = 0; i < task.notes.size(); ++i) {
      const std::uint64_t from = fieldPart(*task.key.first, task.notes[i]).offset;
      steps.push_back(outcome(task, i).step.at(from, to[i].offset));
    }
    return {std::move(type), plan_.sequence(steps)};
  }

  template <typename D>
  Outcome close(const Task& task, const Type::TArrayND<D>&) {
    const auto& own = *task.key.first->getIf<Type::TArrayND<D>>();
    const Outcome& element = outcome(task, 0);
    TypePtr type = makeType(Type::TArrayND<D>(element.type, own.shape));
    const Step step = plan_.repeat(element.step, Extents(own).elements(), own.element->size(),
                                   element.type->size());
    return {std::move(type), step};
  }

  template <typename Leaf>
  Outcome close(const Task&, const Leaf&) {
    return {};  // is never open
  }

  CopyPlan& plan_;
};

}  // namespace

BlockPtr buildSpecializedBlock(const InternedType& valueType, const char* value,
                               const InternedType& annotated) {
  const InternedType& own = valueType.stripped();
  const auto make = [&] {
    PairPlan plan;
    const Outcome planned = Planner(plan.copies).plan(own, annotated);
    plan.whole = planned.step;
    if (planned.type != &own) plan.result = planned.type;
    return plan;
  };
  const auto run = [&](const PairPlan& plan) {
    const InternedType& type = plan.result != nullptr ? *plan.result : own;
    BlockPtr result = BlockPtr::first(allocateBlock(type, Fill::Zero));
    plan.copies.run(plan.whole, value, blockData(result.get()));
    return result;
  };
  return withPlan(PlanKind::Specialization, own, annotated, make, run);
}

}  // namespace qex::vornath
