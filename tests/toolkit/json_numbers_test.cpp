// Numbers and bytes in JSON documents, and what holds them inside the toolkit.
#include <cmath>
#include <cstdlib>
#include <random>

#include "foundation/half.hpp"
#include "foundation/sha256.hpp"
#include "json/base64.hpp"
#include "json/numbers.hpp"
#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

using vrtk::kLongestNumber;
using vrtk::NumberFault;

template <typename Write, typename Number>
std::string written(Write write, Number number) {
  char text[kLongestNumber];
  return {text, write(text, number)};
}

// The number that a text stands for, by its string form if it is one.
template <typename Bits>
Bits readBack(const std::string& text, NumberFault (*number)(std::string_view, Bits&),
              bool (*word)(std::string_view, Bits&)) {
  Bits bits = 0;
  if (text.front() == '"') {
    EXPECT_TRUE(word(text.substr(1, text.size() - 2), bits)) << text;
  } else {
    EXPECT_EQ(number(text, bits), NumberFault::None) << text;
  }
  return bits;
}

TEST(JsonNumbers, EachHalfReadsBack) {
  for (std::uint32_t i = 0; i < 0x10000; ++i) {
    const auto bits = static_cast<std::uint16_t>(i);
    const std::string text = written(vrtk::writeHalf, bits);
    ASSERT_EQ(readBack(text, vrtk::readHalf, vrtk::readHalfText), bits) << text;
    ASSERT_TRUE(text.front() == '"' || text.find_first_of(".e") != std::string::npos) << text;
  }
  EXPECT_EQ(written(vrtk::writeHalf, std::uint16_t{0x3555}), "0.3333");
  EXPECT_EQ(written(vrtk::writeHalf, std::uint16_t{0x7BFF}), "6.55e+04");
  EXPECT_EQ(written(vrtk::writeHalf, std::uint16_t{0x3C00}), "1.0");
}

TEST(JsonNumbers, AHalfIsTheNearestAndTiesAreEven) {
  // Between each half and the next one, by their numbers.
  for (std::uint16_t bits = 0; bits < 0x7BFF; ++bits) {
    const double low = vrtk::halfToFloat(bits);
    const double high = vrtk::halfToFloat(static_cast<std::uint16_t>(bits + 1));
    char text[64];
    std::uint16_t read = 0;
    std::snprintf(text, sizeof(text), "%.17g", (low + high) / 2);
    ASSERT_EQ(vrtk::readHalf(text, read), NumberFault::None);
    ASSERT_EQ(read, bits % 2 == 0 ? bits : bits + 1) << text;
    std::snprintf(text, sizeof(text), "-%.17g", low + (high - low) * 0.51);
    ASSERT_EQ(vrtk::readHalf(text, read), NumberFault::None);
    ASSERT_EQ(read, (bits + 1) | 0x8000) << text;
  }
  std::uint16_t read = 0;
  EXPECT_EQ(vrtk::readHalf("65519", read), NumberFault::None);
  EXPECT_EQ(read, 0x7BFF);
  EXPECT_EQ(vrtk::readHalf("65520", read), NumberFault::OutOfRange);
  EXPECT_EQ(vrtk::readHalf("1e400", read), NumberFault::OutOfRange);
  EXPECT_EQ(vrtk::readHalf("-1e-400", read), NumberFault::None);
  EXPECT_EQ(read, 0x8000);
}

TEST(JsonNumbers, FloatsReadBack) {
  std::mt19937 random(1);
  const auto expectSame = [](std::uint32_t bits) {
    const std::string text = written(vrtk::writeFloat, bits);
    ASSERT_EQ(readBack(text, vrtk::readFloat, vrtk::readFloatText), bits) << text;
    ASSERT_TRUE(text.front() == '"' || text.find_first_of(".e") != std::string::npos) << text;
  };
  for (int i = 0; i < 200000; ++i) expectSame(static_cast<std::uint32_t>(random()));
  for (int i = -200000; i < 200000; i += 7) {
    std::uint32_t bits = 0;
    const float number = static_cast<float>(i) / 2;
    std::memcpy(&bits, &number, sizeof(bits));
    expectSame(bits);
  }
  for (const std::uint32_t bits : {0U, 0x80000000U, 1U, 0x7F7FFFFFU, 0x7F800000U, 0xFF800000U,
                                   0x7FC00000U, 0x7F800001U, 0xFFFFFFFFU}) {
    expectSame(bits);
  }
  const auto text = [](float number) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof(bits));
    return written(vrtk::writeFloat, bits);
  };
  EXPECT_EQ(text(35.0F), "35.0");
  EXPECT_EQ(text(0.1F), "0.1");
  EXPECT_EQ(text(1e-5F), "1e-05");
  EXPECT_EQ(text(1e20F), "1e+20");
  EXPECT_EQ(text(-0.0F), "-0.0");
  EXPECT_EQ(text(99999.0F), "99999.0");
  EXPECT_EQ(text(123456.0F), "123456.0");
}

TEST(JsonNumbers, FloatsBeyondTheirRangeAreToldFromThoseTooSmall) {
  std::uint32_t bits = 7;
  for (const char* const large :
       {"3.5e38", "1e999999999999999999999", "-123456789012345678901234567890123456789012"}) {
    EXPECT_EQ(vrtk::readFloat(large, bits), NumberFault::OutOfRange) << large;
  }
  for (const char* const small :
       {"1e-60", "0.0000e-999999999999999999999", "0e99999999999999999999"}) {
    EXPECT_EQ(vrtk::readFloat(small, bits), NumberFault::None) << small;
    EXPECT_EQ(bits, 0U) << small;
  }
}

TEST(JsonNumbers, TextsThatStandForNoNumberAreRefused) {
  std::uint32_t bits = 0;
  for (const char* const text : {"", "NaN", "nan:", "nan:7fc0001", "nan:7f800000", "nan:00000001",
                                 "nan:7fc0000g", "+inf", "infinity", "1.0"}) {
    EXPECT_FALSE(vrtk::readFloatText(text, bits)) << text;
  }
  std::uint32_t word = 0;
  for (const char* const text : {"", "true", "bool:", "bool:1", "bool:0000000g"}) {
    EXPECT_FALSE(vrtk::readBoolText(text, word)) << text;
  }
}

TEST(JsonNumbers, WholeNumbersHaveNoFraction) {
  std::int64_t number = 0;
  EXPECT_EQ(vrtk::readInt("-5", -5, 5, number), NumberFault::None);
  EXPECT_EQ(vrtk::readInt("6", -5, 5, number), NumberFault::OutOfRange);
  EXPECT_EQ(vrtk::readInt("99999999999999999999", -5, 5, number), NumberFault::OutOfRange);
  EXPECT_EQ(vrtk::readInt("1.0", -5, 5, number), NumberFault::WrongKind);
  EXPECT_EQ(vrtk::readInt("1e0", -5, 5, number), NumberFault::WrongKind);
  std::uint64_t count = 0;
  EXPECT_EQ(vrtk::readUnsigned("18446744073709551615", count), NumberFault::None);
  EXPECT_EQ(count, UINT64_MAX);
  EXPECT_EQ(vrtk::readUnsigned("18446744073709551616", count), NumberFault::OutOfRange);
  EXPECT_EQ(vrtk::readUnsigned("-1", count), NumberFault::OutOfRange);
  EXPECT_EQ(vrtk::readUnsigned("-0", count), NumberFault::None);
}

TEST(Base64, HasTheVectorsOfItsStandard) {
  const std::pair<const char*, const char*> vectors[] = {{"", ""},
                                                         {"f", "Zg=="},
                                                         {"fo", "Zm8="},
                                                         {"foo", "Zm9v"},
                                                         {"foob", "Zm9vYg=="},
                                                         {"fooba", "Zm9vYmE="},
                                                         {"foobar", "Zm9vYmFy"}};
  for (const auto& [bytes, text] : vectors) {
    char out[16];
    const std::size_t size = std::strlen(bytes);
    EXPECT_EQ(std::string(out, vrtk::writeBase64(out, bytes, size)), text);
    ASSERT_EQ(vrtk::base64Size(text), size);
    char back[16];
    vrtk::readBase64(text, back);
    EXPECT_EQ(std::string(back, size), bytes);
  }
  for (const char* const text :
       {"Z", "Zg", "Zg=", "Z===", "====", "Zh==", "Zm9=", "Zg==Zg==", "Z g=", "Zm9v\n"}) {
    EXPECT_FALSE(vrtk::base64Size(text).has_value()) << text;
  }
}

TEST(Sha256, HasTheVectorsOfItsStandard) {
  EXPECT_EQ(vrtk::sha256Hex("abc", 3),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(vrtk::sha256Hex(nullptr, 0),
            "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

}  // namespace
}  // namespace vornath_test
