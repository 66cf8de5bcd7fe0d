// The canonical text of every kind of type, made from its parts.
#include "types/type_text.hpp"

#include <gtest/gtest.h>

#include <array>
#include <locale>
#include <string>

#include "type_support.hpp"
#include "types/metadata.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary

TypePtr floatType() { return make(Base::Float); }
TypePtr intType() { return make(Base::Int); }

struct Grouping : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

}  // namespace

TEST(TypeText, OfABaseTypeIsItsKeyword) {
  constexpr std::array<const char*, 20> spellings{
      "bool",   "bool2",  "bool3", "bool4", "int",   "int2",  "int3", "int4",  "float", "float2",
      "float3", "float4", "char",  "char2", "char3", "char4", "half", "half2", "half3", "half4"};
  for (std::size_t code = 0; code < spellings.size(); ++code) {
    EXPECT_EQ(make(static_cast<Base>(code))->text(), spellings[code]);
  }
}

TEST(TypeText, OfAnEnumListsItsConstructors) {
  EXPECT_EQ(makeEnum(Constructors{{"A", {}, {}}})->text(), "enum { A; }");
  EXPECT_EQ(makeEnum(Constructors{{"A", {}, Struct(Fields{{intType(), "x"}, {floatType(), "y"}})},
                                  {"B", {}, {}}})
                ->text(),
            "enum { A( int x, float y ); B; }");
  EXPECT_EQ(makeEnum(Constructors{{"T1", {}, Struct(Fields{{intType(), "x"}})}})->text(),
            "enum { T1( int x ); }");
}

TEST(TypeText, OfAConstructorHasItsAnnotationsBehindThePayload) {
  EXPECT_EQ(makeEnum(Constructors{{"A", {{"name", text("a")}}, {}},
                                  {"B", {{"z", flag()}, {"k", flag()}}, {}}})
                ->text(),
            "enum { A @name=\"a\"; B @k @z; }");
  EXPECT_EQ(makeEnum(Constructors{{"A", {{"k", flag()}}, Struct(Fields{{intType(), "x"}})}},
                     {{"t", flag()}})
                ->text(),
            "enum { A( int x ) @k; } @t");
}

TEST(TypeText, OfAStructListsTypesAndLabels) {
  EXPECT_EQ(makeStruct({})->text(), "{ }");
  EXPECT_EQ(makeStruct(Fields{{intType(), "a"}})->text(), "{ int a; }");
  EXPECT_EQ(makeStruct(Fields{{intType(), "a"}, {makeStruct({}), "b"}})->text(),
            "{ int a; { } b; }");
}

TEST(TypeText, OfAnArrayHasItsExtentsBehindTheElement) {
  const TypePtr f = floatType();
  EXPECT_EQ(makeArray(f, 3)->text(), "float[3]");
  EXPECT_EQ(makeArray(f, std::nullopt)->text(), "float[]");
  EXPECT_EQ(make(Array<index2>(f, index2{2, 3}))->text(), "float[2,3]");
  EXPECT_EQ(make(Array<index2>(f, std::nullopt))->text(), "float[,]");
  EXPECT_EQ(make(Array<index3>(f, index3{2, 3, 4}))->text(), "float[2,3,4]");
  EXPECT_EQ(make(Array<index3>(f, std::nullopt))->text(), "float[,,]");
  EXPECT_EQ(make(Array<index4>(f, index4{2, 3, 4, 5}))->text(), "float[2,3,4,5]");
  EXPECT_EQ(make(Array<index4>(f, std::nullopt))->text(), "float[,,,]");
  EXPECT_EQ(makeArray(makeArray(f, 2), 3)->text(), "float[2][3]");
}

TEST(TypeText, HasNoBlankBetweenAnElementsAnnotationsAndTheBracket) {
  EXPECT_EQ(makeArray(make(Base::Float, {{"a", flag()}}), 3)->text(), "float @a[3]");
  EXPECT_EQ(makeArray(make(Base::Float, {{"a", text("t")}}), 3, {{"b", flag()}})->text(),
            "float @a=\"t\"[3] @b");
}

TEST(TypeText, OfAReferenceEndsInAStar) {
  EXPECT_EQ(makeReference(nullptr)->text(), "void*");
  EXPECT_EQ(makeReference(makeReference(nullptr))->text(), "void**");
  EXPECT_EQ(makeReference(makeArray(floatType(), std::nullopt))->text(), "float[]*");
  EXPECT_EQ(makeReference(make(Base::Float, {{"a", flag()}}), {{"b", flag()}})->text(),
            "float @a* @b");
}

TEST(TypeText, OfAFunctionListsItsDomain) {
  EXPECT_EQ(makeFunction({}, intType())->text(), "(() => int)");
  EXPECT_EQ(makeFunction({floatType(), intType()}, floatType())->text(), "((float, int) => float)");
  EXPECT_EQ(makeFunction({makeFunction({}, intType())}, makeFunction({}, intType()))->text(),
            "(((() => int)) => (() => int))");
}

TEST(TypeText, PutsAnnotationsInKeyOrderBehindTheType) {
  EXPECT_EQ(make(Base::Float, {{"b", flag()}, {"a", text("x")}})->text(), "float @a=\"x\" @b");
  EXPECT_EQ(makeStruct(Fields{{make(Base::Float, {{"a", flag()}}), "x"}}, {{"b", flag()}})->text(),
            "{ float @a x; } @b");
}

TEST(TypeText, DoesNotDependOnTheProcessesLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  const TypePtr array = makeArray(floatType(), 1234567);
  const TypePtr annotated = parsed("float @max=1234567.5 @min=-2000000000");
  std::locale::global(before);
  EXPECT_EQ(array->text(), "float[1234567]");
  EXPECT_EQ(annotated->text(), "float @max=1234567.5 @min=-2000000000");
}

TEST(MetadataText, IsEmptyForNoneAndElseBeginsWithABlank) {
  EXPECT_EQ(qex::vornath::metadataText({}), "");
  EXPECT_EQ(qex::vornath::metadataText({{"a", flag()}}), " @a");
  EXPECT_EQ(qex::vornath::metadataText({{"", flag()}}), " @");
  EXPECT_EQ(qex::vornath::metadataText({{"a", text("")}}), " @a=\"\"");
}

TEST(MetadataText, DoesNotEscapeATextEntry) {
  EXPECT_EQ(qex::vornath::metadataText({{"a", text("\\ \n '@b")}}), " @a=\"\\ \n '@b\"");
}

TEST(MetadataText, OrdersKeysByTheirBytes) {
  Metadata metadata;
  for (const char* key : {"b", "ab", "a", "B", "a1", "a_", "aB", "a'"}) metadata[key] = flag();
  EXPECT_EQ(qex::vornath::metadataText(metadata), " @B @a @a' @a1 @aB @a_ @ab @b");
}

TEST(MetadataText, PrintsAValueInItsTextForm) {
  EXPECT_EQ(parsed("float @a=+1.50")->text(), "float @a=1.5");
  EXPECT_EQ(parsed("int @v=[1,2 : int] @w={x=1;y=$0;} @x=&1c @y=0.5h @z=int2(1,2)")->text(),
            "int @v=[ 1, 2 ] @w={ x = 1; y = $0x0000000000000000; } @x=&1c @y=0.5h @z=int2(1, 2)");
  EXPECT_EQ(parsed("int @b=B:enum{A;B;}")->text(), "int @b=B : enum { A; B; }");
}

TEST(MetadataEntries, AreReplacedWhateverTheirKind) {
  Metadata metadata{{"a", flag()}};
  qex::vornath::setMetadata(metadata, "a", text("x"));
  qex::vornath::setMetadata(metadata, "b", flag());
  EXPECT_EQ(qex::vornath::metadataText(metadata), " @a=\"x\" @b");
  qex::vornath::setMetadata(metadata, "a", flag());
  EXPECT_EQ(qex::vornath::metadataText(metadata), " @a @b");
}

TEST(MetadataEntries, GiveAValueOnlyForAValue) {
  const TypePtr type = parsed("float @a @b=\"t\" @c=1.0");
  EXPECT_EQ(qex::vornath::findMetadataValue(type->metadata(), "a"), nullptr);
  EXPECT_EQ(qex::vornath::findMetadataValue(type->metadata(), "b"), nullptr);
  EXPECT_NE(qex::vornath::findMetadataValue(type->metadata(), "c"), nullptr);
  EXPECT_EQ(qex::vornath::findMetadataValue(type->metadata(), "d"), nullptr);
}
