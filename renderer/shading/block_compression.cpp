#include "shading/block_compression.hpp"

#include <cmath>
#include <cstdint>

#include "shading/block_modes.hpp"
#include "vornath_data/asset_records.h"

namespace vrn_render {
namespace {

using Pixel = std::array<float, 4>;

float linear(float code) {
  return code <= 0.04045F ? code / 12.92F : std::pow((code + 0.055F) / 1.055F, 2.4F);
}

Pixel unpack565(unsigned word) {
  return {static_cast<float>(word >> 11) / 31, static_cast<float>((word >> 5) & 63U) / 63,
          static_cast<float>(word & 31U) / 31, 1};
}

Pixel mixed(const Pixel& a, const Pixel& b, float t) {
  Pixel result{};
  for (std::size_t i = 0; i < 4; ++i) result[i] = a[i] * (1 - t) + b[i] * t;
  return result;
}

// Two colours and 2 bits for each pixel. Without `isOpaque`, the order of the colours selects
// whether there is a transparent one.
Pixel decodeColour(const unsigned char* block, int index, bool isOpaque) {
  const unsigned a = block[0] | static_cast<unsigned>(block[1]) << 8;
  const unsigned b = block[2] | static_cast<unsigned>(block[3]) << 8;
  const unsigned code = (block[4 + index / 4] >> (2 * (index % 4))) & 3U;
  const Pixel first = unpack565(a);
  const Pixel second = unpack565(b);
  if (code == 0) return first;
  if (code == 1) return second;
  if (isOpaque || a > b) return mixed(first, second, code == 2 ? 1.0F / 3 : 2.0F / 3);
  if (code == 2) return mixed(first, second, 0.5F);
  return {0, 0, 0, 0};
}

// Two numbers and 3 bits for each pixel.
float decodeNumber(const unsigned char* block, int index) {
  const auto a = static_cast<float>(block[0]);
  const auto b = static_cast<float>(block[1]);
  std::uint64_t bits = 0;
  for (int i = 0; i < 6; ++i) bits |= static_cast<std::uint64_t>(block[2 + i]) << (8 * i);
  const auto code = static_cast<int>((bits >> (3 * index)) & 7U);
  if (code == 0) return a / 255;
  if (code == 1) return b / 255;
  if (block[0] > block[1])
    return (a * static_cast<float>(8 - code) + b * static_cast<float>(code - 1)) / (7 * 255);
  if (code == 6) return 0;
  if (code == 7) return 1;
  return (a * static_cast<float>(6 - code) + b * static_cast<float>(code - 1)) / (5 * 255);
}

bool isOneOf(int format, int a, int b, int c) { return format == a || format == b || format == c; }

bool isBC1(int format) {
  return isOneOf(format, VRNT_TEXTURE_FORMAT_BC1, VRNT_TEXTURE_FORMAT_BC1N,
                 VRNT_TEXTURE_FORMAT_BC1U);
}
bool isBC2(int format) {
  return isOneOf(format, VRNT_TEXTURE_FORMAT_BC2, VRNT_TEXTURE_FORMAT_BC2N,
                 VRNT_TEXTURE_FORMAT_BC2U);
}
bool isBC3(int format) {
  return isOneOf(format, VRNT_TEXTURE_FORMAT_BC3, VRNT_TEXTURE_FORMAT_BC3N,
                 VRNT_TEXTURE_FORMAT_BC3U);
}

}  // namespace

int blockBytes(int format) {
  if (isBC1(format) || format == VRNT_TEXTURE_FORMAT_BC4) return 8;
  if (isBC2(format) || isBC3(format) || format == VRNT_TEXTURE_FORMAT_BC5 ||
      format == VRNT_TEXTURE_FORMAT_BC5N || format == VRNT_TEXTURE_FORMAT_BC6H ||
      format == VRNT_TEXTURE_FORMAT_BC7) {
    return 16;
  }
  return 0;
}

std::array<float, 4> decodeBlock(int format, const unsigned char* block, int x, int y) {
  const int index = 4 * y + x;
  if (format == VRNT_TEXTURE_FORMAT_BC4) {
    const float number = decodeNumber(block, index);
    return {number, number, number, 1};
  }
  if (format == VRNT_TEXTURE_FORMAT_BC5 || format == VRNT_TEXTURE_FORMAT_BC5N) {
    const float red = decodeNumber(block, index);
    const float green = decodeNumber(block + 8, index);
    float blue = 0;
    if (format == VRNT_TEXTURE_FORMAT_BC5N) {
      const float a = 2 * red - 1;
      const float b = 2 * green - 1;
      blue = 0.5F + 0.5F * std::sqrt(std::fmax(0.0F, 1 - a * a - b * b));
    }
    return {red, green, blue, 1};
  }
  if (format == VRNT_TEXTURE_FORMAT_BC6H) return decodeBC6H(block, index);
  Pixel pixel;
  if (format == VRNT_TEXTURE_FORMAT_BC7) {
    pixel = decodeBC7(block, index);
  } else if (isBC1(format)) {
    pixel = decodeColour(block, index, false);
  } else {
    pixel = decodeColour(block + 8, index, true);
    pixel[3] = isBC3(format)
                   ? decodeNumber(block, index)
                   : static_cast<float>((block[index / 2] >> (4 * (index % 2))) & 15) / 15;
  }
  const bool isColour = format == VRNT_TEXTURE_FORMAT_BC1 || format == VRNT_TEXTURE_FORMAT_BC2 ||
                        format == VRNT_TEXTURE_FORMAT_BC3;
  if (isColour) {
    for (std::size_t i = 0; i < 3; ++i) pixel[i] = linear(pixel[i]);
  }
  return pixel;
}

}  // namespace vrn_render
