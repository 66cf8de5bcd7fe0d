#include "values/kept_plans.hpp"

#include <array>
#include <atomic>
#include <mutex>

namespace qex::vornath {
namespace {

class PlansOfType;

// A kept plan: in a slot of its target's, and in a list of all plans of its source.
struct KeptPlan {
  explicit KeptPlan(std::size_t planBytes) : bytes(planBytes) {}

  PairPlan plan;
  std::size_t bytes;
  PlansOfType* source = nullptr;
  std::atomic<std::uintptr_t>* key = nullptr;  // of its slot
  KeptPlan* previous = nullptr;
  KeptPlan* next = nullptr;
};

// Guards every change to the slots, the lists and the sums. Taken last: nothing that takes another
// lock is called under it, and a plan, which may hold the last reference to a type, is destroyed
// behind it.
constinit std::mutex plansMutex;
constinit KeptPlanCount keptPlans{0, 0};

// The address of the source and the kind. Never 0, which marks a free slot.
std::uintptr_t keyOf(PlanKind kind, const InternedType& source) {
  static_assert(alignof(InternedType) >= 4);
  return reinterpret_cast<std::uintptr_t>(&source) | static_cast<std::uintptr_t>(kind);
}

// A slot is written before its key. It is not written again until the source is destroyed, so who
// has the source may read it.
struct Slots {
  static constexpr std::size_t kCount = 8;

  std::array<std::atomic<std::uintptr_t>, kCount> keys{};
  std::array<KeptPlan*, kCount> plans{};
  std::atomic<Slots*> more{nullptr};
};

// Deletes plans that were taken out of the lists, chained through `next`.
void deletePlans(KeptPlan* plan) noexcept {
  while (plan != nullptr) delete std::exchange(plan, plan->next);
}

class PlansOfType final : public KeptWithType {
 public:
  // Those of a type, made on the first request. Throws std::bad_alloc.
  static PlansOfType& of(const InternedType& type) {
    std::atomic<KeptWithType*>& kept = type.kept();
    KeptWithType* first = kept.load(std::memory_order_acquire);
    if (first == nullptr) {
      auto own = std::make_unique<PlansOfType>();
      if (kept.compare_exchange_strong(first, own.get(), std::memory_order_acq_rel)) {
        first = own.release();
      }
    }
    return static_cast<PlansOfType&>(*first);
  }

  PlansOfType() = default;
  PlansOfType(const PlansOfType&) = delete;
  PlansOfType& operator=(const PlansOfType&) = delete;

  ~PlansOfType() override {
    KeptPlan* dropped = nullptr;
    {
      const std::lock_guard guard(plansMutex);
      for (Slots* slots = &slots_; slots != nullptr; slots = slots->more) {
        for (std::size_t i = 0; i < Slots::kCount; ++i) {
          if (slots->keys[i].load(std::memory_order_relaxed) != 0) {
            dropLocked(slots->plans[i], dropped);
          }
        }
      }
      while (plansOfSource_ != nullptr) dropLocked(plansOfSource_, dropped);
    }
    deletePlans(dropped);
    for (Slots* slots = slots_.more; slots != nullptr;) delete std::exchange(slots, slots->more);
  }

  const PairPlan* find(std::uintptr_t key) const noexcept {
    const Slots* slots = &slots_;
    do {
      for (std::size_t i = 0; i < Slots::kCount; ++i) {
        if (slots->keys[i].load(std::memory_order_acquire) == key) return &slots->plans[i]->plan;
      }
      slots = slots->more.load(std::memory_order_acquire);
    } while (slots != nullptr);
    return nullptr;
  }

  // Finds a free slot for a plan of so many bytes, or makes room for more. Returns false if there
  // is no room. Throws std::bad_alloc.
  bool reserveLocked(std::size_t bytes) {
    if (bytes > kMaxKeptBytes - keptPlans.bytes) return false;
    Slots* slots = &slots_;
    for (std::size_t count = Slots::kCount;; count += Slots::kCount) {
      for (std::size_t i = 0; i < Slots::kCount; ++i) {
        if (slots->keys[i].load(std::memory_order_relaxed) != 0) continue;
        freeSlots_ = slots;
        freeSlot_ = i;
        return true;
      }
      Slots* next = slots->more.load(std::memory_order_relaxed);
      if (next == nullptr) {
        if (count >= kMaxPlansOfType) return false;
        next = new Slots;
        slots->more.store(next, std::memory_order_release);
      }
      slots = next;
    }
  }

  // Puts the plan into the slot that reserveLocked() found.
  const PairPlan* insertLocked(std::uintptr_t key, PlansOfType& source, KeptPlan* plan) noexcept {
    freeSlots_->plans[freeSlot_] = plan;
    plan->key = &freeSlots_->keys[freeSlot_];
    source.addLocked(plan);
    plan->key->store(key, std::memory_order_release);
    return &plan->plan;
  }

 private:
  void addLocked(KeptPlan* plan) {
    plan->source = this;
    plan->next = plansOfSource_;
    if (plan->next != nullptr) plan->next->previous = plan;
    plansOfSource_ = plan;
    keptPlans.plans += 1;
    keptPlans.bytes += plan->bytes;
  }

  // Frees the slot and moves the plan to the list of those to delete.
  static void dropLocked(KeptPlan* plan, KeptPlan*& dropped) noexcept {
    plan->key->store(0, std::memory_order_relaxed);
    (plan->previous != nullptr ? plan->previous->next : plan->source->plansOfSource_) = plan->next;
    if (plan->next != nullptr) plan->next->previous = plan->previous;
    keptPlans.plans -= 1;
    keptPlans.bytes -= plan->bytes;
    plan->next = std::exchange(dropped, plan);
  }

  Slots slots_;                        // with this type as the target
  KeptPlan* plansOfSource_ = nullptr;  // with this type as the source
  Slots* freeSlots_ = nullptr;
  std::size_t freeSlot_ = 0;
};

}  // namespace

const PairPlan* findKeptPlan(PlanKind kind, const InternedType& source,
                             const InternedType& target) noexcept {
  const auto* const plans =
      static_cast<const PlansOfType*>(target.kept().load(std::memory_order_acquire));
  return plans != nullptr ? plans->find(keyOf(kind, source)) : nullptr;
}

const PairPlan* keepPlan(PlanKind kind, const InternedType& source, const InternedType& target,
                         PairPlan& plan) {
  plan.copies.shrink();
  const std::size_t bytes = sizeof(KeptPlan) + plan.copies.bytes();
  if (bytes > kMaxKeptPlanBytes) return nullptr;
  PlansOfType& ofSource = PlansOfType::of(source);
  PlansOfType& ofTarget = PlansOfType::of(target);
  auto kept = std::make_unique<KeptPlan>(bytes);
  const std::uintptr_t key = keyOf(kind, source);
  const std::lock_guard guard(plansMutex);
  if (const PairPlan* const first = ofTarget.find(key)) return first;
  if (!ofTarget.reserveLocked(bytes)) return nullptr;
  kept->plan = std::move(plan);
  return ofTarget.insertLocked(key, ofSource, kept.release());
}

KeptPlanCount countKeptPlans() {
  const std::lock_guard guard(plansMutex);
  return keptPlans;
}

}  // namespace qex::vornath
