#include "values/dynamic_value.hpp"

#include <functional>

#include "values_support.hpp"

namespace qex::vornath::test {
namespace {

TEST(DynamicValue, OfATypeIsZero) {
  const DynamicValue v(type("{ float3 a; int[9] b; void* c; }"));
  for (std::uint64_t i = 0; i < v.typeOf().size(); ++i) EXPECT_EQ(v.data()[i], 0);
}

TEST(DynamicValue, KeepsTheStrippedType) {
  const DynamicValue v(type("float @default=1.0"));
  EXPECT_EQ(v.typeOf().text(), "float");
  EXPECT_EQ(v.type(), type("float"));
}

TEST(DynamicValue, LengthIsTheExtentOfAOneDimensionalArray) {
  EXPECT_EQ(DynamicValue(type("int[5]")).length(), 5);
  EXPECT_EQ(DynamicValue(type("int[5,2]")).length(), 0);
  EXPECT_EQ(DynamicValue(type("float")).length(), 0);
}

TEST(DynamicValue, OfBytesCopiesThemAndTakesReferences) {
  const DynamicValue target = value("3");
  const std::uint64_t words[] = {wordOfBlock(target.block()), 0, 0x2468 * 2 + 1};
  {
    const DynamicValue v(type("void*[3]"), words);
    EXPECT_EQ(std::memcmp(v.data(), words, sizeof(words)), 0);
    EXPECT_EQ(count(target), 2u);
  }
  EXPECT_EQ(count(target), 1u);
}

TEST(DynamicValue, OfNullBytesHoldsNoReferences) {
  const DynamicValue v(type("{ int a; void* b; int[20] c; }"), nullptr);
  EXPECT_EQ(count(v), 1u);
  EXPECT_EQ(at<std::uint64_t>(v, 8), 0u);
}

TEST(DynamicValue, OfAFillerHoldsWhatItWrote) {
  const DynamicValue target = value("3");
  const TypePtr annotated = type("{ int @name=\"n\" a; void* b; }");
  const InternedType* seen = nullptr;
  const DynamicValue v = DynamicValue::filled(annotated, [&](const InternedType& t, char* data) {
    seen = &t;
    const std::int32_t a = 17;
    const std::uint64_t b = wordOfBlock(target.block());
    std::memcpy(data, &a, sizeof(a));
    std::memset(data + 4, 0, 4);
    std::memcpy(data + 8, &b, sizeof(b));
  });
  EXPECT_EQ(seen, &annotated->stripped());
  EXPECT_EQ(at<std::int32_t>(v), 17);
  EXPECT_EQ(count(target), 2u);
}

TEST(DynamicValue, OfAnEmptyFillerFailsAsABadCall) {
  EXPECT_THROW(DynamicValue::filled(type("int"), DynamicValue::Filler()), std::bad_function_call);
}

TEST(DynamicValue, OfAThrowingFillerReleasesNothingThatItDidNotTake) {
  const DynamicValue target = value("3");
  EXPECT_THROW(DynamicValue::filled(type("void*"),
                                    [&](const InternedType&, char* data) {
                                      const std::uint64_t word = wordOfBlock(target.block());
                                      std::memcpy(data, &word, sizeof(word));
                                      throw std::runtime_error("stop");
                                    }),
               std::runtime_error);
  EXPECT_EQ(count(target), 1u);
}

TEST(DynamicValue, OfABlockSharesIt) {
  const DynamicValue a = value("[ 1, 2 ]");
  const DynamicValue b(a.block());
  EXPECT_EQ(b.block(), a.block());
  EXPECT_EQ(count(a), 2u);
  EXPECT_EQ(b.length(), 2);
}

TEST(DynamicValue, OfAViewCopiesItsBytes) {
  const DynamicValue target = value("5");
  const DynamicValue whole =
      DynamicValue::structure({{"a", value("1")}, {"b", DynamicValue::reference(target)}});
  const DynamicValue part(whole.view().field("b"));
  EXPECT_EQ(part.typeOf().text(), "int*");
  EXPECT_NE(part.block(), whole.block());
  EXPECT_EQ(count(target), 3u);
}

TEST(DynamicValue, CopySharesTheBlock) {
  const DynamicValue a = value("1.0");
  const DynamicValue b(a);
  EXPECT_EQ(a.block(), b.block());
  EXPECT_EQ(count(a), 2u);
}

TEST(DynamicValueArray, OfValuesHasTheirTypeAndCount) {
  const DynamicValue v = DynamicValue::array({value("1"), value("2"), value("3")}, 3);
  EXPECT_EQ(v.typeOf().text(), "int[3]");
  EXPECT_EQ(at<std::int32_t>(v, 0), 1);
  EXPECT_EQ(at<std::int32_t>(v, 4), 2);
  EXPECT_EQ(at<std::int32_t>(v, 8), 3);
}

TEST(DynamicValueArray, WithACountOtherThanTheNumberOfValuesIsRefused) {
  EXPECT_REFUSED(DynamicValue::array({value("1"), value("2")}, 3),
                 "Empty array without type is not allowed.");
  EXPECT_REFUSED(DynamicValue::array({value("1"), value("2")}, 1),
                 "Empty array without type is not allowed.");
  EXPECT_REFUSED(DynamicValue::array({value("1")}, -1), "Empty array without type is not allowed.");
}

TEST(DynamicValueArray, WithoutValuesAndTypeIsRefused) {
  EXPECT_REFUSED(DynamicValue::array({}, 0), "Empty array without type is not allowed.");
  EXPECT_REFUSED(DynamicValue::array({}, index2{0, 0}), "Empty array without type is not allowed.");
  EXPECT_REFUSED(DynamicValue::array({}, index3{1, 1, 1}),
                 "Empty array without type is not allowed.");
  EXPECT_REFUSED(DynamicValue::array({}, index4{1, 1, 1, 1}),
                 "Empty array without type is not allowed.");
}

TEST(DynamicValueArray, WithTypeAndFewerValuesIsZeroBehindThem) {
  const DynamicValue v = DynamicValue::array({value("9")}, index2{2, 2}, type("int"));
  EXPECT_EQ(v.typeOf().text(), "int[2,2]");
  EXPECT_EQ(at<std::int32_t>(v, 0), 9);
  for (std::uint64_t i = 4; i < 16; i += 4) EXPECT_EQ(at<std::int32_t>(v, i), 0);
  EXPECT_EQ(text(DynamicValue::array({}, 3, type("int"))), "[ 0, 0, 0 ]");
}

TEST(DynamicValueArray, WithMoreValuesThanTheExtentsHoldIsRefused) {
  const std::vector<DynamicValue> five(5, value("1"));
  EXPECT_REFUSED(DynamicValue::array(five, index2{2, 2}),
                 "Empty array without type is not allowed.");
  EXPECT_REFUSED(DynamicValue::array(five, index3{2, 2, 1}, type("int")),
                 "Empty array without type is not allowed.");
  EXPECT_REFUSED(DynamicValue::array(five, index4{1, 2, 1, 2}),
                 "Empty array without type is not allowed.");
  EXPECT_REFUSED(DynamicValue::array(five, 4, type("int")),
                 "Empty array without type is not allowed.");
  // 65536 * 65536 runs over to 0 in 32 bits.
  EXPECT_REFUSED(DynamicValue::array(five, index2{65536, 65536}),
                 "Empty array without type is not allowed.");
}

TEST(DynamicValueArray, MakesTheTypeFirst) {
  const std::vector<DynamicValue> five(5, value("1"));
  EXPECT_REFUSED(DynamicValue::array(five, index2{2, -2}), "negative array length");
  EXPECT_REFUSED(DynamicValue::array(five, -1, type("int")), "negative array length");
  EXPECT_REFUSED(DynamicValue::array(five, 5, type("int[]")), "concrete type required");
}

TEST(DynamicValueArray, RefusesAValueThatDoesNotFit) {
  EXPECT_REFUSED(DynamicValue::array({value("1"), value("2.0")}, 2),
                 "Incompatible type for value -> type float does not match type int.");
  EXPECT_REFUSED(DynamicValue::array({value("1")}, index2{1, 1}, type("float")),
                 "Incompatible type for value -> type int does not match type float.");
}

TEST(DynamicValueArray, TakesAValueOfASubtype) {
  const DynamicValue v = DynamicValue::array({value("B : enum { A; B; }")}, 1, type("int"));
  EXPECT_EQ(text(v), "[ 1 ]");
}

TEST(DynamicValueArray, TakesReferences) {
  const DynamicValue target = value("1");
  const DynamicValue reference = DynamicValue::reference(target);
  {
    const DynamicValue v = DynamicValue::array({reference, reference}, 2);
    EXPECT_EQ(count(target), 4u);
  }
  EXPECT_EQ(count(target), 2u);
}

TEST(DynamicValueEnumerator, StoresTheCode) {
  const DynamicValue v = DynamicValue::enumerator(type("enum { A; B; C; }"), "C");
  EXPECT_EQ(v.typeOf().text(), "enum { A; B; C; }");
  EXPECT_EQ(at<std::int32_t>(v), 2);
}

TEST(DynamicValueEnumerator, RefusesAnUnknownLabel) {
  EXPECT_REFUSED(DynamicValue::enumerator(type("enum { A; }"), "X"), "Invalid enum constructor: X");
}

TEST(DynamicValueFunction, StoresTwoWordsInTheForeignForm) {
  const DynamicValue v = DynamicValue::function(type("((int) => float)"), 21, 0);
  EXPECT_EQ(at<std::uint64_t>(v, 0), 43u);
  EXPECT_EQ(at<std::uint64_t>(v, 8), 0u);
}

TEST(DynamicValueReference, PointsToTheReferee) {
  const DynamicValue target = value("1");
  const DynamicValue v = DynamicValue::reference(target);
  EXPECT_EQ(v.typeOf().text(), "int*");
  EXPECT_EQ(at<std::uint64_t>(v), reinterpret_cast<std::uintptr_t>(target.data()));
  EXPECT_EQ(count(target), 2u);
}

TEST(DynamicValueReference, TakesARefereeThatRelatesToTheTarget) {
  EXPECT_EQ(DynamicValue::reference(value("[ 1.0 ]"), type("float[]*")).typeOf().text(),
            "float[]*");
  EXPECT_EQ(DynamicValue::reference(value("1"), type("void*")).typeOf().text(), "void*");
  EXPECT_REFUSED(DynamicValue::reference(value("1"), type("float*")),
                 "Incompatible type for value -> type int does not match type float.");
  EXPECT_REFUSED(
      DynamicValue::reference(value("[ 1.0 ]"), type("float[2]*")),
      "Incompatible type for value -> Expected array of size: 2 - provided array of size: 1.");
}

TEST(DynamicValueForeign, StoresTheAddressInTheForeignForm) {
  EXPECT_EQ(at<std::uint64_t>(DynamicValue::foreign(type("int*"), 8)), 17u);
  EXPECT_EQ(at<std::uint64_t>(DynamicValue::foreign(type("void*"), 0)), 0u);
}

TEST(DynamicValueArray, OfThreeExtentsTakesItsElementsInOrder) {
  const DynamicValue v =
      DynamicValue::array({value("1"), value("2"), value("3"), value("4")}, index3{2, 1, 2});
  EXPECT_EQ(v.typeOf().text(), "int[2,1,2]");
  for (int i = 0; i < 4; ++i) EXPECT_EQ(at<std::int32_t>(v, 4 * i), i + 1);
  EXPECT_REFUSED(DynamicValue::array({}, index3{0, 0, 0}),
                 "Empty array without type is not allowed.");
}

TEST(HeapValue, OfAValueSharesItsBlock) {
  const DynamicValue v = value("1");
  {
    const HeapValue<DynamicValue> boxed(v);
    EXPECT_EQ((*boxed).block(), v.block());
    EXPECT_EQ(count(v), 2u);
  }
  EXPECT_EQ(count(v), 1u);
}

TEST(DynamicValueStructure, DerivesItsTypeFromTheFields) {
  const DynamicValue target = value("7");
  const DynamicValue v = DynamicValue::structure({{"a", value("1c")},
                                                  {"b", value("float3(1.0, 2.0, 3.0)")},
                                                  {"c", DynamicValue::reference(target)}});
  EXPECT_EQ(v.typeOf().text(), "{ char a; float3 b; int* c; }");
  EXPECT_EQ(text(v), "{ a = 1c; b = float3(1.0, 2.0, 3.0); c = &7; }");
  EXPECT_EQ(count(target), 3u - 1u);
}

TEST(DynamicValueStructure, RefusesWhatAStructTypeRefuses) {
  EXPECT_REFUSED(DynamicValue::structure({{"a", value("1")}, {"a", value("2")}}),
                 "Duplicate struct field: a.");
  EXPECT_REFUSED(DynamicValue::structure({{"a", DynamicValue(type("float[]"))}}),
                 "Not a concrete type: float[].");
}

TEST(DynamicValueSetLength, TakesZeroToTheDeclaredSize) {
  DynamicValue v(type("int[3]"));
  v.setLength(0);
  EXPECT_EQ(v.block()->length, 0u);
  v.setLength(3);
  EXPECT_EQ(v.block()->length, 3u);
  EXPECT_EQ(v.length(), 3);
}

TEST(DynamicValueSetLength, RefusesOtherLengths) {
  DynamicValue v(type("int[3]"));
  EXPECT_REFUSED(v.setLength(-1), "Length was -1, expected number in range [0, 3).");
  EXPECT_REFUSED(v.setLength(4), "Length was 4, expected number in range [0, 3).");
  EXPECT_EQ(v.block()->length, 3u);
}

TEST(DynamicValueSetLength, LeavesOtherHoldersAlone) {
  DynamicValue v(type("int[3]"));
  const DynamicValue other(v);
  v.setLength(1);
  EXPECT_NE(v.block(), other.block());
  EXPECT_EQ(other.block()->length, 3u);
  EXPECT_EQ(v.block()->length, 1u);
}

TEST(DynamicValueSetLength, NotifiesWithNullAndZero) {
  DynamicValue v(type("int[3]"));
  int calls = 0;
  v.changeListener() = [&](const InternedType* t, std::uint64_t offset) {
    ++calls;
    EXPECT_EQ(t, nullptr);
    EXPECT_EQ(offset, 0u);
  };
  v.setLength(2);
  EXPECT_EQ(calls, 1);
  EXPECT_REFUSED(v.setLength(9), "Length was 9, expected number in range [0, 3).");
  EXPECT_EQ(calls, 1);
}

TEST(DynamicValueListener, StaysWithItsHandle) {
  DynamicValue v = value("1");
  v.changeListener() = [](const InternedType*, std::uint64_t) {};
  DynamicValue copy(v);
  EXPECT_FALSE(copy.changeListener());
  DynamicValue moved(std::move(v));
  EXPECT_FALSE(moved.changeListener());
  DynamicValue assigned = value("2");
  assigned.changeListener() = [](const InternedType*, std::uint64_t) {};
  assigned = copy;
  EXPECT_TRUE(assigned.changeListener());
  copy = assigned;
  EXPECT_FALSE(copy.changeListener());
}

TEST(DynamicValueSwap, ExchangesTheBlocks) {
  DynamicValue a = value("1");
  DynamicValue b = value("2");
  a.swap(b);
  EXPECT_EQ(text(a), "2");
  EXPECT_EQ(text(b), "1");
}

TEST(DynamicValueSwap, RefusesUnrelatedTypes) {
  DynamicValue a = value("1");
  DynamicValue b = value("2.0");
  EXPECT_REFUSED(a.swap(b), "Incompatible type for value -> type float does not match type int.");
  DynamicValue e = value("A : enum { A; }");
  EXPECT_THROW(a.swap(e), vrnt::Exception);
  EXPECT_THROW(e.swap(a), vrnt::Exception);
  EXPECT_EQ(text(a), "1");
}

TEST(DynamicValueAssign, TakesOverTypeLengthAndBlock) {
  DynamicValue a = value("1");
  const DynamicValue b = value("[ 1.0, 2.0 ]");
  a.assign(b);
  EXPECT_EQ(a.typeOf().text(), "float[2]");
  EXPECT_EQ(a.length(), 2);
  EXPECT_EQ(a.block(), b.block());
}

TEST(DynamicValueAssign, OfItselfChangesNothing) {
  DynamicValue a = value("[ 1, 2 ]");
  DynamicValue& same = a;
  a = same;
  EXPECT_EQ(text(a), "[ 1, 2 ]");
  a = std::move(same);
  EXPECT_EQ(text(a), "[ 1, 2 ]");
  EXPECT_EQ(count(a), 1u);
}

TEST(DynamicValueAssignChecked, SharesTheBlockAndKeepsTheType) {
  DynamicValue holder(type("void*"));
  const DynamicValue given = value("&1");
  holder.assignChecked(given);
  EXPECT_EQ(holder.typeOf().text(), "void*");
  EXPECT_EQ(holder.block(), given.block());
  EXPECT_EQ(count(given), 2u);
  DynamicValue moved = value("&2");
  vrntValue_t* const block = moved.block();
  holder.assignChecked(std::move(moved));
  EXPECT_EQ(holder.block(), block);
  EXPECT_EQ(count(holder), 1u);
}

TEST(DynamicValueAssignChecked, RefusesAnUnrelatedValue) {
  DynamicValue holder(type("int"));
  EXPECT_REFUSED(holder.assignChecked(value("1.0")),
                 "Incompatible type for value -> type float does not match type int.");
}

TEST(HeapValue, CopyIsASecondHandleOnTheBlock) {
  const HeapValue<DynamicValue> box(value("4"));
  const HeapValue<DynamicValue> copy(box);
  EXPECT_NE(box.get(), copy.get());
  EXPECT_EQ((*box).block(), (*copy).block());
  EXPECT_EQ(count(*box), 2u);
  HeapValue<DynamicValue> other(value("5"));
  other = copy;
  EXPECT_EQ(count(*box), 3u);
}

}  // namespace
}  // namespace qex::vornath::test
