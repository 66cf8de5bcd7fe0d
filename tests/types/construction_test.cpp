// The checks of a description, made where it is built, and the look-ups in a finished one.
#include <gtest/gtest.h>

#include "type_support.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary

TypePtr floatType() { return make(Base::Float); }
TypePtr openArray() { return makeArray(floatType(), std::nullopt); }

}  // namespace

TEST(ArrayConstruction, RefusesAnElementThatIsNotConcrete) {
  expectThrows([] { Array<int>(openArray(), 3); }, "concrete type required");
  expectThrows([] { Array<int>(openArray(), std::nullopt); }, "concrete type required");
  expectThrows([] { Array<index2>(openArray(), index2{1, 2}); }, "concrete type required");
  expectThrows([] { Array<index3>(openArray(), std::nullopt); }, "concrete type required");
  expectThrows([] { Array<index4>(openArray(), index4{1, 2, 3, 4}); }, "concrete type required");
}

TEST(ArrayConstruction, RefusesANegativeExtentInAnyDimension) {
  const std::string words = "negative array length";
  expectThrows([] { Array<int>(floatType(), -1); }, words);
  expectThrows([] { Array<int>(floatType(), INT32_MIN); }, words);
  expectThrows([] { Array<index2>(floatType(), index2{-1, 2}); }, words);
  expectThrows([] { Array<index2>(floatType(), index2{1, -2}); }, words);
  expectThrows([] { Array<index3>(floatType(), index3{-1, 2, 3}); }, words);
  expectThrows([] { Array<index3>(floatType(), index3{1, -2, 3}); }, words);
  expectThrows([] { Array<index3>(floatType(), index3{1, 2, -3}); }, words);
  expectThrows([] { Array<index4>(floatType(), index4{-1, 2, 3, 4}); }, words);
  expectThrows([] { Array<index4>(floatType(), index4{1, -2, 3, 4}); }, words);
  expectThrows([] { Array<index4>(floatType(), index4{1, 2, -3, 4}); }, words);
  expectThrows([] { Array<index4>(floatType(), index4{1, 2, 3, -4}); }, words);
  expectThrows([] { Array<index2>(floatType(), index2{0, -1}); }, words);
}

TEST(ArrayConstruction, ChecksTheElementBeforeTheExtents) {
  expectThrows([] { Array<int>(openArray(), -1); }, "concrete type required");
  expectThrows([] { Array<index2>(openArray(), index2{-1, -1}); }, "concrete type required");
}

TEST(ArrayConstruction, AllowsAnExtentOfZero) {
  const TypePtr type = makeArray(floatType(), 0);
  EXPECT_TRUE(type->concrete());
  EXPECT_EQ(type->size(), 0u);
  EXPECT_TRUE(make(Array<index3>(floatType(), index3{2, 0, 5}))->concrete());
}

TEST(FieldConstruction, RefusesATypeThatIsNotConcrete) {
  expectThrows([] { Field(openArray(), "x"); }, "Not a concrete type: float[].");
  const TypePtr annotated = makeArray(floatType(), std::nullopt, {{"k", text("v")}});
  expectThrows([&] { Field(annotated, "x"); }, "Not a concrete type: float[] @k=\"v\".");
}

TEST(FieldConstruction, PutsTheTypesTextIntoTheWordsAsItStands) {
  const TypePtr braces = makeArray(makeStruct(Fields{{floatType(), "a"}}), std::nullopt);
  expectThrows([&] { Field(braces, "x"); }, "Not a concrete type: { float a; }[].");
}

TEST(FieldConstruction, AcceptsAReferenceToATypeThatIsNotConcrete) {
  const Field field(makeReference(openArray()), "x");
  EXPECT_EQ(field.type->text(), "float[]*");
  EXPECT_EQ(field.label, "x");
  EXPECT_NO_THROW(Field(makeReference(nullptr), "y"));
}

TEST(StructConstruction, RefusesALabelThatOccursTwice) {
  const TypePtr f = floatType();
  expectThrows([&] { Struct(Fields{{f, "x"}, {f, "x"}}); }, "Duplicate struct field: x.");
  expectThrows(
      [&] {
        Struct(Fields{{f, "a"}, {f, "b"}, {make(Base::Int), "b"}});
      },
      "Duplicate struct field: b.");
}

TEST(StructConstruction, NamesTheFirstLabelWithATwinLaterInTheList) {
  const TypePtr f = floatType();
  expectThrows(
      [&] {
        Struct(Fields{{f, "c"}, {f, "a"}, {f, "b"}, {f, "b"}, {f, "a"}});
      },
      "Duplicate struct field: a.");
}

TEST(StructConstruction, TellsLabelsOfDifferentCaseApart) {
  EXPECT_NO_THROW(Struct(Fields{{floatType(), "a"}, {floatType(), "A"}, {floatType(), "a'"}}));
}

TEST(StructConstruction, AllowsNoFields) {
  EXPECT_TRUE(Struct(Fields{}).fields.empty());
  EXPECT_TRUE(Struct().offsets.empty());
}

TEST(StructConstruction, ComputesOneOffsetForEachField) {
  const Struct description({{make(Base::Char), "a"}, {make(Base::Int), "b"}, {floatType(), "c"}});
  EXPECT_EQ(description.offsets, (std::vector<std::uint64_t>{0, 4, 8}));
}

TEST(StructLookup, FindsAFieldByItsExactLabel) {
  const Struct description({{floatType(), "a"}, {floatType(), "ab"}});
  EXPECT_TRUE(description.hasField("ab"));
  EXPECT_FALSE(description.hasField("A"));
  EXPECT_FALSE(description.hasField("abc"));
  EXPECT_FALSE(description.hasField(""));
  EXPECT_EQ(description.fieldIndex("a"), 0u);
  EXPECT_EQ(description.fieldIndex("ab"), 1u);
  expectThrows([&] { description.fieldIndex("b"); }, "Field not found in struct: b.");
  expectThrows([&] { Struct().fieldIndex("a"); }, "Field not found in struct: a.");
}

TEST(EnumConstruction, RequiresAConstructor) {
  expectThrows([] { Enum(Constructors{}); }, "Enum requires at least one constructor.");
}

TEST(EnumConstruction, RefusesANameThatOccursTwice) {
  expectThrows(
      [] {
        Enum(Constructors{{"A", {}, {}}, {"A", {}, {}}});
      },
      "Duplicate enum constructor: A.");
  expectThrows(
      [] {
        Enum(Constructors{{"A", {}, {}}, {"B", {{"k", flag()}}, {}}, {"B", {}, {}}});
      },
      "Duplicate enum constructor: B.");
}

TEST(EnumConstruction, NamesTheFirstNameWithATwinLaterInTheList) {
  expectThrows(
      [] {
        Enum(Constructors{
            {"C", {}, {}}, {"A", {}, {}}, {"B", {}, {}}, {"B", {}, {}}, {"A", {}, {}}});
      },
      "Duplicate enum constructor: A.");
}

TEST(EnumLookup, TurnsNamesIntoCodesAndBack) {
  const Enum description({{"A", {}, {}}, {"B", {}, {}}, {"AB", {}, {}}});
  EXPECT_EQ(description.constructorIndex("A"), 0);
  EXPECT_EQ(description.constructorIndex("AB"), 2);
  expectThrows([&] { description.constructorIndex("C"); }, "Invalid enum constructor: C");
  expectThrows([&] { description.constructorIndex("a"); }, "Invalid enum constructor: a");
  EXPECT_EQ(description.constructorName(1), "B");
  expectThrows([&] { description.constructorName(3); }, "Enum code out of range: 3");
  expectThrows([&] { description.constructorName(-1); }, "Enum code out of range: -1");
}

TEST(BaseTypeConstruction, RefusesACodeOutsideTheEnumeration) {
  const std::size_t before = factory().liveTypes();
  for (const int code : {20, 21, -1, 1000}) {
    const Thrown failure = thrownBy([&] { make(static_cast<Base>(code)); });
    EXPECT_EQ(failure.message, "Illegal base type.") << code;
  }
  EXPECT_EQ(factory().liveTypes(), before);
}
