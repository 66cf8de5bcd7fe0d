// Typed texts, limits, choices and conversions of values.
#include <limits>
#include <random>
#include <utility>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

TypeHandle typeOf(const char* text) {
  vrntType_t* type = nullptr;
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkTypeParse(text, &type, &error), VRTK_OK)
      << (error != nullptr ? vrtkErrorMessage(error) : "");
  vrtkErrorDestroy(error);
  return TypeHandle(type);
}

std::string textOf(const vrntValue_t* value) {
  const vrntValueView_t whole{vrntValueType(value), 0};
  vrntValuesError_t* error = nullptr;
  const vrnt::UniqueString text(vrntValueString(value, &whole, 0, &error));
  const vrnt::UniqueError owner(error);
  return text ? text.get() : "no text";
}

// The text of what a text is read as, or the words and the place of the error.
std::string read(const char* type, const std::string& text) {
  const TypeHandle parsed = typeOf(type);
  vrntValue_t* value = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status = vrtkValueParseAs(parsed.get(), text.c_str(), &value, &error);
  const ToolkitError owner(error);
  const ValueHandle valueOwner(value);
  if (status == VRTK_OK) return textOf(value);
  EXPECT_EQ(value, nullptr);
  EXPECT_EQ(status, VRTK_TEXT_INVALID);
  vrtkTextPlace place{0, 0, 0};
  EXPECT_TRUE(vrtkErrorPlace(error, &place));
  return std::to_string(place.line) + ":" + std::to_string(place.column) + "+" +
         std::to_string(place.offset) + " " + vrtkErrorMessage(error);
}

std::string errorOfType(const char* text) {
  vrntType_t* type = nullptr;
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkTypeParse(text, &type, &error), VRTK_TEXT_INVALID);
  const ToolkitError owner(error);
  vrtkTextPlace place{0, 0, 0};
  EXPECT_TRUE(vrtkErrorPlace(error, &place));
  return std::to_string(place.line) + ":" + std::to_string(place.column) + "+" +
         std::to_string(place.offset) + " " + vrtkErrorMessage(error);
}

std::string errorOfValue(const char* text) {
  vrntValue_t* value = nullptr;
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkValueParse(text, &value, &error), VRTK_TEXT_INVALID);
  const ToolkitError owner(error);
  vrtkTextPlace place{0, 0, 0};
  EXPECT_TRUE(vrtkErrorPlace(error, &place));
  return std::to_string(place.line) + ":" + std::to_string(place.column) + "+" +
         std::to_string(place.offset) + " " + vrtkErrorMessage(error);
}

TEST(vrtkTypeParse, ReturnsTheTypeOfTheLibrary) {
  vrntValuesError_t* error = nullptr;
  const TypeHandle expected(vrntTypeParse("{ float @default=1.0 x; }", &error));
  EXPECT_EQ(typeOf("{ float @default=1.0 x; }").get(), expected.get());
}

TEST(vrtkTypeParse, TellsTheFirstPlaceFromWhichNothingHelps) {
  EXPECT_EQ(errorOfType("{ float x }"), "1:11+10 syntax error, unexpected }, expecting ;");
  EXPECT_EQ(errorOfType("{ float x; int\n  5 y; }").rfind("2:3+17 syntax error", 0), 0U);
  EXPECT_EQ(errorOfType("{ float x; float x; }"), "1:18+17 Duplicate struct field: x.");
  EXPECT_EQ(errorOfType("{ float x").rfind("1:10+9 syntax error, unexpected END", 0), 0U);
  EXPECT_EQ(errorOfType("").rfind("1:1+0 syntax error, unexpected END", 0), 0U);
  EXPECT_EQ(errorOfType("  ").rfind("1:1+0 syntax error, unexpected END", 0), 0U);
  EXPECT_EQ(errorOfType("{ float \xC3\xA4; }").rfind("1:9+8 Illegal character", 0), 0U);
  EXPECT_EQ(errorOfType("int ]").rfind("1:5+4 syntax error, unexpected ]", 0), 0U);
  EXPECT_EQ(errorOfType("int[-3]"), "1:7+6 negative array length");
}

TEST(vrtkValueParse, TellsTheFirstPlaceFromWhichNothingHelps) {
  EXPECT_EQ(errorOfValue("{ a = 1; b 2; }").rfind("1:12+11 syntax error", 0), 0U);
  EXPECT_EQ(errorOfValue("[ 1, 2.0 ]").rfind("1:", 0), 0U);
  EXPECT_EQ(errorOfValue("vrntval").rfind("1:1+0 ", 0), 0U);
  EXPECT_EQ(errorOfValue("vrntval = 1").rfind("1:1+0 ", 0), 0U);
  EXPECT_EQ(errorOfValue("X : enum { A; }"), "1:1+0 Invalid enum constructor: X");
}

TEST(vrtkValueParse, ReturnsTheValueOfTheLibrary) {
  vrntValue_t* value = nullptr;
  ASSERT_EQ(vrtkValueParse("{ a = 1; }", &value, nullptr), VRTK_OK);
  const ValueHandle owner(value);
  EXPECT_EQ(textOf(value), "{ a = 1; }");
}

TEST(vrtkErrorPlace, IsThereForErrorsOfTextsOnly) {
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkTypeParse(nullptr, nullptr, &error), VRTK_INVALID_ARGUMENT);
  vrtkTextPlace place{7, 8, 9};
  EXPECT_FALSE(vrtkErrorPlace(error, &place));
  EXPECT_EQ(place.line, 7U);
  vrtkErrorDestroy(error);
}

constexpr char kSettings[] =
    "{ float @default=0.5 @min=0.0 @max=1.0 gloss; enum { OFF; ON; AUTO; } @default=ON : enum { "
    "OFF; "
    "ON; AUTO; } mode; int2 size; bool @default=true active; { float x; float y; } place; }";

TEST(vrtkValueParseAs, KeepsTheDefaultsOfFieldsThatAreLeftOut) {
  EXPECT_EQ(read(kSettings, "{ }"),
            "{ gloss = 0.5; mode = ON : enum { OFF; ON; AUTO; }; size = int2(0, 0); active = true; "
            "place = { x = 0.0; y = 0.0; }; }");
  EXPECT_EQ(read(kSettings, "{ place = { y = 2 }; mode = OFF }"),
            "{ gloss = 0.5; mode = OFF : enum { OFF; ON; AUTO; }; size = int2(0, 0); active = "
            "true; place = { x = 0.0; y = 2.0; }; }");
}

TEST(vrtkValueParseAs, TakesAnIntForAFloatAndSeparatorsAsPeopleWriteThem) {
  EXPECT_EQ(read("{ float a; half b; char c; }", "{a=1,b=2,\n c=3}"),
            "{ a = 1.0; b = 2.0h; c = 3c; }");
  EXPECT_EQ(read("float", "1"), "1.0");
  EXPECT_EQ(read("float", " +1. "), "1.0");
  EXPECT_EQ(read("float", ".5"), "0.5");
  EXPECT_EQ(read("float", "-007"), "-7.0");
  EXPECT_EQ(read("float", "1e3"), "1000.0");
  EXPECT_EQ(read("float", "-inf"), "-inf");
  EXPECT_EQ(read("float", "nan"), "NaN");
  EXPECT_EQ(read("half", "1.5h"), "1.5h");
  EXPECT_EQ(read("char", "255c"), "255c");
  EXPECT_EQ(read("char", "0x2a"), "42c");
  EXPECT_EQ(read("int", "0xffffffff"), "-1");
  EXPECT_EQ(read("float", "0x3f800000."), "1.0");
  EXPECT_EQ(read("half", "0x3c00."), "1.0h");
}

TEST(vrtkValueParseAs, ReadsVectorsInThreeForms) {
  EXPECT_EQ(read("float3", "float3(1, 0, 0.5)"), "float3(1.0, 0.0, 0.5)");
  EXPECT_EQ(read("float3", "(1, 0, 0.5)"), "float3(1.0, 0.0, 0.5)");
  EXPECT_EQ(read("float3", "[1, 0, 0.5]"), "float3(1.0, 0.0, 0.5)");
  EXPECT_EQ(read("bool2", "(true, false)"), "bool2(true, false)");
  EXPECT_EQ(read("float3", "1"), "1:1+0 expected a float3, such as (1, 2, 3), found '1'");
  EXPECT_EQ(read("float3", "(1, 2)"),
            "1:6+5 expected ',' between the 3 numbers of a float3, found ')'");
  EXPECT_EQ(read("float2", "(1, 2, 3)"),
            "1:6+5 expected ')' behind the 2 numbers of a float2, found ','");
}

TEST(vrtkValueParseAs, ReadsArrays) {
  EXPECT_EQ(read("int[3]", "[1, 2, 3,]"), "[ 1, 2, 3 ]");
  EXPECT_EQ(read("float[]", "[1, 2]"), "[ 1.0, 2.0 ]");
  EXPECT_EQ(read("float[]", "[]"), "[ : float ]");
  EXPECT_EQ(read("int[2,3]", "[[1, 2], [3, 4], [5, 6]]"), "[ 1, 2, 3, 4, 5, 6 | 2, 3 ]");
  EXPECT_EQ(read("int[2,3]", "[ 1, 2, 3, 4, 5, 6 | 2, 3 ]"), "[ 1, 2, 3, 4, 5, 6 | 2, 3 ]");
  EXPECT_EQ(read("int[2,3]", "[ 1, 2, 3, 4, 5, 6 | 3, 2 ]"),
            "1:22+21 the array has 2 elements in this dimension, but '3' is given");
  EXPECT_EQ(read("int[3]", "[1, 2]"), "1:6+5 the array has 3 elements, but 2 are given");
  EXPECT_EQ(read("int[2]", "[1, 2, 3]"), "1:8+7 the array has 2 elements, but more are given");
  EXPECT_EQ(read("int[2]", "1"), "1:1+0 expected '[' at the start of an array of 2, found '1'");
}

TEST(vrtkValueParseAs, ReadsReferences) {
  EXPECT_EQ(read("{ float[]* curve; }", "{ curve = &[1, 2.5]; }"), "{ curve = &[ 1.0, 2.5 ]; }");
  EXPECT_EQ(read("{ float[]* curve; }", "{ curve = [1] }"), "{ curve = &[ 1.0 ]; }");
  EXPECT_EQ(read("{ int* p; }", "{ p = null; }"), "{ p = $(0x0000000000000000:int); }");
  EXPECT_EQ(read("{ int* p; }", "{ p = $(0x0000000000000000:int); }"),
            "{ p = $(0x0000000000000000:int); }");
  EXPECT_EQ(read("{ void* p; }", "{ p = &{ a = 1; }; }"), "{ p = &{ a = 1; }; }");
  EXPECT_EQ(read("{ int* p; }", "{ p = $18; }"),
            "1:7+6 an address of a process means nothing in a text; expected null");
  EXPECT_EQ(read("{ void* p; }", "{ p = &{ a = }; }").rfind("1:14+13 syntax error", 0), 0U);
}

TEST(vrtkValueParseAs, ReadsWhatTheLibraryWrites) {
  for (const char* const text :
       {"{ image = { texture_ref = 0; }; list = &[ 1, 2, 3 ]; both = { p = &&{ f = 2.5; }; c = [ "
        "72c, 105c ]; e = ON : enum { OFF; ON; }; }; shared = [ &[ 1.0, 2.0 ] : float[2]* ]; }",
        "[ 1, 2, 3, 4 | 2, 2 ]", "[ { a = 1.5; }, { a = -2.0; } ]", "float4(1.0, 2.0, 3.0, 4.0)",
        "[ [ 1, 2 ], [ 3, 4 ] ]", "[ : int ]", "[ int2(1, 2), int2(3, 4) ]"}) {
    const ValueHandle value = parseValue(text);
    const std::string written = textOf(value.get());
    EXPECT_EQ(read(vrntTypeString(vrntValueType(value.get())), written), written);
  }
}

TEST(vrtkValueParseAs, TellsWhatIsWrongAndWhere) {
  EXPECT_EQ(read(kSettings, "{ glos = 1; }"),
            "1:3+2 the struct has no field 'glos'; did you mean 'gloss'?");
  EXPECT_EQ(read(kSettings, "{\n  gloss = 1;\n  Mode = ON;\n}"),
            "3:3+17 the struct has no field 'Mode'; did you mean 'mode'?");
  EXPECT_EQ(read(kSettings, "{ something = 1; }"),
            "1:3+2 the struct has no field 'something'; there are gloss, mode, size, active, "
            "place");
  EXPECT_EQ(read(kSettings, "{ mode = ONN; }"),
            "1:10+9 the enum has no constructor 'ONN'; did you mean 'ON'?");
  EXPECT_EQ(read(kSettings, "{ mode = 1; }"),
            "1:10+9 the enum has no constructor '1'; there are OFF, ON, AUTO");
  EXPECT_EQ(read(kSettings, "{ active = 1; }"), "1:12+11 expected true or false, found '1'");
  EXPECT_EQ(read(kSettings, "{ gloss = 1; gloss = 2; }"),
            "1:14+13 the field 'gloss' is given twice");
  EXPECT_EQ(read(kSettings, "{ gloss 1; }"),
            "1:9+8 expected '=' behind the label 'gloss', found '1'");
  EXPECT_EQ(read(kSettings, "{ gloss = 1 mode = ON; }"),
            "1:13+12 expected ';' behind the field 'gloss', found 'mode'");
  EXPECT_EQ(read("float", "1 2"), "1:3+2 unexpected '2' after the value");
  EXPECT_EQ(read("float", ""), "1:1+0 expected a float, found the end of the text");
  EXPECT_EQ(read("int", "1.5"), "1:1+0 expected an int, found '1.5'");
  EXPECT_EQ(read("float", "\xC3\xA4"), "1:1+0 expected a float, found '\xC3\xA4'");
  EXPECT_EQ(read("{ float a; }", "{ a = \xC3\xA4\xC3\xA4; }").rfind("1:7+6 ", 0), 0U);
  EXPECT_EQ(read("{ float a; float b; }", "{ a = 1; /* \xC3\xA4 */ b = x; }").rfind("1:10+9 ", 0),
            0U);
  EXPECT_EQ(read("{ }", "{"),
            "1:2+1 expected the label of a field or '}', found the end of the text");
}

TEST(vrtkValueParseAs, RefusesNumbersOutOfTheRangeOfTheirTypes) {
  EXPECT_EQ(read("int", "2147483648"),
            "1:1+0 2147483648 is out of range: an int is from -2147483648 to 2147483647");
  EXPECT_EQ(read("int", "-2147483648"), "-2147483648");
  EXPECT_EQ(read("char", "256"), "1:1+0 256 is out of range: a char is from 0 to 255");
  EXPECT_EQ(read("char", "-1"), "1:1+0 -1 is out of range: a char is from 0 to 255");
  EXPECT_EQ(read("float", "1e39"),
            "1:1+0 1e39 is out of range: a float is from -3.4028235e+38 to 3.4028235e+38");
  EXPECT_EQ(read("half", "65520"), "1:1+0 65520 is out of range: a half is from -65504 to 65504");
  EXPECT_EQ(read("half", "65504"), "65504.0h");
  EXPECT_EQ(read("float", "1e-60"), "0.0");
  // Limits of the metadata are for the check.
  EXPECT_EQ(read("float @max=1.0", "2"), "2.0");
}

TEST(vrtkValueParseAs, BoundsTheDepthOfATextAndReadsNoMoreThanIsThere) {
  std::string type = "int";
  std::string text = "1";
  for (int i = 0; i < 1000; ++i) {
    type = "{ " + type + " a; }";
    text = "{ a = " + text + "; }";
  }
  EXPECT_NE(read(type.c_str(), text).find("the text nests too deeply"), std::string::npos);
  // Every beginning of a text is an error or a value.
  const std::string whole =
      "{ gloss = 0.5; mode = ON : enum { OFF; ON; AUTO; }; size = int2(0, 0); place = { x = 1; }; "
      "}";
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_NE(read(kSettings, whole.substr(0, length)).find(":"), std::string::npos);
  }
}

// Texts with characters changed, removed and doubled at random.
TEST(vrtkValueParseAs, TellsAPlaceInEveryWrongText) {
  const std::string texts[] = {
      "{ gloss = 0.5; mode = ON : enum { OFF; ON; AUTO; }; size = int2(0, 0); place = { x = 1; }; "
      "}",
      "{ float @default=0.5 @name=\"N\" a; enum { A; B(int x); }[2,3] e; int* p; ((int) => int) f; "
      "}",
      "{ a = [ 1, 2 | 2, 1 ]; b = &1.5; c = $0x0000000000000000; d = float2(1.0, -inf); }"};
  const TypeHandle type = typeOf(kSettings);
  std::mt19937 random(3);  // NOLINT(cert-msc51-cpp): the same on every run
  int wrong = 0;
  for (int i = 0; i < 3000; ++i) {
    std::string text = texts[i % 3];
    for (int change = 0; change < 3; ++change) {
      const std::size_t at = random() % text.size();
      constexpr char kOthers[] = "{}[]();,=@\"$&|:*-+.x0\n\xC3";  // and the NUL at its end
      const char other = kOthers[random() % sizeof kOthers];
      if (i % 2 == 0) text.erase(at, 1);
      if (i % 5 != 0 && other != '\0') text.insert(at, 1, other);
    }
    vrntValue_t* value = nullptr;
    vrntType_t* parsed = nullptr;
    for (int function = 0; function < 3; ++function) {
      vrtkError* error = nullptr;
      const std::uint32_t status = function == 0
                                       ? vrtkValueParseAs(type.get(), text.c_str(), &value, &error)
                                   : function == 1 ? vrtkTypeParse(text.c_str(), &parsed, &error)
                                                   : vrtkValueParse(text.c_str(), &value, &error);
      const ToolkitError owner(error);
      if (status == VRTK_OK) {
        if (value != nullptr) vrntValueDestroy(std::exchange(value, nullptr));
        if (parsed != nullptr) vrntTypeDestroy(std::exchange(parsed, nullptr));
        continue;
      }
      ++wrong;
      ASSERT_EQ(status, VRTK_TEXT_INVALID) << text;
      vrtkTextPlace place{0, 0, 0};
      ASSERT_TRUE(vrtkErrorPlace(error, &place)) << text;
      ASSERT_LE(place.offset, text.size()) << text;
      ASSERT_EQ(std::string_view(vrtkErrorMessage(error)).find('\n'), std::string_view::npos)
          << text;
    }
  }
  EXPECT_GT(wrong, 5000);
}

TEST(vrtkValueParseAs, RefusesTypesWithoutValues) {
  vrntValue_t* value = nullptr;
  EXPECT_EQ(vrtkValueParseAs(typeOf("int[,]").get(), "[]", &value, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(vrtkValueParseAs(nullptr, "1", &value, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(vrtkValueParseAs(typeOf("int").get(), nullptr, &value, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(value, nullptr);
}

struct Bounds {
  explicit Bounds(const char* type) {
    EXPECT_EQ(vrtkValueBounds(typeOf(type).get(), &all, nullptr), VRTK_OK);
  }
  Bounds(const Bounds&) = delete;
  Bounds& operator=(const Bounds&) = delete;
  ~Bounds() { vrtkBoundsRelease(&all); }
  vrtkBounds all = VRTK_BOUNDS_INIT;
};

TEST(vrtkValueBounds, StartsWithTheRangesOfTheTypes) {
  const Bounds bounds("{ bool b; int i; float f; char4 c; half h; enum { A; B; C; } e; void* p; }");
  EXPECT_EQ(textOf(bounds.all.min),
            "{ b = false; i = -2147483648; f = -inf; c = char4(0c, 0c, 0c, 0c); h = -infh; e = A : "
            "enum { A; B; C; }; p = $0x0000000000000000; }");
  EXPECT_EQ(textOf(bounds.all.max),
            "{ b = true; i = 2147483647; f = inf; c = char4(255c, 255c, 255c, 255c); h = infh; e = "
            "C : enum { A; B; C; }; p = $0x0000000000000000; }");
  EXPECT_EQ(textOf(bounds.all.softMax), textOf(bounds.all.max));
  EXPECT_EQ(textOf(bounds.all.softMin), textOf(bounds.all.min));
}

TEST(vrtkValueBounds, MergesAnnotationsFromTheInsideOut) {
  const Bounds bounds(
      "{ float @min=0.0 @max=10.0 @soft_max=1.0 a; float @min=1 @max=2.0 b; } @max={ a = 5.0; b = "
      "6.0; } @default={ a = 3.0; b = 1.5; }");
  EXPECT_EQ(textOf(bounds.all.defaultValue), "{ a = 3.0; b = 1.5; }");
  EXPECT_EQ(textOf(bounds.all.min), "{ a = 0.0; b = -inf; }");  // @min=1 is an int
  EXPECT_EQ(textOf(bounds.all.max), "{ a = 5.0; b = 6.0; }");
  EXPECT_EQ(textOf(bounds.all.softMin), "{ a = 0.0; b = -inf; }");
  EXPECT_EQ(textOf(bounds.all.softMax), "{ a = 5.0; b = 6.0; }");
  const Bounds soft("{ float @min=0.0 @max=10.0 @soft_min=2.0 @soft_max=4.0 a; }");
  EXPECT_EQ(textOf(soft.all.softMin) + textOf(soft.all.softMax), "{ a = 2.0; }{ a = 4.0; }");
}

TEST(vrtkValueBounds, RepeatsThoseOfElements) {
  const Bounds bounds("{ float @max=2.0 a; int i; }[2,2][3]");
  EXPECT_EQ(vrntTypeSize(vrntValueType(bounds.all.max)), 96U);
  const auto* const floats = static_cast<const float*>(vrntValueData(bounds.all.max));
  for (int i = 0; i < 12; ++i) EXPECT_EQ(floats[2 * i], 2.0F);
  const Bounds array("float[3] @max=[ 1.0, 2.0, 3.0 ]");
  EXPECT_EQ(textOf(array.all.max), "[ 1.0, 2.0, 3.0 ]");
  EXPECT_EQ(textOf(array.all.softMax), "[ 1.0, 2.0, 3.0 ]");
}

TEST(vrtkValueBounds, TakesDeepTypesAndEmptyOnes) {
  std::string type = "float @max=1.0";
  for (int i = 0; i < 20000; ++i) type = "{ " + type + " a; }";
  const Bounds bounds(type.c_str());
  EXPECT_EQ(*static_cast<const float*>(vrntValueData(bounds.all.max)), 1.0F);
  const Bounds empty("{ }");
  EXPECT_EQ(textOf(empty.all.max), "{ }");
  const Bounds none("int[0]");
  EXPECT_EQ(vrntTypeSize(vrntValueType(none.all.max)), 0U);
  vrtkBounds bad = VRTK_BOUNDS_INIT;
  EXPECT_EQ(vrtkValueBounds(typeOf("float[]").get(), &bad, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(bad.min, nullptr);
}

constexpr char kLimited[] =
    "{ float @default=0.5 @min=0.0 @max=1.0 f; int3 @min=int3(0, 0, 0) v; enum { A; B; } e; bool "
    "b; "
    "float @default=-1.0 @min=0.0 odd; half @max=2.0h h; char[2] @max=[ 9c, 9c ] c; }";

ValueHandle limited() {
  ValueHandle value = parseValue(
      "{ f = 2.5; v = int3(1, -2, -3); e = A : enum { A; B; }; b = true; odd = -1.0; h = 3.0h; c = "
      "[ 1c, 10c ]; }");
  auto* const bytes = static_cast<char*>(vrntValueData(value.get()));
  vrntValueView_t field{};
  const std::int32_t code = 5;
  const std::int32_t word = 1;
  vrntValueStructField(&field, vrntValueType(value.get()), 2);
  std::memcpy(bytes + field.offset, &code, 4);
  vrntValueStructField(&field, vrntValueType(value.get()), 3);
  std::memcpy(bytes + field.offset, &word, 4);
  return value;
}

std::string outside(const char* type, const vrntValue_t* value) {
  vrtkOutsideList* list = nullptr;
  EXPECT_EQ(vrtkValueCheck(typeOf(type).get(), value, &list, nullptr), VRTK_OK);
  std::string text;
  for (std::uint64_t i = 0; i < vrtkOutsideCount(list); ++i) {
    const vrtkOutside* const leaf = vrtkOutsideAt(list, i);
    text += std::string(leaf->path) + ": " + leaf->message + "\n";
  }
  EXPECT_EQ(vrtkOutsideAt(list, vrtkOutsideCount(list)), nullptr);
  vrtkOutsideListDestroy(list);
  return text;
}

TEST(vrtkValueCheck, ListsTheLeavesOutsideTheirLimits) {
  EXPECT_EQ(outside(kLimited, limited().get()),
            "f: 2.5 is above the maximum, 1.0\n"
            "v/1: -2 is below the minimum, 0\n"
            "v/2: -3 is below the minimum, 0\n"
            "e: the enum has no constructor with the code 5\n"
            "b: the word 0x00000001 is no bool, which is 0 or 0xffffffff\n"
            "h: 3.0 is above the maximum, 2.0\n"
            "c/1: 10 is above the maximum, 9\n");
  EXPECT_EQ(outside("float", parseValue("NaN").get()), ": it is not a number\n");
  EXPECT_EQ(outside("float", parseValue("inf").get()), "");
  EXPECT_EQ(outside("float @max=1.0", parseValue("inf").get()),
            ": inf is above the maximum, 1.0\n");
}

TEST(vrtkValueClamp, DrawsEachLeafIntoItsLimits) {
  vrntValue_t* value = limited().release();
  std::uint64_t changed = 0;
  ASSERT_EQ(vrtkValueClamp(typeOf(kLimited).get(), &value, &changed, nullptr), VRTK_OK);
  ValueHandle owner(value);
  EXPECT_EQ(changed, 7U);
  EXPECT_EQ(textOf(value),
            "{ f = 1.0; v = int3(1, 0, 0); e = A : enum { A; B; }; b = true; odd = -1.0; h = 2.0h; "
            "c = [ 1c, 9c ]; }");
  EXPECT_EQ(outside(kLimited, value), "");
}

TEST(vrtkValueClamp, CopiesASharedBlockAndWritesNothingIfAllIsWithinTheLimits) {
  const ValueHandle shared = parseValue("{ f = 2.0; }");
  vrntValue_t* value = vrntValueCopy(shared.get());
  const TypeHandle type = typeOf("{ float @max=1.0 f; }");
  ASSERT_EQ(vrtkValueClamp(type.get(), &value, nullptr, nullptr), VRTK_OK);
  EXPECT_NE(value, shared.get());
  EXPECT_EQ(textOf(shared.get()), "{ f = 2.0; }");
  const ValueHandle second(vrntValueCopy(value));
  std::uint64_t changed = 9;
  ASSERT_EQ(vrtkValueClamp(type.get(), &value, &changed, nullptr), VRTK_OK);
  EXPECT_EQ(changed, 0U);
  EXPECT_EQ(value, second.get());
  vrntValueDestroy(value);
}

TEST(vrtkValueClamp, RefusesAValueOfAnotherType) {
  const ValueHandle value = parseValue("{ f = 2; }");
  vrntValue_t* handle = value.get();
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkValueClamp(typeOf("{ float f; }").get(), &handle, nullptr, &error),
            VRTK_VALUE_TYPE);
  vrtkErrorDestroy(error);
  vrtkOutsideList* list = nullptr;
  EXPECT_EQ(vrtkValueCheck(typeOf("{ float f; }").get(), value.get(), &list, nullptr),
            VRTK_VALUE_TYPE);
  EXPECT_EQ(list, nullptr);
}

TEST(vrtkEnumChoicesOf, HasLabelsNamesAndDescriptions) {
  const TypeHandle type = typeOf(
      "enum { NONE; FIT @name=\"Fit; (all)\" @desc=\"Fits {it}\"; BOX(float x, int @max=3 y) "
      "@name=\"Box\" @hide @order=[ 1, 2 ]; } @name=\"Mode\"");
  vrtkEnumChoices* choices = nullptr;
  ASSERT_EQ(vrtkEnumChoicesOf(type.get(), &choices, nullptr), VRTK_OK);
  std::string text;
  for (std::uint32_t i = 0; i < vrtkEnumChoiceCount(choices); ++i) {
    const vrtkEnumChoice* const choice = vrtkEnumChoiceAt(choices, i);
    text += std::to_string(choice->code) + " " + choice->label + " | " + choice->name + " | " +
            choice->description + " | " + choice->fields + "\n";
  }
  EXPECT_EQ(text.substr(0, text.find("BOX")),
            "0 NONE | NONE |  | \n1 FIT | Fit; (all) | Fits {it} | \n2 ");
  EXPECT_NE(text.find("BOX | Box |  | float x"), std::string::npos) << text;
  EXPECT_EQ(vrtkEnumChoiceAt(choices, 3), nullptr);
  vrtkEnumChoicesDestroy(choices);
}

TEST(vrtkEnumChoicesOf, ReadsEachEnumOfTheCatalogue) {
  int enums = 0;
  std::vector<TypeHandle> open;
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    for (std::uint32_t g = 0; g < vrdmFieldCount(c); ++g) open.emplace_back(vrdmFieldType(c, g));
  }
  while (!open.empty()) {
    const TypeHandle type = std::move(open.back());
    open.pop_back();
    if (vrntTypeDescriptor(type.get()) == VRNT_DESCRIPTOR_STRUCT) {
      for (std::uint32_t i = 0; i < vrntTypeFieldCount(type.get()); ++i) {
        open.emplace_back(vrntTypeFieldType(type.get(), i));
      }
    }
    if (vrntTypeDescriptor(type.get()) != VRNT_DESCRIPTOR_ENUM) continue;
    ++enums;
    vrtkEnumChoices* choices = nullptr;
    ASSERT_EQ(vrtkEnumChoicesOf(type.get(), &choices, nullptr), VRTK_OK);
    ASSERT_EQ(vrtkEnumChoiceCount(choices), vrntTypeConstructorCount(type.get()));
    for (std::uint32_t i = 0; i < vrtkEnumChoiceCount(choices); ++i) {
      EXPECT_STREQ(vrtkEnumChoiceAt(choices, i)->label, vrntTypeConstructorName(type.get(), i));
    }
    vrtkEnumChoicesDestroy(choices);
  }
  EXPECT_GT(enums, 10);
}

TEST(vrtkEnumChoicesOf, RefusesOtherTypes) {
  vrtkEnumChoices* choices = nullptr;
  EXPECT_EQ(vrtkEnumChoicesOf(typeOf("int").get(), &choices, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(choices, nullptr);
}

std::string coerced(const char* type, const char* text, std::uint32_t lenient) {
  const ValueHandle value = parseValue(text);
  vrntValue_t* result = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status =
      vrtkValueCoerce(typeOf(type).get(), value.get(), lenient, &result, &error);
  const ToolkitError owner(error);
  const ValueHandle resultOwner(result);
  if (status == VRTK_OK) return textOf(result);
  EXPECT_EQ(status, VRTK_VALUE_TYPE);
  return vrtkErrorMessage(error);
}

TEST(vrtkValueCoerce, ConvertsAsTheLibraryDoes) {
  EXPECT_EQ(coerced("{ float @default=2.0 c; int b; }", "{ a = 1; b = 3; }", 1),
            "{ c = 2.0; b = 3; }");
  EXPECT_EQ(coerced("{ float @default=2.0 c; int b; }", "{ a = 1; b = 3; }", 0),
            "{ c = 2.0; b = 3; }");
  EXPECT_EQ(coerced("{ float x; }", "{ x = 1; }", 1), "{ x = 0.0; }");
  EXPECT_EQ(coerced("int[2]", "[ 1, 2, 3 ]", 0), "[ 1, 2 ]");
}

TEST(vrtkValueCoerce, TellsWhatDoesNotFitUnlessItIsLenient) {
  EXPECT_EQ(coerced("{ { float x; } a; }", "{ a = { x = 1; }; }", 0),
            "a/x: a value of the type int does not fit the type float");
  EXPECT_EQ(coerced("{ enum { A; C; } e; }", "{ e = B : enum { A; B; }; }", 0),
            "e: the target's enum has no constructor B");
  EXPECT_EQ(coerced("{ enum { B; A; } e; }", "{ e = B : enum { A; B; }; }", 0),
            "{ e = B : enum { B; A; }; }");
  EXPECT_EQ(coerced("enum { A; }[3]", "[ A : enum { A; B; }, B : enum { A; B; } ]", 0),
            "1: the target's enum has no constructor B");
  EXPECT_EQ(coerced("float", "{ a = 1; }", 0),
            "a value of the type { int a; } does not fit the type float");
}

std::string described(const char* type, std::uint32_t form = VRTK_DESCRIPTION_JSON) {
  char* text = nullptr;
  EXPECT_EQ(vrtkTypeDescribe(typeOf(type).get(), form, &text, nullptr), VRTK_OK);
  const std::string copy = text != nullptr ? text : "";
  vrtkStringDestroy(text);
  return copy;
}

std::string described(const vrntValue_t* value, const char* type,
                      std::uint32_t form = VRTK_DESCRIPTION_JSON) {
  const TypeHandle parsed = type != nullptr ? typeOf(type) : nullptr;
  char* text = nullptr;
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkValueDescribe(value, parsed.get(), form, &text, &error), VRTK_OK)
      << (error != nullptr ? vrtkErrorMessage(error) : "");
  vrtkErrorDestroy(error);
  const std::string copy = text != nullptr ? text : "";
  vrtkStringDestroy(text);
  return copy;
}

TEST(vrtkTypeDescribe, HasTheLayoutWithDefaultsAndLimitsAsJson) {
  EXPECT_EQ(described("{ float @default=0.5 @desc=\"Shine\" @max=1.0 @name=\"Gloss\" gloss; float3 "
                      "v; { enum { A @name=\"First\"; B; } e; int i; }[2] list; }"),
            R"({
  "type": "{ float @default=0.5 @desc=\"Shine\" @max=1.0 @name=\"Gloss\" gloss; float3 v; { enum { A @name=\"First\"; B; } e; int i; }[2] list; }",
  "canonical": "{ float gloss; float3 v; { enum { A; B; } e; int i; }[2] list; }",
  "kind": "struct",
  "concrete": true,
  "size": 48,
  "alignment": 16,
  "layout": [
    { "path": "gloss", "offset": 0, "size": 4, "alignment": 4, "type": "float", "kind": "float", "default": 0.5, "max": 1.0, "softMax": 1.0, "name": "Gloss", "description": "Shine" },
    { "path": "v", "offset": 16, "size": 16, "alignment": 16, "type": "float3", "kind": "float", "default": [0.0, 0.0, 0.0] },
    { "path": "list", "offset": 32, "size": 16, "alignment": 4, "type": "{ enum { A; B; } e; int i; }[2]", "kind": "array" },
    { "path": "list[]/e", "offset": 32, "size": 4, "alignment": 4, "type": "enum { A; B; }", "kind": "enum", "default": "A", "choices": [{ "label": "A", "name": "First" }, { "label": "B" }] },
    { "path": "list[]/i", "offset": 36, "size": 4, "alignment": 4, "type": "int", "kind": "int", "default": 0 }
  ]
}
)");
}

TEST(vrtkTypeDescribe, HasOnePartForATypeThatIsNoStruct) {
  EXPECT_NE(described("int[2,3]").find("{ \"path\": \"\", \"offset\": 0, \"size\": 24"),
            std::string::npos);
  EXPECT_NE(described("float[]").find("\"concrete\": false"), std::string::npos);
  EXPECT_NE(described("{ }").find("\"layout\": []"), std::string::npos);
  EXPECT_NE(described("{ float[]* p; }").find("\"kind\": \"reference\" }"), std::string::npos);
}

TEST(vrtkTypeDescribe, IsATableAsText) {
  EXPECT_EQ(described("{ float @default=0.5 @max=1.0 @min=0.0 @unit=\"m\" gloss; int @min=1 n; }",
                      VRTK_DESCRIPTION_TEXT),
            "{ float @default=0.5 @max=1.0 @min=0.0 @unit=\"m\" gloss; int @min=1 n; }\n"
            "8 bytes, aligned to 4\n\n"
            "OFFSET  SIZE  TYPE   PART   DEFAULT  LIMITS      UNIT\n"
            "     0     4  float  gloss  0.5      0.0 to 1.0  m\n"
            "     4     4  int    n      0        from 1\n");
}

TEST(vrtkTypeDescribe, TakesEachGroupOfTheCatalogueAndDeepTypes) {
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    for (std::uint32_t g = 0; g < vrdmFieldCount(c); ++g) {
      const TypeHandle type(vrdmFieldType(c, g));
      for (const std::uint32_t form : {VRTK_DESCRIPTION_TEXT, VRTK_DESCRIPTION_JSON}) {
        char* text = nullptr;
        EXPECT_EQ(vrtkTypeDescribe(type.get(), form, &text, nullptr), VRTK_OK);
        vrtkStringDestroy(text);
      }
    }
  }
  std::string type = "float";
  for (int i = 0; i < 500; ++i) type = "{ " + type + " abcdefgh; }";
  EXPECT_NE(described(type.c_str()).find("abcdefgh/abcdefgh"), std::string::npos);
}

TEST(vrtkValueDescribe, HasTextDataAndLeavesAsJson) {
  const ValueHandle value =
      parseValue("{ a = 2.0; v = int2(1, 2); list = [ 1.0, 2.0 ]; p = &{ x = 1; }; }");
  EXPECT_EQ(described(value.get(), "{ float @max=1.0 a; int2 v; float[2] list; { int x; }* p; }"),
            R"({
  "type": "{ float a; int2 v; float[2] list; { int x; }* p; }",
  "size": 32,
  "alignment": 8,
  "text": "{ a = 2.0; v = int2(1, 2); list = [ 1.0, 2.0 ]; p = &{ x = 1; }; }",
  "data": {
    "a": 2.0,
    "v": [1, 2],
    "list": [1.0, 2.0],
    "p": {
      "to": {
        "x": 1
      }
    }
  },
  "leaves": [
    { "path": "a", "offset": 0, "type": "float", "value": 2.0, "default": 0.0, "outside": "2.0 is above the maximum, 1.0" },
    { "path": "v", "offset": 8, "type": "int2", "value": [1, 2], "default": [0, 0] },
    { "path": "list", "offset": 16, "type": "float[2]", "value": [1.0, 2.0], "default": [0.0, 0.0] },
    { "path": "p", "offset": 24, "type": "{ int x; }*", "value": { "type": "{ int x; }" } },
    { "path": "p/to/x", "offset": 0, "type": "int", "value": 1 }
  ]
}
)");
}

TEST(vrtkValueDescribe, IsATableAsText) {
  const ValueHandle value = parseValue("[ { a = 1; }, { a = 2; } ]");
  EXPECT_EQ(described(value.get(), nullptr, VRTK_DESCRIPTION_TEXT),
            "[ { a = 1; }, { a = 2; } ]\n{ int a; }[2]\n8 bytes, aligned to 4\n\n"
            "OFFSET  TYPE  PART  VALUE  DEFAULT\n"
            "     0  int   0/a   1\n"
            "     4  int   1/a   2\n");
}

TEST(vrtkValueDescribe, ReportsAnotherTypeACycleAndAnotherForm) {
  const ValueHandle value = parseValue("{ p = $( 0 : void* ); }");
  char* text = nullptr;
  EXPECT_EQ(vrtkValueDescribe(value.get(), typeOf("int").get(), 0, &text, nullptr),
            VRTK_VALUE_TYPE);
  EXPECT_EQ(vrtkValueDescribe(value.get(), nullptr, 2, &text, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_EQ(vrtkTypeDescribe(typeOf("int").get(), 2, &text, nullptr), VRTK_INVALID_ARGUMENT);
  // No call makes a cycle: write the word itself, and count it.
  const ValueHandle counted(vrntValueCopy(value.get()));
  *static_cast<void**>(vrntValueData(value.get())) = vrntValueData(value.get());
  EXPECT_EQ(vrtkValueDescribe(value.get(), nullptr, 0, &text, nullptr), VRTK_VALUE_CYCLE);
  *static_cast<void**>(vrntValueData(value.get())) = nullptr;
  EXPECT_EQ(text, nullptr);
}

TEST(vrtkValueDescribe, ShowsACodeWithoutANameAsItsNumber) {
  const ValueHandle value = parseValue("{ e = A : enum { A; }; }");
  const std::int32_t code = 7;
  std::memcpy(vrntValueData(value.get()), &code, sizeof(code));
  const std::string text = described(value.get(), nullptr);
  EXPECT_NE(text.find("\"text\": null"), std::string::npos);
  EXPECT_NE(text.find("\"value\": 7"), std::string::npos);
}

}  // namespace
}  // namespace vornath_test
