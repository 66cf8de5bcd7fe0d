// The extents of arrays of any rank, and the array types that they belong to.
#include "types/extents.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "type_support.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary
using qex::vornath::arrayDesc;
using qex::vornath::dimensions;
using qex::vornath::Extents;
using qex::vornath::makeArrayDesc;

Extents extentsOf(const char* typeText) { return arrayDesc(parsed(typeText)->desc())->extents; }

std::vector<std::int32_t> listed(const Extents& extents) {
  return {extents.begin(), extents.end()};
}

TEST(Extents, AreThoseOfTheTypeWhateverItsRank) {
  EXPECT_EQ(listed(extentsOf("float[7]")), (std::vector<std::int32_t>{7}));
  EXPECT_EQ(listed(extentsOf("float[7,0]")), (std::vector<std::int32_t>{7, 0}));
  EXPECT_EQ(listed(extentsOf("float[2,3,4]")), (std::vector<std::int32_t>{2, 3, 4}));
  EXPECT_EQ(listed(extentsOf("float[2,3,4,5]")), (std::vector<std::int32_t>{2, 3, 4, 5}));
  for (const char* text : {"int", "{ int[2] a; }", "int[2]*", "enum { A; }", "((int[2]) => int)"}) {
    EXPECT_FALSE(arrayDesc(parsed(text)->desc())) << text;
  }
}

TEST(Extents, AreTheSameFromNumbersAndFromARecord) {
  EXPECT_EQ(Extents(3), extentsOf("int[3]"));
  EXPECT_EQ(Extents(2, 3), Extents(index2{2, 3}));
  EXPECT_EQ(Extents(2, 3, 4), Extents(index3{2, 3, 4}));
  EXPECT_EQ(Extents(2, 3, 4, 5), Extents(index4{2, 3, 4, 5}));
  EXPECT_EQ(dimensions(index3{2, 3, 4}), (std::array<std::int32_t, 3>{2, 3, 4}));
}

TEST(Extents, AreAllKnownOrAllUnknown) {
  EXPECT_TRUE(extentsOf("float[0]").known());
  const Extents unknown = extentsOf("float[,,]");
  EXPECT_FALSE(unknown.known());
  EXPECT_EQ(unknown, Extents::unknown(3));
  EXPECT_EQ(listed(unknown), (std::vector<std::int32_t>{-1, -1, -1}));
  EXPECT_EQ(unknown.count(), 0);
  EXPECT_EQ(unknown.elements(), 0u);
  EXPECT_FALSE(unknown.overflow());
  EXPECT_THROW(unknown.requireKnown(), std::bad_optional_access);
  EXPECT_EQ(Extents(4).requireKnown(), Extents(4));
}

TEST(Extents, MultiplyIn32BitsAndRunOver) {
  EXPECT_EQ(Extents(2, 3, 4, 5).count(), 120);
  EXPECT_EQ(Extents(0).count(), 0);
  EXPECT_EQ(Extents(2147483647).count(), 2147483647);
  EXPECT_EQ(Extents(65536, 65536).count(), 0);
  EXPECT_EQ(Extents(65536, 32768).count(), -2147483647 - 1);
  EXPECT_EQ(Extents(65536, 32768).elements(), 0u);
  EXPECT_EQ(Extents(65537, 65536).count(), 65536);
  EXPECT_EQ(Extents(65537, 65536).elements(), 65536u);
}

TEST(Extents, TellWhetherTheirProductRanOver) {
  EXPECT_FALSE(Extents(2147483647).overflow());
  EXPECT_FALSE(Extents(2147483647, 1, 1).overflow());
  EXPECT_TRUE(Extents(65536, 32768).overflow());
  EXPECT_TRUE(Extents(65536, 65536).overflow());
  EXPECT_TRUE(Extents(2147483647, 2147483647, 2147483647, 2147483647).overflow());
  EXPECT_FALSE(Extents(2147483647, 2147483647, 2147483647, 0).overflow());
}

TEST(Extents, AreOrderedByRankThenUnknownFirstThenTheFirstThatDiffers) {
  const std::vector<Extents> ordered{Extents::unknown(1), Extents(5),    Extents::unknown(2),
                                     Extents(1, 9),       Extents(2, 0), Extents(2, 1)};
  for (std::size_t i = 0; i < ordered.size(); ++i) {
    for (std::size_t j = 0; j < ordered.size(); ++j) {
      EXPECT_EQ(ordered[i] < ordered[j], i < j) << i << " " << j;
      EXPECT_EQ(ordered[i] == ordered[j], i == j) << i << " " << j;
    }
  }
}

TEST(Extents, AreJoinedInText) {
  EXPECT_EQ(Extents(7).text(), "7");
  EXPECT_EQ(Extents(2, 3, 4, 5).text(), "2,3,4,5");
  EXPECT_EQ(Extents(2, 3).text(", "), "2, 3");
  EXPECT_EQ(Extents::unknown(2).text(), "-1,-1");
}

TEST(MakeArrayDesc, GivesTheTypeOfTheRank) {
  const TypePtr element = parsed("float");
  for (const char* text : {"float[7]", "float[]", "float[2,3]", "float[,]", "float[2,3,4]",
                           "float[,,]", "float[2,3,4,5]", "float[,,,]"}) {
    const TypePtr type = parsed(text);
    EXPECT_EQ(make(makeArrayDesc(element, arrayDesc(type->desc())->extents)), type);
  }
}

TEST(MakeArrayDesc, RefusesWhatTheTypeRefuses) {
  expectThrows([] { makeArrayDesc(parsed("float"), {3, -1}); }, "negative array length");
  expectThrows([] { makeArrayDesc(parsed("float[]"), {3, -1}); }, "concrete type required");
}

}  // namespace
