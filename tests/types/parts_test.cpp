// Where the parts of a value lie.
#include "types/parts.hpp"

#include <gtest/gtest.h>

#include <string>

#include "type_support.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary
using qex::vornath::arrayElements;
using qex::vornath::elementPart;
using qex::vornath::fieldPart;
using qex::vornath::Part;
using qex::vornath::Parts;

// Each part as its type's text and its offset.
std::string listed(const char* typeText) {
  const TypePtr type = parsed(typeText);
  const Parts parts = Parts::of(*type);
  std::string text;
  for (std::size_t i = 0; i < parts.count(); ++i) {
    text += parts[i].type->text() + "@" + std::to_string(parts[i].offset) + " ";
  }
  return text;
}

TEST(Parts, OfAStructAreItsFieldsAtTheirOffsets) {
  EXPECT_EQ(listed("{ char a; float3 b; int[2] c; }"), "char@0 float3@16 int[2]@32 ");
  EXPECT_EQ(listed("{ }"), "");
  const TypePtr type = parsed("{ int a; }");
  EXPECT_EQ(Parts::of(*type).structure(), type->getIf<Struct>());
}

TEST(Parts, OfAnArrayAreItsElementsOneBehindTheOther) {
  EXPECT_EQ(listed("char3[3]"), "char3@0 char3@4 char3@8 ");
  EXPECT_EQ(listed("int[2,2]"), "int@0 int@4 int@8 int@12 ");
  EXPECT_EQ(listed("{ }[2]"), "{ }@0 { }@4 ");
  const TypePtr type = parsed("half[1,2,3,4]");
  const Parts parts = Parts::of(*type);
  EXPECT_EQ(parts.count(), 24u);
  EXPECT_EQ(parts.stride(), 2u);
  EXPECT_EQ(&parts.element(), parsed("half").get());
  EXPECT_EQ(parts.structure(), nullptr);
}

TEST(Parts, AreNoneWhereNoneLieInTheValue) {
  for (const char* text : {"int4", "enum { A(int x); }", "int[0]", "int[3,0]", "int[]", "int[,]",
                           "int[3]*", "void*", "((int) => int)"}) {
    EXPECT_EQ(listed(text), "") << text;
  }
  // 65536 * 32768 is below 0 in 32 bits.
  EXPECT_EQ(Parts::of(*parsed("char[65536,32768]")).count(), 0u);
}

TEST(FieldPlace, RefusesWhatIsNoFieldOfAStruct) {
  const TypePtr type = parsed("{ char a; int b; }");
  EXPECT_EQ(fieldPart(*type, 1).offset, 4u);
  EXPECT_EQ(fieldPart(*type, "b").type, parsed("int").get());
  expectThrows([&] { fieldPart(*type, 2); }, "Struct field index 2 out of range.");
  expectThrows([&] { fieldPart(*type, "c"); }, "Field not found in struct: c.");
  EXPECT_THROW(fieldPart(*parsed("int[3]"), 0), std::bad_variant_access);
  EXPECT_THROW(fieldPart(*parsed("int"), "a"), std::bad_variant_access);
}

TEST(ElementPlace, TakesOneIndexForEachDimension) {
  EXPECT_EQ(elementPart(*parsed("float[7]"), 3).offset, 12u);
  EXPECT_EQ(elementPart(*parsed("float[]"), 3).offset, 12u);
  EXPECT_EQ(elementPart(*parsed("float[3,5]"), index2{2, 4}).offset, 56u);
  EXPECT_EQ(elementPart(*parsed("char[3,5,2,4]"), index4{2, 3, 1, 3}).offset, 116u);
  EXPECT_THROW(elementPart(*parsed("float[3,5]"), 3), std::bad_variant_access);
  EXPECT_THROW(elementPart(*parsed("float[3]"), index2{1, 1}), std::bad_variant_access);
  EXPECT_THROW(elementPart(*parsed("{ float a; }"), 0), std::bad_variant_access);
  EXPECT_THROW(elementPart(*parsed("float[,]"), index2{1, 1}), std::bad_optional_access);
}

TEST(ArrayElements, AreCountedOverAllDimensions) {
  EXPECT_EQ(arrayElements(*parsed("int[2,3,4]")).count, 24);
  EXPECT_EQ(arrayElements(*parsed("int[65536,32768]")).count, -2147483647 - 1);
  EXPECT_EQ(arrayElements(*parsed("int[2,3,4]")).element, parsed("int").get());
  EXPECT_THROW(arrayElements(*parsed("int[]")), std::bad_optional_access);
  EXPECT_THROW(arrayElements(*parsed("int")), std::bad_variant_access);
}

}  // namespace
