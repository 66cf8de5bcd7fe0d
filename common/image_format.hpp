// The storage of a texture's pixels, and the size of an image in bytes.
#ifndef VORNATH_COMMON_IMAGE_FORMAT_HPP
#define VORNATH_COMMON_IMAGE_FORMAT_HPP

#include <cstdint>

#include "vornath_data/texture.hpp"

namespace qex::vornath {

/// The storage of the pixels of a texture format.
struct ImageFormat {
  /// Looks up the storage of a format. A format without a name is stored pixel by pixel, in
  /// elements of size 0. The layout has no effect: the faces of a cube and the layers of an array
  /// count in the depth of an image.
  ImageFormat(vrnt::TextureFormat format, vrnt::TextureLayout layout);

  /// From 1 to 4, the number of channels of a pixel, if the format is stored pixel by pixel; 0 for
  /// a format without a name. 5 or more if the format is stored in blocks of 4 by 4 pixels.
  std::int32_t kind = 0;

  /// The size of one pixel or block in bytes.
  std::int32_t elementSize = 0;
};

/// The extents of an image in pixels.
struct ImageExtent {
  std::int32_t width;
  std::int32_t height;
  std::int32_t depth;
};

/// Returns the size of one image in bytes. A partial block at the border counts as a whole block.
/// Returns 0 if an extent is zero or negative, and UINT64_MAX if the size overflows 64 bits.
std::uint64_t imageSize(ImageExtent extent, ImageFormat format);

}  // namespace qex::vornath

#endif
