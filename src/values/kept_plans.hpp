/// Copy plans that are kept with the types that they were built from, so that the second value of a
/// pair of types needs no planning.
#ifndef VORNATH_VALUES_KEPT_PLANS_HPP
#define VORNATH_VALUES_KEPT_PLANS_HPP

#include <cstddef>
#include <cstdint>
#include <utility>

#include "types/type.hpp"
#include "values/copy_plan.hpp"

namespace qex::vornath {

enum class PlanKind : std::uintptr_t { LenientCoercion, StrictCoercion, Specialization };

/// What turns values of one type into values of another.
struct PairPlan {
  CopyPlan copies;
  CopyPlan::Step whole;
  /// Coercion: whether the result is a copy of the source's bytes, whatever `whole` says.
  bool related = false;
  /// Specialization: the type of the results. Null if it is the source's own, which a kept plan
  /// must not keep alive.
  TypePtr result{};
};

// A plan is kept by its target, or annotated, type and dropped when it or the source type is
// destroyed. It keeps neither of them alive; a specialization's keeps the type of its results,
// which is smaller than both. Each target keeps up to kMaxPlansOfType plans, and all types together
// up to kMaxKeptBytes of plans, not counting the lists that hold them: what is above that is
// planned for each value. A plan that is kept is not replaced while both types live, so that
// readers need neither a lock nor a count: who runs a plan has both types.

inline constexpr std::size_t kMaxPlansOfType = 64;
/// In bytes, for a single plan and for all of them.
inline constexpr std::size_t kMaxKeptPlanBytes = std::size_t{4} << 20;
inline constexpr std::size_t kMaxKeptBytes = std::size_t{16} << 20;

/// Returns the kept plan, or null. It lives as long as both types. Takes no lock.
const PairPlan* findKeptPlan(PlanKind kind, const InternedType& source,
                             const InternedType& target) noexcept;

/// Keeps the plan if there is room for it. Returns the kept plan, which is that of another thread
/// if that one came first, or null; `plan` is then unchanged. Throws std::bad_alloc.
const PairPlan* keepPlan(PlanKind kind, const InternedType& source, const InternedType& target,
                         PairPlan& plan);

/// Returns what `run` returns for the plan of the two types, which `make` builds unless it is kept.
/// Throws what both throw, and std::bad_alloc.
template <typename Make, typename Run>
auto withPlan(PlanKind kind, const InternedType& source, const InternedType& target, Make&& make,
              Run&& run) {
  if (const PairPlan* const kept = findKeptPlan(kind, source, target)) return run(*kept);
  PairPlan made = std::forward<Make>(make)();
  const PairPlan* const kept = keepPlan(kind, source, target, made);
  return run(kept != nullptr ? *kept : made);
}

/// The kept plans of all types, for tests and measurements.
struct KeptPlanCount {
  std::size_t plans;
  std::size_t bytes;
};
KeptPlanCount countKeptPlans();

}  // namespace qex::vornath

#endif
