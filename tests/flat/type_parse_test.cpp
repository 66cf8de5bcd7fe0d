// Type text through the flat interface: what each form builds, identity, and how failures come out.
#include <gtest/gtest.h>

#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>
#include <chrono>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include "support/flat_handles.hpp"
#include "vornath_data/type_library.hpp"
#include "vornath_data/types.h"

namespace {

using vornath_test::canonical;
using vornath_test::Failure;
using vornath_test::parseType;
using vornath_test::typeFailure;
using vornath_test::TypeHandle;
using vornath_test::ValueHandle;

std::string messageOf(const std::string& text) {
  const auto failure = typeFailure(text);
  return failure ? failure->message : "(parsed)";
}

ValueHandle annotation(const TypeHandle& type, const char* key) {
  return ValueHandle(vrntMetadataValue(type.get(), key));
}

}  // namespace

TEST(vrntTypeParse, ReportsThatThereIsNoText) {
  vrntValuesError_t* error = nullptr;
  EXPECT_EQ(vrntTypeParse(nullptr, &error), nullptr);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), std::uint32_t{VRNT_OTHER_ERROR});
  EXPECT_STREQ(vrntValuesErrorMessage(error), "Unknown error.");
  vrntValuesErrorDestroy(error);
}

TEST(vrntTypeParse, DoesNotSetTheErrorOutParameterOnSuccess) {
  auto* const untouched = reinterpret_cast<vrntValuesError_t*>(0x10);
  vrntValuesError_t* error = untouched;
  const TypeHandle type(vrntTypeParse("float[3]", &error));
  EXPECT_NE(type, nullptr);
  EXPECT_EQ(error, untouched);
}

TEST(vrntTypeParse, ReportsATextThatDoesNotParseAsALibraryError) {
  vrntValuesError_t* error = nullptr;
  EXPECT_EQ(vrntTypeParse("float[", &error), nullptr);
  const vornath_test::ErrorHandle owner(error);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), 0u);
  EXPECT_STREQ(
      vrntValuesErrorMessage(error),
      "Unable to parse type: float[.\nsyntax error, unexpected END, expecting ] or \",\" or "
      "INT");
}

TEST(vrntTypeParse, OfAnEmptyTextNamesNoExpectedTokens) {
  EXPECT_EQ(messageOf(""), "Unable to parse type: .\nsyntax error, unexpected END");
}

TEST(vrntTypeParse, ReportsAViolatedRuleWithItsMessageAlone) {
  const std::vector<std::pair<const char*, const char*>> broken{
      {"{ float x; float x; }", "Duplicate struct field: x."},
      {"enum { A; A; }", "Duplicate enum constructor: A."},
      {"{ float[] x; }", "Not a concrete type: float[]."},
      {"float[][]", "concrete type required"},
      {"float[-1]", "negative array length"},
      {"float @a=X : enum { A; }", "Invalid enum constructor: X"},
      {"float @a=[ 1, 2 | 3 ]", "Empty array without type is not allowed."}};
  for (const auto& [text, words] : broken) {
    const auto failure = typeFailure(text);
    ASSERT_TRUE(failure) << text;
    EXPECT_EQ(failure->kind, 0u) << text;
    EXPECT_EQ(failure->message, words) << text;
  }
}

TEST(vrntTypeParse, WorksAgainAfterEachKindOfFailure) {
  for (const char* text : {"float[", "float !", "\"open", "{ float x; float x; }", "float[][]"}) {
    EXPECT_TRUE(typeFailure(text)) << text;
    EXPECT_EQ(canonical("float  [ 3 ]"), "float[3]") << text;
  }
}

TEST(vrntTypeParse, QuotesALongTextInFull) {
  const std::string text = "{ " + std::string(20000, ' ') + "float }";
  EXPECT_EQ(messageOf(text), "Unable to parse type: " + text +
                                 ".\nsyntax error, unexpected }, expecting [ or * or LIDENT");
}

TEST(vrntTypeParse, QuotesATextWithBracesUnchanged) {
  EXPECT_EQ(messageOf("{} {0}"),
            "Unable to parse type: {} {0}.\nsyntax error, unexpected {, expecting END");
}

TEST(vrntTypeParse, CopiesTheText) {
  std::string text = "{ int copied; } @name=\"Copied\"";
  const TypeHandle type = parseType(text);
  text.assign(text.size(), 'x');
  EXPECT_STREQ(vrntTypeString(type.get()), "{ int copied; } @name=\"Copied\"");
}

TEST(vrntTypeParse, ReturnsOneHandleForEquivalentTexts) {
  const std::vector<std::pair<const char*, const char*>> same{
      {"float[3]", "float[3]"},
      {"float[3]", " float\t[\n3\r\n] "},
      {"{ int a; float b; }", "{int a;float b;}"},
      {"enum { A; B(int x, float y); }", "enum{A();B(int x float y,);}"},
      {"float @a @b=\"t\"", "float @b=\"t\" @a"},
      {"float @a=\"x\"", "float @a @a=\"y\" @a=\"x\""},
      {"int[16]", "int[0x00000010]"},
      {"((int) => void*)", "( ( int )=>void * )"}};
  for (const auto& [a, b] : same) {
    const TypeHandle first = parseType(a);
    const TypeHandle second = parseType(b);
    EXPECT_EQ(first.get(), second.get()) << a << " / " << b;
  }
}

TEST(vrntTypeParse, ReturnsDifferentHandlesForDifferentTypes) {
  const std::vector<const char*> texts{"float",
                                       "float2",
                                       "int",
                                       "float[]",
                                       "float[0]",
                                       "float[1]",
                                       "float[,]",
                                       "float[1,1]",
                                       "float[,,]",
                                       "float[,,,]",
                                       "float*",
                                       "void*",
                                       "float @a",
                                       "float @b",
                                       "float @a=\"\"",
                                       "float @a=\"x\"",
                                       "{ }",
                                       "{ float x; }",
                                       "{ float y; }",
                                       "{ float x; } @a",
                                       "{ float @a x; }",
                                       "enum { A; }",
                                       "enum { B; }",
                                       "enum { A; B; }",
                                       "enum { B; A; }",
                                       "enum { A @a; }",
                                       "enum { A; } @a",
                                       "(() => int)",
                                       "(() => float)",
                                       "((int) => int)",
                                       "float* @a",
                                       "float @a*",
                                       "float[3] @a",
                                       "float @a[3]"};
  std::vector<TypeHandle> types;
  for (const char* text : texts) {
    types.push_back(parseType(text));
    for (std::size_t i = 0; i + 1 < types.size(); ++i) {
      EXPECT_NE(types[i].get(), types.back().get()) << texts[i] << " / " << text;
    }
  }
}

TEST(vrntTypeParse, CreatesOneTypeForEnumsThatDifferInConstructorFieldsOnly) {
  TypeHandle first = parseType("enum { PayA(int x); PayB; }");
  const TypeHandle second = parseType("enum { PayA(float y, int z); PayB; }");
  EXPECT_EQ(first.get(), second.get());
  EXPECT_STREQ(vrntTypeString(second.get()), "enum { PayA( int x ); PayB; }");
}

TEST(vrntTypeParse, UsesOtherConstructorFieldsAfterTheOldTypeIsDestroyed) {
  parseType("enum { GoneA(int x); }");
  EXPECT_EQ(canonical("enum { GoneA(float y); }"), "enum { GoneA( float y ); }");
}

TEST(vrntTypeParse, ReturnsTheLivingTypeForACanonicalTextWithAValue) {
  const TypeHandle first = parseType("float @default=1.0 @x");
  const TypeHandle second = parseType("float @default=1.0 @x");
  EXPECT_EQ(first.get(), second.get());
}

TEST(vrntTypeParse, CreatesANewTypeForAnyOtherSpellingWithAValue) {
  const TypeHandle first = parseType("float  @default=1.0 @x");
  const TypeHandle second = parseType("float  @default=1.0 @x");
  EXPECT_NE(first.get(), second.get());
  EXPECT_STREQ(vrntTypeString(first.get()), vrntTypeString(second.get()));
  // The later one stands in the table of texts.
  EXPECT_EQ(parseType("float @default=1.0 @x").get(), second.get());
}

TEST(vrntTypeParse, CreatesANewTypeIfTheTextIsInNoTable) {
  const TypeHandle older = parseType("float  @twin=1.0");
  TypeHandle newer = parseType("float  @twin=1.0");
  newer.reset();
  const TypeHandle again = parseType("float @twin=1.0");
  EXPECT_NE(again.get(), older.get());
  EXPECT_STREQ(vrntTypeString(again.get()), "float @twin=1.0");
  EXPECT_EQ(parseType("float @twin=1.0").get(), again.get());
}

TEST(vrntTypeParse, ForgetsATextWhenAnyTypeWithThatTextIsDestroyed) {
  TypeHandle older = parseType("float  @lost=1.0");
  const TypeHandle newer = parseType("float  @lost=1.0");
  older.reset();
  const TypeHandle again = parseType("float @lost=1.0");
  EXPECT_NE(again.get(), newer.get());
  EXPECT_STREQ(vrntTypeString(again.get()), vrntTypeString(newer.get()));
}

TEST(vrntTypeParse, ParsesAgainAfterTheLastReference) {
  TypeHandle type = parseType("float @anew=1.0");
  const ValueHandle before = annotation(type, "anew");
  type.reset();
  EXPECT_EQ(before->refCount, 1u);
  type = parseType("float @anew=1.0");
  EXPECT_NE(annotation(type, "anew").get(), before.get());
}

TEST(vrntTypeParse, ReadsEveryBaseKeyword) {
  for (const char* family : {"bool", "int", "float", "char", "half"}) {
    for (const char* lanes : {"", "2", "3", "4"}) {
      const std::string text = std::string(family) + lanes;
      EXPECT_EQ(canonical(text), text);
    }
  }
}

TEST(vrntTypeParse, BindsSuffixesToTheFinishedTypeOnTheirLeft) {
  EXPECT_EQ(canonical("float @a [3] @b"), "float @a[3] @b");
  EXPECT_EQ(canonical("float[2][3]"), "float[2][3]");
  const TypeHandle nested = parseType("float[2][3]");
  EXPECT_STREQ(vrntTypeString(TypeHandle(vrntTypeElementType(nested.get())).get()), "float[2]");
  const TypeHandle annotated = parseType("float @a [3] @b");
  EXPECT_EQ(vrntMetadataExists(annotated.get(), "b"), 1u);
  EXPECT_EQ(vrntMetadataExists(annotated.get(), "a"), 0u);
  const TypeHandle element(vrntTypeElementType(annotated.get()));
  EXPECT_EQ(vrntMetadataExists(element.get(), "a"), 1u);
  EXPECT_EQ(canonical("void * * [ ] *"), "void**[]*");
}

TEST(vrntTypeParse, ReadsAFieldsAnnotationsIntoTheFieldsType) {
  const TypeHandle type =
      parseType("{ char[64] @desc=\"Tag\" @string tag; float @default=1.0 @name=\"Near\" near; }");
  const TypeHandle tag(vrntTypeFieldType(type.get(), 0));
  EXPECT_EQ(vrntMetadataSize(tag.get()), 2u);
  EXPECT_STREQ(vrntMetadataString(tag.get(), "desc"), "Tag");
  EXPECT_EQ(vrntMetadataType(tag.get(), "string"), 0u);
  EXPECT_EQ(vrntTypeSize(tag.get()), 64u);
  EXPECT_STREQ(vrntTypeFieldLabel(type.get(), 0), "tag");
  const TypeHandle near(vrntTypeFieldType(type.get(), 1));
  EXPECT_STREQ(vrntTypeString(near.get()), "float @default=1.0 @name=\"Near\"");
  EXPECT_STREQ(vrntTypeFieldLabel(type.get(), 1), "near");
}

TEST(vrntTypeParse, ReadsTheLongFormOfAnEnumsDefault) {
  const TypeHandle type = parseType(
      "{ enum { CLAMP @name=\"Clamp\"; BORDER @name=\"Border\"; REPEAT @name=\"Repeat\"; MIRROR "
      "@name=\"Mirror\"; } @default=REPEAT : enum { CLAMP; BORDER; REPEAT; MIRROR; } "
      "@name=\"Wrap mode\" u; }");
  const TypeHandle mode(vrntTypeFieldType(type.get(), 0));
  EXPECT_EQ(vrntMetadataSize(mode.get()), 2u);
  EXPECT_STREQ(vrntMetadataString(mode.get(), "name"), "Wrap mode");
  const ValueHandle value = annotation(mode, "default");
  EXPECT_EQ(vornath_test::typeTextOf(value), "enum { CLAMP; BORDER; REPEAT; MIRROR; }");
  EXPECT_EQ(vornath_test::readAt<std::int32_t>(value), 2);
}

TEST(vrntTypeParse, ReadsAnAliasAsAPlainTextEntry) {
  const TypeHandle type =
      parseType("{ { int index; } @alias=\"texture_ref\" @desc=\"...\" spectrum_texture; }");
  const TypeHandle field(vrntTypeFieldType(type.get(), 0));
  EXPECT_STREQ(vrntMetadataString(field.get(), "alias"), "texture_ref");
  EXPECT_STREQ(vrntMetadataString(field.get(), "desc"), "...");
  EXPECT_EQ(vrntTypeFieldCount(field.get()), 1u);
}

TEST(vrntTypeParse, ReadsAValueUpToTheNextAnnotation) {
  EXPECT_EQ(canonical("float4 @default=float4(1.0, 0.0, 0.0, 0.0) @name=\"Colour\""),
            "float4 @default=float4(1.0, 0.0, 0.0, 0.0) @name=\"Colour\"");
  EXPECT_EQ(canonical("int@min=-3@max=[1,2]@f"), "int @f @max=[ 1, 2 ] @min=-3");
}

TEST(vrntTypeParse, ReadsConstructorFieldsInAllSpellings) {
  for (const char* text :
       {"enum { Spell(int x, int y); }", "enum { Spell(int x int y); }",
        "enum { Spell(int x, int y,); }", "enum { Spell ( int x int y , ) ; }"}) {
    EXPECT_EQ(canonical(text), "enum { Spell( int x, int y ); }") << text;
  }
  EXPECT_EQ(canonical("enum { Lone(int x,); }"), "enum { Lone( int x ); }");
  EXPECT_EQ(canonical("enum { Bare(); }"), "enum { Bare; }");
  EXPECT_EQ(canonical("enum { Noted() @a; }"), "enum { Noted @a; }");
}

TEST(vrntTypeParse, ReadsLabelsOfAllNameCharacters) {
  const TypeHandle type = parseType("{ int aB_9'; int bool5; int int'; int infx; int truer; }");
  EXPECT_STREQ(vrntTypeFieldLabel(type.get(), 0), "aB_9'");
  EXPECT_STREQ(vrntTypeFieldLabel(type.get(), 1), "bool5");
  EXPECT_STREQ(vrntTypeFieldLabel(type.get(), 2), "int'");
  EXPECT_STREQ(vrntTypeFieldLabel(type.get(), 3), "infx");
  EXPECT_STREQ(vrntTypeFieldLabel(type.get(), 4), "truer");
  const TypeHandle names = parseType("enum { A'; B_; C9; NaN2; TRUE; }");
  EXPECT_STREQ(vrntTypeFieldLabel(names.get(), 0), "A'");
  EXPECT_STREQ(vrntTypeFieldLabel(names.get(), 3), "NaN2");
}

TEST(vrntTypeParse, AnswersALivingCanonicalTextWithoutTheParser) {
  const TypeHandle type = parseType("{ int lock_free; }[3] @name=\"x\"");
  boost::unique_lock<boost::mutex> parser(qex::vornath::parser_mutex);
  auto answer =
      std::async(std::launch::async, [] { return parseType("{ int lock_free; }[3] @name=\"x\""); });
  const auto state = answer.wait_for(std::chrono::seconds(20));
  parser.unlock();
  EXPECT_EQ(state, std::future_status::ready);
  EXPECT_EQ(answer.get().get(), type.get());
}

TEST(vrntTypeParse, WaitsForTheParserWithAnyOtherText) {
  const TypeHandle type = parseType("{ int waits; }");
  boost::unique_lock<boost::mutex> parser(qex::vornath::parser_mutex);
  auto answer = std::async(std::launch::async, [] { return parseType("{ int  waits; }"); });
  const auto state = answer.wait_for(std::chrono::milliseconds(200));
  parser.unlock();
  EXPECT_EQ(state, std::future_status::timeout);
  EXPECT_EQ(answer.get().get(), type.get());
}

TEST(vrntTypeParse, FreesTheParserAfterEachFailure) {
  for (const char* text : {"float[", "float !", "{ float x; float x; }", "float[][]",
                           "float @a=[ 1, 2 | 3 ]", "float[256c]"}) {
    EXPECT_TRUE(typeFailure(text)) << text;
    const bool isFree = qex::vornath::parser_mutex.try_lock();
    EXPECT_TRUE(isFree) << text;
    if (isFree) qex::vornath::parser_mutex.unlock();
  }
}
