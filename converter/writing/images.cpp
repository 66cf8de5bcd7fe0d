#include "writing/images.hpp"

#include <stb/stb_image.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace vrn_convert {
namespace {

std::uint16_t halfOf(float number) {
  std::uint32_t bits;
  std::memcpy(&bits, &number, sizeof bits);
  const std::uint32_t sign = (bits >> 16) & 0x8000U;
  const float size = std::abs(number);
  if (!(size < 65520.0F)) return static_cast<std::uint16_t>(sign | 0x7c00U);
  // Below the smallest normal half, numbers are multiples of 2^-24.
  if (size < 6.103515625e-05F) {
    return static_cast<std::uint16_t>(sign |
                                      static_cast<std::uint32_t>(std::lrint(size * 16777216.0F)));
  }
  bits &= 0x7fffffffU;
  bits += 0xfffU + ((bits >> 13) & 1U);  // to the nearest, ties to even
  return static_cast<std::uint16_t>(sign | ((bits >> 13) - (112U << 10)));
}

float linear(float code) {
  return code <= 0.04045F ? code / 12.92F : std::pow((code + 0.055F) / 1.055F, 2.4F);
}

// The first code of the formats of each use; the others follow by the number of channels.
int formatOf(PixelUse use, int channels, std::size_t bytes) {
  const int size = bytes == 1 ? 0 : bytes == 2 ? 12 : 24;
  switch (use) {
    case PixelUse::Colours:
      return size + VRNT_TEXTURE_FORMAT_SL8 + channels - 1;
    case PixelUse::Data:
      return size + VRNT_TEXTURE_FORMAT_X8 + channels - 1;
    case PixelUse::Normal:
      break;
  }
  return size + VRNT_TEXTURE_FORMAT_N8;
}

struct Pixels {
  Bytes bytes;
  int width = 0, height = 0, channels = 0;
  std::size_t channelSize = 1;  // bytes

  std::size_t count() const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  }
};

Bytes allocate(std::size_t size) {
  Bytes bytes(static_cast<unsigned char*>(std::malloc(size)));
  if (!bytes) throw std::bad_alloc();
  return bytes;
}

Pixels decode(const ImagePlan& image) {
  Pixels pixels;
  if (image.size > static_cast<std::size_t>(std::numeric_limits<int>::max())) return pixels;
  const int size = static_cast<int>(image.size);
  const stbi_uc* const data = image.data;
  void* decoded = nullptr;
  if (stbi_is_hdr_from_memory(data, size) != 0) {
    pixels.channelSize = 4;
    decoded =
        stbi_loadf_from_memory(data, size, &pixels.width, &pixels.height, &pixels.channels, 0);
  } else if (stbi_is_16_bit_from_memory(data, size) != 0) {
    pixels.channelSize = 2;
    decoded =
        stbi_load_16_from_memory(data, size, &pixels.width, &pixels.height, &pixels.channels, 0);
  } else {
    decoded = stbi_load_from_memory(data, size, &pixels.width, &pixels.height, &pixels.channels, 0);
  }
  // stb_image allocates with malloc().
  pixels.bytes.reset(static_cast<unsigned char*>(decoded));
  return pixels;
}

void dropAlpha(Pixels& pixels) {
  const std::size_t kept = 3 * pixels.channelSize;
  const std::size_t whole = 4 * pixels.channelSize;
  unsigned char* const bytes = pixels.bytes.get();
  for (std::size_t i = 0; i < pixels.count(); ++i) {
    std::memmove(bytes + i * kept, bytes + i * whole, kept);
  }
  pixels.channels = 3;
}

void makeHalves(Pixels& pixels, PixelUse use) {
  const int colours = pixels.channels - (pixels.channels % 2 == 0 ? 1 : 0);
  for (std::size_t i = 0; i < pixels.count(); ++i) {
    for (int channel = 0; channel < pixels.channels; ++channel) {
      unsigned char* const at =
          pixels.bytes.get() +
          2 * (i * static_cast<std::size_t>(pixels.channels) + static_cast<std::size_t>(channel));
      std::uint16_t code;
      std::memcpy(&code, at, sizeof code);
      float number = static_cast<float>(code) / 65535.0F;
      if (use == PixelUse::Colours && channel < colours) number = linear(number);
      // Normals of halves are stored as they are, those of 8 bits as 0 to 1.
      if (use == PixelUse::Normal) number = 2 * number - 1;
      const std::uint16_t half = halfOf(number);
      std::memcpy(at, &half, sizeof half);
    }
  }
}

void makeSigned(Pixels& pixels) {
  float* const numbers = reinterpret_cast<float*>(pixels.bytes.get());
  const std::size_t count = pixels.count() * static_cast<std::size_t>(pixels.channels);
  for (std::size_t i = 0; i < count; ++i) numbers[i] = 2 * numbers[i] - 1;
}

}  // namespace

TextureAsset decodeImage(const ImagePlan& image, PixelUse use) {
  TextureAsset asset;
  if (image.data == nullptr || image.size == 0) {
    asset.problem = "it was not found";
    return asset;
  }
  Pixels pixels;
  if (image.width != 0) {
    pixels.width = image.width;
    pixels.height = image.height;
    pixels.channels = 4;
    pixels.bytes = allocate(image.size);
    std::memcpy(pixels.bytes.get(), image.data, image.size);
  } else {
    pixels = decode(image);
  }
  if (!pixels.bytes || pixels.width <= 0 || pixels.height <= 0 || pixels.channels < 1 ||
      pixels.channels > 4) {
    const char* const reason = stbi_failure_reason();
    asset.problem = std::string("it cannot be decoded") +
                    (reason != nullptr ? " (" + std::string(reason) + ")" : "");
    return asset;
  }
  if (use == PixelUse::Normal && pixels.channels < 3) {
    asset.problem = "it is grey, so it is no map of normals";
    return asset;
  }
  if (use == PixelUse::Normal && pixels.channels == 4) dropAlpha(pixels);
  if (pixels.channelSize == 2) makeHalves(pixels, use);
  if (pixels.channelSize == 4 && use == PixelUse::Normal) makeSigned(pixels);
  asset.desc.width = pixels.width;
  asset.desc.height = pixels.height;
  asset.desc.depth = 1;
  asset.desc.format = formatOf(use, pixels.channels, pixels.channelSize);
  asset.desc.layout = VRNT_TEXTURE_LAYOUT_2D;
  asset.channels = pixels.channels;
  asset.size = pixels.count() * static_cast<std::size_t>(pixels.channels) * pixels.channelSize;
  asset.bytes = std::move(pixels.bytes);
  return asset;
}

}  // namespace vrn_convert
