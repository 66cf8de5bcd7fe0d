#include "vornath_data/texture.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

namespace {

using vrnt::parseTextureFormat;
using vrnt::parseTextureLayout;
using vrnt::parseTextureType;
using vrnt::TextureFormat;
using vrnt::TextureLayout;
using vrnt::TextureType;
using vrnt::detail::TextureDesc;

struct Named {
  int number;
  const char* name;
};

constexpr Named kFormats[] = {
    {0, "SL8"},    {1, "SLA8"},    {2, "SRGB8"},   {3, "SRGBA8"},  {4, "H8"},     {6, "N8"},
    {7, "NH8"},    {8, "X8"},      {9, "XY8"},     {10, "XYZ8"},   {11, "XYZW8"}, {12, "L16"},
    {13, "LA16"},  {14, "RGB16"},  {15, "RGBA16"}, {16, "H16"},    {18, "N16"},   {19, "NH16"},
    {20, "X16"},   {21, "XY16"},   {22, "XYZ16"},  {23, "XYZW16"}, {24, "L32"},   {25, "LA32"},
    {26, "RGB32"}, {27, "RGBA32"}, {28, "H32"},    {30, "N32"},    {31, "NH32"},  {32, "X32"},
    {33, "XY32"},  {34, "XYZ32"},  {35, "XYZW32"}, {67, "BC1"},    {71, "BC2"},   {75, "BC3"},
    {76, "BC4"},   {77, "BC5"},    {78, "BC5N"},   {82, "BC6H"},   {83, "BC7"},   {86, "BC1N"},
    {87, "BC1U"},  {90, "BC2N"},   {91, "BC2U"},   {94, "BC3N"},   {95, "BC3U"},
};

constexpr Named kLayouts[] = {
    {0, "2D"},
    {1, "LatLong"},
    {2, "Cube"},
    {0x4001, "LatLongDirectX"},
    {0x4002, "CubeDirectX"},
    {0x8000, "2D-Mipmap"},
    {0x8001, "LatLong-Mipmap"},
    {0x8002, "Cube-Mipmap"},
    {0xC001, "LatLongDirectX-Mipmap"},
    {0xC002, "CubeDirectX-Mipmap"},
    {0x10000, "2DSpectral"},
    {0x20000, "2D-Array"},
    {0x28000, "2D-ArrayMipmap"},
};

constexpr Named kTypes[] = {
    {0, "Spectrum"}, {1, "Sphere"}, {2, "Normal"}, {3, "Data"}, {4, "Sphere data"}};

template <std::size_t N>
bool hasName(const Named (&table)[N], int number) {
  for (const Named& entry : table) {
    if (entry.number == number) return true;
  }
  return false;
}

TEST(parseTextureFormat, FindsEachName) {
  for (const auto& [number, name] : kFormats) EXPECT_EQ(parseTextureFormat(name), number) << name;
}

TEST(parseTextureFormat, FindsNothingElse) {
  for (const char* name :
       {"srgb8", "SRGB", "SRGB88", "", " SRGB8", "SRGB8 ", "Unknown", "BC", "BC8"}) {
    EXPECT_EQ(parseTextureFormat(name), -1) << name;
  }
}

TEST(parseTextureLayout, FindsEachName) {
  for (const auto& [number, name] : kLayouts) EXPECT_EQ(parseTextureLayout(name), number) << name;
}

TEST(parseTextureLayout, FindsNothingElse) {
  for (const char* name : {"2D-Array-Mipmap", "2d", "2D-", "LatLongDirectx", "", "CubeSpectral"}) {
    EXPECT_EQ(parseTextureLayout(name), -1) << name;
  }
}

TEST(parseTextureType, FindsEachName) {
  for (const auto& [number, name] : kTypes) EXPECT_EQ(parseTextureType(name), number) << name;
}

TEST(parseTextureType, FindsNothingElse) {
  for (const char* name : {"spectrum", "Sphere Data", "Spheredata", "Sphere ", ""}) {
    EXPECT_EQ(parseTextureType(name), -1) << name;
  }
}

TEST(TextureToString, GivesTheNameOfANumber) {
  for (const auto& [number, name] : kFormats) {
    EXPECT_STREQ(toString(static_cast<TextureFormat>(number)), name);
  }
  for (const auto& [number, name] : kLayouts) {
    EXPECT_STREQ(toString(static_cast<TextureLayout>(number)), name);
  }
  for (const auto& [number, name] : kTypes) {
    EXPECT_STREQ(toString(static_cast<TextureType>(number)), name);
  }
}

TEST(TextureToString, GivesUnknownForANumberWithoutAName) {
  for (int number = -2; number < 0x30000; ++number) {
    if (!hasName(kFormats, number)) {
      ASSERT_STREQ(toString(static_cast<TextureFormat>(number)), "Unknown") << number;
    }
    if (!hasName(kLayouts, number)) {
      ASSERT_STREQ(toString(static_cast<TextureLayout>(number)), "Unknown") << number;
    }
    if (!hasName(kTypes, number)) {
      ASSERT_STREQ(toString(static_cast<TextureType>(number)), "Unknown") << number;
    }
  }
}

TEST(TextureEnums, HaveTheirNumbers) {
  EXPECT_STREQ(toString(TextureFormat::SRGB8), "SRGB8");
  EXPECT_STREQ(toString(TextureFormat::XYZW32), "XYZW32");
  EXPECT_STREQ(toString(TextureFormat::BC3U), "BC3U");
  EXPECT_STREQ(toString(TextureLayout::FlatArrayMipmap), "2D-ArrayMipmap");
  EXPECT_STREQ(toString(TextureLayout::CubeDirectXMipmap), "CubeDirectX-Mipmap");
  EXPECT_STREQ(toString(TextureType::SphereData), "Sphere data");
}

TextureDesc desc(std::int32_t width, std::int32_t height, std::int32_t depth, TextureFormat format,
                 TextureLayout layout) {
  TextureDesc result;
  result.width = width;
  result.height = height;
  result.depth = depth;
  result.format = format;
  result.layout = layout;
  return result;
}

TEST(TextureDesc, IsFiveWords) { EXPECT_EQ(sizeof(TextureDesc), 20U); }

TEST(TextureDescSize, WithoutMipmapsIsThatOfTheImage) {
  EXPECT_EQ(desc(640, 480, 1, TextureFormat::SRGB8, TextureLayout::Flat).size(), 921600U);
  EXPECT_EQ(desc(8, 8, 6, TextureFormat::RGBA16, TextureLayout::Cube).size(), 8U * 8 * 6 * 8);
  EXPECT_EQ(desc(9, 5, 1, TextureFormat::BC1, TextureLayout::Flat).size(), 3U * 2 * 8);
}

TEST(TextureDescSize, WithMipmapsSumsTheLevelsDownToOnePixel) {
  // 4 by 1, 2 by 1, 1 by 1
  EXPECT_EQ(desc(4, 1, 1, TextureFormat::SL8, TextureLayout::FlatMipmap).size(), 4U + 2 + 1);
  // 5 by 3, 2 by 1, 1 by 1
  EXPECT_EQ(desc(5, 3, 1, TextureFormat::SRGBA8, TextureLayout::LatLongMipmap).size(),
            4U * (15 + 2 + 1));
  EXPECT_EQ(desc(1, 1, 1, TextureFormat::L32, TextureLayout::FlatMipmap).size(), 4U);
  // The height decides as well: 1 by 8, 1 by 4, 1 by 2, 1 by 1.
  EXPECT_EQ(desc(1, 8, 1, TextureFormat::X8, TextureLayout::FlatMipmap).size(), 15U);
}

TEST(TextureDescSize, KeepsTheDepthAtEachLevel) {
  EXPECT_EQ(desc(4, 4, 6, TextureFormat::SL8, TextureLayout::CubeMipmap).size(), 6U * (16 + 4 + 1));
  EXPECT_EQ(desc(2, 2, 3, TextureFormat::SL8, TextureLayout::FlatArrayMipmap).size(), 3U * (4 + 1));
}

TEST(TextureDescSize, RoundsEachLevelUpToWholeBlocks) {
  // 8 by 8 is four blocks; 4 by 4, 2 by 2 and 1 by 1 are one block each.
  EXPECT_EQ(desc(8, 8, 1, TextureFormat::BC1, TextureLayout::FlatMipmap).size(),
            8U * (4 + 1 + 1 + 1));
  // 10 by 6: 3 by 2 blocks; 5 by 3: 2 by 1; 2 by 1 and 1 by 1: one each.
  EXPECT_EQ(desc(10, 6, 1, TextureFormat::BC7, TextureLayout::FlatMipmap).size(),
            16U * (6 + 2 + 1 + 1));
}

TEST(TextureDescSize, OfExtentsThatAreNotPositiveIsZeroWithoutMipmapsAndOnePixelWith) {
  EXPECT_EQ(desc(0, 4, 1, TextureFormat::SL8, TextureLayout::Flat).size(), 0U);
  EXPECT_EQ(desc(-4, 4, 1, TextureFormat::SL8, TextureLayout::Flat).size(), 0U);
  EXPECT_EQ(desc(0, 0, 1, TextureFormat::SL8, TextureLayout::FlatMipmap).size(), 1U);
  EXPECT_EQ(desc(-3, -9, 1, TextureFormat::SL8, TextureLayout::FlatMipmap).size(), 1U);
  // A level is at least one pixel wide: 1 by 2, 1 by 1.
  EXPECT_EQ(desc(0, 2, 1, TextureFormat::SL8, TextureLayout::FlatMipmap).size(), 3U);
  EXPECT_EQ(desc(4, 4, 0, TextureFormat::SL8, TextureLayout::FlatMipmap).size(), 0U);
}

TEST(TextureDescSize, OfTheLargestExtentsDoesNotWrapAround) {
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  constexpr std::size_t kLargest = std::numeric_limits<std::size_t>::max();
  EXPECT_EQ(desc(kMax, kMax, kMax, TextureFormat::RGBA32, TextureLayout::Flat).size(), kLargest);
  EXPECT_EQ(desc(kMax, kMax, kMax, TextureFormat::RGBA32, TextureLayout::FlatMipmap).size(),
            kLargest);
  EXPECT_EQ(desc(kMax, kMax, kMax, TextureFormat::BC1, TextureLayout::FlatMipmap).size(), kLargest);
  // One row: 2^31 - 1 pixels are 2^29 blocks, and each level has half as many, down to one, which
  // the last level takes again.
  EXPECT_EQ(desc(kMax, 1, 1, TextureFormat::BC1, TextureLayout::FlatMipmap).size(),
            8U * ((std::size_t{1} << 30) - 1 + 1));
}

}  // namespace
