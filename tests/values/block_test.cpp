#include "values/block.hpp"

#include "values_support.hpp"

namespace qex::vornath::test {
namespace {

TEST(Block, HeaderTellsOfTheType) {
  const TypePtr t = type("int[5]");
  const DynamicValue v(t);
  const vrntValue_t& block = *v.block();
  EXPECT_EQ(std::memcmp(block.magic, "vrntval\0", 8), 0);
  EXPECT_EQ(block.typeText, t->text().c_str());
  EXPECT_EQ(reinterpret_cast<const InternedType*>(block.type), t.get());
  EXPECT_EQ(block.refCount, 1u);
  EXPECT_EQ(block.length, 5u);
  EXPECT_NE(block.freeFn, nullptr);
  EXPECT_EQ(v.data(), reinterpret_cast<const char*>(v.block()) + 48);
}

TEST(Block, LengthIsZeroForOtherThanOneDimension) {
  EXPECT_EQ(DynamicValue(type("int")).block()->length, 0u);
  EXPECT_EQ(DynamicValue(type("int[2,3]")).block()->length, 0u);
  EXPECT_EQ(DynamicValue(type("{ int[4] a; }")).block()->length, 0u);
}

TEST(Block, ShadowArrayIsNullWithoutReferences) {
  EXPECT_EQ(DynamicValue(type("{ float a; int[7] b; }")).block()->shadowRefs, nullptr);
}

TEST(Block, ShadowArrayHasAZeroForEachReference) {
  const DynamicValue v(type("{ int* a; (() => int) f; int*[2] b; }"));
  ASSERT_EQ(v.typeOf().refSlots().size(), 5u);
  ASSERT_NE(v.block()->shadowRefs, nullptr);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(v.block()->shadowRefs[i], 0u);
}

TEST(Block, HoldsItsTypeAndTheMetadataFreeOne) {
  const DynamicValue v(type("{ float @name=\"x\" a; } @desc=\"y\""));
  EXPECT_STREQ(v.block()->typeText, "{ float a; }");
  EXPECT_EQ(&v.typeOf(), &blockType(v.block()));
}

TEST(Block, ValueOfAHugeTypeIsABadAllocation) {
  const TypePtr huge = type("char[2147483647][2147483647][3]");
  EXPECT_THROW(DynamicValue{huge}, std::bad_alloc);
}

TEST(Block, EndsWhatOnlyItReferredTo) {
  const DynamicValue target = value("7");
  {
    const DynamicValue holder = DynamicValue::reference(target);
    EXPECT_EQ(count(target), 2u);
    const DynamicValue copy(holder);
    EXPECT_EQ(count(target), 2u);
  }
  EXPECT_EQ(count(target), 1u);
}

TEST(Block, EndsATreeInWhichBlocksAreShared) {
  const DynamicValue leaf = value("1");
  {
    const DynamicValue a = DynamicValue::structure(
        {{"x", DynamicValue::reference(leaf)}, {"y", DynamicValue::reference(leaf)}});
    const DynamicValue b = DynamicValue::structure({{"l", DynamicValue::reference(a)},
                                                    {"m", value("$0x000000000000000f")},
                                                    {"r", DynamicValue::reference(a)}});
    EXPECT_EQ(count(leaf), 3u);
    EXPECT_EQ(count(a), 3u);
  }
  EXPECT_EQ(count(leaf), 1u);
}

// Records the order in which blocks and arrays are released.
std::vector<void*> freed;
void recordFree(void* memory) {
  freed.push_back(memory);
  std::free(memory);
}

TEST(Block, ReleasesChildrenInSlotOrderThenItsShadowArrayThenItself) {
  freed.clear();
  void *outer, *outerShadow, *first, *firstShadow, *leaf, *second;
  {
    DynamicValue l = value("1");
    DynamicValue s = value("2");
    DynamicValue f = DynamicValue::reference(l);
    DynamicValue o = DynamicValue::structure(
        {{"a", DynamicValue::reference(f)}, {"b", DynamicValue::reference(s)}});
    for (DynamicValue* v : {&l, &s, &f, &o}) v->block()->freeFn = &recordFree;
    outer = o.block();
    outerShadow = o.block()->shadowRefs;
    first = f.block();
    firstShadow = f.block()->shadowRefs;
    leaf = l.block();
    second = s.block();
    // The handles of the inner ones end first, so that all are released through the outer one.
    const DynamicValue last(std::move(o));
    { const DynamicValue endF(std::move(f)), endS(std::move(s)), endL(std::move(l)); }
    EXPECT_TRUE(freed.empty());
  }
  EXPECT_EQ(freed, (std::vector<void*>{leaf, firstShadow, first, second, outerShadow, outer}));
}

TEST(Block, DroppedWhileMappedReleasesTheShadowWords) {
  const DynamicValue target = value("7");
  {
    DynamicValue holder = DynamicValue::reference(target);
    holder.block()->shadowRefs[0] = at<std::uint64_t>(holder);
    std::memset(blockData(holder.block()), 0, 8);
    EXPECT_EQ(count(target), 2u);
  }
  EXPECT_EQ(count(target), 1u);
}

}  // namespace
}  // namespace qex::vornath::test
