#include "values/coercion.hpp"

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "types/bottom_up.hpp"
#include "types/extents.hpp"
#include "types/relations.hpp"
#include "values/bounds.hpp"
#include "values/copy_plan.hpp"
#include "values/kept_plans.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

using vrnt::ErrorCode;
using vrnt::Exception;
using Step = CopyPlan::Step;

// Finds the names of one list in another, each in constant time: a list that is in the same order
// is followed, and only at the first name out of order is a table made.
class NameTable {
 public:
  template <typename Items, typename NameOf>
  std::optional<std::size_t> find(std::string_view name, std::size_t guess, const Items& items,
                                  NameOf nameOf) {
    if (guess < items.size() && nameOf(items[guess]) == name) return guess;
    if (positions_.empty()) {
      positions_.reserve(items.size());
      for (std::size_t i = 0; i < items.size(); ++i) positions_.emplace(nameOf(items[i]), i);
    }
    const auto found = positions_.find(name);
    return found == positions_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  std::unordered_map<std::string_view, std::size_t> positions_;
};

// Works out how values of one type become values of another. Whether two types relate is decided
// from the pairs of their parts, which are needed anyway: a question for each pair of types that
// meets, however often it meets.
struct Outcome {
  bool related;
  Step step;
};

using Match = std::pair<std::size_t, std::size_t>;  // indices of fields

class Planner : public BottomUp<Planner, TypePair, Outcome, Match> {
 public:
  Planner(CopyPlan& plan, bool lenient) : plan_(plan), lenient_(lenient) {}

  // Both without metadata.
  Outcome plan(const InternedType& source, const InternedType& target) {
    return outcomeOf({&source, &target});
  }

  std::optional<Outcome> open(Task& task) {
    const auto [source, target] = task.key;
    if (source == target) return Outcome{true, plan_.copy(*target)};
    return std::visit([&](const auto& s, const auto& t) { return open(task, s, t); },
                      source->desc(), target->desc());
  }

  Outcome close(const Task& task) {
    return std::visit([&](const auto& s, const auto& t) { return close(task, s, t); },
                      task.key.first->desc(), task.key.second->desc());
  }

 private:
  static std::optional<Outcome> open(Task& task, const Type::TStruct& s, const Type::TStruct& t) {
    NameTable labels;
    for (std::size_t i = 0; i < s.fields.size(); ++i) {
      const auto found =
          labels.find(s.fields[i].label, i, t.fields,
                      [](const Type::Field& field) -> std::string_view { return field.label; });
      if (!found) continue;
      task.inner.emplace_back(s.fields[i].type.get(), t.fields[*found].type.get());
      task.notes.emplace_back(i, *found);
    }
    return std::nullopt;
  }

  template <typename D>
  static std::optional<Outcome> open(Task& task, const Type::TArrayND<D>& s,
                                     const Type::TArrayND<D>& t) {
    task.inner.emplace_back(s.element.get(), t.element.get());
    return std::nullopt;
  }

  template <typename S, typename T>
  std::optional<Outcome> open(Task& task, const S& s, const T& t) {
    const auto [source, target] = task.key;
    const bool related = isSubType(*source, *target);
    return Outcome{related, related ? plan_.copy(*target) : planConversion(*source, *target, s, t)};
  }

  // The label says which constructor is meant, so a code is looked up in a table of the other's.
  Step planConversion(const InternedType&, const InternedType& target, const Type::TEnum& s,
                      const Type::TEnum& t) {
    constexpr std::int32_t kMissing = -1;
    std::vector<std::int32_t> codes;
    codes.reserve(s.constructors.size());
    NameTable names;
    for (std::size_t i = 0; i < s.constructors.size(); ++i) {
      const auto found = names.find(s.constructors[i].name, i, t.constructors,
                                    [](const Type::Constructor& constructor) -> std::string_view {
                                      return constructor.name;
                                    });
      codes.push_back(found ? static_cast<std::int32_t>(*found) : kMissing);
    }
    const std::size_t bytes = codes.size() * sizeof(std::int32_t) + 4 * sizeof(void*);
    return plan_.act(
        [&s, &target, lenient = lenient_, codes = std::move(codes)](const char* from, char* to) {
          std::int32_t code;
          std::memcpy(&code, from, sizeof(code));
          const std::string& label = s.constructorName(code);
          const std::int32_t targetCode = codes[static_cast<std::size_t>(code)];
          if (targetCode != kMissing) {
            std::memcpy(to, &targetCode, sizeof(targetCode));
          } else if (!lenient) {
            throw Exception(ErrorCode::InvalidArguments,
                            "Enum constructor {} not found in type {}.", label, target.text());
          }
        },
        bytes);
  }

  template <typename S, typename T>
  Step planConversion(const InternedType& source, const InternedType& target, const S&, const T&) {
    if (lenient_) return {};
    return plan_.act([&source, &target](const char*, char*) {
      throw Exception(ErrorCode::InvalidArguments, "Cannot convert {} to {}: Types are unrelated.",
                      source.text(), target.text());
    });
  }

  Outcome close(const Task& task, const Type::TStruct& s, const Type::TStruct& t) {
    const InternedType& target = *task.key.second;
    // The fields of the same labels are those of the same indices then.
    bool related = isSubTypeGivenParts(*task.key.first, target);
    std::vector<Step> steps;
    steps.reserve(task.notes.size());
    for (std::size_t i = 0; i < task.notes.size(); ++i) {
      const auto [from, to] = task.notes[i];
      const Outcome& field = outcome(task, i);
      related = related && field.related;
      steps.push_back(field.step.at(s.offsets[from], t.offsets[to]));
    }
    if (related) return {true, plan_.copy(target)};
    return {false, plan_.sequence(steps)};
  }

  template <typename D>
  Outcome close(const Task& task, const Type::TArrayND<D>& s, const Type::TArrayND<D>& t) {
    const Outcome& element = outcome(task, 0);
    if (element.related && isSubTypeGivenParts(*task.key.first, *task.key.second)) {
      return {true, plan_.copy(*task.key.second)};
    }
    if (!s.shape || !t.shape) {
      return {false, plan_.act([](const char*, char*) { throw std::bad_optional_access(); })};
    }
    return {false, planCommonElements(element.step, s, s.element->size(), t, t.element->size())};
  }

  template <typename S, typename T>
  Outcome close(const Task&, const S&, const T&) {
    return {};  // is never open
  }

  // The elements that both arrays have, x fastest.
  Step planCommonElements(Step step, const Extents& from, std::uint64_t fromStride,
                          const Extents& to, std::uint64_t toStride) {
    if (!hasElements(from) || !hasElements(to)) return {};
    for (std::size_t i = 0; i < from.rank(); ++i) {
      step = plan_.repeat(step, static_cast<std::uint64_t>(std::min(from[i], to[i])), fromStride,
                          toStride);
      fromStride *= static_cast<std::uint64_t>(from[i]);
      toStride *= static_cast<std::uint64_t>(to[i]);
    }
    return step;
  }

  // Extents whose product ran over don't say where elements lie: such an array counts as empty.
  static bool hasElements(const Extents& extents) {
    return extents.count() > 0 && !extents.overflow();
  }

  CopyPlan& plan_;
  bool lenient_;
};

}  // namespace

BlockPtr coerceToBlock(const InternedType& sourceType, const char* source,
                       const InternedType& targetType, bool lenient) {
  const InternedType& from = sourceType.stripped();
  const InternedType& to = targetType.stripped();
  if (&from == &to) return copyToBlock(to, source);
  const auto make = [&] {
    PairPlan plan;
    const auto [related, step] = Planner(plan.copies, lenient).plan(from, to);
    plan.whole = step;
    plan.related = related;
    return plan;
  };
  const auto run = [&](const PairPlan& plan) {
    if (plan.related) return copyToBlock(to, source);
    BlockPtr result = makeDefaultBlock(targetType);
    plan.copies.run(plan.whole, source, blockData(result.get()));
    return result;
  };
  const PlanKind kind = lenient ? PlanKind::LenientCoercion : PlanKind::StrictCoercion;
  return withPlan(kind, from, to, make, run);
}

}  // namespace qex::vornath
