// Records compared by what their types say, for every kind of field that a schema can have.
#include "scene/record_comparison.hpp"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "../support/flat_handles.hpp"

#if defined(__SSE2__)
#include <pmmintrin.h>
#include <xmmintrin.h>
#endif

namespace {

using namespace vornath_test;
using vrnt::data::RecordComparison;

// Two records of a type, all bytes zero at first.
class Records {
 public:
  explicit Records(const std::string& typeText)
      : type_(parseType(typeText)),
        a_(vrntTypeSize(type_.get())),
        b_(a_.size()),
        comparison_(a_.size()) {
    comparison_.add(type_.get(), 0);
  }

  template <typename T>
  bool equal(std::size_t offset, T a, T b) {
    put(a_, offset, a);
    put(b_, offset, b);
    const bool equal = comparison_.equal(a_.data(), b_.data());
    EXPECT_EQ(comparison_.equal(b_.data(), a_.data()), equal) << "not symmetric";
    put(a_, offset, T{});
    put(b_, offset, T{});
    EXPECT_TRUE(comparison_.equal(a_.data(), b_.data()));
    return equal;
  }

  // The bytes in which a change of the lowest bit is a difference, as in "1111....".
  std::string compared() {
    std::string bytes;
    for (std::size_t i = 0; i < a_.size(); ++i) {
      bytes += equal<std::uint8_t>(i, 0, 1) ? '.' : '1';
    }
    return bytes;
  }

  std::size_t size() const { return a_.size(); }

 private:
  template <typename T>
  static void put(std::vector<char>& bytes, std::size_t offset, T value) {
    ASSERT_LE(offset + sizeof(T), bytes.size());
    std::memcpy(bytes.data() + offset, &value, sizeof(T));
  }

  TypeHandle type_;
  std::vector<char> a_;
  std::vector<char> b_;
  RecordComparison comparison_;
};

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kTiny = std::numeric_limits<float>::denorm_min();

TEST(RecordComparison, TakesFloatsAsNumbers) {
  Records records("{ int before; float x; }");
  EXPECT_TRUE(records.equal(4, 1.5F, 1.5F));
  EXPECT_TRUE(records.equal(4, 0.0F, -0.0F));
  EXPECT_TRUE(records.equal(4, -0.0F, -0.0F));
  EXPECT_TRUE(records.equal(4, kInfinity, kInfinity));
  EXPECT_TRUE(records.equal(4, kTiny, kTiny));
  EXPECT_FALSE(records.equal(4, kInfinity, -kInfinity));
  EXPECT_FALSE(records.equal(4, 1.5F, std::nextafter(1.5F, 2.0F)));
  EXPECT_FALSE(records.equal(4, 1.5F, -1.5F));
  EXPECT_FALSE(records.equal(4, 0.0F, kTiny));
  EXPECT_FALSE(records.equal(4, kTiny, -kTiny));
}

TEST(RecordComparison, TakesNoNanAsEqual) {
  Records records("{ float x; }");
  for (const std::uint32_t bits : {0x7FC00000U, 0x7F800001U, 0xFFC00000U, 0xFFFFFFFFU}) {
    EXPECT_FALSE(records.equal(0, bits, bits)) << bits;
    EXPECT_FALSE(records.equal(0, bits, 0U)) << bits;
  }
}

#if defined(__SSE2__)
TEST(RecordComparison, DoesNotFollowTheThreadsModeForSmallNumbers) {
  Records records("{ float x; }");
  const unsigned mode = _mm_getcsr();
  _MM_SET_DENORMALS_ZERO_MODE(_MM_DENORMALS_ZERO_ON);
  EXPECT_FALSE(records.equal(0, 0.0F, kTiny));
  EXPECT_FALSE(records.equal(0, kTiny, 2 * std::numeric_limits<float>::min()));
  _mm_setcsr(mode);
}
#endif

TEST(RecordComparison, TakesBoolsByTruth) {
  Records records("{ bool x; }");
  EXPECT_TRUE(records.equal(0, 1U, 0xFFFFFFFFU));
  EXPECT_TRUE(records.equal(0, 0x80000000U, 1U));
  EXPECT_TRUE(records.equal(0, 0x7FC00000U, 0x7FC00000U));
  EXPECT_FALSE(records.equal(0, 0U, 1U));
  EXPECT_FALSE(records.equal(0, 0U, 0x80000000U));
}

TEST(RecordComparison, TakesIntsAndEnumsBitByBit) {
  Records records("{ int x; enum { A; B; } y; }");
  for (std::uint32_t bit = 0; bit < 32; ++bit) {
    EXPECT_FALSE(records.equal(0, 0U, 1U << bit)) << bit;
    EXPECT_FALSE(records.equal(4, 0U, 1U << bit)) << bit;
  }
  // A float here would be unequal to itself.
  EXPECT_TRUE(records.equal(0, 0x7FC00000U, 0x7FC00000U));
  EXPECT_TRUE(records.equal(4, 99U, 99U));
}

TEST(RecordComparison, TakesHalvesAsNumbers) {
  Records records("{ half x; half y; int z; }");
  for (const std::size_t at : {0U, 2U}) {
    EXPECT_TRUE(records.equal<std::uint16_t>(at, 0x3C00, 0x3C00));
    EXPECT_TRUE(records.equal<std::uint16_t>(at, 0x0000, 0x8000));
    EXPECT_TRUE(records.equal<std::uint16_t>(at, 0x7C00, 0x7C00));
    EXPECT_FALSE(records.equal<std::uint16_t>(at, 0x3C00, 0x3C01));
    EXPECT_FALSE(records.equal<std::uint16_t>(at, 0x3C00, 0xBC00));
    EXPECT_FALSE(records.equal<std::uint16_t>(at, 0x7E00, 0x7E00));
    EXPECT_FALSE(records.equal<std::uint16_t>(at, 0xFC01, 0xFC01));
  }
}

TEST(RecordComparison, TakesCharsBitByBit) {
  Records records("{ char[5] text; char4 lanes; }");
  for (std::size_t i = 0; i < 5; ++i) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      EXPECT_FALSE(records.equal<std::uint8_t>(i, 0, static_cast<std::uint8_t>(1U << bit)));
    }
  }
  // What stands behind a NUL counts as well.
  EXPECT_FALSE(records.equal<std::uint8_t>(4, 'a', 'b'));
  EXPECT_EQ(records.compared(), "11111...1111");
}

TEST(RecordComparison, LooksAtNoPadding) {
  // Three lanes take the room of four, and a struct's size is a multiple of its alignment.
  EXPECT_EQ(Records("{ int a; int3 b; char c; }").compared(),
            "1111............"
            "111111111111...."
            "1...............");
  EXPECT_EQ(Records("{ char a; int b; }").compared(), "1...1111");
  EXPECT_EQ(Records("{ char3 a; half3 b; }").compared(), "111.....111111..");
  EXPECT_EQ(Records("{ int2 a; { char a; } b; int c; }").compared(), "111111111...1111");
  EXPECT_EQ(Records("{ }").compared(), "....");
}

TEST(RecordComparison, EntersStructsAndArraysOfEveryRank) {
  EXPECT_EQ(Records("{ { char a; int b; }[2] x; }").compared(), "1...11111...1111");
  EXPECT_EQ(Records("{ char[2, 3] x; char y; }").compared(), "1111111.");
  EXPECT_EQ(Records("{ int3[2] x; }").compared(),
            "111111111111...."
            "111111111111....");
  EXPECT_EQ(Records("{ char[0] x; int[2][3] y; }").compared(), std::string(24, '1'));
  // The last elements, of kinds that aren't compared bit by bit.
  Records floats("{ float[2, 2, 2] x; { bool a; float b; }[3] y; }");
  EXPECT_TRUE(floats.equal(28, 0.0F, -0.0F));
  EXPECT_FALSE(floats.equal(28, kNan, kNan));
  EXPECT_TRUE(floats.equal(48, 1U, 2U));
  EXPECT_FALSE(floats.equal(52, kNan, kNan));
}

TEST(RecordComparison, TakesEachLaneForItself) {
  Records records("{ float3 a; float2 b; bool3 c; half4 d; }");
  for (const std::size_t at : {0U, 4U, 8U, 16U, 20U}) {
    EXPECT_TRUE(records.equal(at, 0.0F, -0.0F)) << at;
    EXPECT_FALSE(records.equal(at, kNan, kNan)) << at;
  }
  EXPECT_TRUE(records.equal(12, kNan, 1.0F)) << "the fourth lane is padding";
  for (const std::size_t at : {32U, 36U, 40U}) {
    EXPECT_TRUE(records.equal(at, 1U, 2U)) << at;
    EXPECT_FALSE(records.equal(at, 1U, 0U)) << at;
  }
  EXPECT_TRUE(records.equal(44, 1U, 0U));
  for (const std::size_t at : {48U, 50U, 52U, 54U}) {
    EXPECT_TRUE(records.equal<std::uint16_t>(at, 0x0000, 0x8000)) << at;
    EXPECT_FALSE(records.equal<std::uint16_t>(at, 0x7E00, 0x7E00)) << at;
  }
}

TEST(RecordComparison, ComparesNothingThatWasNotAdded) {
  const TypeHandle type = parseType("int");
  RecordComparison comparison(12);
  comparison.add(type.get(), 4);
  const char a[] = "aaaasamebbbb";
  const char b[] = "xxxxsameyyyy";
  EXPECT_TRUE(comparison.equal(a, b));
  EXPECT_FALSE(comparison.equal(a, "xxxxsamEyyyy"));
}

TEST(RecordComparison, ReadsRecordsAtAnyAddress) {
  const TypeHandle type = parseType("float[4]");
  RecordComparison comparison(16);
  comparison.add(type.get(), 0);
  char bytes[40] = {};
  bytes[1] = bytes[1 + 18] = 3;
  EXPECT_TRUE(comparison.equal(bytes + 1, bytes + 1 + 18));
  bytes[16] = 1;
  EXPECT_FALSE(comparison.equal(bytes + 1, bytes + 1 + 18));
}

}  // namespace
