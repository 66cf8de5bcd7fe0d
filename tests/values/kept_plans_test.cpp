#include "values/kept_plans.hpp"

#include <optional>
#include <string>
#include <vector>

#include "values/coercion.hpp"
#include "values/specialization.hpp"
#include "values_support.hpp"

namespace qex::vornath::test {
namespace {

std::size_t liveTypes() { return Type::get_factory(true)->liveTypes(); }

const PairPlan* lenientPlan(const DynamicValue& source, const TypePtr& target) {
  return findKeptPlan(PlanKind::LenientCoercion, source.typeOf(), target->stripped());
}

TEST(KeptPlans, ServeTheSecondValueOfAPairOfTypes) {
  const TypePtr target = type("{ float b; int @default=7 c; int a; }");
  const DynamicValue first = value("{ a = 1; b = 2.0; }");
  EXPECT_EQ(lenientPlan(first, target), nullptr);
  EXPECT_EQ(text(coerceValue(first, target, true)), "{ b = 2.0; c = 7; a = 1; }");
  const PairPlan* const kept = lenientPlan(first, target);
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(text(coerceValue(value("{ a = 3; b = 4.0; }"), target, true)),
            "{ b = 4.0; c = 7; a = 3; }");
  EXPECT_EQ(lenientPlan(first, target), kept);
}

TEST(KeptPlans, AreOneForAllAnnotationsOfATarget) {
  const DynamicValue v = value("{ a = 1; }");
  EXPECT_EQ(text(coerceValue(v, type("{ int @default=5 b; int a; }"), true)), "{ b = 5; a = 1; }");
  const TypePtr other = type("{ int @default=6 b; int a; }");
  EXPECT_EQ(lenientPlan(v, other), nullptr);  // the other types of that target are destroyed
  EXPECT_EQ(text(coerceValue(v, other, true)), "{ b = 6; a = 1; }");
  EXPECT_NE(lenientPlan(v, type("{ int b; int a; }")), nullptr);
}

TEST(KeptPlans, OfStrictAndLenientCoercionDiffer) {
  const TypePtr target = type("{ float a; }");
  const DynamicValue v = value("{ a = 1; }");
  EXPECT_EQ(text(coerceValue(v, target, true)), "{ a = 0.0; }");
  EXPECT_REFUSED(coerceValue(v, target, false),
                 "Cannot convert int to float: Types are unrelated.");
  EXPECT_EQ(text(coerceValue(v, target, true)), "{ a = 0.0; }");
  EXPECT_REFUSED(coerceValue(v, target, false),
                 "Cannot convert int to float: Types are unrelated.");
}

TEST(KeptPlans, KeepNeitherOfTheirTypesAlive) {
  value("{ kp_a = 1; }");  // from then on the type of ints stays
  const KeptPlanCount before = countKeptPlans();
  const std::size_t types = liveTypes();
  {
    std::optional<DynamicValue> source = value("{ kp_a = 1; kp_b = 2; }");
    std::optional<TypePtr> target = type("{ int kp_b; int kp_c; }");
    coerceValue(*source, *target, true);
    EXPECT_EQ(countKeptPlans().plans, before.plans + 1);
    EXPECT_GT(countKeptPlans().bytes, before.bytes);
    source.reset();
    EXPECT_EQ(countKeptPlans().plans, before.plans);
    EXPECT_EQ(countKeptPlans().bytes, before.bytes);
    source = value("{ kp_a = 1; kp_b = 2; }");
    EXPECT_EQ(text(coerceValue(*source, *target, true)), "{ kp_b = 2; kp_c = 0; }");
    target.reset();
    EXPECT_EQ(countKeptPlans().plans, before.plans);
  }
  EXPECT_EQ(liveTypes(), types);
}

TEST(KeptPlans, OfSpecializationGoWithTheTypesTheyAreOf) {
  const KeptPlanCount before = countKeptPlans();
  const std::size_t types = liveTypes();
  {
    std::optional<TypePtr> annotated =
        type("{ int kp_a; float @no_specialize kp_b; { int @no_specialize c; int d; }[2] kp_e; }");
    std::optional<DynamicValue> v{DynamicValue(*annotated)};
    const std::string words = "{ kp_a = 0; kp_e = [ { d = 0; }, { d = 0; } ]; }";
    EXPECT_EQ(text(buildSpecialization(v->view(), **annotated)), words);
    EXPECT_EQ(countKeptPlans().plans, before.plans + 1);
    EXPECT_EQ(text(buildSpecialization(v->view(), **annotated)), words);
    annotated.reset();
    EXPECT_EQ(countKeptPlans().plans, before.plans);
  }
  EXPECT_EQ(liveTypes(), types);
}

TEST(KeptPlans, OfAValueThatStaysWholeDoNotKeepItsTypeAlive) {
  const std::size_t types = liveTypes();
  {
    // The annotated type is a part of the value's type.
    const TypePtr whole = type("{ { void* kp_a; }* kp_a; }");
    const TypePtr part = type("{ void* kp_a; }");
    const DynamicValue v(whole);
    EXPECT_EQ(buildSpecialization(v.view(), *part).type(), whole);
    EXPECT_EQ(buildSpecialization(v.view(), *part).type(), whole);
    EXPECT_EQ(buildSpecialization(v.view(), *whole).type(), whole);
  }
  EXPECT_EQ(liveTypes(), types);
}

TEST(KeptPlans, AreLimitedInNumberForEachTarget) {
  const KeptPlanCount before = countKeptPlans();
  const TypePtr target = type("{ int kp_limit; int other; }");
  std::vector<DynamicValue> sources;
  for (std::size_t i = 0; i < 2 * kMaxPlansOfType; ++i) {
    sources.push_back(
        value("{ x" + std::to_string(i) + " = 0; kp_limit = " + std::to_string(i) + "; }"));
  }
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = 0; i < sources.size(); ++i) {
      EXPECT_EQ(text(coerceValue(sources[i], target, true)),
                "{ kp_limit = " + std::to_string(i) + "; other = 0; }");
    }
    EXPECT_EQ(countKeptPlans().plans, before.plans + kMaxPlansOfType);
  }
  EXPECT_NE(lenientPlan(sources.front(), target), nullptr);
  EXPECT_EQ(lenientPlan(sources.back(), target), nullptr);
  sources.erase(sources.begin());
  EXPECT_EQ(countKeptPlans().plans, before.plans + kMaxPlansOfType - 1);
  coerceValue(sources.back(), target, true);
  EXPECT_NE(lenientPlan(sources.back(), target), nullptr);
  sources.clear();
  EXPECT_EQ(countKeptPlans().plans, before.plans);
}

// Structs of so many fields that have nothing to merge: a step for each.
TypePtr wide(int fields, bool backwards, const std::string& last) {
  std::vector<Type::Field> all;
  const TypePtr t = type("int");
  for (int i = 0; i < fields; ++i) {
    all.emplace_back(t, "f" + std::to_string(backwards ? fields - 1 - i : i));
  }
  all.emplace_back(t, last);
  return Type::get_factory(true)->makeType(Type::TStruct(std::move(all)));
}

TEST(KeptPlans, AreLimitedInBytes) {
  const KeptPlanCount before = countKeptPlans();
  const DynamicValue tooWide(wide(200000, false, "z"));
  const TypePtr tooWideTarget = wide(200000, true, "z");
  coerceValue(tooWide, tooWideTarget, true);
  EXPECT_EQ(lenientPlan(tooWide, tooWideTarget), nullptr);
  const DynamicValue source(wide(100000, false, "z"));
  std::vector<TypePtr> targets;
  for (int i = 0; i < 8; ++i) {
    targets.push_back(wide(100000, true, "z" + std::to_string(i)));
    coerceValue(source, targets.back(), true);
    EXPECT_LE(countKeptPlans().bytes, kMaxKeptBytes);
  }
  EXPECT_NE(lenientPlan(source, targets.front()), nullptr);
  EXPECT_EQ(lenientPlan(source, targets.back()), nullptr);
  targets.clear();
  EXPECT_EQ(countKeptPlans().plans, before.plans);
  EXPECT_EQ(countKeptPlans().bytes, before.bytes);
}

}  // namespace
}  // namespace qex::vornath::test
