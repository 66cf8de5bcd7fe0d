// Specialization as hosts see it.
#include <optional>

#include "support/flat_handles.hpp"

namespace {

using namespace vornath_test;

ValueHandle specialize(const std::string& typeText, const ValueHandle& value) {
  const TypeHandle type = parseType(typeText);
  vrntValuesError_t* error = nullptr;
  ValueHandle result(vrntBuildSpecializationParameters(type.get(), value.get(), &error));
  const ErrorHandle owner(error);
  EXPECT_NE(result, nullptr) << (error ? vrntValuesErrorMessage(error) : "no error");
  EXPECT_EQ(error, nullptr);
  return result;
}

std::string specialized(const std::string& typeText, const std::string& valueText) {
  return textOf(specialize(typeText, parseValue(valueText)));
}

Failure failureOf(const std::string& typeText, const ValueHandle& value) {
  const TypeHandle type = parseType(typeText);
  vrntValuesError_t* error = nullptr;
  const ValueHandle result(vrntBuildSpecializationParameters(type.get(), value.get(), &error));
  const ErrorHandle owner(error);
  EXPECT_EQ(result, nullptr);
  if (error == nullptr) return {99, "no error"};
  return {vrntValuesErrorCode(error), vrntValuesErrorMessage(error)};
}

TEST(vrntBuildSpecializationParameters, LeavesMarkedFieldsOut) {
  EXPECT_EQ(specialized("{ int a; float @no_specialize b; { int @no_specialize x; int y; }[2] c; }",
                        "{ a = 1; b = 2.0; c = [ { x = 3; y = 4; }, { x = 5; y = 6; } ]; }"),
            "{ a = 1; c = [ { y = 4; }, { y = 6; } ]; }");
}

TEST(vrntBuildSpecializationParameters, OfAllFieldsMarkedIsAnEmptyStruct) {
  const ValueHandle result = specialize("{ int @no_specialize a; }", parseValue("{ a = 1; }"));
  EXPECT_EQ(typeTextOf(result), "{ }");
  EXPECT_EQ(result->refCount, 1u);
}

TEST(vrntBuildSpecializationParameters, TakesTheMarksFromTheGivenTypeOnly) {
  EXPECT_EQ(specialized("{ int a; } @no_specialize", "{ a = 1; }"), "{ a = 1; }");
  const TypeHandle annotated = parseType("{ int @no_specialize a; int b; }");
  vrntValuesError_t* error = nullptr;
  const ValueHandle value(vrntValueCreateDefault(annotated.get(), &error));
  const ValueHandle whole(
      vrntBuildSpecializationParameters(vrntValueType(value.get()), value.get(), &error));
  ASSERT_NE(whole, nullptr);
  EXPECT_EQ(textOf(whole), "{ a = 0; b = 0; }");
  EXPECT_NE(whole.get(), value.get());
}

// A sampler survives as data wherever it is a field: its type carries the mark. On its own, what it
// is made of is looked at, and the texture's struct is marked as well.
TEST(vrntBuildSpecializationParameters, LeavesSamplersOut) {
  vrntValuesError_t* error = nullptr;
  const TypeHandle sampler(vrntTypeSampler(VRNT_SAMPLER_FLOAT));
  const ValueHandle alone(vrntValueCreateDefault(sampler.get(), &error));
  ASSERT_EQ(error, nullptr);
  const ValueHandle kept(vrntBuildSpecializationParameters(sampler.get(), alone.get(), &error));
  ASSERT_EQ(error, nullptr);
  EXPECT_EQ(
      typeTextOf(kept),
      "{ { enum { CLAMP; BORDER; REPEAT; MIRROR; } u; enum { CLAMP; BORDER; REPEAT; MIRROR; } "
      "v; } wrapmode; float4 border; }");

  const std::string holder =
      std::string("{ float gloss; ") + vrntTypeString(sampler.get()) + " image; }";
  const TypeHandle holderType = parseType(holder);
  const ValueHandle value(vrntValueCreateDefault(holderType.get(), &error));
  ASSERT_EQ(error, nullptr);
  EXPECT_EQ(textOf(specialize(holder, value)), "{ gloss = 0.0; }");
}

TEST(vrntBuildSpecializationParameters, LeavesTheValueAlone) {
  const ValueHandle value = parseValue("{ a = &1; b = &2; }");
  EXPECT_EQ(textOf(specialize("{ int* a; int* @no_specialize b; }", value)), "{ a = &1; }");
  EXPECT_EQ(textOf(value), "{ a = &1; b = &2; }");
  EXPECT_EQ(value->refCount, 1u);
}

TEST(vrntBuildSpecializationParameters, RefusesAValueThatDoesNotRelate) {
  const std::pair<const char*, const char*> cases[] = {
      {"float", "Incompatible type for value -> type { a; } does not match type float."},
      {"{ int b; }", "Incompatible type for value -> type { a; } does not match type { b; }."},
      {"{ float @no_specialize a; }",
       "Incompatible type for value -> Type mismatch for field a: type int does not match type "
       "float."}};
  for (const auto& [typeText, message] : cases) {
    const Failure failure = failureOf(typeText, parseValue("{ a = 1; }"));
    EXPECT_EQ(failure.kind, 0u);
    EXPECT_EQ(failure.message, message);
  }
}

TEST(vrntBuildSpecializationParameters, RefusesOpenExtents) {
  const TypeHandle open = parseType("int[]");
  vrntValuesError_t* error = nullptr;
  const ValueHandle value(vrntValueCreate(open.get(), &error));
  const Failure failure = failureOf("int[]", value);
  EXPECT_EQ(failure.kind, 2u);
  EXPECT_EQ(failure.message, std::bad_optional_access().what());
}

TEST(vrntBuildSpecializationParameters, RefusesATypeOfOpenExtentsForAValueThatHasThem) {
  for (const auto& [typeText, valueText] :
       {std::pair("float[]", "[ 1.0, 2.0 ]"), std::pair("int[,]", "[ 1, 2 | 2, 1 ]")}) {
    const Failure failure = failureOf(typeText, parseValue(valueText));
    EXPECT_EQ(failure.kind, 2u);
    EXPECT_EQ(failure.message, std::bad_optional_access().what());
  }
}

}  // namespace
