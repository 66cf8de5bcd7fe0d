// What counts as one type: the factory gives one object for each description and metadata.
#include <gtest/gtest.h>

#include <vector>

#include "type_support.hpp"
#include "types/type_order.hpp"
#include "values/dynamic_value.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary

TypePtr floatType() { return make(Base::Float); }
TypePtr intType() { return make(Base::Int); }

int order(const TypePtr& a, const TypePtr& b) {
  return qex::vornath::compareTypes(a->desc(), a->metadata(), b->desc(), b->metadata());
}

// Each type comes before all those behind it, and none before itself.
void expectAscending(const std::vector<TypePtr>& types) {
  for (std::size_t i = 0; i < types.size(); ++i) {
    for (std::size_t j = 0; j < types.size(); ++j) {
      const int sign = order(types[i], types[j]);
      const char* relation = i < j ? "before" : i > j ? "behind" : "equal to";
      EXPECT_TRUE(i < j   ? sign < 0
                  : i > j ? sign > 0
                          : sign == 0)
          << types[i]->text() << " should be " << relation << " " << types[j]->text();
    }
  }
}

Metadata with(std::vector<std::pair<const char*, MetadataEntry>> entries) {
  Metadata metadata;
  for (auto& [key, entry] : entries) metadata.emplace(key, std::move(entry));
  return metadata;
}

}  // namespace

TEST(Interning, MakesOneObjectOfEqualDescriptions) {
  EXPECT_EQ(floatType(), floatType());
  EXPECT_EQ(makeStruct({{intType(), "a"}}), makeStruct({{intType(), "a"}}));
  EXPECT_EQ(makeEnum({{"A", {}, {}}}), makeEnum({{"A", {}, {}}}));
  EXPECT_EQ(makeArray(intType(), 3), makeArray(intType(), 3));
  EXPECT_EQ(make(Array<index2>(intType(), index2{1, 2})),
            make(Array<index2>(intType(), index2{1, 2})));
  EXPECT_EQ(makeReference(nullptr), makeReference(nullptr));
  EXPECT_EQ(makeFunction({intType()}, intType()), makeFunction({intType()}, intType()));
}

TEST(Interning, MakesOneObjectOfTextAndConstruction) {
  EXPECT_EQ(parsed("{ int a; float[2,3]* b; } @name=\"x\""),
            makeStruct({{intType(), "a"},
                        {makeReference(make(Array<index2>(floatType(), index2{2, 3}))), "b"}},
                       {{"name", text("x")}}));
}

TEST(Interning, GivesTheSameThroughTheVariantAndThroughTheAlternative) {
  const TypePtr direct = make(Array<int>(intType(), 4));
  const TypePtr general = factory().makeType(qex::vornath::TypeDesc(Array<int>(intType(), 4)), {});
  EXPECT_EQ(direct, general);
}

TEST(Interning, LeavesADescriptionAsItWas) {
  Metadata metadata = with({{"name", text("x")}});
  qex::vornath::TypeDesc desc = Array<int>(intType(), 4);
  const TypePtr first = factory().makeType(desc, metadata);
  const TypePtr second = factory().makeType(desc, metadata);
  EXPECT_EQ(first, second);
  EXPECT_EQ(std::get<Array<int>>(desc).element, intType());
  EXPECT_EQ(std::get<std::string>(metadata.at("name")), "x");
}

TEST(Interning, TellsMetadataApart) {
  const TypePtr plain = floatType();
  const TypePtr flagged = make(Base::Float, {{"a", flag()}});
  const TypePtr texted = make(Base::Float, {{"a", text("")}});
  EXPECT_NE(plain, flagged);
  EXPECT_NE(flagged, texted);
  EXPECT_EQ(flagged, make(Base::Float, {{"a", flag()}}));
  EXPECT_EQ(texted, make(Base::Float, {{"a", text("")}}));
  EXPECT_NE(texted, make(Base::Float, {{"a", text("x")}}));
}

TEST(Interning, LeavesPayloadsOut) {
  const TypePtr first = makeEnum({{"P", {}, Struct(Fields{{intType(), "x"}})}, {"Q", {}, {}}});
  const TypePtr second = makeEnum({{"P", {}, {}}, {"Q", {}, Struct(Fields{{floatType(), "y"}})}});
  EXPECT_EQ(first, second);
  EXPECT_EQ(second->text(), "enum { P( int x ); Q; }");
}

TEST(Interning, TakesTheMetadataOfConstructorsIn) {
  EXPECT_NE(makeEnum({{"A", {}, {}}}), makeEnum({{"A", {{"k", flag()}}, {}}}));
}

TEST(Interning, TellsValuesApartByTheirBoxes) {
  // Two parses box two values; they print alike and stay two types.
  const TypePtr first = parsed("float  @min=0.0");
  const TypePtr second = parsed("float  @min=0.0");
  EXPECT_NE(first, second);
  EXPECT_EQ(first->text(), second->text());
  EXPECT_EQ(&first->stripped(), &second->stripped());
  // The later one has taken the place of the other in the table of texts.
  EXPECT_EQ(parsed("float @min=0.0"), second);
}

TEST(Interning, MakesANewTypeOfMetadataCopiedWithItsValues) {
  // A copied box is a box of its own.
  const TypePtr first = parsed("float @min=0.0");
  const Metadata copied = first->metadata();
  EXPECT_NE(make(Base::Float, copied), first);
}

TEST(Interning, FindsATypeAgainByItsVeryOwnMetadata) {
  const TypePtr first = parsed("float @min=0.0 @own");
  EXPECT_EQ(make(Base::Float, first->metadata()), first);
}

TEST(TypeOrder, GoesByTheAlternativeFirst) {
  expectAscending({make(Base::Half4, {{"z", flag()}}), makeEnum({{"A", {}, {}}}), makeStruct({}),
                   makeArray(floatType(), std::nullopt),
                   make(Array<index2>(floatType(), std::nullopt)),
                   make(Array<index3>(floatType(), std::nullopt)),
                   make(Array<index4>(floatType(), std::nullopt)), makeReference(nullptr),
                   makeFunction({}, floatType())});
}

TEST(TypeOrder, OfBaseTypesIsThatOfTheEnumeration) {
  std::vector<TypePtr> types;
  for (int code = 0; code < 20; ++code) types.push_back(make(static_cast<Base>(code)));
  expectAscending(types);
}

TEST(TypeOrder, OfEnumsGoesByNamesAndTheirMetadataInOrder) {
  expectAscending({makeEnum({{"A", {}, {}}}), makeEnum({{"A", {}, {}}, {"B", {}, {}}}),
                   makeEnum({{"A", {}, {}}, {"C", {}, {}}}), makeEnum({{"A", {{"k", flag()}}, {}}}),
                   makeEnum({{"A", {{"k", text("")}}, {}}}), makeEnum({{"AA", {}, {}}}),
                   makeEnum({{"B", {}, {}}, {"A", {}, {}}})});
}

TEST(TypeOrder, OfStructsGoesByFieldTypesThenLabels) {
  const TypePtr i = intType();
  const TypePtr f = floatType();
  expectAscending({makeStruct({}), makeStruct({{i, "a"}}), makeStruct({{i, "a"}, {i, "b"}}),
                   makeStruct({{i, "a"}, {f, "a1"}}), makeStruct({{i, "b"}}),
                   makeStruct({{f, "a"}}), makeStruct({{f, "b"}})});
}

TEST(TypeOrder, OfArraysGoesByElementThenShapeThenExtents) {
  const TypePtr i = intType();
  const TypePtr f = floatType();
  expectAscending({makeArray(i, std::nullopt), makeArray(i, 0), makeArray(i, 2), makeArray(i, 10),
                   makeArray(f, std::nullopt), makeArray(f, 1)});
  expectAscending({make(Array<index2>(i, std::nullopt)), make(Array<index2>(i, index2{1, 9})),
                   make(Array<index2>(i, index2{2, 0})), make(Array<index2>(i, index2{2, 1}))});
  expectAscending({make(Array<index3>(i, std::nullopt)), make(Array<index3>(i, index3{1, 2, 9})),
                   make(Array<index3>(i, index3{1, 3, 0})), make(Array<index3>(i, index3{1, 3, 1})),
                   make(Array<index3>(i, index3{2, 0, 0}))});
  expectAscending({make(Array<index4>(i, std::nullopt)), make(Array<index4>(i, index4{1, 2, 3, 9})),
                   make(Array<index4>(i, index4{1, 2, 4, 0})),
                   make(Array<index4>(i, index4{1, 3, 0, 0})),
                   make(Array<index4>(i, index4{2, 0, 0, 0}))});
}

TEST(TypeOrder, OfReferencesPutsAnUnknownTargetFirst) {
  expectAscending({makeReference(nullptr), makeReference(intType()), makeReference(floatType()),
                   makeReference(makeReference(nullptr))});
}

TEST(TypeOrder, OfFunctionsGoesByTheCodomainFirst) {
  const TypePtr i = intType();
  const TypePtr f = floatType();
  expectAscending({makeFunction({}, i), makeFunction({i}, i), makeFunction({i, i}, i),
                   makeFunction({f}, i), makeFunction({}, f), makeFunction({i}, f)});
}

TEST(TypeOrder, OfMetadataGoesByKeyThenKindThenText) {
  expectAscending(
      {make(Base::Int), make(Base::Int, with({{"a", flag()}})),
       make(Base::Int, with({{"a", flag()}, {"b", flag()}})),
       make(Base::Int, with({{"a", text("")}})), make(Base::Int, with({{"a", text("x")}})),
       make(Base::Int, with({{"a", text("xa")}})), make(Base::Int, with({{"a", text("y")}})),
       parsed("int @a=1"), make(Base::Int, with({{"aa", flag()}})),
       make(Base::Int, with({{"b", flag()}}))});
}

TEST(TypeOrder, ReadsBytesAboveTheAsciiRangeAsLarger) {
  expectAscending({make(Base::Int, with({{"a", text("z")}})),
                   make(Base::Int, with({{"a", text("\xc3\xa9")}}))});
}

TEST(StrippedTwins, AreTheTypeItselfWhereThereIsNothingToTakeOff) {
  for (const char* plain :
       {"float", "enum { A; B(int x); }", "{ int a; }", "float[3]", "int[1,2]", "int[,,]",
        "int[1,2,3,4]", "void*", "{ int a; }*", "((int) => float)"}) {
    const TypePtr type = parsed(plain);
    EXPECT_EQ(&type->stripped(), type.get()) << plain;
  }
}

TEST(StrippedTwins, HaveNoMetadataAtAnyDepth) {
  const std::vector<std::pair<const char*, const char*>> twins{
      {"float @a", "float"},
      {"enum { A; B; } @a", "enum { A; B; }"},
      {"enum { TwinA @a; TwinB(int x); }", "enum { TwinA; TwinB; }"},
      {"enum { TwinC(int x); TwinD; } @a", "enum { TwinC; TwinD; }"},
      {"{ int a; } @a", "{ int a; }"},
      {"{ int @a a; float b; }", "{ int a; float b; }"},
      {"{ { { int @a a; } a; } a; }", "{ { { int a; } a; } a; }"},
      {"float[3] @a", "float[3]"},
      {"float @a[3]", "float[3]"},
      {"float @a[]", "float[]"},
      {"float @a[2,3]", "float[2,3]"},
      {"float @a[2,3,4] @b", "float[2,3,4]"},
      {"float @a[,,,]", "float[,,,]"},
      {"void* @a", "void*"},
      {"float @a*", "float*"},
      {"{ float @a[]* x; }*", "{ float[]* x; }*"},
      {"(() => int) @a", "(() => int)"},
      {"(() => int @a)", "(() => int)"},
      {"((int, float @a) => int)", "((int, float) => int)"},
      {"float @min=0.0 @max=[ 1 ]", "float"}};
  for (const auto& [annotated, plain] : twins) {
    const TypePtr type = parsed(annotated);
    EXPECT_EQ(type->stripped().text(), plain) << annotated;
    EXPECT_EQ(TypePtr(&type->stripped()), parsed(plain)) << annotated;
    EXPECT_EQ(&type->stripped().stripped(), &type->stripped()) << annotated;
    EXPECT_TRUE(type->stripped().metadata().empty()) << annotated;
  }
}

TEST(StrippedTwins, KeepThePayloadOfAnEnumThatHasNothingToTakeOff) {
  const TypePtr type = parsed("{ enum { KeptA(int x); } @a e; enum { KeptB(int y); } f; }");
  EXPECT_EQ(type->stripped().text(), "{ enum { KeptA; } e; enum { KeptB( int y ); } f; }");
}

TEST(StrippedTwins, LiveAsLongAsTheirType) {
  const TypePtr type = parsed("{ int @a twin_probe; }");
  const qex::vornath::InternedType* const twin = &type->stripped();
  EXPECT_EQ(parsed("{ int twin_probe; }").get(), twin);
}
