#include "image_format.hpp"

#include <limits>

namespace qex::vornath {
namespace {

using vrnt::TextureFormat;

constexpr std::int32_t kBlockKind = 5;
constexpr std::int32_t kBlockEdge = 4;

struct Storage {
  std::int32_t kind;
  std::int32_t elementSize;
};

constexpr Storage pixels(std::int32_t channels, std::int32_t bytesPerChannel) {
  return {channels, channels * bytesPerChannel};
}

constexpr Storage blocks(std::int32_t bytesPerBlock) { return {kBlockKind, bytesPerBlock}; }

Storage storageOf(TextureFormat format) {
  switch (format) {
    case TextureFormat::SL8:
    case TextureFormat::H8:
    case TextureFormat::X8:
      return pixels(1, 1);
    case TextureFormat::SLA8:
    case TextureFormat::XY8:
      return pixels(2, 1);
    case TextureFormat::SRGB8:
    case TextureFormat::N8:
    case TextureFormat::XYZ8:
      return pixels(3, 1);
    case TextureFormat::SRGBA8:
    case TextureFormat::NH8:
    case TextureFormat::XYZW8:
      return pixels(4, 1);
    case TextureFormat::L16:
    case TextureFormat::H16:
    case TextureFormat::X16:
      return pixels(1, 2);
    case TextureFormat::LA16:
    case TextureFormat::XY16:
      return pixels(2, 2);
    case TextureFormat::RGB16:
    case TextureFormat::N16:
    case TextureFormat::XYZ16:
      return pixels(3, 2);
    case TextureFormat::RGBA16:
    case TextureFormat::NH16:
    case TextureFormat::XYZW16:
      return pixels(4, 2);
    case TextureFormat::L32:
    case TextureFormat::H32:
    case TextureFormat::X32:
      return pixels(1, 4);
    case TextureFormat::LA32:
    case TextureFormat::XY32:
      return pixels(2, 4);
    case TextureFormat::RGB32:
    case TextureFormat::N32:
    case TextureFormat::XYZ32:
      return pixels(3, 4);
    case TextureFormat::RGBA32:
    case TextureFormat::NH32:
    case TextureFormat::XYZW32:
      return pixels(4, 4);
    case TextureFormat::BC1:
    case TextureFormat::BC1N:
    case TextureFormat::BC1U:
    case TextureFormat::BC4:
      return blocks(8);
    case TextureFormat::BC2:
    case TextureFormat::BC2N:
    case TextureFormat::BC2U:
    case TextureFormat::BC3:
    case TextureFormat::BC3N:
    case TextureFormat::BC3U:
    case TextureFormat::BC5:
    case TextureFormat::BC5N:
    case TextureFormat::BC6H:
    case TextureFormat::BC7:
      return blocks(16);
  }
  return {0, 0};
}

std::uint64_t saturatingProduct(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
  return a != 0 && b > kMax / a ? kMax : a * b;
}

std::uint64_t elementsAlong(std::int32_t extent, std::int32_t edge) {
  return (static_cast<std::uint64_t>(extent) + static_cast<std::uint64_t>(edge) - 1) /
         static_cast<std::uint64_t>(edge);
}

}  // namespace

ImageFormat::ImageFormat(vrnt::TextureFormat format, vrnt::TextureLayout /*layout*/) {
  const Storage storage = storageOf(format);
  kind = storage.kind;
  elementSize = storage.elementSize;
}

std::uint64_t imageSize(ImageExtent extent, ImageFormat format) {
  if (extent.width <= 0 || extent.height <= 0 || extent.depth <= 0) return 0;
  const std::int32_t edge = format.kind < kBlockKind ? 1 : kBlockEdge;
  // The element size is the first factor, so that a size of 0 gives 0 even if the extents overflow.
  std::uint64_t size = static_cast<std::uint64_t>(format.elementSize);
  size = saturatingProduct(size, elementsAlong(extent.width, edge));
  size = saturatingProduct(size, elementsAlong(extent.height, edge));
  return saturatingProduct(size, static_cast<std::uint64_t>(extent.depth));
}

}  // namespace qex::vornath
