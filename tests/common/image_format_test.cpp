#include "image_format.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace {

using qex::vornath::ImageExtent;
using qex::vornath::ImageFormat;
using qex::vornath::imageSize;
using vrnt::TextureFormat;
using vrnt::TextureLayout;

constexpr std::int32_t kIntMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kIntMin = std::numeric_limits<std::int32_t>::min();

std::uint64_t sizeOf(TextureFormat format, std::int32_t width, std::int32_t height,
                     std::int32_t depth) {
  return imageSize(ImageExtent{width, height, depth}, ImageFormat(format, TextureLayout::Flat));
}

std::int32_t firstWord(TextureFormat format) {
  const ImageFormat image(format, TextureLayout::Flat);
  std::int32_t word = 0;
  std::memcpy(&word, &image, sizeof word);
  return word;
}

struct PixelCase {
  TextureFormat format;
  std::uint64_t bytes;
};

constexpr PixelCase kPixelFormats[] = {
    {TextureFormat::SL8, 1},    {TextureFormat::SLA8, 2},    {TextureFormat::SRGB8, 3},
    {TextureFormat::SRGBA8, 4}, {TextureFormat::H8, 1},      {TextureFormat::N8, 3},
    {TextureFormat::NH8, 4},    {TextureFormat::X8, 1},      {TextureFormat::XY8, 2},
    {TextureFormat::XYZ8, 3},   {TextureFormat::XYZW8, 4},   {TextureFormat::L16, 2},
    {TextureFormat::LA16, 4},   {TextureFormat::RGB16, 6},   {TextureFormat::RGBA16, 8},
    {TextureFormat::H16, 2},    {TextureFormat::N16, 6},     {TextureFormat::NH16, 8},
    {TextureFormat::X16, 2},    {TextureFormat::XY16, 4},    {TextureFormat::XYZ16, 6},
    {TextureFormat::XYZW16, 8}, {TextureFormat::L32, 4},     {TextureFormat::LA32, 8},
    {TextureFormat::RGB32, 12}, {TextureFormat::RGBA32, 16}, {TextureFormat::H32, 4},
    {TextureFormat::N32, 12},   {TextureFormat::NH32, 16},   {TextureFormat::X32, 4},
    {TextureFormat::XY32, 8},   {TextureFormat::XYZ32, 12},  {TextureFormat::XYZW32, 16},
};

constexpr PixelCase kBlockFormats[] = {
    {TextureFormat::BC1, 8},   {TextureFormat::BC1N, 8}, {TextureFormat::BC1U, 8},
    {TextureFormat::BC4, 8},   {TextureFormat::BC2, 16}, {TextureFormat::BC2N, 16},
    {TextureFormat::BC2U, 16}, {TextureFormat::BC3, 16}, {TextureFormat::BC3N, 16},
    {TextureFormat::BC3U, 16}, {TextureFormat::BC5, 16}, {TextureFormat::BC5N, 16},
    {TextureFormat::BC6H, 16}, {TextureFormat::BC7, 16},
};

TEST(ImageFormat, HasAFirstWordBelowFiveForAFormatStoredPixelByPixel) {
  for (const auto& [format, bytes] : kPixelFormats) {
    EXPECT_LT(firstWord(format), 5) << static_cast<int>(format);
  }
}

TEST(ImageFormat, HasAFirstWordOfFiveOrMoreForAFormatStoredInBlocks) {
  for (const auto& [format, bytes] : kBlockFormats) {
    EXPECT_GE(firstWord(format), 5) << static_cast<int>(format);
  }
}

TEST(ImageSize, OfOnePixelIsChannelsTimesBytes) {
  for (const auto& [format, bytes] : kPixelFormats) {
    EXPECT_EQ(sizeOf(format, 1, 1, 1), bytes) << static_cast<int>(format);
  }
}

TEST(ImageSize, MultipliesPixelsByTheirSize) {
  for (const auto& [format, bytes] : kPixelFormats) {
    EXPECT_EQ(sizeOf(format, 7, 5, 3), 105 * bytes) << static_cast<int>(format);
  }
}

TEST(ImageSize, CountsBlocksAtTheBorderWhole) {
  for (const auto& [format, bytes] : kBlockFormats) {
    EXPECT_EQ(sizeOf(format, 1, 1, 1), bytes) << static_cast<int>(format);
    EXPECT_EQ(sizeOf(format, 4, 4, 1), bytes) << static_cast<int>(format);
    EXPECT_EQ(sizeOf(format, 5, 4, 1), 2 * bytes) << static_cast<int>(format);
    EXPECT_EQ(sizeOf(format, 5, 9, 6), 2 * 3 * 6 * bytes) << static_cast<int>(format);
  }
}

TEST(ImageSize, IsZeroForAnExtentThatIsZeroOrNegative) {
  for (const TextureFormat format : {TextureFormat::RGBA32, TextureFormat::BC1}) {
    for (const std::int32_t none : {0, -1, kIntMin}) {
      EXPECT_EQ(sizeOf(format, none, 8, 8), 0U);
      EXPECT_EQ(sizeOf(format, 8, none, 8), 0U);
      EXPECT_EQ(sizeOf(format, 8, 8, none), 0U);
      EXPECT_EQ(sizeOf(format, none, none, 8), 0U);
    }
  }
}

TEST(ImageSize, IsZeroForAFormatWithoutAName) {
  EXPECT_EQ(sizeOf(static_cast<TextureFormat>(5), kIntMax, kIntMax, kIntMax), 0U);
}

TEST(ImageSize, IsExactAsLongAsItFitsInto64Bits) {
  constexpr auto kExtent = static_cast<std::uint64_t>(kIntMax);
  EXPECT_EQ(sizeOf(TextureFormat::SL8, kIntMax, kIntMax, 1), kExtent * kExtent);
  EXPECT_EQ(sizeOf(TextureFormat::SRGBA8, kIntMax, kIntMax, 1), 4 * kExtent * kExtent);
  EXPECT_EQ(sizeOf(TextureFormat::BC7, kIntMax, 1, 1), (kExtent + 1) / 4 * 16);
}

TEST(ImageSize, IsTheLargestNumberWhenItDoesNotFit) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
  EXPECT_EQ(sizeOf(TextureFormat::RGBA32, kIntMax, kIntMax, 1), kLargest);
  EXPECT_EQ(sizeOf(TextureFormat::SL8, kIntMax, kIntMax, kIntMax), kLargest);
  EXPECT_EQ(sizeOf(TextureFormat::BC1, kIntMax, kIntMax, kIntMax), kLargest);
}

TEST(ImageSize, IsTheSameForEveryLayout) {
  for (const TextureLayout layout :
       {TextureLayout::Cube, TextureLayout::FlatArray, TextureLayout::FlatSpectral}) {
    EXPECT_EQ(imageSize({4, 4, 6}, ImageFormat(TextureFormat::SRGB8, layout)), 4U * 4 * 6 * 3);
  }
}

}  // namespace
