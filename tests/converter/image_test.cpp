// Images keep their channels and the size of their pixels.
#include <gtest/gtest.h>

#include "converter/images.hpp"
#include "writing/images.hpp"

namespace {

using namespace vrn_convert_tests;
using vrn_convert::decodeImage;
using vrn_convert::ImagePlan;
using vrn_convert::PixelUse;
using vrn_convert::TextureAsset;
using Samples = std::vector<std::uint8_t>;

TextureAsset decoded(const std::string& file, PixelUse use) {
  ImagePlan plan;
  plan.data = reinterpret_cast<const unsigned char*>(file.data());
  plan.size = file.size();
  return decodeImage(plan, use);
}

Samples bytesOf(const TextureAsset& asset) {
  return {asset.bytes.get(), asset.bytes.get() + asset.size};
}

std::uint16_t halfAt(const TextureAsset& asset, std::size_t index) {
  std::uint16_t half;
  std::memcpy(&half, asset.bytes.get() + 2 * index, sizeof half);
  return half;
}

TEST(Images, ColoursOf8BitsKeepTheirBytesAndTheirChannels) {
  const struct {
    unsigned type;
    int format;
    Samples samples;
  } cases[] = {{0, VRNT_TEXTURE_FORMAT_SL8, {1, 2}},
               {4, VRNT_TEXTURE_FORMAT_SLA8, {1, 2, 3, 4}},
               {2, VRNT_TEXTURE_FORMAT_SRGB8, {1, 2, 3, 4, 5, 6}},
               {6, VRNT_TEXTURE_FORMAT_SRGBA8, {1, 2, 3, 4, 5, 6, 7, 8}}};
  for (const auto& each : cases) {
    const TextureAsset asset = decoded(pngOf(2, 1, each.type, 8, each.samples), PixelUse::Colours);
    EXPECT_EQ(asset.problem, "");
    EXPECT_EQ(asset.desc.format, each.format);
    EXPECT_EQ(asset.desc.width, 2);
    EXPECT_EQ(asset.desc.height, 1);
    EXPECT_EQ(asset.desc.depth, 1);
    EXPECT_EQ(asset.desc.layout, VRNT_TEXTURE_LAYOUT_2D);
    EXPECT_EQ(bytesOf(asset), each.samples);
  }
}

TEST(Images, NumbersAndNormalsHaveFormatsOfTheirOwn) {
  EXPECT_EQ(decoded(pngOf(1, 1, 0, 8, {7}), PixelUse::Data).desc.format, VRNT_TEXTURE_FORMAT_X8);
  EXPECT_EQ(decoded(pngOf(1, 1, 6, 8, {7, 8, 9, 1}), PixelUse::Data).desc.format,
            VRNT_TEXTURE_FORMAT_XYZW8);
  const TextureAsset normal =
      decoded(pngOf(2, 1, 6, 8, {1, 2, 3, 4, 5, 6, 7, 8}), PixelUse::Normal);
  EXPECT_EQ(normal.desc.format, VRNT_TEXTURE_FORMAT_N8);
  EXPECT_EQ(bytesOf(normal), (Samples{1, 2, 3, 5, 6, 7}));
  EXPECT_NE(decoded(pngOf(1, 1, 0, 8, {7}), PixelUse::Normal).problem, "");
}

TEST(Images, SixteenBitsBecomeHalves) {
  // 0, 65535 and 32768, and the nearest halves of 0, 1 and 0.500008.
  const TextureAsset data = decoded(pngOf(3, 1, 0, 16, {0, 0, 255, 255, 128, 0}), PixelUse::Data);
  EXPECT_EQ(data.desc.format, VRNT_TEXTURE_FORMAT_X16);
  EXPECT_EQ(data.size, 6U);
  EXPECT_EQ(halfAt(data, 0), 0x0000);
  EXPECT_EQ(halfAt(data, 1), 0x3c00);
  EXPECT_EQ(halfAt(data, 2), 0x3800);
}

TEST(Images, ColoursOf16BitsBecomeLinear) {
  // The code 0.5 of sRGB is 0.21404 of white; the nearest half is 0x32d9 = 0.21399.
  const TextureAsset asset =
      decoded(pngOf(1, 1, 6, 16, {128, 0, 0, 0, 255, 255, 128, 0}), PixelUse::Colours);
  EXPECT_EQ(asset.desc.format, VRNT_TEXTURE_FORMAT_RGBA16);
  EXPECT_EQ(halfAt(asset, 0), 0x32d9);
  EXPECT_EQ(halfAt(asset, 1), 0x0000);
  EXPECT_EQ(halfAt(asset, 2), 0x3c00);
  EXPECT_EQ(halfAt(asset, 3), 0x3800);  // alpha is linear
}

TEST(Images, NormalsOf16BitsAreStoredWithTheirSigns) {
  const TextureAsset asset =
      decoded(pngOf(1, 1, 2, 16, {0, 0, 255, 255, 191, 255}), PixelUse::Normal);
  EXPECT_EQ(asset.desc.format, VRNT_TEXTURE_FORMAT_N16);
  EXPECT_EQ(halfAt(asset, 0), 0xbc00);  // -1
  EXPECT_EQ(halfAt(asset, 1), 0x3c00);  // 1
  EXPECT_EQ(halfAt(asset, 2), 0x3800);  // 0.5
}

TEST(Images, FloatsStayFloats) {
  // A pixel of (1, 0.5, 0.25) with a shared exponent.
  const std::string hdr =
      std::string("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 1 +X 1\n") + "\x80\x40\x20\x81";
  const TextureAsset asset = decoded(hdr, PixelUse::Colours);
  ASSERT_EQ(asset.problem, "");
  EXPECT_EQ(asset.desc.format, VRNT_TEXTURE_FORMAT_RGB32);
  float numbers[3];
  ASSERT_EQ(asset.size, sizeof numbers);
  std::memcpy(numbers, asset.bytes.get(), sizeof numbers);
  EXPECT_EQ(numbers[0], 1);
  EXPECT_EQ(numbers[1], 0.5F);
  EXPECT_EQ(numbers[2], 0.25F);
}

TEST(Images, WhatIsNoImageIsAProblemAndNoCrash) {
  EXPECT_NE(decoded("this is no image", PixelUse::Colours).problem, "");
  EXPECT_EQ(decodeImage(ImagePlan{}, PixelUse::Colours).problem, "it was not found");
  const std::string file = pngOf(1, 1, 2, 8, {1, 2, 3});
  for (std::size_t size = 1; size < file.size(); ++size) {
    static_cast<void>(decoded(file.substr(0, size), PixelUse::Colours));
  }
}

}  // namespace
