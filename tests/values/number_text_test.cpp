// The texts of numbers, held against those of fmt.
#include "values/number_text.hpp"

#include <fmt/format.h>

#include <bit>
#include <cfenv>
#include <charconv>
#include <limits>
#include <random>
#include <string>
#include <string_view>

#include "values_support.hpp"

namespace qex::vornath::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kSlowdown = 16;
#else
constexpr int kSlowdown = 1;
#endif

std::string_view written(char* buffer, float number) {
  return {buffer, static_cast<std::size_t>(writeFloat(buffer, number) - buffer)};
}

std::string_view expected(char* buffer, float number) {
  if (number != number) return "NaN";
  return {buffer, static_cast<std::size_t>(fmt::format_to(buffer, "{:#}", number) - buffer)};
}

// Counts the differences, and shows the first few.
class Comparison {
 public:
  void add(std::uint32_t bits) {
    char first[2 * kMaxNumberText];
    char second[2 * kMaxNumberText];
    const auto number = std::bit_cast<float>(bits);
    const std::string_view ours = written(first, number);
    ASSERT_LE(ours.size(), kMaxNumberText);
    if (ours != expected(second, number) && ++differences_ < 10) {
      ADD_FAILURE() << std::hex << bits << ": " << ours << " instead of "
                    << expected(second, number);
    }
    ++compared_;
  }
  void addBothSigns(std::uint32_t magnitude) {
    add(magnitude);
    add(magnitude | 0x80000000U);
  }
  // Adds a float, and those around it.
  void addNeighbourhood(float number) {
    const auto middle = std::bit_cast<std::uint32_t>(number);
    for (std::uint32_t i = 0; i <= 40; ++i) addBothSigns((middle + i - 20) & 0x7FFFFFFFU);
  }

  std::uint64_t compared() const { return compared_; }
  std::uint64_t differences() const { return differences_; }

 private:
  std::uint64_t compared_ = 0;
  std::uint64_t differences_ = 0;
};

float parsed(const std::string& text) {
  float number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

TEST(FloatText, OfEveryHalfIsThatOfFmt) {
  for (std::uint32_t bits = 0; bits < 0x10000; ++bits) {
    const DynamicValue half =
        DynamicValue::base(Type::TBasetype::Half, static_cast<std::uint16_t>(bits));
    const bool isNan = (bits & 0x7FFF) > 0x7C00;
    float wide = std::bit_cast<float>((bits & 0x8000) << 16 | ((bits & 0x7FFF) << 13));
    // Widening moves the exponent's bias, and makes small halves into ordinary floats.
    if ((bits & 0x7C00) == 0x7C00) {
      wide = bits >= 0x8000 ? -std::numeric_limits<float>::infinity()
                            : std::numeric_limits<float>::infinity();
    } else {
      wide *= 0x1p112F;
    }
    ASSERT_EQ(text(half), isNan ? "NaNh" : fmt::format("{:#}h", wide)) << bits;
  }
}

TEST(FloatText, IsThatOfFmtForMillionsOfFloats) {
  Comparison comparison;
  std::mt19937 random(20);
  // All exponents, those of denormals, infinities and NaNs too.
  for (std::uint32_t exponent = 0; exponent < 256; ++exponent) {
    for (int i = 0; i < 8'000 / kSlowdown; ++i) {
      comparison.add(exponent << 23 | (static_cast<std::uint32_t>(random()) & 0x807FFFFFU));
    }
    for (std::uint32_t i = 0; i < 64; ++i) {
      comparison.addBothSigns(exponent << 23 | i);
      comparison.addBothSigns(exponent << 23 | (0x7FFFFF - i));
      comparison.addBothSigns(exponent << 23 | (1U << (i % 23)));
    }
  }
  EXPECT_GE(comparison.compared(), 2'000'000U / kSlowdown);
  EXPECT_EQ(comparison.differences(), 0U);
}

TEST(FloatText, IsThatOfFmtForDecimalsOfAnyLength) {
  Comparison comparison;
  std::mt19937 random(21);
  for (int i = 0; i < 300'000 / kSlowdown; ++i) {
    std::string decimal = std::to_string(1 + random() % 9);
    for (auto further = random() % 10; further > 0; --further) {
      decimal += static_cast<char>('0' + random() % 10);
    }
    decimal += "e" + std::to_string(static_cast<int>(random() % 32) - 20);
    comparison.addBothSigns(std::bit_cast<std::uint32_t>(parsed(decimal)));
  }
  for (std::uint32_t i = 0; i < 300'000U / kSlowdown; ++i) {
    comparison.add(std::bit_cast<std::uint32_t>(static_cast<float>(i) / 1000.0F));
    comparison.add(std::bit_cast<std::uint32_t>(static_cast<float>(i) * 17.0F));
  }
  EXPECT_EQ(comparison.differences(), 0U);
}

TEST(FloatText, IsThatOfFmtWhereTheNotationOrTheNumberOfDigitsChanges) {
  Comparison comparison;
  for (int exponent = -45; exponent <= 38; ++exponent) {
    for (const char* const digits : {"1", "9.999999", "9.9999995", "5", "2.5", "1.000001"}) {
      comparison.addNeighbourhood(parsed(digits + std::string("e") + std::to_string(exponent)));
    }
  }
  for (std::uint32_t exponent = 0; exponent < 256; ++exponent) {
    comparison.addNeighbourhood(std::bit_cast<float>(exponent << 23));
  }
  comparison.addNeighbourhood(16777216.0F);
  EXPECT_EQ(comparison.differences(), 0U);
}

TEST(FloatText, HasAPointInEitherNotation) {
  char buffer[kMaxNumberText];
  const auto of = [&buffer](float number) { return std::string(written(buffer, number)); };
  EXPECT_EQ(of(0.0F), "0.0");
  EXPECT_EQ(of(-0.0F), "-0.0");
  EXPECT_EQ(of(1e15F), "1000000000000000.0");
  EXPECT_EQ(of(1e16F), "1.e+16");
  EXPECT_EQ(of(0.0001F), "0.0001");
  EXPECT_EQ(of(0.00012207031F), "0.00012207031");
  EXPECT_EQ(of(0.00009F), "9.e-05");
  EXPECT_EQ(of(16777216.0F), "16777216.0");
  EXPECT_EQ(of(123456.0F), "123456.0");
  EXPECT_EQ(of(std::numeric_limits<float>::max()), "3.4028235e+38");
  EXPECT_EQ(of(std::numeric_limits<float>::denorm_min()), "1.e-45");
  EXPECT_EQ(of(-std::numeric_limits<float>::infinity()), "-inf");
}

TEST(FloatText, DoesNotDependOnTheHostsRoundingMode) {
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    Comparison comparison;
    std::mt19937 random(22);
    std::fesetround(mode);
    for (int i = 0; i < 50'000 / kSlowdown; ++i) {
      comparison.add(static_cast<std::uint32_t>(random()));
      comparison.add(0x38D1B717U + static_cast<std::uint32_t>(random()) % 0x10000000U);
    }
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(comparison.differences(), 0U);
  }
}

TEST(IntText, IsADecimal) {
  char buffer[kMaxNumberText];
  const auto of = [&buffer](std::int32_t number) {
    return std::string(buffer, writeInt(buffer, number));
  };
  std::mt19937 random(23);
  for (std::uint32_t power = 1; power != 0; power *= 2) {
    for (const std::uint32_t bits : {power, power - 1, power + 1, 0 - power,
                                     static_cast<std::uint32_t>(random()) & (power - 1)}) {
      const auto number = static_cast<std::int32_t>(bits);
      EXPECT_EQ(of(number), std::to_string(number));
    }
  }
}

TEST(HexText, HasZerosInFront) {
  char buffer[kMaxNumberText];
  const auto of = [&buffer](std::uint64_t number, std::size_t digits) {
    return std::string(buffer, writeHex(buffer, number, digits));
  };
  EXPECT_EQ(of(0, 4), "0000");
  EXPECT_EQ(of(0xABC, 4), "0abc");
  EXPECT_EQ(of(0x89ABCDEF, 8), "89abcdef");
  EXPECT_EQ(of(0x7EADBEEFCAFE, 16), "00007eadbeefcafe");
}

}  // namespace
}  // namespace qex::vornath::test
