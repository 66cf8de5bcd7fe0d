// Counts and extents at the ends of their numbers: what is computed from them, and what is done
// with values of such types.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "support/flat_handles.hpp"
#include "vornath_data/catalogue/mesh.hpp"
#include "vornath_data/texture.hpp"

namespace {

using namespace vornath_test;
using vrnt::TextureFormat;
using vrnt::TextureLayout;
using vrnt::detail::MeshDesc;
using vrnt::detail::TextureDesc;

constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();

// In constants, in which the compiler admits no arithmetic that runs over.

TEST(MeshDescSize, CountsBeyondThirtyTwoBits) {
  static_assert(MeshDesc{357'913'942, 0, 0, 0}.size() == 4'294'967'304);
  static_assert(MeshDesc{0, 97'612'894, 1, 0}.size() == 4'294'967'336);
  static_assert(MeshDesc{kMost, 0, 0, 3}.size() == 42'949'672'940);
  static_assert(MeshDesc{kMost, kMost, 1, 3}.size() == 137'438'953'408);
  static_assert(MeshDesc{0, kMost, 1 << 29, 0}.size() == 9'223'372'109'869'219'804U);
}

TEST(MeshDescSize, TakesNegativeCountsAsTheyAre) {
  static_assert(MeshDesc{-1, 0, 0, 0}.size() == std::uint64_t{0} - 12);
  static_assert(MeshDesc{-1, -1, -1, 3}.size() == std::uint64_t{0} - 48);
  static_assert(MeshDesc{1, -1, 0, 0}.size() == std::uint64_t{0} - 32);
  static_assert(MeshDesc{10, -1, 0, 0}.size() == 76);
  static_assert(MeshDesc{0, 1, -1, 0}.size() == 28);
  static_assert(MeshDesc{0, 1, -5, 0}.size() == std::uint64_t{0} - 4);
  static_assert(MeshDesc{0, -2, -5, 0}.size() == 8);
  static_assert(MeshDesc{kLeast, 0, 0, 0}.size() == std::uint64_t{0} - 25'769'803'776);
}

TEST(MeshDescSize, WrapsAtSixtyFourBits) {
  // The exact sizes are 36893488233318449104, 36893488027160018944 and -36893488207548645376.
  static_assert(MeshDesc{kMost, kMost, kMost, 3}.size() == 85'899'345'872);
  static_assert(MeshDesc{kLeast, kLeast, kLeast, 3}.size() == 18'446'743'953'450'467'328U);
  static_assert(MeshDesc{0, kLeast, kMost, 0}.size() == 18'446'744'013'580'009'472U);
}

TextureDesc texture(std::int32_t width, std::int32_t height, std::int32_t depth,
                    TextureFormat format, TextureLayout layout) {
  TextureDesc desc;
  desc.width = width;
  desc.height = height;
  desc.depth = depth;
  desc.format = format;
  desc.layout = layout;
  return desc;
}

TEST(TextureDescSize, OfTheSmallestExtents) {
  for (const TextureFormat format : {TextureFormat::SL8, TextureFormat::BC1}) {
    const std::size_t one = format == TextureFormat::SL8 ? 1 : 8;
    for (const std::int32_t depth : {0, -1, kLeast}) {
      EXPECT_EQ(texture(4, 4, depth, format, TextureLayout::Flat).size(), 0U);
      EXPECT_EQ(texture(kMost, kMost, depth, format, TextureLayout::FlatMipmap).size(), 0U);
    }
    EXPECT_EQ(texture(kLeast, 4, 1, format, TextureLayout::Flat).size(), 0U);
    EXPECT_EQ(texture(kLeast, kLeast, 1, format, TextureLayout::Flat).size(), 0U);
    EXPECT_EQ(texture(kLeast, kLeast, 1, format, TextureLayout::FlatMipmap).size(), one);
    // The width is one pixel on each of the three levels: 4, 2 and 1 high, or one block.
    EXPECT_EQ(texture(kLeast, 4, 1, format, TextureLayout::FlatMipmap).size(),
              format == TextureFormat::SL8 ? 7U : 24U);
  }
}

TEST(TextureDescSize, CountsBeyondThirtyTwoBits) {
  EXPECT_EQ(texture(65'536, 65'536, 1, TextureFormat::SL8, TextureLayout::Flat).size(),
            std::size_t{1} << 32);
  // Sixteen bytes a pixel: 2^31 - 1 pixels, then half as many on each level, 2^31 - 1 - 31 bits.
  EXPECT_EQ(texture(kMost, 1, 1, TextureFormat::RGBA32, TextureLayout::Flat).size(),
            std::size_t{kMost} * 16);
  std::size_t pixels = 0;
  for (std::int32_t width = kMost; width > 0; width /= 2) pixels += static_cast<std::size_t>(width);
  EXPECT_EQ(texture(kMost, 1, 1, TextureFormat::RGBA32, TextureLayout::FlatMipmap).size(),
            pixels * 16);
}

// --- Extents of which the product doesn't fit 32 bits ---

ValueHandle coerced(const std::string& typeText, const ValueHandle& value) {
  const TypeHandle type = parseType(typeText);
  vrntValuesError_t* error = nullptr;
  ValueHandle result(vrntCoerce(type.get(), value.get(), &error));
  const ErrorHandle owner(error);
  EXPECT_NE(result, nullptr) << typeText;
  return result;
}

// Values whose bytes are all 1.
ValueHandle onesOf(const std::string& typeText) {
  const TypeHandle type = parseType(typeText);
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  const vrntValueView_t view{type.get(), 0};
  std::memset(vrntValueMap(&value, &view, &error), 1, vrntTypeSize(type.get()));
  vrntValueUnmap(value, &view);
  return ValueHandle(value);
}

// The product of each is 0 or a small number in 32 bits. What lies at an index beyond that is not
// in the value, so nothing is carried.
TEST(ProductsThatRunOver, CarryNothingIntoOrOutOfAValue) {
  for (const std::string extents :
       {"[65536,65536]", "[65536,65537]", "[2,1073741825,2]", "[1073741825,2,2]", "[65536,256,256]",
        "[65536,256,257]", "[256,256,256,256]", "[256,256,256,257]", "[2147483647,2147483647]",
        "[2147483647,2147483647,2147483647,2147483647]", "[3,1431655766]", "[1431655766,3,1]"}) {
    SCOPED_TRACE(extents);
    const TypeHandle type = parseType("char" + extents);
    const std::uint64_t size = vrntTypeSize(type.get());
    // Negative products make sizes that no memory holds.
    if (size > std::uint64_t{1} << 32) continue;
    std::string small = extents;
    for (char& digit : small) {
      if (digit >= '0' && digit <= '9') digit = '2';
    }
    std::string two;
    for (const char digit : small) {
      if (digit != '2' || two.back() != '2') two += digit;
    }
    const ValueHandle source = onesOf("char" + extents);
    const ValueHandle target =
        coerced("{ char @default=7c c; }" + two, coerced("{ char c; }" + extents, source));
    const std::string bytes(static_cast<const char*>(vrntValueData(target.get())),
                            vrntTypeSize(vrntValueType(target.get())));
    for (std::size_t i = 0; i < bytes.size(); i += 4) EXPECT_EQ(bytes[i], 7);
    const ValueHandle narrow = coerced("char @default=7c" + two, source);
    EXPECT_EQ(textOf(narrow).find("1c"), std::string::npos);
    const ValueHandle wide = coerced("char @default=3c" + extents, onesOf("char" + two));
    EXPECT_EQ(vrntTypeSize(vrntValueType(wide.get())), size);
    const char* const data = static_cast<const char*>(vrntValueData(wide.get()));
    for (std::uint64_t i = 0; i < size; i += 4097) ASSERT_EQ(data[i], 3) << i;
    // A value of the type itself is copied as it lies, and is equal to its copy.
    const ValueHandle same = coerced("char" + extents, source);
    const vrntValueView_t view{type.get(), 0};
    EXPECT_EQ(vrntValueEqual(same.get(), &view, source.get(), &view, 0, nullptr), 1);
  }
}

TEST(ProductsThatRunOver, BelowZeroAreOutOfMemory) {
  for (const char* text : {"char[65536,32768]", "char[2147483647,2]", "char[3,1073741824]",
                           "char[46341,46341]", "void*[65536,32768]", "{ char[65536,32768] a; }"}) {
    SCOPED_TRACE(text);
    const TypeHandle type = parseType(text);
    vrntValuesError_t* error = nullptr;
    EXPECT_EQ(vrntValueCreateDefault(type.get(), &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_STREQ(vrntValuesErrorMessage(error), "Out of memory.");
    const ValueHandle one = parseValue("1c");
    error = nullptr;
    EXPECT_EQ(vrntCoerce(type.get(), one.get(), &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_STREQ(vrntValuesErrorMessage(error), "Out of memory.");
  }
}

}  // namespace
