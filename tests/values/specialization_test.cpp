#include "values/specialization.hpp"

#include <limits>

#include "case_count.hpp"
#include "embed/specialization_difference.hpp"
#include "random_values.hpp"
#include "support/small_stack.hpp"
#include "types/relations.hpp"
#include "values/equality.hpp"
#include "values/kept_plans.hpp"

namespace qex::vornath::test {
namespace {

DynamicValue specialized(const std::string& valueText, const std::string& typeText) {
  return buildSpecialization(value(valueText).view(), *type(typeText));
}

TEST(BuildSpecialization, LeavesMarkedFieldsOut) {
  const DynamicValue result =
      specialized("{ a = 1; b = 2.0; c = 3; }", "{ int a; float @no_specialize b; int c; }");
  EXPECT_EQ(text(result), "{ a = 1; c = 3; }");
  EXPECT_EQ(result.type(), type("{ int a; int c; }"));
  EXPECT_EQ(count(result), 1u);
}

TEST(BuildSpecialization, TakesTheKeyWhateverItsEntry) {
  EXPECT_EQ(text(specialized("{ a = 1; b = 2; c = 3; d = 4; }",
                             "{ int @no_specialize=false a; int @no_specialize=\"x\" b; "
                             "int @specialize c; int @no_specialized d; }")),
            "{ c = 3; d = 4; }");
}

TEST(BuildSpecialization, OfAllFieldsMarkedIsAnEmptyStruct) {
  const DynamicValue result =
      specialized("{ a = 1; b = 2.0; }", "{ int @no_specialize a; float @no_specialize b; }");
  EXPECT_EQ(result.type(), type("{ }"));
  EXPECT_EQ(
      text(specialized("{ s = { a = 1; }; t = 2; }", "{ { int @no_specialize a; } s; int t; }")),
      text(DynamicValue::structure({{"s", DynamicValue(type("{ }"))}, {"t", value("2")}})));
}

TEST(BuildSpecialization, DropsAMarkedFieldFromEachElement) {
  const DynamicValue result =
      specialized("[ { k = 1; s = { a = 2.0; b = 3; }; }, { k = 4; s = { a = 5.0; b = 6; }; } ]",
                  "{ int k; { float @no_specialize a; int b; } s; }[2]");
  EXPECT_EQ(text(result), "[ { k = 1; s = { b = 3; }; }, { k = 4; s = { b = 6; }; } ]");
  EXPECT_EQ(result.type(), type("{ int k; { int b; } s; }[2]"));
}

TEST(BuildSpecialization, OfArraysOfEveryRankKeepsTheExtents) {
  const char* const element = "{ int a; int @no_specialize b; }";
  const std::pair<const char*, const char*> cases[] = {
      {"[ { a = 1; b = 9; }, { a = 2; b = 9; } | 2, 1 ]", "[ { a = 1; }, { a = 2; } | 2, 1 ]"},
      {"[ { a = 1; b = 9; }, { a = 2; b = 9; } | 1, 2, 1 ]",
       "[ { a = 1; }, { a = 2; } | 1, 2, 1 ]"},
      {"[ { a = 1; b = 9; }, { a = 2; b = 9; } | 1, 1, 1, 2 ]",
       "[ { a = 1; }, { a = 2; } | 1, 1, 1, 2 ]"}};
  const char* const shapes[] = {"[2,1]", "[1,2,1]", "[1,1,1,2]"};
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(text(specialized(cases[i].first, element + std::string(shapes[i]))), cases[i].second);
  }
}

TEST(BuildSpecialization, OfNoElementsHasTheSpecializedElementType) {
  const TypePtr annotated = type("{ int a; int @no_specialize b; }[0]");
  EXPECT_EQ(buildSpecialization(DynamicValue(annotated).view(), *annotated).type(),
            type("{ int a; }[0]"));
  const TypePtr plane = type("{ { int a; int @no_specialize b; }[2,0] x; }");
  EXPECT_EQ(buildSpecialization(DynamicValue(plane).view(), *plane).type(),
            type("{ { int a; }[2,0] x; }"));
}

TEST(BuildSpecialization, LooksAtTheMarksOfFieldsOnly) {
  EXPECT_EQ(text(specialized("{ a = 1; }", "{ int a; } @no_specialize")), "{ a = 1; }");
  EXPECT_EQ(text(specialized("5", "int @no_specialize")), "5");
  EXPECT_EQ(text(specialized("[ 1, 2 ]", "int @no_specialize[2]")), "[ 1, 2 ]");
  EXPECT_EQ(text(specialized("{ a = [ 1, 2 ]; }", "{ int @no_specialize[2] a; }")),
            "{ a = [ 1, 2 ]; }");
  EXPECT_EQ(text(specialized("{ a = [ 1, 2 ]; b = 3; }", "{ int[2] @no_specialize a; int b; }")),
            "{ b = 3; }");
}

TEST(BuildSpecialization, OfAStrippedTypeKeepsEverything) {
  const DynamicValue v = value("{ a = 1; b = [ { c = &2; } ]; e = B : enum { A; B; }; }");
  const DynamicValue result = buildSpecialization(v.view(), v.typeOf());
  EXPECT_EQ(result.type(), v.type());
  EXPECT_NE(result.block(), v.block());
  EXPECT_TRUE(valuesEqual(result.view(), v.view(), 0));
}

TEST(BuildSpecialization, TakesReferencesIncludedAndFollowsNone) {
  const DynamicValue referee = value("{ a = 1; b = 2; }");
  const DynamicValue v = DynamicValue::structure({{"k", DynamicValue::reference(referee)},
                                                  {"m", DynamicValue::reference(referee)},
                                                  {"f", DynamicValue::foreign(type("void*"), 5)}});
  ASSERT_EQ(count(referee), 3u);
  {
    const DynamicValue result =
        buildSpecialization(v.view(), *type("{ { int a; int @no_specialize b; }* @no_specialize k; "
                                            "{ int a; int @no_specialize b; }* m; void* f; }"));
    EXPECT_EQ(result.type(), type("{ { int a; int b; }* m; void* f; }"));
    EXPECT_EQ(at<std::uint64_t>(result), wordOfBlock(referee.block()));
    EXPECT_EQ(at<std::uint64_t>(result, 8), 11u);
    EXPECT_EQ(count(referee), 4u);
  }
  EXPECT_EQ(count(referee), 3u);
}

TEST(BuildSpecialization, KeepsTheTypesOfTheValue) {
  EXPECT_EQ(
      specialized("{ e = B : enum { A; B; }; r = &[ 1, 2 ]; }", "{ int e; int[]* r; }").type(),
      type("{ enum { A; B; } e; int[2]* r; }"));
  EXPECT_EQ(specialized("[ A : enum { A; B; } ]", "int[1]").type(), type("enum { A; B; }[1]"));
}

TEST(BuildSpecialization, OfOpenExtentsFails) {
  for (const char* const open : {"int[]", "int[,]", "int[,,]", "int[,,,]"}) {
    EXPECT_THROW(buildSpecialization(DynamicValue(type(open)).view(), *type(open)),
                 std::bad_optional_access);
  }
}

TEST(BuildSpecialization, ByATypeOfOpenExtentsFailsWhateverTheValueHas) {
  for (const auto& [text, open] :
       {std::pair("[ 1.0, 2.0 ]", "float[]"), std::pair("[ 1, 2 | 1, 2 ]", "int[,]"),
        std::pair("[ 1, 2 | 1, 2, 1 ]", "int[,,]"), std::pair("[ 1, 2 | 1, 1, 1, 2 ]", "int[,,,]"),
        std::pair("[ { a = 1; } ]", "{ int a; }[]")}) {
    EXPECT_THROW(specialized(text, open), std::bad_optional_access) << open;
  }
  // Behind a reference nothing is visited.
  EXPECT_EQ(specialized("&[ 1, 2 ]", "int[]*").type(), type("int[2]*"));
}

TEST(BuildSpecialization, OfAnotherFormThanTheTypeFails) {
  EXPECT_THROW(specialized("1", "{ int a; }"), std::bad_variant_access);
  EXPECT_THROW(specialized("1", "int[2]"), std::bad_variant_access);
}

TEST(BuildSpecialization, OfAPartOfAValue) {
  const DynamicValue v = value("{ x = 1; y = [ { a = 2; b = 3; }, { a = 4; b = 5; } ]; }");
  EXPECT_EQ(text(buildSpecialization(v.view().field("y").element(1),
                                     *type("{ int @no_specialize a; int b; }"))),
            "{ b = 5; }");
}

TEST(BuildSpecialization, MakesNoNewTypeTheSecondTime) {
  const TypePtr annotated = type("{ int a_kept; float @no_specialize b; int[2] c; }");
  const DynamicValue v(annotated);
  const DynamicValue first = buildSpecialization(v.view(), *annotated);
  const std::size_t types = Type::get_factory(true)->liveTypes();
  const DynamicValue second = buildSpecialization(v.view(), *annotated);
  EXPECT_EQ(second.type(), first.type());
  EXPECT_EQ(Type::get_factory(true)->liveTypes(), types);
}

TEST(BuildSpecialization, OfTenThousandFields) {
  const TypePtr plain = type("int");
  const TypePtr marked = type("int @no_specialize");
  std::vector<Type::Field> fields;
  for (int i = 0; i < 10000; ++i) {
    fields.emplace_back(i % 2 == 0 ? plain : marked, "f" + std::to_string(i));
  }
  const TypePtr annotated = makeType(Type::TStruct(std::move(fields)));
  const DynamicValue v = DynamicValue::filled(annotated, [](const InternedType&, char* data) {
    for (int i = 0; i < 10000; ++i) std::memcpy(data + 4 * i, &i, sizeof(i));
  });
  const DynamicValue result = buildSpecialization(v.view(), *annotated);
  ASSERT_EQ(result.typeOf().size(), 20000u);
  for (std::uint64_t i = 0; i < 5000; ++i) {
    ASSERT_EQ(at<std::int32_t>(result, 4 * i), 2 * static_cast<std::int32_t>(i));
  }
}

TEST(BuildSpecialization, OfAMillionElements) {
  const TypePtr annotated = type("{ int a; float @no_specialize x; int b; }[1000,1000]");
  const DynamicValue v = DynamicValue::filled(annotated, [](const InternedType& t, char* data) {
    for (std::uint64_t i = 0; i < t.size() / 4; ++i) {
      const auto word = static_cast<std::int32_t>(i);
      std::memcpy(data + 4 * i, &word, sizeof(word));
    }
  });
  const DynamicValue result = buildSpecialization(v.view(), *annotated);
  EXPECT_EQ(result.type(), type("{ int a; int b; }[1000,1000]"));
  for (std::uint64_t i = 0; i < 1000000; ++i) {
    ASSERT_EQ(at<std::int32_t>(result, 8 * i), static_cast<std::int32_t>(3 * i));
    ASSERT_EQ(at<std::int32_t>(result, 8 * i + 4), static_cast<std::int32_t>(3 * i + 2));
  }
}

TEST(BuildSpecialization, OfDeepNestingNeedsNoStack) {
  vornath_test::runOnStack(vornath_test::kSmallStack, [] {
    const TypePtr annotated = nested(type("{ int a; int @no_specialize b; }"));
    const std::int32_t words[] = {3, 4};
    const DynamicValue v(annotated, words);
    const DynamicValue result = buildSpecialization(v.view(), *annotated);
    EXPECT_EQ(result.type(), nested(type("{ int a; }")));
    EXPECT_EQ(at<std::int32_t>(result), 3);

    const std::int32_t kept[] = {5, 4}, dropped[] = {3, 5};
    EXPECT_TRUE(specializationDiffers(v.view(), DynamicValue(annotated, kept).view(), *annotated));
    EXPECT_FALSE(
        specializationDiffers(v.view(), DynamicValue(annotated, dropped).view(), *annotated));
  });
}

// The slow walk: a value for each part.

DynamicValue slowBuild(const ConstView& v, const InternedType& annotated);

bool marked(const InternedType& t) { return t.metadata().count("no_specialize") != 0; }

DynamicValue slowStep(const Type::TStruct& structure, const ConstView& v) {
  std::vector<DynamicValue::Field> fields;
  for (std::size_t i = 0; i < structure.fields.size(); ++i) {
    const Type::Field& field = structure.fields[i];
    if (!marked(*field.type)) fields.push_back({field.label, slowBuild(v.field(i), *field.type)});
  }
  return DynamicValue::structure(fields);
}

ConstView runningElement(const ConstView& array, std::size_t i) {
  const InternedType* const element = arrayElements(*array.type).element;
  return {element, array.offset + i * element->size(), array.owner};
}

template <typename D>
DynamicValue slowStep(const Type::TArrayND<D>& array, const ConstView& v) {
  const auto& own = std::get<Type::TArrayND<D>>(v.type->desc());
  std::vector<DynamicValue> elements;
  for (int i = 0; i < arrayElements(*v.type).count; ++i) {
    elements.push_back(slowBuild(runningElement(v, static_cast<std::size_t>(i)), *array.element));
  }
  const DynamicValue sample(own.element);
  return DynamicValue::array(elements, own.shape.value(),
                             slowBuild(sample.view(), *array.element).type());
}

template <typename Leaf>
DynamicValue slowStep(const Leaf&, const ConstView& v) {
  return DynamicValue(v);
}

DynamicValue slowBuild(const ConstView& v, const InternedType& annotated) {
  return std::visit([&](const auto& desc) { return slowStep(desc, v); }, annotated.desc());
}

// An annotated type, and the type of a value that relates to it.
struct Annotated {
  std::string annotated;
  std::string own;
};

Annotated annotatedType(Random& random, int depth) {
  Annotated t;
  switch (random.below(depth == 0 ? 5 : 9)) {
    case 0:
    case 1:
      t.annotated = t.own = random.base();
      break;
    case 2:
      t.own = random.enumeration();
      t.annotated = random.once(2) ? "int" : t.own;
      break;
    case 3:
      t = random.once(2) ? Annotated{"int[]*", "int[3]*"} : Annotated{"void*", "float*"};
      break;
    case 4:
      t.annotated = t.own = "((int) => float)";
      break;
    case 5:
    case 6: {
      const Annotated element = annotatedType(random, depth - 1);
      const std::string extents = random.extents(1 + random.below(4));
      t = {element.annotated + extents, element.own + extents};
      break;
    }
    default:
      t = {"{ ", "{ "};
      for (const char* label : {"a", "b", "c", "d"}) {
        if (random.once(4)) continue;
        const Annotated field = annotatedType(random, depth - 1);
        t.annotated += field.annotated + " " + label + "; ";
        t.own += field.own + " " + label + "; ";
      }
      t.annotated += "}";
      t.own += "}";
  }
  if (random.once(4)) t.annotated += " @no_specialize";
  if (random.once(4)) t.annotated += " @desc=\"d\"";
  return t;
}

// The first value of a pair of types is built by a plan that is made for it, the others by the kept
// one.
TEST(BuildSpecialization, GivesWhatTheSlowWalkGives) {
  Random random(4321);
  std::vector<DynamicValue> referees{value("1"), value("2")};
  const int pairs = vornath_test::cases(25000);
  int byKeptPlan = 0;
  for (int i = 0; i < pairs; ++i) {
    const Annotated t = annotatedType(random, 3);
    const TypePtr annotated = type(t.annotated);
    const TypePtr own = type(t.own);
    for (int j = 0; j < 5; ++j) {
      const DynamicValue v = random.valueOf(own, referees);
      ASSERT_TRUE(isSubType(v.typeOf(), *annotated)) << t.annotated;
      byKeptPlan += findKeptPlan(PlanKind::Specialization, v.typeOf(), *annotated) != nullptr;
      const auto before = counts(referees);
      {
        const DynamicValue slow = slowBuild(v.view(), *annotated);
        const auto withSlow = counts(referees);
        const DynamicValue fast = buildSpecialization(v.view(), *annotated);
        ASSERT_EQ(fast.type(), slow.type()) << t.annotated;
        ASSERT_TRUE(sameBytes(fast, slow)) << t.annotated;
        EXPECT_EQ(count(fast), 1u);
        for (std::size_t r = 0; r < referees.size(); ++r) {
          ASSERT_EQ(count(referees[r]) - withSlow[r], withSlow[r] - before[r]) << t.annotated;
        }
      }
      ASSERT_EQ(counts(referees), before);
    }
  }
  EXPECT_GE(byKeptPlan, 4 * pairs);
}

bool differ(const std::string& a, const std::string& b, const std::string& typeText) {
  return specializationDiffers(value(a).view(), value(b).view(), *type(typeText));
}

TEST(SpecializationDiffers, OnlyInAMarkedFieldIsFalse) {
  const char* const t = "{ int a; float @no_specialize b; }";
  EXPECT_FALSE(differ("{ a = 1; b = 2.0; }", "{ a = 1; b = 3.0; }", t));
  EXPECT_FALSE(
      valuesEqual(value("{ a = 1; b = 2.0; }").view(), value("{ a = 1; b = 3.0; }").view(), 0));
  EXPECT_TRUE(differ("{ a = 1; b = 2.0; }", "{ a = 2; b = 2.0; }", t));
  EXPECT_FALSE(differ("{ a = 1; b = 2.0; }", "{ a = 1; b = 2.0; }", t));
}

TEST(SpecializationDiffers, OfAMarkedWholeIsFalseForAnyTwoValues) {
  EXPECT_FALSE(differ("1", "2", "int @no_specialize"));
  EXPECT_FALSE(differ("{ a = 1; }", "{ a = 2; }", "{ int a; } @no_specialize"));
  EXPECT_TRUE(differ("{ a = 1; }", "{ a = 2; }", "{ int a; }"));
}

TEST(SpecializationDiffers, WalksFieldsAndElements) {
  const char* const t = "{ int k; { int @no_specialize a; int b; }[2] s; }";
  const char* const v = "{ k = 0; s = [ { a = 1; b = 2; }, { a = 3; b = 4; } ]; }";
  EXPECT_FALSE(differ(v, "{ k = 0; s = [ { a = 9; b = 2; }, { a = 9; b = 4; } ]; }", t));
  EXPECT_TRUE(differ(v, "{ k = 0; s = [ { a = 1; b = 2; }, { a = 3; b = 5; } ]; }", t));
  EXPECT_TRUE(differ(v, "{ k = 1; s = [ { a = 1; b = 2; }, { a = 3; b = 4; } ]; }", t));
  EXPECT_TRUE(differ("[ 1, 2, 3, 4 | 2, 2 ]", "[ 1, 2, 3, 5 | 2, 2 ]", "int[2,2]"));
  EXPECT_FALSE(differ("[ 1, 2 | 1, 2, 1 ]", "[ 1, 2 | 1, 2, 1 ]", "int[1,2,1]"));
  EXPECT_TRUE(differ("[ 1, 2 | 1, 2, 1, 1 ]", "[ 1, 3 | 1, 2, 1, 1 ]", "int[1,2,1,1]"));
}

// A mark on an element or below a marked field hides nothing and reveals nothing.
TEST(SpecializationDiffers, LooksAtTheMarksOfFieldsOnlyBelowTheTop) {
  EXPECT_TRUE(differ("[ 1 ]", "[ 2 ]", "int @no_specialize[1]"));
  EXPECT_FALSE(
      differ("{ s = { a = 1; }; }", "{ s = { a = 2; }; }", "{ { int a; } @no_specialize s; }"));
}

TEST(SpecializationDiffers, ComparesLeavesWithoutTolerance) {
  EXPECT_TRUE(differ("1.0", "1.0000001", "float"));
  EXPECT_FALSE(differ("0.0", "-0.0", "float"));
  const DynamicValue nan =
      DynamicValue::base(Type::TBasetype::Float, std::numeric_limits<float>::quiet_NaN());
  EXPECT_TRUE(specializationDiffers(nan.view(), nan.view(), *type("float")));
  const std::int32_t one = 1, ones = -1;
  EXPECT_FALSE(specializationDiffers(DynamicValue(type("bool"), &one).view(),
                                     DynamicValue(type("bool"), &ones).view(), *type("bool")));
  EXPECT_FALSE(differ("&1", "&1", "int*"));
  EXPECT_TRUE(differ("&1", "&2", "int*"));
  EXPECT_TRUE(differ("&1", "&1.0", "void*"));
  EXPECT_TRUE(differ("A : enum { A; B; }", "B : enum { A; B; }", "enum { A; B; }"));
}

TEST(SpecializationDiffers, OfDifferentExtentsIsTrue) {
  EXPECT_TRUE(differ("[ 1, 2 ]", "[ 1, 2, 3 ]", "int[]"));
  EXPECT_FALSE(differ("[ 1, 2 ]", "[ 1, 2 ]", "int[]"));
}

TEST(SpecializationDiffers, OfNoPartsIsFalse) {
  EXPECT_FALSE(differ("{ }", "{ }", "{ }"));
  EXPECT_FALSE(differ("[ : int ]", "[ : int ]", "int[0]"));
}

TEST(SpecializationDiffers, OfOpenExtentsFails) {
  const DynamicValue open(type("{ int a; }[]"));
  EXPECT_THROW(specializationDiffers(open.view(), open.view(), open.typeOf()),
               std::bad_optional_access);
}

TEST(SpecializationDiffers, IsWhatTheTwoResultsSay) {
  Random random(99);
  std::vector<DynamicValue> referees{value("1"), value("2")};
  int differing = 0;
  for (int i = 0; i < 4000; ++i) {
    const Annotated t = annotatedType(random, 3);
    const TypePtr annotated = type(t.annotated);
    const DynamicValue a = random.valueOf(type(t.own), referees);
    DynamicValue b = a;
    if (const std::uint64_t size = a.typeOf().size(); size != 0 && !random.once(4)) {
      // One byte off where no reference lies.
      const auto offset = static_cast<std::uint64_t>(random.below(static_cast<int>(size)));
      const auto& slots = a.typeOf().refSlots();
      if (std::find(slots.begin(), slots.end(), offset / kWordSize) == slots.end()) {
        vrntValue_t*& handle = b.blockHandle();
        const TypePtr byte = type("char");
        const vrntValueView_t view{
            reinterpret_cast<vrntType_t*>(const_cast<InternedType*>(byte.get())), offset};
        vrntValuesError_t* error = nullptr;
        auto* const at = static_cast<unsigned char*>(vrntValueMap(&handle, &view, &error));
        *at = static_cast<unsigned char>(*at ^ 1U);
        vrntValueUnmap(handle, &view);
      }
    }
    const bool expected =
        !marked(*annotated) && !valuesEqual(buildSpecialization(a.view(), *annotated).view(),
                                            buildSpecialization(b.view(), *annotated).view(), 0);
    ASSERT_EQ(specializationDiffers(a.view(), b.view(), *annotated), expected) << t.annotated;
    differing += expected ? 1 : 0;
  }
  EXPECT_GT(differing, 500);
  EXPECT_LT(differing, 3500);
}

std::string remainder(const std::string& full, const std::string& specialized) {
  return specializationRemainder(*type(full), *type(specialized))->text();
}

TEST(SpecializationRemainder, OfATypeAndItselfIsTheEmptyStruct) {
  for (const char* const t : {"int", "{ int a; float b; }", "int[3]", "void*", "{ }",
                              "{ int @no_specialize a; } @x", "((int) => int)", "enum { A; }"}) {
    EXPECT_EQ(specializationRemainder(*type(t), *type(t)), type("{ }")) << t;
  }
}

TEST(SpecializationRemainder, OfARelatedTypeIsTheEmptyStruct) {
  EXPECT_EQ(remainder("int", "enum { A; B; }"), "{ }");
  EXPECT_EQ(remainder("float[]", "float[3]"), "{ }");
  EXPECT_EQ(remainder("{ void* a; int @x b; } @y", "{ int* a; int b; }"), "{ }");
}

TEST(SpecializationRemainder, IsTheFieldsThatAreNotCovered) {
  EXPECT_EQ(remainder("{ int a; float b; int c; }", "{ float b; }"), "{ int a; int c; }");
  EXPECT_EQ(remainder("{ int a; float b; }", "{ }"), "{ int a; float b; }");
  EXPECT_EQ(remainder("{ int a; float b; }", "{ float b; int a; }"), "{ }");
  EXPECT_EQ(remainder("{ { int x; int y; } s; int c; }", "{ { int y; } s; int c; }"),
            "{ { int x; } s; }");
  EXPECT_EQ(remainder("{ { } s; int c; }", "{ int c; }"), "{ { } s; }");
  EXPECT_EQ(remainder("{ { } s; int c; }", "{ { } s; }"), "{ int c; }");
}

TEST(SpecializationRemainder, KeepsTheMetadataOfTheFullType) {
  EXPECT_EQ(remainder("{ int @no_specialize @default=4 a; float b; } @desc=\"d\" @k",
                      "{ float b; } @other"),
            "{ int @default=4 @no_specialize a; } @desc=\"d\" @k");
  EXPECT_EQ(remainder("{ { int @p x; int y; } @q s; } @r", "{ { int y; } s; }"),
            "{ { int @p x; } @q s; } @r");
  EXPECT_EQ(remainder("{ int a; float b; } @r", "{ float b; int a; }"), "{ }");
}

TEST(SpecializationRemainder, OfATypeAndItsSpecializationIsWhatWasMarked) {
  const TypePtr annotated =
      type("{ int a; float @no_specialize b; { int x; int @no_specialize y; } s; }");
  const DynamicValue baked = buildSpecialization(DynamicValue(annotated).view(), *annotated);
  EXPECT_EQ(specializationRemainder(*annotated, baked.typeOf())->text(),
            "{ float @no_specialize b; { int @no_specialize y; } s; }");
}

TEST(SpecializationRemainder, RefusesWhatTheFullTypeDoesNotHave) {
  EXPECT_REFUSED(remainder("int", "float"),
                 "Incompatible type for specialization: type float does not match type int");
  EXPECT_REFUSED(remainder("{ int a; }", "int"),
                 "Incompatible type for specialization: type int does not match type { a; }");
  EXPECT_REFUSED(remainder("{ int a; }", "{ int b; }"),
                 "Incompatible type for specialization: type { b; } does not match type { a; }");
  EXPECT_REFUSED(remainder("{ }", "{ int b; }"),
                 "Incompatible type for specialization: type { b; } does not match type { }");
  EXPECT_REFUSED(remainder("{ int a; }", "{ float a; }"),
                 "Incompatible type for specialization: Type mismatch for field a: type float does "
                 "not match type int");
  EXPECT_REFUSED(remainder("{ int a; }[2]", "{ }[2]"),
                 "Incompatible type for specialization: Array type mismatch: type { } does not "
                 "match type { a; }");
  EXPECT_REFUSED(remainder("enum { A; }", "int"),
                 "Incompatible type for specialization: type int does not match type enum { A; }");
  EXPECT_REFUSED(remainder("{ { int x; } s; int c; }", "{ { int y; } s; }"),
                 "Incompatible type for specialization: type { s; } does not match type { s; c; }");
}

TEST(SpecializationRemainder, OfDeepNestingNeedsNoStack) {
  vornath_test::runOnStack(vornath_test::kSmallStack, [] {
    const auto structs = [](TypePtr t) {
      for (int i = 0; i < kDepth; ++i) t = makeType(Type::TStruct({Type::Field(t, "a")}));
      return t;
    };
    EXPECT_EQ(
        specializationRemainder(*structs(type("{ int x; int y; }")), *structs(type("{ int x; }"))),
        structs(type("{ int y; }")));
    EXPECT_EQ(specializationRemainder(*structs(type("void*")), *structs(type("int*"))),
              type("{ }"));
  });
}

TEST(SpecializationRemainder, OfTenThousandFields) {
  const TypePtr t = type("int");
  std::vector<Type::Field> all, some;
  for (int i = 0; i < 10000; ++i) all.emplace_back(t, "f" + std::to_string(i));
  for (int i = 9999; i >= 1; --i) some.push_back(all[static_cast<std::size_t>(i)]);
  EXPECT_EQ(specializationRemainder(*makeType(Type::TStruct(all)), *makeType(Type::TStruct(some))),
            type("{ int f0; }"));
}

// By the definition, level by level.
std::optional<TypePtr> slowRemainder(const InternedType& a, const InternedType& b) {
  if (isSubType(b, a)) return type("{ }");
  const auto* const full = a.getIf<Type::TStruct>();
  const auto* const part = b.getIf<Type::TStruct>();
  if (full == nullptr || part == nullptr) return std::nullopt;
  for (const Type::Field& field : part->fields) {
    if (!full->hasField(field.label)) return std::nullopt;
  }
  std::vector<Type::Field> kept;
  for (const Type::Field& field : full->fields) {
    if (!part->hasField(field.label)) {
      kept.push_back(field);
      continue;
    }
    const auto inner =
        slowRemainder(*field.type, *part->fields[part->fieldIndex(field.label)].type);
    if (!inner) return std::nullopt;
    if (*inner != type("{ }")) kept.emplace_back(*inner, field.label);
  }
  return kept.empty() ? type("{ }") : makeType(Type::TStruct(kept), a.metadata());
}

TEST(SpecializationRemainder, IsWhatTheDefinitionSays) {
  Random random(2718);
  int refused = 0, some = 0;
  for (int i = 0; i < 3000; ++i) {
    const TypePtr full = type(annotatedType(random, 3).annotated);
    const TypePtr other = random.once(3)
                              ? type(annotatedType(random, 2).own)
                              : buildSpecialization(DynamicValue(full).view(), *full).type();
    const auto expected = slowRemainder(*full, *other);
    if (!expected) {
      ++refused;
      const std::string words =
          "Incompatible type for specialization: " + checkSubType(*other, *full).value();
      EXPECT_REFUSED(specializationRemainder(*full, *other), words.c_str());
    } else {
      some += *expected != type("{ }") ? 1 : 0;
      EXPECT_EQ(specializationRemainder(*full, *other), *expected) << full->text() << "\n"
                                                                   << other->text();
    }
  }
  EXPECT_GT(refused, 300);
  EXPECT_GT(some, 300);
}

}  // namespace
}  // namespace qex::vornath::test
