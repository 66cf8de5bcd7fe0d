// How the pixels of a texture lie in memory, and how many bytes an image takes.
#ifndef VORNATH_COMMON_IMAGE_FORMAT_HPP
#define VORNATH_COMMON_IMAGE_FORMAT_HPP

#include <cstdint>

#include "vornath_data/texture.hpp"

namespace qex::vornath {

/// The storage of a texture format.
struct ImageFormat {
  /// A format without a name is stored pixel by pixel in elements of no size. The layout changes
  /// nothing: the faces of a cube and the layers of an array count in an image's depth.
  ImageFormat(vrnt::TextureFormat format, vrnt::TextureLayout layout);

  /// 1 to 4, the channels of a pixel, for a format that is stored pixel by pixel (0 without a
  /// name); 5 and more for one that is stored in blocks of 4 by 4 pixels.
  std::int32_t kind = 0;

  /// The bytes of one pixel or block.
  std::int32_t elementSize = 0;
};

/// The extents of an image in pixels.
struct ImageExtent {
  std::int32_t width;
  std::int32_t height;
  std::int32_t depth;
};

/// The bytes of one image. A block at the border counts whole. An extent that is zero or negative
/// gives 0; a size beyond 64 bits gives the largest 64-bit number.
std::uint64_t imageSize(ImageExtent extent, ImageFormat format);

}  // namespace qex::vornath

#endif
