// Coercion as hosts see it: always lenient.
#include <optional>

#include "support/flat_handles.hpp"

namespace {

using namespace vornath_test;

ValueHandle coerce(const std::string& typeText, const ValueHandle& value) {
  const TypeHandle type = parseType(typeText);
  vrntValuesError_t* error = nullptr;
  ValueHandle result(vrntCoerce(type.get(), value.get(), &error));
  const ErrorHandle owner(error);
  EXPECT_NE(result, nullptr) << (error ? vrntValuesErrorMessage(error) : "no error");
  EXPECT_EQ(error, nullptr);
  return result;
}

std::string coerced(const std::string& typeText, const std::string& valueText) {
  return textOf(coerce(typeText, parseValue(valueText)));
}

Failure failureOf(const std::string& typeText, const ValueHandle& value) {
  const TypeHandle type = parseType(typeText);
  vrntValuesError_t* error = nullptr;
  const ValueHandle result(vrntCoerce(type.get(), value.get(), &error));
  const ErrorHandle owner(error);
  EXPECT_EQ(result, nullptr);
  if (error == nullptr) return {99, "no error"};
  return {vrntValuesErrorCode(error), vrntValuesErrorMessage(error)};
}

TEST(vrntCoerce, GivesTheDefaultInPlaceOfAConvertedNumber) {
  EXPECT_EQ(coerced("float", "5"), "0.0");
  EXPECT_EQ(coerced("float @default=1.5", "5"), "1.5");
}

TEST(vrntCoerce, CarriesFieldsByLabel) {
  EXPECT_EQ(coerced("{ int b; int @default=7 c; }", "{ a = 1; b = 2; }"), "{ b = 2; c = 7; }");
  EXPECT_EQ(coerced("{ float @default=0.5 a; int b; }", "{ a = 1; b = 2; }"),
            "{ a = 0.5; b = 2; }");
}

TEST(vrntCoerce, CarriesElementsByIndex) {
  EXPECT_EQ(coerced("int @default=9[5]", "[ 1, 2, 3 ]"), "[ 1, 2, 3, 9, 9 ]");
  EXPECT_EQ(coerced("int[3]", "[ 1, 2, 3, 4, 5 ]"), "[ 1, 2, 3 ]");
  EXPECT_EQ(coerced("int[3,2]", "[ 1, 2, 3, 4, 5, 6 | 2, 3 ]"), "[ 1, 2, 0, 3, 4, 0 | 3, 2 ]");
}

TEST(vrntCoerce, FillsASpectrumThatTheSourceLacks) {
  const std::string spectrum =
      "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }";
  EXPECT_EQ(
      coerced("{ " + spectrum + " s; int a; }", "{ a = 1; }"),
      "{ s = { encoding = LUMINANCE : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &[ 0.0 ]; "
      "}; a = 1; }");
  // What the source has of it is carried by label, the rest is the flat spectrum's.
  EXPECT_EQ(
      coerced("{ " + spectrum + " s; }",
              "{ s = { encoding = RGB : enum { LUMINANCE; RGB; SPECTRAL; }; }; }"),
      "{ s = { encoding = RGB : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &[ 0.0 ]; }; }");
}

TEST(vrntCoerce, CarriesEnumsByLabel) {
  EXPECT_EQ(readAt<std::int32_t>(coerce("enum { B; A; }", parseValue("A : enum { A; B; }"))), 1);
  EXPECT_EQ(coerced("enum { B; A; }", "C : enum { A; C; }"), "B : enum { B; A; }");
}

TEST(vrntCoerce, KeepsDefaultsWhereTheKindsDiffer) {
  const char* const sources[] = {"1",
                                 "A : enum { A; }",
                                 "{ x = 1; }",
                                 "[ 1 ]",
                                 "[ 1 | 1, 1 ]",
                                 "[ 1 | 1, 1, 1 ]",
                                 "[ 1 | 1, 1, 1, 1 ]",
                                 "&1"};
  const std::pair<const char*, const char*> targets[] = {
      {"float @default=1.5", "1.5"},
      {"{ float @default=1.5 y; }", "{ y = 1.5; }"},
      {"float* @default=&1.5", "&1.5"}};
  for (const char* const source : sources) {
    for (const auto& [target, expected] : targets) EXPECT_EQ(coerced(target, source), expected);
  }
}

TEST(vrntCoerce, GivesANewBlockAndLeavesTheValueAlone) {
  const ValueHandle value = parseValue("{ a = &1; b = 2; }");
  const vrntValueView_t reference = [&] {
    vrntValueView_t view;
    return *vrntValueStructField(&view, vrntValueType(value.get()), 0);
  }();
  {
    const ValueHandle same = coerce("{ int* a; int b; }", value);
    EXPECT_NE(same.get(), value.get());
    EXPECT_EQ(same->refCount, 1u);
    EXPECT_EQ(value->refCount, 1u);
    const ValueHandle other = coerce("{ void* a; float c; }", value);
    EXPECT_EQ(textOf(other), "{ a = &1; c = 0.0; }");
    // Three blocks refer to it, and the handle.
    const ValueHandle target(vrntValueDereference(value.get(), &reference));
    EXPECT_EQ(target->refCount, 4u);
  }
  EXPECT_EQ(textOf(value), "{ a = &1; b = 2; }");
  const ValueHandle target(vrntValueDereference(value.get(), &reference));
  EXPECT_EQ(target->refCount, 2u);
}

TEST(vrntCoerce, TakesAnAnnotatedType) {
  const ValueHandle result = coerce("{ int @a b; } @c=\"d\"", parseValue("{ b = 1; }"));
  EXPECT_EQ(typeTextOf(result), "{ int b; }");
}

TEST(vrntCoerce, ReportsACodeThatTheEnumDoesNotHave) {
  const TypeHandle type = parseType("enum { A; B; }");
  vrntValuesError_t* error = nullptr;
  vrntValue_t* stray = vrntValueCreate(type.get(), &error);
  const std::int32_t code = 5;
  vrntValueWrite(&stray, 0, &code, sizeof(code), &error);
  const ValueHandle value(stray);
  const Failure failure = failureOf("enum { B; A; }", value);
  EXPECT_EQ(failure.kind, 0u);
  EXPECT_EQ(failure.message, "Enum code out of range: 5");
}

TEST(vrntCoerce, ReportsOpenExtentsOfTypesThatDoNotRelate) {
  const Failure failure = failureOf("float[]", parseValue("[ 1, 2 ]"));
  EXPECT_EQ(failure.kind, 2u);
  EXPECT_EQ(failure.message, std::bad_optional_access().what());
  EXPECT_EQ(typeTextOf(coerce("int[]", parseValue("[ 1, 2 ]"))), "int[]");
}

TEST(vrntCoerce, ToAHugeTypeIsOutOfMemory) {
  const Failure failure = failureOf("char[2147483647][2147483647][3]", parseValue("1"));
  EXPECT_EQ(failure.kind, 1u);
  EXPECT_EQ(failure.message, "Out of memory.");
}

}  // namespace
