#include "values/views.hpp"

#include "embed/view_writing.hpp"
#include "values/fixed_types.hpp"
#include "values/write_protocol.hpp"
#include "values_support.hpp"

namespace qex::vornath::test {
namespace {

TEST(View, FieldsStandAtTheStructsOffsets) {
  const DynamicValue v(type("{ char a; float3 b; float c; }"));
  EXPECT_EQ(v.view().field(0).offset, 0u);
  EXPECT_EQ(v.view().field(1).offset, 16u);
  EXPECT_EQ(v.view().field("c").offset, 32u);
  EXPECT_EQ(v.view().field("c").type->text(), "float");
  EXPECT_EQ(v.view().field(2).data(), v.data() + 32);
}

TEST(View, RefusesAnUnknownField) {
  const DynamicValue v(type("{ int a; }"));
  EXPECT_REFUSED(v.view().field(1), "Struct field index 1 out of range.");
  EXPECT_REFUSED(v.view().field("b"), "Field not found in struct: b.");
}

TEST(View, ElementsRunFastestInTheFirstIndex) {
  const DynamicValue v1(type("float[7]"));
  EXPECT_EQ(v1.view().element(3).offset, 12u);
  const DynamicValue v2(type("float[3,5]"));
  EXPECT_EQ(v2.view().element(index2{2, 4}).offset, (4u * 3 + 2) * 4);
  const DynamicValue v3(type("float[3,5,2]"));
  EXPECT_EQ(v3.view().element(index3{1, 0, 0}).offset, 4u);
  EXPECT_EQ(v3.view().element(index3{2, 3, 1}).offset, ((1u * 5 + 3) * 3 + 2) * 4);
  const DynamicValue v4(type("char[3,5,2,4]"));
  EXPECT_EQ(v4.view().element(index4{2, 3, 1, 3}).offset, ((3u * 2 + 1) * 5 + 3) * 3 + 2);
}

TEST(View, ElementIndicesAreNotChecked) {
  const DynamicValue v(type("int[2]"));
  EXPECT_EQ(v.view().element(5).offset, 20u);
}

TEST(View, ElementIndicesWrapIn32Bits) {
  // 65536 * 65536 + 1 is 1 in 32 bits; the product with the size is taken in 64.
  const DynamicValue v(type("int[65536,0]"));
  EXPECT_EQ(v.view().element(index2{1, 65536}).offset, 4u);
  const DynamicValue w(type("float4[2,2]"));
  EXPECT_EQ(w.view().element(index2{0, 0x20000000}).offset, std::uint64_t{0x40000000} * 16);
}

TEST(View, PartsOfPartsAddTheirOffsets) {
  DynamicValue v(type("{ int a; { float[4] y; }[3] x; }"));
  const View part = v.view().field("x").element(2).field(0).element(3);
  EXPECT_EQ(part.offset, 4u + 2 * 16 + 3 * 4);
  EXPECT_EQ(part.mutableOwner, &v);
  const ConstView& reading = part;
  EXPECT_EQ(reading.owner, &v);
}

TEST(FixedTypes, AreMadeOnceForAll) {
  EXPECT_EQ(&baseType(Type::TBasetype::Float3), type("float3").get());
  EXPECT_EQ(&baseType(Type::TBasetype::Half4), &baseType(Type::TBasetype::Half4));
  EXPECT_EQ(&voidReferenceType(), type("void*").get());
  EXPECT_REFUSED(baseType(static_cast<Type::TBasetype>(20)), "Illegal base type.");
}

TEST(ReadAs, GivesTheValueOfTheType) {
  const DynamicValue v = value(
      "{ i = -4; f = 2.5; c = 200c; h = 0.5h; b = true; v = float3(1.0, 2.0, 3.0); r = &1; }");
  EXPECT_EQ(readAs<std::int32_t>(v.view().field("i")), -4);
  EXPECT_EQ(readAs<float>(v.view().field("f")), 2.5f);
  EXPECT_EQ(readAs<std::uint8_t>(v.view().field("c")), 200);
  EXPECT_EQ(halfBits(readAs<Float16>(v.view().field("h"))), 0x3800);
  EXPECT_TRUE(static_cast<bool>(readAs<BoolWord>(v.view().field("b"))));
  EXPECT_EQ((readAs<std::array<float, 3>>(v.view().field("v"))), (std::array<float, 3>{1, 2, 3}));
  EXPECT_EQ(readAs<ReferenceWord>(v.view().field("r")).word,
            at<std::uint64_t>(v, v.view().field("r").offset));
}

TEST(ReadAs, ReadsAnEnumAsInt) {
  EXPECT_EQ(readAs<std::int32_t>(value("C : enum { A; B; C; }").view()), 2);
}

TEST(ReadAs, RefusesAnotherType) {
  EXPECT_REFUSED(readAs<std::int32_t>(value("1.0").view()),
                 "Incompatible type for accessor -> type float does not match type int.");
}

TEST(WriteAs, WritesThroughTheView) {
  DynamicValue v(type("{ int a; float2 b; }"));
  writeAs(v.view().field("a"), std::int32_t{5});
  writeAs(v.view().field("b"), std::array<float, 2>{1, 2});
  EXPECT_EQ(text(v), "{ a = 5; b = float2(1.0, 2.0); }");
  EXPECT_REFUSED(writeAs(v.view().field("a"), 1.0f),
                 "Incompatible type for accessor -> type int does not match type float.");
}

TEST(AssignView, CopiesARelatedPart) {
  DynamicValue v = value("{ a = 1; b = 2; }");
  const DynamicValue source = value("{ x = B : enum { A; B; }; y = 3.0; }");
  assignView(v.view().field("b"), source.view().field("x"));
  EXPECT_EQ(text(v), "{ a = 1; b = 1; }");
  EXPECT_REFUSED(assignView(v.view().field("b"), source.view().field("y")),
                 "Incompatible type for accessor -> type float does not match type int.");
}

TEST(AssignView, TakesReferencesAndDropsOldOnes) {
  const DynamicValue before = value("1");
  const DynamicValue after = value("2");
  DynamicValue v = DynamicValue::reference(before);
  assignView(v.view(), DynamicValue::reference(after).view());
  EXPECT_EQ(count(before), 1u);
  EXPECT_EQ(count(after), 2u);
}

}  // namespace
}  // namespace qex::vornath::test
