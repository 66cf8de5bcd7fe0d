// Small images for the tests of the converter.
#ifndef VRN_CONVERT_TESTS_IMAGES_HPP
#define VRN_CONVERT_TESTS_IMAGES_HPP

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "converter/support.hpp"

namespace vrn_convert_tests {

/// A PNG that is not compressed. `colour` is its type: 0 grey, 2 RGB, 4 grey with alpha, 6 RGBA.
/// Samples of 16 bits are two numbers, the high byte first.
inline std::string pngOf(unsigned width, unsigned height, unsigned colour, unsigned bits,
                         const std::vector<std::uint8_t>& samples) {
  const auto big = [](std::uint32_t number) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(number >> shift & 255U);
    return text;
  };
  const auto chunk = [&big](const std::string& kind, const std::string& body) {
    std::uint32_t sum = ~0U;
    for (const char c : kind + body) {
      sum ^= static_cast<unsigned char>(c);
      for (int bit = 0; bit < 8; ++bit) sum = sum >> 1 ^ ((sum & 1U) != 0 ? 0xedb88320U : 0U);
    }
    return big(static_cast<std::uint32_t>(body.size())) + kind + body + big(~sum);
  };
  const std::size_t row = samples.size() / height;
  std::string raw;
  for (std::size_t y = 0; y < height; ++y) {
    raw += '\0';
    raw.append(samples.begin() + static_cast<std::ptrdiff_t>(y * row),
               samples.begin() + static_cast<std::ptrdiff_t>((y + 1) * row));
  }
  std::uint32_t a = 1, b = 0;
  for (const char c : raw) {
    a = (a + static_cast<unsigned char>(c)) % 65521;
    b = (b + a) % 65521;
  }
  const auto length = static_cast<unsigned>(raw.size());
  std::string packed = "\x78\x01\x01";
  packed += {static_cast<char>(length & 255U), static_cast<char>(length >> 8),
             static_cast<char>(~length & 255U), static_cast<char>(~length >> 8 & 255U)};
  packed += raw + big(b << 16 | a);
  std::string header = big(width) + big(height);
  header += {static_cast<char>(bits), static_cast<char>(colour), 0, 0, 0};
  return "\x89PNG\r\n\x1a\n" + chunk("IHDR", header) + chunk("IDAT", packed) + chunk("IEND", "");
}

/// A texture of a scene.
struct TextureBytes {
  vrdmTextureDesc desc{};
  std::vector<std::uint8_t> bytes;
};

inline TextureBytes textureOf(const Converted& from, std::int32_t index) {
  TextureBytes texture;
  AssetStorage** const storage =
      vrdmGetAssetStorage(from.scene.get(), VRDM_CLASS_TEXTURE, index, &texture.desc);
  const auto* const first = static_cast<const std::uint8_t*>((*storage)->data);
  texture.bytes.assign(first, first + (*storage)->size);
  return texture;
}

}  // namespace vrn_convert_tests

#endif
